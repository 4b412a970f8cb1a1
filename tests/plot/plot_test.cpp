// The frame of the plots along z (lock-step reading, statistics, ranges by
// rule, zoom, point limit, drawing order, rewinding), the aperture outline
// and the shared curve styles and key, recorded.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "evolution/plots.hpp"
#include "plot/aperture.hpp"
#include "plot/frame.hpp"
#include "plot/page.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;
using viewer::testing::window_is;

namespace {

struct PlotTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    // Table .Xemit, .Yemit or .Zemit (k 0, 1, 2) of rows at z with the value v in `field`, the rest zero.
    void emit(int k, const std::vector<float>& z, int field, const std::vector<float>& v) {
        std::vector<std::vector<float>> rows(z.size(), std::vector<float>(7, 0.0f));
        for (std::size_t i = 0; i < z.size(); ++i) rows[i][0] = z[i], rows[i][std::size_t(field)] = v[i];
        bool Fexist::*const present[] = {&Fexist::Xemit_EXISTS, &Fexist::Yemit_EXISTS, &Fexist::Zemit_EXISTS};
        viewer::testing::open_table(s, 10 + k, present[k], std::string("p.") + "XYZ"[k] + "emit.001",
                                    viewer::testing::fixed_records(rows));
    }
    const GraphicsCall& env() const { return *rec.named("pgenv").at(0); }
    void draw(void (*plot)(Session&, int), int limit = PKT) {
        rec.clear();
        h.out.str("");
        plot(s, limit);
    }
};

}  // namespace

// The foot sits in the page's corner at 0.3; in a picture of pixels it stands
// a few pixels in, legible (800 x 566 pixels here).
TEST_F(PlotTest, ThePageFootKeepsClearOfAPicturesEdges) {
    s.chara.PAGE_TITLE = "p 001  25.11  12:00";
    for (const bool raster : {false, true}) {
        SCOPED_TRACE(raster);
        s.raster_foot = raster;
        rec.clear();
        title(s);
        const GraphicsCall& text = *rec.named("pgptxt").at(0);
        EXPECT_EQ(text.texts.at(0), s.chara.PAGE_TITLE);
        const float height = static_cast<float>(rec.named("pgsch").back()->args[0]);
        if (!raster) {
            EXPECT_EQ(text.args, (std::vector<double>{1.0, 0.00225f, 0.0, 1.0}));
            EXPECT_FLOAT_EQ(height, 0.3f);
        } else {
            EXPECT_NEAR(text.args[0] * 800, 796, 0.01);  // right edge 4 pixels in
            EXPECT_GT(text.args[1] * 566, 4 + 0.3 * 9);  // its descenders too
            EXPECT_NEAR(height * 566 / 40, 9, 0.01);     // 9 pixels high
        }
    }
}

TEST_F(PlotTest, TwoTablesInLockStepThenRewound) {
    // .Yemit stands half a metre behind .Xemit and is one record shorter: the
    // points take its positions, and the surplus record of .Xemit is dropped.
    emit(0, {1, 2, 3, 4}, xemit::X_RMS, {1, 3, 2, 9});
    emit(1, {1.5f, 2.5f, 3.5f}, yemit::Y_RMS, {2, 5, 5});
    s.logo.OVERVIEW = true;  // no page foot: the whole sequence is the frame's
    draw(pgex2);
    // The first of two maxima; the surplus record would raise the top.
    EXPECT_TRUE(viewer::testing::has(h.console(),
                                     "     maximum:                     5.0000D+00  at z =   2.5000D+00\n"));
    EXPECT_TRUE(
        window_is(env(), 1.5f, 3.5f, 0.0f, 6.0f));  // positions of .Yemit; the larger curve sets the top
    // On a monochrome device the second curve is dashed, and the style reset after it.
    s.logo.COLOUR = false;
    draw(pgex2);
    EXPECT_EQ(trace(rec), (std::vector<std::string>{"pgbbuf", "pgsave", "pgsci1", "pgenv", "pglab", "pgsci1",
                                                    "pgline+", "pgsls2", "pgline+", "pgsls1", "pgunsa",
                                                    "pgebuf", "pgupdt", "pgupdt"}));
    // A bad record ends the draw before the frame, with the table rewound.
    viewer::testing::open_table(s, 12, &Fexist::Zemit_EXISTS, "p.Zemit.001",
                                "  1.0000E+00  0.0000E+00  1.0000E+00  2.0000E+00\n"
                                "  2.0000E+00  0.0000E+00  abcdefghijkl  2.0000E+00\n");
    EXPECT_THROW(draw(pgex5), RecordError);
    EXPECT_TRUE(rec.named("pgenv").empty());
    float first[7];
    EXPECT_TRUE(read_fixed(s.unit(12), first) && first[0] == 1.0f);
}

