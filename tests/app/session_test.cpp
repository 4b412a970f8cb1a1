// Whole sessions driven by scripted clicks and typed lines.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "app/dialogues.hpp"
#include "app/hardcopy.hpp"
#include "app/windows.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::count_of;
using viewer::testing::echoes;
using viewer::testing::Harness;
using viewer::testing::has;

namespace {

const std::string kRule = " " + std::string(74, '-');

// A session of project "p" with beam tables in runs 1 and 2.
struct Play : Harness {
    explicit Play(std::string input = "") : Harness(std::move(input)) {
        viewer::testing::beam_tables(dir, 5, {"001", "002"});
    }
    int go(std::initializer_list<int> codes, const std::string& arg = "p") {
        picks(codes);
        return run({arg});
    }
};

}  // namespace

TEST(Session, MenuWalksEchoesPageTurnsAndBlankRows) {
    struct Case {
        std::initializer_list<int> picks;
        bool sigma;         // a .Sigma table: five pages
        const char* pages;  // of the menus shown
        std::vector<std::string> echoes;
        int last;
    };
    const Case cases[] = {
        {{2, 25}, false, "11", {"rms Beam Size", "EXIT"}, 2},
        // a page turn clears the mark; 4 turns to 1, 4 to 5 to 1
        {{3, 0, 0, 0, 0, 25}, false, "112341", {"rms Beam Divergence", "EXIT"}, 0},
        {{3, 0, 0, 0, 0, 0, 25}, true, "1123451", {"rms Beam Divergence", "EXIT"}, 0},
        // page 2 row 8: the mark moves there, nothing is drawn; no row 17 on
        // page 2: the mark stays; page 3: the geometry row flips nothing
        {{4, 0, 8, 17, 0, 18, 25},
         false,
         "1122233",
         {"Long. Emittance", "", "", "include geometry", "EXIT"},
         0},
    };
    for (const Case& c : cases) {
        Play h;
        if (c.sigma) h.dir.write("p.Sigma.001", "0 0 1 2 3\n");
        EXPECT_EQ(h.go(c.picks), 0);
        std::string seen;  // "\\fiMENU 2 of 4": 2
        for (auto* t : h.g.named("pgptxt"))
            if (t->texts[0].rfind("\\fiMENU ", 0) == 0 && has(t->texts[0], c.sigma ? " of 5" : " of 4"))
                seen += t->texts[0][8];
        EXPECT_EQ(seen, c.pages);
        EXPECT_EQ(echoes(h.console()), c.echoes);
        EXPECT_EQ(h.session().window.LAST_SELECTION, c.last) << c.pages;
        EXPECT_FALSE(h.session().logo.WITH_GEOMETRY);
        EXPECT_TRUE(h.dir.exists("win_config.dat") && h.g.ended);
    }
}

TEST(Session, ZoomFitAndGeometryBeforeAnyPlot) {
    Play h("abc\n-1\n\n2.5\n");
    h.go({19, 20, 18, 25});
    Session& s = h.session();
    EXPECT_TRUE(s.logo.ZOOM_Z && s.logo.FIT_REQUESTED && s.logo.WITH_GEOMETRY);
    EXPECT_EQ(s.graph.Z_LOWER, -1.0f);
    EXPECT_EQ(s.graph.Z_UPPER, 2.5f);
    EXPECT_TRUE(has(h.console(),
                    "     Lower boundary of abscissa:      Not a number: abc\n"
                    "     Lower boundary of abscissa:      Upper boundary of abscissa: "));
    // each redraw pass comes back to the menu: four menus and the exit
    EXPECT_EQ(count_of(h.console(), kRule), 4u);
}

