// Coupling from the sigma matrix along z: the four-dimensional emittance,
// the coupling emittance, angular momentum and coupling angle, the trace.
#include <algorithm>
#include <cmath>
#include <vector>

#include "analysis/plots.hpp"
#include "analysis/sigma_matrix.hpp"
#include "core/fortran_format.hpp"
#include "core/statistics.hpp"
#include "plot/frame.hpp"

namespace viewer {

void pgex501(Session& s, int N, int SELECTION) {
    PlotState& st = s.plot(501);
    const RunKind& kind = run_kind(Kind::Sigma);
    RewindOnExit rewind(s, {Kind::Sigma});

    std::vector<float> Z, Y1, Y2;
    int I = 1;
    if (s.fexist.Sigma_EXISTS && N >= 1) {
        RunRecord rec(kind);
        const double lower = s.graph.Z_LOWER, upper = s.graph.Z_UPPER;  // compared in 64 bits
        std::array<double, 21> upper_triangle{};
        while (rec.read(s.unit(kind.unit))) {
            const double Z_MEAN = rec.real64(0);
            if (s.logo.ZOOM_Z && (lower > Z_MEAN || Z_MEAN > upper)) continue;
            for (std::size_t k = 0; k < upper_triangle.size(); ++k)
                upper_triangle[k] = rec.real64(static_cast<int>(k) + 2);
            const CouplingPoint p = coupling_point(sigma_of_upper(upper_triangle), SELECTION);
            if (const CouplingLabels* l = coupling_labels(SELECTION)) {
                s.TWICE = l->TWICE;
                s.STRG1 = pad(l->STRG1, 40);
                s.STRG2 = pad(l->STRG2, 40);
            }
            Z.push_back(static_cast<float>(Z_MEAN));
            Y1.push_back(p.Y1);
            Y2.push_back(p.Y2);
            // The second curve also when there is none, so that 0 takes part in the range.
            mami(st, 1, I, Z.back(), p.Y1);
            mami(st, 2, I, Z.back(), p.Y2);
            if (I++ == N) break;
        }
    }
    const int NP = st.NP = I - 1;
    const bool TWICE = s.TWICE;
    out_mami(s, st, NP, TWICE ? 2 : 1, Y1.data(), Y2.data());

    st.YMAX = std::max(st.MAX_A[0], st.MAX_A[1]);
    st.YMIN = SELECTION == 1 ? 0.0f : std::min(st.MIN_A[0], st.MIN_A[1]);
    const float M = std::fabs(0.2f * (st.YMAX - st.YMIN));  // from the span, unlike most plots
    st.YMAX = st.YMAX + M;
    if (st.YMIN != 0.0f) st.YMIN = st.YMIN - M;
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);
    {
        DrawBracket bracket(s.pg);
        Graphics& pg = s.pg;
        open_frame(s, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, {"\\fiz m", s.STRG1, s.STRG2});
        pg.pgsci(1);
        pg.pgline(NP, Z.data(), Y1.data());
        if (TWICE) {
            set_curve_style(s, 2);
            pg.pgline(NP, Z.data(), Y2.data());
            pg.pgsls(1);
        }
    }
    if (TWICE)
        fit_hook(s, st.ID_F, NP, Z.data(), {Y1.data(), Y2.data()});
    else
        fit_hook(s, st.ID_F, NP, Z.data(), {Y1.data()});
    if (s.logo.WITH_GEOMETRY) draw_overlay(s, Overlay::upper, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX);
    page_foot(s, false);
}

}  // namespace viewer
