// Whole sessions driven by scripted clicks and typed lines, and the headless
// export: the same echo and statistics, the device it opens, the sheet of nine
// panels, the options carried into the plots, and the words of a refusal.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sstream>

#include "app/export.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

const std::string kRule = " " + std::string(74, '-') + "\n";

::testing::AssertionResult in_order(const std::string& text, const std::vector<std::string>& parts) {
    for (std::size_t i = 0, at = 0; i < parts.size(); at += parts[i++].size())
        if ((at = text.find(parts[i], at)) == std::string::npos)
            return ::testing::AssertionFailure() << "\"" << parts[i] << "\" not next in:\n" << text;
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

struct Scenario {
    const char* why;
    const char* table;  // written beside the beam tables of runs 1 and 2 of "p": an .Error, else 3 records
    std::string input;
    const char* arg;                // null: no argument
    std::vector<int> picks;         // a row; 0 a page turn; 31.. the right column; 101.. the fit menu
    std::vector<std::string> says;  // on the console in this order
    const char* pages;              // of the menus shown, one after each pick
    int last;                       // the plot on show at the end
    std::function<void(Harness&, Session&)> then;
};

struct Export {
    Harness h;
    std::ostringstream err;
    Export() {
        beam_tables(h.dir, 6, {"001", "002"});  // with a word in the third record of .Xemit of run 2
        h.dir.write("p.Xemit.002", emit_table(2) + "  1.0000E+00      banana\n");
    }
    int run(const std::string& line) { return h.export_line(line, err); }
};

}  // namespace

