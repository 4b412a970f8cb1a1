// Probe tracks and the fields on them: reachable from their menu rows, not
// drawn yet.
#include "evolution/plots.hpp"

namespace viewer {
void pgex14(Session&) {}
void pgex15(Session&) {}
void pgex16(Session&) {}
}  // namespace viewer
