// The run statistics and the histogram as numbers, then the plot: bars
// outlined then hatched, labels rewritten from .lab-E, new bins on each
// drawing, a short .Error file.
#include "analysis/histogram.hpp"

#include <gtest/gtest.h>

#include <numeric>
#include <random>
#include <sstream>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

TEST(Histogram, CountsAgainstADirectCountAndTheOneBinRanges) {
    std::mt19937 rng(3);
    std::normal_distribution<float> d(5.0f, 2.0f);
    std::vector<float> v(2000);
    for (float& x : v) x = d(rng);
    for (int n_bins : {2, 10, kBinTable}) {
        std::ostringstream warn;
        const Histogram h = histogram(v, n_bins, warn);
        std::vector<float> direct(static_cast<std::size_t>(n_bins), 0.0f);
        for (float x : v) {
            int I = 1;  // where a value that falls through every interval goes
            for (int K = n_bins; K >= 1; --K)
                if (h.XMIN + (K - 1) * h.DELTAX <= x && x < h.XMIN + K * h.DELTAX) I = K;
            direct[static_cast<std::size_t>(I - 1)] += 1;
        }
        EXPECT_EQ(h.ARRAYX, direct) << n_bins;
        EXPECT_EQ(std::accumulate(h.ARRAYX.begin(), h.ARRAYX.end(), 0.0f), 2000.0f);  // the largest too
        EXPECT_EQ(warn.str(), "");
    }
    const struct {
        std::vector<float> v;
        float XMIN, XMAX;
    } one_bin[] = {{{2, 2, 2}, 2 - 2e-6f, 2 + 2e-6f}, {{0, 0}, -0.1f, 0.1f}, {{}, -0.1f, 0.1f}};
    for (const auto& c : one_bin) {
        std::ostringstream warn;
        const Histogram h = histogram(c.v, 10, warn);
        EXPECT_EQ(h.ARRAYX, std::vector<float>{float(c.v.size())});
        EXPECT_FLOAT_EQ(h.XMIN, c.XMIN);
        EXPECT_FLOAT_EQ(h.XMAX, c.XMAX);
        // The bar in the middle, ten and a half widths free on either side.
        EXPECT_FLOAT_EQ(h.AXIS_MIN, h.XMIN - 10.5f * h.DELTAX);
        EXPECT_FLOAT_EQ(h.AXIS_MAX, h.XMAX + 10.5f * h.DELTAX);
        EXPECT_FLOAT_EQ(h.YMAX, c.v.empty() ? 1.0f : 1.1f * c.v.size());
    }
}

TEST(Histogram, BinEdgesWarningAndRunStatistics) {
    std::ostringstream out;
    for (auto [x, I, J] :
         {std::tuple{0.0f, 1, 1}, {1.0f, 2, 1}, {3.99f, 4, 1}, {4.0f, 5, 0}, {-0.5f, 0, 0}}) {
        const BinOf b = bin(x, 4, 0, 1, 4, out);
        EXPECT_EQ(std::pair(b.I, b.J), std::pair(I, J)) << x;
    }
    EXPECT_EQ(bin(2.5f, 4, 0, 1, 3, out).I, 3);  // warned, and binned all the same
    print_run_statistics(out, 4, run_statistics(std::vector<float>{1, 2, 3, 4}));
    EXPECT_EQ(
        out.str(),
        "     Mismatch of intervals in SUBROUTINE BIN\n     4 0 1 3 4 4\n\n     number of runs:      4\n"
        "     average value:    2.5000E+00\n     rms value:        1.1180E+00\n");
    const RunStatistics same = run_statistics(std::vector<float>(40, 99.94f));  // runs that all agree
    EXPECT_EQ(std::pair(same.X_MEAN, same.X_RMS), std::pair(99.94f, 0.0f));
}

