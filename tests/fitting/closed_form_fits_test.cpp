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
    auto d = sample(-1.0, 0.5, 9, [](double x) { return 2.0 + 3.0 * x; });
    EXPECT_TRUE(near_rel(solve_straight(d.x, d.y).coef, {2.0, 3.0}, 1e-6));

    d = sample(-2.0, 0.5, 13, [](double x) { return 1.0 - 2.0 * x + 0.5 * x * x; });
    const ClosedFit parabola = solve_parabolic(d.x, d.y);
    EXPECT_TRUE(near_rel(parabola.coef, {1.0, -2.0, 0.5}, 1e-6));
    const Extremum e = parabola_extremum(parabola);
    EXPECT_TRUE(near_rel(std::vector<double>{e.x0, e.y0}, {2.0, -1.0}, 1e-6));

    d = sample(1.0, 1.0, 10, [](double x) { return 2.5 * std::pow(x, 1.5); });
    EXPECT_TRUE(near_rel(solve_power(d.x, d.y).coef, {2.5, 1.5}, 1e-6));
    d = sample(0.0, 0.5, 11, [](double x) { return std::exp(0.5 - 0.3 * x); });
    EXPECT_TRUE(near_rel(solve_exponential(d.x, d.y).coef, {0.5, -0.3}, 1e-6));
    d = sample(0.5, 0.25, 19, [](double x) { return 3.0 * std::pow(x, 0.7) * std::exp(-0.2 * x); });
    EXPECT_TRUE(near_rel(solve_mod_exponential(d.x, d.y).coef, {std::log(3.0), 0.7, -0.2}, 1e-5));  // ln a
    d = sample(1.0, 0.5, 11, [](double x) { return 4.0 / (x - 0.5); });
    EXPECT_TRUE(near_rel(solve_aoverr(d.x, d.y).coef, {4.0, 0.5}, 1e-5));
    d = sample(0.0, 0.5, 11, [](double x) { return std::sqrt(1.0 + 2.0 * x); });
    EXPECT_TRUE(near_rel(solve_square_root(d.x, d.y).coef, {1.0, 2.0}, 1e-5));
}

TEST(ClosedFormFits, CubicFarFromTheOriginAndItsExtrema) {
    // 0.5 (x-100)(x-104)(x-108), sampled on 98..110 and rounded to 32 bits.
    auto cubic = sample(98.0, 0.25, 49, [](double x) { return 0.5 * (x - 100) * (x - 104) * (x - 108); });
    const ClosedFit r = solve_pol_3rd(cubic.x, cubic.y);
    ASSERT_EQ(r.status, FitStatus::ok);
    EXPECT_TRUE(near_rel(r.coef, {-561600.0, 16216.0, -156.0, 0.5}, 1e-6));
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
    const auto b = fitted(3, {0, 1, 2, 3}, {2, 5, 8, 11});
    EXPECT_EQ(b->console(), rule() +
                                "     straight line fit: Y = a + b*x\n"
                                "     a  =    2.0000D+00\n"
                                "     b  =    3.0000D+00\n"
                                "     zero crossing =   -6.6667D-01\n");
    // Two points span the line from the first to the last.
    const FitVariables& fv = b->s->fit_variables;
    ASSERT_EQ(fv.N_FIT, 2);
    EXPECT_EQ(fv.X_FIT, (std::vector<float>{0, 3}));
    EXPECT_NEAR(fv.Y1_FIT[0], 2.0f, 1e-5);
    EXPECT_NEAR(fv.Y1_FIT[1], 11.0f, 1e-5);
}

