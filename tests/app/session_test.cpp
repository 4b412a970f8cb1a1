// Whole sessions driven by scripted clicks and typed lines, and the headless
// export: the same echo and statistics, the device it opens, the sheet of nine
// panels, the options carried into the plots, and the words of a refusal.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <sstream>

#include "app/export.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

const std::string kRule = " " + std::string(74, '-') + "\n";

::testing::AssertionResult in_order(const std::string& text, const std::vector<std::string>& parts) {
    std::size_t at = 0;
    for (const auto& p : parts) {
        if ((at = text.find(p, at)) == std::string::npos)
            return ::testing::AssertionFailure() << "\"" << p << "\" not next in:\n" << text;
        at += p.size();
    }
    return ::testing::AssertionSuccess();
}

// Lines drawn on `device` while line style 2 was set: fits and reference curves.
std::vector<const GraphicsCall*> dashed(const RecordingGraphics& g, int device) {
    std::vector<const GraphicsCall*> out;
    bool on = false;
    for (const auto& c : g.calls) {
        if (c.device == device && c.name == "pgsls") on = c.args[0] == 2;
        if (c.device == device && c.name == "pgline" && on) out.push_back(&c);
    }
    return out;
}

const std::string kError = "1 2 3 4 5 6 7 8 9 10 11 12\n";

struct Scenario {
    const char* why;
    std::function<void(Harness&)> before;  // after the beam tables of runs 1 and 2 of "p"
    std::string input;
    const char* arg;                // null: no argument
    std::vector<int> picks;         // a row; 0 a page turn; 31.. the right column; 101.. the fit menu
    std::vector<std::string> says;  // on the console in this order
    const char* pages;              // of the menus shown, one after each pick
    int last;                       // the plot on show at the end
    std::function<void(Harness&, Session&)> then;
};

}  // namespace