TEST(Session, ZoomFamilies) {
    struct Case {
        int page, last;
        bool Logo::*flag;
    };
    const Case cases[] = {{3, 2, &Logo::ZOOM_SCAN},  {2, 4, &Logo::ZOOM_PHASE}, {2, 5, &Logo::ZOOM_Z},
                          {4, 15, &Logo::ZOOM_TIME}, {4, 14, &Logo::ZOOM_Z},    {1, 3, &Logo::ZOOM_Z}};
    for (const Case& c : cases) {
        Harness h("1\n2\n");
        Session& s = h.session();
        s.window.PAGE = c.page;
        s.window.LAST_SELECTION = c.last;
        sub_zoom(s);
        EXPECT_TRUE(s.logo.*c.flag) << c.page << " " << c.last;
    }
}

TEST(Session, SteppingPastTheEndAndBack) {
    Play h("y\n");
    // plot 1; run 2 drawn again without the menu; run 3 has no data: step back
    // with y; run 1; stays at 1
    h.go({1, 23, 23, 24, 24, 25}, "p,1");
    Session& s = h.session();
    const std::string c = h.console();
    EXPECT_TRUE(has(c, "     new run number:  .002\n"));
    EXPECT_TRUE(
        has(c, "     new run number:  .003\n\n     No data files found for: p,003\n     Step back (Y/N): "));
    EXPECT_EQ(count_of(c, "     new run number:  .001\n"), 2u);
    EXPECT_EQ(s.RUN_NUMBER, 1);
    EXPECT_EQ(s.chara.RUN, ".001");
    EXPECT_EQ(s.window.LAST_SELECTION, 1);
    EXPECT_FALSE(s.STEP_BACK || s.STEP_FOR);
    // menus: the start, after plot 1, after run 2, after run 2 again, after run 1, and the exit
    EXPECT_EQ(count_of(c, kRule), 6u);

    Harness top;  // at run 999 a step forward stays there
    top.dir.write("p.Zemit.999", viewer::testing::emit_table(3));
    top.picks({23, 25});
    top.run({"p,999"});
    EXPECT_EQ(top.session().RUN_NUMBER, 999);
    EXPECT_TRUE(has(top.console(), "     new run number:  .999\n"));
    EXPECT_EQ(top.console().find("No data files"), std::string::npos);
}

TEST(Session, NoDataThenOtherArguments) {
    Play h("n\nother,3\n");
    h.dir.write("other.Zemit.003", viewer::testing::emit_table(3));
    h.go({4, 23, 25}, "p,2");  // run 3 of p has nothing: answer n, then other,3
    Session& s = h.session();
    EXPECT_EQ(s.chara.PROJECT, "other");
    EXPECT_EQ(s.RUN_NUMBER, 3);
    EXPECT_TRUE(has(h.console(),
                    "     Step back (Y/N): \n     Enter input arguments: \n     Project name is: other\n"));
    EXPECT_EQ(s.window.LAST_SELECTION, 4);  // the plot on show is drawn for the new project
}

TEST(Session, EndOfInputAtEveryKindOfPrompt) {
    for (int row : {19, 21}) {  // the zoom and the file name
        Play h;
        EXPECT_EQ(h.go({2, row}), 0);
        EXPECT_TRUE(has(h.console(), "\n     End of input: the session ends\n")) << row;
        EXPECT_TRUE(h.g.ended) << row;
    }
    Harness none;  // no argument, no rfgun files: the arguments asked for
    EXPECT_EQ(none.run({}), 0);
    EXPECT_TRUE(has(none.console(),
                    "     No data files found for: \n     Enter input arguments: \n"
                    "     End of input: the session ends\n"));
    EXPECT_TRUE(none.g.ended && none.dir.exists("win_config.dat"));
}

