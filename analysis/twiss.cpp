// Twiss functions, phase advance and coherence length from the beam data.
#include "analysis/twiss.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "core/statistics.hpp"
#include "plot/frame.hpp"

namespace viewer {

namespace {

constexpr float kDegree = 57.29578f;            // degrees in a radian
constexpr float kInverseRestMass = 1.9569472f;  // 1/MeV: kinetic energy to gamma - 1 of an electron

// The phase advance of one plane: the previous entry plus the trapezoid
// over 1/beta; `inverse` holds 1/beta of the last step that had one.
float advance(float previous, float dz, float beta, float& inverse) {
    if (!(beta > 0.0f)) return previous;
    const float R = 1.0f / beta;
    const float next = previous + dz * (inverse + R) / 2.0f;
    inverse = R;
    return next;
}

}  // namespace

TwoCurves twiss_functions(std::span<const BeamStep> steps, TwissFunction f, float& GAMBET) {
    TwoCurves c;
    c.Z.reserve(steps.size());
    c.X.reserve(steps.size());
    c.Y.reserve(steps.size());
    float X_OLD = 0.0f, Y_OLD = 0.0f;  // 1/m
    for (const BeamStep& b : steps) {
        if (b.E_MEAN > 0.0f) {
            const float g = kInverseRestMass * b.E_MEAN + 1.0f;
            GAMBET = std::sqrt(g * g - 1.0f);
        }
        // mm^2 over pi mrad mm is m.
        float tx = b.NX_EMIT > 0.0f ? b.X_RMS * b.X_RMS * GAMBET / b.NX_EMIT : 0.0f;
        float ty = b.NY_EMIT > 0.0f ? b.Y_RMS * b.Y_RMS * GAMBET / b.NY_EMIT : 0.0f;
        if (f == TwissFunction::alpha) {
            tx = b.X_RMS > 0.0f ? -b.CO_XPX * tx / b.X_RMS : 0.0f;
            ty = b.Y_RMS > 0.0f ? -b.CO_YPY * ty / b.Y_RMS : 0.0f;
        } else if (f == TwissFunction::phase_advance) {
            if (c.Z.empty()) {
                tx = ty = 0.0f;
                X_OLD = Y_OLD = 0.0f;  // the first interval is integrated from 0
            } else {
                const float dz = b.Z_MEAN - c.Z.back();
                tx = advance(c.X.back(), dz, tx, X_OLD);
                ty = advance(c.Y.back(), dz, ty, Y_OLD);
            }
        }
        c.Z.push_back(b.Z_MEAN);
        c.X.push_back(tx);
        c.Y.push_back(ty);
    }
    if (f == TwissFunction::phase_advance) {
        for (float& v : c.X) v *= kDegree;
        for (float& v : c.Y) v *= kDegree;
    }
    return c;
}

TwoCurves coherence_lengths(std::span<const BeamStep> steps) {
    TwoCurves c;
    for (const BeamStep& b : steps) {
        c.Z.push_back(b.Z_MEAN);
        c.X.push_back(0.38f * b.X_RMS / b.NX_EMIT);
        c.Y.push_back(0.38f * b.Y_RMS / b.NY_EMIT);
    }
    return c;
}

namespace {

const std::vector<Kind> kBeamTables = {Kind::Xemit, Kind::Yemit, Kind::Zemit};

// The steps of the three tables in lock step inside the zoom window, up to
// N of them; a step with a vanishing positive emittance in either plane is
// left out in both.
std::vector<BeamStep> read_steps(Session& s, int N) {
    std::vector<BeamStep> steps;
    const Fexist& e = s.fexist;
    if (!e.Xemit_EXISTS || !e.Yemit_EXISTS || !e.Zemit_EXISTS || N < 1) return steps;
    steps.reserve(static_cast<std::size_t>(std::min(N, PKT)));
    RunRecord x(run_kind(Kind::Xemit)), y(run_kind(Kind::Yemit)), z(run_kind(Kind::Zemit));
    const bool zoom = s.logo.ZOOM_Z;
    const float lower = s.graph.Z_LOWER, upper = s.graph.Z_UPPER;
    while (x.read(s.unit(x.kind().unit)) && y.read(s.unit(y.kind().unit)) && z.read(s.unit(z.kind().unit))) {
        const float Z_MEAN = z.real(zemit::Z_MEAN);
        if (zoom && (lower > Z_MEAN || Z_MEAN > upper)) continue;
        const float NX = x.real(xemit::NX_EMIT), NY = y.real(yemit::NY_EMIT);
        if ((NX > 0.0f && NX < kSmallestEmittance) || (NY > 0.0f && NY < kSmallestEmittance)) continue;
        steps.push_back({Z_MEAN, x.real(xemit::X_RMS), NX, x.real(xemit::CO_XPX), y.real(yemit::Y_RMS), NY,
                         y.real(yemit::CO_YPY), z.real(zemit::E_MEAN)});
        if (static_cast<int>(steps.size()) == N) break;
    }
    return steps;
}

struct TwoCurvePlot {
    int plot;
    YminRule ymin;
    AxisLabels labels;
    std::array<const char*, 2> keys;  // null: no legend
};

// Statistics (unless a fit follows), frame, both curves, the fit of both,
// the mirrored outline and, last, the key.
void draw_two_curves(Session& s, const TwoCurves& c, const TwoCurvePlot& p) {
    PlotState& st = s.plot(p.plot);
    const int NP = static_cast<int>(c.Z.size());
    for (int i = 0; i < NP; ++i) {
        const auto k = static_cast<std::size_t>(i);
        mami(st, 1, i + 1, c.Z[k], c.X[k]);
        mami(st, 2, i + 1, c.Z[k], c.Y[k]);
    }
    st.NP = NP;
    if (!s.logo.FIT_REQUESTED) out_mami(s, st, NP, 2, c.X.data(), c.Y.data());
    st.YMAX = upper_limit(std::max(st.MAX_A[0], st.MAX_A[1]));
    st.YMIN = lower_limit(p.ymin, std::min(st.MIN_A[0], st.MIN_A[1]));
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);

