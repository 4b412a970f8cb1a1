// The pieces every particle view is made of: what one pass over the file
// fills (a plane of dots or bins with its projections, a histogram, the
// slices) and how each draws itself as one panel; the quantities the
// coordinates are made of, and what the first pass keeps of them. Internal
// to the views.
#pragma once

#include <algorithm>
#include <vector>

#include "particles/views.hpp"

namespace viewer::particle_views {

// The quantities of a particle the coordinates are made of: x' and px, y'
// and py, E and dE share one. E is the kinetic energy [eV].
enum Field { fx, fy, fz, fpx, fpy, fpz, fE, ft };
constexpr int kFields = 8;
using Quantities = std::array<double, kFields>;
Field field_of(Coord c);
double field(const Particle& p, Field f);
Quantities quantities(const Particle& p);
// A coordinate in view units from its quantity.
double coordinate(const ParticleScan& sc, Coord c, double quantity);

// A range of one axis: the window asked for, else the extremes widened by
// 5 % of the span (an empty one opened as the tables' plots do).
std::pair<float, float> axis_range(const ParticleScan& sc, Coord c, const ViewOptions& o, bool vertical);

// Fills `fill` from every particle of `f`, read in `parts` parts (0: as
// many as the file is worth), each into a copy of `fill` as it came, then
// merged into it in file order. Large fills (a thousand bins a side, four
// times) take fewer parts, so that the copies stay within 16 MiB.
template <class Fill>
void fill_from(ParticleReader& f, Fill& fill, int parts = 0) {
    constexpr std::size_t kCopies = std::size_t{16} << 20;
    const std::size_t most = 1 + kCopies / std::max<std::size_t>(fill.bytes(), 1);
    const int n = static_cast<int>(std::min<std::size_t>(parts > 0 ? parts : f.threads(), most));
    std::vector<Fill> more(static_cast<std::size_t>(n - 1), fill);
    f.read_in_parts(n, [&](int k, ParticleBatch b) {
        Fill& into = k == 0 ? fill : more[static_cast<std::size_t>(k - 1)];
        for (const Particle& p : b) into.add(p);
    });
    for (Fill& m : more) fill.merge(std::move(m));
}

// What the first pass keeps of every particle for the planes asked for, so
// that drawing them takes no second pass: each quantity they need as its
// offset from the reference particle in a float, and the weight (|charge|,
// or -1 for a particle that is not active), in file order. Past `budget`
// bytes it keeps nothing.
class KeptParticles {
public:
    KeptParticles(const Particle& reference, std::vector<Field> fields, std::size_t budget);
    void add(const Quantities& q, float weight);  // weight < 0: not active
    void merge(KeptParticles&& o);                // the particles after these
    bool covers(Plane p) const;                   // both coordinates, within the budget
    bool dropped() const { return over_; }        // past the budget
    // Each particle in file order: take(a, b, weight) in view units.
    template <class F>
    void each(const ParticleScan& sc, Plane p, F&& take) const {
        const std::size_t ia = index(field_of(p.a)), ib = index(field_of(p.b)), n = fields_.size() + 1;
        const double ra = ref_[static_cast<std::size_t>(field_of(p.a))],
                     rb = ref_[static_cast<std::size_t>(field_of(p.b))];
        for (const std::vector<float>& block : blocks_)
            for (std::size_t r = 0; r + n <= block.size(); r += n)
                take(static_cast<float>(coordinate(sc, p.a, ra + block[r + ia])),
                     static_cast<float>(coordinate(sc, p.b, rb + block[r + ib])), block[r + n - 1]);
    }

private:
    std::size_t index(Field f) const;
    std::vector<Field> fields_;
    Quantities ref_{};  // the reference particle's
    std::size_t budget_, bytes_ = 0;
    bool over_ = false;
    std::vector<std::vector<float>> blocks_;
};

class PlaneFill {
public:
    PlaneFill(const ParticleScan& sc, Plane p, const ViewOptions& o);
    void add(const Particle& q);
    void add(const KeptParticles& k);  // every particle the first pass kept
    void merge(const PlaneFill& o);    // the particles after these
    std::size_t bytes() const;         // held, before the dots
    void draw(Session& s) const;       // one panel
    ViewData data() const;

private:
    int cell(float v, float lo, float hi) const;
    void put(float a, float b, float weight);  // weight < 0: not active
    const ParticleScan& sc_;
    Plane p_;
    ViewOptions o_;
    int n_;  // bins a side
    bool density_;
    std::pair<float, float> xr_, yr_;
    std::vector<float> x_, y_, grey_x_, grey_y_;  // dots
    std::vector<float> image_;                    // n_ by n_, charge [nC] a cell
    std::vector<float> hx_, hy_;                  // projections, charge a bin
};

class HistogramFill {
public:
    HistogramFill(const ParticleScan& sc, Coord c, const ViewOptions& o);
    void add(const Particle& q);
    void merge(const HistogramFill& o);
    std::size_t bytes() const { return h_.size() * sizeof(double); }
    void draw(Session& s) const;
    ViewData data() const;

private:
    const ParticleScan& sc_;
    Coord c_;
    std::pair<float, float> r_;
    std::vector<double> h_;
};

// The slices of the bunch as curves: which quantities, one panel each.
enum class SlicePanel { current, emittance, energy, spread };
void draw_slice_panel(Session& s, const std::vector<SliceStats>& sl, bool along_z, SlicePanel what);
ViewData slice_data(const std::vector<SliceStats>& sl, bool along_z);

class SliceFill {
public:
    SliceFill(const ParticleScan& sc, int n, bool along_z);
    void add(const Particle& q);
    void merge(const SliceFill& o);
    std::size_t bytes() const { return m_.size() * sizeof(BunchMoments); }
    std::vector<SliceStats> result() const;

private:
    const ParticleScan& sc_;
    bool z_;
    double lo_, width_;
    std::vector<BunchMoments> m_;
};

}  // namespace viewer::particle_views
