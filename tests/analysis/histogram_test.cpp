// The run statistics and the histogram as numbers, then the plot: bars
// outlined then hatched, new bins on each drawing, a short .Error file, the
// label groups of .lab-E rewritten for a histogram.
#include "analysis/histogram.hpp"

#include <gtest/gtest.h>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

TEST(Histogram, CountsRangesAndRunStatistics) {
    // clang-format off
    const struct { std::vector<float> values; int n_bins; const char* counts_XMIN_XMAX_AXIS_MIN_YMAX; } cases[] = {
        // The top is raised so that the largest value falls into the last bin, and the inner edges with it.
        {{0, 1, 2, 3, 4}, 4, "2 1 1 1 | 0 4 -0.5 2.2"},
        // A raise lost in the rounding of the width: the largest value falls through every interval, into
        // bin 1.
        {{-1, 0.1f, 0.2f, 1}, 2, "2 2 | -1 1 -1.5 2.2"},
        // Equal values: one narrow bar in the middle, ten and a half widths free on either side.
        {{2, 2, 2}, 10, "3 | 2 2 1.99996 3.3"},
        {{}, 10, "0 | -0.1 0.1 -2.2 1"},
    };
    // clang-format on
    for (const auto& c : cases) {
        std::ostringstream warn, got;
        const Histogram h = histogram(c.values, c.n_bins, warn);
        for (float n : h.ARRAYX) got << n << " ";
        got << "| " << h.XMIN << " " << h.XMAX << " " << h.AXIS_MIN << " " << h.YMAX;
        EXPECT_EQ(got.str(), c.counts_XMIN_XMAX_AXIS_MIN_YMAX);
        EXPECT_EQ(warn.str(), "");
    }
    std::ostringstream out;
    print_run_statistics(out, 4, run_statistics(std::vector<float>{1, 2, 3, 4}));
    EXPECT_EQ(out.str(),
              "\n     number of runs:      4\n     average value:    2.5000E+00\n"
              "     rms value:        1.1180E+00\n");
    const RunStatistics same = run_statistics(std::vector<float>(40, 99.94f));  // runs that all agree
    EXPECT_EQ(std::pair(same.X_MEAN, same.X_RMS), std::pair(99.94f, 0.0f));
}

namespace {

struct HistogramPlot : PlotTest {
    // Runs 1..n: position n / 2, FOM(2) = n; then `extra`. The bars: x range
    // and height of each, in drawing order.
    std::string draw(int code, int n, int n_bins = 10, int counted = 0, const std::string& extra = "") {
        std::string t;
        for (int i = 1; i <= n; ++i)
            t += std::to_string(i) + " " + std::to_string(i / 2.0) + " 0 " + std::to_string(i) +
                 " 9 9 9 9 9 9 9 9\n";
        open_table(s, 27, &Fexist::Error_EXISTS, "p.Error.001", t + extra);
        s.E_PKT = counted ? counted : n;
        s.graph.N_BINS = n_bins;
        PlotTest::draw([](Session& p, int) { pgex331(p, p.E_PKT, p.graph.N_BINS); }, code);
        std::ostringstream o;
        for (auto* r : rec.named("pgrect")) o << r->args[0] << "-" << r->args[1] << ":" << r->args[3] << " ";
        return o.str();
    }
};

}  // namespace

TEST_F(HistogramPlot, BarsBinnedAnewEachDrawingAShortFileAndTheLabels) {
    EXPECT_EQ(draw(32, 8, 4),
              "1-2.75:2 2.75-4.5:2 4.5-6.25:2 6.25-8:2 1-2.75:2 2.75-4.5:2 4.5-6.25:2 6.25-8:2 ");
    const auto fill = rec.named("pgsfs");  // outlines, then hatched
    EXPECT_EQ(std::pair(fill.at(0)->args[0], fill.at(1)->args[0]), std::pair(2.0, 3.0));
    EXPECT_LT(fill[1], rec.named("pgrect")[4]);
    EXPECT_EQ(draw(32, 8, 2), "1-4.5:4 4.5-8:4 1-4.5:4 4.5-8:4 ");          // after "change number of bins"
    EXPECT_EQ(draw(41, 8, 2), "0.5-2.25:4 2.25-4:4 0.5-2.25:4 2.25-4:4 ");  // the position
    draw(32, 2, 10, 4, "3 1.5 0 3\n 9 9 9 9 9 9 9 9\n");                    // the third record over two lines
    EXPECT_TRUE(has(console(),
                    "     p.Error.001: 3 of 4 counted records read\n"
                    "\n     number of runs:      3\n     average value:    2.0000E+00\n"));
    draw(31, 0, 10, 1, "1 2\n");  // not one record
    EXPECT_EQ(console(), "     p.Error.001: 0 of 1 counted records read\n");
    EXPECT_EQ(summary(), "[-2.2 2.2 0 1] | ");

    // clang-format off
    const struct { std::string file, x, y, title; bool cleared; } cases[] = {  // texts of code 31; a group read
        {"\\fiseed\nEmit\nEmittance x vs. seed\n", "Emit", "\\fioccurence", "Emittance x ", true},
        {"x\ny\nPrvs ratio\n", "y", "\\fioccurence", "Pr", true},                           // inside a word too
        {"x\ny\nno such letters\nd\n", "y", "\\fioccurence", "no such letters", true},  // ends inside group 2
        {"x\ny\n", "x", "y", "", false},                                                     // ends inside group 1
    };
    // clang-format on
    for (const auto& c : cases) {
        s.labels = {};
        open_table(s, 28, &Fexist::lab_E_EXISTS, "p.lab-E.001", c.file);
        draw(31, 2);
        EXPECT_EQ(labels(), (std::vector<std::string>{pad(c.x, 80), pad(c.y, 80), pad(c.title, 80)}));
        EXPECT_EQ(s.fexist.lab_E_EXISTS, !c.cleared);
    }
    s.unit(28).close();
    ASSERT_TRUE(s.unit(28).open("/proc/self/mem"));  // every read fails
    s.fexist.lab_E_EXISTS = true;
    draw(31, 2);
    EXPECT_TRUE(has(console(), "\n          Error reading labels\n"));
    EXPECT_TRUE(rec.named("pgenv").empty());
}