TEST(Session, Scenarios) {
    // clang-format off
    const Scenario cases[] = {
        {"a page turn clears the mark; page 4 turns to 1", nullptr, "", "p", {3, 0, 0, 0, 0, 25},
         {kRule + " rms Beam Divergence\n", kRule + " EXIT\n"}, "112341", 0, nullptr},
        // row 8 of page 2 and the missing row 17 are blank; the geometry row of page 3 flips nothing
        {"blank rows", nullptr, "", "p", {4, 0, 8, 17, 0, 18, 25},
         {kRule + " Long. Emittance\n", kRule + " \n", kRule + " \n", kRule + " include geometry\n"}, "1122233", 0,
         [](Harness& h, Session& s) {
             EXPECT_FALSE(s.logo.WITH_GEOMETRY);
             EXPECT_EQ(h.g.named_on("pgenv", s.window.PLOT_DEVICE).size(), 1u);
         }},
        // each redraw comes back to the menu
        {"zoom, fit and geometry before any plot", nullptr, "abc\n-1\n\n2.5\n", "p", {18, 19, 20, 18, 18, 25},
         {kRule + " include geometry\n", "     Lower boundary of abscissa:      Not a number: abc\n"
          "     Lower boundary of abscissa:      Upper boundary of abscissa: ", kRule + " remove geometry\n"},
         "111111", 0, [](Harness&, Session& s) {
             EXPECT_TRUE(s.logo.ZOOM_Z && s.logo.FIT_REQUESTED && s.logo.WITH_GEOMETRY);
             EXPECT_EQ(std::pair(s.graph.Z_LOWER, s.graph.Z_UPPER), std::pair(-1.0f, 2.5f));
         }},
        {"the zoom follows the family of the plot on show", nullptr, "1\n2\n3\n4\n5\n6\n", "p",
         {0, 4, 19, 0, 2, 19, 0, 15, 19, 25}, {}, "1222333444", 15, [](Harness&, Session& s) {
             EXPECT_EQ(std::tuple(s.logo.ZOOM_PHASE, s.logo.ZOOM_SCAN, s.logo.ZOOM_TIME, s.logo.ZOOM_Z),
                       std::tuple(true, true, true, false));
             EXPECT_EQ(std::pair(s.graph.TIME_LOWER, s.graph.TIME_UPPER), std::pair(5.0f, 6.0f));
         }},
        // run 2 drawn without the menu; run 3 has nothing: back to 2 with y; run 1 stays at 1
        {"stepping past the end and back", nullptr, "y\n", "p,1", {1, 23, 23, 24, 24, 25},
         {"     new run number:  .002\n", "     new run number:  .003\n\n     No data files found for: p,003\n"
          "     Step back (Y/N):      new run number:  .002\n", "     new run number:  .001\n",
          "     new run number:  .001\n"}, "111111", 1,
         [](Harness&, Session& s) { EXPECT_TRUE(s.RUN_NUMBER == 1 && s.chara.RUN == ".001" && !s.STEP_BACK && !s.STEP_FOR); }},
        {"run 999 steps no further", [](Harness& h) { h.dir.write("p.Zemit.999", emit_table(3)); }, "", "p,999",
         {23, 25}, {"     new run number:  .999\n" + kRule + " EXIT\n"}, "11", 0, nullptr},
        // the plot on show is drawn for the new project
        {"no data, then other arguments", [](Harness& h) { h.dir.write("other.Zemit.003", emit_table(3)); },
         "n\nother,3\n", "p,2", {4, 23, 25},
         {"     Step back (Y/N): \n     Enter input arguments: \n     Project name is: other\n"}, "111", 4,
         [](Harness&, Session& s) { EXPECT_EQ(s.chara.PROJECT + std::to_string(s.RUN_NUMBER), "other3"); }},
        {"end of input at the zoom", nullptr, "", "p", {2, 19},
         {"Lower boundary of abscissa: \n     End of input: the session ends\n"}, "11", 2, nullptr},
        {"no argument and no rfgun tables", nullptr, "", nullptr, {},
         {"\n     program was called with no arguments, \n     try to work on project: rfgun\n"
          "     run number: .001\n\n     Project name is: rfgun\n     Run number is:   001\n\n"
          "     No data files found for: \n     Enter input arguments: \n"
          "     End of input: the session ends\n"}, "", 0, nullptr},
        {"to file and its extensions", nullptr, "run5.gif\nrun5.txt\nrun5.cvps\n", "p", {2, 21, 25},
         {"     extensions: .ps   = landscape\n                 .vps  = portrait\n"
          "                 .cps  = color, landscape\n                 .cvps = colour, portrait\n"
          "     Enter file name :  Invalid extension\n", "Enter file name :  Invalid extension\n",
          "Enter file name : \n", "     saved to file:   " + std::string(23, ' ') + "run5.ps\n"}, "111", 2,
         [](Harness& h, Session& s) {
             EXPECT_EQ(h.g.opened.back(), h.dir.path + "/run5.ps/VCPS");
             bool green = false;  // paper green is 0, 0.8, 0.2
             for (auto* c : h.g.named_on("pgscr", s.window.FILE_DEVICE)) green = green || (c->args[0] == 4 && c->args[2] == 0.8f);
             EXPECT_TRUE(green);
         }},
        // the plot window is never closed
        {"to file before any plot, and a file that cannot be made",
         [](Harness& h) { h.g.refuse_open.push_back(h.dir.path + "/nope.ps/PS"); }, "empty\nnope.ps\n", "p",
         {21, 21, 25}, {"saved to file:   " + std::string(22, ' ') + "empty.ps\n", "     Cannot create file: nope.ps\n"},
         "111", 0, nullptr},
        // nine passes and no menu in between; back on the row it came from
        {"overview sheet", nullptr, "", "p,2", {5, 22, 25}, {"saved to file:   " + std::string(21, ' ') + "p1.002.ps\n"},
         "111", 5, [](Harness& h, Session& s) {
             EXPECT_EQ(h.g.opened.back(), h.dir.path + "/p1.002.ps/PS");
             EXPECT_EQ(h.g.named_on("pgsubp", s.window.FILE_DEVICE).at(0)->args, (std::vector<double>{3, 3}));
             auto feet = h.g.named_on("pgptxt", s.window.FILE_DEVICE);
             ASSERT_EQ(feet.size(), 1u);
             EXPECT_EQ(feet[0]->texts[0], "p 002  22.11  09:05");
         }},
        {"overview of a project without a name", [](Harness& h) { h.dir.write(".Zemit.001", emit_table(3)); }, "", ",1",
         {22, 25}, {"B-Overview.ps\n"}, "11", 0,
         [](Harness& h, Session&) { EXPECT_EQ(h.g.opened.back(), h.dir.path + "/B-Overview.ps/CPS"); }},
        {"number of bins", [](Harness& h) { h.dir.write("p.Error.001", kError); }, "0\n5000\nten\n20\n", "p",
         {0, 0, 33, 15, 25},
         {kRule + " Err. FOM(3)\n", kRule + " change number of bins\n     Current number of bins:   10\n"
          "     Enter new number of bins: ", "The number of bins must lie between 1 and 3200\n",
          "The number of bins must lie between 1 and 3200\n", "Not a whole number: ten"}, "12333", 33,
         [](Harness&, Session& s) { EXPECT_EQ(s.graph.N_BINS, 20); }},
        {"no .Error: the bins row does nothing", nullptr, "", "p", {0, 0, 15, 25}, {kRule + " \n" + kRule}, "1233", 0,
         nullptr},
        // no plot on show: nothing asked; a right-hand row keeps its titles in the second bank
        {"change title", [](Harness& h) { h.dir.write("p.Error.001", kError); },
         "A very long title that runs beyond forty characters\n\nOrdinate\n", "p", {0, 0, 16, 33, 16, 25},
         {kRule + " change title\n" + kRule, "\\d  = subscript & end superscribt\n", "     Label of the ordinate: "},
         "123333", 33, [](Harness&, Session& s) {
             const auto& rec = s.labels.rec[43];
             EXPECT_EQ(rec.PLOT_TITLE + "|" + rec.ABSCISSA_LABEL + "|" + rec.ORDINATE_LABEL,
                       "A very long title that runs beyond forty||Ordinate");
         }},
        // the fit comes again in the hardcopy without the fit menu; the exit pick draws nothing
        {"straight line fit on both curves", nullptr, "fitted\n", "p", {2, 20, 103, 21, 20, 118, 25},
         {"     straight line fit: Y = a + b*x\n", "     straight line fit: Y = a + b*x\n", "saved to file:"}, "11111", 2,
         [](Harness& h, Session& s) {
             EXPECT_EQ(count_of(h.console(), "     red line: \n"), 2u);
             EXPECT_TRUE(!s.logo.FIT_REQUESTED && s.plot(2).ID_F == 18 && s.fit_variables.X_FIT.empty());
             // both curves fitted on the screen; on paper the red curve is dashed too
             EXPECT_EQ(std::pair(dashed(h.g, s.window.PLOT_DEVICE).size(), dashed(h.g, s.window.FILE_DEVICE).size()), std::pair(2ul, 3ul));
         }},
        // stored from one plot, laid dashed over the next; the fit menu comes again
        {"reference curve", nullptr, "ref.dat\nref.dat\n", "p", {4, 20, 117, 5, 116, 25},
         {"     Data saved to reference file: ref.dat\n", "     Enter reference file name: "}, "1111", 5,
         [](Harness& h, Session& s) {
             EXPECT_EQ(std::pair(s.plot(4).ID_F, s.plot(5).ID_F), std::pair(17, 16));
             auto lines = dashed(h.g, s.window.PLOT_DEVICE);
             ASSERT_EQ(lines.size(), 1u);
             EXPECT_EQ(std::pair(lines[0]->ys.size(), lines[0]->ys[0]), std::pair(6ul, 2.0f));  // NZ_EMIT of row 4
         }},
    };
    // clang-format on
    for (const Scenario& c : cases) {
        SCOPED_TRACE(c.why);
        Harness h(c.input);
        beam_tables(h.dir, 6, {"001", "002"});
        if (c.before) c.before(h);
        for (int p : c.picks)
            p > 100 ? h.click(0.03f, 0.90f - 0.05f * static_cast<float>(p - 101)) : h.picks({p});
        EXPECT_EQ(h.run(c.arg ? std::vector<std::string>{c.arg} : std::vector<std::string>{}), 0);
        EXPECT_TRUE(in_order(h.console(), c.says));
        std::string pages;  // "\\fiMENU 2 of 4": 2
        for (auto* t : h.g.named("pgptxt"))
            if (t->texts[0].rfind("\\fiMENU ", 0) == 0) pages += t->texts[0][8];
        EXPECT_EQ(pages, c.pages);
        // each pick of a menu or of the fit menu is answered by a rule
        EXPECT_EQ(count_of(h.console(), kRule), pages.size() + std::count_if(c.picks.begin(), c.picks.end(),
                                                                             [](int p) { return p > 100; }));
        EXPECT_EQ(h.session().window.LAST_SELECTION, c.last);
        EXPECT_TRUE(h.g.ended && h.dir.exists("win_config.dat") && !h.session().logo.TO_FILE);
        EXPECT_EQ(h.g.named("pgclos").size(), count_of(h.console(), "saved to file:"));
        if (c.then) c.then(h, h.session());
    }
}

