// The aperture outline: reading the file (limits, half records, the prompt
// for another name, the stop on a bad number) and laying it over a plot.
#include "plot/aperture.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;

namespace {

struct GeometryTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    void file(const std::string& text) { h.dir.write("Geometry.dat", text); }
};

}  // namespace

TEST_F(GeometryTest, ReadsTheDefaultFileItsEdgesAndItsLimit) {
    struct Case {
        std::string text;
        int n;
        float rmax, zmin, zmax;
        std::vector<float> z{}, r{};  // when given
    };
    std::ostringstream many;  // the point behind the limit is not read, without a word
    for (int i = 1; i <= GEOM_MAX + 1; ++i) many << i << " " << (i == GEOM_MAX + 1 ? 1000 : 1) << "\n";
    // clang-format off
    const Case cases[] = {
        // Steps, negative radii, commas, records over two lines and wider lines.
        {"0.0 10.0\n0.5, 10.0\n0.5 -20.0\n  \n1.5\n 5.0\n-0.2 4.0 99\n", 5, 10.0f, -0.2f, 1.5f,
         {0.0f, 0.5f, 0.5f, 1.5f, -0.2f}, {10.0f, 10.0f, -20.0f, 5.0f, 4.0f}},
        {"", 0, 0.1f, 0, 0},                         // empty: nothing to draw
        {"1.0 0.0\n2.0 0\n", 2, 0.1f, 1, 2},         // all radii zero
        {"3.0 2.0\n", 1, 2.0f, 3, 3},                // one point
        {"1.0 2.0\n2.0 3.0\n1.5\n", 2, 3.0f, 1, 2},  // a half record at the end is dropped
        {"1.0 -2.0\n2.0 -3.0\n", 2, -2.0f, 1, 2},    // only negative radii: the largest counts
        {many.str(), GEOM_MAX, 1.0f, 1, 5000},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 20));
        s.geometry = {};
        file(c.text);
        load_geom(s);
        const Geometry& g = s.geometry;
        EXPECT_EQ(g.GEOM_N, c.n);
        EXPECT_EQ(std::vector<float>({g.GEOM_RMAX, g.GEOM_ZMIN, g.GEOM_ZMAX}),
                  (std::vector<float>{c.rmax, c.zmin, c.zmax}));
        EXPECT_TRUE(c.z.empty() || (g.GEOM_Z == c.z && g.GEOM_R == c.r));
    }
    EXPECT_EQ(h.console(), "");
}

TEST_F(GeometryTest, AsksForAnotherNameUntilOneExistsOrTheInputEnds) {
    h.dir.write("my outline.dat", "0 1\n1 2\n");
    h.input("nothere.dat\n\n  ,\n'my outline.dat' ignored\n");
    load_geom(s);
    const std::string ask = "     Enter aperture file name: ", missing = ask + "     File doesn't exist\n";
    EXPECT_EQ(h.console(), missing + missing + ask);
    EXPECT_EQ(s.geometry.GEOM_N, 2);

    h.out.str("");
    h.input("nothere.dat\n");
    EXPECT_THROW(load_geom(s), EndOfInput);
    EXPECT_EQ(h.console(), missing + ask);

    // A bad number stops the viewer with its message.
    h.out.str("");
    file("0 1\n1 x2\n");
    EXPECT_THROW(load_geom(s), ProgramStop);
    EXPECT_EQ(h.console(), "\n          Error reading aperture file\n          Program stops\n\n");
}

TEST_F(GeometryTest, PlotLoadsTheOutlineOnceForTheSession) {
    viewer::testing::open_table(s, 12, &Fexist::Zemit_EXISTS, "p.Zemit.001",
                                viewer::testing::fixed_records({{1, 0, 0, 3}, {2, 0, 0, 4}}));
    file("0 1\n3 2\n");
    s.logo.WITH_GEOMETRY = true;
    pgex5(s, PKT);
    EXPECT_TRUE(s.logo.GEOMETRY_LOADED);
    EXPECT_EQ(s.geometry.GEOM_N, 2);
    // The outline, dashed, in a window of its own; then the plot's window back.
    const auto t = trace(rec);
    const auto from = std::find(t.begin(), t.end(), "pgswin");
    EXPECT_EQ(std::vector<std::string>(from, from + 6),
              (std::vector<std::string>{"pgswin", "pgsci1", "pgsls2", "pgline+", "pgsls1", "pgswin"}));
    const auto win = rec.named("pgswin");
    ASSERT_GE(win.size(), 2u);
    EXPECT_EQ(win[0]->args, (std::vector<double>{1, 2, -1.05f * 2.0f, 1.05f * 2.0f}));
    EXPECT_EQ(win[1]->args, std::vector<double>(rec.named("pgenv")[0]->args.begin(),
                                                rec.named("pgenv")[0]->args.begin() + 4));
    EXPECT_EQ(s.geometry.GEOM_R, (std::vector<float>{1, 2}));

    // Without the file, and after the overlay was switched off and on, no prompt.
    std::filesystem::remove(h.dir.file("Geometry.dat"));
    for (bool with : {false, true}) {
        s.logo.WITH_GEOMETRY = with;
        rec.clear();
        pgex5(s, PKT);
        EXPECT_EQ(rec.named("pgline").size(), with ? 2u : 1u);
    }
    EXPECT_EQ(h.console().find("Enter aperture"), std::string::npos);
}
