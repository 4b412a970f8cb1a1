// Losses, energy deposition, beam loading and the space-charge bookkeeping.
// Reachable from their menu rows; not drawn yet.
#include "analysis/plots.hpp"

namespace viewer {
void pgex205(Session&, int) {}
void pgex206(Session&, int) {}
void pgex207(Session&, int) {}
void pgex209(Session&, int) {}
void pgex210(Session&, int) {}
void pgex211(Session&, int) {}
}  // namespace viewer