TEST(Session, Scenarios) {
    const std::string saved = "     saved to file:   ", run = "     new run number:  .00";
    // clang-format off
    const Scenario cases[] = {
        {"a page turn clears the mark; page 4 turns to 1", nullptr, "", "p", {3, 0, 0, 0, 0, 25},
         {kRule + " rms Beam Divergence\n", kRule + " EXIT\n"}, "112341", 0, nullptr},
        // row 8 of page 2 and the missing row 17 are blank; the geometry row of page 3 flips nothing
        {"blank rows", nullptr, "", "p", {4, 0, 8, 17, 0, 18, 25}, {kRule + " Long. Emittance\n", kRule + " \n",
         kRule + " \n", kRule + " include geometry\n"}, "1122233", 0, [](Harness& h, Session& s) {
             EXPECT_FALSE(s.logo.WITH_GEOMETRY);
             EXPECT_EQ(h.g.named_on("pgenv", s.window.PLOT_DEVICE).size(), 1u); }},
        // each redraw comes back to the menu
        {"zoom, fit and geometry before any plot", nullptr, "abc\n-1\n\n2.5\n", "p", {18, 19, 20, 18, 18, 25},
         {kRule + " include geometry\n", "     Lower boundary of abscissa:      Not a number: abc\n"
          "     Lower boundary of abscissa:      Upper boundary of abscissa: ", kRule + " remove geometry\n"},
         "111111", 0, [](Harness&, Session& s) {
             EXPECT_EQ(std::tuple(s.logo.ZOOM_Z, s.logo.FIT_REQUESTED, s.logo.WITH_GEOMETRY, s.graph.Z_LOWER,
                                  s.graph.Z_UPPER), std::tuple(true, true, true, -1.0f, 2.5f)); }},
        {"the zoom follows the family of the plot on show", nullptr, "1\n2\n3\n4\n5\n6\n", "p",
         {0, 4, 19, 0, 2, 19, 0, 15, 19, 25}, {}, "1222333444", 15, [](Harness&, Session& s) {
             EXPECT_TRUE(s.logo.ZOOM_PHASE && s.logo.ZOOM_SCAN && s.logo.ZOOM_TIME && !s.logo.ZOOM_Z);
             EXPECT_EQ(std::pair(s.graph.TIME_LOWER, s.graph.TIME_UPPER), std::pair(5.0f, 6.0f)); }},
        // run 2 drawn without the menu; run 3 has nothing: back to 2 with y; run 1 stays at 1
        {"stepping past the end and back", nullptr, "y\n", "p,1", {1, 23, 23, 24, 24, 25},
         {run + "2\n", run + "3\n\n     No data files found for: p,003\n     Step back (Y/N): " + run + "2\n",
          run + "1\n", run + "1\n"}, "111111", 1,
         [](Harness&, Session& s) { EXPECT_TRUE(s.chara.RUN == ".001" && !s.STEP_BACK && !s.STEP_FOR); }},
        {"run 999 is the last", "p.Zemit.999", "", "p,999", {23, 25}, {".999\n" + kRule + " EXIT\n"}, "11", 0, nullptr},
        // the plot on show is drawn for the new project
        {"no data, then other arguments", "other.Zemit.003", "n\nother,3\n", "p,2", {4, 23, 25},
         {"     Step back (Y/N): \n     Enter input arguments: \n     Project name is: other\n"}, "111", 4, nullptr},
        {"end of input", nullptr, "", "p", {2, 19}, {"abscissa: \n     End of input: the session ends"}, "11", 2, nullptr},
        {"no argument and no rfgun tables", nullptr, "", nullptr, {},
         {"\n     program was called with no arguments, \n     try to work on project: rfgun\n"
          "     run number: .001\n\n     Project name is: rfgun\n     Run number is:   001\n\n"
          "     No data files found for: \n     Enter input arguments: \n     End of input: the session ends\n"},
         "", 0, nullptr},
        {"to file and its extensions", nullptr, "run5.gif\nrun5.txt\nrun5.cvps\n", "p", {2, 21, 25},
         {"     extensions: .ps   = landscape\n                 .vps  = portrait\n"
          "                 .cps  = color, landscape\n                 .cvps = colour, portrait\n"
          "     Enter file name :  Invalid extension\n", "Enter file name :  Invalid extension\n",
          "Enter file name : \n", saved + std::string(23, ' ') + "run5.ps\n"}, "111", 2, [](Harness& h, Session& s) {
             EXPECT_EQ(h.g.opened.back(), h.dir.path + "/run5.ps/VCPS");
             Export e;  // the headless export of the row: the same echo and statistics, in colour
             ASSERT_EQ(e.run("p --plot 1:2 --out beam.ps"), 0) << e.err.str();
             EXPECT_TRUE(e.h.session().logo.COLOUR && has(h.console(), e.h.console()));
             EXPECT_EQ(e.h.g.opened, (std::vector<std::string>{e.h.dir.file("beam.ps") + "/CPS"}));
             // paper green is 0, 0.8, 0.2
             EXPECT_TRUE(std::ranges::any_of(h.g.named_on("pgscr", s.window.FILE_DEVICE),
                                             [](auto* c) { return c->args[0] == 4 && c->args[2] == 0.8f; })); }},
        // the plot window is never closed
        {"to file before any plot, and a file that cannot be made", nullptr, "empty\nnope.ps\n", "p", {21, 21, 25},
         {saved + std::string(22, ' ') + "empty.ps\n", "     Cannot create file: nope.ps\n"}, "111", 0, nullptr},
        // nine passes and no menu in between; back on the row it came from; one foot for the sheet
        {"overview sheet", nullptr, "", "p,2", {5, 22, 25}, {saved + std::string(21, ' ') + "p1.002.ps\n"}, "111", 5,
         [](Harness& h, Session& s) {
             EXPECT_EQ(h.g.opened.back(), h.dir.path + "/p1.002.ps/PS");
             EXPECT_EQ(h.g.named_on("pgsubp", s.window.FILE_DEVICE).at(0)->args, (std::vector<double>{3, 3}));
             auto feet = h.g.named_on("pgptxt", s.window.FILE_DEVICE);
             ASSERT_EQ(feet.size(), 1u);
             EXPECT_EQ(feet[0]->texts[0], "p 002  22.11  09:05"); }},
        {"overview of a project without a name", ".Zemit.001", "", ",1", {22, 25}, {"B-Overview.ps\n"}, "11", 0,
         [](Harness& h, Session&) { EXPECT_EQ(h.g.opened.back(), h.dir.path + "/B-Overview.ps/CPS"); }},
        {"number of bins", "p.Error.001", "0\n5000\nten\n20\n", "p", {0, 0, 33, 15, 25}, {kRule + " Err. FOM(3)\n",
          kRule + " change number of bins\n     Current number of bins:   10\n     Enter new number of bins: ",
          "The number of bins must lie between 1 and 3200\n", "between 1 and 3200\n", "Not a whole number: ten"},
         "12333", 33, [](Harness&, Session& s) { EXPECT_EQ(s.graph.N_BINS, 20); }},
        {"no .Error: no bins", nullptr, "", "p", {0, 0, 15, 25}, {kRule + " \n" + kRule}, "1233", 0, nullptr},
        // no plot on show: nothing asked; a right-hand row keeps its titles in the second bank
        {"change title", "p.Error.001", "A very long title that runs beyond forty characters\n\nOrdinate\n", "p",
         {0, 0, 16, 33, 16, 25}, {kRule + " change title\n" + kRule, "\\d  = subscript & end superscribt\n",
          "     Label of the ordinate: "}, "123333", 33, [](Harness&, Session& s) {
             const auto& r = s.labels.rec[43];
             EXPECT_EQ(r.PLOT_TITLE + "|" + r.ABSCISSA_LABEL + "|" + r.ORDINATE_LABEL,
                       "A very long title that runs beyond forty||Ordinate"); }},
        // the fit comes again in the hardcopy without the fit menu, the red curve dashed too; the exit pick
        // draws nothing
        {"straight line fit on both curves", nullptr, "fitted\n", "p", {2, 20, 103, 21, 20, 118, 25},
         {"     straight line fit: Y = a + b*x\n", "line fit: Y = a + b*x\n", "saved to file:"}, "11111", 2,
         [](Harness& h, Session& s) {
             EXPECT_EQ(count_of(h.console(), "     red line: \n"), 2u);
             EXPECT_TRUE(!s.logo.FIT_REQUESTED && s.plot(2).ID_F == 18 && s.fit_variables.X_FIT.empty());
             EXPECT_EQ(dashed(h.g, s.window.PLOT_DEVICE).size(), 2u);
             EXPECT_EQ(dashed(h.g, s.window.FILE_DEVICE).size(), 3u); }},
        // stored from one plot, laid dashed over the next (the NZ_EMIT of row 4); the fit menu comes again
        {"reference curve", nullptr, "ref.dat\nref.dat\n", "p", {4, 20, 117, 5, 116, 25},
         {"     Data saved to reference file: ref.dat\n", "     Enter reference file name: "}, "1111", 5,
         [](Harness& h, Session& s) {
             EXPECT_EQ(std::pair(s.plot(4).ID_F, s.plot(5).ID_F), std::pair(17, 16));
             auto lines = dashed(h.g, s.window.PLOT_DEVICE);
             ASSERT_EQ(lines.size(), 1u);
             EXPECT_EQ(lines[0]->ys, (std::vector<float>{2, 2.2f, 2.4f, 2.6f, 2.8f, 3})); }},
    };
    // clang-format on
    for (const Scenario& c : cases) {
        SCOPED_TRACE(c.why);
        Harness h(c.input);
        beam_tables(h.dir, 6, {"001", "002"});
        if (c.table)
            h.dir.write(c.table, has(c.table, "Error") ? "1 2 3 4 5 6 7 8 9 10 11 12\n" : emit_table(3));
        h.g.refuse_open.push_back(h.dir.path + "/nope.ps/PS");
        for (int p : c.picks)
            p > 100 ? h.click(0.03f, 0.90f - 0.05f * static_cast<float>(p - 101)) : h.picks({p});
        EXPECT_EQ(h.run(c.arg ? std::vector<std::string>{c.arg} : std::vector<std::string>{}), 0);
        EXPECT_TRUE(in_order(h.console(), c.says));
        std::string pages;  // "\\fiMENU 2 of 4": 2
        for (auto* t : h.g.named("pgptxt"))
            if (t->texts[0].rfind("\\fiMENU ", 0) == 0) pages += t->texts[0][8];
        EXPECT_EQ(pages, c.pages);
        // each pick of a menu or of the fit menu is answered by a rule
        EXPECT_EQ(count_of(h.console(), kRule),
                  pages.size() + std::ranges::count_if(c.picks, [](int p) { return p > 100; }));
        EXPECT_EQ(h.session().window.LAST_SELECTION, c.last);
        EXPECT_TRUE(h.g.ended && h.dir.exists("win_config.dat") && !h.session().logo.TO_FILE);
        EXPECT_EQ(h.g.named("pgclos").size(), count_of(h.console(), "saved to file:"));
        if (c.then) c.then(h, h.session());
    }
}

