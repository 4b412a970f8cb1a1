// The fitting subsystem through its entry points: every pick of the
// dispatcher as a row of one table (the eleven models on synthetic data and
// the reading of reference files, with the report on the console, the curve
// left to draw and every refusal), the minimiser on a certified problem, the
// round trip of a stored curve, the fit menu and the hook of a plot.
#include "fitting/fit.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "fitting/iterative_fits.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;

namespace {

struct FitBench : viewer::testing::Harness {
    explicit FitBench(std::string input = "") : Harness(std::move(input)) {
        session().window.MENU_DEVICE = 2;
        session().window.PLOT_DEVICE = 1;
    }
    const FitVariables& fv() const { return s->fit_variables; }
    // The first N_FIT values of a curve array (all of it when shorter).
    std::vector<float> drawn(const std::vector<float>& v) const {
        return {v.begin(), v.begin() + std::min<std::ptrdiff_t>(fv().N_FIT, std::ssize(v))};
    }
};

// The rule of 74 dashes that opens a report.
const std::string rule = " " + std::string(74, '-') + "\n";

// True when a fit left nothing behind: nothing to draw, nothing allocated.
bool no_curve(const FitVariables& fv) {
    return fv.N_FIT == 0 && fv.X_FIT.empty() && fv.Y1_FIT.empty() && fv.Y2_FIT.empty();
}

// `text` is `pattern` where each '~' of the pattern stands for any text.
bool matches(std::string_view text, std::string_view pattern) {
    const std::size_t any = pattern.find('~');
    if (any == std::string_view::npos) return text == pattern;
    if (!text.starts_with(pattern.substr(0, any))) return false;
    for (std::size_t i = any; i <= text.size(); ++i)
        if (matches(text.substr(i), pattern.substr(any + 1))) return true;
    return false;
}

using Model = double (*)(double);
struct Data {
    std::vector<float> x, y;
    Model f = nullptr;  // what the fitted curve must follow
};

// `n` points of `f` from `from` by `step`, rounded to 32 bits; `set` overwrites ordinates.
Data on(Model f, double from, double step, int n, std::vector<std::pair<int, float>> set = {}) {
    Data d{{}, {}, f};
    for (int i = 0; i < n; ++i) {
        d.x.push_back(static_cast<float>(from + step * i));
        d.y.push_back(static_cast<float>(f(d.x.back())));
    }
    for (auto [i, y] : set) d.y[static_cast<std::size_t>(i)] = y;
    return d;
}

double gaussian(double x, double a, double sig, double x0) {
    const double t = (x - x0) / sig;
    return a * K_GAUSS / sig * std::exp(-t * t / 2.0);
}

// At both ends and between, within a thousandth of the curve's size: the
// curve is evaluated in 32 bits.
::testing::AssertionResult follows(const FitVariables& fv, const std::vector<float>& y, Model f) {
    const auto n = static_cast<std::size_t>(fv.N_FIT);
    const std::size_t at[] = {0, n / 2, n - 1};
    const std::vector<float>& x = fv.X_FIT;
    double size = 0, off = 0;
    for (std::size_t i = 0; f && i < 3; ++i) size = std::max(size, std::fabs(f(x[at[i]])));
    for (std::size_t i = 0; f && i < 3; ++i) off = std::max(off, std::fabs(y[at[i]] - f(x[at[i]])));
    return ::testing::AssertionResult(off <= 1e-3 * size) << "off by " << off;
}

// y = b1 (1 - exp(-b2 x))
void exp_rise(double x, std::span<const double> A, double& y, std::span<double> DYDA) {
    const double e = std::exp(-A[1] * x);
    y = A[0] * (1.0 - e);
    DYDA[0] = 1.0 - e;
    DYDA[1] = A[0] * x * e;
}

constexpr float mark_x = 0.03f;
float mark_y(int pick) {
    return 0.90f - 0.05f * static_cast<float>(pick - 1);
}

}  // namespace

