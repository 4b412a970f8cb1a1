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
using viewer::testing::emit_table;
using viewer::testing::Harness;

namespace {

// A project "p" with beam tables in runs 1 and 2.
void two_runs(Harness& h) {
    for (const char* run : {"001", "002"}) {
        h.dir.write(std::string("p.Xemit.") + run, emit_table(5));
        h.dir.write(std::string("p.Yemit.") + run, emit_table(5, 2.0));
        h.dir.write(std::string("p.Zemit.") + run, emit_table(5));
    }
}

}  // namespace

TEST(Session, SelectEchoAndExit) {
    Harness h;
    two_runs(h);
    h.row(2);
    h.row(25);
    EXPECT_EQ(h.run({"p"}), 0);
    const std::string c = h.console();
    EXPECT_EQ(c.rfind("\n     Project name is: p\n     Run number is:   001\n", 0), 0u);
    EXPECT_EQ(echoes(c), (std::vector<std::string>{"rms Beam Size", "EXIT"}));
    EXPECT_EQ(h.session().window.LAST_SELECTION, 2);
    EXPECT_TRUE(h.dir.exists("win_config.dat"));
    EXPECT_TRUE(h.g.ended);
    EXPECT_EQ(h.session().chara.PAGE_TITLE, "p 001  22.11  09:05");
}

TEST(Session, PageTurnsWithFourAndFivePages) {
    Harness h;
    two_runs(h);
    h.row(3);
    h.turn_page();  // 2
    h.turn_page();  // 3
    h.turn_page();  // 4
    h.turn_page();  // back to 1
    h.row(25);
    h.run({"p"});
    Session& s = h.session();
    EXPECT_EQ(s.window.PAGE, 1);
    EXPECT_EQ(s.window.LAST_SELECTION, 0);  // a page turn clears the mark
    auto headings = h.g.named("pgptxt");
    std::vector<std::string> pages;
    for (auto* c : headings)
        if (c->texts[0].rfind("\\fiMENU", 0) == 0) pages.push_back(c->texts[0]);
    EXPECT_EQ(pages, (std::vector<std::string>{"\\fiMENU 1 of 4", "\\fiMENU 1 of 4", "\\fiMENU 2 of 4",
                                               "\\fiMENU 3 of 4", "\\fiMENU 4 of 4", "\\fiMENU 1 of 4"}));

    Harness h5;
    two_runs(h5);
    h5.dir.write("p.Sigma.001", "0 0 1 2 3\n");
    for (int i = 0; i < 5; ++i) h5.turn_page();
    h5.row(25);
    h5.run({"p"});
    EXPECT_EQ(h5.session().window.N_PAGES, 5);
    EXPECT_EQ(h5.session().window.PAGE, 1);  // 4 -> 5 -> 1
    EXPECT_NE(h5.console().find(" EXIT"), std::string::npos);
}

TEST(Session, BlankRowsAndRowsWithoutPlots) {
    Harness h;
    two_runs(h);
    h.row(4);
    h.turn_page();
    h.row(8);   // page 2 row 8: the mark moves there, nothing is drawn
    h.row(17);  // no row 17 on page 2: nothing, the mark stays
    h.turn_page();
    h.row(18);  // page 3: the geometry row flips nothing
    h.row(25);
    h.run({"p"});
    Session& s = h.session();
    EXPECT_EQ(s.window.LAST_SELECTION, 0);
    EXPECT_FALSE(s.logo.WITH_GEOMETRY);
    EXPECT_EQ(echoes(h.console()),
              (std::vector<std::string>{"Long. Emittance", "", "", "include geometry", "EXIT"}));
}

TEST(Session, ZoomFitAndGeometryBeforeAnyPlot) {
    Harness h("abc\n-1\n\n2.5\n");
    two_runs(h);
    h.row(19);
    h.row(20);
    h.row(18);
    h.row(25);
    h.run({"p"});
    Session& s = h.session();
    EXPECT_TRUE(s.logo.ZOOM_Z);
    EXPECT_EQ(s.graph.Z_LOWER, -1.0f);
    EXPECT_EQ(s.graph.Z_UPPER, 2.5f);
    EXPECT_TRUE(s.logo.FIT_REQUESTED);
    EXPECT_TRUE(s.logo.WITH_GEOMETRY);
    const std::string c = h.console();
    EXPECT_NE(c.find("     Lower boundary of abscissa:      Not a number: abc\n"
                     "     Lower boundary of abscissa:      Upper boundary of abscissa: "),
              std::string::npos);
    // each redraw pass comes back to the menu: four menus and the exit
    EXPECT_EQ(count_of(c, " " + std::string(74, '-')), 4u);
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
    Harness h("y\n");
    two_runs(h);
    h.row(1);
    h.row(23);  // run 2, plot 1 drawn again without the menu
    h.row(23);  // run 3 has no data: step back with y
    h.row(24);  // run 1
    h.row(24);  // stays at 1
    h.row(25);
    h.run({"p,1"});
    Session& s = h.session();
    const std::string c = h.console();
    EXPECT_NE(c.find("     new run number:  .002\n"), std::string::npos);
    EXPECT_NE(
        c.find("     new run number:  .003\n\n     No data files found for: p,003\n     Step back (Y/N): "),
        std::string::npos);
    EXPECT_EQ(count_of(c, "     new run number:  .001\n"), 2u);
    EXPECT_EQ(s.RUN_NUMBER, 1);
    EXPECT_EQ(s.chara.RUN, ".001");
    EXPECT_EQ(s.window.LAST_SELECTION, 1);
    EXPECT_FALSE(s.STEP_BACK);
    EXPECT_FALSE(s.STEP_FOR);
    // five menus: the start, after plot 1, after run 2, after run 2 again, after run 1
    EXPECT_EQ(count_of(c, " " + std::string(74, '-')), 6u);
}

