// The coordinates of the particle views, the first pass over a file, and
// its statistics block.
#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

#include "core/fortran_format.hpp"
#include "core/statistics.hpp"
#include "particles/fills.hpp"

namespace viewer {

namespace {

constexpr CoordSpec kSpecs[kCoords] = {
    {Coord::x, "x", "x [mm]", "mm"},
    {Coord::y, "y", "y [mm]", "mm"},
    {Coord::z, "z", "z [mm]", "mm"},
    {Coord::xp, "xp", "x' [mrad]", "mrad"},
    {Coord::yp, "yp", "y' [mrad]", "mrad"},
    {Coord::px, "px", "p\\dx\\u [MeV/c]", "MeV/c"},
    {Coord::py, "py", "p\\dy\\u [MeV/c]", "MeV/c"},
    {Coord::pz, "pz", "p\\dz\\u [MeV/c]", "MeV/c"},
    {Coord::E, "E", "E\\dkin\\u [MeV]", "MeV"},
    {Coord::dE, "dE", "\\gDE [keV]", "keV"},
    {Coord::t, "t", "t [ps]", "ps"},
};

std::size_t at(Coord c) {
    return static_cast<std::size_t>(c);
}

// What the first pass keeps of a coordinate before <pz> and <E> are known:
// px, py and E stand in for xp, yp and dE, which follow from them linearly.
double raw(Coord c, const Particle& p, const ParticleScan& sc) {
    switch (c) {
        case Coord::x:
            return p.x * 1e3;
        case Coord::y:
            return p.y * 1e3;
        case Coord::z:
            return (p.z - sc.ref_z) * 1e3;
        case Coord::xp:
        case Coord::px:
            return p.px * 1e-6;
        case Coord::yp:
        case Coord::py:
            return p.py * 1e-6;
        case Coord::pz:
            return p.pz * 1e-6;
        case Coord::E:
        case Coord::dE:
            return p.kinetic_ev() * 1e-6;
        case Coord::t:
            return (p.clock - sc.ref_clock) * 1e3;
    }
    return 0;
}

double finish(Coord c, double v, const BunchStats& s) {
    switch (c) {
        case Coord::xp:
        case Coord::yp:
            return s.pz_avg != 0 ? v / s.pz_avg * 1e3 : 0;
        case Coord::dE:
            return (v - s.e_kin) * 1e3;
        default:
            return v;
    }
}

}  // namespace

const CoordSpec& spec_of(Coord c) {
    return kSpecs[at(c)];
}

std::optional<Coord> coord_named(std::string_view name) {
    for (const CoordSpec& s : kSpecs)
        if (name == s.name) return s.c;
    return std::nullopt;
}

std::string coord_names() {
    std::string out;
    for (const CoordSpec& s : kSpecs) out += (out.empty() ? "" : ", ") + std::string(s.name);
    return out;
}

std::optional<Plane> parse_plane(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const auto a = coord_named(text.substr(0, colon)), b = coord_named(text.substr(colon + 1));
    if (!a || !b) return std::nullopt;
    return Plane{*a, *b};
}

double ParticleScan::value(Coord c, const Particle& p) const {
    return finish(c, raw(c, p, *this), stats);
}

ParticleScan scan_particles(ParticleReader& f) {
    ParticleScan sc;
    const Particle& ref = f.reference();
    sc.reference = ref;
    sc.ref_z = ref.z;
    sc.ref_clock = ref.clock;
    sc.ref_e = ref.kinetic_ev();
    constexpr double inf = std::numeric_limits<double>::infinity();
    sc.active.fill({inf, -inf});
    sc.others.fill({inf, -inf});
    BunchMoments m(ref);
    particle_views::each_particle(f, [&](const Particle& p) {
        m.add(p);
        auto& r = p.active() ? sc.active : sc.others;
        for (int k = 0; k < kCoords; ++k) {
            const double v = raw(static_cast<Coord>(k), p, sc);
            auto& [lo, hi] = r[static_cast<std::size_t>(k)];
            lo = std::min(lo, v);
            hi = std::max(hi, v);
        }
    });
    sc.stats = m.stats();
    sc.cut_short = f.cut_short();
    if (sc.stats.counts.active == 0) throw ParticleError(f.name() + ": no active particle");
    for (auto* r : {&sc.active, &sc.others})
        for (int k = 0; k < kCoords; ++k) {
            auto& [lo, hi] = (*r)[static_cast<std::size_t>(k)];
            if (lo > hi) continue;  // none of these particles
            const double a = finish(static_cast<Coord>(k), lo, sc.stats);
            const double b = finish(static_cast<Coord>(k), hi, sc.stats);
            lo = std::min(a, b);
            hi = std::max(a, b);
        }
    return sc;
}

namespace particle_views {

std::pair<float, float> axis_range(const ParticleScan& sc, Coord c, const ViewOptions& o, bool vertical) {
    if (const auto& w = vertical ? o.ywin : o.xwin) return *w;
    auto [lo, hi] = sc.active[at(c)];
    if (o.lost && sc.others[at(c)].first <= sc.others[at(c)].second) {
        lo = std::min(lo, sc.others[at(c)].first);
        hi = std::max(hi, sc.others[at(c)].second);
    }
    const double margin = 0.05 * (hi - lo);
    float upper = static_cast<float>(hi + margin), lower = static_cast<float>(lo - margin);
    check(upper, lower);
    return {lower, upper};
}

}  // namespace particle_views

void print_particle_stats(std::ostream& out, const std::string& name, const ParticleScan& scan) {
    const BunchStats& s = scan.stats;
    const ParticleCounts& c = s.counts;
    auto row = [&](const char* what, double v) { out << "     " << pad(what, 34) << fmt_d(v) << "\n"; };
    auto pair = [&](const char* what, double x, double y) {
        out << "     " << pad(what, 34) << fmt_d(x) << "  " << fmt_d(y) << "\n";
    };
    out << "     particle file: " << name << "\n";
    row("z of the reference particle [m]:", s.z_ref);
    row("average z [m]:", s.z_avg);
    row("average clock [ns]:", s.clock_avg);
    out << "     particles: " << fmt_i(c.total, 9) << "     active: " << fmt_i(c.active, 9)
        << "     probes: " << fmt_i(c.probes, 9) << "\n";
    out << "     not yet emitted: " << fmt_i(c.not_emitted, 9) << "     lost: " << fmt_i(c.lost, 9) << "\n";
    row("total charge [nC]:", c.charge);
    out << "     " << pad("", 34) << pad("      x", 12) << "  "
        << "      y\n";
    pair("average [mm]:", s.x.avg, s.y.avg);
    pair("rms [mm]:", s.x.rms, s.y.rms);
    pair("rms divergence [mrad]:", s.x.xp_rms, s.y.xp_rms);
    pair("norm. emittance [pi mrad mm]:", s.x.emit_n, s.y.emit_n);
    pair("correlation [mrad]:", s.x.corr, s.y.corr);
    pair("Twiss alpha:", s.x.alpha, s.y.alpha);
    pair("Twiss beta [m]:", s.x.beta, s.y.beta);
    pair("Twiss gamma [1/m]:", s.x.gamma, s.y.gamma);
    row("average kinetic energy [MeV]:", s.e_kin);
    row("rms bunch length [mm]:", s.z_rms);
    row("rms duration [ps]:", s.t_rms);
    row("rms energy spread [keV]:", s.de_rms);
    row("long. emittance [pi keV mm]:", s.emit_z);
    row("correlation [keV]:", s.corr_z);
    out << "\n";
}

}  // namespace viewer
