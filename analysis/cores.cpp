// Core and sub-ensemble emittances.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex409(Session&, int) {}
void pgex411(Session&, int) {}
}  // namespace viewer
