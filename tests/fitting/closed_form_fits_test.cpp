// The eight closed-form fits: coefficients on exact data, curve grids, the
// console report, and every refusal.
#include "fitting/closed_form_fits.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "fit_bench.hpp"

using namespace viewer;
using namespace viewer::fit_testing;

TEST(ClosedFormFits, ExactDataGiveBackTheirCoefficients) {
    struct Case {
        ClosedFit (*solve)(std::span<const float>, std::span<const float>);
        double from, step;
        int n;
        double (*f)(double);
        std::vector<double> coef;  // the modified exponential gives ln a
        double rel;
    };
    // clang-format off
    const Case cases[] = {
        {solve_straight, -1, 0.5, 9, [](double x) { return 2.0 + 3.0 * x; }, {2, 3}, 1e-6},
        {solve_parabolic, -2, 0.5, 13, [](double x) { return 1 - 2 * x + 0.5 * x * x; }, {1, -2, 0.5}, 1e-6},
        {solve_power, 1, 1, 10, [](double x) { return 2.5 * std::pow(x, 1.5); }, {2.5, 1.5}, 1e-6},
        {solve_exponential, 0, 0.5, 11, [](double x) { return std::exp(0.5 - 0.3 * x); }, {0.5, -0.3}, 1e-6},
        {solve_mod_exponential, 0.5, 0.25, 19,
         [](double x) { return 3 * std::pow(x, 0.7) * std::exp(-0.2 * x); },
         {std::log(3.0), 0.7, -0.2}, 1e-5},
        {solve_aoverr, 1, 0.5, 11, [](double x) { return 4.0 / (x - 0.5); }, {4, 0.5}, 1e-5},
        {solve_square_root, 0, 0.5, 11, [](double x) { return std::sqrt(1.0 + 2.0 * x); }, {1, 2}, 1e-5},
        // 0.5 (x-100)(x-104)(x-108), far from the origin.
        {solve_pol_3rd, 98, 0.25, 49, [](double x) { return 0.5 * (x - 100) * (x - 104) * (x - 108); },
         {-561600, 16216, -156, 0.5}, 1e-6},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        const Data d = sample(c.from, c.step, c.n, c.f);
        const ClosedFit r = c.solve(d.x, d.y);
        EXPECT_EQ(r.status, FitStatus::ok);
        EXPECT_TRUE(near_rel(r.coef, c.coef, c.rel));
    }
}

TEST(ClosedFormFits, ExtremaOfTheCubic) {
    // 0.5 (x-100)(x-104)(x-108) is stationary at 104 +- 4/sqrt(3), the larger first.
    ClosedFit cubic;
    cubic.coef = {-561600, 16216, -156, 0.5};
    const double t = 4.0 / std::sqrt(3.0), y = 0.5 * t * (t * t - 16.0);
    const auto ex = cubic_extrema(cubic);
    ASSERT_EQ(ex.size(), 2u);
    EXPECT_TRUE(near_rel(std::vector<double>{ex[0].x0, ex[0].y0, ex[1].x0, ex[1].y0},
                         {104 + t, y, 104 - t, -y}, 1e-7));
    cubic.coef = {1, 3, 3, 1};  // (x+1)^3: one stationary point
    const auto one = cubic_extrema(cubic);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(std::vector<double>({one[0].x0, one[0].y0}), (std::vector<double>{-1, 0}));
    cubic.coef = {0, 1, 0, 1};  // x^3 + x
    EXPECT_TRUE(cubic_extrema(cubic).empty());
}

