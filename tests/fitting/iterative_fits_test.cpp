// The Levenberg-Marquardt minimiser on certified reference problems, its
// linear algebra, and the three fits built on it.
#include "fitting/iterative_fits.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "fit_bench.hpp"
#include "fitting/fit.hpp"

using namespace viewer;
using namespace viewer::fit_testing;

namespace {

// y = b1 (1 - exp(-b2 x))
void exp_rise(double x, std::span<const double> A, double& y, std::span<double> DYDA) {
    const double e = std::exp(-A[1] * x);
    y = A[0] * (1.0 - e);
    DYDA[0] = 1.0 - e;
    DYDA[1] = A[0] * x * e;
}

// y = b1 x^b2
void power_law(double x, std::span<const double> A, double& y, std::span<double> DYDA) {
    DYDA[0] = std::pow(x, A[1]);
    y = A[0] * DYDA[0];
    DYDA[1] = y * std::log(x);
}

struct Problem {
    std::vector<double> x, y;
    double fit(std::vector<double>& A, ModelFunction f, LmStatus expected = LmStatus::converged) const {
        std::vector<double> sig(x.size(), 0.0);
        LmWorkspace w(static_cast<int>(A.size()));
        double chisq = 0;
        EXPECT_EQ(mrqmin(x, y, sig, A, chisq, f, w), expected);
        return chisq;
    }
};

// Certified problems of the statistical reference data sets for nonlinear
// regression (lower and average difficulty).
const Problem misra1a{
    {77.6, 114.9, 141.1, 190.8, 239.9, 289.0, 332.8, 378.4, 434.8, 477.3, 536.8, 593.1, 689.1, 760.0},
    {10.07, 14.73, 17.94, 23.93, 29.61, 35.18, 40.02, 44.82, 50.76, 55.05, 61.01, 66.40, 75.47, 81.78}};
const Problem danwood{{1.309, 1.471, 1.490, 1.565, 1.611, 1.680}, {2.138, 3.421, 3.597, 4.340, 4.882, 5.660}};
const Problem boxbod{{1, 2, 3, 5, 7, 10}, {109, 149, 149, 191, 213, 224}};

template <class F>
void sample(std::vector<float>& x, std::vector<float>& y, double from, double step, int n, F f) {
    for (int i = 0; i < n; ++i) {
        x.push_back(static_cast<float>(from + step * i));
        y.push_back(static_cast<float>(f(static_cast<double>(x.back()))));
    }
}

double gaussian(double x, double a, double sig, double x0) {
    const double t = (x - x0) / sig;
    return a * K_GAUSS / sig * std::exp(-t * t / 2.0);
}

}  // namespace

TEST(Minimiser, GaussJordanInvertsAndSolves) {
    {  // The 3x3 Hilbert matrix has an integer inverse.
        Matrix h(3);
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) h(i, j) = 1.0 / (i + j + 1);
        std::vector<double> b = {11.0 / 6, 13.0 / 12, 47.0 / 60};  // row sums: solution all ones
        LmWorkspace w(3);
        ASSERT_TRUE(gaussj(h, b, w));
        const double inverse[3][3] = {{9, -36, 30}, {-36, 192, -180}, {30, -180, 180}};
        for (int i = 0; i < 3; ++i) {
            EXPECT_NEAR(b[static_cast<std::size_t>(i)], 1.0, 1e-12);
            for (int j = 0; j < 3; ++j) EXPECT_NEAR(h(i, j), inverse[i][j], 1e-9);
        }
    }
    {  // A zero diagonal needs the row interchange.
        Matrix p(2);
        p(0, 1) = 2;
        p(1, 0) = 4;
        std::vector<double> b = {6, 8};
        LmWorkspace w(2);
        ASSERT_TRUE(gaussj(p, b, w));
        EXPECT_DOUBLE_EQ(b[0], 2.0);
        EXPECT_DOUBLE_EQ(b[1], 3.0);
        EXPECT_DOUBLE_EQ(p(0, 1), 0.25);
        EXPECT_DOUBLE_EQ(p(1, 0), 0.5);
        EXPECT_EQ(p(0, 0), 0.0);
        EXPECT_EQ(p(1, 1), 0.0);
    }
    {  // Singular: a pivot of exactly zero.
        Matrix s(2);
        s(0, 0) = 1;
        s(0, 1) = 2;
        s(1, 0) = 2;
        s(1, 1) = 4;
        std::vector<double> b = {1, 1};
        LmWorkspace w(2);
        EXPECT_FALSE(gaussj(s, b, w));
    }
    {  // Not a number anywhere: no pivot can be chosen.
        Matrix n(2);
        for (double& v : n.v) v = std::numeric_limits<double>::quiet_NaN();
        std::vector<double> b = {1, 1};
        LmWorkspace w(2);
        EXPECT_FALSE(gaussj(n, b, w));
    }
}