namespace {

// Rows 1 to 13 of page one, then `more`, on the run tables of `from`: no
// stop, no prompt, finite curves. Frames and curves of more than one point.
std::pair<std::size_t, int> page_one(const fs::path& from, const std::string& arg, std::vector<int> more) {
    Harness h;
    for (const auto& e : fs::directory_iterator(from))
        fs::copy_file(e.path(), h.dir.file(e.path().filename()));
    for (int row = 1; row <= 13; ++row) h.row(row);
    for (int row : more) h.row(row);
    h.row(25);
    EXPECT_EQ(h.run({arg}), 0);
    for (const char* bad : {"Error", "Enter"})
        EXPECT_EQ(h.console().find(bad), std::string::npos) << h.console();
    int curves = 0;
    for (auto* line : h.g.named_on("pgline", h.session().window.PLOT_DEVICE)) {
        curves += line->args[0] > 1;
        for (float y : line->ys) EXPECT_TRUE(std::isfinite(y));
    }
    return {h.g.named_on("pgenv", h.session().window.PLOT_DEVICE).size(), curves};
}

}  // namespace

TEST(Session, PageOneOnTheBundledAndRealRuns) {
    // rows 1 to 11 and 13 have one frame, row 12 two, the redraw of 13 with the outline one more
    for (const char* run : {"rfgun,1", "rfgun,2", "rfgun,3"})
        EXPECT_EQ(page_one(fs::path(VIEWER_SOURCE_DIR) / "examples", run, {18}).first, 15u) << run;

    const fs::path root = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!fs::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;
    int drawn = 0;
    for (const auto& dir : fs::directory_iterator(root)) {
        if (!dir.is_directory()) continue;
        std::string project;
        bool beam = false, ref = false;
        for (const auto& e : fs::directory_iterator(dir.path()))
            for (const char* kind : {".Zemit.", ".ref."})
                if (auto p = e.path().filename().string().find(kind); p != std::string::npos) {
                    project = e.path().filename().string().substr(0, p);
                    (kind[1] == 'Z' ? beam : ref) = true;
                }
        if (project.empty()) continue;  // no table of page one
        // a row without its tables still draws its empty frame
        const auto [frames, curves] = page_one(dir.path(), project + ",1", {});
        EXPECT_EQ(frames, 14u) << dir.path();
        EXPECT_EQ(curves, (beam ? 12 : 0) + (ref ? 5 : 0)) << dir.path();
        drawn += curves;
    }
    EXPECT_GT(drawn, 0);
}

