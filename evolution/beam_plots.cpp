// The rms properties of the beam along z: transverse from .Xemit and .Yemit
// (horizontal black, vertical red or dashed), longitudinal from .Zemit.
#include <cmath>

#include "evolution/plots.hpp"
#include "plot/frame.hpp"

namespace viewer {

namespace {

const char* const kZ = "\\fiz m";

// Relativistic beta of an electron of kinetic energy E (MeV), in the 32-bit
// arithmetic of the plotted data; 1.9569472 is one over the rest energy.
float beta_of_energy(float E) {
    const float g = 1.9569472f * E;
    const float bg = std::sqrt((g + 1.0f) * (g + 1.0f) - 1.0f);
    return bg / std::sqrt(bg * bg + 1.0f);
}

}  // namespace

void pgex1(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 1,
                  .tables = {Kind::Xemit, Kind::Yemit},
                  .curves = {col(Kind::Xemit, xemit::NX_EMIT), col(Kind::Yemit, yemit::NY_EMIT)},
                  .ymin = YminRule::zero,
                  .labels = {kZ, "\\ge \\gp \\fimrad mm ", "Transverse Emittance"},
                  .overlay = Overlay::upper});
}

void pgex2(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 2,
                  .tables = {Kind::Xemit, Kind::Yemit},
                  .curves = {col(Kind::Xemit, xemit::X_RMS), col(Kind::Yemit, yemit::Y_RMS)},
                  .ymin = YminRule::zero,
                  .labels = {kZ, "\\gs\\fix \\gs\\fiy \\fimm", "Beam Size"},
                  .overlay = Overlay::upper});
}

void pgex3(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 3,
                  .tables = {Kind::Xemit, Kind::Yemit},
                  .curves = {col(Kind::Xemit, xemit::XP_RMS), col(Kind::Yemit, yemit::YP_RMS)},
                  .ymin = YminRule::zero,
                  .labels = {kZ, "\\fipx/pz  py/pz mrad", "Beam Divergence"},
                  .overlay = Overlay::upper});
}

void pgex4(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 4,
                  .tables = {Kind::Zemit},
                  .curves = {col(Kind::Zemit, zemit::NZ_EMIT)},
                  .ymin = YminRule::zero,
                  .labels = {kZ, "\\ge\\fiz \\gp \\fikeV mm", "Longitudinal Emittance"},
                  .overlay = Overlay::upper});
}

void pgex5(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 5,
                  .tables = {Kind::Zemit},
                  .curves = {col(Kind::Zemit, zemit::Z_RMS)},
                  .ymin = YminRule::zero,
                  .labels = {kZ, "\\gs\\fiz mm", "Bunch Length"},
                  .overlay = Overlay::upper});
}

void pgex6(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 6,
                  .tables = {Kind::Zemit},
                  .curves = {col(Kind::Zemit, zemit::E_RMS)},
                  .ymin = YminRule::zero,
                  .labels = {kZ, "\\gD\\fiE keV", "rms Energy Spread"},
                  .overlay = Overlay::upper});
}

void pgex7(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 7,
                  .tables = {Kind::Zemit},
                  .curves = {col(Kind::Zemit, zemit::CO_EZ)},
                  .ymin = YminRule::margin,
                  .labels = {kZ, "\\gD\\fiE keV", "correlated Energy Spread"},
                  .overlay = Overlay::mirrored});
}

void pgex8(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 8,
                  .tables = {Kind::Zemit},
                  .curves = {col(Kind::Zemit, zemit::E_MEAN)},
                  .ymin = YminRule::margin,
                  .labels = {kZ, "\\fiE MeV", "average particle energy"},
                  .overlay = Overlay::upper});
}

void pgex9(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 9,
                  .tables = {Kind::Zemit},
                  .curves = {col(Kind::Zemit, zemit::E_MEAN, beta_of_energy)},
                  .ymin = YminRule::margin,
                  .labels = {kZ, "\\gb", "Particle velocity"},
                  .overlay = Overlay::upper});
}

}  // namespace viewer
