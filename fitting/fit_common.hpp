// What every fit routine shares: the call it receives, the report lines it
// prints in a fixed order, and the curve grids it fills `fit_variables` on.
// Internal to the fitting subsystem.
#pragma once

#include <iosfwd>
#include <span>
#include <string_view>

#include "core/session.hpp"

namespace viewer {

// One call of a fit routine, as `fit` forwards it.
struct FitCall {
    int CURVE = 1;                // which of the plot's curves: 1 or 2
    int N_CURVES = 1;             // how many curves the plot fits in this pass
    int NP = 0;                   // points of the curve
    const float* X = nullptr;     // abscissae, in the plot's order and units
    const float* Y = nullptr;     // ordinates
    FitReport* record = nullptr;  // set: the report's numbers are kept there too

    std::span<const float> xs() const { return {X, static_cast<std::size_t>(NP > 0 ? NP : 0)}; }
    std::span<const float> ys() const { return {Y, static_cast<std::size_t>(NP > 0 ? NP : 0)}; }
};

// Where a report goes: the console, and its numbers to the call's record
// when the session keeps them.
struct ReportOut {
    std::ostream& os;
    FitReport* record = nullptr;
};
inline ReportOut report_out(Session& s, const FitCall& c) {
    return {s.con.out, c.record};
}

// The rule of 74 dashes that opens a report, with its leading blank.
void print_rule(std::ostream& out);

// The formula header (only for the first curve), then "black line: " or
// "red line: " when the plot fits two curves.
void print_header(ReportOut& out, const FitCall& c, std::string_view formula);

// "... values lower or equal zero are neglected", or nothing for 0. The
// many-points form is forced where no point at all was valid.
void print_count(ReportOut& out, int ZCOUNT, bool many_form = false);

// Five blanks, the label and a 12-column value field. "chi squared" is
// also the residual of the record.
void print_value(ReportOut& out, std::string_view label, double v);

// A blank line and an indented message ("no valid data points", ...).
void print_short(ReportOut& out, std::string_view message);

// Sets N_FIT and sizes the arrays the call fills: `X_FIT` always, and the
// ordinates of its curve, cleared to 0. Returns the two to fill.
struct CurveSlots {
    std::span<float> x, y;
};
CurveSlots allocate_curve(FitVariables& fv, int CURVE, int N_FIT);

// Curve grids. Each writes x.size() abscissae.
// From the first to the last point passed, in 32-bit arithmetic.
void grid_first_to_last(std::span<float> x, std::span<const float> X);
// From ZMIN to ZMAX, in 64-bit arithmetic, stored as 32-bit.
void grid_between(std::span<float> x, double ZMIN, double ZMAX);
// From 5 % of the span before the first point to 5 % after the last:
// in 64-bit arithmetic, or 32-bit throughout when `single` is set.
void grid_with_margin(std::span<float> x, std::span<const float> X, bool single = false);

}  // namespace viewer