TEST(FitModels, ReportsCurvesAndRefusals) {
    // clang-format off
    const std::string none = "\n     no valid data points\n", no_solution = "\n     no solution\n",
        not_found = "\n     no solution found\n", one_out = "     1 value lower or equal zero is neglected\n",
        singular = "\n     Singluar matrix; no solution for fit\n\n",
        odd = rule + "     odd polynomial fit: Y = a + b*x + c*x^3 + d*x^5\n",
        gauss = rule + "     gauss fit: Y = a/(sqrt(2*Pi)*sig)*exp(-0.5*((x-x0)/sig)**2)\n",
        ask = rule + "     Enter reference file name: ", asked = ask + " File doesn't exist\n" + ask;
    // clang-format on
    auto out = [&](int n) { return "     " + fmt_i(n, 5) + " values lower or equal zero are neglected\n"; };
    const Model plus1 = [](double x) { return x + 1; }, tenfold = [](double x) { return 10 * x; };
    const Data two =
        on([](double t) { return gaussian(t, 3, 0.5, 1) + gaussian(t, 3, 1, 1.2); }, -4, 0.1, 101);
    Data not_gauss = on([](double x) { return std::exp(x); }, 0, 0.5, 21);
    not_gauss.f = nullptr;
    struct Row {
        int pick;
        Data d;
        std::string console;  // '~': any text
        int n = 0;            // curve points; 0: nothing left behind
        float front = 0, back = 0;
        int curves = 1;           // the same data for each
        Model f2 = nullptr;       // what the second curve must follow
        const char* r = nullptr;  // the file r.dat, named after a missing one; "/" makes it a directory
    };
    // clang-format off
    const Row rows[] = {
        // A zero ordinate is left out of A/r; negative ones stay in.
        {1, on([](double x) { return 4.0 / (x - 0.5); }, -3, 1, 7, {{2, 0}}), rule +
         "     A/r fit: Y = A / ( r-r0 )\n" + one_out + "     A  =    4.0000D+00\n     r0 =    5.0000D-01\n", 100, -3, 3},
        // Where a + b*x is negative the curve is 0.
        {2, on([](double x) { return x > 0.5 ? std::sqrt(2.0 * x - 1.0) : 0.0; }, -1, 1, 7), rule +
         "     square root fit: Y = sqrt( a + b*x)\n" + out(2) + "     a  =   -1.0000D+00\n     b  =    2.0000D+00\n",
         100, -1, 5},
        // Grids run from the first point passed to the last, in the plot's order.
        {3, {{3, 0, 1, 2}, {11, 2, 5, 8}, [](double x) { return 2.0 + 3.0 * x; }}, rule + "     straight line fit: "
         "Y = a + b*x\n     a  =    2.0000D+00\n     b  =    3.0000D+00\n     zero crossing =   -6.6667D-01\n", 2, 3, 2},
        {3, {{0, 1, 2}, {5, 5, 5}, [](double) { return 5.0; }}, rule + "     straight line fit: Y = a + b*x\n"
         "     a  =    5.0000D+00\n     b  =    0.0000D+00\n", 2, 0, 2},
        {4, on([](double x) { return 1.0 - 2.0 * x + 0.5 * x * x; }, -2, 1, 7), rule + "     parabolic fit: Y = a + "
         "b*x + c*x^2\n     a  =    1.0000D+00\n     b  =   -2.0000D+00\n     c  =    5.0000D-01\n"
         "     Extremum at x0 =  2.0000D+00,  Y(x0) = -1.0000D+00\n", 100, -2, 4},
        // The origin is left out of a power law; the curve spans the valid abscissae.
        {5, {{0, 4, 1, 9, 16}, {0, 2, 1, 3, 4}, [](double x) { return std::sqrt(x); }}, rule +
         "     power fit: Y = a * x^n\n" + one_out + "     a  =    1.0000D+00\n     n  =    5.0000D-01\n", 100, 1, 16},
        {6, on([](double x) { return std::exp(1 + 0.5 * x); }, 0, 1, 6, {{0, 0}, {3, -1}}), rule +
         "     exponential fit: Y = exp (a + b*x)\n" + out(2) + "     a  =    1.0000D+00\n     b  =    5.0000D-01\n",
         100, 0, 5},
        // a is shown, not its logarithm.
        {7, on([](double x) { return 3.0 * std::pow(x, 0.7) * std::exp(-0.2 * x); }, 0, 0.5, 12), rule +
         "     modified exponential fit: Y = a * x^b * exp(c*x)\n" + one_out +
         "     a  =    3.0000D+00\n     b  =    7.0000D-01\n     c  =   -2.0000D-01\n", 100, 0.5f, 5.5f},
        // Far from the origin; drawn 5 % beyond both ends; stationary at 104 +- 4/sqrt(3).
        {8, on([](double x) { return 0.5 * (x - 100) * (x - 104) * (x - 108); }, 98, 0.25, 49), rule +
         "     polynomial fit: Y = a + b*x + c*x^2 + d*x^3\n     a   =   -5.6160D+05\n     b   =    1.6216D+04\n"
         "     c   =   -1.5600D+02\n     d   =    5.0000D-01\n     Extremum at x0 =  1.0631D+02,  Y(x0) = -1.2317D+01\n"
         "     Extremum at x0 =  1.0169D+02,  Y(x0) =  1.2317D+01\n", 200, 97.4f, 110.6f},
        // x^3 + 3x has no stationary point.
        {8, on([](double x) { return 1 + 3 * x + x * x * x; }, -2, 0.5, 9), rule + "     polynomial fit: Y = a + "
         "b*x + c*x^2 + d*x^3\n     a   =    1.0000D+00\n     b   =    3.0000D+00\n     c   =  ~\n     d   =    1.0000D+00\n",
         200, -2.2f, 2.2f},
        {9, on([](double t) { return 1.0 + 2.0 * t - 0.5 * t * t * t + 0.1 * std::pow(t, 5); }, -2, 0.1, 41), odd +
         "     a   =    1.0000D+00\n     b   =    2.0000D+00\n     c   =   -5.0000D-01\n     d   =    1.0000D-01\n"
         "     chi squared =  ~", 200, -2.2f, 2.2f},
        {10, on([](double t) { return gaussian(t, 5.0, 0.8, 1.5); }, -2, 0.1, 71), gauss + "     a   =    5.0000D+00\n"
         "     sig =    8.0000D-01\n     x0  =    1.5000D+00\n     chi squared =  ~", 200, -2, 5},
        // Two curves: the formula comes with the first only.
        {11, two, rule + "     gauss fit: Y = a_1/(sqrt(2*Pi)*sig_1)*exp(-0.5*((x-x0_1)/sig_1)**2)+\n"
         "                    a_2/(sqrt(2*Pi)*sig_2)*exp(-0.5*((x-x0_2)/sig_2)**2)\n\n     black line: \n"
         "     a_1   =  ~\n     sig_1 =  ~\n     x0_1  =  ~\n     a_2   =  ~\n     sig_2 =  ~\n     x0_2  =  ~\n"
         "     chi squared =  ~\n\n     red line: \n     a_1   =  ~", 200, -4, 6, 2, two.f},
        // An exponential is no Gaussian: after 50 passes the last step is reported and drawn.
        {10, not_gauss, gauss + " No convergence after 50 iterations\n~", 200, 0, 10},
        {9, {}, none}, {10, {}, none}, {11, {}, none}, {3, {}, none}, {8, {}, none},
        {10, {{1, 2, 3}, {0, 0, 0}}, no_solution}, {11, {{1, 2, 3}, {0, 0, 0}}, no_solution},
        // All abscissae 0: the start values are shown, nothing is drawn.
        {9, {{0, 0, 0}, {1, 2, 3}}, odd + singular + "     a   =    2.0000D+00\n     b   =    1.0000D+00\n"
         "     c   =    1.0000D+00\n     d   =    1.0000D+00\n     chi squared =    2.0000D+00\n"},
        // Mixed signs give a negative variance: the start is not a number.
        {10, {{1, 2, 3}, {-1, 3, -1}}, gauss + singular},
        {5, {}, out(0) + none}, {1, {{2}, {0}}, out(1) + none}, {6, {{1, 2, 3}, {0, -1, -2}}, out(3) + none},
        {2, {{1, 2}, {-4, 0}}, out(2) + none}, {7, {{-1, 2}, {1, -3}}, out(2) + none},
        {6, {{2, 2, 2}, {1, 2, 3}}, not_found}, {8, {{3, 3, 3}, {1, 2, 3}}, no_solution},
        {7, on([](double x) { return std::exp(250 - 40 * std::log(x)); }, 400, 50, 13), not_found},  // ln a above 200
        // A blank line is no record; the statistics of the curve are the report.
        {16, {{}, {}, plus1}, asked + "\n       \n     beginning:                   2.0000D+00\n"
         "     end:                         4.0000D+00\n     minimum:                     2.0000D+00  at z =   1.0000D+00\n"
         "     maximum:                     4.0000D+00  at z =   3.0000D+00\n     average:                     3.0000D+00\n\n",
         2, 1, 3, 1, nullptr, " 1 2\n\n 3 4\n"},
        // Three numbers a record across line ends: the rest of the line that ends a record is skipped.
        {16, {{}, {}, tenfold}, asked + "~", 2, 1, 3, 2, plus1, "1 10\n2 20\n3 30\n4 40\n"},
        {16, {{}, {}, tenfold}, asked + "~", 2, 1, 2, 1, nullptr, " 1 10 100\n 2 20 200\n"},
        {16, {}, asked + "     Cannot read reference file: r.dat\n", 0, 0, 0, 1, nullptr, "/"},
        {16, {}, asked + "     Cannot read reference file: r.dat, line 2, column 4\n", 0, 0, 0, 1, nullptr, " 1 2\n 3 abc\n"},
        {16, {}, asked, 0, 0, 0, 2, nullptr, ""},
    };
    // clang-format on
    for (const Row& r : rows) {
        SCOPED_TRACE(&r - rows);
        FitBench b(r.r ? "gone.dat\nr.dat\n" : "");
        if (r.r && r.r == std::string("/"))
            std::filesystem::create_directory(b.dir.file("r.dat"));
        else if (r.r)
            b.dir.write("r.dat", r.r);
        for (int k = 1; k <= r.curves; ++k)
            fit(*b.s, r.pick, k, r.curves, static_cast<int>(r.d.x.size()), r.d.x.data(), r.d.y.data());
        EXPECT_TRUE(matches(b.console(), r.console)) << b.console();
        const FitVariables& fv = b.fv();
        EXPECT_EQ(fv.N_FIT, r.n);
        EXPECT_TRUE(r.n > 0 || no_curve(fv));
        if (r.n == 0) continue;
        EXPECT_NEAR(fv.X_FIT.front(), r.front, 1e-5 * std::fabs(r.front));
        EXPECT_NEAR(fv.X_FIT[std::size_t(r.n - 1)], r.back, 1e-5 * std::fabs(r.back));
        EXPECT_TRUE(follows(fv, fv.Y1_FIT, r.d.f));
        EXPECT_TRUE(follows(fv, fv.Y2_FIT, r.f2));
    }
}

