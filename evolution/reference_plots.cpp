// The reference particle along z, from the free records of .ref: momentum,
// its change, the off-axis trajectory in two panels, the Larmor angle.
#include "evolution/plots.hpp"
#include "plot/frame.hpp"

namespace viewer {

namespace {
const char* const kZ = "\\fiz m";
}

void pgex10(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 10,
                  .tables = {Kind::ref},
                  .curves = {col(Kind::ref, reference::ENE)},
                  .ymin = YminRule::clamped,
                  .labels = {kZ, "\\fip\\dz  MeV/c", "longitudinal momentum of reference particle"},
                  .overlay = Overlay::mirrored,
                  .title_in_overview = true});
}

void pgex11(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 11,
                  .tables = {Kind::ref},
                  .curves = {col(Kind::ref, reference::GRAD)},
                  .ymin = YminRule::margin,
                  .labels = {kZ, "\\fidp\\dz\\u/dz MeV/c/m", "momentum change of reference particle"},
                  .overlay = Overlay::mirrored,
                  .title_in_overview = true});
}

void pgex13(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 13,
                  .tables = {Kind::ref},
                  .curves = {col(Kind::ref, reference::LARMOR)},
                  .ymin = YminRule::margin,
                  .labels = {kZ, "\\fiLarmor angle  rad", "Larmor angle"},
                  .overlay = Overlay::mirrored,
                  .title_in_overview = true});
}

// Horizontal offset above, vertical below, each panel with its own ordinate
// range; the dispatch has set the two panels. No fit is offered here.
void pgex12(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 12,
                  .tables = {Kind::ref},
                  .curves = {col(Kind::ref, reference::XX), col(Kind::ref, reference::YY)},
                  .ymin = YminRule::margin,
                  .labels = {kZ, "\\fix mm", "off-axis trajectory of reference particle (w.o. space charge)"},
                  .overlay = Overlay::two_panels,
                  .title_in_overview = true,
                  .fit = false,
                  .panels = Panels::stacked,
                  .lower_y = {"\\fiy mm"}});
}

}  // namespace viewer
