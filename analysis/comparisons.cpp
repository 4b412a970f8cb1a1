// Emittance comparisons along z: the rms emittance beside the emittance
// reduced by its correlations, the correlation terms themselves, and phase
// space beside trace space. Each is a row of the frame with its own ranges:
// every curve raises the top, the axis starts at 0, the curves go through
// `poly_line` and carry a key.
#include <cmath>

#include "analysis/plots.hpp"
#include "plot/frame.hpp"

namespace viewer {
namespace {

const char* const kZ = "\\fiz m";
const char* const kEmit = "\\ge \\gp \\fimrad mm ";  // pi mrad mm

// Transverse emittance less what a correlation accounts for (pi mrad mm).
float nx_less_z(const Pass& p) {
    return p(Kind::Xemit, xemit::NX_EMIT) - p(Kind::Xemit2, xemit2::REMITZX);
}
float ny_less_z(const Pass& p) {
    return p(Kind::Yemit, yemit::NY_EMIT) - p(Kind::Yemit2, xemit2::REMITZX);
}
float nx_less_e(const Pass& p) {
    return p(Kind::Xemit, xemit::NX_EMIT) - p(Kind::Xemit2, xemit2::REMITEX);
}
float ny_less_e(const Pass& p) {
    return p(Kind::Yemit, yemit::NY_EMIT) - p(Kind::Yemit2, xemit2::REMITEX);
}

// A correlation term in m rad as a size in pi mrad mm.
float size_e6(float v) {
    return 1e6f * std::fabs(v);
}
// The four terms of one plane added in curve order, in 32 bits.
template <Kind K>
float sum_of_terms(const Pass& p) {
    return size_e6(p(K, xemit2::C3XZ)) + size_e6(p(K, xemit2::C4XZ)) + size_e6(p(K, xemit2::C3XE)) +
           size_e6(p(K, xemit2::C4XE));
}

const std::vector<Kind> kXY2 = {Kind::Xemit, Kind::Yemit, Kind::Xemit2, Kind::Yemit2};

}  // namespace

void pgex401(Session& s, int N) {
    const int sel = s.window.SELECTION;
    AlongZ row{.plot = 401,
               .tables = kXY2,
               .labels = {kZ, kEmit, ""},
               .overlay = Overlay::upper,
               .fit = false,
               .ranges = Ranges::own};
    const Curve nx = col(Kind::Xemit, xemit::NX_EMIT), ny = col(Kind::Yemit, yemit::NY_EMIT);
    const std::vector<std::string> plain_keys = {"\\fihor. emittance", "\\fiver. emittance",
                                                 "\\fired. hor. emit.", "\\fired. ver. emit."};
    if (sel == 3) {
        row.labels.top = "Emittance Difference";
        row.curves = {derived(nx_less_z), derived(ny_less_z), derived(nx_less_e), derived(ny_less_e)};
        row.keys = {{" \\fihor. emit. Z", " \\fiver. emit. Z", " \\fihor. emit. E", " \\fiver. emit. E"},
                    0.76f};
    } else if (sel == 2) {
        row.labels.top = "Transverse emittance & reduced emittance Z & E";
        row.curves = {nx, ny, col(Kind::Xemit2, xemit2::REMITEX), col(Kind::Yemit2, xemit2::REMITEX)};
        row.keys = {plain_keys, 0.76f};
    } else {
        row.labels.top = "Transverse emittance & reduced emittance Z";
        row.curves = {nx, ny, col(Kind::Xemit2, xemit2::REMITZX), col(Kind::Yemit2, xemit2::REMITZX)};
        row.keys = {plain_keys, 0.76f};
    }
    plot_along_z(s, N, row);
}

void pgex404(Session& s, int N) {
    // Selection 4 is the horizontal plane, any other the vertical one.
    const bool x = s.window.SELECTION == 4;
    const Kind t = x ? Kind::Xemit2 : Kind::Yemit2;
    const std::string p = x ? "x" : "y";
    plot_along_z(s, N,
                 {.plot = 404,
                  .tables = {Kind::Xemit2, Kind::Yemit2},  // the plain tables are asked for but not read
                  .curves = {col(t, xemit2::C3XZ, size_e6), col(t, xemit2::C4XZ, size_e6),
                             col(t, xemit2::C3XE, size_e6), col(t, xemit2::C4XE, size_e6),
                             derived(x ? sum_of_terms<Kind::Xemit2> : sum_of_terms<Kind::Yemit2>)},
                  .labels = {kZ, kEmit, "Correlated Emittance Contributions"},
                  .overlay = Overlay::upper,
                  .fit = false,
                  .ranges = Ranges::own,
                  .required = {Kind::Xemit, Kind::Yemit, Kind::Zemit},
                  .rewound = {Kind::Xemit, Kind::Yemit, Kind::Zemit},
                  .keys = {{"|\\fiK\\u" + p + "\\d\\d2,Z\\u|", "|\\fiK\\u" + p + "\\d\\d3,Z\\u|",
                            "|\\fiK\\u" + p + "\\d\\d2,E\\u|", "|\\fiK\\u" + p + "\\d\\d3,E\\u|",
                            "\\fiSum |\\fiK\\d\\fii\\u|"},
                           0.80f}});
}

void pgex406(Session& s, int N) {
    plot_along_z(
        s, N,
        {.plot = 406,
         .tables = {Kind::Zemit, Kind::Zemit2},
         .curves = {col(Kind::Zemit, zemit::NZ_EMIT), col(Kind::Zemit2, zemit2::REMITEZ2),
                    col(Kind::Zemit2, zemit2::REMITEZ3)},  // pi keV mm
         .labels = {kZ, "\\ge \\gp \\fikeV mm", "Long. emittance & long. emit. minus 2nd order corr."},
         .overlay = Overlay::upper,
         .fit = false,
         .ranges = Ranges::own,
         .keys = {{"\\filong. emittance", "\\filong. emit. min. 2nd order",
                   "\\filong. emit. min. 2nd & 3rd order"},
                  0.56f}});
}

void pgex407(Session& s, int N) {
    plot_along_z(
        s, N,
        {.plot = 407,
         .tables = {Kind::Xemit, Kind::Yemit, Kind::TRemit},
         .curves = {col(Kind::Xemit, xemit::NX_EMIT), col(Kind::Yemit, yemit::NY_EMIT),
                    col(Kind::TRemit, tremit::TR_EMITX), col(Kind::TRemit, tremit::TR_EMITY)},
         .labels = {kZ, kEmit, "Phase Space Emittance & Trace Space Emittance"},
         .overlay = Overlay::upper,
         .fit = false,
         .ranges = Ranges::own,
         .keys = {{"\\fihor Ph Sp emit", "\\fiver Ph Sp emit", "\\fihor Tr Sp emit", "\\fiver Tr Sp emit"},
                  0.76f}});
}

void pgex408(Session& s, int N) {
    plot_along_z(s, N,
                 {.plot = 408,
                  .tables = {Kind::Zemit, Kind::TRemit},
                  .curves = {col(Kind::Zemit, zemit::NZ_EMIT), col(Kind::TRemit, tremit::TR_EMITZ)},
                  .labels = {kZ, "\\ge \\gp \\gm\\fim ", "Phase Space Emittance & Trace Space Emittance"},
                  .overlay = Overlay::upper,
                  .fit = false,
                  .ranges = Ranges::own,
                  .keys = {{"\\filong. Ph Sp emit", "\\filong. Tr Sp emit"}, 0.73f}});
}

}  // namespace viewer