TEST(Minimiser, CertifiedProblemAndTheAbsoluteStop) {
    // Misra1a of the statistical reference data sets for nonlinear regression.
    std::vector<double> x = {77.6,  114.9, 141.1, 190.8, 239.9, 289.0, 332.8,
                             378.4, 434.8, 477.3, 536.8, 593.1, 689.1, 760.0},
                        y = {10.07, 14.73, 17.94, 23.93, 29.61, 35.18, 40.02,
                             44.82, 50.76, 55.05, 61.01, 66.40, 75.47, 81.78},
                        sig(14, 0.0), A = {250, 5e-4};
    LmWorkspace w(2);
    double chisq = 0;
    EXPECT_EQ(mrqmin(x, y, sig, A, chisq, exp_rise, w), LmStatus::converged);
    EXPECT_EQ(sig, std::vector<double>(14, 1.0));  // zero errors mean unweighted
    // The stop on an absolute change of 0.001 in chi-squared leaves the
    // parameters a few digits short of certified; chi-squared is much closer.
    EXPECT_NEAR(chisq, 1.2455138894e-01, 1e-10);
    EXPECT_NEAR(A[0], 2.3894212918e+02, 2e-4);
    EXPECT_NEAR(A[1], 5.5015643181e-04, 5e-10);
    // A chi-squared below 0.001 ends at the first accepted step, however far from the optimum.
    for (double& v : y) v *= 1e-4;
    A = {0.025, 5e-4};
    EXPECT_EQ(mrqmin(x, y, sig, A, chisq, exp_rise, w), LmStatus::converged);
    EXPECT_EQ(w.COUNT, 0);
}

