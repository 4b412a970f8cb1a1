// Reference curves: the plot's points stored to a small text file, and such
// a file read back as a curve for the fit hook to draw. Internal to the
// fitting subsystem.
#pragma once

#include "fitting/fit_common.hpp"

namespace viewer {

// Pick 17. Curve 1 asks for the name and opens the file; a two-curve plot
// writes its records (x, y1, y2) in the call of curve 2.
void store(Session& s, const FitCall& c);

// Pick 16. Reads the file named at the prompt (or, in a hardcopy, the one
// read last) into `fit_variables` and prints its statistics; all in the
// call of curve 1.
void get_ref(Session& s, int CURVE, int N_CURVES);

}  // namespace viewer
