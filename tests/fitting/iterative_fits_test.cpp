// The Levenberg-Marquardt minimiser on certified reference problems, its
// linear algebra, and the three fits built on it.
#include "fitting/iterative_fits.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "fit_bench.hpp"

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

using Problem = std::pair<std::vector<double>, std::vector<double>>;  // x, y

struct Minimum {
    LmStatus status;
    double chisq;
    int passes;
};
Minimum minimise(const Problem& p, std::vector<double>& A, ModelFunction f) {
    std::vector<double> sig(p.first.size(), 0.0);  // zero errors mean unweighted
    LmWorkspace w(static_cast<int>(A.size()));
    double chisq = 0;
    const LmStatus st = mrqmin(p.first, p.second, sig, A, chisq, f, w);
    EXPECT_EQ(sig, std::vector<double>(p.first.size(), 1.0));
    return {st, chisq, w.COUNT};
}

// Certified problems of the statistical reference data sets for nonlinear
// regression (lower and average difficulty).
const Problem misra1a{
    {77.6, 114.9, 141.1, 190.8, 239.9, 289.0, 332.8, 378.4, 434.8, 477.3, 536.8, 593.1, 689.1, 760.0},
    {10.07, 14.73, 17.94, 23.93, 29.61, 35.18, 40.02, 44.82, 50.76, 55.05, 61.01, 66.40, 75.47, 81.78}};
const Problem danwood{{1.309, 1.471, 1.490, 1.565, 1.611, 1.680}, {2.138, 3.421, 3.597, 4.340, 4.882, 5.660}};
const Problem boxbod{{1, 2, 3, 5, 7, 10}, {109, 149, 149, 191, 213, 224}};

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
        const double inverse[] = {9, -36, 30, -36, 192, -180, 30, -180, 180};
        for (std::size_t i = 0; i < 9; ++i) EXPECT_NEAR(h.v[i], inverse[i], 1e-9);
        for (double x : b) EXPECT_NEAR(x, 1.0, 1e-12);
    }
    {  // A zero diagonal needs the row interchange.
        Matrix p(2);
        p.v = {0, 2, 4, 0};
        std::vector<double> b = {6, 8};
        LmWorkspace w(2);
        ASSERT_TRUE(gaussj(p, b, w));
        EXPECT_EQ(b, (std::vector<double>{2, 3}));
        EXPECT_EQ(p.v, (std::vector<double>{0, 0.25, 0.5, 0}));
    }
    // Singular matrices and starts that are not a number are among the
    // failure paths of the fits below.
}

TEST(Minimiser, CertifiedReferenceProblems) {
    // The stop on an absolute change of 0.001 in chi-squared leaves the
    // parameters a few digits short of certified; chi-squared is much closer.
    std::vector<double> A = {250, 5e-4};
    Minimum m = minimise(misra1a, A, exp_rise);
    EXPECT_EQ(m.status, LmStatus::converged);
    EXPECT_TRUE(near_rel(A, {2.3894212918e+02, 5.5015643181e-04}, 1e-6));
    EXPECT_TRUE(near_rel(m.chisq, 1.2455138894e-01, 1e-9));

    for (std::vector<double> start : {std::vector<double>{1, 5}, std::vector<double>{0.7, 4}}) {
        m = minimise(danwood, start, power_law);
        EXPECT_EQ(m.status, LmStatus::converged);
        EXPECT_TRUE(near_rel(start, {7.6886226176e-01, 3.8604055871e+00}, 1e-5));
        EXPECT_TRUE(near_rel(m.chisq, 4.3173084083e-03, 1e-8));
    }

    A = {100, 0.75};
    m = minimise(boxbod, A, exp_rise);
    EXPECT_EQ(m.status, LmStatus::converged);
    EXPECT_TRUE(near_rel(A, {2.1380940889e+02, 5.4723748542e-01}, 1e-4));
    EXPECT_TRUE(near_rel(m.chisq, 1.1680088766e+03, 1e-8));
}

TEST(Minimiser, PassLimitAndAbsoluteConvergence) {
    // From the far start of the exponential rise the damped steps are too
    // slow: after 50 passes the last accepted step is returned.
    std::vector<double> A = {500, 1e-4};
    Minimum m = minimise(misra1a, A, exp_rise);
    EXPECT_EQ(m.status, LmStatus::no_convergence);
    EXPECT_EQ(m.passes, 50);
    const std::vector<double> sig(misra1a.first.size(), 1.0);
    LmWorkspace w(2);
    Matrix alpha(2);
    std::vector<double> beta(2);
    double start_chisq = 0, end_chisq = 0;
    mrqcof(misra1a.first, misra1a.second, sig, std::vector<double>{500, 1e-4}, alpha, beta, start_chisq,
           exp_rise, w);
    mrqcof(misra1a.first, misra1a.second, sig, A, alpha, beta, end_chisq, exp_rise, w);
    EXPECT_DOUBLE_EQ(m.chisq, end_chisq);
    EXPECT_LT(end_chisq, start_chisq);

    // A chi-squared that starts below 0.001 ends at the first accepted step,
    // however far from the optimum that is.
    Problem tiny = misra1a;
    for (double& y : tiny.second) y *= 1e-4;
    A = {0.025, 5e-4};
    m = minimise(tiny, A, exp_rise);
    EXPECT_EQ(m.status, LmStatus::converged);
    EXPECT_EQ(m.passes, 0);
}

