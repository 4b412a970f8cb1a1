// Core and sub-ensemble emittances: the full beam beside its inner cores in
// one plane at a time, and the beam with and without one group of particles.
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "core/statistics.hpp"
#include "plot/frame.hpp"

namespace viewer {
namespace {

const char* const kZ = "\\fiz m";
const char* const kEmit = "\\ge \\gp \\fimrad mm ";  // pi mrad mm

// Share of the charge, in percent, of the cross-over particles or of the
// sub-ensemble. Both charges 0 give 0 / 0, passed on as it comes.
float cross_over_share(const Pass& p) {
    const float q = p(Kind::Cr_emit, sub_emit::SUMQ), q_cr = p(Kind::Cr_emit, sub_emit::SUMQ_CR);
    return 100.0f * q_cr / (q + q_cr);
}
float sub_ensemble_share(const Pass& p) {
    const float q = p(Kind::Sub_emit, sub_emit::SUMQ), q_cr = p(Kind::Sub_emit, sub_emit::SUMQ_CR);
    return 100.0f * q / (q + q_cr);
}

}  // namespace

void pgex409(Session& s, int N) {
    PlotState& st = s.plot(409);
    const Fexist& f = s.fexist;
    const Kind table = f.C99emit_EXISTS ? Kind::C99emit : Kind::Cemit;
    RewindOnExit rewind(s, {table});

    // Selection 9 the horizontal plane, 10 the vertical, 11 the longitudinal:
    // the full beam and its three cores stand in four adjacent fields.
    const int sel = s.window.SELECTION;
    const int plane = sel == 10 ? 1 : sel == 11 ? 2 : 0;
    const int full = cemit::CEMITX + 4 * plane;

    // With no record taken the frame opens on this huge falling abscissa, as
    // the other plots of the page do, rather than on an earlier call's.
    st.ZMAX = -1e10f;
    st.ZMIN = 1e10f;
    float EPSMAX = 0.0f;
    std::vector<float> Z;
    std::array<std::vector<float>, 4> curve;  // full beam, then the cores in file order
    int I = 1;
    if ((f.Cemit_EXISTS || f.C99emit_EXISTS) && N >= 1) {
        const RunKind& kind = run_kind(table);
        RunRecord rec(kind);
        const float lower = s.graph.Z_LOWER, upper = s.graph.Z_UPPER;
        while (rec.read(s.unit(kind.unit))) {
            const float Z_MEAN = rec.real(cemit::Z_MEAN);
            if (s.logo.ZOOM_Z && (lower > Z_MEAN || Z_MEAN > upper)) continue;
            Z.push_back(Z_MEAN);
            st.ZMAX = I == 1 ? Z_MEAN : std::max(st.ZMAX, Z_MEAN);
            st.ZMIN = I == 1 ? Z_MEAN : std::min(st.ZMIN, Z_MEAN);
            for (int c = 0; c < 4; ++c) curve[static_cast<std::size_t>(c)].push_back(rec.real(full + c));
            EPSMAX = std::max(EPSMAX, rec.real(full));  // the cores are not looked at
            if (I++ == N) break;
        }
    }
    const int NP = st.NP = I - 1;
    st.YMAX = upper_limit(EPSMAX);
    st.YMIN = 0.0f;
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);

