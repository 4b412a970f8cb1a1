// Phase scans counted into scan blocks, and the parameter-scan plot:
// records sorted by the scanned parameter, zoom, ranges, labels read once
// from .lab.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>

#include "analysis/phase_scans.hpp"
#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

// `n` scans of phases 1..360, energy = scan number * 1000 + phase; the
// last one cut after `last` records.
std::vector<PScanRow> scans(int n, int last = 360) {
    std::vector<PScanRow> r;
    for (int j = 1; j <= n; ++j)
        for (int k = 1; k <= (j == n ? last : 360); ++k)
            r.push_back({float(k), 1000.0f * j + k, float(j), 2.0f});
    return r;
}

struct ParameterScan : PlotTest {
    // Free records: parameter z, position 10 y, then FOM(k) = k y.
    void draw(int row, const std::vector<std::pair<float, float>>& zy, int N = 0) {
        std::ostringstream t;
        for (const auto& [z, y] : zy) {
            t << z << " " << 10 * y;
            for (int k = 1; k <= 10; ++k) t << " " << k * y;
            t << "\n";
        }
        open_table(s, 16, &Fexist::Scan_EXISTS, "p.Scan.001", t.str());
        PlotTest::draw(pgex301, row, N ? N : static_cast<int>(zy.size()));
    }
};

}  // namespace

TEST(ScanCounting, BlocksPointsAndRangesOnTheEdgeCases) {
    // clang-format off
    // DAT of scan 1 point 1 and of scan J point NP, the largest.
    const struct { const char* name; std::vector<PScanRow> rows; PhaseZoom zoom; int NSCAN, J, NP; float first, last; } cases[] = {
        {"three full scans", scans(3), {}, 500, 3, 360, 1001, 3360},
        {"last scan cut", scans(3, 100), {}, 500, 3, 100, 1001, 3100},
        {"empty", {}, {}, 500, 0, 0, 0, 0},
        // The 360 record outside the window still closes its scan.
        {"window without 360", scans(3), {true, 10, 20}, 500, 3, 11, 1010, 3020},
        // Taken, it closes nothing: the shortened scans run together.
        {"window with 360", scans(3), {true, 300, 360}, 500, 1, 183, 1300, 3360},
        // More scans than the table holds: taking stops at its limit.
        {"more scans than the table", scans(4), {true, 10, 20}, 2, 2, 11, 1010, 2020},
    };
    // clang-format on
    for (const auto& c : cases) {
        const ScanTable t = count_scans(c.rows, ScanOrdinate::energy, c.zoom, c.NSCAN);
        const bool any = c.J > 0;
        EXPECT_EQ(std::tuple(t.J, t.NP, any ? t.at(1, 1) : 0, any ? t.at(c.J, c.NP) : 0, any ? t.EMAX : 0),
                  std::tuple(c.J, c.NP, c.first, c.last, c.last))
            << c.name;
    }
    // The slope: scan 2 starts from the last record taken of scan 1, 360 or,
    // when the zoom skips 360, 359; repeated phases divide by 0.
    for (float last : {360.0f, 359.0f}) {
        const ScanTable t = count_scans(scans(2), ScanOrdinate::slope, {last < 360, 0, 359});
        EXPECT_EQ(std::tuple(t.J, t.at(1, 1), t.at(1, 2), t.at(2, 1)),
                  std::tuple(2, 0.0f, 1.0f, (2001.0f - (1000 + last)) / (1.0f - last)));
    }
    const std::vector<PScanRow> repeated = {{1, 10}, {1, 11}, {2, 12}};
    EXPECT_TRUE(std::isinf(count_scans(repeated, ScanOrdinate::slope, {}).EMAX));
}

TEST_F(ParameterScan, RecordsSortedByTheParameterWithZoomAndRanges) {
    const std::vector<std::pair<float, float>> zy = {{3, 4}, {1, 2}, {2, 5}, {0.5f, 3}};
    s.graph.SCAN_LOWER = 1;
    s.graph.SCAN_UPPER = 2;
    draw(1, zy);
    // Beginning and end after sorting; the extremes where first met in the file.
    EXPECT_EQ(console(), stats(kOneCurve, 3, 4, 2, 1, 5, 2, 3.5f));
    // Sorted whatever the order of the file: reversed, organ pipe, five values, random.
    std::mt19937 rng(7);
    for (int shape = 0; shape < 4; ++shape) {
        std::vector<std::pair<float, float>> records;
        std::vector<float> z, y;
        for (int i = 0; i < 2000; ++i) {
            const float v[] = {float(2000 - i), float(std::min(i, 1999 - i)), float(rng() % 5),
                               float(rng() % 99999)};
            records.emplace_back(v[shape], 2 * v[shape] + 1);
            z.push_back(v[shape]);
        }
        std::sort(z.begin(), z.end());
        for (float v : z) y.push_back(2 * v + 1);
        draw(1, records);
        EXPECT_TRUE(first("pgline").xs == z && first("pgline").ys == y) << "shape " << shape;
    }
    // clang-format off
    const struct { int row, N; bool zoom; const char* summary; } cases[] = {  // N 0: as many as the table has
        // A tenth of the span above, a tenth of the raised span below.
        {1, 0, false, "[0.5 3 1.67 5.3] 3 marks 3 2 5 4 symbol 5 | "},
        {2, 0, false, "[0.5 3 3.34 10.6] 6 marks 6 4 10 8 symbol 5 | "},
        {11, 0, false, "[0.5 3 16.7 53] 30 marks 30 20 50 40 symbol 5 | "},  // the position
        {1, 3, false, "[1 3 1.67 5.3] 2 marks 2 5 4 symbol 5 | "},           // no more records than counted
        {1, 0, true, "[1 2 1.67 5.3] 2 marks 2 5 symbol 5 | "},              // the bounds belong to the window
    };
    // clang-format on
    for (const auto& c : cases) {
        s.logo.ZOOM_SCAN = c.zoom;
        draw(c.row, zy, c.N);
        EXPECT_EQ(summary(), c.summary);
    }
    s.graph.SCAN_LOWER = 10;  // a window that holds no record: an empty frame on the last parameter range
    draw(1, zy);
    EXPECT_EQ(summary(), "[1 2 -0.1 0.1] nan marks symbol 5 | ");
}