TEST_F(PlotTest, RangesByRuleZoomAndPointLimit) {
    std::vector<float> z(PKT + 1), v(PKT + 1);  // one record more than the limit
    for (std::size_t i = 0; i < z.size(); ++i) z[i] = 0.001f * float(i), v[i] = 1.0f + float(i % 7);
    const std::vector<float> z3 = {1, 2, 3}, z5 = {1, 2, 3, 4, 5}, v5 = {10, 20, 30, 40, 50};
    // clang-format off
    struct Case { void (*plot)(Session&, int); int field; std::vector<float> z, v; float x1, x2, ymin, ymax; int NP;
                  float lower = 0, upper = 0; int limit = PKT; };  // zoomed when lower and upper differ
    // The rows run in order on one session: a plot keeps its saved values.
    const Case cases[] = {
        {pgex8, zemit::E_MEAN, {2}, {2}, 1.8f, 2.2f, 1.6f, 2.4f, 1},  // one point: the range opens around it
        {pgex8, zemit::E_MEAN, {-2}, {2}, -1.8f, -2.2f, 1.6f, 2.4f, 1},  // at a negative position it falls
        {pgex8, zemit::E_MEAN, z3, {2, 2, 2}, 1, 3, 1.6f, 2.4f, 3},  // margin: a fifth of the value each side
        {pgex8, zemit::E_MEAN, z3, {0, 0, 0}, 1, 3, -0.1f, 0.1f, 3},  // margin around zero: mended
        {pgex5, zemit::Z_RMS, z3, {2, 2, 2}, 1, 3, 0, 2.4f, 3},  // zero rule
        {pgex5, zemit::Z_RMS, z3, {0, 0, 0}, 1, 3, -0.1f, 0.1f, 3},
        {pgex7, zemit::CO_EZ, z3, {-2, -2, -2}, 1, 3, -2.4f, -1.6f, 3},  // margin below zero opens outwards
        {pgex7, zemit::CO_EZ, z3, {-1, -3, -2}, 1, 3, -3.6f, -0.8f, 3},
        // The zoom window, bounds included; the statistics see only it.
        {pgex5, zemit::Z_RMS, z5, v5, 2, 4, 0, 48, 3, 2, 4},
        // An empty window keeps the plot's z range; the ordinate is mended anew.
        {pgex5, zemit::Z_RMS, z5, v5, 2, 4, -0.1f, 0.1f, 0, 10, 20},
        // A plot never drawn is mended on both axes; a limit below 1 reads nothing.
        {pgex6, zemit::E_RMS, z3, {1, 2, 3}, -0.1f, 0.1f, -0.1f, 0.1f, 0, 0, 0, 0},
        // The limit stops the reading; zoomed, only the points kept count.
        {pgex5, zemit::Z_RMS, z, v, 0, z[PKT - 1], 0, 8.4f, PKT},
        {pgex5, zemit::Z_RMS, z, v, z[8000], z[8099], 0, 8.4f, 100, z[8000], z[8099]},
        {pgex5, zemit::Z_RMS, z, v, 0, z[4], 0, 6, 5, 0, 0, 5},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        emit(2, c.z, c.field, c.v);
        s.logo.ZOOM_Z = c.lower != c.upper;
        s.graph.Z_LOWER = c.lower;
        s.graph.Z_UPPER = c.upper;
        draw(c.plot, c.limit);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.ymin, c.ymax));
        EXPECT_EQ(rec.named("pgline").at(0)->args[0], c.NP);
        EXPECT_EQ(h.console().empty(), c.NP == 0);  // a statistics block only for points
    }
}

