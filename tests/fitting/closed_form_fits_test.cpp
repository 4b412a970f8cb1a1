// The eight closed-form fits: coefficients on exact data, curve grids, the
// console report, and every refusal.
#include "fitting/closed_form_fits.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fit_bench.hpp"
#include "fitting/fit.hpp"

using namespace viewer;
using namespace viewer::fit_testing;

namespace {

struct Data {
    std::vector<float> x, y;
};

template <class F>
Data sample(double from, double step, int n, F f) {
    Data d;
    for (int i = 0; i < n; ++i) {
        const double x = from + step * i;
        d.x.push_back(static_cast<float>(x));
        d.y.push_back(static_cast<float>(f(x)));
    }
    return d;
}

}  // namespace

TEST(ClosedFormFits, ExactDataGiveBackTheirCoefficients) {
    auto line = sample(-1.0, 0.5, 9, [](double x) { return 2.0 + 3.0 * x; });
    ClosedFit r = solve_straight(line.x, line.y);
    EXPECT_TRUE(near_rel(r.coef[0], 2.0, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[1], 3.0, 1e-6));

    auto parabola = sample(-2.0, 0.5, 13, [](double x) { return 1.0 - 2.0 * x + 0.5 * x * x; });
    r = solve_parabolic(parabola.x, parabola.y);
    EXPECT_TRUE(near_rel(r.coef[0], 1.0, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[1], -2.0, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[2], 0.5, 1e-6));
    const Extremum e = parabola_extremum(r);
    EXPECT_TRUE(near_rel(e.x0, 2.0, 1e-6));
    EXPECT_TRUE(near_rel(e.y0, -1.0, 1e-6));

    auto pw = sample(1.0, 1.0, 10, [](double x) { return 2.5 * std::pow(x, 1.5); });
    r = solve_power(pw.x, pw.y);
    EXPECT_TRUE(near_rel(r.coef[0], 2.5, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[1], 1.5, 1e-6));

    auto ex = sample(0.0, 0.5, 11, [](double x) { return std::exp(0.5 - 0.3 * x); });
    r = solve_exponential(ex.x, ex.y);
    EXPECT_TRUE(near_rel(r.coef[0], 0.5, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[1], -0.3, 1e-6));

    auto mex = sample(0.5, 0.25, 19, [](double x) { return 3.0 * std::pow(x, 0.7) * std::exp(-0.2 * x); });
    r = solve_mod_exponential(mex.x, mex.y);
    EXPECT_TRUE(near_rel(std::exp(r.coef[0]), 3.0, 1e-5));
    EXPECT_TRUE(near_rel(r.coef[1], 0.7, 1e-5));
    EXPECT_TRUE(near_rel(r.coef[2], -0.2, 1e-5));

    auto ar = sample(1.0, 0.5, 11, [](double x) { return 4.0 / (x - 0.5); });
    r = solve_aoverr(ar.x, ar.y);
    EXPECT_TRUE(near_rel(r.coef[0], 4.0, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[1], 0.5, 1e-5));

    auto sq = sample(0.0, 0.5, 11, [](double x) { return std::sqrt(1.0 + 2.0 * x); });
    r = solve_square_root(sq.x, sq.y);
    EXPECT_TRUE(near_rel(r.coef[0], 1.0, 1e-5));
    EXPECT_TRUE(near_rel(r.coef[1], 2.0, 1e-6));
}

