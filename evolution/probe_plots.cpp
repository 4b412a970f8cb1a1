// Probe tracks and the fields on them, from the interleaved records of
// .track: one line per probe, grown segment by segment in file order from
// each probe's stored last point. The file is streamed twice (ranges, then
// drawing), three times with the overlay; only the last point of each of
// the 100 probes is held, so the length of the file has no limit here.
#include <algorithm>
#include <array>
#include <cmath>
#include <ostream>
#include <string_view>
#include <vector>

#include "core/run_catalogue.hpp"
#include "core/statistics.hpp"
#include "evolution/plots.hpp"
#include "plot/aperture.hpp"
#include "plot/draw.hpp"
#include "plot/frame.hpp"
#include "plot/page.hpp"

namespace viewer {

namespace {

constexpr int kProbes = 100;
constexpr float kBig = 1e10f;
const char* const kZ = "\\fiz m";

// Probe numbers outside 1..100 have no place in the per-probe tables.
bool valid_probe(int I) {
    return I >= 1 && I <= kProbes;
}

bool in_window(const Session& s, float Z) {
    return !s.logo.ZOOM_Z || (s.graph.Z_LOWER <= Z && Z <= s.graph.Z_UPPER);
}

void widen(float v, float& upper, float& lower) {
    take_max(upper, v);
    take_min(lower, v);
}

// Upper limit u + |m u|, lower limit l - |m l|: the margin comes from the limit.
void margin(float m, float& upper, float& lower) {
    upper += std::fabs(m * upper);
    lower -= std::fabs(m * lower);
}

// A square root that cannot fail; the position names the call site.
float ssrt(Session& s, float V, std::string_view POSITION) {
    if (V > 0) return std::sqrt(V);
    if (V == 0) return 0;
    while (!POSITION.empty() && POSITION.back() == ' ') POSITION.remove_suffix(1);
    s.con.out << " Square root of a negative value at position: " << POSITION << "\n";
    return 0;
}

// What one record puts on the page: the end of its segment in the upper
// panel (Z, U) and in the lower panel (LX, LY).
struct Point {
    float Z, U, LX, LY;
};

// Window (and, for the square cross section, viewport in inches) of a panel.
struct PanelView {
    std::array<float, 4> win;
    bool sized = false;
    std::array<float, 4> inches{};
};

struct Segment {
    float x1, y1, x2, y2;
};

// The segments of a drawing pass, kept a block at a time and replayed panel
// by panel: the upper panel's segments in file order, then the lower
// panel's. A panel change costs one pgpanl/pgswin per block, not per
// segment, and consecutive segments of one probe that chain are one pgline.
// Colour and line style follow each segment; the style stays unset (the
// frame's) until a multiple of 15 first sets it.
class SegmentBatch {
public:
    SegmentBatch(Session& s, PanelView upper, PanelView lower) : s_(s), view_{upper, lower} {}

    void add(int I, const Point& from, const Point& to) {
        int colour = 0, style = style_;
        if (s_.logo.COLOUR) {
            colour = I % 15;
            if (colour == 0) {
                style = I / 15 - 4 + (I < 75 ? 5 : 0);
                colour = 15;
            }
        }
        // Segments drawn before the first style was set must not be replayed
        // after it in the other panel.
        if (style != style_ && style_ == 0 && !attrs_.empty()) flush();
        style_ = style;
        attrs_.push_back({I, colour, style});
        seg_[0].push_back({from.Z, from.U, to.Z, to.U});
        seg_[1].push_back({from.LX, from.LY, to.LX, to.LY});
        if (attrs_.size() == kBlock) flush();
    }

    void flush() {
        if (attrs_.empty()) return;
        for (int p = 0; p < 2; ++p) replay(p);
        attrs_.clear();
        seg_[0].clear();
        seg_[1].clear();
    }

private:
    static constexpr std::size_t kBlock = 4096;
    struct Attr {
        int probe, colour, style;  // colour 0: as the frame left it
    };

