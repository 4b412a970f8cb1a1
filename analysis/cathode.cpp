// Fields and emission at the cathode.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex414(Session&) {}
void pgex415(Session&) {}
void pgex416(Session&) {}
}  // namespace viewer