TEST(Session, SteppingAtTheUpperEnd) {
    Harness h;
    h.dir.write("p.Zemit.999", emit_table(3));
    h.row(23);
    h.row(25);
    h.run({"p,999"});
    EXPECT_EQ(h.session().RUN_NUMBER, 999);
    EXPECT_NE(h.console().find("     new run number:  .999\n"), std::string::npos);
    EXPECT_EQ(h.console().find("No data files"), std::string::npos);
}

TEST(Session, NoDataThenOtherArguments) {
    Harness h("n\nother,3\n");
    two_runs(h);
    h.dir.write("other.Zemit.003", emit_table(3));
    h.row(4);
    h.row(23);  // run 3 of p has nothing: answer n, then other,3
    h.row(25);
    h.run({"p,2"});
    Session& s = h.session();
    EXPECT_EQ(s.chara.PROJECT, "other");
    EXPECT_EQ(s.RUN_NUMBER, 3);
    const std::string c = h.console();
    EXPECT_NE(c.find("     Step back (Y/N): \n     Enter input arguments: \n     Project name is: other\n"),
              std::string::npos);
    EXPECT_EQ(s.window.LAST_SELECTION, 4);  // the plot on show is drawn for the new project

    Harness none("");
    EXPECT_EQ(none.run({}), 0);  // no argument, no rfgun files, then the end of input
    EXPECT_NE(none.console().find("     No data files found for: \n     Enter input arguments: \n"
                                  "     End of input: the session ends\n"),
              std::string::npos);
    EXPECT_TRUE(none.g.ended);
    EXPECT_TRUE(none.dir.exists("win_config.dat"));
}

TEST(Session, EndOfInputAtEveryKindOfPrompt) {
    for (int row : {19, 21}) {
        Harness h("");
        two_runs(h);
        h.row(2);
        h.row(row);
        EXPECT_EQ(h.run({"p"}), 0);
        EXPECT_NE(h.console().find("End of input: the session ends"), std::string::npos) << row;
        EXPECT_TRUE(h.g.ended) << row;
    }
}

TEST(Session, ToFileAndItsExtensions) {
    Harness h("run5.gif\nrun5.txt\nrun5.cvps\n");
    two_runs(h);
    h.row(2);
    h.row(21);
    h.row(25);
    h.run({"p"});
    const std::string c = h.console();
    EXPECT_EQ(count_of(c, " Invalid extension\n"), 2u);
    EXPECT_NE(c.find("     extensions: .ps   = landscape\n                 .vps  = portrait\n"
                     "                 .cps  = color, landscape\n                 .cvps = colour, portrait\n"
                     "     Enter file name : "),
              std::string::npos);
    EXPECT_NE(c.find("     saved to file:   " + std::string(23, ' ') + "run5.ps\n"), std::string::npos);
    ASSERT_FALSE(h.g.opened.empty());
    EXPECT_EQ(h.g.opened.back(), h.dir.path + "/run5.ps/VCPS");
    Session& s = h.session();
    EXPECT_FALSE(s.logo.TO_FILE);
    EXPECT_EQ(s.window.LAST_SELECTION, 2);
    EXPECT_EQ(h.g.named("pgclos").size(), 1u);
    // the hardcopy colours: green 0, 0.8, 0.2 on paper
    bool green = false;
    for (auto* call : h.g.named_on("pgscr", s.window.FILE_DEVICE))
        if (call->args[0] == 4) green = call->args[2] == 0.8f;
    EXPECT_TRUE(green);
}

