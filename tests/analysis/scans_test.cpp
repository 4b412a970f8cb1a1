// Phase scans: the counting of scan blocks on its own, then the four plots
// as recorded. Parameter scans: records sorted by the scanned parameter,
// zoom, ranges, labels read once from .lab.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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

}  // namespace

TEST(ScanCounting, BlocksPointsAndRangesOnTheEdgeCases) {
    const struct {
        const char* name;
        std::vector<PScanRow> rows;
        PhaseZoom zoom;
        int NSCAN;
        int J, NP;
        float first, last;  // DAT of scan 1 point 1 and of scan J point NP
    } cases[] = {
        {"three full scans", scans(3), {}, 500, 3, 360, 1001, 3360},
        {"last scan cut", scans(3, 100), {}, 500, 3, 100, 1001, 3100},
        {"one scan", scans(1), {}, 500, 1, 360, 1001, 1360},
        {"empty", {}, {}, 500, 0, 0, 0, 0},
        // The 360 record outside the window still closes its scan.
        {"window without 360", scans(3), {true, 10, 20}, 500, 3, 11, 1010, 3020},
        // Taken, it closes nothing: the shortened scans run together.
        {"window with 360", scans(3), {true, 300, 360}, 500, 1, 183, 1300, 3360},
        // More scans than the table holds: taking stops at its limit.
        {"more scans than the table", scans(4), {true, 10, 20}, 2, 2, 11, 1010, 2020},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ScanTable t = count_scans(c.rows, ScanOrdinate::energy, c.zoom, c.NSCAN);
        EXPECT_EQ(std::pair(t.J, t.NP), std::pair(c.J, c.NP));
        if (c.J == 0) continue;
        EXPECT_EQ(std::pair(t.at(1, 1), t.at(c.J, c.NP)), std::pair(c.first, c.last));
        EXPECT_EQ(t.phases(c.J)[c.NP - 1], t.Z[static_cast<std::size_t>(c.NP - 1)]);
        EXPECT_EQ(t.EMAX, c.last);
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

namespace {

struct ParameterScan : PlotTest {
    // Free records: parameter, position 10 y, then FOM(k) = k y.
    void scan(const std::vector<std::pair<float, float>>& zy) {
        std::ostringstream t;
        for (const auto& [z, y] : zy) {
            t << z << " " << 10 * y;
            for (int k = 1; k <= 10; ++k) t << " " << k * y;
            t << "\n";
        }
        open_table(s, 16, &Fexist::Scan_EXISTS, "p.Scan.001", t.str());
        s.S_PKT = static_cast<int>(zy.size());
    }
    void draw(int row, int N = -1) { PlotTest::draw(pgex301, row, N < 0 ? s.S_PKT : N); }
};

// Points as sorted pairs: equal parameters may come in either order.
std::vector<std::pair<float, float>> pairs(const std::vector<float>& z, const std::vector<float>& y) {
    std::vector<std::pair<float, float>> p;
    for (std::size_t i = 0; i < z.size(); ++i) p.emplace_back(z[i], y.at(i));
    std::sort(p.begin(), p.end());
    return p;
}

}  // namespace

TEST_F(ParameterScan, RecordsSortedByTheParameterWithZoomRangesAndStatistics) {
    scan({{3, 4}, {1, 2}, {2, 5}, {1, 1}, {0.5f, 3}});
    s.graph.SCAN_LOWER = 1;
    s.graph.SCAN_UPPER = 2;
    draw(1);
    // Beginning and end after sorting; the extremes where first met in the file.
    EXPECT_TRUE(has(console(), "     beginning:                 " + fmt_d(3) +
                                   "\n     end:                       " + fmt_d(4) +
                                   "\n     minimum:                   " + fmt_d(1) + "  at z = " + fmt_d(1)));
    const struct {
        int row, N;
        bool zoom;
        std::vector<float> z, y;
        float y1, y2;  // a tenth of the span above, a tenth of the raised span below
    } cases[] = {
        {1, -1, false, {0.5f, 1, 1, 2, 3}, {3, 2, 1, 5, 4}, 0.56f, 5.4f},
        {2, -1, false, {0.5f, 1, 1, 2, 3}, {6, 4, 2, 10, 8}, 1.12f, 10.8f},
        {11, -1, false, {0.5f, 1, 1, 2, 3}, {30, 20, 10, 50, 40}, 5.6f, 54},  // the position
        {1, 3, false, {1, 2, 3}, {2, 5, 4}, 1.67f, 5.3f},                     // no more records than counted
        {1, -1, true, {1, 1, 2}, {2, 1, 5}, 0.56f, 5.4f},  // the bounds belong to the window
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.row);
        s.logo.ZOOM_SCAN = c.zoom;
        draw(c.row, c.N);
        const auto& xs = first("pgline").xs;
        EXPECT_TRUE(std::is_sorted(xs.begin(), xs.end()));
        EXPECT_EQ(pairs(xs, first("pgline").ys), pairs(c.z, c.y));
        EXPECT_EQ(first("pgpt").xs, xs);
        EXPECT_EQ(first("pgpt").args.back(), 5);
        EXPECT_TRUE(window_is(env(), c.z.front(), c.z.back(), c.y1, c.y2));
    }
    s.graph.SCAN_LOWER = 10;  // a window that holds no record: an empty frame
    s.graph.SCAN_UPPER = 20;
    draw(1);
    EXPECT_TRUE(first("pgline").xs.empty());
    EXPECT_TRUE(window_is(env(), 1, 2, -0.1f, 0.1f));  // the parameter range of the last drawing
}

TEST_F(ParameterScan, LabelsFromTheFileOncePerRun) {
    scan({{1, 1}, {2, 2}});
    const struct {
        std::string file;
        std::vector<std::string> row1, row2;  // the texts drawn for rows 1 and 2
        bool read;                            // a complete group was read
    } cases[] = {
        {"a\nb\nc\n", {"a", "b", "c"}, {"", "", ""}, true},      // fewer than 11 groups
        {"a\nb\nc\nd\n", {"a", "b", "c"}, {"d", "", ""}, true},  // ends inside group 2
        {"a\nb\n", {"a", "b", ""}, {"", "", ""}, false},         // inside group 1
    };
    auto padded = [](std::vector<std::string> v) {
        for (auto& t : v) t = pad(t, 80);
        return v;
    };
    for (const auto& c : cases) {
        s.labels = {};
        open_table(s, 21, &Fexist::lab_EXISTS, "p.lab.001", c.file);
        draw(1);
        EXPECT_EQ(labels(), padded(c.row1));
        draw(2);
        EXPECT_EQ(labels(), padded(c.row2));
        EXPECT_EQ(s.fexist.lab_EXISTS, !c.read);
    }
    s.labels.rec[1].PLOT_TITLE = "typed";  // as "change title" leaves it: the file is not read again
    draw(1);
    EXPECT_EQ(labels()[2], pad("typed", 80));
}
