// Emittance comparisons.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex401(Session&, int) {}
void pgex404(Session&, int) {}
void pgex406(Session&, int) {}
void pgex407(Session&, int) {}
void pgex408(Session&, int) {}
}  // namespace viewer