namespace {

struct Export {
    Harness h;
    std::ostringstream err;
    Export() {
        beam_tables(h.dir, 6);
        h.dir.write("bad.Xemit.001", emit_table(2) + "  1.0000E+00      banana\n");
        h.dir.write("bad.Yemit.001", emit_table(3));
    }
    // `line`: the arguments after the program name, split at blanks.
    int run(const std::string& line) {
        std::istringstream in(line);
        std::vector<std::string> args{"viewer"};
        for (std::string a; in >> a;) args.push_back(a);
        std::vector<const char*> argv;
        for (const auto& a : args) argv.push_back(a.c_str());
        const ExportRequest r = parse_export(static_cast<int>(argv.size()), argv.data());
        return run_export(h.session(), r, fixed_time(), err);
    }
};

}  // namespace

TEST(Export, PlotsSheetsAndListsAsTheMenuWould) {
    Harness interactive;
    beam_tables(interactive.dir, 6);
    interactive.picks({2, 25});
    interactive.run({"p"});
    Export e;
    ASSERT_EQ(e.run("p --plot 1:2 --out beam.ps"), 0) << e.err.str();
    EXPECT_TRUE(has(interactive.console(), e.h.console()));  // echo and statistics as in the session
    EXPECT_EQ(e.h.g.opened, (std::vector<std::string>{e.h.dir.file("beam.ps") + "/CPS"}));
    EXPECT_TRUE(e.h.session().logo.COLOUR && !e.h.dir.exists("win_config.dat"));

    Export sheet;
    ASSERT_EQ(sheet.run("p --overview 1 --out s.png --mono --size 400x300"), 0);
    EXPECT_EQ(sheet.h.g.opened, (std::vector<std::string>{sheet.h.dir.file("s.png") + "/PNG"}));
    EXPECT_EQ(sheet.h.g.named("pgsubp").at(0)->args, (std::vector<double>{3, 3}));
    EXPECT_EQ(sheet.h.g.named("pgenv").size(), 9u);  // rows 1 to 9
    EXPECT_FALSE(sheet.h.session().logo.COLOUR);     // curves told apart by line style

    Export zoomed;
    ASSERT_EQ(zoomed.run("p --plot 1:4 --zoom 0.1:0.3 --fit 3 --out z.ps"), 0);
    EXPECT_EQ(zoomed.h.session().plot(4).NP, 3);  // z = 0.1, 0.2, 0.3
    EXPECT_TRUE(has(zoomed.h.console(), "     straight line fit: Y = a + b*x"));

    Export list;  // the rows as echoed, for the tables there are; no .ref, no .Sigma
    for (const char* k : {"p.Sub_emit.001", "p.Xemit2.001", "p.Yemit2.001"}) list.h.dir.write(k, "1\n");
    ASSERT_EQ(list.run("p --list"), 0);
    const std::string c = list.h.console();
    EXPECT_TRUE(has(c, "page 1\n  1:1    Trans. Emittance\n  1:2    rms Beam Size\n"));
    EXPECT_TRUE(has(c, "  1:9    Particle velocity\npage 2\n"));
    EXPECT_TRUE(has(c, "  2:12   beta function\n  2:13   alpha function\n"));
    // cut at 33 characters; a sub-ensemble table renames the cross-over rows
    EXPECT_TRUE(has(c, "  4:5    trans. cor. emitt. contributions\n  4:12   Sub-ensemble emittance\n"));
    EXPECT_EQ(c.find("page 5"), std::string::npos);
}