TEST(Minimiser, CertifiedReferenceProblems) {
    // The stop on an absolute change of 0.001 in chi-squared leaves the
    // parameters a few digits short of certified; chi-squared is much closer.
    std::vector<double> A = {250, 5e-4};
    double chisq = misra1a.fit(A, exp_rise);
    EXPECT_TRUE(near_rel(A[0], 2.3894212918e+02, 1e-6));
    EXPECT_TRUE(near_rel(A[1], 5.5015643181e-04, 1e-6));
    EXPECT_TRUE(near_rel(chisq, 1.2455138894e-01, 1e-9));

    for (std::vector<double> start : {std::vector<double>{1, 5}, std::vector<double>{0.7, 4}}) {
        chisq = danwood.fit(start, power_law);
        EXPECT_TRUE(near_rel(start[0], 7.6886226176e-01, 1e-5));
        EXPECT_TRUE(near_rel(start[1], 3.8604055871e+00, 1e-5));
        EXPECT_TRUE(near_rel(chisq, 4.3173084083e-03, 1e-8));
    }

    A = {100, 0.75};
    chisq = boxbod.fit(A, exp_rise);
    EXPECT_TRUE(near_rel(A[0], 2.1380940889e+02, 1e-4));
    EXPECT_TRUE(near_rel(A[1], 5.4723748542e-01, 1e-4));
    EXPECT_TRUE(near_rel(chisq, 1.1680088766e+03, 1e-8));
}

TEST(Minimiser, PassLimitAndAbsoluteConvergence) {
    {  // From the far start of the exponential rise the damped steps are
        // too slow: after 50 passes the last accepted step is returned.
        std::vector<double> A = {500, 1e-4};
        std::vector<double> sig(misra1a.x.size(), 0.0);
        LmWorkspace w(2);
        double chisq = 0;
        ASSERT_EQ(mrqmin(misra1a.x, misra1a.y, sig, A, chisq, exp_rise, w), LmStatus::no_convergence);
        EXPECT_EQ(w.COUNT, 50);
        Matrix alpha(2);
        std::vector<double> beta(2);
        double start_chisq = 0, end_chisq = 0;
        mrqcof(misra1a.x, misra1a.y, sig, std::vector<double>{500, 1e-4}, alpha, beta, start_chisq, exp_rise,
               w);
        mrqcof(misra1a.x, misra1a.y, sig, A, alpha, beta, end_chisq, exp_rise, w);
        EXPECT_DOUBLE_EQ(chisq, end_chisq);
        EXPECT_LT(end_chisq, start_chisq);
        EXPECT_EQ(sig, std::vector<double>(misra1a.x.size(), 1.0));  // zero errors mean unweighted
    }
    {  // A chi-squared that starts below 0.001 ends at the first accepted
        // step, however far from the optimum that is.
        Problem tiny = misra1a;
        for (double& y : tiny.y) y *= 1e-4;
        std::vector<double> A = {0.025, 5e-4};
        std::vector<double> sig(tiny.x.size(), 0.0);
        LmWorkspace w(2);
        double chisq = 0;
        EXPECT_EQ(mrqmin(tiny.x, tiny.y, sig, A, chisq, exp_rise, w), LmStatus::converged);
        EXPECT_EQ(w.COUNT, 0);
    }
}