TEST(ClosedFormFits, ConsoleReportOfTwoCurves) {
    FitBench two;
    const auto c1 = sample(-2.0, 1.0, 7, [](double x) { return 1.0 - 2.0 * x + 0.5 * x * x; });
    const auto c2 = sample(-2.0, 1.0, 7, [](double x) { return 2.0 + x + x * x; });
    fit(*two.s, 4, 1, 2, 7, c1.x.data(), c1.y.data());
    fit(*two.s, 4, 2, 2, 7, c2.x.data(), c2.y.data());
    EXPECT_EQ(two.console(),
              rule() +
                  "     parabolic fit: Y = a + b*x + c*x^2\n\n     black line: \n"
                  "     a  =    1.0000D+00\n     b  =   -2.0000D+00\n     c  =    5.0000D-01\n"
                  "     Extremum at x0 =  2.0000D+00,  Y(x0) = -1.0000D+00\n\n     red line: \n"
                  "     a  =    2.0000D+00\n     b  =    1.0000D+00\n     c  =    1.0000D+00\n"
                  "     Extremum at x0 = -5.0000D-01,  Y(x0) =  1.7500D+00\n");
    const FitVariables& f2 = two.s->fit_variables;
    ASSERT_EQ(std::vector<std::size_t>({std::size_t(f2.N_FIT), f2.Y1_FIT.size(), f2.Y2_FIT.size()}),
              (std::vector<std::size_t>{100, 100, 100}));
    EXPECT_EQ(std::vector<float>({f2.X_FIT.front(), f2.X_FIT.back()}), (std::vector<float>{-2, 4}));
    const double x = f2.X_FIT[50];
    EXPECT_TRUE(near_rel(std::vector<double>{f2.Y1_FIT[50], f2.Y2_FIT[50]},
                         {1.0 - 2.0 * x + 0.5 * x * x, 2.0 + x + x * x}, 1e-6));
}

TEST(ClosedFormFits, ReportsPointsLeftOutAndGridsOverTheValidRange) {
    struct Case {
        const char* what;
        int pick;
        Data d;
        std::string report;
        float front, back;    // of the curve grid
        int n = 100;          // points of the grid
        double y_back = NAN;  // last ordinate of the curve, when given
    };
    auto with = [](Data d, std::vector<std::pair<std::size_t, float>> ys) {
        for (auto [i, y] : ys) d.y[i] = y;
        return d;
    };
    auto sqrt_below_zero = sample(1.0, 1.0, 5, [](double x) { return std::sqrt(2.0 * x - 1.0); });
    sqrt_below_zero.x.insert(sqrt_below_zero.x.begin(), -1.0f);
    sqrt_below_zero.y.insert(sqrt_below_zero.y.begin(), -1.0f);
    const std::string one_left_out = "     1 value lower or equal zero is neglected\n";
    // clang-format off
    const Case cases[] = {
        {"A straight line spans its two points from the first to the last", 3, Data{{0, 1, 2, 3}, {2, 5, 8, 11}},
         rule() + "     straight line fit: Y = a + b*x\n     a  =    2.0000D+00\n     b  =    3.0000D+00\n"
         "     zero crossing =   -6.6667D-01\n", 0, 3, 2, 11},
        {"A zero ordinate is left out of A/r; negative ones stay in", 1,
         with(sample(-3.0, 1.0, 7, [](double x) { return 4.0 / (x - 0.5); }), {{2, 0.0f}}),
         "     A/r fit: Y = A / ( r-r0 )\n" + one_left_out +
         "     A  =    4.0000D+00\n     r0 =    5.0000D-01\n",
         -3, 3},
        {"The origin is left out of a power law; the curve starts at the smallest valid abscissa", 5,
         Data{{0, 4, 1, 9, 16}, {0, 2, 1, 3, 4}},
         one_left_out + "     a  =    1.0000D+00\n     n  =    5.0000D-01\n", 1, 16},
        {"An exponential leaves out zeros but still draws from the first point", 6,
         with(sample(0.0, 1.0, 6, [](double x) { return std::exp(1.0 + 0.5 * x); }), {{0, 0.0f}, {3, -1.0f}}),
         "         2 values lower or equal zero are neglected\n"
         "     a  =    1.0000D+00\n     b  =    5.0000D-01\n",
         0, 5},
        {"The modified exponential shows a, not its logarithm, and draws between its valid abscissae", 7,
         sample(0.0, 0.5, 12, [](double x) { return 3.0 * std::pow(x, 0.7) * std::exp(-0.2 * x); }),
         one_left_out + "     a  =    3.0000D+00\n     b  =    7.0000D-01\n     c  =   -2.0000D-01\n",
         0.5f, 5.5f},
        {"The square root leaves out a negative ordinate but draws from its abscissa", 2, sqrt_below_zero,
         one_left_out + "     a  =   -1.0000D+00\n", -1, 5, 100, 3},
        // Grids run from the first point passed to the last, in the plot's order.
        {"A parabola over unsorted points", 4, Data{{3, 1, 2}, {7, 3, 5}}, "     parabolic fit", 3, 2},
        // The cubic is drawn 5 % beyond both ends; y = x^3 has no extremum.
        {"A monotonic cubic", 8, Data{{2, 4, 6, 8, 10}, {8, 64, 216, 512, 1000}},
         "     d   =    1.0000D+00\n", 1.6f, 10.4f, 200, 10.4 * 10.4 * 10.4},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto b = fitted(c.pick, c.d.x, c.d.y);
        EXPECT_NE(b->console().find(c.report), std::string::npos) << b->console();
        const FitVariables& fv = b->s->fit_variables;
        ASSERT_EQ(fv.N_FIT, c.n);
        EXPECT_EQ(std::vector<float>({fv.X_FIT.front(), fv.X_FIT.back()}),
                  (std::vector<float>{c.front, c.back}));
        EXPECT_TRUE(std::isnan(c.y_back) || std::fabs(fv.Y1_FIT.back() - c.y_back) <= 1e-5 * c.y_back)
            << fv.Y1_FIT.back();
        // The cubic prints neither extremum nor chi-squared.
        EXPECT_TRUE(c.pick != 8 ||
                    b->console().find("Extremum") + b->console().find("chi") == 2 * std::string::npos);
    }
    // 0 where a + b*x of the square root is negative.
    EXPECT_EQ(fitted(2, sqrt_below_zero.x, sqrt_below_zero.y)->s->fit_variables.Y1_FIT.front(), 0.0f);
    // A horizontal line has no zero crossing; a straight line through the
    // parabola still reports its extremum, at an infinite abscissa.
    EXPECT_EQ(fitted(3, {0, 1, 2}, {5, 5, 5})->console().find("zero crossing"), std::string::npos);
    EXPECT_NE(fitted(4, {0, 1, 2}, {1, 2, 3})->console().find("     Extremum at x0 ="), std::string::npos);
}

