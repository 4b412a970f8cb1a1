// Running extremes and sum of a curve, the console statistics block, and the
// repair of an empty range: the helpers every plot along z shares.
#pragma once

#include <cmath>
#include <iosfwd>

#include "core/session.hpp"

namespace viewer {

// Running extremes that a NaN or infinity of a Fortran runtime takes no part
// in; an extreme that is itself one gives way to the first finite value.
// True when `v` was taken.
inline bool take_max(float& m, float v) {
    const bool take = std::isfinite(v) && (v > m || !std::isfinite(m));
    if (take) m = v;
    return take;
}
inline bool take_min(float& m, float v) {
    const bool take = std::isfinite(v) && (v < m || !std::isfinite(m));
    if (take) m = v;
    return take;
}

// Folds point `I` (1-based) of curve `ID` (1 or 2) into the running values
// of `st`: MAX_A, MIN_A (with where they were first met), AVR, ZMAX, ZMIN.
void mami(PlotState& st, int ID, int I, float Z, float Y);

// Turns the sums into averages and prints the statistics block of `ID`
// curves (1 or 2). With NP below 1 it clears the extremes and prints nothing.
void out_mami(std::ostream& out, PlotState& st, int NP, int ID, const float* Y1, const float* Y2);

// The same block on the session's console; its numbers also go to the
// session's reports when it keeps them.
void out_mami(Session& s, PlotState& st, int NP, int ID, const float* Y1, const float* Y2);

// Mends an empty range in place: equal bounds open by 10 % of the value,
// or to -0.1 .. 0.1 around zero. A bound that is not finite (NaN, infinity)
// first takes the value of the other, or zero when neither is finite.
void check(float& UPPER, float& LOWER);

}  // namespace viewer
