// A phase-space plane: dots, or a density image past ten thousand active
// particles, the projections along both axes, and the rms ellipse of the
// trace spaces; and the histogram of one coordinate.
#include <algorithm>
#include <cmath>

#include "core/statistics.hpp"
#include "particles/fills.hpp"
#include "plot/draw.hpp"
#include "plot/page.hpp"

namespace viewer {
namespace particle_views {

namespace {

constexpr int kDefaultBins = 100;
constexpr int kGrey = 15;       // colour index of the particles that are not active
constexpr float kShare = 0.2f;  // of the frame a projection may take

int bins_of(const ViewOptions& o) {
    return o.bins > 0 ? std::min(o.bins, 1000) : kDefaultBins;
}

// The colour ramp of the density: white where there is nothing, then
// blue, cyan, yellow to red; grey to black on a device without colour.
void set_ramp(Graphics& pg, bool colour) {
    static constexpr float l[] = {0.0f, 0.02f, 0.35f, 0.7f, 1.0f};
    static constexpr float r[] = {1.0f, 0.1f, 0.0f, 1.0f, 0.8f};
    static constexpr float g[] = {1.0f, 0.1f, 0.8f, 0.9f, 0.0f};
    static constexpr float b[] = {1.0f, 0.7f, 0.9f, 0.0f, 0.0f};
    static constexpr float ml[] = {0.0f, 0.02f, 1.0f};
    static constexpr float mv[] = {1.0f, 0.75f, 0.0f};
    if (colour)
        pg.pgctab(l, r, g, b, 5, 1.0f, 0.5f);
    else
        pg.pgctab(ml, mv, mv, mv, 3, 1.0f, 0.5f);
}

// A histogram as the outline of its bins, from `base` outward by `scale`,
// along x (`vertical` false) or along y.
void draw_steps(Graphics& pg, const std::vector<float>& h, float lo, float hi, float base, float scale,
                bool vertical) {
    const int n = static_cast<int>(h.size());
    if (n == 0) return;
    std::vector<float> u, v;
    const float w = (hi - lo) / static_cast<float>(n);
    u.push_back(lo);
    v.push_back(base);
    for (int i = 0; i < n; ++i) {
        const float top = base + scale * h[static_cast<std::size_t>(i)];
        u.insert(u.end(), {lo + w * static_cast<float>(i), lo + w * static_cast<float>(i + 1)});
        v.insert(v.end(), {top, top});
    }
    u.push_back(hi);
    v.push_back(base);
    if (vertical) std::swap(u, v);
    pg.pgline(static_cast<int>(u.size()), u.data(), v.data());
}

}  // namespace

PlaneFill::PlaneFill(const ParticleScan& sc, Plane p, const ViewOptions& o)
    : sc_(sc),
      p_(p),
      o_(o),
      n_(bins_of(o)),
      density_(sc.stats.counts.active > o.dots_up_to),
      xr_(axis_range(sc, p.a, o, false)),
      yr_(axis_range(sc, p.b, o, true)),
      hx_(static_cast<std::size_t>(n_)),
      hy_(static_cast<std::size_t>(n_)) {
    if (density_) image_.assign(static_cast<std::size_t>(n_) * static_cast<std::size_t>(n_), 0.0f);
}

int PlaneFill::cell(float v, float lo, float hi) const {
    if (!(v >= lo && v <= hi)) return -1;
    return std::min(n_ - 1, static_cast<int>((v - lo) / (hi - lo) * static_cast<float>(n_)));
}

void PlaneFill::add(const Particle& q) {
    put(static_cast<float>(sc_.value(p_.a, q)), static_cast<float>(sc_.value(p_.b, q)),
        q.active() ? static_cast<float>(std::abs(q.charge)) : -1.0f);
}

void PlaneFill::add(const KeptParticles& k) {
    k.each(sc_, p_, [this](float a, float b, float w) { put(a, b, w); });
}

void PlaneFill::put(float a, float b, float w) {
    const int i = cell(a, xr_.first, xr_.second), j = cell(b, yr_.first, yr_.second);
    if (w < 0) {
        if (o_.lost && i >= 0 && j >= 0) {
            grey_x_.push_back(a);
            grey_y_.push_back(b);
        }
        return;
    }
    if (i >= 0) hx_[static_cast<std::size_t>(i)] += w;
    if (j >= 0) hy_[static_cast<std::size_t>(j)] += w;
    if (i < 0 || j < 0) return;
    if (density_) {
        image_[static_cast<std::size_t>(j) * static_cast<std::size_t>(n_) + static_cast<std::size_t>(i)] += w;
    } else {
        x_.push_back(a);
        y_.push_back(b);
    }
}

void PlaneFill::merge(const PlaneFill& o) {
    auto add_up = [](std::vector<float>& to, const std::vector<float>& from) {
        for (std::size_t k = 0; k < to.size(); ++k) to[k] += from[k];
    };
    add_up(image_, o.image_);
    add_up(hx_, o.hx_);
    add_up(hy_, o.hy_);
    for (auto [to, from] : {std::pair{&x_, &o.x_}, std::pair{&y_, &o.y_}, std::pair{&grey_x_, &o.grey_x_},
                            std::pair{&grey_y_, &o.grey_y_}})
        to->insert(to->end(), from->begin(), from->end());
}

std::size_t PlaneFill::bytes() const {
    return (image_.size() + hx_.size() + hy_.size()) * sizeof(float);
}

void PlaneFill::draw(Session& s) const {
    Graphics& pg = s.pg;
    const auto [x1, x2] = xr_;
    const auto [y1, y2] = yr_;
    pg.pgsci(1);
    pg.pgenv(x1, x2, y1, y2, 0, 0);
    pg.pglab(spec_of(p_.a).label, spec_of(p_.b).label,
             std::string(spec_of(p_.a).name) + " : " + spec_of(p_.b).name);
    if (density_) {
        const float peak = *std::max_element(image_.begin(), image_.end());
        const float dx = (x2 - x1) / static_cast<float>(n_), dy = (y2 - y1) / static_cast<float>(n_);
        const float tr[6] = {x1 - 0.5f * dx, dx, 0.0f, y1 - 0.5f * dy, 0.0f, dy};
        set_ramp(pg, s.logo.COLOUR);
        pg.pgimag(image_.data(), n_, n_, 1, n_, 1, n_, 0.0f, peak > 0 ? peak : 1.0f, tr);
        pg.pgsci(1);
        pg.pgbox("BCST", 0.0f, 0, "BCST", 0.0f, 0);  // the image covers the ticks
    } else {
        pg.pgsci(s.logo.COLOUR ? 4 : 1);
        pg.pgpt(static_cast<int>(x_.size()), x_.data(), y_.data(), -1);
    }
    if (!grey_x_.empty()) {  // over the image, which would hide them
        pg.pgsci(kGrey);
        pg.pgpt(static_cast<int>(grey_x_.size()), grey_x_.data(), grey_y_.data(), -1);
    }
    // Projections, the tallest bin a fifth of the frame.
    pg.pgsci(s.logo.COLOUR ? 2 : 1);
    const float hxm = *std::max_element(hx_.begin(), hx_.end()),
                hym = *std::max_element(hy_.begin(), hy_.end());
    if (hxm > 0) draw_steps(pg, hx_, x1, x2, y1, kShare * (y2 - y1) / hxm, false);
    if (hym > 0) draw_steps(pg, hy_, y1, y2, x1, kShare * (x2 - x1) / hym, true);
    // The rms ellipse of the trace space.
    const bool xx = p_.a == Coord::x && p_.b == Coord::xp, yy = p_.a == Coord::y && p_.b == Coord::yp;
    if (xx || yy) {
        const PlaneStats& t = xx ? sc_.stats.x : sc_.stats.y;
        const double eps = t.emit_geo;  // mm mrad
        if (eps > 0 && t.beta > 0) {
            const double sx = std::sqrt(eps * t.beta), sp = std::sqrt(eps / t.beta);  // mm, mrad
            const double cx = t.avg, cp = (xx ? sc_.stats.x.avg_xp : sc_.stats.y.avg_xp);
            std::vector<float> ex, ey;
            for (int k = 0; k <= 120; ++k) {
                const double phi = 2 * M_PI * k / 120;
                ex.push_back(static_cast<float>(cx + sx * std::cos(phi)));
                ey.push_back(static_cast<float>(cp - sp * (t.alpha * std::cos(phi) + std::sin(phi))));
            }
            pg.pgsci(s.logo.COLOUR ? 2 : 1);
            pg.pgslw(2);
            pg.pgline(static_cast<int>(ex.size()), ex.data(), ey.data());
            pg.pgslw(1);
        }
    }
    pg.pgsci(1);
}

ViewData PlaneFill::data() const {
    ViewData d;
    d.view = std::string(spec_of(p_.a).name) + ":" + spec_of(p_.b).name;
    d.density = density_;
    const std::string a = std::string(spec_of(p_.a).name) + " [" + spec_of(p_.a).unit + "]";
    const std::string b = std::string(spec_of(p_.b).name) + " [" + spec_of(p_.b).unit + "]";
    if (!density_) {
        d.header = {a, b};
        d.columns = {{x_.begin(), x_.end()}, {y_.begin(), y_.end()}};
        return d;
    }
    d.header = {a, b, "charge [nC]"};
    d.columns.resize(3);
    const double dx = (xr_.second - xr_.first) / n_, dy = (yr_.second - yr_.first) / n_;
    for (int j = 0; j < n_; ++j)
        for (int i = 0; i < n_; ++i) {  // every cell, so that the table reshapes into the image
            d.columns[0].push_back(xr_.first + (i + 0.5) * dx);
            d.columns[1].push_back(yr_.first + (j + 0.5) * dy);
            d.columns[2].push_back(image_[static_cast<std::size_t>(j * n_ + i)]);
        }
    return d;
}

HistogramFill::HistogramFill(const ParticleScan& sc, Coord c, const ViewOptions& o)
    : sc_(sc), c_(c), r_(axis_range(sc, c, o, false)), h_(static_cast<std::size_t>(bins_of(o))) {}

void HistogramFill::add(const Particle& q) {
    if (!q.active()) return;
    const double v = sc_.value(c_, q);
    if (!(v >= r_.first && v <= r_.second)) return;
    const auto n = static_cast<double>(h_.size());
    h_[std::min(h_.size() - 1, static_cast<std::size_t>((v - r_.first) / (r_.second - r_.first) * n))] +=
        std::abs(q.charge);
}

void HistogramFill::merge(const HistogramFill& o) {
    for (std::size_t k = 0; k < h_.size(); ++k) h_[k] += o.h_[k];
}

void HistogramFill::draw(Session& s) const {
    Graphics& pg = s.pg;
    const double peak = *std::max_element(h_.begin(), h_.end());
    float top = static_cast<float>(peak * 1.1), bottom = 0.0f;
    check(top, bottom);
    pg.pgsci(1);
    pg.pgenv(r_.first, r_.second, 0.0f, top, 0, 0);
    pg.pglab(spec_of(c_).label, "charge [nC]", std::string("histogram of ") + spec_of(c_).name);
    std::vector<float> h(h_.begin(), h_.end());
    pg.pgsci(s.logo.COLOUR ? 4 : 1);
    draw_steps(pg, h, r_.first, r_.second, 0.0f, 1.0f, false);
    pg.pgsci(1);
}

ViewData HistogramFill::data() const {
    ViewData d;
    d.view = std::string("histogram of ") + spec_of(c_).name;
    d.header = {std::string(spec_of(c_).name) + " [" + spec_of(c_).unit + "]", "charge [nC]"};
    d.columns.resize(2);
    const double w = (r_.second - r_.first) / static_cast<double>(h_.size());
    for (std::size_t i = 0; i < h_.size(); ++i) {
        d.columns[0].push_back(r_.first + (static_cast<double>(i) + 0.5) * w);
        d.columns[1].push_back(h_[i]);
    }
    return d;
}

}  // namespace particle_views

ViewData draw_plane(Session& s, ParticleReader& f, const ParticleScan& scan, Plane p, const ViewOptions& o) {
    particle_views::PlaneFill fill(scan, p, o);
    if (scan.kept && scan.kept->covers(p))
        fill.add(*scan.kept);
    else
        particle_views::fill_from(f, fill);
    DrawBracket bracket(s.pg);
    c_pgsubp(s, 1, 1);
    fill.draw(s);
    title(s);
    return fill.data();
}

}  // namespace viewer