TEST(Export, RequestsThatCannotBeServed) {
    struct Case {
        const char* args;
        int status;  // -1: the command line itself is refused
        const char* words;
    };
    const Case cases[] = {
        {"p --plot 1:10 --out a.ps", 2,
         "row 1:10 (\"Reference particle momentum\") is not available for this run: it needs .ref"},
        {"p --overview 5 --out a.ps", 2, "page 5 is not available for this run: it needs .Sigma"},
        {"p --plot 2:8 --out a.ps", 2, "row 2:8 is blank"},
        {"q --plot 1:1 --out a.ps", 1, "no data files of project q, run 001"},
        {"bad --plot 1:1 --out a.ps", 1, "bad.Xemit.001, line 3, column 13"},
        {"p --plot 1:1 --out nodir/a.ps", 1, "nodir/a.ps: No such file or directory"},
        {"p --plot 1:1 --out a.ps --geometry", 1, "no aperture file"},
        {"--plot 6:1 --out a.ps", -1, "there is no page 6"},
        {"--plot 1-2 --out a.ps", -1, "--plot takes PAGE:ROW"},
        {"--plot 1:1 --out a.ps --colour", -1, "unknown option --colour"},
        {"--plot 1:1", -1, "no --out FILE given"},
        {"--plot 1:1 --out a.gif", -1, "must end in .ps, .eps, .png or .pdf"},
        {"--plot 1:1 --out a.ps --bins 0", -1, "--bins takes a number from 1 to 3200"},
        {"--plot 1:1 --out a.eps --plot 1:2", -1, "an .eps file holds one page"},
        {"--plot 1:1 --out a.png --size 10x10", -1, "--size takes WIDTHxHEIGHT"},
        {"--plot 1:1 --out a.ps --fit 16", -1, "--fit takes a fit of the fit menu"},
        {"--plot 1:1 --out a.ps --zoom 1", -1, "--zoom takes LOW:HIGH"},
        {"--plot 1:1 p --out a.ps", -1, "the run argument comes first"},
    };
    for (const Case& c : cases) {
        Export e;
        try {
            EXPECT_EQ(e.run(c.args), c.status) << c.args;
            EXPECT_TRUE(has(e.err.str(), c.words));
        } catch (const UsageError& u) {
            EXPECT_EQ(c.status, -1) << u.what();
            EXPECT_TRUE(has(u.what(), c.words));
        }
        EXPECT_EQ(e.h.g.ended, !e.h.g.opened.empty()) << c.args;  // PGPLOT ended on every way out
        EXPECT_TRUE(c.status == 1 || e.h.g.opened.empty()) << c.args;
    }
}
