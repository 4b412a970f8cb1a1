// The frame of the plots along z, driven through its members and recorded:
// lock-step reading, zoom, point limit, statistics block, ranges by rule,
// drawing order and rewinding.
#include "plot/frame.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;
using viewer::testing::window_is;

namespace {

struct FrameTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    // Table .Xemit, .Yemit or .Zemit of rows with position z and one value
    // in field `field`, the rest zero.
    void emit(char axis, const std::vector<float>& z, int field, const std::vector<float>& v) {
        std::vector<std::vector<float>> rows;
        for (std::size_t i = 0; i < z.size(); ++i) {
            rows.emplace_back(7, 0.0f);
            rows.back()[0] = z[i];
            rows.back()[static_cast<std::size_t>(field)] = v[i];
        }
        const int k = axis == 'X' ? 0 : axis == 'Y' ? 1 : 2;
        bool Fexist::*const present[] = {&Fexist::Xemit_EXISTS, &Fexist::Yemit_EXISTS, &Fexist::Zemit_EXISTS};
        viewer::testing::open_table(s, 10 + k, present[k], std::string("p.") + axis + "emit.001",
                                    viewer::testing::fixed_records(rows));
    }
    const GraphicsCall& env(std::size_t k = 0) const { return *rec.named("pgenv").at(k); }
    std::vector<const GraphicsCall*> lines() const { return rec.named("pgline"); }
    // Draws anew with a clean record and console.
    void draw(void (*plot)(Session&, int), int limit = PKT) {
        rec.clear();
        h.out.str("");
        plot(s, limit);
    }
    // The first record of `unit`, to see where the table stands.
    float first_field(int unit, int field = 0) {
        float r[7];
        EXPECT_TRUE(read_fixed(s.unit(unit), r));
        return r[field];
    }
};

}  // namespace

TEST_F(FrameTest, TwoCurvesStatisticsRangesAndAbscissaOfTheLastTable) {
    // .Yemit stands half a metre behind .Xemit: the points take its positions.
    emit('X', {1, 2, 3}, xemit::X_RMS, {1, 3, 2});
    emit('Y', {1.5f, 2.5f, 3.5f}, yemit::Y_RMS, {2, 5, 5});
    draw(pgex2);

    EXPECT_EQ(h.console(),
              "\n"
              "     1: black (horizontal): \n"
              "     beginning:                   1.0000D+00\n"
              "     end:                         2.0000D+00\n"
              "     minimum:                     1.0000D+00  at z =   1.5000D+00\n"
              "     maximum:                     3.0000D+00  at z =   2.5000D+00\n"
              "     average:                     2.0000D+00\n"
              "\n"
              "     2: red (vertical): \n"
              "     beginning:                   2.0000D+00\n"
              "     end:                         5.0000D+00\n"
              "     minimum:                     2.0000D+00  at z =   1.5000D+00\n"
              "     maximum:                     5.0000D+00  at z =   2.5000D+00\n"  // first of two
              "     average:                     4.0000D+00\n"
              "\n");
    EXPECT_TRUE(window_is(env(), 1.5f, 3.5f, 0.0f, 6.0f));  // the larger curve sets the top
    EXPECT_EQ(std::vector<double>(env().args.begin() + 4, env().args.end()), (std::vector<double>{0, 1}));
    ASSERT_EQ(lines().size(), 2u);
    EXPECT_EQ(lines()[0]->xs, (std::vector<float>{1.5f, 2.5f, 3.5f}));
    EXPECT_EQ(lines()[0]->ys, (std::vector<float>{1, 3, 2}));
    EXPECT_EQ(lines()[1]->ys, (std::vector<float>{2, 5, 5}));
    EXPECT_EQ(s.plot(2).NP, 3);
}

