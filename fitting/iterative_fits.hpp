// The Levenberg-Marquardt minimiser and the three models it serves: the odd
// polynomial, one Gaussian and two Gaussians. Internal to the fitting
// subsystem. All state lives in an explicit workspace; nothing is static.
//
//   LmWorkspace w(3);
//   std::vector<double> A = {a, sig, x0};
//   double chisq;
//   LmStatus st = mrqmin(x, y, sig, A, chisq, gauss, w);
#pragma once

#include <span>
#include <vector>

#include "fitting/closed_form_fits.hpp"
#include "fitting/fit_common.hpp"

namespace viewer {

// A model: its value y at x for the parameters A, and the partial
// derivatives DYDA (one per parameter).
using ModelFunction = void (*)(double x, std::span<const double> A, double& y, std::span<double> DYDA);

// 1/2.507 with 2.507 rounded to 32 bits: the normalisation the Gaussians
// use, in the fit and in the drawn curve alike.
constexpr double K_GAUSS = 0.3988831320993008;

// A(1) + A(2)*x + A(3)*x^3 + A(4)*x^5
void odd_poly(double x, std::span<const double> A, double& y, std::span<double> DYDA);
// A(1)*K/A(2)*exp(-((x - A(3))/A(2))^2/2): area, width, centre
void gauss(double x, std::span<const double> A, double& y, std::span<double> DYDA);
// Two Gaussians, on A(1..3) and A(4..6).
void dgauss(double x, std::span<const double> A, double& y, std::span<double> DYDA);

// A square matrix of MA x MA, row-major.
struct Matrix {
    explicit Matrix(int size = 0)
        : n(size), v(static_cast<std::size_t>(size) * static_cast<std::size_t>(size), 0.0) {}
    int n;                  // rows, and columns
    std::vector<double> v;  // elements, row after row
    double& operator()(int i, int j) { return v[static_cast<std::size_t>(i * n + j)]; }
    double operator()(int i, int j) const { return v[static_cast<std::size_t>(i * n + j)]; }
};

// Working storage of one minimisation, sized by the number of parameters.
struct LmWorkspace {
    explicit LmWorkspace(int MA);
    int MA;
    Matrix ALPHA, COVAR;                  // curvature matrix; its damped copy, then the trial's
    std::vector<double> BETA, DA, ATRY;   // gradient; step, then the trial's gradient; trial parameters
    std::vector<double> DYDA;             // model derivatives at one point
    std::vector<int> IPIV, INDXR, INDXC;  // pivot bookkeeping of the elimination
    double ALAMDA = 0;                    // damping factor
    double CHISQ_OLD = 0;                 // chi-squared of the last accepted parameters
    int COUNT = 0;                        // passes made
};

// In place: `a` becomes its inverse and `b` the solution of a x = b, by
// Gauss-Jordan elimination with full pivoting. False when the matrix is
// singular (a zero pivot, or no pivot left to choose).
bool gaussj(Matrix& a, std::span<double> b, LmWorkspace& w);

// Curvature matrix, gradient and chi-squared of the model at A.
void mrqcof(std::span<const double> X, std::span<const double> Y, std::span<const double> SIG,
            std::span<const double> A, Matrix& ALPHA, std::span<double> BETA, double& CHISQ, ModelFunction f,
            LmWorkspace& w);

enum class LmStatus {
    converged,       // chi-squared changed by less than 0.001 in a pass
    singular,        // the damped curvature matrix could not be solved
    no_convergence,  // 50 passes made; A holds the last accepted step
};

// Minimises chi-squared from the start values in A. Zero errors in SIG
// become 1 (unweighted). On return A and CHISQ belong to the last accepted
// step. The convergence test is absolute, in the units of the plot.
LmStatus mrqmin(std::span<const double> X, std::span<const double> Y, std::span<double> SIG,
                std::span<double> A, double& CHISQ, ModelFunction f, LmWorkspace& w);

// The result of one of the three iterative fits, before anything is printed.
struct IterativeFit {
    FitStatus status = FitStatus::ok;  // no_valid_points, no_solution: refused before solving
    LmStatus lm = LmStatus::converged;
    std::vector<double> A;  // parameters, in the order printed
    double CHISQ = 0;       // sum of squared residuals
};

IterativeFit solve_odd_pol(std::span<const float> X, std::span<const float> Y);
IterativeFit solve_gauss_fit(std::span<const float> X, std::span<const float> Y);
IterativeFit solve_dgauss_fit(std::span<const float> X, std::span<const float> Y);

// The routines of picks 9 to 11.
void odd_pol(Session& s, const FitCall& c);
void gauss_fit(Session& s, const FitCall& c);
void dgauss_fit(Session& s, const FitCall& c);

}  // namespace viewer