TEST(Session, DeviceForEveryExtension) {
    auto device_for_test = [](const std::string& name) {
        auto d = device_for_name(name);
        return d ? std::make_pair(d->device, d->colour ? 1 : 0) : std::make_pair(std::string(), -1);
    };
    EXPECT_EQ(device_for_test("run5"), std::make_pair(std::string("run5.ps/PS"), 0));
    EXPECT_EQ(device_for_test("run5.ps"), std::make_pair(std::string("run5.ps/PS"), 0));
    EXPECT_EQ(device_for_test("run5.vps"), std::make_pair(std::string("run5.ps/VPS"), 0));
    EXPECT_EQ(device_for_test("run5.cps"), std::make_pair(std::string("run5.ps/CPS"), 1));
    EXPECT_EQ(device_for_test("run5.vcps"), std::make_pair(std::string("run5.ps/VCPS"), 1));
    EXPECT_EQ(device_for_test("run5.cvps"), std::make_pair(std::string("run5.ps/VCPS"), 1));
    EXPECT_EQ(device_for_test("a.psx.cps"), std::make_pair(std::string("a.ps/PS"), 0));
    EXPECT_EQ(device_for_test("run5.gif").second, -1);
    EXPECT_EQ(device_for_test("run5.cgif").second, -1);
}

TEST(Session, ToFileBeforeAnyPlotAndUncreatableFile) {
    Harness h("empty\nnope.ps\n");
    two_runs(h);
    h.g.refuse_open.push_back(h.dir.path + "/nope.ps/PS");
    h.row(21);
    h.row(21);
    h.row(25);
    h.run({"p"});
    const std::string c = h.console();
    EXPECT_NE(c.find("     saved to file:   " + std::string(22, ' ') + "empty.ps\n"), std::string::npos);
    EXPECT_NE(c.find("     Cannot create file: nope.ps\n"), std::string::npos);
    EXPECT_FALSE(h.session().logo.TO_FILE);
    EXPECT_EQ(h.g.named("pgclos").size(), 1u);  // the plot window is never closed
}

TEST(Session, OverviewSheet) {
    Harness h;
    two_runs(h);
    h.row(5);
    h.row(22);
    h.row(25);
    h.run({"p,2"});
    Session& s = h.session();
    const std::string c = h.console();
    EXPECT_NE(c.find("     saved to file:   " + std::string(21, ' ') + "p1.002.ps\n"), std::string::npos);
    EXPECT_EQ(h.g.opened.back(), h.dir.path + "/p1.002.ps/PS");
    EXPECT_EQ(s.window.LAST_SELECTION, 5);  // back on the row it came from
    EXPECT_FALSE(s.logo.OVERVIEW);
    auto subp = h.g.named_on("pgsubp", s.window.FILE_DEVICE);
    ASSERT_FALSE(subp.empty());
    EXPECT_EQ(subp[0]->args[0], 3);
    EXPECT_EQ(subp[0]->args[1], 3);
    auto feet = h.g.named_on("pgptxt", s.window.FILE_DEVICE);
    ASSERT_EQ(feet.size(), 1u);  // one page foot for the sheet
    EXPECT_EQ(feet[0]->texts[0], "p 002  22.11  09:05");
    // nine plot passes and no menu in between: three menus in all
    EXPECT_EQ(count_of(c, " " + std::string(74, '-')), 3u);

    Harness anon;
    anon.dir.write(".Zemit.001", emit_table(3));
    anon.row(22);
    anon.row(25);
    anon.run({",1"});
    EXPECT_NE(anon.console().find("B-Overview.ps\n"), std::string::npos);
    EXPECT_EQ(anon.g.opened.back(), anon.dir.path + "/B-Overview.ps/CPS");
}

TEST(Session, NumberOfBins) {
    Harness h("0\n5000\nten\n20\n");
    two_runs(h);
    h.dir.write("p.Error.001", "1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.turn_page();
    h.turn_page();
    h.right_row(3);
    h.row(15);
    h.row(25);
    h.run({"p"});
    Session& s = h.session();
    EXPECT_EQ(s.graph.N_BINS, 20);
    EXPECT_EQ(s.window.LAST_SELECTION, 33);
    const std::string c = h.console();
    EXPECT_NE(c.find(" Err. FOM(3)\n"), std::string::npos);
    EXPECT_NE(c.find("     Current number of bins:   10\n     Enter new number of bins: "),
              std::string::npos);
    EXPECT_EQ(count_of(c, "The number of bins must lie between 1 and 3200"), 2u);
    EXPECT_EQ(count_of(c, "Not a whole number: ten"), 1u);

    Harness without;  // no .Error: the row has no text and no effect
    two_runs(without);
    without.turn_page();
    without.turn_page();
    without.row(15);
    without.row(25);
    without.run({"p"});
    EXPECT_EQ(without.console().find("number of bins"), std::string::npos);
}

TEST(Session, ReadErrorInATableStopsWithFileAndLine) {
    Harness h;
    two_runs(h);
    h.dir.write("p.Xemit.001", emit_table(2) + "  1.0000E+00      banana\n");
    h.row(1);
    h.row(25);
    h.run({"p"});
    const std::string c = h.console();
    EXPECT_NE(c.find("\n          Error reading unit 10, file: " + h.dir.file("p.Xemit.001") +
                     ", line 3, column 13: "),
              std::string::npos)
        << c;
    EXPECT_NE(c.find("          Program stops\n"), std::string::npos);
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
