// Plots of the later pages whose drawing is not written yet: each is
// reachable from its menu row and draws nothing.
#include "evolution/plots.hpp"

namespace viewer {
void pgex201(Session&, int, int) {}
void pgex202(Session&, int, int) {}
void pgex203(Session&, int, int) {}
void pgex204(Session&, int, int) {}
void pgex205(Session&, int) {}
void pgex206(Session&, int) {}
void pgex207(Session&, int) {}
void pgex209(Session&, int) {}
void pgex210(Session&, int) {}
void pgex211(Session&, int) {}
void pgex212(Session&, int) {}
void pgex215(Session&, int) {}
void pgex301(Session&, int) {}
void pgex331(Session&, int, int) {}
void pgex401(Session&, int) {}
void pgex404(Session&, int) {}
void pgex406(Session&, int) {}
void pgex407(Session&, int) {}
void pgex408(Session&, int) {}
void pgex409(Session&, int) {}
void pgex411(Session&, int) {}
void pgex414(Session&) {}
void pgex415(Session&) {}
void pgex416(Session&) {}
void pgex501(Session&, int, int) {}
}  // namespace viewer