TEST(IterativeFits, ExactDataGiveBackTheirCoefficients) {
    auto d = sample(-2.0, 0.1, 41,
                    [](double t) { return 1.0 + 2.0 * t - 0.5 * t * t * t + 0.1 * std::pow(t, 5); });
    IterativeFit r = solve_odd_pol(d.x, d.y);
    EXPECT_EQ(r.lm, LmStatus::converged);
    EXPECT_TRUE(near_rel(r.A, {1.0, 2.0, -0.5, 0.1}, 1e-5));

    d = sample(-2.0, 0.1, 71, [](double t) { return gaussian(t, 5.0, 0.8, 1.5); });
    r = solve_gauss_fit(d.x, d.y);
    EXPECT_EQ(r.lm, LmStatus::converged);
    EXPECT_TRUE(near_rel(r.A, {5.0, 0.8, 1.5}, 1e-5));

    d = sample(-4.0, 0.1, 101,
               [](double t) { return gaussian(t, 3.0, 0.5, 1.0) + gaussian(t, 3.0, 1.0, 1.2); });
    r = solve_dgauss_fit(d.x, d.y);
    EXPECT_EQ(r.lm, LmStatus::converged);
    EXPECT_TRUE(near_rel(r.A, {3.0, 0.5, 1.0, 3.0, 1.0, 1.2}, 1e-4));
}

TEST(IterativeFits, ReportsAndCurves) {
    const auto g = sample(-2.0, 0.1, 71, [](double t) { return gaussian(t, 5.0, 0.8, 1.5); });
    const float *x = g.x.data(), *y = g.y.data();
    {
        FitBench b;
        fit(*b.s, 10, 1, 1, 71, x, y);
        const std::string head = rule() +
                                 "     gauss fit: Y = a/(sqrt(2*Pi)*sig)*exp(-0.5*((x-x0)/sig)**2)\n"
                                 "     a   =    5.0000D+00\n"
                                 "     sig =    8.0000D-01\n"
                                 "     x0  =    1.5000D+00\n"
                                 "     chi squared =  ";
        EXPECT_EQ(b.console().substr(0, head.size()), head);
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 200);
        EXPECT_EQ(fv.X_FIT.front(), g.x.front());
        EXPECT_EQ(fv.X_FIT.back(), g.x.back());
        EXPECT_NEAR(fv.Y1_FIT[100], gaussian(fv.X_FIT[100], 5.0, 0.8, 1.5), 1e-4);
        // A second fit starts afresh: the same data give the same report.
        const std::string first = b.console();
        b.clear_console();
        fit(*b.s, 10, 1, 1, 71, x, y);
        EXPECT_EQ(b.console(), first);
    }
    {  // Two Gaussians, as the red curve of a pair: the two-line formula
        // comes with the first curve only.
        FitBench b;
        fit(*b.s, 11, 2, 2, 71, x, y);
        EXPECT_EQ(b.console().rfind("\n     red line: \n     a_1   =  ", 0), 0u) << b.console();
        b.clear_console();
        fit(*b.s, 11, 1, 2, 71, x, y);
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
        const auto line = sample(0.0, 0.5, 9, [](double t) { return 1.0 + t; });
        const auto b = fitted(9, line.x, line.y);
        const FitVariables& fv = b->s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 200);
        EXPECT_FLOAT_EQ(fv.X_FIT.front(), -0.2f);
        EXPECT_FLOAT_EQ(fv.X_FIT.back(), 4.2f);
        EXPECT_NEAR(fv.Y1_FIT.back(), 5.2, 1e-3);
        EXPECT_NE(b->console().find("     odd polynomial fit: Y = a + b*x + c*x^3 + d*x^5\n"),
                  std::string::npos);
    }
}

TEST(IterativeFits, FailurePaths) {
    const std::string gauss = rule() + "     gauss fit: Y = a/(sqrt(2*Pi)*sig)*exp(-0.5*((x-x0)/sig)**2)\n";
    const std::string singular = "\n     Singluar matrix; no solution for fit\n\n";
    struct Case {
        int pick;
        std::vector<float> x, y;
        std::string console;
    };
    const Case cases[] = {
        {9, {}, {}, "\n     no valid data points\n"},
        {10, {}, {}, "\n     no valid data points\n"},
        {11, {}, {}, "\n     no valid data points\n"},
        {10, {1, 2, 3}, {0, 0, 0}, "\n     no solution\n"},
        {11, {1, 2, 3}, {0, 0, 0}, "\n     no solution\n"},
        // All abscissae 0: the odd terms have no curvature. The start values
        // are still shown, but nothing is drawn.
        {9,
         {0, 0, 0},
         {1, 2, 3},
         rule() + "     odd polynomial fit: Y = a + b*x + c*x^3 + d*x^5\n" + singular +
             "     a   =    2.0000D+00\n     b   =    1.0000D+00\n     c   =    1.0000D+00\n"
             "     d   =    1.0000D+00\n     chi squared =    2.0000D+00\n"},
        // Mixed signs give a negative variance: the start is not a number
        // and the Gaussian shows no coefficients.
        {10, {1, 2, 3}, {-1, 3, -1}, gauss + singular},
    };
    for (const Case& c : cases) {
        const auto b = fitted(c.pick, c.x, c.y);
        EXPECT_EQ(b->console(), c.console) << c.pick;
        EXPECT_TRUE(no_curve(b->s->fit_variables)) << c.pick;
    }
    // An exponential is no Gaussian: after 50 passes the last step is
    // reported and drawn.
    const auto e = sample(0.0, 0.5, 21, [](double t) { return std::exp(t); });
    const auto b = fitted(10, e.x, e.y);
    const std::string head = gauss + " No convergence after 50 iterations\n     a   =  ";
    EXPECT_EQ(b->console().substr(0, head.size()), head);
    EXPECT_EQ(b->s->fit_variables.N_FIT, 200);
}