TEST_F(PlotTest, ApertureOutlineReadOnceAndLaidOverThePlot) {
    // clang-format off
    struct Case { std::string text; std::vector<float> r; float rmax, zmin, zmax; };
    const Case cases[] = {
        // Steps, negative radii, commas, records over two lines and wider lines.
        {"0.0 10.0\n0.5, 10.0\n0.5 -20.0\n  \n1.5\n 5.0\n-0.2 4.0 99\n", {10, 10, -20, 5, 4}, 10, -0.2f, 1.5f},
        {"", {}, 0.1f, 0, 0}, {"1.0 0.0\n2.0 0\n", {0, 0}, 0.1f, 1, 2}, {"3.0 2.0\n", {2}, 2, 3, 3},
        {"1.0 2.0\n2.0 3.0\n1.5\n", {2, 3}, 3, 1, 2},  // a half record at the end is dropped
        {"1.0 -2.0\n2.0 -3.0\n", {-2, -3}, -2, 1, 2},  // only negative radii: the largest counts
    };
    // clang-format on
    for (const Case& c : cases) {
        h.dir.write("Geometry.dat", c.text);
        s.geometry = {};
        load_geom(s);
        const Geometry& g = s.geometry;
        EXPECT_EQ(g.GEOM_R, c.r) << c.text;
        EXPECT_EQ(std::vector<float>({g.GEOM_RMAX, g.GEOM_ZMIN, g.GEOM_ZMAX}),
                  (std::vector<float>{c.rmax, c.zmin, c.zmax}));
    }
    EXPECT_EQ(h.console(), "");

    // The first plot with the overlay asks for another name until one exists.
    std::filesystem::remove(h.dir.file("Geometry.dat"));
    h.dir.write("my outline.dat", "0 1\n3 2\n");
    h.input("nothere.dat\n\n  ,\n'my outline.dat' ignored\n");
    emit(2, {1, 2}, zemit::Z_RMS, {3, 4});
    s.logo.WITH_GEOMETRY = true;
    draw(pgex5);
    const std::string ask = "     Enter aperture file name: ", missing = ask + "     File doesn't exist\n";
    EXPECT_TRUE(h.console().ends_with(missing + missing + ask)) << h.console();
    // The outline in a window of its own; then the plot's window back.
    EXPECT_TRUE(window_is(*rec.named("pgswin").at(0), 1, 2, -2.1f, 2.1f));
    EXPECT_TRUE(window_is(*rec.named("pgswin").at(1), 1, 2, 0, 4.8f));
    // Loaded once: switched off and on, it comes back without a question.
    for (bool with : {false, true}) {
        s.logo.WITH_GEOMETRY = with;
        draw(pgex5);
        EXPECT_EQ(rec.named("pgline").size(), with ? 2u : 1u);  // a question would meet the end of input
    }
    // At the end of input the question ends the session; a bad number stops the viewer.
    h.out.str("");
    h.input("nothere.dat\n");
    EXPECT_THROW(load_geom(s), EndOfInput);
    EXPECT_EQ(h.console(), missing + ask);
    h.out.str("");
    h.dir.write("Geometry.dat", "0 1\n1 x2\n");
    EXPECT_THROW(load_geom(s), ProgramStop);
    EXPECT_EQ(h.console(), "\n          Error reading aperture file\n          Program stops\n\n");
}

TEST_F(PlotTest, CurveStylesAndTheKey) {
    const float X[] = {0, 1}, Y[] = {1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7};  // curve j at height j
    for (bool colour : {true, false}) {
        rec.clear();
        s.logo.COLOUR = colour;
        poly_line(s, 2, 2, X, Y, 1, 7);
        std::string t;
        for (const std::string& e : trace(rec)) t += e + " ";
        // Without colour styles 1 to 5, then again from 1 in colour index 15.
        EXPECT_EQ(
            t, colour ? "pgsci1 pgsci1 pgline+ pgsci2 pgline+ pgsci3 pgline+ pgsci4 pgline+ pgsci5 pgline+ "
                        "pgsci6 pgline+ pgsci7 pgline+ pgsci1 "
                      : "pgsci1 pgsls1 pgline+ pgsls2 pgline+ pgsls3 pgline+ pgsls4 pgline+ pgsls5 pgline+ "
                        "pgsci15 pgsls1 pgline+ pgsci15 pgsls2 pgline+ pgsci1 ");
        EXPECT_EQ(rec.named("pgline")[6]->ys, (std::vector<float>{7, 7}));
    }
    // The key: a box at the right (0.77 when not given), a sample and a padded
    // text a curve, in units of the line spacing; the plot's window back.
    s.pg.pgswin(5, 6, 7, 8);
    rec.clear();
    const std::vector<std::string> text = {"one", "two"};
    legend(s, text, std::vector<int>{2, 7}, 0.0f, LegendPos::TR);
    const float d = 0.035f;
    EXPECT_TRUE(window_is(*rec.named("pgrect").at(1), 0.77f, 1 - d / 2, 3.4f * d, d));
    const GraphicsCall &move = *rec.named("pgmove").at(1), &two = *rec.named("pgtext").at(1);
    const double at[] = {move.args[0], move.args[1], two.args[0], two.args[1]},
                 want[] = {0.78, 2.6 * d, 0.835, 2.8 * d};
    for (int i = 0; i < 4; ++i) EXPECT_NEAR(at[i], want[i], 1e-6);
    EXPECT_EQ(two.texts[0], "two" + std::string(37, ' '));
    EXPECT_TRUE(window_is(*rec.named("pgswin").back(), 5, 6, 7, 8));
}