TEST_F(FrameTest, DrawingOrderByColourOrLineStyle) {
    emit('X', {1, 2}, xemit::X_RMS, {1, 2});
    emit('Y', {1, 2}, yemit::Y_RMS, {3, 5});
    s.logo.OVERVIEW = true;  // no page foot, so the whole sequence is the frame's
    // On a monochrome device the second curve is dashed and stays black.
    for (bool colour : {true, false}) {
        s.logo.COLOUR = colour;
        draw(pgex2);
        EXPECT_EQ(trace(rec),
                  (std::vector<std::string>{"pgbbuf", "pgsave", "pgsci1", "pgenv", "pglab", "pgsci1",
                                            "pgline+", colour ? "pgsci2" : "pgsls2", "pgline+", "pgsls1",
                                            "pgunsa", "pgebuf", "pgupdt", "pgupdt"}));
        EXPECT_NE(h.console().find("2: red (vertical)"), std::string::npos);  // red all the same
    }
}

TEST_F(FrameTest, PointLimitStopsReadingAndZoomCountsOnlyKeptPoints) {
    std::vector<float> z(PKT + 1), v(PKT + 1);
    for (std::size_t i = 0; i < z.size(); ++i) {
        z[i] = 0.001f * static_cast<float>(i);
        v[i] = 1.0f + static_cast<float>(i % 7);
    }
    emit('Z', z, zemit::Z_RMS, v);

    draw(pgex5);
    EXPECT_EQ(s.plot(5).NP, PKT);
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(lines()[0]->args[0], PKT);
    EXPECT_FLOAT_EQ(lines()[0]->xs.back(), z[PKT - 1]);  // the 9103rd record is not read

    // A window of 100 records far down the table: all 100, whichever they are.
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = z[8000];
    s.graph.Z_UPPER = z[8099];
    draw(pgex5);
    EXPECT_EQ(s.plot(5).NP, 100);
    EXPECT_FLOAT_EQ(lines()[0]->xs.front(), z[8000]);

    // A smaller limit cuts the curve there.
    s.logo.ZOOM_Z = false;
    draw(pgex5, 5);
    EXPECT_EQ(s.plot(5).NP, 5);
    EXPECT_EQ(lines()[0]->args[0], 5);
}

TEST_F(FrameTest, NoPointsDrawAnEmptyFrameAndPrintNothing) {
    // Never drawn, table missing: both ranges mended around zero.
    draw(pgex5);
    EXPECT_EQ(h.console(), "");
    EXPECT_TRUE(window_is(env(), -0.1f, 0.1f, -0.1f, 0.1f));
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(lines()[0]->args[0], 0);
    EXPECT_EQ(s.plot(5).NP, 0);

    // A limit below 1 reads nothing either.
    emit('Z', {1, 2, 3}, zemit::Z_RMS, {1, 2, 3});
    draw(pgex5, 0);
    EXPECT_EQ(h.console(), "");
    EXPECT_EQ(s.plot(5).NP, 0);

    // After a draw with data, an empty zoom window keeps that plot's z range,
    // while the ordinate is mended anew; another plot has its own.
    draw(pgex5);
    EXPECT_TRUE(window_is(env(), 1, 3, 0, 3.6f));
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = 10;
    s.graph.Z_UPPER = 20;
    draw(pgex5);
    pgex6(s, PKT);
    EXPECT_EQ(h.console(), "");
    EXPECT_TRUE(window_is(env(0), 1, 3, -0.1f, 0.1f));
    EXPECT_TRUE(window_is(env(1), -0.1f, 0.1f, -0.1f, 0.1f));
}