TEST(ClosedFormFits, ConsoleReportOfTwoCurvesAndTheirGrid) {
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
    struct Case {
        const char* what;
        int pick;
        Data d;
        std::string report;
        float front, back;  // of the curve grid
    };
    auto with = [](Data d, std::vector<std::pair<std::size_t, float>> ys) {
        for (auto [i, y] : ys) d.y[i] = y;
        return d;
    };
    const Case cases[] = {
        {"A zero ordinate is left out of A/r; negative ones stay in", 1,
         with(sample(-3.0, 1.0, 7, [](double x) { return 4.0 / (x - 0.5); }), {{2, 0.0f}}),
         "     A/r fit: Y = A / ( r-r0 )\n     1 value lower or equal zero is neglected\n"
         "     A  =    4.0000D+00\n     r0 =    5.0000D-01\n",
         -3, 3},
        {"The origin is left out of a power law; the curve starts at the smallest valid abscissa",
         5,
         {{0, 4, 1, 9, 16}, {0, 2, 1, 3, 4}},
         "     1 value lower or equal zero is neglected\n     a  =    1.0000D+00\n     n  =    5.0000D-01\n",
         1,
         16},
        {"An exponential leaves out zeros but still draws from the first point", 6,
         with(sample(0.0, 1.0, 6, [](double x) { return std::exp(1.0 + 0.5 * x); }), {{0, 0.0f}, {3, -1.0f}}),
         "         2 values lower or equal zero are neglected\n     a  =    1.0000D+00\n     b  =    "
         "5.0000D-01\n",
         0, 5},
        {"The modified exponential shows a, not its logarithm, and draws between its valid abscissae", 7,
         sample(0.0, 0.5, 12, [](double x) { return 3.0 * std::pow(x, 0.7) * std::exp(-0.2 * x); }),
         "     1 value lower or equal zero is neglected\n     a  =    3.0000D+00\n     b  =    7.0000D-01\n"
         "     c  =   -2.0000D-01\n",
         0.5f, 5.5f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const auto b = fitted(c.pick, c.d.x, c.d.y);
        EXPECT_NE(b->console().find(c.report), std::string::npos) << b->console();
        const FitVariables& fv = b->s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 100);
        EXPECT_EQ(fv.X_FIT.front(), c.front);
        EXPECT_EQ(fv.X_FIT.back(), c.back);
    }
}

TEST(ClosedFormFits, CurveGridsAndModelSpecificLines) {
    {  // The cubic is drawn 5 % beyond both ends. y = x^3 is monotonic: no
        // extremum line, and pol_3rd prints no chi-squared.
        const auto b = fitted(8, {2, 4, 6, 8, 10}, {8, 64, 216, 512, 1000});
        const FitVariables& fv = b->s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 200);
        EXPECT_FLOAT_EQ(fv.X_FIT.front(), 1.6f);
        EXPECT_FLOAT_EQ(fv.X_FIT.back(), 10.4f);
        EXPECT_NEAR(fv.Y1_FIT.back(), 10.4 * 10.4 * 10.4, 1e-2);
        EXPECT_EQ(b->console().find("Extremum"), std::string::npos);
        EXPECT_EQ(b->console().find("chi"), std::string::npos);
    }
    {  // Other grids run from the first point passed to the last, in the
        // plot's order, not from the smallest to the largest.
        const auto b = fitted(4, {3, 1, 2}, {7, 3, 5});
        EXPECT_EQ(b->s->fit_variables.X_FIT.front(), 3.0f);
        EXPECT_EQ(b->s->fit_variables.X_FIT.back(), 2.0f);
    }
    {  // The square root is 0 where a + b*x is negative.
        auto d = sample(1.0, 1.0, 5, [](double x) { return std::sqrt(2.0 * x - 1.0); });
        d.x.insert(d.x.begin(), -1.0f);
        d.y.insert(d.y.begin(), -1.0f);
        const auto b = fitted(2, d.x, d.y);
        const FitVariables& fv = b->s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 100);
        EXPECT_EQ(fv.X_FIT.front(), -1.0f);
        EXPECT_EQ(fv.Y1_FIT.front(), 0.0f);
        EXPECT_NEAR(fv.Y1_FIT.back(), 3.0f, 1e-5);
    }
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
    const std::vector<Case> cases = {
        {3, {}, {}, none},
        {8, {}, {}, none},
        {5, {}, {}, neglected(0)},
        {1, {2}, {0}, neglected(1)},
        {6, {1, 2, 3}, {0, -1, -2}, neglected(3)},
        {2, {1, 2}, {-4, 0}, neglected(2)},
        {7, {-1, 2}, {1, -3}, neglected(2)},
        {6, {2, 2, 2}, {1, 2, 3}, "\n     no solution found\n"},
        {8, {3}, {1}, "\n     no solution\n"},
        {8, {3, 3, 3}, {1, 2, 3}, "\n     no solution\n"},
        // ln a above 200: a = e^250, y = a x^-40 on 400..1000.
        {7, far.x, far.y, "\n     no solution found\n"},
    };
    for (const Case& c : cases) {
        const auto b = fitted(c.pick, c.x, c.y);
        EXPECT_EQ(b->console(), c.words) << "pick " << c.pick;
        EXPECT_TRUE(no_curve(b->s->fit_variables)) << "pick " << c.pick;
    }
}