// Rows 1 to 13 of page one on the bundled runs and on each real run with beam
// tables: a frame a row, two for row 12; twelve finite curves from the beam
// tables and five from .ref where there is one; no stop, no prompt.
TEST(Session, PageOneOnTheBundledAndRealRuns) {
    const fs::path src(VIEWER_SOURCE_DIR);
    std::vector<std::pair<fs::path, std::string>> runs;  // folder, argument
    for (const char* arg : {"rfgun,1", "rfgun,2", "rfgun,3"}) runs.emplace_back(src / "examples", arg);
    for (const auto& e : fs::recursive_directory_iterator(src / ".." / "shared" / "realdata"))
        if (const std::string n = e.path().filename().string(); n.ends_with(".Zemit.001"))
            runs.emplace_back(e.path().parent_path(), n.substr(0, n.size() - 10) + ",1");
    for (const auto& [from, arg] : runs) {
        SCOPED_TRACE(arg);
        Harness h;
        fs::copy(from, h.dir.path);
        for (int row : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 25}) h.row(row);
        EXPECT_EQ(h.run({arg}), 0);
        const std::string c = h.console();
        EXPECT_TRUE(c.find("Error") == c.npos && c.find("Enter") == c.npos) << c;
        const int device = h.session().window.PLOT_DEVICE;
        int curves = 0;
        for (auto* line : h.g.named_on("pgline", device)) {
            curves += line->args[0] > 1;
            EXPECT_TRUE(std::ranges::all_of(line->ys, [](float y) { return std::isfinite(y); }));
        }
        const bool ref = h.dir.exists(arg.substr(0, arg.size() - 2) + ".ref.00" + arg.back());
        EXPECT_EQ(std::pair(h.g.named_on("pgenv", device).size(), curves), std::pair(14ul, 12 + 5 * ref));
    }
    EXPECT_GT(runs.size(), 3u);
}

