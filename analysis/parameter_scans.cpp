// Parameter scans sorted by the scanned parameter.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex301(Session&, int) {}
}  // namespace viewer