TEST(IterativeFits, ExactDataGiveBackTheirCoefficients) {
    std::vector<float> x, y;
    sample(x, y, -2.0, 0.1, 41,
           [](double t) { return 1.0 + 2.0 * t - 0.5 * t * t * t + 0.1 * std::pow(t, 5); });
    IterativeFit r = solve_odd_pol(x, y);
    ASSERT_EQ(r.lm, LmStatus::converged);
    const double odd[] = {1.0, 2.0, -0.5, 0.1};
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(near_rel(r.A[static_cast<std::size_t>(i)], odd[i], 1e-5)) << i;

    x.clear();
    y.clear();
    sample(x, y, -2.0, 0.1, 71, [](double t) { return gaussian(t, 5.0, 0.8, 1.5); });
    r = solve_gauss_fit(x, y);
    ASSERT_EQ(r.lm, LmStatus::converged);
    EXPECT_TRUE(near_rel(r.A[0], 5.0, 1e-5));
    EXPECT_TRUE(near_rel(r.A[1], 0.8, 1e-5));
    EXPECT_TRUE(near_rel(r.A[2], 1.5, 1e-5));

    x.clear();
    y.clear();
    sample(x, y, -4.0, 0.1, 101,
           [](double t) { return gaussian(t, 3.0, 0.5, 1.0) + gaussian(t, 3.0, 1.0, 1.2); });
    r = solve_dgauss_fit(x, y);
    ASSERT_EQ(r.lm, LmStatus::converged);
    const double two[] = {3.0, 0.5, 1.0, 3.0, 1.0, 1.2};
    for (int i = 0; i < 6; ++i) EXPECT_TRUE(near_rel(r.A[static_cast<std::size_t>(i)], two[i], 1e-4)) << i;
}

TEST(IterativeFits, ReportsAndCurves) {
    std::vector<float> x, y;
    sample(x, y, -2.0, 0.1, 71, [](double t) { return gaussian(t, 5.0, 0.8, 1.5); });
    {
        FitBench b;
        fit(*b.s, 10, 1, 1, 71, x.data(), y.data());
        const std::string head = rule() +
                                 "     gauss fit: Y = a/(sqrt(2*Pi)*sig)*exp(-0.5*((x-x0)/sig)**2)\n"
                                 "     a   =    5.0000D+00\n"
                                 "     sig =    8.0000D-01\n"
                                 "     x0  =    1.5000D+00\n"
                                 "     chi squared =  ";
        EXPECT_EQ(b.console().substr(0, head.size()), head);
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 200);
        EXPECT_EQ(fv.X_FIT.front(), x.front());
        EXPECT_EQ(fv.X_FIT.back(), x.back());
        EXPECT_NEAR(fv.Y1_FIT[100], gaussian(fv.X_FIT[100], 5.0, 0.8, 1.5), 1e-4);
        // A second fit starts afresh: the same data give the same report.
        const std::string first = b.console();
        b.clear_console();
        fit(*b.s, 10, 1, 1, 71, x.data(), y.data());
        EXPECT_EQ(b.console(), first);
    }
    {  // Two Gaussians, as the red curve of a pair: the two-line formula
        // comes with the first curve only.
        FitBench b;
        fit(*b.s, 11, 2, 2, 71, x.data(), y.data());
        EXPECT_EQ(b.console().rfind("\n     red line: \n     a_1   =  ", 0), 0u) << b.console();
        b.clear_console();
        fit(*b.s, 11, 1, 2, 71, x.data(), y.data());
        EXPECT_EQ(b.console().rfind(
                      rule() + "     gauss fit: Y = a_1/(sqrt(2*Pi)*sig_1)*exp(-0.5*((x-x0_1)/sig_1)**2)+\n"
                               "                    a_2/(sqrt(2*Pi)*sig_2)*exp(-0.5*((x-x0_2)/sig_2)**2)\n"
                               "\n     black line: \n"
                               "     a_1   =  ",
                      0),
                  0u)
            << b.console();
        for (const char* label :
             {"sig_1 =  ", "x0_1  =  ", "a_2   =  ", "sig_2 =  ", "x0_2  =  ", "chi squared =  "})
            EXPECT_NE(b.console().find(std::string("\n     ") + label), std::string::npos) << label;
    }
    {  // The odd polynomial is drawn 5 % beyond both ends.
        FitBench b;
        std::vector<float> px, py;
        sample(px, py, 0.0, 0.5, 9, [](double t) { return 1.0 + t; });
        fit(*b.s, 9, 1, 1, 9, px.data(), py.data());
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 200);
        EXPECT_FLOAT_EQ(fv.X_FIT.front(), -0.2f);
        EXPECT_FLOAT_EQ(fv.X_FIT.back(), 4.2f);
        EXPECT_NEAR(fv.Y1_FIT.back(), 5.2, 1e-3);
        EXPECT_NE(b.console().find("     odd polynomial fit: Y = a + b*x + c*x^3 + d*x^5\n"),
                  std::string::npos);
    }
}