TEST(ReferenceCurves, StoredCurvesComeBackBitForBitInTheHardcopy) {
    // Values that need every digit to come back the same.
    const std::vector<float> xs = {0.1f, 1.0f / 3.0f, 2.5e-7f, 123456.79f, -7.25f};
    const std::vector<float> ys[] = {{1.0f, 3.0f, 2.0f, 0.3f, 1.0f / 7.0f},
                                     {-1.5f, 1e20f, 0.0f, 6.0f, 2.0f / 3.0f}};
    const std::string saved = "     Enter file name: " + rule + "     Data saved to reference file: ",
                      refused = "     Enter file name:      Cannot write reference file: nodir/x.dat\n",
                      gone =
                          " File doesn't exist\n     Reference curve left out of the hardcopy: nodir/x.dat\n";
    struct Case {
        std::string input, console, file, hardcopy;  // what the hardcopy then says; '~': any text
        int curves;
    };
    // clang-format off
    const Case cases[] = {
        {"ref.dat\n", saved + "ref.dat\n", "ref.dat", "\n       \n     beginning:~", 1},
        {"ref.dat\n", saved + "ref.dat\n", "ref.dat", "\n     1: black (horizontal): \n~     2: red (vertical): \n~", 2},
        // The name ends at a blank; twenty characters are shown.
        {"'ab cd'\n", saved + "ab cd\n", "ab", "~", 1},
        {"abcdefghijklmnopqrstuvwxy\n", saved + "abcdefghijklmnopqrst\n", "abcdefghijklmnopqrstuvwxy", "~", 1},
        {"'nodir/x.dat'\n", refused, "nodir/x.dat", gone, 1},
        {"'nodir/x.dat'\n", refused, "nodir/x.dat", gone, 2},  // refused at curve 1 of a pair: curve 2 is silent
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        FitBench b(c.input);
        for (int k = 1; k <= c.curves; ++k) fit(*b.s, 17, k, c.curves, 5, xs.data(), ys[k - 1].data());
        EXPECT_EQ(b.console(), c.console);
        EXPECT_TRUE(no_curve(b.fv()) && !b.s->ref.store_file);
        b.s->logo.TO_FILE = true;  // a hardcopy reads the file named before without asking
        b.s->ref.get_name = c.file;
        b.out.str("");
        for (int k = 1; k <= c.curves; ++k) fit(*b.s, 16, k, c.curves, 0, nullptr, nullptr);
        EXPECT_TRUE(matches(b.console(), c.hardcopy)) << b.console();
        const bool back = c.console != refused;
        EXPECT_EQ(b.drawn(b.fv().X_FIT), back ? xs : std::vector<float>{});
        EXPECT_EQ(b.drawn(b.fv().Y1_FIT), back ? ys[0] : std::vector<float>{});
        EXPECT_EQ(b.drawn(b.fv().Y2_FIT), back && c.curves == 2 ? ys[1] : std::vector<float>{});
    }
    FitBench b;  // with no input the prompts end the session
    EXPECT_THROW(fit(*b.s, 16, 1, 1, 0, nullptr, nullptr), EndOfInput);
    EXPECT_THROW(fit(*b.s, 17, 1, 1, 5, xs.data(), xs.data()), EndOfInput);
}

