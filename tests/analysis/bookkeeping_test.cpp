// The bar plots of .LandF and the space-charge plots of .tcheck, recorded:
// the statistics block, the bars, ranges, marks and key.
#include <gtest/gtest.h>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

using Bookkeeping = PlotTest;

TEST_F(Bookkeeping, BarsStatisticsAndRanges) {
    // z, particles, charge, loss, deposition, loading; the second record at z = 1 is dropped.
    table(17, &Fexist::LandF_EXISTS, "p.LandF.001",
          {{0, 9, 1, 0, 0, 0}, {1, 9, 1, 2, 1, -3}, {1, 9, 1, 100, 100, 100}, {3, 9, 1, 6, 2, 4}});
    const struct {
        Plot plot;
        float lower, upper;  // zoom window; none when equal
        std::string console;
        float x1, x2, y1, y2;
        std::vector<std::vector<double>> bars;
    } cases[] = {
        // clang-format off
        // The last height counts twice in the average; the right edge of the last bar closes the range.
        {pgex205, 0, 0, stats(kOneCurve, 0, 3, 2, 0, 3, 1, 8.0f / 3), 0, 3, 0, 3.6f, {{0, 1, 2, 0}, {1, 3, 3, 0}}},
        {pgex207, 0, 0, stats(kOneCurve, 0, 3, -3, 0, 2, 1, 1.0f / 3), 0, 3, -3.6f, 2.4f, {{0, 1, -3, 0}, {1, 3, 2, 0}}},
        // The first record inside the window is the start and makes no bar.
        {pgex206, 0.5f, 5, stats(kOneCurve, 1, 3, 1, 1, 1, 1, 1), 1, 3, 0, 1.2f, {{1, 3, 1, 0}}},
        // No bar: nothing is reported, and the frame opens around the start.
        {pgex205, 0.5f, 2, "", 0.9f, 1.1f, -0.1f, 0.1f, {}},
        // clang-format on
    };
    for (const auto& c : cases) {
        zoom_z(c.lower != c.upper, c.lower, c.upper);
        for (bool colour : {true, false}) {
            s.logo.COLOUR = colour;
            draw(c.plot);
            EXPECT_EQ(console(), c.console);
            EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
            std::vector<std::vector<double>> want = c.bars, got;  // filled, then outlined
            want.insert(want.end(), c.bars.begin(), c.bars.end());
            for (const GraphicsCall* r : rec.named("pgrect")) got.push_back(r->args);
            EXPECT_EQ(got, want);
            EXPECT_EQ(first("pgsfs").args[0], colour ? 1 : 3);
            EXPECT_EQ(rec.named("pgsci")[1]->args[0], colour ? 2 : 1);
        }
    }
}

TEST_F(Bookkeeping, TcheckFactorsCounterAndTimeStep) {
    // Records without scaling data (NR_R 0) count for nothing, their clock neither.
    const std::string tcheck =
        "0.0 1.0 0 0 0 0 0 0\n0.1 2.0 1 2 3 4 5 1\n0.2 3.0 0 0 0 0 0 0\n0.3 6.0 2 1 1 1 1 3\n";
    const struct {
        const char* what;
        Plot plot;
        std::string file;
        int symbol;               // of the marks; 0 for the curves of the factors
        std::vector<float> z, y;  // of the first curve or the marks
        float x1, x2, y1, y2;
    } cases[] = {
        // clang-format off
        {"an empty table leaves the start values", pgex210, "", 12, {}, {}, 1e10f, -1e10f, 0, -0.95e10f},
        {"counter", pgex210, tcheck, 12, {0.1f, 0.3f}, {1, 3}, 0.1f, 0.3f, 0, 3.15f},
        {"time step (6 - 2) / (3 + 1)", pgex211, tcheck, 5, {0.3f}, {1}, 0.27f, 0.33f, 0, 1.05f},
        {"five factors", pgex209, tcheck, 0, {0.1f, 0.3f}, {1, 2}, 0.1f, 0.3f, 0.95f, 5.25f},
        // clang-format on
    };
    s.logo.COLOUR = true;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        open_table(s, 14, &Fexist::tcheck_EXISTS, "p.tcheck.001", c.file);
        draw(c.plot, 0, 10);
        const GraphicsCall& drawn = first(c.symbol ? "pgpt" : "pgline");
        EXPECT_EQ(drawn.xs, c.z);
        EXPECT_EQ(drawn.ys, c.y);
        EXPECT_TRUE(!c.symbol || drawn.args[1] == c.symbol);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
    }
    EXPECT_EQ(rec.named("pgline").at(4)->ys, (std::vector<float>{5, 1}));  // the fifth factor
    EXPECT_EQ(keys().at(2), "(\\gg/\\gg\\d0\\u)\\unr(\\gg)");
    EXPECT_EQ(key_box(), 0.77f);
}