    static const char* const kTitle[] = {"Horizontal core Emittance", "Vertical core Emittance",
                                         "Longitudinal core Emittance"};
    {
        DrawBracket bracket(s.pg);
        Graphics& pg = s.pg;
        open_frame(s, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX,
                   {kZ, plane == 2 ? "\\ge \\gp \\fikeV mm" : kEmit, kTitle[plane]});
        pg.pgsci(1);
        pg.pgline(NP, Z.data(), curve[0].data());
        for (int c = 2; c <= 4; ++c) {
            set_curve_style(s, c);
            pg.pgline(NP, Z.data(), curve[static_cast<std::size_t>(c - 1)].data());
        }
        pg.pgsls(1);
        const std::vector<std::string> keys =
            f.C99emit_EXISTS
                ? std::vector<std::string>{" \\fi100%", " \\fi 99.99%", " \\fi 99.90%", " \\fi 99.00%"}
                : std::vector<std::string>{" \\fi100%", " \\fi 95%", " \\fi 90%", " \\fi 80%"};
        const int num[] = {1, 2, 3, 4};
        legend(s, keys, num, 0.83f, LegendPos::TR);
    }
    if (s.logo.WITH_GEOMETRY) draw_overlay(s, Overlay::upper, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX);
    page_foot(s, false);
}

void pgex411(Session& s, int N) {
    PlotState& st = s.plot(411);
    const Fexist& f = s.fexist;
    const Kind part = f.Sub_emit_EXISTS ? Kind::Sub_emit : Kind::Cr_emit;  // unit 19 holds one
    const bool cross = f.Cr_emit_EXISTS;
    const int sel = s.window.SELECTION;  // 12 emittance, 13 beam size, 14 charge
    RewindOnExit rewind(s, {Kind::Xemit, Kind::Yemit, part});

    AlongZ row{.plot = 411, .tables = {Kind::Xemit, Kind::Yemit, part}, .fit = false};
    std::size_t feeds = 4;  // the curves that raise the top of the range
    if (sel == 14) {
        row.curves = {derived(cross ? cross_over_share : sub_ensemble_share)};
        row.ranges = Ranges::own;
        feeds = 1;
    } else if (sel == 13) {
        row.curves = {col(part, sub_emit::SUB_XRM), col(part, sub_emit::SUB_YRM),
                      col(Kind::Xemit, xemit::X_RMS), col(Kind::Yemit, yemit::Y_RMS)};  // mm
        feeds = 2;  // a full beam wider than the kept part may run off the top
    } else {
        row.curves = {col(part, sub_emit::CR_EMITX), col(part, sub_emit::CR_EMITY),
                      col(Kind::Xemit, xemit::NX_EMIT), col(Kind::Yemit, yemit::NY_EMIT)};  // pi mrad mm
    }
    st.ZMAX = st.YMAX = -1e10f;
    st.ZMIN = 1e10f;
    const Points p = read_along_z(s, st, N, row);
    const int NP = st.NP = p.NP;
    if (sel != 14) {
        for (std::size_t c = 0; c < feeds; ++c)
            for (int i = 0; i < NP; ++i) st.YMAX = std::max(st.YMAX, p.curve(static_cast<int>(c))[i]);
        out_mami(s, st, NP, 2, p.curve(0), p.curve(1));  // of the reduced beam
    }
    st.YMAX = upper_limit(st.YMAX);
    st.YMIN = 0.0f;
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);

    const char* y = "charge %";
    const char* top = cross ? "Charge of cross over particles" : "Charge of sub-ensemble";
    if (sel == 12) {
        y = cross ? "\\fim mm " : kEmit;
        top = cross ? "Emittance with and without cross over particles" : "Sub-ensemble emittance";
    } else if (sel == 13) {
        y = cross ? "\\gs\\fix \\gs\\fiy \\fimrad mm " : "\\gs\\fix \\gs\\fiy \\fi mm ";
        top = cross ? "beam size without cross over particles" : "Beam size of sub-ensemble";
    }
    {
        DrawBracket bracket(s.pg);
        Graphics& pg = s.pg;
        open_frame(s, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, {kZ, y, top});
        if (sel == 14) {
            pg.pgsci(1);
            pg.pgline(NP, p.Z.data(), p.curve(0));
        } else {
            poly_line(s, NP, NP, p.Z.data(), p.Y.data(), 1, 4);
        }
    }
    if (s.logo.WITH_GEOMETRY) draw_overlay(s, Overlay::upper, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX);
    page_foot(s, false);
}

}  // namespace viewer
