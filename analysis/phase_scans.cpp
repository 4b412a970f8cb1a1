// Phase scans: energy, its slope and the compression against phase.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex201(Session&, int, int) {}
void pgex202(Session&, int, int) {}
void pgex203(Session&, int, int) {}
void pgex204(Session&, int, int) {}
}  // namespace viewer
