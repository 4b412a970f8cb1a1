// The bunch cut into slices along t or z (current, slice emittances, mean
// energy and spread), and the sheet of nine panels of one file.
#include <algorithm>
#include <cmath>

#include "core/statistics.hpp"
#include "particles/fills.hpp"
#include "plot/draw.hpp"
#include "plot/page.hpp"

namespace viewer {
namespace particle_views {

namespace {

constexpr double kLight = 0.299792458;  // m/ns

const char* axis_label(bool along_z) {
    return along_z ? "z [mm]" : "t [ps]";
}

// The nine panels of the sheet, filled in one pass.
struct SheetFill {
    std::vector<PlaneFill> planes;
    HistogramFill hx, he;
    SliceFill slices;
    void add(const Particle& q) {
        for (PlaneFill& p : planes) p.add(q);
        hx.add(q);
        he.add(q);
        slices.add(q);
    }
    std::size_t bytes() const {
        std::size_t b = hx.bytes() + he.bytes() + slices.bytes();
        for (const PlaneFill& p : planes) b += p.bytes();
        return b;
    }
    void merge(const SheetFill& o) {
        for (std::size_t k = 0; k < planes.size(); ++k) planes[k].merge(o.planes[k]);
        hx.merge(o.hx);
        he.merge(o.he);
        slices.merge(o.slices);
    }
};

}  // namespace

SliceFill::SliceFill(const ParticleScan& sc, int n, bool along_z) : sc_(sc), z_(along_z) {
    const auto [lo, hi] = sc.active[static_cast<std::size_t>(along_z ? Coord::z : Coord::t)];
    const int slices = std::clamp(n, 1, 10000);
    lo_ = lo;
    width_ = hi > lo ? (hi - lo) / slices : 1.0;
    m_.assign(static_cast<std::size_t>(slices), BunchMoments(sc.reference));
}

void SliceFill::add(const Particle& q) {
    if (!q.active()) return;
    const double v = sc_.value(z_ ? Coord::z : Coord::t, q);
    const auto k =
        static_cast<std::size_t>(std::clamp((v - lo_) / width_, 0.0, static_cast<double>(m_.size() - 1)));
    m_[k].add(q);
}

void SliceFill::merge(const SliceFill& o) {
    for (std::size_t k = 0; k < m_.size(); ++k) m_[k].merge(o.m_[k]);
}

std::vector<SliceStats> SliceFill::result() const {
    std::vector<SliceStats> out;
    // the time a slice takes to pass: its length over the speed of the bunch
    const double duration =
        z_ ? width_ * 1e-3 / (std::max(sc_.stats.beta_avg, 1e-9) * kLight) : width_ * 1e-3;
    for (std::size_t k = 0; k < m_.size(); ++k) {
        const BunchStats st = m_[k].stats();
        SliceStats s;
        s.at = lo_ + (static_cast<double>(k) + 0.5) * width_;
        s.particles = st.counts.active;
        s.charge = st.counts.charge;
        s.current = std::abs(s.charge) / duration;
        if (s.particles > 0) {
            s.emit_x = st.x.emit_n;
            s.emit_y = st.y.emit_n;
            s.e_kin = st.e_kin;
            s.de_rms = st.de_rms;
        }
        out.push_back(s);
    }
    return out;
}

void draw_slice_panel(Session& s, const std::vector<SliceStats>& sl, bool along_z, SlicePanel what) {
    Graphics& pg = s.pg;
    std::vector<float> x, y1, y2;
    for (const SliceStats& k : sl) {
        // two particles or fewer make no spread worth a point
        if (what != SlicePanel::current && k.particles < 3) continue;
        x.push_back(static_cast<float>(k.at));
        switch (what) {
            case SlicePanel::current:
                y1.push_back(static_cast<float>(k.current));
                break;
            case SlicePanel::emittance:
                y1.push_back(static_cast<float>(k.emit_x));
                y2.push_back(static_cast<float>(k.emit_y));
                break;
            case SlicePanel::energy:
                y1.push_back(static_cast<float>(k.e_kin));
                break;
            case SlicePanel::spread:
                y1.push_back(static_cast<float>(k.de_rms));
                break;
        }
    }
    static constexpr const char* kLabels[][2] = {{"I [A]", "current"},
                                                 {"\\ge\\dn\\u [\\gp mrad mm]", "slice emittance x, y"},
                                                 {"E\\dkin\\u [MeV]", "slice energy"},
                                                 {"\\gDE\\drms\\u [keV]", "slice energy spread"}};
    const auto& label = kLabels[static_cast<int>(what)];
    float x1 = sl.empty() ? 0.0f : static_cast<float>(sl.front().at), x2 = x1;
    if (!sl.empty()) x2 = static_cast<float>(sl.back().at);
    float lo = NAN, hi = NAN;
    for (const auto* v : {&y1, &y2})
        for (float a : *v) {
            take_min(lo, a);
            take_max(hi, a);
        }
    if (!std::isfinite(lo)) lo = hi = 0;
    if (what != SlicePanel::energy) lo = 0;
    hi += 0.1f * (hi - lo);
    check(hi, lo);
    check(x2, x1);
    pg.pgsci(1);
    pg.pgenv(x1, x2, lo, hi, 0, 0);
    pg.pglab(axis_label(along_z), label[0], label[1]);
    set_curve_style(s, 1);
    pg.pgline(static_cast<int>(x.size()), x.data(), y1.data());
    if (!y2.empty()) {
        set_curve_style(s, 2);
        pg.pgline(static_cast<int>(x.size()), x.data(), y2.data());
    }
    pg.pgsci(1);
    pg.pgsls(1);
}

ViewData slice_data(const std::vector<SliceStats>& sl, bool along_z) {
    ViewData d;
    d.view = "slices";
    d.header = {along_z ? "z [mm]" : "t [ps]", "particles",   "charge [nC]", "I [A]", "NX_EMIT [pi mrad mm]",
                "NY_EMIT [pi mrad mm]",        "E_KIN [MeV]", "DE_RMS [keV]"};
    d.columns.resize(d.header.size());
    for (const SliceStats& k : sl) {
        const double row[] = {
            k.at,    static_cast<double>(k.particles), k.charge, k.current, k.emit_x, k.emit_y, k.e_kin,
            k.de_rms};
        for (std::size_t c = 0; c < d.columns.size(); ++c) d.columns[c].push_back(row[c]);
    }
    return d;
}

}  // namespace particle_views

std::vector<SliceStats> slice_bunch(ParticleReader& f, const ParticleScan& scan, int n, bool along_z) {
    particle_views::SliceFill fill(scan, n, along_z);
    particle_views::fill_from(f, fill);
    return fill.result();
}

ViewData draw_slices(Session& s, ParticleReader& f, const ParticleScan& scan, const ViewOptions& o) {
    using namespace particle_views;
    const std::vector<SliceStats> sl = slice_bunch(f, scan, o.slices, o.slice_z);
    DrawBracket bracket(s.pg);
    c_pgsubp(s, 2, 2);
    for (SlicePanel p : {SlicePanel::current, SlicePanel::emittance, SlicePanel::energy, SlicePanel::spread})
        draw_slice_panel(s, sl, o.slice_z, p);
    title(s);
    return slice_data(sl, o.slice_z);
}

ViewData draw_sheet(Session& s, ParticleReader& f, const ParticleScan& scan, const ViewOptions& o) {
    using namespace particle_views;
    ViewOptions whole = o;  // the window belongs to one plane, not to nine
    whole.xwin.reset();
    whole.ywin.reset();
    SheetFill fill{{{scan, {Coord::x, Coord::xp}, whole},
                    {scan, {Coord::y, Coord::yp}, whole},
                    {scan, {Coord::z, Coord::dE}, whole},
                    {scan, {Coord::x, Coord::y}, whole}},
                   {scan, Coord::x, whole},
                   {scan, Coord::E, whole},
                   {scan, o.slices, o.slice_z}};
    fill_from(f, fill);
    const auto& [planes, hx, he, slices] = fill;
    const std::vector<SliceStats> sl = slices.result();
    DrawBracket bracket(s.pg);
    c_pgsubp(s, 3, 3);
    for (const PlaneFill& p : planes) p.draw(s);
    draw_slice_panel(s, sl, o.slice_z, SlicePanel::current);
    draw_slice_panel(s, sl, o.slice_z, SlicePanel::emittance);
    draw_slice_panel(s, sl, o.slice_z, SlicePanel::spread);
    hx.draw(s);
    he.draw(s);
    title(s);
    return slice_data(sl, o.slice_z);
}

}  // namespace viewer
