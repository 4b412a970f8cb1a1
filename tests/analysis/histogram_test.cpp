// The run statistics and the histogram as numbers (counts, edges, the one
// bin and the all-zero range, the console lines), then the plot: bars drawn
// outlined then hatched, labels rewritten from .lab-E, a change of the
// number of bins, a short .Error file and the real run tables.
#include "analysis/histogram.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <random>
#include <sstream>

#include "analysis/plots.hpp"
#include "core/fortran_format.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::open_table;
using viewer::testing::trace;
using viewer::testing::window_is;

TEST(Histogram, CountsEveryValueInTheBinItsEdgesGive) {
    std::mt19937 rng(3);
    std::normal_distribution<float> d(5.0f, 2.0f);
    for (int n_bins : {1, 2, 7, 10, 100, kBinTable}) {
        SCOPED_TRACE(n_bins);
        std::vector<float> v(2000);
        for (float& x : v) x = d(rng);
        v[7] = v[9];  // a value twice
        std::ostringstream warn;
        const Histogram h = histogram(v, n_bins, warn);
        ASSERT_EQ(h.NBIN, n_bins);
        ASSERT_EQ(h.ARRAYX.size(), static_cast<std::size_t>(n_bins));
        EXPECT_EQ(warn.str(), "");
        std::vector<float> direct(h.ARRAYX.size(), 0.0f);
        for (float x : v) {
            int I = 1;  // a value that rounding lets fall through every interval
            for (int K = 1; K <= n_bins; ++K)
                if (h.XMIN + (K - 1) * h.DELTAX <= x && x < h.XMIN + K * h.DELTAX) {
                    I = K;
                    break;
                }
            direct[static_cast<std::size_t>(I - 1)] += 1;
        }
        EXPECT_EQ(h.ARRAYX, direct);
        float total = 0;
        for (float c : h.ARRAYX) total += c;
        EXPECT_EQ(total, 2000.0f);  // the largest value lies inside the last bin
        EXPECT_FLOAT_EQ(h.X_AXIS[0], h.XMIN + 0.5f * h.DELTAX);
        EXPECT_FLOAT_EQ(h.AXIS_MIN, h.XMIN - (n_bins == 1 ? 10.5f : 0.5f) * h.DELTAX);
        EXPECT_FLOAT_EQ(h.YMAX, 1.1f * *std::max_element(h.ARRAYX.begin(), h.ARRAYX.end()));
    }
}

TEST(Histogram, BinEdgesAndItsWarning) {
    struct Case {
        float x;
        int I, J;
    };
    for (const Case& c : {Case{0, 1, 1}, Case{1, 2, 1}, Case{3.99f, 4, 1}, Case{4, 5, 0}, Case{7, 5, 0},
                          Case{-0.5f, 0, 0}, Case{NAN, 1, 1}}) {
        std::ostringstream warn;
        const BinOf b = bin(c.x, 4, 0, 1, 4, warn);
        EXPECT_EQ(b.I, c.I) << c.x;
        EXPECT_EQ(b.J, c.J) << c.x;
        EXPECT_EQ(warn.str(), "");
    }
    std::ostringstream warn;
    EXPECT_EQ(bin(2.5f, 4, 0, 1, 3, warn).I, 3);  // warned, and still binned
    EXPECT_EQ(warn.str(), "     Mismatch of intervals in SUBROUTINE BIN\n     4 0 1 3 4 4\n");
}

TEST(Histogram, OneBinForEqualValuesAndTheZeroRange) {
    struct Case {
        std::vector<float> v;
        float XMIN, XMAX;
    };
    const Case cases[] = {
        {{2, 2, 2}, 2 - 2e-6f, 2 + 2e-6f},
        {{-3}, -3 - 3e-6f, -3 + 3e-6f},
        {{0, 0}, -0.1f, 0.1f},  // a millionth of zero widens nothing
        {{}, -0.1f, 0.1f},      // no run read: an empty frame
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.v.size());
        std::ostringstream warn;
        const Histogram h = histogram(c.v, 10, warn);
        EXPECT_EQ(h.NBIN, 1);
        EXPECT_FLOAT_EQ(h.XMIN, c.XMIN);
        EXPECT_FLOAT_EQ(h.XMAX, c.XMAX);
        EXPECT_EQ(h.ARRAYX, std::vector<float>{static_cast<float>(c.v.size())});
        // the bar in the middle, ten and a half widths free on either side
        EXPECT_NEAR((h.AXIS_MAX - h.AXIS_MIN) / h.DELTAX, 22.0f, 1e-3f);
        EXPECT_NEAR((h.AXIS_MAX + h.AXIS_MIN) / 2, (h.XMAX + h.XMIN) / 2, 1e-6f);
        EXPECT_FLOAT_EQ(h.YMAX, c.v.empty() ? 1.0f : 1.1f * c.v.size());
    }
}