    Graphics& pg = s.pg;
    {
        DrawBracket bracket(pg);
        open_frame(s, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, {p.labels.x, p.labels.y, p.labels.top});
        pg.pgsci(1);
        pg.pgline(NP, c.Z.data(), c.X.data());
        if (s.logo.COLOUR)
            pg.pgsci(2);
        else
            pg.pgsls(2);
        pg.pgline(NP, c.Z.data(), c.Y.data());
        pg.pgsls(1);
    }
    fit_hook(s, st.ID_F, NP, c.Z.data(), {c.X.data(), c.Y.data()});
    if (s.logo.WITH_GEOMETRY) draw_overlay(s, Overlay::mirrored, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX);
    if (p.keys[0]) {
        const std::string text[] = {p.keys[0], p.keys[1]};
        const int LEG_NUM[] = {1, 2};
        legend(s, text, LEG_NUM, 0.86f, LegendPos::TR);
    }
    page_foot(s, false);
}

}  // namespace

void pgex212(Session& s, int N) {
    RewindOnExit rewind(s, kBeamTables);
    const std::vector<BeamStep> steps = read_steps(s, N);
    switch (s.window.SELECTION) {
        case 13:
            draw_two_curves(s, twiss_functions(steps, TwissFunction::alpha, s.page2.GAMBET),
                            {212,
                             YminRule::margin,
                             {"\\fiz m", "\\ga ", "\\ga functions"},
                             {"  \\ga\\dx", "  \\ga\\dy"}});
            break;
        case 14:
            draw_two_curves(s, twiss_functions(steps, TwissFunction::phase_advance, s.page2.GAMBET),
                            {212,
                             YminRule::zero,
                             {"\\fiz m", "\\gf deg", "\\fi Phase advance"},
                             {"  \\gf\\dx", "  \\gf\\dy"}});
            break;
        default:
            draw_two_curves(s, twiss_functions(steps, TwissFunction::beta, s.page2.GAMBET),
                            {212,
                             YminRule::zero,
                             {"\\fiz m", "\\gb m ", "\\gb functions"},
                             {"  \\gb\\dx", "  \\gb\\dy"}});
            break;
    }
}

void pgex215(Session& s, int N) {
    RewindOnExit rewind(s, kBeamTables);
    draw_two_curves(
        s, coherence_lengths(read_steps(s, N)),
        {215, YminRule::zero, {"\\fiz m", "\\gl nm ", "\\fi coherence length"}, {nullptr, nullptr}});
}

}  // namespace viewer