TEST(Session, ToFileAndItsExtensions) {
    Play h("run5.gif\nrun5.txt\nrun5.cvps\n");
    h.go({2, 21, 25});
    const std::string c = h.console();
    EXPECT_EQ(count_of(c, " Invalid extension\n"), 2u);
    EXPECT_TRUE(has(c,
                    "     extensions: .ps   = landscape\n                 .vps  = portrait\n"
                    "                 .cps  = color, landscape\n                 .cvps = colour, portrait\n"
                    "     Enter file name : "));
    EXPECT_TRUE(has(c, "     saved to file:   " + std::string(23, ' ') + "run5.ps\n"));
    EXPECT_EQ(h.g.opened.back(), h.dir.path + "/run5.ps/VCPS");
    Session& s = h.session();
    EXPECT_FALSE(s.logo.TO_FILE);
    EXPECT_EQ(s.window.LAST_SELECTION, 2);
    EXPECT_EQ(h.g.named("pgclos").size(), 1u);
    bool green = false;  // the hardcopy colours: green 0, 0.8, 0.2 on paper
    for (auto* call : h.g.named_on("pgscr", s.window.FILE_DEVICE))
        if (call->args[0] == 4) green = call->args[2] == 0.8f;
    EXPECT_TRUE(green);

    const std::pair<const char*, const char*> devices[] = {{"run5", "run5.ps/PS"},
                                                           {"run5.ps", "run5.ps/PS"},
                                                           {"run5.vps", "run5.ps/VPS"},
                                                           {"run5.cps", "run5.ps/CPS+"},
                                                           {"run5.vcps", "run5.ps/VCPS+"},
                                                           {"run5.cvps", "run5.ps/VCPS+"},
                                                           {"a.psx.cps", "a.ps/PS"},
                                                           {"run5.gif", ""},
                                                           {"run5.cgif", ""}};
    for (auto [name, device] : devices) {
        const auto d = device_for_name(name);
        EXPECT_EQ(d ? d->device + (d->colour ? "+" : "") : "", device) << name;
    }
}

TEST(Session, ToFileBeforeAnyPlotAndUncreatableFile) {
    Play h("empty\nnope.ps\n");
    h.g.refuse_open.push_back(h.dir.path + "/nope.ps/PS");
    h.go({21, 21, 25});
    EXPECT_TRUE(has(h.console(), "     saved to file:   " + std::string(22, ' ') + "empty.ps\n"));
    EXPECT_TRUE(has(h.console(), "     Cannot create file: nope.ps\n"));
    EXPECT_FALSE(h.session().logo.TO_FILE);
    EXPECT_EQ(h.g.named("pgclos").size(), 1u);  // the plot window is never closed
}

TEST(Session, OverviewSheet) {
    Play h;
    h.go({5, 22, 25}, "p,2");
    Session& s = h.session();
    EXPECT_TRUE(has(h.console(), "     saved to file:   " + std::string(21, ' ') + "p1.002.ps\n"));
    EXPECT_EQ(h.g.opened.back(), h.dir.path + "/p1.002.ps/PS");
    EXPECT_EQ(s.window.LAST_SELECTION, 5);  // back on the row it came from
    EXPECT_FALSE(s.logo.OVERVIEW);
    EXPECT_EQ(h.g.named_on("pgsubp", s.window.FILE_DEVICE).at(0)->args, (std::vector<double>{3, 3}));
    auto feet = h.g.named_on("pgptxt", s.window.FILE_DEVICE);
    ASSERT_EQ(feet.size(), 1u);  // one page foot for the sheet
    EXPECT_EQ(feet[0]->texts[0], "p 002  22.11  09:05");
    // nine plot passes and no menu in between: three menus in all
    EXPECT_EQ(count_of(h.console(), kRule), 3u);

    Harness anon;
    anon.dir.write(".Zemit.001", viewer::testing::emit_table(3));
    anon.picks({22, 25});
    anon.run({",1"});
    EXPECT_TRUE(has(anon.console(), "B-Overview.ps\n"));
    EXPECT_EQ(anon.g.opened.back(), anon.dir.path + "/B-Overview.ps/CPS");
}