TEST(ClosedFormFits, CubicFarFromTheOriginAndItsExtrema) {
    // 0.5 (x-100)(x-104)(x-108), sampled on 98..110 and rounded to 32 bits.
    auto cubic = sample(98.0, 0.25, 49, [](double x) { return 0.5 * (x - 100) * (x - 104) * (x - 108); });
    const ClosedFit r = solve_pol_3rd(cubic.x, cubic.y);
    ASSERT_EQ(r.status, FitStatus::ok);
    EXPECT_TRUE(near_rel(r.coef[0], -561600.0, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[1], 16216.0, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[2], -156.0, 1e-6));
    EXPECT_TRUE(near_rel(r.coef[3], 0.5, 1e-6));
    // Stationary at 104 +- 4/sqrt(3), the larger first.
    const auto ex = cubic_extrema(r);
    ASSERT_EQ(ex.size(), 2u);
    const double t = 4.0 / std::sqrt(3.0), y = 0.5 * t * (t * t - 16.0);
    EXPECT_NEAR(ex[0].x0, 104.0 + t, 1e-5);
    EXPECT_NEAR(ex[0].y0, y, 1e-3);
    EXPECT_NEAR(ex[1].x0, 104.0 - t, 1e-5);
    EXPECT_NEAR(ex[1].y0, -y, 1e-3);

    ClosedFit inflexion;  // (x+1)^3: one stationary point
    inflexion.coef = {1, 3, 3, 1};
    const auto one = cubic_extrema(inflexion);
    ASSERT_EQ(one.size(), 1u);
    EXPECT_EQ(one[0].x0, -1.0);
    EXPECT_EQ(one[0].y0, 0.0);
    ClosedFit monotonic;  // x^3 + x
    monotonic.coef = {0, 1, 0, 1};
    EXPECT_TRUE(cubic_extrema(monotonic).empty());
}

TEST(ClosedFormFits, ConsoleReportOfOneCurve) {
    FitBench b;
    const float x[] = {0, 1, 2, 3}, y[] = {2, 5, 8, 11};
    fit(*b.s, 3, 1, 1, 4, x, y);
    EXPECT_EQ(b.console(), rule() +
                               "     straight line fit: Y = a + b*x\n"
                               "     a  =    2.0000D+00\n"
                               "     b  =    3.0000D+00\n"
                               "     zero crossing =   -6.6667D-01\n");
    // Two points span the line from the first to the last.
    const FitVariables& fv = b.s->fit_variables;
    ASSERT_EQ(fv.N_FIT, 2);
    EXPECT_EQ(fv.X_FIT, (std::vector<float>{0, 3}));
    EXPECT_NEAR(fv.Y1_FIT[0], 2.0f, 1e-5);
    EXPECT_NEAR(fv.Y1_FIT[1], 11.0f, 1e-5);
}

TEST(ClosedFormFits, ConsoleReportOfTwoCurves) {
    FitBench b;
    const auto c1 = sample(-2.0, 1.0, 7, [](double x) { return 1.0 - 2.0 * x + 0.5 * x * x; });
    const auto c2 = sample(-2.0, 1.0, 7, [](double x) { return 2.0 + x + x * x; });
    fit(*b.s, 4, 1, 2, 7, c1.x.data(), c1.y.data());
    fit(*b.s, 4, 2, 2, 7, c2.x.data(), c2.y.data());
    EXPECT_EQ(b.console(), rule() +
                               "     parabolic fit: Y = a + b*x + c*x^2\n"
                               "\n"
                               "     black line: \n"
                               "     a  =    1.0000D+00\n"
                               "     b  =   -2.0000D+00\n"
                               "     c  =    5.0000D-01\n"
                               "     Extremum at x0 =  2.0000D+00,  Y(x0) = -1.0000D+00\n"
                               "\n"
                               "     red line: \n"
                               "     a  =    2.0000D+00\n"
                               "     b  =    1.0000D+00\n"
                               "     c  =    1.0000D+00\n"
                               "     Extremum at x0 = -5.0000D-01,  Y(x0) =  1.7500D+00\n");
    const FitVariables& fv = b.s->fit_variables;
    ASSERT_EQ(fv.N_FIT, 100);
    ASSERT_EQ(fv.Y1_FIT.size(), 100u);
    ASSERT_EQ(fv.Y2_FIT.size(), 100u);
    EXPECT_EQ(fv.X_FIT.front(), -2.0f);
    EXPECT_EQ(fv.X_FIT.back(), 4.0f);
    EXPECT_NEAR(fv.Y1_FIT[50], 1.0 - 2.0 * fv.X_FIT[50] + 0.5 * fv.X_FIT[50] * fv.X_FIT[50], 1e-5);
    EXPECT_NEAR(fv.Y2_FIT[50], 2.0 + fv.X_FIT[50] + fv.X_FIT[50] * fv.X_FIT[50], 1e-5);
}

