// Placeholders until the plots along z and the overlay are written.
#include "evolution/geometry.hpp"
#include "evolution/plots.hpp"

namespace viewer {
void pgex1(Session&, int) {}
void pgex2(Session&, int) {}
void pgex3(Session&, int) {}
void pgex4(Session&, int) {}
void pgex5(Session&, int) {}
void pgex6(Session&, int) {}
void pgex7(Session&, int) {}
void pgex8(Session&, int) {}
void pgex9(Session&, int) {}
void pgex10(Session&, int) {}
void pgex11(Session&, int) {}
void pgex12(Session&, int) {}
void pgex13(Session&, int) {}
void load_geom(Session&) {}
void ensure_geometry(Session&) {}
void overlay_upper(Session&, float, float, float, float) {}
void overlay_mirrored(Session&, float, float, float, float) {}
void overlay_two_panels(Session&, float, float, float, float) {}
}  // namespace viewer