    void replay(int p) {
        Graphics& pg = s_.pg;
        const PanelView& v = view_[p];
        pg.pgpanl(1, p + 1);
        if (v.sized) pg.pgvsiz(v.inches[0], v.inches[1], v.inches[2], v.inches[3]);
        pg.pgswin(v.win[0], v.win[1], v.win[2], v.win[3]);
        const std::vector<Segment>& segs = seg_[p];
        for (std::size_t k = 0; k < segs.size();) {
            const Attr& a = attrs_[k];
            if (a.colour != 0 && a.colour != ci_) pg.pgsci(ci_ = a.colour);
            if (a.style != 0 && a.style != ls_) pg.pgsls(ls_ = a.style);
            std::size_t n = k + 1;
            while (n < segs.size() && attrs_[n].probe == a.probe && attrs_[n].style == a.style &&
                   segs[n].x1 == segs[n - 1].x2 && segs[n].y1 == segs[n - 1].y2)
                ++n;
            if (n == k + 1) {
                const float x[2] = {segs[k].x1, segs[k].x2}, y[2] = {segs[k].y1, segs[k].y2};
                pg.pgline(2, x, y);
            } else {
                xs_.assign(1, segs[k].x1);
                ys_.assign(1, segs[k].y1);
                for (std::size_t m = k; m < n; ++m) {
                    xs_.push_back(segs[m].x2);
                    ys_.push_back(segs[m].y2);
                }
                pg.pgline(static_cast<int>(xs_.size()), xs_.data(), ys_.data());
            }
            k = n;
        }
    }