TEST(Export, SheetsOptionsAndListsAsTheMenuWould) {
    Export sheet, zoomed, list;
    ASSERT_EQ(sheet.run("p --overview 1 --out s.png --mono --size 400x300"), 0);
    EXPECT_EQ(sheet.h.g.opened, (std::vector<std::string>{sheet.h.dir.file("s.png") + "/PNG"}));
    EXPECT_EQ(sheet.h.g.named("pgsubp").at(0)->args, (std::vector<double>{3, 3}));
    // rows 1 to 9; the curves told apart by line style
    EXPECT_EQ(std::pair(sheet.h.g.named("pgenv").size(), sheet.h.session().logo.COLOUR),
              std::pair(9ul, false));

    ASSERT_EQ(zoomed.run("p --plot 1:4 --zoom 0.1:0.3 --fit 3 --out z.ps"), 0);
    EXPECT_EQ(zoomed.h.session().plot(4).NP, 3);  // z = 0.1, 0.2, 0.3
    EXPECT_TRUE(has(zoomed.h.console(), "     straight line fit: Y = a + b*x"));

    // the rows as echoed, for the tables there are (no .ref, no .Sigma), by their whole names (the menu cuts
    // 4:4 and 4:5 alike); a sub-ensemble table renames the cross-over rows
    for (const char* k : {"p.Sub_emit.001", "p.Xemit2.001", "p.Yemit2.001"}) list.h.dir.write(k, "1\n");
    ASSERT_EQ(list.run("p --list"), 0);
    EXPECT_TRUE(
        in_order(list.h.console(),
                 {"page 1\n  1:1    Trans. Emittance\n  1:2    rms Beam Size\n",
                  "  1:9    Particle velocity\npage 2\n", "  2:12   beta function\n  2:13   alpha function\n",
                  "  4:4    trans. cor. emitt. contributions x\n  4:5    trans. cor. emitt. contributions "
                  "y\n  4:12   Sub-ensemble emittance\n"}));
    EXPECT_FALSE(has(list.h.console(), "page 5"));
}

