// The pieces every particle view is made of: what one pass over the file
// fills (a plane of dots or bins with its projections, a histogram, the
// slices) and how each draws itself as one panel. Internal to the views.
#pragma once

#include <vector>

#include "particles/views.hpp"

namespace viewer::particle_views {

// A range of one axis: the window asked for, else the extremes widened by
// 5 % of the span (an empty one opened as the tables' plots do).
std::pair<float, float> axis_range(const ParticleScan& sc, Coord c, const ViewOptions& o, bool vertical);

// Streams every particle of `f` from the top into `take`.
template <class F>
void each_particle(ParticleReader& f, F&& take) {
    f.rewind();
    for (Particle p; f.next(p);) take(p);
    f.rewind();
}

class PlaneFill {
public:
    PlaneFill(const ParticleScan& sc, Plane p, const ViewOptions& o);
    void add(const Particle& q);
    void draw(Session& s) const;  // one panel
    ViewData data() const;

private:
    int cell(float v, float lo, float hi) const;
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
    std::vector<SliceStats> result() const;

private:
    const ParticleScan& sc_;
    bool z_;
    double lo_, width_;
    std::vector<BunchMoments> m_;
};

}  // namespace viewer::particle_views
