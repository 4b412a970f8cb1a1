// The eight least-squares fits solved without iteration. Each has a pure
// solver (points in, coefficients out) and a routine that prints the report
// and fills `fit_variables`. Internal to the fitting subsystem.
//
//   ClosedFit r = solve_parabolic(xs, ys);   // r.coef = {a, b, c}
//   parabolic(s, {CURVE, N_CURVES, NP, X, Y});
#pragma once

#include <array>
#include <span>
#include <vector>

#include "fitting/fit_common.hpp"

namespace viewer {

enum class FitStatus {
    ok,
    no_valid_points,  // no point passed the validity test, NP = 0 included
    no_solution,      // a guard refused the data
};

// Coefficients of a closed-form fit, in the order they are printed:
// aoverr {A, r0}; square_root, straight, exponential {a, b}; power {a, n};
// parabolic {a, b, c}; mod_exponential {ln a, b, c}; pol_3rd {a, b, c, d}.
// Units are those of the plot's axes.
struct ClosedFit {
    FitStatus status = FitStatus::ok;
    int ZCOUNT = 0;  // points left out by the validity test
    int n = 0;       // points in the sums
    std::array<double, 4> coef{};
    double ZMIN = 1.0e15;  // smallest valid abscissa (power, mod_exponential)
    double ZMAX = 0.0;     // largest valid abscissa
};

ClosedFit solve_aoverr(std::span<const float> X, std::span<const float> Y);
ClosedFit solve_square_root(std::span<const float> X, std::span<const float> Y);
ClosedFit solve_straight(std::span<const float> X, std::span<const float> Y);
ClosedFit solve_parabolic(std::span<const float> X, std::span<const float> Y);
ClosedFit solve_power(std::span<const float> X, std::span<const float> Y);
ClosedFit solve_exponential(std::span<const float> X, std::span<const float> Y);
ClosedFit solve_mod_exponential(std::span<const float> X, std::span<const float> Y);
ClosedFit solve_pol_3rd(std::span<const float> X, std::span<const float> Y);

// A stationary point of a fitted polynomial.
struct Extremum {
    double x0, y0;
};
// Of the parabola {a, b, c}: at -b/(2c), also when c is 0.
Extremum parabola_extremum(const ClosedFit& r);
// Of the cubic {a, b, c, d}: two (larger x0 first), one, or none.
std::vector<Extremum> cubic_extrema(const ClosedFit& r);

// The routines of picks 1 to 8.
void aoverr(Session& s, const FitCall& c);
void square_root(Session& s, const FitCall& c);
void straight(Session& s, const FitCall& c);
void parabolic(Session& s, const FitCall& c);
void power(Session& s, const FitCall& c);
void exponential(Session& s, const FitCall& c);
void mod_exponential(Session& s, const FitCall& c);
void pol_3rd(Session& s, const FitCall& c);

}  // namespace viewer