namespace {

struct HistogramPlot : PlotTest {
    void error_table(const std::string& text, int counted) {
        open_table(s, 27, &Fexist::Error_EXISTS, "p.Error.001", text);
        s.E_PKT = counted;
    }
    void draw(int code, int n_bins = 10) {
        PlotTest::draw(
            +[](Session&, int) {}, code);
        pgex331(s, s.E_PKT, n_bins);
    }
    // The heights of the bars drawn.
    std::vector<float> bars() const {
        std::vector<float> v;
        for (auto* r : rec.named("pgrect")) v.push_back(static_cast<float>(r->args[3]));
        return v;
    }
};

// Runs 1..n: position n / 2, FOM(2) = n.
std::string runs(int n) {
    std::string t;
    for (int i = 1; i <= n; ++i)
        t += std::to_string(i) + " " + std::to_string(i / 2.0) + " 0 " + std::to_string(i) +
             " 9 9 9 9 9 9 9 9\n";
    return t;
}

}  // namespace

TEST_F(HistogramPlot, OutlinesThenHatchingBinnedAnewEachDrawingAndAShortFile) {
    error_table(runs(8), 8);
    draw(32, 4);
    const auto t = trace(rec);
    const std::vector<std::string> want = {"pgbbuf", "pgsave", "pgsci1", "pgsfs",  "pgenv", "pglab",
                                           "pgrect", "pgrect", "pgrect", "pgrect", "pgsfs", "pgrect",
                                           "pgrect", "pgrect", "pgrect", "pgunsa"};
    EXPECT_EQ(std::vector<std::string>(t.begin(), t.begin() + 16), want);
    EXPECT_EQ(rec.named("pgsfs")[1]->args[0], 3);
    EXPECT_EQ(bars(), std::vector<float>(8, 2));
    draw(32, 2);  // after "change number of bins"
    EXPECT_EQ(bars(), std::vector<float>(4, 4));
    draw(41, 2);  // the position
    EXPECT_FLOAT_EQ(key_box(), 0.5f);

    error_table(runs(2) + "3 1.5 0 3\n 9 9 9 9 9 9 9 9\n", 4);  // the third record over two lines
    draw(32);
    EXPECT_TRUE(has(console(),
                    "     p.Error.001: 3 of 4 counted records read\n"
                    "\n     number of runs:      3\n     average value:    2.0000E+00\n"));
    const auto b = bars();
    EXPECT_EQ(std::accumulate(b.begin(), b.begin() + 10, 0.0f), 3.0f);  // the outlines
    error_table("1 2\n", 1);                                            // not one record
    draw(31);
    EXPECT_TRUE(has(console(), "p.Error.001: 0 of 1 counted records read\n"));
    EXPECT_TRUE(window_is(env(), -2.2f, 2.2f, 0, 1));
}

TEST_F(HistogramPlot, LabelsRewrittenOnceAndTheirReadError) {
    const std::string occ = "\\fioccurence";
    const struct {
        std::string file;
        std::vector<std::string> drawn;  // x, y, title of code 31
        bool cleared;
    } cases[] = {
        {"\\fiseed\nEmit\nEmittance x vs. seed\n", {"Emit", occ, "Emittance x "}, true},
        {"x\ny\nPrvs ratio\n", {"y", occ, "Pr"}, true},  // inside a word too
        {"x\ny\nno such letters\n", {"y", occ, "no such letters"}, true},
        {"x\ny\n", {"x", "y", ""}, false},  // ends inside the group
    };
    for (const auto& c : cases) {
        s.labels = {};
        error_table(runs(2), 2);
        open_table(s, 28, &Fexist::lab_E_EXISTS, "p.lab-E.001", c.file);
        draw(31);
        EXPECT_EQ(labels(),
                  (std::vector<std::string>{pad(c.drawn[0], 80), pad(c.drawn[1], 80), pad(c.drawn[2], 80)}));
        EXPECT_EQ(s.fexist.lab_E_EXISTS, !c.cleared);
    }
    s.unit(28).close();
    ASSERT_TRUE(s.unit(28).open("/proc/self/mem"));  // every read fails
    draw(31);
    EXPECT_TRUE(has(console(), "\n          Error reading labels\n"));
    EXPECT_TRUE(rec.named("pgenv").empty());
}
