// The parameter-scan plot: records sorted by the scanned parameter, zoom,
// ranges, labels read once from .lab.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

struct ScanPlot : PlotTest {
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
    // Texts of the axes and title without their padding, joined by '|'.
    std::string texts() const {
        const auto& t = first("pglab").texts;
        EXPECT_EQ(t[0].size(), 80u);
        return std::string(trim_right(t[0])) + "|" + std::string(trim_right(t[1])) + "|" +
               std::string(trim_right(t[2]));
    }
};

// Points as sorted pairs: equal parameters may come in either order.
std::vector<std::pair<float, float>> pairs(const std::vector<float>& z, const std::vector<float>& y) {
    std::vector<std::pair<float, float>> p;
    for (std::size_t i = 0; i < z.size(); ++i) p.emplace_back(z[i], y.at(i));
    std::sort(p.begin(), p.end());
    return p;
}

}  // namespace

TEST_F(ScanPlot, RecordsSortedByTheParameterWithZoomRangesAndStatistics) {
    scan({{3, 4}, {1, 2}, {2, 5}, {1, 1}, {0.5f, 3}});
    s.graph.SCAN_LOWER = 1;
    s.graph.SCAN_UPPER = 2;
    draw(1);
    // Beginning and end after sorting; the extremes where first met in the file.
    EXPECT_NE(console().find("     beginning:                 " + fmt_d(3) +
                             "\n     end:                       " + fmt_d(4) +
                             "\n     minimum:                   " + fmt_d(1) + "  at z = " + fmt_d(1)),
              std::string::npos);
    const struct {
        int row, N;
        bool zoom;
        std::vector<float> z, y;
    } cases[] = {
        {1, -1, false, {0.5f, 1, 1, 2, 3}, {3, 2, 1, 5, 4}},
        {2, -1, false, {0.5f, 1, 1, 2, 3}, {6, 4, 2, 10, 8}},
        {11, -1, false, {0.5f, 1, 1, 2, 3}, {30, 20, 10, 50, 40}},  // the position
        {1, 3, false, {1, 2, 3}, {2, 5, 4}},                        // no more records than counted
        {1, -1, true, {1, 1, 2}, {2, 1, 5}},                        // the bounds belong to the window
    };
    for (const auto& c : cases) {
        s.logo.ZOOM_SCAN = c.zoom;
        draw(c.row, c.N);
        const auto& xs = first("pgline").xs;
        EXPECT_TRUE(std::is_sorted(xs.begin(), xs.end())) << c.row;
        EXPECT_EQ(pairs(xs, first("pgline").ys), pairs(c.z, c.y));
        EXPECT_EQ(first("pgpt").xs, xs);
        EXPECT_EQ(first("pgpt").args.back(), 5);
        const auto [mn, mx] = std::minmax_element(c.y.begin(), c.y.end());
        const float YMAX = *mx + 0.1f * (*mx - *mn);  // a tenth above, a tenth of the raised span below
        EXPECT_TRUE(window_is(env(), c.z.front(), c.z.back(), *mn - 0.1f * (YMAX - *mn), YMAX));
    }
    s.graph.SCAN_LOWER = 10;  // a window that holds no record: an empty frame
    s.graph.SCAN_UPPER = 20;
    draw(1);
    EXPECT_TRUE(first("pgline").xs.empty());
    EXPECT_TRUE(window_is(env(), 1, 2, -0.1f, 0.1f));  // the parameter range of the last drawing
}

TEST_F(ScanPlot, LabelsFromTheFileOncePerRun) {
    scan({{1, 1}, {2, 2}});
    const struct {
        std::string file, row1, row2;  // the texts drawn for rows 1 and 2
        bool read;                     // a complete group was read
    } cases[] = {
        {"a\nb\nc\n", "a|b|c", "||", true},      // fewer than 11 groups
        {"a\nb\nc\nd\n", "a|b|c", "d||", true},  // ends inside group 2
        {"a\nb\n", "a|b|", "||", false},         // inside group 1
    };
    for (const auto& c : cases) {
        s.labels = {};
        open_table(s, 21, &Fexist::lab_EXISTS, "p.lab.001", c.file);
        draw(1);
        EXPECT_EQ(texts(), c.row1);
        draw(2);
        EXPECT_EQ(texts(), c.row2);
        EXPECT_EQ(s.fexist.lab_EXISTS, !c.read);
    }
    s.labels.rec[1].PLOT_TITLE = "typed";  // as "change title" leaves it: the file is not read again
    draw(1);
    EXPECT_EQ(labels()[2], pad("typed", 80));
}