TEST(FitMenu, PicksMarksTheOldPickAndReturnsToThePlot) {
    FitBench b;
    // A click beside the marks is passed over; exactly between 3 and 4 the
    // upper wins; then no cursor is left.
    const float between = (mark_y(3) + mark_y(4)) / 2;
    b.p.clicks = {{0.5f, 0.5f}, {mark_x, between}, {mark_x + 0.01f, mark_y(18)}};
    std::vector<int> picks;
    for (int i = 0, ID_F = 0; i < 3; ++i, picks.push_back(ID_F)) fit_menu(*b.s, ID_F);
    EXPECT_EQ(picks, (std::vector<int>{3, 18, 0}));
    EXPECT_EQ(b.g.selected, b.s->window.PLOT_DEVICE);
    // Each menu shows eighteen marks, the old pick in red, then the new pick in red.
    std::vector<long> red;  // heights in hundredths
    for (std::size_t i = 0, colour = 0; i < b.g.calls.size(); ++i) {
        const GraphicsCall& c = b.g.calls[i];
        if (c.name == "pgsci") colour = static_cast<std::size_t>(c.args[0]);
        if (c.name == "pgcirc" && colour == 2) red.push_back(std::lround(c.args[1] * 100));
    }
    EXPECT_EQ(red, (std::vector<long>{80, 80, 5, 5}));
    EXPECT_EQ(b.g.named_on("pgcirc", b.s->window.MENU_DEVICE).size(), 3 * 18u + 4);
    std::vector<float> starts;  // the pointer opens where the last pick was made
    for (const auto& c : b.p.starts) starts.insert(starts.end(), {c.x, c.y});
    EXPECT_EQ(starts,
              (std::vector<float>{mark_x, 0.5f, 0.5f, 0.5f, mark_x, between, mark_x + 0.01f, mark_y(18)}));
}