TEST(Histogram, ConsoleLines) {
    struct Case {
        std::vector<float> v;
        const char* text;
    };
    const Case cases[] = {
        {{1, 2, 3, 4},
         "\n     number of runs:      4\n     average value:    2.5000E+00\n     rms value:        "
         "1.1180E+00\n"},
        {{-7, -7},
         "\n     number of runs:      2\n     average value:   -7.0000E+00\n     rms value:        "
         "0.0000E+00\n"},
    };
    for (const Case& c : cases) {
        std::ostringstream out;
        print_run_statistics(out, static_cast<int>(c.v.size()), run_statistics(c.v));
        EXPECT_EQ(out.str(), c.text);
    }
}

namespace {

struct HistogramPlot : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    void error_table(const std::string& text, int counted) {
        open_table(s, 27, &Fexist::Error_EXISTS, "p.Error.001", text);
        s.E_PKT = counted;
    }
    void labels(const std::string& text) { open_table(s, 28, &Fexist::lab_E_EXISTS, "p.lab-E.001", text); }
    void draw(int code, int n_bins = 10) {
        rec.clear();
        s.window.SELECTION = code;
        pgex331(s, s.E_PKT, n_bins);
    }
    std::vector<std::string> lab() const { return rec.named("pglab").at(0)->texts; }
};

std::string runs(int n) {
    std::string t;
    for (int i = 1; i <= n; ++i)
        t += std::to_string(i) + " " + std::to_string(0.5 * i) + " 0 " + std::to_string(i) +
             " 9 9 9 9 9 9 9 9\n";
    return t;
}

}  // namespace

TEST_F(HistogramPlot, OutlinesThenHatchingAndNewBinsOnEachDrawing) {
    error_table(runs(8), 8);
    draw(32, 4);  // D(4) = 1 .. 8
    std::vector<std::string> want = {"pgbbuf", "pgsave", "pgsci1", "pgsfs", "pgenv", "pglab"};
    want.insert(want.end(), 4, "pgrect");
    want.push_back("pgsfs");
    want.insert(want.end(), 4, "pgrect");
    for (const char* c : {"pgunsa", "pgebuf", "pgupdt"}) want.push_back(c);
    auto t = trace(rec);
    t.resize(want.size());
    EXPECT_EQ(t, want);
    const auto fs = rec.named("pgsfs");
    EXPECT_EQ(fs[0]->args[0], 2);
    EXPECT_EQ(fs[1]->args[0], 3);
    const auto rect = rec.named("pgrect");
    EXPECT_EQ(rect[0]->args, rect[4]->args);
    std::vector<double> counts;
    for (std::size_t i = 0; i < 4; ++i) counts.push_back(rect[i]->args[3]);
    EXPECT_EQ(counts, (std::vector<double>{2, 2, 2, 2}));
    EXPECT_NE(h.console().find("     number of runs:      8\n     average value:    4.5000E+00\n"),
              std::string::npos);

    draw(32, 2);  // "change number of bins": the next drawing bins anew
    EXPECT_EQ(rec.named("pgrect").size(), 4u);
    EXPECT_EQ(rec.named("pgrect")[0]->args[3], 4);
    draw(41, 2);  // the position D(2)
    EXPECT_FLOAT_EQ(static_cast<float>(rec.named("pgrect")[0]->args[0]), 0.5f);
}