TEST(Session, NumberOfBins) {
    Play h("0\n5000\nten\n20\n");
    h.dir.write("p.Error.001", "1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.go({0, 0, 33, 15, 25});
    EXPECT_EQ(h.session().graph.N_BINS, 20);
    EXPECT_EQ(h.session().window.LAST_SELECTION, 33);
    const std::string c = h.console();
    EXPECT_TRUE(has(c, " Err. FOM(3)\n"));
    EXPECT_TRUE(has(c, "     Current number of bins:   10\n     Enter new number of bins: "));
    EXPECT_EQ(count_of(c, "The number of bins must lie between 1 and 3200"), 2u);
    EXPECT_EQ(count_of(c, "Not a whole number: ten"), 1u);

    Play without;  // no .Error: the row has no text and no effect
    without.go({0, 0, 15, 25});
    EXPECT_EQ(without.console().find("number of bins"), std::string::npos);
}

TEST(Session, ReadErrorInATableStopsWithFileAndLine) {
    Play h;
    h.dir.write("p.Xemit.001", viewer::testing::emit_table(2) + "  1.0000E+00      banana\n");
    h.go({1, 25});
    EXPECT_TRUE(has(h.console(), "\n          Error reading unit 10, file: " + h.dir.file("p.Xemit.001") +
                                     ", line 3, column 13: "));
    EXPECT_TRUE(has(h.console(), "          Program stops\n"));
}

namespace {

// Copies a run directory, draws rows 1 to 13 of page one (and `more` rows
// after them) and ends; the frames drawn on the plot window are returned.
std::size_t draw_page_one(Harness& h, const std::string& from, const std::string& arg,
                          std::vector<int> more = {}) {
    for (const auto& e : std::filesystem::directory_iterator(from))
        std::filesystem::copy_file(e.path(), h.dir.file(e.path().filename().string()));
    for (int row = 1; row <= 13; ++row) h.row(row);
    for (int row : more) h.row(row);
    h.row(25);
    EXPECT_EQ(h.run({arg}), 0) << arg;
    const std::string c = h.console();
    EXPECT_EQ(c.find("Error"), std::string::npos) << arg << c;
    EXPECT_EQ(c.find("Enter"), std::string::npos) << arg;  // no prompt was met
    for (auto* line : h.g.named_on("pgline", h.session().window.PLOT_DEVICE))
        for (float y : line->ys) EXPECT_TRUE(std::isfinite(y)) << arg;
    return h.g.named_on("pgenv", h.session().window.PLOT_DEVICE).size();
}

}  // namespace

TEST(Session, BundledExampleDrawsEveryPlotOfPageOne) {
    for (const char* run : {"rfgun,1", "rfgun,2", "rfgun,3"}) {
        Harness h;
        // rows 1 to 11 and 13 have one frame, row 12 two, the redraw of 13 with the outline one more
        EXPECT_EQ(draw_page_one(h, std::string(VIEWER_SOURCE_DIR) + "/examples", run, {18}), 15u) << run;
        EXPECT_TRUE(h.session().logo.GEOMETRY_LOADED) << run;
    }
}

TEST(Session, RealRunsDrawEveryPlotOfPageOneTheyHaveTablesFor) {
    const std::filesystem::path root =
        std::filesystem::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!std::filesystem::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;
    int drawn = 0;
    for (const auto& dir : std::filesystem::directory_iterator(root)) {
        if (!dir.is_directory()) continue;
        std::string project;
        bool beam = false, ref = false;
        for (const auto& e : std::filesystem::directory_iterator(dir.path())) {
            const std::string name = e.path().filename().string();
            for (const char* kind : {".Zemit.", ".ref."})
                if (auto p = name.find(kind); p != std::string::npos) {
                    project = name.substr(0, p);
                    (kind[1] == 'Z' ? beam : ref) = true;
                }
        }
        if (project.empty()) continue;  // no table of page one
        Harness h;
        // a row without its tables still draws its empty frame
        EXPECT_EQ(draw_page_one(h, dir.path().string(), project + ",1"), 14u) << dir.path();
        int curves = 0;
        for (auto* line : h.g.named_on("pgline", h.session().window.PLOT_DEVICE)) curves += line->args[0] > 1;
        EXPECT_EQ(curves, (beam ? 12 : 0) + (ref ? 5 : 0)) << dir.path();
        drawn += curves;
    }
    EXPECT_GT(drawn, 0);
}