// After the menu: the curves that hold a fit drawn in the plot's style, the
// first black, the second red, dashed unless the plot says otherwise; then
// the arrays released.
TEST(FitHook, CurvesDrawnInTheDrawingBracketThenReleased) {
    const std::vector<float> x = {1, 2, 3}, line = {3, 5, 7}, flat = {1, 1, 1}, bad = {-1, -2, -3},
                             rising = {2, 4, 8};
    struct Case {
        int pick;
        std::vector<float> y1, y2;
        FitStyle style;
        std::vector<std::string> drawn;
        std::vector<float> line_ends;  // last ordinate of each line drawn
    };
    // clang-format off
    const Case cases[] = {
        {3, line, flat, {}, {"pgsci1", "pgsls2", "pgline+", "pgsci2", "pgline+"}, {7, 1}},
        {3, line, {}, FitStyle{2, false}, {"pgsci2", "pgline+"}, {7}},
        {18, line, flat, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},  // the exit pick ends the fitting
        {13, line, flat, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},  // a blank slot
        {0, line, {}, {}, {"pgsci1", "pgsls2"}, {}},               // no cursor
        {6, bad, rising, {}, {"pgsci1", "pgsls2", "pgsci2", "pgline+"}, {8}},  // the first fails
        {6, rising, bad, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},  // the second fails: no abscissae of its own
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        if (c.pick > 0) b.p.clicks = {{mark_x, mark_y(c.pick)}};
        int ID_F = 0;
        if (c.y2.empty())
            fit_hook(*b.s, ID_F, 3, x.data(), {c.y1.data()}, c.style);
        else
            fit_hook(*b.s, ID_F, 3, x.data(), {c.y1.data(), c.y2.data()}, c.style);
        EXPECT_EQ(ID_F, c.pick);
        EXPECT_EQ(b.s->logo.FIT_REQUESTED, c.pick != 18);
        std::vector<std::string> expected = {"pgbbuf", "pgsave"};
        expected.insert(expected.end(), c.drawn.begin(), c.drawn.end());
        expected.insert(expected.end(), {"pgsls1", "pgunsa", "pgebuf", "pgupdt"});
        const auto t = trace(b.g);
        EXPECT_EQ(std::vector<std::string>(std::find(t.rbegin(), t.rend(), "pgslct").base(), t.end()),
                  expected);
        const auto lines = b.g.named("pgline");
        ASSERT_EQ(lines.size(), c.line_ends.size());
        for (std::size_t i = 0; i < lines.size(); ++i) EXPECT_NEAR(lines[i]->ys.back(), c.line_ends[i], 1e-4);
        EXPECT_EQ(b.console().empty(), c.pick == 0 || c.pick > 12);
        EXPECT_TRUE(no_curve(b.fv()));
    }
    FitBench b;  // no input at the prompt of pick 17 leaves nothing allocated
    b.s->logo.FIT_REQUESTED = true;
    b.p.clicks = {{mark_x, mark_y(17)}};
    int ID_F = 0;
    EXPECT_THROW(fit_hook(*b.s, ID_F, 3, x.data(), {line.data(), line.data()}), EndOfInput);
    EXPECT_TRUE(no_curve(b.fv()) && !b.s->ref.store_file);
    // Two curves with no point in the zoom window: empty arrays may have null
    // data, and each curve still gets its fit and its message.
    for (const auto& [curves, messages] : {std::pair{2, 2}, std::pair{1, 1}}) {
        FitBench e;
        e.s->logo.FIT_REQUESTED = true;
        e.p.clicks = {{mark_x, mark_y(3)}};
        ID_F = 0;
        if (curves == 2)
            fit_hook(*e.s, ID_F, 0, nullptr, {nullptr, nullptr});
        else
            fit_hook(*e.s, ID_F, 0, nullptr, {nullptr});
        EXPECT_EQ(viewer::testing::count_of(e.console(), "no valid data points"),
                  static_cast<std::size_t>(messages));
    }
}
