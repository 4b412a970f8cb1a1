// Coupling from the sigma matrix.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex501(Session&, int, int) {}
}  // namespace viewer