TEST(ClosedFormFits, PointsLeftOutAreCountedAndGridsFollowTheValidRange) {
    {  // A zero ordinate is left out of A/r; negative ones stay in.
        FitBench b;
        auto d = sample(-3.0, 1.0, 7, [](double x) { return 4.0 / (x - 0.5); });
        d.y[2] = 0.0f;
        fit(*b.s, 1, 1, 1, 7, d.x.data(), d.y.data());
        EXPECT_NE(b.console().find("     A/r fit: Y = A / ( r-r0 )\n"
                                   "     1 value lower or equal zero is neglected\n"
                                   "     A  =    4.0000D+00\n"
                                   "     r0 =    5.0000D-01\n"),
                  std::string::npos)
            << b.console();
    }
    {  // The origin is left out of a power law; the curve starts at the
        // smallest valid abscissa, not at the first point.
        FitBench b;
        const float x[] = {0, 4, 1, 9, 16}, y[] = {0, 2, 1, 3, 4};
        fit(*b.s, 5, 1, 1, 5, x, y);
        EXPECT_NE(b.console().find("     1 value lower or equal zero is neglected\n"
                                   "     a  =    1.0000D+00\n"
                                   "     n  =    5.0000D-01\n"),
                  std::string::npos)
            << b.console();
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 100);
        EXPECT_EQ(fv.X_FIT.front(), 1.0f);
        EXPECT_EQ(fv.X_FIT.back(), 16.0f);
        EXPECT_NEAR(fv.Y1_FIT.back(), 4.0f, 1e-5);
    }
    {  // An exponential leaves out zeros but still draws from the first point.
        FitBench b;
        auto d = sample(0.0, 1.0, 6, [](double x) { return std::exp(1.0 + 0.5 * x); });
        d.y[0] = 0.0f;
        d.y[3] = -1.0f;
        fit(*b.s, 6, 1, 1, 6, d.x.data(), d.y.data());
        EXPECT_NE(b.console().find("         2 values lower or equal zero are neglected\n"
                                   "     a  =    1.0000D+00\n"
                                   "     b  =    5.0000D-01\n"),
                  std::string::npos)
            << b.console();
        EXPECT_EQ(b.s->fit_variables.X_FIT.front(), 0.0f);
    }
    {  // The modified exponential shows a, not its logarithm, and draws
        // between its valid abscissae.
        FitBench b;
        auto d = sample(0.0, 0.5, 12, [](double x) { return 3.0 * std::pow(x, 0.7) * std::exp(-0.2 * x); });
        fit(*b.s, 7, 1, 1, 12, d.x.data(), d.y.data());
        EXPECT_NE(b.console().find("     1 value lower or equal zero is neglected\n"
                                   "     a  =    3.0000D+00\n"
                                   "     b  =    7.0000D-01\n"
                                   "     c  =   -2.0000D-01\n"),
                  std::string::npos)
            << b.console();
        EXPECT_EQ(b.s->fit_variables.X_FIT.front(), 0.5f);
        EXPECT_EQ(b.s->fit_variables.X_FIT.back(), 5.5f);
    }
}

