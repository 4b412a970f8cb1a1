// Phase scans: energy, its slope and the compression against phase, one
// curve a scan, told apart by a legend from two scans on.
#include "analysis/phase_scans.hpp"

#include <algorithm>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "core/statistics.hpp"
#include "plot/frame.hpp"

namespace viewer {

ScanCounter::ScanCounter(int NSCAN, int NPHASE, ScanOrdinate what, PhaseZoom zoom)
    : what_(what), zoom_(zoom) {
    t_.NSCAN = NSCAN;
    t_.NPHASE = NPHASE;
    // The curves grow a scan at a time: a table of three scans does not
    // clear room for five hundred on every draw.
    t_.Z.assign(static_cast<std::size_t>(NPHASE), 0.0f);
    t_.J = 1;
}

void ScanCounter::close_block() {
    ++t_.J;
    K_OLD_ = K_;
    K_ = 0;
}

bool ScanCounter::take(const PScanRow& r) {
    if (zoom_.on && (r.PHASE < zoom_.lower || r.PHASE > zoom_.upper)) {
        // Outside the window the 360 record still ends its scan.
        if (r.PHASE == 360.0f) close_block();
        return true;
    }
    if (t_.J > t_.NSCAN || K_ >= t_.NPHASE) return false;  // the table is full

    float v = 0.0f;
    switch (what_) {
        case ScanOrdinate::energy:
            v = r.E_MEAN;
            break;
        case ScanOrdinate::slope:
            // Carried across scans, so a scan's first point is the slope
            // from the last record of the scan before.
            v = E0_ != 0.0f ? (r.E_MEAN - E0_) / (r.PHASE - PHI0_) : 0.0f;
            E0_ = r.E_MEAN;
            PHI0_ = r.PHASE;
            break;
        case ScanOrdinate::compression:
            v = r.COMPRESS;
            break;
        case ScanOrdinate::time_compression:
            v = r.COMPRESS * r.BET_RAT;
            break;
    }
    ++K_;
    const std::size_t at = static_cast<std::size_t>(t_.J - 1) * static_cast<std::size_t>(t_.NPHASE) +
                           static_cast<std::size_t>(K_ - 1);
    if (t_.DAT.size() <= at) {
        const std::size_t cells = static_cast<std::size_t>(t_.J) * static_cast<std::size_t>(t_.NPHASE);
        t_.DAT.resize(cells, 0.0f);
        if (what_ == ScanOrdinate::energy) t_.DATZ.resize(cells, 0.0f);
    }
    t_.Z[static_cast<std::size_t>(K_ - 1)] = r.PHASE;
    t_.DAT[at] = v;
    if (!t_.DATZ.empty()) t_.DATZ[at] = r.PHASE;
    if (r.PHASE > t_.ZMAX) t_.ZMAX = r.PHASE;
    if (r.PHASE < t_.ZMIN) t_.ZMIN = r.PHASE;
    if (v > t_.EMAX) t_.EMAX = v;
    if (v < t_.EMIN) t_.EMIN = v;

    if (I_ == 360 * t_.J) close_block();  // a full scan is 360 records, whatever NPHASE says
    ++I_;
    return static_cast<long long>(I_) <= static_cast<long long>(t_.NSCAN) * t_.NPHASE;
}

ScanTable ScanCounter::finish() && {
    if (K_ != 0) {
        t_.NP = K_;
    } else {
        t_.NP = K_OLD_;
        --t_.J;
    }
    return std::move(t_);
}

ScanTable count_scans(std::span<const PScanRow> rows, ScanOrdinate what, PhaseZoom zoom, int NSCAN,
                      int NPHASE) {
    ScanCounter c(NSCAN, NPHASE, what, zoom);
    for (const PScanRow& r : rows)
        if (!c.take(r)) break;
    return std::move(c).finish();
}

namespace {

// One of the four plots: what it shows and how its ordinate range opens.
struct ScanPlot {
    int plot;
    ScanOrdinate what;
    const char* ylabel;
    const char* top;
};

ScanTable read_scans(Session& s, int NSCAN, int NPHASE, ScanOrdinate what) {
    if (!s.fexist.PScan_EXISTS || NSCAN < 1 || NPHASE < 1) {
        ScanTable none;
        none.NSCAN = std::max(NSCAN, 0);
        none.NPHASE = std::max(NPHASE, 0);
        return none;
    }
    const RunKind& kind = run_kind(Kind::PScan);
    const PhaseZoom zoom{s.logo.ZOOM_PHASE, s.graph.PHASE_LOWER, s.graph.PHASE_UPPER};
    ScanCounter counter(NSCAN, NPHASE, what, zoom);
    RunRecord rec(kind);
    TableFile& f = s.unit(kind.unit);
    while (rec.read(f))
        if (!counter.take({rec.real(pscan::PHASE), rec.real(pscan::E_MEAN), rec.real(pscan::COMPRESS),
                           rec.real(pscan::BET_RAT)}))
            break;
    return std::move(counter).finish();
}

// "Scan No." and the scan number in two digits.
std::string scan_key(int I) {
    if (I > 99) return "Scan No.**";
    return std::string("Scan No.") + static_cast<char>('0' + I / 10) + static_cast<char>('0' + I % 10);
}

void scan_plot(Session& s, int NSCAN, int NPHASE, const ScanPlot& p) {
    PlotState& st = s.plot(p.plot);
    RewindOnExit rewind(s, {Kind::PScan});
    const ScanTable t = read_scans(s, NSCAN, NPHASE, p.what);

    float EMAX = t.EMAX, EMIN = t.EMIN;
    switch (p.what) {
        case ScanOrdinate::energy:
            EMAX = upper_limit(EMAX);
            EMIN = 0.0f;
            break;
        case ScanOrdinate::slope:
        case ScanOrdinate::compression:
            EMAX = upper_limit(EMAX);
            EMIN = lower_limit(YminRule::margin, EMIN);
            break;
        case ScanOrdinate::time_compression: {
            const float span = EMAX - EMIN;
            EMAX += 0.1f * span;
            EMIN -= 0.1f * span;
            break;
        }
    }
    st.NP = t.NP;
    st.ZMAX = t.ZMAX;
    st.ZMIN = t.ZMIN;
    st.YMAX = EMAX;
    st.YMIN = EMIN;
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);

