// The coordinates of the particle views, the first pass over a file, and
// its statistics block.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
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

// What the first pass may keep for the planes asked for, over all its
// parts: three floats a particle for one plane, 12 MB for 10^6 particles.
constexpr std::size_t kKeptBytes = std::size_t{32} << 20;

std::size_t at(Coord c) {
    return static_cast<std::size_t>(c);
}

// A coordinate before <pz> and <E> are known: px, py and E stand in for xp,
// yp and dE, which follow from them linearly. Each rises with its quantity,
// so the extremes of a quantity give those of its coordinates.
double raw(Coord c, double q, const ParticleScan& sc) {
    switch (c) {
        case Coord::x:
        case Coord::y:
            return q * 1e3;
        case Coord::z:
            return (q - sc.ref_z) * 1e3;
        case Coord::xp:
        case Coord::px:
        case Coord::yp:
        case Coord::py:
        case Coord::pz:
        case Coord::E:
        case Coord::dE:
            return q * 1e-6;
        case Coord::t:
            return (q - sc.ref_clock) * 1e3;
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

using Extremes = std::array<std::pair<double, double>, particle_views::kFields>;

// The first pass over one part of the file: moments, the extremes of every
// quantity of the active particles and of the others, and what the planes
// to keep need.
struct ScanFill {
    BunchMoments m;
    Extremes active, others;
    std::optional<particle_views::KeptParticles> kept;

    void add(const Particle& p) {
        const particle_views::Quantities q = particle_views::quantities(p);
        m.add(p, q[particle_views::fE]);
        auto& r = p.active() ? active : others;
        for (std::size_t k = 0; k < q.size(); ++k) {
            r[k].first = std::min(r[k].first, q[k]);
            r[k].second = std::max(r[k].second, q[k]);
        }
        if (kept) kept->add(q, p.active() ? static_cast<float>(std::abs(p.charge)) : -1.0f);
    }
    std::size_t bytes() const { return sizeof(ScanFill); }  // nothing kept yet
    void merge(ScanFill&& o) {
        m.merge(o.m);
        for (auto [r, q] : {std::pair{&active, &o.active}, std::pair{&others, &o.others}})
            for (std::size_t k = 0; k < r->size(); ++k) {
                (*r)[k].first = std::min((*r)[k].first, (*q)[k].first);
                (*r)[k].second = std::max((*r)[k].second, (*q)[k].second);
            }
        if (kept) kept->merge(std::move(*o.kept));
    }
};

// The quantities of the planes to keep, each once.
std::vector<particle_views::Field> fields_of(std::span<const Plane> planes) {
    std::vector<particle_views::Field> out;
    for (const Plane& p : planes)
        for (Coord c : {p.a, p.b})
            if (std::find(out.begin(), out.end(), particle_views::field_of(c)) == out.end())
                out.push_back(particle_views::field_of(c));
    return out;
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
    return particle_views::coordinate(*this, c, particle_views::field(p, particle_views::field_of(c)));
}

ParticleScan scan_particles(ParticleReader& f, std::span<const Plane> keep) {
    ParticleScan sc;
    const Particle& ref = f.reference();
    sc.reference = ref;
    sc.ref_z = ref.z;
    sc.ref_clock = ref.clock;
    sc.ref_e = ref.kinetic_ev();
    constexpr double inf = std::numeric_limits<double>::infinity();
    const int parts = f.threads();
    ScanFill fill{BunchMoments(ref), {}, {}, std::nullopt};
    fill.active.fill({inf, -inf});
    fill.others.fill({inf, -inf});
    if (!keep.empty()) fill.kept.emplace(ref, fields_of(keep), kKeptBytes / static_cast<std::size_t>(parts));
    particle_views::fill_from(f, fill, parts);
    sc.stats = fill.m.stats();
    sc.cut_short = f.cut_short();
    if (sc.stats.counts.active == 0) throw ParticleError(f.name() + ": no active particle");
    for (auto [to, from] : {std::pair{&sc.active, &fill.active}, std::pair{&sc.others, &fill.others}})
        for (int k = 0; k < kCoords; ++k) {
            const auto c = static_cast<Coord>(k);
            const auto [lo, hi] = (*from)[static_cast<std::size_t>(particle_views::field_of(c))];
            if (lo > hi) {  // none of these particles
                (*to)[at(c)] = {inf, -inf};
                continue;
            }
            const double a = finish(c, raw(c, lo, sc), sc.stats), b = finish(c, raw(c, hi, sc), sc.stats);
            (*to)[at(c)] = {std::min(a, b), std::max(a, b)};
        }
    if (fill.kept && !fill.kept->dropped())
        sc.kept = std::make_shared<const particle_views::KeptParticles>(std::move(*fill.kept));
    return sc;
}

namespace particle_views {

Field field_of(Coord c) {
    static constexpr Field kField[kCoords] = {fx, fy, fz, fpx, fpy, fpx, fpy, fpz, fE, fE, ft};
    return kField[at(c)];
}

double field(const Particle& p, Field f) {
    switch (f) {
        case fx:
            return p.x;
        case fy:
            return p.y;
        case fz:
            return p.z;
        case fpx:
            return p.px;
        case fpy:
            return p.py;
        case fpz:
            return p.pz;
        case fE:
            return p.kinetic_ev();
        case ft:
            return p.clock;
    }
    return 0;
}

Quantities quantities(const Particle& p) {
    return {p.x, p.y, p.z, p.px, p.py, p.pz, p.kinetic_ev(), p.clock};
}

double coordinate(const ParticleScan& sc, Coord c, double quantity) {
    return finish(c, raw(c, quantity, sc), sc.stats);
}

KeptParticles::KeptParticles(const Particle& reference, std::vector<Field> fields, std::size_t budget)
    : fields_(std::move(fields)), ref_(quantities(reference)), budget_(budget) {}

std::size_t KeptParticles::index(Field f) const {
    return static_cast<std::size_t>(std::find(fields_.begin(), fields_.end(), f) - fields_.begin());
}

bool KeptParticles::covers(Plane p) const {
    return !over_ && index(field_of(p.a)) < fields_.size() && index(field_of(p.b)) < fields_.size();
}

void KeptParticles::add(const Quantities& q, float weight) {
    if (over_) return;
    const std::size_t n = fields_.size() + 1;
    if (blocks_.empty() || blocks_.back().size() + n > blocks_.back().capacity()) {
        // Blocks, not one vector: growing copies nothing and overshoots by a block at most.
        constexpr std::size_t kRecords = 1 << 14;
        if (bytes_ + kRecords * n * sizeof(float) > budget_) {
            over_ = true;
            std::vector<std::vector<float>>().swap(blocks_);
            return;
        }
        blocks_.emplace_back().reserve(kRecords * n);
        bytes_ += kRecords * n * sizeof(float);
    }
    std::vector<float>& b = blocks_.back();
    for (Field f : fields_) b.push_back(static_cast<float>(q[f] - ref_[f]));
    b.push_back(weight);
}

void KeptParticles::merge(KeptParticles&& o) {
    over_ = over_ || o.over_;
    if (over_) {
        std::vector<std::vector<float>>().swap(blocks_);
        return;
    }
    bytes_ += o.bytes_;
    for (std::vector<float>& b : o.blocks_) blocks_.push_back(std::move(b));
    o.blocks_.clear();
}

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
