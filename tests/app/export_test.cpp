// The headless export in one process: the same statistics as an interactive
// pass, the device it opens, the sheet of nine panels, the options carried
// into the plots, and the words of a command line that cannot be served.
#include "app/export.hpp"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;

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

// The statistics block of the first plot in a console text.
std::string block(const std::string& c) {
    const auto a = c.find("\n     1: black");
    return c.substr(a, c.find("     average", c.find("2: red", a)) - a);
}

}  // namespace

TEST(Export, PlotsSheetsAndListsAsTheMenuWould) {
    Harness interactive;
    beam_tables(interactive.dir, 6);
    interactive.picks({2, 25});
    interactive.run({"p"});
    Export e;
    ASSERT_EQ(e.run("p --plot 1:2 --out beam.ps"), 0) << e.err.str();
    EXPECT_EQ(block(e.h.console()), block(interactive.console()));
    EXPECT_EQ(e.h.g.opened, (std::vector<std::string>{e.h.dir.file("beam.ps") + "/CPS"}));
    EXPECT_EQ(e.h.g.named("pgenv").size(), 1u);
    EXPECT_TRUE(e.h.session().logo.COLOUR);  // the second curve in red, not dashed
    EXPECT_FALSE(e.h.dir.exists("win_config.dat"));

    Export sheet;
    ASSERT_EQ(sheet.run("p --overview 1 --out s.png --mono --size 400x300"), 0);
    EXPECT_EQ(sheet.h.g.opened, (std::vector<std::string>{sheet.h.dir.file("s.png") + "/PNG"}));
    EXPECT_EQ(sheet.h.g.named("pgsubp").at(0)->args, (std::vector<double>{3, 3}));
    EXPECT_EQ(sheet.h.g.named("pgenv").size(), 9u);  // rows 1 to 9
    EXPECT_FALSE(sheet.h.session().logo.COLOUR);

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
    EXPECT_TRUE(has(c, "  4:5    trans. cor. emitt. contributions\n"));  // cut at 33 characters
    EXPECT_TRUE(has(c, "  4:12   Sub-ensemble emittance\n"));
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
        {"--plot 3:42 --out a.ps", -1, "page 3 has no row 42"},
        {"--plot 1-2 --out a.ps", -1, "--plot takes PAGE:ROW"},
        {"--plot 1:1 --out a.ps --colour", -1, "unknown option --colour"},
        {"--plot 1:1", -1, "no --out FILE given"},
        {"--plot 1:1 --out a.ps --overview 1", -1, "--plot and --overview go one at a time"},
        {"--plot 1:1 --out a.gif", -1, "must end in .ps, .eps, .png or .pdf"},
        {"--plot 1:1 --out a.ps --bins 0", -1, "--bins takes a number from 1 to 3200"},
        {"--plot 1:1 --out a.eps --plot 1:2", -1, "an .eps file holds one page"},
        {"--plot 1:1 --out a.png --size 10x10", -1, "--size takes WIDTHxHEIGHT"},
        {"--plot 1:1 --out a.ps --size 400x300", -1, "--size is for .png files only"},
        {"--plot 1:1 --out a.ps --fit 16", -1, "--fit takes a fit of the fit menu"},
        {"--plot 1:1 --out a.ps --zoom 1", -1, "--zoom takes LOW:HIGH"},
        {"--list --plot 1:1", -1, "--list goes alone"},
        {"--plot 1:1 p --out a.ps", -1, "the run argument comes first"},
        {"--out", -1, "--out needs a value"},
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
