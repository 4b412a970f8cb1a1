// The headless export in one process: the same statistics as an interactive
// pass, the device it opens, the sheet of nine panels, the options carried
// into the plots, and the words of a command line that cannot be served.
#include "app/export.hpp"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::beam_tables;
using viewer::testing::Harness;
using viewer::testing::has;

namespace {

struct Export {
    Harness h;
    std::ostringstream err;
    Export() { beam_tables(h.dir, 6); }
    int run(std::vector<std::string> args) {
        args.insert(args.begin(), "viewer");
        std::vector<const char*> argv;
        for (const auto& a : args) argv.push_back(a.c_str());
        const ExportRequest r = parse_export(static_cast<int>(argv.size()), argv.data());
        return run_export(h.session(), r, viewer::testing::fixed_time(), err);
    }
};

// The statistics block of the first plot in a console text.
std::string block(const std::string& c) {
    const auto a = c.find("\n     1: black");
    return c.substr(a, c.find("     average", c.find("2: red", a)) - a);
}

}  // namespace

TEST(Export, StatisticsOfAnInteractivePassOnAColourPage) {
    Harness interactive;
    beam_tables(interactive.dir, 6);
    interactive.picks({2, 25});
    interactive.run({"p"});

    Export e;
    ASSERT_EQ(e.run({"p", "--plot", "1:2", "--out", "beam.ps"}), 0) << e.err.str();
    EXPECT_EQ(block(e.h.console()), block(interactive.console()));
    EXPECT_EQ(e.h.g.opened, (std::vector<std::string>{e.h.dir.file("beam.ps") + "/CPS"}));
    EXPECT_EQ(e.h.g.named("pgenv").size(), 1u);
    EXPECT_TRUE(e.h.session().logo.COLOUR);  // the second curve in red, not dashed
    EXPECT_FALSE(e.h.dir.exists("win_config.dat"));
    EXPECT_TRUE(e.h.g.ended);
}

TEST(Export, OverviewMonoZoomAndFitReachThePlots) {
    Export sheet;
    ASSERT_EQ(sheet.run({"p", "--overview", "1", "--out", "s.png", "--mono", "--size", "400x300"}), 0);
    EXPECT_EQ(sheet.h.g.opened.at(0), sheet.h.dir.file("s.png") + "/PNG");
    const auto subp = sheet.h.g.named("pgsubp");
    ASSERT_FALSE(subp.empty());
    EXPECT_EQ(subp.front()->args, (std::vector<double>{3, 3}));
    EXPECT_EQ(sheet.h.g.named("pgenv").size(), 9u);  // rows 1 to 9, row 12's panels are not among them
    EXPECT_FALSE(sheet.h.session().logo.COLOUR);

    Export zoomed;
    ASSERT_EQ(zoomed.run({"p", "--plot", "1:4", "--zoom", "0.1:0.3", "--fit", "3", "--out", "z.ps"}), 0);
    EXPECT_EQ(zoomed.h.session().plot(4).NP, 3);  // z = 0.1, 0.2, 0.3
    EXPECT_TRUE(has(zoomed.h.console(), "     straight line fit: Y = a + b*x"));
    EXPECT_TRUE(zoomed.h.session().logo.ZOOM_Z);
}

TEST(Export, ListsTheRowsOfTheRun) {
    Export e;
    ASSERT_EQ(e.run({"p", "--list"}), 0);
    const std::string c = e.h.console();
    EXPECT_TRUE(has(c, "page 1\n  1:1    Trans. Emittance\n  1:2    rms Beam Size\n"));
    EXPECT_TRUE(has(c, "  2:12   beta function\n"));
    EXPECT_EQ(c.find("1:10"), std::string::npos);  // no .ref
    EXPECT_EQ(c.find("page 5"), std::string::npos);
}

TEST(Export, RequestsThatCannotBeServed) {
    const std::vector<std::string> out = {"--out", "a.ps"}, one = {"--plot", "1:1", "--out", "a.ps"};
    auto with = [](std::vector<std::string> a, const std::vector<std::string>& b) {
        a.insert(a.end(), b.begin(), b.end());
        return a;
    };
    struct Case {
        std::vector<std::string> args;
        int status;  // -1: the command line itself is refused
        const char* words;
    };
    const Case cases[] = {
        {with({"p", "--plot", "1:10"}, out), 2,
         "row 1:10 (\"Reference particle momentum\") is not available for this run: it needs .ref"},
        {with({"p", "--overview", "5"}, out), 2, "page 5 is not available for this run: it needs .Sigma"},
        {with({"q"}, one), 1, "no data files of project q, run 001"},
        {with(with({"p"}, one), {"--geometry"}), 1, "no aperture file"},
        {with({"--plot", "6:1"}, out), -1, "there is no page 6"},
        {with({"--plot", "3:42"}, out), -1, "page 3 has no row 42"},
        {{"--plot", "1:1", "--out", "a.eps", "--plot", "1:2"}, -1, "an .eps file holds one page"},
        {with(one, {"--size", "10x10"}), -1, "--size takes WIDTHxHEIGHT"},
        {with(one, {"--size", "400x300"}), -1, "--size is for .png files only"},
        {with(one, {"--fit", "16"}), -1, "--fit takes a fit of the fit menu"},
        {with(one, {"--zoom", "1"}), -1, "--zoom takes LOW:HIGH"},
        {{"--list", "--plot", "1:1"}, -1, "--list goes alone"},
        {{"--plot", "1:1", "p", "--out", "a.ps"}, -1, "the run argument comes first"},
        {{"--out"}, -1, "--out needs a value"},
    };
    for (const Case& c : cases) {
        Export e;
        try {
            EXPECT_EQ(e.run(c.args), c.status) << c.words;
            EXPECT_TRUE(has(e.err.str(), c.words));
        } catch (const UsageError& u) {
            EXPECT_EQ(c.status, -1) << u.what();
            EXPECT_TRUE(has(u.what(), c.words));
        }
        EXPECT_TRUE(e.h.g.opened.empty());
    }
}