    Graphics& pg = s.pg;
    pg.pgbbuf();
    pg.pgsave();
    open_frame(s, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, {"\\fiphase deg", p.ylabel, p.top});
    if (p.what == ScanOrdinate::energy) {
        // Each scan on its own phases, in its colour on any device.
        for (int I = 1; I <= t.J; ++I) {
            pg.pgsci(I);
            pg.pgline(t.NP, t.phases(I), t.row(I));
        }
    } else {
        poly_line(s, t.NPHASE, t.NP, t.Z.data(), t.DAT.data(), 1, t.J);
    }
    std::vector<std::string> keys;
    std::vector<int> LEG_NUM;
    for (int I = 1; I <= t.J; ++I) {
        keys.push_back(scan_key(I));
        LEG_NUM.push_back(I);
    }
    if (t.J >= 2) legend(s, keys, LEG_NUM, 0.81f, LegendPos::TR);
    pg.pgunsa();
    pg.pgebuf();

    if (p.what == ScanOrdinate::energy) {
        pg.pgupdt();
        // The first scan's energies against the last scan's phases.
        fit_hook(s, st.ID_F, t.NP, t.Z.data(), {t.DAT.data()});
    }
    page_foot(s, false);
}

}  // namespace

void pgex201(Session& s, int NSCAN, int NPHASE) {
    scan_plot(s, NSCAN, NPHASE, {201, ScanOrdinate::energy, "\\fiE\\dkin\\u MeV", "Energy vs. Phase"});
}

void pgex202(Session& s, int NSCAN, int NPHASE) {
    scan_plot(s, NSCAN, NPHASE, {202, ScanOrdinate::slope, "\\fidE/dz MeV/deg", "dE/dz vs. Phase"});
}

void pgex203(Session& s, int NSCAN, int NPHASE) {
    scan_plot(s, NSCAN, NPHASE,
              {203, ScanOrdinate::compression, "\\gs\\dz\\u/\\gs\\dz0\\u", "Compression factor vs. Phase"});
}

void pgex204(Session& s, int NSCAN, int NPHASE) {
    scan_plot(s, NSCAN, NPHASE,
              {204, ScanOrdinate::time_compression, "\\gs\\dz\\u\\gb\\d0\\u/\\gs\\dz0\\u\\gb",
               "Compression factor vs. Phase"});
}

}  // namespace viewer
