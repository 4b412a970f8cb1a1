// Twiss functions, phase advance and coherence length from the beam data.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex212(Session&, int) {}
void pgex215(Session&, int) {}
}  // namespace viewer