TEST(IterativeFits, FailurePaths) {
    for (int pick : {9, 10, 11}) {
        FitBench b;
        fit(*b.s, pick, 1, 1, 0, nullptr, nullptr);
        EXPECT_EQ(b.console(), "\n     no valid data points\n") << pick;
        EXPECT_TRUE(no_curve(b.s->fit_variables)) << pick;
    }
    for (int pick : {10, 11}) {
        FitBench b;
        const float x[] = {1, 2, 3}, y[] = {0, 0, 0};
        fit(*b.s, pick, 1, 1, 3, x, y);
        EXPECT_EQ(b.console(), "\n     no solution\n") << pick;
        EXPECT_TRUE(no_curve(b.s->fit_variables)) << pick;
    }
    {  // All abscissae 0: the odd terms have no curvature. The start values
        // are still shown, but nothing is drawn.
        FitBench b;
        const float x[] = {0, 0, 0}, y[] = {1, 2, 3};
        fit(*b.s, 9, 1, 1, 3, x, y);
        EXPECT_EQ(b.console(), rule() +
                                   "     odd polynomial fit: Y = a + b*x + c*x^3 + d*x^5\n"
                                   "\n     Singluar matrix; no solution for fit\n\n"
                                   "     a   =    2.0000D+00\n"
                                   "     b   =    1.0000D+00\n"
                                   "     c   =    1.0000D+00\n"
                                   "     d   =    1.0000D+00\n"
                                   "     chi squared =    2.0000D+00\n");
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {  // Mixed signs give a negative variance: the start is not a number
        // and the Gaussian shows no coefficients.
        FitBench b;
        const float x[] = {1, 2, 3}, y[] = {-1, 3, -1};
        fit(*b.s, 10, 1, 1, 3, x, y);
        EXPECT_EQ(b.console(), rule() +
                                   "     gauss fit: Y = a/(sqrt(2*Pi)*sig)*exp(-0.5*((x-x0)/sig)**2)\n"
                                   "\n     Singluar matrix; no solution for fit\n\n");
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {  // An exponential is no Gaussian: after 50 passes the last step is
        // reported and drawn.
        FitBench b;
        std::vector<float> x, y;
        sample(x, y, 0.0, 0.5, 21, [](double t) { return std::exp(t); });
        fit(*b.s, 10, 1, 1, 21, x.data(), y.data());
        const std::string head = rule() +
                                 "     gauss fit: Y = a/(sqrt(2*Pi)*sig)*exp(-0.5*((x-x0)/sig)**2)\n"
                                 " No convergence after 50 iterations\n"
                                 "     a   =  ";
        EXPECT_EQ(b.console().substr(0, head.size()), head);
        EXPECT_EQ(b.s->fit_variables.N_FIT, 200);
    }
}