TEST(ClosedFormFits, RefusalsPrintTheirWordsAndLeaveNoCurve) {
    struct Case {
        int pick;
        std::vector<float> x, y;
        std::string words;
    };
    const auto far = sample(400.0, 50.0, 13, [](double x) { return std::exp(250.0 - 40.0 * std::log(x)); });
    const std::string none = "\n     no valid data points\n";
    auto neglected = [&](int n) {
        return "         " + std::to_string(n) + " values lower or equal zero are neglected\n" + none;
    };
    const std::string no_solution = "\n     no solution\n", not_found = "\n     no solution found\n";
    // clang-format off
    const std::vector<Case> cases = {
        {3, {}, {}, none}, {8, {}, {}, none}, {5, {}, {}, neglected(0)}, {1, {2}, {0}, neglected(1)},
        {6, {1, 2, 3}, {0, -1, -2}, neglected(3)}, {2, {1, 2}, {-4, 0}, neglected(2)},
        {7, {-1, 2}, {1, -3}, neglected(2)}, {6, {2, 2, 2}, {1, 2, 3}, not_found},
        {8, {3}, {1}, no_solution}, {8, {3, 3, 3}, {1, 2, 3}, no_solution},
        {7, far.x, far.y, not_found},  // ln a above 200: a = e^250, y = a x^-40
    };
    // clang-format on
    for (const Case& c : cases) {
        const auto b = fitted(c.pick, c.x, c.y);
        EXPECT_EQ(b->console(), c.words) << "pick " << c.pick;
        EXPECT_TRUE(no_curve(b->s->fit_variables)) << "pick " << c.pick;
    }
}
