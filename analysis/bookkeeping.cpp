// Losses, energy deposition and beam loading as bars of line density
// between consecutive positions; the space-charge scaling factors, the
// scaling counter and the average time step of the tracker.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "core/statistics.hpp"
#include "plot/frame.hpp"

namespace viewer {

namespace {

const char* const kZ = "\\fiz m";

// The bars of one call: bar I (2..NP) spans left[I] to right[I] at height
// height[I]; entry 1 holds only the starting position in right[1].
struct Bars {
    std::vector<float> left, height, right;  // m, value per m, m; 1-based, entry 0 unused
    int NP = 0;                              // last entry in use
};

// Reads the bar table of field `V` of .LandF into `b`, folding each bar
// into the running statistics of `st`, and prints the statistics block.
Bars read_bars(Session& s, PlotState& st, int N, int V) {
    Bars b;
    const RunKind& kind = run_kind(Kind::LandF);
    int I = 1;
    if (s.fexist.LandF_EXISTS && N >= 1) {
        const auto size = static_cast<std::size_t>(N) + 1;
        b.left.assign(size, 0.0f);
        b.height.assign(size, 0.0f);
        b.right.assign(size, 0.0f);
        RunRecord r(kind);
        TableFile& f = s.unit(kind.unit);
        const float& Z_MEAN = r.real(landf::Z_MEAN);
        const bool zoom = s.logo.ZOOM_Z;
        const float lower = s.graph.Z_LOWER, upper = s.graph.Z_UPPER;
        bool found = false;
        while (r.read(f))
            if (!zoom || Z_MEAN >= lower) {
                found = true;
                break;
            }
        if (found) {
            b.right[1] = Z_MEAN;  // the start makes no bar
            I = 2;
            while (I <= N && r.read(f)) {
                if (zoom && Z_MEAN > upper) break;  // the first record past the window ends it
                const float before = b.right[static_cast<std::size_t>(I - 1)];
                if (Z_MEAN == before) continue;  // no bar of zero width; its value goes nowhere
                const auto k = static_cast<std::size_t>(I);
                b.left[k] = before;
                b.right[k] = Z_MEAN;
                b.height[k] = r.real(V) / (Z_MEAN - before);
                mami(st, 1, I - 1, b.left[k], b.height[k]);
                ++I;
            }
        }
    }
    b.NP = I - 1;
    if (b.NP >= 2) {
        // The right edge of the last bar into the range; its height counts twice.
        const auto last = static_cast<std::size_t>(b.NP);
        mami(st, 1, I, b.right[last], b.height[last]);
        out_mami(s, st, b.NP, 1, b.right.data() + 1, b.height.data() + 1);
    } else {
        // Without a bar there is nothing to report; the frame opens around
        // the starting position, or around 0 without one.
        out_mami(s, st, 0, 1, nullptr, nullptr);
        st.ZMAX = st.ZMIN = b.NP == 1 ? b.right[1] : 0.0f;
    }
    return b;
}

struct BarPlot {
    int plot;
    int field;      // of .LandF
    bool negative;  // the axis may run below 0
    const char* ylabel;
    const char* top;
    Overlay overlay;
};

void bar_plot(Session& s, int N, const BarPlot& p) {
    PlotState& st = s.plot(p.plot);
    RewindOnExit rewind(s, {Kind::LandF});
    const Bars b = read_bars(s, st, N, p.field);
    st.NP = b.NP;
    st.XMAX = upper_limit(st.MAX_A[0]);
    st.XMIN = p.negative ? lower_limit(YminRule::clamped, st.MIN_A[0]) : 0.0f;
    check(st.ZMAX, st.ZMIN);
    check(st.XMAX, st.XMIN);

    Graphics& pg = s.pg;
    {
        DrawBracket bracket(pg);
        open_frame(s, st.ZMIN, st.ZMAX, st.XMIN, st.XMAX, {kZ, p.ylabel, p.top});
        if (s.logo.COLOUR) {
            pg.pgsci(2);
            pg.pgsfs(1);
        } else {
            pg.pgsci(1);
            pg.pgsfs(3);
        }
        for (int I = 2; I <= b.NP; ++I) {
            const auto k = static_cast<std::size_t>(I);
            pg.pgrect(b.left[k], b.right[k], b.height[k], 0.0f);
        }
        pg.pgsci(1);
        pg.pgsfs(2);
        for (int I = 2; I <= b.NP; ++I) {
            const auto k = static_cast<std::size_t>(I);
            pg.pgrect(b.left[k], b.right[k], b.height[k], 0.0f);
        }
    }
    if (s.logo.WITH_GEOMETRY) draw_overlay(s, p.overlay, st.ZMIN, st.ZMAX, st.XMIN, st.XMAX);
    page_foot(s, false);
}

// What a .tcheck plot keeps of each record.
enum class Tcheck { factors, counter, time_step };

// The points of a .tcheck plot: Z and, curve after curve, NP values each.
struct TcheckPoints {
    std::vector<float> Z;  // m
    std::vector<float> Y;  // factors: five curves; otherwise one
    int NP = 0;
};

TcheckPoints read_tcheck(Session& s, PlotState& st, int N, Tcheck what) {
    TcheckPoints p;
    st.ZMAX = st.XMAX = -1e10f;
    st.ZMIN = st.XMIN = 1e10f;
    const RunKind& kind = run_kind(Kind::tcheck);
    if (!s.fexist.tcheck_EXISTS || N < 1) return p;
    std::vector<std::vector<float>> f(what == Tcheck::factors ? 5 : 1);
    RunRecord r(kind);
    TableFile& file = s.unit(kind.unit);
    const bool zoom = s.logo.ZOOM_Z;
    const float lower = s.graph.Z_LOWER, upper = s.graph.Z_UPPER;
    bool SET_CLOCK = true;
    float CLOCK_OLD = 0.0f;  // ns
    while (p.NP < N && r.read(file)) {
        if (r.real(tcheck::NR_R) == 0.0f) continue;  // no scaling data in this record
        const float ZMEAN = r.real(tcheck::ZMEAN);
        if (zoom && (ZMEAN < lower || ZMEAN > upper)) continue;
        const float CLOCK = r.real(tcheck::CLOCK);
        if (what == Tcheck::time_step && SET_CLOCK) {
            // A time step needs two clock readings.
            CLOCK_OLD = CLOCK;
            SET_CLOCK = false;
            continue;
        }
        switch (what) {
            case Tcheck::factors:
                for (int k = 0; k < 5; ++k) {
                    const float v = r.real(tcheck::NR_R + k);
                    f[static_cast<std::size_t>(k)].push_back(v);
                    st.XMAX = std::max(st.XMAX, v);
                    st.XMIN = std::min(st.XMIN, v);
                }
                break;
            case Tcheck::counter:
                f[0].push_back(static_cast<float>(r.integer(tcheck::S_COUNT)));
                st.XMAX = std::max(st.XMAX, f[0].back());
                break;
            case Tcheck::time_step:
                f[0].push_back((CLOCK - CLOCK_OLD) / (static_cast<float>(r.integer(tcheck::S_COUNT)) + 1.0f));
                CLOCK_OLD = CLOCK;
                st.XMAX = std::max(st.XMAX, f[0].back());
                break;
        }
        p.Z.push_back(ZMEAN);
        st.ZMAX = std::max(st.ZMAX, ZMEAN);
        st.ZMIN = std::min(st.ZMIN, ZMEAN);
        ++p.NP;
    }
    for (const auto& c : f) p.Y.insert(p.Y.end(), c.begin(), c.end());
    return p;
}

struct TcheckPlot {
    int plot;
    Tcheck what;
    const char* ylabel;
    const char* top;
    int symbol;  // of the marks; factors are lines
    Overlay overlay;
};

void tcheck_plot(Session& s, int N, const TcheckPlot& p) {
    PlotState& st = s.plot(p.plot);
    RewindOnExit rewind(s, {Kind::tcheck});
    const TcheckPoints pts = read_tcheck(s, st, N, p.what);
    st.NP = pts.NP;
    st.XMAX += std::fabs(0.05f * st.XMAX);
    st.XMIN = p.what == Tcheck::factors ? st.XMIN - std::fabs(0.05f * st.XMIN) : 0.0f;
    check(st.ZMAX, st.ZMIN);
    check(st.XMAX, st.XMIN);

    Graphics& pg = s.pg;
    {
        DrawBracket bracket(pg);
        open_frame(s, st.ZMIN, st.ZMAX, st.XMIN, st.XMAX, {kZ, p.ylabel, p.top});
        if (p.what == Tcheck::factors) {
            poly_line(s, pts.NP, pts.NP, pts.Z.data(), pts.Y.data(), 1, 5);
            static const char* const kKeys[] = {
                "(\\gs\\dr0\\u/\\gs\\dr\\u)\\unr(r)", "(\\gs\\dz0\\u/\\gs\\dz\\u)\\unr(z)",
                "(\\gg/\\gg\\d0\\u)\\unr(\\gg)", "(\\gs\\dr0\\u/\\gs\\dr\\u)\\unz(r)",
                "(\\gs\\dz0\\u\\gg/\\gs\\dz\\u\\gg\\d0\\u)\\unz(\\gg)"};
            const std::vector<std::string> text(std::begin(kKeys), std::end(kKeys));
            const int LEG_NUM[] = {1, 2, 3, 4, 5};
            legend(s, text, LEG_NUM, 0.77f, LegendPos::TR);
        } else {
            if (s.logo.COLOUR) pg.pgsci(4);
            pg.pgpt(pts.NP, pts.Z.data(), pts.Y.data(), p.symbol);
            pg.pgsci(1);
        }
    }
    if (s.logo.WITH_GEOMETRY) draw_overlay(s, p.overlay, st.ZMIN, st.ZMAX, st.XMIN, st.XMAX);
    page_foot(s, false);
}

}  // namespace

void pgex205(Session& s, int N) {
    bar_plot(s, N,
             {205, landf::PART_LOSS, false, "\\finumber of lost particles  m\\u-1\\d", "Particle loss vs. z",
              Overlay::upper});
}

void pgex206(Session& s, int N) {
    bar_plot(s, N,
             {206, landf::ENE_DEP, false, "\\fienergy deposition  J/m",
              "Energy deposition due to particle loss", Overlay::upper});
}

void pgex207(Session& s, int N) {
    bar_plot(s, N,
             {207, landf::BEAM_LOAD, true, "\\fibeam loading  J/m", "Energy transfer to the beam",
              Overlay::mirrored});
}

void pgex209(Session& s, int N) {
    tcheck_plot(s, N,
                {209, Tcheck::factors, "\\fiscaling factor ", "Scaling factors for space charge field", 0,
                 Overlay::mirrored});
}

void pgex210(Session& s, int N) {
    tcheck_plot(s, N,
                {210, Tcheck::counter, "\\fiscaling counter ", "Scaling counter between space charge field",
                 12, Overlay::upper});
}

void pgex211(Session& s, int N) {
    tcheck_plot(s, N,
                {211, Tcheck::time_step, "\\gDt avr. ns ", "averaged time step for space charge calculation",
                 5, Overlay::upper});
}

}  // namespace viewer
