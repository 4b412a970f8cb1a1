// Statistics of a figure of merit over a series of runs.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex331(Session&, int, int) {}
}  // namespace viewer