TEST(Export, RequestsThatCannotBeServed) {
    // the arguments, the exit status (-1: the command line itself is refused), the words
    // clang-format off
    const std::tuple<const char*, int, const char*> cases[] = {
        {"p --plot 1:10 --out a.ps", 2, "(\"Reference particle momentum\") is not available for this run: it needs .ref"},
        {"p --overview 5 --out a.ps", 2, "page 5 is not available for this run: it needs .Sigma"},
        {"p --plot 2:8 --out a.ps", 2, "row 2:8 is blank"}, {"--size 10x10", -1, "--size takes WIDTHxHEIGHT"},
        {"p,2 --plot 1:1 --out a.ps", 1, "p.Xemit.002, line 3, column 13"}, {"--zoom 1", -1, "--zoom takes LOW:HIGH"},
        {"p --plot 1:1 --out a.ps --geometry", 1, "no aperture file"}, {"--plot 1-2", -1, "--plot takes PAGE:ROW"},
        {"p --plot 1:1 --out nodir/a.ps", 1, "nodir/a.ps: No such file or directory"},
        {"--plot 1:1", -1, "no --out FILE given"}, {"--plot 6:1", -1, "there is no page 6"},
        {"--out a.gif", -1, "must end in .ps, .eps, .png or .pdf"}, {"--plot 1:1 p", -1, "the run argument comes first"},
        {"--bins 0", -1, "--bins takes a number from 1 to 3200"}, {"--fit 16", -1, "--fit takes a fit of the fit menu"},
        {"--plot 1:1 --out a.eps --plot 1:2", -1, "an .eps file holds one page"},
        {"--table Foo", -1, "--table takes a table kind, one of Xemit, Yemit,"}, {"p --table ref", 1, "no table p.ref.001"},
        {"p --table Xemit --plot 1:1", -1, "--table goes alone"}, {"p,2 --table Xemit", 1, "p.Xemit.002, line 3, column 13"},
    };
    // clang-format on
    for (auto [args, status, words] : cases) {
        SCOPED_TRACE(args);
        Export e;
        try {
            EXPECT_EQ(e.run(args), status);
            EXPECT_TRUE(has(e.err.str(), words));
        } catch (const UsageError& u) {
            EXPECT_TRUE(status == -1 && has(u.what(), words)) << u.what();
        }
        // PGPLOT ended on every way out from an opened device; only a failed run opens one
        EXPECT_TRUE(e.h.g.ended == !e.h.g.opened.empty() && (status == 1 || !e.h.g.ended));
    }
}
