// The reference particle along z, from the free records of .ref: momentum,
// its change, the off-axis trajectory in two panels, the Larmor angle.
#include "evolution/frame.hpp"
#include "evolution/geometry.hpp"
#include "evolution/plots.hpp"
#include "evolution/statistics.hpp"

namespace viewer {

namespace {
const char* const kZ = "\\fiz m";
}

void pgex10(Session& s, int N) {
    plot_along_z(s, N, {.plot = 10,
                        .tables = {table::ref},
                        .curves = {col(table::ref, reference::ENE)},
                        .ymin = YminRule::clamped,
                        .labels = {kZ, "\\fip\\dz  MeV/c", "longitudinal momentum of reference particle"},
                        .overlay = Overlay::mirrored,
                        .title_in_overview = true});
}

void pgex11(Session& s, int N) {
    plot_along_z(s, N, {.plot = 11,
                        .tables = {table::ref},
                        .curves = {col(table::ref, reference::GRAD)},
                        .ymin = YminRule::margin,
                        .labels = {kZ, "\\fidp\\dz\\u/dz MeV/c/m", "momentum change of reference particle"},
                        .overlay = Overlay::mirrored,
                        .title_in_overview = true});
}

void pgex13(Session& s, int N) {
    plot_along_z(s, N, {.plot = 13,
                        .tables = {table::ref},
                        .curves = {col(table::ref, reference::LARMOR)},
                        .ymin = YminRule::margin,
                        .labels = {kZ, "\\fiLarmor angle  rad", "Larmor angle"},
                        .overlay = Overlay::mirrored,
                        .title_in_overview = true});
}

// Horizontal offset above, vertical below, each panel with its own ordinate
// range; the dispatch has set the two panels. No fit is offered here.
void pgex12(Session& s, int N) {
    PlotState& st = s.plot(12);
    const TableKind tables[] = {table::ref};
    const Curve curves[] = {col(table::ref, reference::XX), col(table::ref, reference::YY)};
    RewindOnExit rewind(s, tables);

    // Without a point the frames open on this huge falling range, which
    // says plainly that there was nothing to show.
    st.ZMAX = st.XMAX = st.YMAX = -1e10f;
    st.ZMIN = st.XMIN = st.YMIN = 1e10f;

    Points p = read_along_z(s, st, N, tables, curves);
    st.NP = p.NP;
    out_mami(s.con.out, st, p.NP, 2, p.Y1.data(), p.Y2.data());

    st.XMAX = upper_limit(st.MAX_A[0]);
    st.XMIN = lower_limit(YminRule::margin, st.MIN_A[0]);
    st.YMAX = upper_limit(st.MAX_A[1]);
    st.YMIN = lower_limit(YminRule::margin, st.MIN_A[1]);
    check(st.ZMAX, st.ZMIN);
    check(st.XMAX, st.XMIN);
    check(st.YMAX, st.YMIN);

    Graphics& pg = s.pg;
    pg.pgbbuf();
    pg.pgsave();
    pg.pgsci(1);
    pg.pgenv(st.ZMIN, st.ZMAX, st.XMIN, st.XMAX, 0, 1);
    pg.pglab(kZ, "\\fix mm", "off-axis trajectory of reference particle (w.o. space charge)");
    pg.pgsci(1);
    pg.pgline(p.NP, p.Z.data(), p.Y1.data());
    pg.pgenv(st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, 0, 1);
    pg.pglab(kZ, "\\fiy mm", "");
    pg.pgsci(1);
    pg.pgline(p.NP, p.Z.data(), p.Y2.data());
    pg.pgunsa();
    pg.pgebuf();
    pg.pgupdt();

    if (s.logo.WITH_GEOMETRY) {
        ensure_geometry(s);
        overlay_two_panels(s, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX);
    }

    page_foot(s, true);
}

}  // namespace viewer