TEST_F(HistogramPlot, AShortFileShowsTheRecordsItHas) {
    error_table(runs(2) + "3 1.5 0 3\n 9 9 9 9 9 9 9 9\n", 4);  // the third record runs over two lines
    draw(32);
    EXPECT_NE(h.console().find("     p.Error.001: 3 of 4 counted records read\n"
                               "\n     number of runs:      3\n     average value:    2.0000E+00\n"),
              std::string::npos)
        << h.console();
    float total = 0;
    for (auto* r : rec.named("pgrect")) total += static_cast<float>(r->args[3]);
    EXPECT_EQ(total, 6.0f);  // three runs, outlined and hatched

    error_table("1 2\n", 1);  // not one record read
    draw(31);
    EXPECT_NE(h.console().find("p.Error.001: 0 of 1 counted records read\n"), std::string::npos);
    EXPECT_TRUE(window_is(*rec.named("pgenv").at(0), -2.2f, 2.2f, 0, 1));
}

TEST_F(HistogramPlot, LabelsRewrittenForAHistogramOnce) {
    struct Case {
        std::string file;
        std::vector<std::string> group1;  // x, y, title of code 31 as drawn
        bool cleared;
    };
    const std::string occ = "\\fioccurence";
    const Case cases[] = {
        {"\\fiseed\n\\gen mm\nEmittance x vs. seed\n", {"\\gen mm", occ, "Emittance x "}, true},
        {"x\ny\nPrvs ratio\n", {"y", occ, "Pr"}, true},  // found inside a word
        {"x\ny\nno such letters\n", {"y", occ, "no such letters"}, true},
        {"x\ny\n", {"x", "y", ""}, false},  // ends inside the group: kept as read
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        s.labels = {};
        error_table(runs(2), 2);
        labels(c.file);
        draw(31);
        std::vector<std::string> want;
        for (const auto& t : c.group1) want.push_back(pad(t, 80));
        EXPECT_EQ(lab(), want);
        EXPECT_EQ(s.fexist.lab_E_EXISTS, !c.cleared);
        EXPECT_EQ(s.labels.rec[42].PLOT_TITLE, "");  // fewer than 11 groups leave the others
    }
    // Typed labels are not overwritten by the file.
    labels("x\ny\nA vs B\n");
    s.fexist.lab_E_EXISTS = false;
    s.labels.rec[41].PLOT_TITLE = "typed";
    draw(31);
    EXPECT_EQ(lab()[2], pad("typed", 80));
}

TEST_F(HistogramPlot, UnreadableLabelsDrawNothing) {
    error_table(runs(2), 2);
    s.unit(28).close();
    ASSERT_TRUE(s.unit(28).open("/proc/self/mem"));  // every read of it fails
    s.fexist.lab_E_EXISTS = true;
    draw(31);
    EXPECT_NE(h.console().find("\n          Error reading labels\n"), std::string::npos);
    EXPECT_TRUE(rec.named("pgenv").empty());
}

TEST_F(HistogramPlot, RealRunSeriesTables) {
    const auto dir =
        std::filesystem::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata" / "simframe-injector400";
    if (!std::filesystem::is_directory(dir)) GTEST_SKIP() << "no real run tables at " << dir;
    auto text = [&](const char* name) {
        std::ifstream in(dir / name);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    error_table(text("injector400.Error.001"), 1);
    labels(text("injector400.lab-E.001"));
    draw(41);  // the position 3.29693: one bar
    EXPECT_EQ(rec.named("pgrect").size(), 2u);
    const GraphicsCall& env = *rec.named("pgenv").at(0);
    EXPECT_NEAR((env.args[0] + env.args[1]) / 2, 3.29693, 1e-5);
    EXPECT_FLOAT_EQ(static_cast<float>(env.args[3]), 1.1f);
    EXPECT_EQ(lab(), (std::vector<std::string>{pad("\\fiposition m", 80), pad("\\fioccurence", 80),
                                               pad("\\fiEnd of run position ", 80)}));
    EXPECT_FALSE(s.fexist.lab_E_EXISTS);
    draw(31);  // all zero
    EXPECT_TRUE(window_is(*rec.named("pgenv").at(0), -2.2f, 2.2f, 0, 1.1f));
    EXPECT_NE(h.console().find("     rms value:        0.0000E+00\n"), std::string::npos);
}