TEST_F(FrameTest, RangesUnderEachRuleAndTheZoomWindow) {
    struct Case {
        void (*plot)(Session&, int);
        int field;
        std::vector<float> z, v;
        float x1, x2, ymin, ymax;
        float zoom_lower = 0, zoom_upper = 0;  // zoomed when they differ
        const char* stats = "";                // a part of the console
    };
    const std::vector<float> z3 = {1, 2, 3};
    // clang-format off
    const Case cases[] = {
        {pgex8, zemit::E_MEAN, {2}, {2}, 1.8f, 2.2f, 1.6f, 2.4f},  // one point: the range opens around it
        // At a negative position the mended range falls from left to right.
        {pgex8, zemit::E_MEAN, {-2}, {2}, -1.8f, -2.2f, 1.6f, 2.4f},
        {pgex8, zemit::E_MEAN, z3, {2, 2, 2}, 1, 3, 1.6f, 2.4f},   // margin: a fifth of the value each side
        {pgex8, zemit::E_MEAN, z3, {0, 0, 0}, 1, 3, -0.1f, 0.1f},  // margin around zero: mended
        {pgex5, zemit::Z_RMS, z3, {2, 2, 2}, 1, 3, 0.0f, 2.4f},    // zero rule
        {pgex5, zemit::Z_RMS, z3, {0, 0, 0}, 1, 3, -0.1f, 0.1f},   // zero rule, all zero: mended
        {pgex7, zemit::CO_EZ, z3, {-2, -2, -2}, 1, 3, -2.4f, -1.6f},  // margin below zero opens outwards
        {pgex7, zemit::CO_EZ, z3, {-1, -3, -2}, 1, 3, -3.6f, -0.8f},
        // The zoom window keeps its bounds, and the statistics see only it.
        {pgex5, zemit::Z_RMS, {1, 2, 3, 4, 5}, {10, 20, 30, 40, 50}, 2, 4, 0, 48, 2, 4,
         "     beginning:                   2.0000D+01\n     end:                         4.0000D+01\n"
         "     minimum:                     2.0000D+01  at z =   2.0000D+00\n"
         "     maximum:                     4.0000D+01  at z =   4.0000D+00\n"
         "     average:                     3.0000D+01\n"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.z) + ::testing::PrintToString(c.v));
        emit('Z', c.z, c.field, c.v);
        s.logo.ZOOM_Z = c.zoom_lower != c.zoom_upper;
        s.graph.Z_LOWER = c.zoom_lower;
        s.graph.Z_UPPER = c.zoom_upper;
        draw(c.plot);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.ymin, c.ymax));
        EXPECT_EQ(lines().at(0)->xs, (s.logo.ZOOM_Z ? std::vector<float>{2, 3, 4} : c.z));
        EXPECT_NE(h.console().find(c.stats), std::string::npos) << h.console();
    }
}

TEST_F(FrameTest, ShorterTableDecidesAndEveryUnitIsRewound) {
    emit('X', {1, 2, 3}, xemit::NX_EMIT, {1, 2, 3});
    emit('Y', {1, 2}, yemit::NY_EMIT, {4, 5});
    pgex1(s, PKT);
    EXPECT_EQ(s.plot(1).NP, 2);
    EXPECT_FLOAT_EQ(first_field(10), 1);  // both stand at their first record again
    EXPECT_FLOAT_EQ(first_field(11, yemit::NY_EMIT), 4);

    // The other way round the surplus record of .Xemit is dropped with its pass.
    emit('X', {1, 2}, xemit::NX_EMIT, {1, 2});
    emit('Y', {1, 2, 3}, yemit::NY_EMIT, {4, 5, 6});
    pgex1(s, PKT);
    EXPECT_EQ(s.plot(1).NP, 2);

    // A plot missing one of its tables reads neither.
    s.fexist.Yemit_EXISTS = false;
    pgex1(s, PKT);
    EXPECT_EQ(s.plot(1).NP, 0);
    EXPECT_FLOAT_EQ(first_field(10), 1);
}

TEST_F(FrameTest, BadRecordEndsTheDrawBeforeTheFrameAndTheTableIsRewound) {
    viewer::testing::open_table(s, 12, &Fexist::Zemit_EXISTS, "p.Zemit.001",
                                "  1.0000E+00  0.0000E+00  1.0000E+00  2.0000E+00\n"
                                "  2.0000E+00  0.0000E+00  abcdefghijkl  2.0000E+00\n");
    EXPECT_THROW(pgex5(s, PKT), RecordError);
    EXPECT_TRUE(rec.named("pgenv").empty());
    EXPECT_FLOAT_EQ(first_field(12), 1);
}
