// The bar plots of .LandF and the space-charge plots of .tcheck, recorded:
// the statistics block, the bars, ranges, marks and key.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::window_is;

namespace {

struct BookkeepingTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    void draw(void (*plot)(Session&, int), int N) {
        rec.clear();
        h.out.str("");
        plot(s, N);
    }
    std::vector<std::vector<double>> rects() const {
        std::vector<std::vector<double>> r;
        for (const GraphicsCall* c : rec.named("pgrect")) r.push_back(c->args);
        return r;
    }
};

std::string block(float first, float last, float mn, float mn_at, float mx, float mx_at, float avr) {
    return "\n       \n     beginning:                 " + fmt_d(first) +
           "\n     end:                       " + fmt_d(last) +
           "\n     minimum:                   " + fmt_d(mn) + "  at z = " + fmt_d(mn_at) +
           "\n     maximum:                   " + fmt_d(mx) + "  at z = " + fmt_d(mx_at) +
           "\n     average:                   " + fmt_d(avr) + "\n\n";
}

}  // namespace

TEST_F(BookkeepingTest, BarsStatisticsAndRanges) {
    // z, particles, charge, loss, deposition, loading; the second record at z = 1 is dropped.
    viewer::testing::open_table(
        s, 17, &Fexist::LandF_EXISTS, "p.LandF.001",
        viewer::testing::fixed_records(
            {{0, 9, 1, 0, 0, 0}, {1, 9, 1, 2, 1, -3}, {1, 9, 1, 100, 100, 100}, {3, 9, 1, 6, 2, 4}}));
    struct Case {
        void (*plot)(Session&, int);
        float lower, upper;  // zoom window; none when equal
        std::string console;
        std::vector<float> frame;
        std::vector<std::vector<double>> bars;
    };
    const Case cases[] = {
        // The last height counts twice in the average; the right edge of the last bar closes the range.
        {pgex205, 0, 0, block(0, 3, 2, 0, 3, 1, 8.0f / 3), {0, 3, 0, 3.6f}, {{0, 1, 2, 0}, {1, 3, 3, 0}}},
        {pgex207,
         0,
         0,
         block(0, 3, -3, 0, 2, 1, 1.0f / 3),
         {0, 3, -3.6f, 2.4f},
         {{0, 1, -3, 0}, {1, 3, 2, 0}}},
        // The first record inside the window is the start and makes no bar.
        {pgex206, 0.5f, 5, block(1, 3, 1, 1, 1, 1, 1), {1, 3, 0, 1.2f}, {{1, 3, 1, 0}}},
        // No bar: nothing is reported, and the frame opens around the start.
        {pgex205, 0.5f, 2, "", {0.9f, 1.1f, -0.1f, 0.1f}, {}},
    };
    for (const Case& c : cases) {
        s.logo.ZOOM_Z = c.lower != c.upper;
        s.graph.Z_LOWER = c.lower;
        s.graph.Z_UPPER = c.upper;
        for (bool colour : {true, false}) {
            s.logo.COLOUR = colour;
            draw(c.plot, PKT);
            EXPECT_EQ(h.console(), c.console);
            EXPECT_TRUE(window_is(*rec.named("pgenv")[0], c.frame[0], c.frame[1], c.frame[2], c.frame[3]));
            std::vector<std::vector<double>> want = c.bars;  // filled, then outlined
            want.insert(want.end(), c.bars.begin(), c.bars.end());
            EXPECT_EQ(rects(), want);
            EXPECT_EQ(rec.named("pgsfs")[0]->args[0], colour ? 1 : 3);
            EXPECT_EQ(rec.named("pgsci")[1]->args[0], colour ? 2 : 1);
        }
    }
}

TEST_F(BookkeepingTest, TcheckFactorsCounterAndTimeStep) {
    // Records without scaling data (NR_R 0) count for nothing, their clock neither.
    viewer::testing::open_table(s, 14, &Fexist::tcheck_EXISTS, "p.tcheck.001",
                                "0.0 1.0 0 0 0 0 0 0\n0.1 2.0 1 2 3 4 5 1\n"
                                "0.2 3.0 0 0 0 0 0 0\n0.3 6.0 2 1 1 1 1 3\n");
    s.logo.COLOUR = true;
    draw(pgex209, 10);
    const auto lines = rec.named("pgline");
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(lines[0]->xs, (std::vector<float>{0.1f, 0.3f}));
    EXPECT_EQ(lines[0]->ys, (std::vector<float>{1, 2}));
    EXPECT_EQ(lines[4]->ys, (std::vector<float>{5, 1}));
    EXPECT_TRUE(window_is(*rec.named("pgenv")[0], 0.1f, 0.3f, 0.95f, 5.25f));
    ASSERT_EQ(rec.named("pgtext").size(), 5u);
    EXPECT_EQ(rec.named("pgtext")[2]->texts[0], viewer::pad("(\\gg/\\gg\\d0\\u)\\unr(\\gg)", 40));
    EXPECT_EQ(rec.named("pgrect")[0]->args[0], 0.77f);

    struct Marks {
        void (*plot)(Session&, int);
        int symbol;
        std::vector<float> z, y;
        std::vector<float> frame;
    };
    const Marks marks[] = {
        {pgex210, 12, {0.1f, 0.3f}, {1, 3}, {0.1f, 0.3f, 0, 3.15f}},
        {pgex211, 5, {0.3f}, {1}, {0.27f, 0.33f, 0, 1.05f}},  // (6 - 2) / (3 + 1)
    };
    for (const Marks& m : marks) {
        draw(m.plot, 10);
        const auto pt = rec.named("pgpt");
        ASSERT_EQ(pt.size(), 1u);
        EXPECT_EQ(pt[0]->args[1], m.symbol);
        EXPECT_EQ(pt[0]->xs, m.z);
        EXPECT_EQ(pt[0]->ys, m.y);
        EXPECT_TRUE(window_is(*rec.named("pgenv")[0], m.frame[0], m.frame[1], m.frame[2], m.frame[3]));
    }
    // An empty table leaves the start values of the ranges.
    viewer::testing::open_table(s, 14, &Fexist::tcheck_EXISTS, "q.tcheck.001", "");
    draw(pgex209, 10);
    EXPECT_TRUE(window_is(*rec.named("pgenv")[0], 1e10f, -1e10f, 0.95e10f, -0.95e10f));
}