    Session& s_;
    std::array<PanelView, 2> view_;
    std::vector<Attr> attrs_;
    std::array<std::vector<Segment>, 2> seg_;
    std::vector<float> xs_, ys_;
    int style_ = 0;        // style of the last segment; 0 while none was set
    int ci_ = 0, ls_ = 0;  // what the device has now; 0 unknown
};

// The per-probe tables: whether a probe has a stored last point, and that point.
struct Probes {
    std::array<bool, kProbes + 1> START{};
    std::array<Point, kProbes + 1> OLD{};
};

// First pass: every record in the z window with a valid probe number goes
// to `take`; returns NSUM, their number. Leaves the unit rewound.
template <class Take>
long first_pass(Session& s, RunRecord& r, Take take) {
    TableFile& f = s.unit(r.kind().unit);
    long NSUM = 0;
    while (r.read(f)) {
        const float Z = r.real(track::Z);
        if (!valid_probe(r.integer(track::I)) || !in_window(s, Z)) continue;
        take(r);
        ++NSUM;
    }
    f.rewind();
    return NSUM;
}

// Drawing pass: each probe's first record in the window stores its start,
// each later one draws the segment from the stored point. With a `limit`
// the pass ends after that many records in the window, whatever their
// probe number; without one (-1) at the end of the file.
template <class Map>
void drawing_pass(Session& s, RunRecord& r, long limit, PanelView upper, PanelView lower, Map map) {
    TableFile& f = s.unit(r.kind().unit);
    Probes p;
    SegmentBatch batch(s, upper, lower);
    long J = 0;
    while ((limit < 0 || J < limit) && r.read(f)) {
        if (!in_window(s, r.real(track::Z))) continue;
        ++J;
        const int I = r.integer(track::I);
        if (!valid_probe(I)) continue;
        const auto i = static_cast<std::size_t>(I);
        const Point to = map(r, !p.START[i]);
        if (p.START[i]) batch.add(I, p.OLD[i], to);
        p.START[i] = true;
        p.OLD[i] = to;
    }
    batch.flush();
    f.rewind();
}

PanelView view(float x1, float x2, float y1, float y2) {
    return {{x1, x2, y1, y2}};
}

// The outline in the plot's own axes, solid: once, and mirrored if asked.
void own_axes_outline(Session& s, bool mirrored) {
    LayerScope outline(s.pg, Layer::outline);
    const Geometry& g = s.geometry;
    s.pg.pgline(g.GEOM_N, g.GEOM_Z.data(), g.GEOM_R.data());
    if (!mirrored) return;
    std::vector<float> r(g.GEOM_R);
    for (float& v : r) v = -v;
    s.pg.pgline(g.GEOM_N, g.GEOM_Z.data(), r.data());
}

// Z widened to the outline unless zoomed; an ordinate pair widened on each
// side that is already away from the axis.
void widen_to_geometry(Session& s, float& ZMAX, float& ZMIN) {
    if (s.logo.ZOOM_Z) return;
    ZMIN = std::min(ZMIN, s.geometry.GEOM_ZMIN);
    ZMAX = std::max(ZMAX, s.geometry.GEOM_ZMAX);
}
void widen_radius(const Session& s, float& upper, float& lower) {
    const float r = 1.1f * s.geometry.GEOM_RMAX;
    if (upper > 0) upper = std::max(upper, r);
    if (lower < 0) lower = std::min(lower, -r);
}

}  // namespace

// x above, y below, against z.
void pgex14(Session& s) {
    if (!s.fexist.track_EXISTS) return;
    RewindOnExit rewind(s, {Kind::track});
    RunRecord r(run_kind(Kind::track));
    float ZMAX = -kBig, ZMIN = kBig, XMAX = -kBig, XMIN = kBig, YMAX = -kBig, YMIN = kBig;
    const long NSUM = first_pass(s, r, [&](const RunRecord& t) {
        widen(t.real(track::Z), ZMAX, ZMIN);
        widen(t.real(track::X), XMAX, XMIN);
        widen(t.real(track::Y), YMAX, YMIN);
    });
    if (NSUM < 1) return;
    margin(0.2f, XMAX, XMIN);
    margin(0.2f, YMAX, YMIN);
    check(ZMAX, ZMIN);
    check(XMAX, XMIN);
    check(YMAX, YMIN);

    Graphics& pg = s.pg;
    for (bool LSCALE = false;; LSCALE = true) {
        {
            DrawBracket bracket(pg);
            pg.pgsci(1);
            pg.pgenv(ZMIN, ZMAX, XMIN, XMAX, 0, 1);
            pg.pglab(kZ, "\\fix mm", "Probe Particle Trajectories");
            pg.pgenv(ZMIN, ZMAX, YMIN, YMAX, 0, 1);
            pg.pglab(kZ, "\\fiy mm", "");
            drawing_pass(s, r, -1, view(ZMIN, ZMAX, XMIN, XMAX), view(ZMIN, ZMAX, YMIN, YMAX),
                         [](const RunRecord& t, bool) {
                             const float Z = t.real(track::Z);
                             return Point{Z, t.real(track::X), Z, t.real(track::Y)};
                         });
        }
        if (!s.logo.WITH_GEOMETRY) return page_foot(s, true);
        ensure_geometry(s);
        widen_to_geometry(s, ZMAX, ZMIN);
        widen_radius(s, XMAX, XMIN);
        widen_radius(s, YMAX, YMIN);
        if (LSCALE) break;
        // The whole page once more, on a new page, in the wider ranges.
        pg.pgpanl(1, 1);
        pg.pgpage();
    }
    pg.pgpanl(1, 1);
    pg.pgswin(ZMIN, ZMAX, XMIN, XMAX);
    pg.pgsci(1);
    own_axes_outline(s, true);
    pg.pgpanl(1, 2);
    pg.pgswin(ZMIN, ZMAX, YMIN, YMAX);
    own_axes_outline(s, true);
    pg.pgsls(1);
    page_foot(s, true);
}

// r against z above, the cross section y against x below in a square of
// 2.4 inches. In a zoom the z axis is the zoom window itself.
void pgex15(Session& s) {
    if (!s.fexist.track_EXISTS) return;
    RewindOnExit rewind(s, {Kind::track});
    RunRecord r(run_kind(Kind::track));
    float ZMAX = s.logo.ZOOM_Z ? s.graph.Z_UPPER : -kBig;
    float ZMIN = s.logo.ZOOM_Z ? s.graph.Z_LOWER : kBig;
    float XMAX = -kBig, XMIN = kBig, YMAX = -kBig, YMIN = kBig, RMAX = 0;
    const long NSUM = first_pass(s, r, [&](const RunRecord& t) {
        const float X = t.real(track::X), Y = t.real(track::Y);
        widen(t.real(track::Z), ZMAX, ZMIN);
        widen(X, XMAX, XMIN);
        widen(Y, YMAX, YMIN);
        take_max(RMAX, X * X + Y * Y);
    });
    if (NSUM < 1) return;
    float PHIMAX = 1.2f * std::max({std::fabs(XMAX), std::fabs(YMAX), std::fabs(XMIN), std::fabs(YMIN)});
    if (PHIMAX == 0) PHIMAX = 0.1f;
    RMAX = 1.2f * ssrt(s, RMAX, "track1");
    if (RMAX == 0) RMAX = 0.1f;
    check(ZMAX, ZMIN);

    Graphics& pg = s.pg;
    const std::array<float, 4> square{0.42f, 2.82f, 0.42f, 2.82f};  // inches
    for (bool LSCALE = false;; LSCALE = true) {
        {
            DrawBracket bracket(pg);
            pg.pgsci(1);
            pg.pgenv(ZMIN, ZMAX, 0, RMAX, 0, 1);
            pg.pglab(kZ, "\\fir mm", "Probe Particle Trajectories");
            PanelView upper = view(ZMIN, ZMAX, 0, RMAX);
            upper.sized = true;
            auto& [X1, X2, Y1, Y2] = upper.inches;
            pg.pgqvp(1, X1, X2, Y1, Y2);
            pg.pgpage();
            pg.pgvsiz(square[0], square[1], square[2], square[3]);
            pg.pgswin(-PHIMAX, PHIMAX, -PHIMAX, PHIMAX);
            pg.pgbox("ABCNST", 0, 0, "ABCNST", 0, 0);
            pg.pglab("\\fix mm", "\\fiy mm", "");
            PanelView lower = view(-PHIMAX, PHIMAX, -PHIMAX, PHIMAX);
            lower.sized = true;
            lower.inches = square;
            drawing_pass(s, r, NSUM, upper, lower, [&s](const RunRecord& t, bool first) {
                const float X = t.real(track::X), Y = t.real(track::Y);
                return Point{t.real(track::Z), ssrt(s, X * X + Y * Y, first ? "track2" : "track3"), X, Y};
            });
            pg.pgpanl(1, 1);
            pg.pgvsiz(X1, X2, Y1, Y2);
            pg.pgswin(ZMIN, ZMAX, 0, RMAX);
            pg.pgsls(1);
        }
        if (!s.logo.WITH_GEOMETRY) return page_foot(s, true);
        ensure_geometry(s);
        widen_to_geometry(s, ZMAX, ZMIN);
        RMAX = std::max(RMAX, 1.1f * s.geometry.GEOM_RMAX);
        if (LSCALE) break;
        pg.pgpanl(1, 1);
        pg.pgpage();
    }
    pg.pgswin(ZMIN, ZMAX, 0, RMAX);
    pg.pgsci(1);
    own_axes_outline(s, false);
    pg.pgsls(1);
    page_foot(s, true);
}

// The space-charge fields on the probes: Ez above Er when the last field is
// zero throughout (axially symmetric), else Ex above Ey.
void pgex16(Session& s) {
    if (!s.fexist.track_EXISTS) return;
    RewindOnExit rewind(s, {Kind::track});
    RunRecord r(run_kind(Kind::track));
    float ZMAX = -kBig, ZMIN = kBig, EMAX = -kBig, EMIN = kBig;
    float XMAX = -kBig, XMIN = kBig, YMAX = -kBig, YMIN = kBig;
    const long NSUM = first_pass(s, r, [&](const RunRecord& t) {
        widen(t.real(track::Z), ZMAX, ZMIN);
        widen(t.real(track::EZ), EMAX, EMIN);
        widen(t.real(track::ER), XMAX, XMIN);
        widen(t.real(track::BFI), YMAX, YMIN);
    });
    if (NSUM < 1) return;
    const bool TWOD = YMAX == YMIN && YMAX == 0;
    margin(0.15f, EMAX, EMIN);
    margin(0.15f, XMAX, XMIN);
    margin(0.15f, YMAX, YMIN);
    check(ZMAX, ZMIN);
    check(EMAX, EMIN);
    check(XMAX, XMIN);
    check(YMAX, YMIN);

    Graphics& pg = s.pg;
    {
        DrawBracket bracket(pg);
        pg.pgsci(1);
        if (TWOD) {
            pg.pgenv(ZMIN, ZMAX, EMIN, EMAX, 0, 1);
            pg.pglab(kZ, "\\fiEz V/m", "longitudinal space charge field acting on Probe Particles");
            pg.pgenv(ZMIN, ZMAX, XMIN, XMAX, 0, 1);
            pg.pglab(kZ, "\\fiEr V/m", "radial space charge field acting on Probe Particles");
        } else {
            const char* const top = "transverse space charge field acting on Probe Particles";
            pg.pgenv(ZMIN, ZMAX, XMIN, XMAX, 0, 1);
            pg.pglab(kZ, "\\fiEx V/m", top);
            pg.pgenv(ZMIN, ZMAX, YMIN, YMAX, 0, 1);
            pg.pglab(kZ, "\\fiEy V/m", top);
        }
        const int upper = TWOD ? track::EZ : track::ER, lower = TWOD ? track::ER : track::BFI;
        drawing_pass(s, r, NSUM, TWOD ? view(ZMIN, ZMAX, EMIN, EMAX) : view(ZMIN, ZMAX, XMIN, XMAX),
                     TWOD ? view(ZMIN, ZMAX, XMIN, XMAX) : view(ZMIN, ZMAX, YMIN, YMAX),
                     [&](const RunRecord& t, bool) {
                         const float Z = t.real(track::Z);
                         return Point{Z, t.real(upper), Z, t.real(lower)};
                     });
    }
    if (s.logo.WITH_GEOMETRY) {
        // The two-panel overlay window, inside no bracket of its own.
        LayerScope outline(pg, Layer::outline);
        ensure_geometry(s);
        Geometry& g = s.geometry;
        const float RMAX = 1.05f * g.GEOM_RMAX;
        std::vector<float> mirror(g.GEOM_R);
        for (float& v : mirror) v = -v;
        pg.pgpanl(1, 1);
        pg.pgswin(ZMIN, ZMAX, -RMAX, RMAX);
        pg.pgsci(1);
        pg.pgsls(2);
        pg.pgline(g.GEOM_N, g.GEOM_Z.data(), g.GEOM_R.data());
        pg.pgline(g.GEOM_N, g.GEOM_Z.data(), mirror.data());
        pg.pgpanl(1, 2);
        pg.pgswin(ZMIN, ZMAX, -RMAX, RMAX);
        pg.pgline(g.GEOM_N, g.GEOM_Z.data(), mirror.data());
        pg.pgline(g.GEOM_N, g.GEOM_Z.data(), g.GEOM_R.data());
        pg.pgsls(1);
        pg.pgswin(ZMIN, ZMAX, TWOD ? XMIN : YMIN, TWOD ? XMAX : YMAX);
        pg.pgpanl(1, 2);
    }
    page_foot(s, true);
}

}  // namespace viewer