TEST(ClosedFormFits, CurveGridsAndModelSpecificLines) {
    {  // The cubic is drawn 5 % beyond both ends.
        FitBench b;
        const float x[] = {2, 4, 6, 8, 10}, y[] = {8, 64, 216, 512, 1000};
        fit(*b.s, 8, 1, 1, 5, x, y);
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 200);
        EXPECT_FLOAT_EQ(fv.X_FIT.front(), 1.6f);
        EXPECT_FLOAT_EQ(fv.X_FIT.back(), 10.4f);
        EXPECT_NEAR(fv.Y1_FIT.back(), 10.4 * 10.4 * 10.4, 1e-2);
        // y = x^3 is monotonic: no extremum line, and pol_3rd prints no chi-squared.
        EXPECT_EQ(b.console().find("Extremum"), std::string::npos);
        EXPECT_EQ(b.console().find("chi"), std::string::npos);
    }
    {  // Other grids run from the first point passed to the last, in the
        // plot's order, not from the smallest to the largest.
        FitBench b;
        const float x[] = {3, 1, 2}, y[] = {7, 3, 5};
        fit(*b.s, 4, 1, 1, 3, x, y);
        EXPECT_EQ(b.s->fit_variables.X_FIT.front(), 3.0f);
        EXPECT_EQ(b.s->fit_variables.X_FIT.back(), 2.0f);
    }
    {  // The square root is 0 where a + b*x is negative.
        FitBench b;
        auto d = sample(1.0, 1.0, 5, [](double x) { return std::sqrt(2.0 * x - 1.0); });
        const float x[] = {-1, 1, 2, 3, 4, 5};
        const float y[] = {-1, d.y[0], d.y[1], d.y[2], d.y[3], d.y[4]};
        fit(*b.s, 2, 1, 1, 6, x, y);
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 100);
        EXPECT_EQ(fv.X_FIT.front(), -1.0f);
        EXPECT_EQ(fv.Y1_FIT.front(), 0.0f);
        EXPECT_NEAR(fv.Y1_FIT.back(), 3.0f, 1e-5);
    }
    {  // A horizontal line has no zero crossing.
        FitBench b;
        const float x[] = {0, 1, 2}, y[] = {5, 5, 5};
        fit(*b.s, 3, 1, 1, 3, x, y);
        EXPECT_EQ(b.console().find("zero crossing"), std::string::npos);
    }
    {  // A straight line through the parabola still reports its extremum,
        // at an infinite abscissa.
        FitBench b;
        const float x[] = {0, 1, 2}, y[] = {1, 2, 3};
        fit(*b.s, 4, 1, 1, 3, x, y);
        EXPECT_NE(b.console().find("     Extremum at x0 ="), std::string::npos);
    }
}

TEST(ClosedFormFits, RefusalsPrintTheirWordsAndLeaveNoCurve) {
    struct Case {
        int pick;
        std::vector<float> x, y;
        std::string words;
    };
    const std::vector<Case> cases = {
        {3, {}, {}, "\n     no valid data points\n"},
        {8, {}, {}, "\n     no valid data points\n"},
        {5, {}, {}, "         0 values lower or equal zero are neglected\n\n     no valid data points\n"},
        {1, {2}, {0}, "         1 values lower or equal zero are neglected\n\n     no valid data points\n"},
        {6,
         {1, 2, 3},
         {0, -1, -2},
         "         3 values lower or equal zero are neglected\n\n     no valid data points\n"},
        {2,
         {1, 2},
         {-4, 0},
         "         2 values lower or equal zero are neglected\n\n     no valid data points\n"},
        {7,
         {-1, 2},
         {1, -3},
         "         2 values lower or equal zero are neglected\n\n     no valid data points\n"},
        {6, {2, 2, 2}, {1, 2, 3}, "\n     no solution found\n"},
        {8, {3}, {1}, "\n     no solution\n"},
        {8, {3, 3, 3}, {1, 2, 3}, "\n     no solution\n"},
    };
    for (const Case& c : cases) {
        FitBench b;
        fit(*b.s, c.pick, 1, 1, static_cast<int>(c.x.size()), c.x.data(), c.y.data());
        EXPECT_EQ(b.console(), c.words) << "pick " << c.pick;
        EXPECT_TRUE(no_curve(b.s->fit_variables)) << "pick " << c.pick;
    }
    {  // ln a above 200: a = e^250, y = a x^-40 on 400..1000.
        FitBench b;
        auto d = sample(400.0, 50.0, 13, [](double x) { return std::exp(250.0 - 40.0 * std::log(x)); });
        fit(*b.s, 7, 1, 1, 13, d.x.data(), d.y.data());
        EXPECT_EQ(b.console(), "\n     no solution found\n");
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
}
