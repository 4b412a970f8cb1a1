// The scatter of labelled points.
#include "plot/scatter.hpp"

#include <algorithm>
#include <cmath>

#include "core/statistics.hpp"
#include "plot/page.hpp"

namespace viewer {

namespace {

constexpr int kRampFirst = 20, kRampColours = 32;  // colour indices of the bar

// Blue through green to red, or light to dark grey.
void set_ramp(Graphics& pg, bool colour) {
    for (int k = 0; k < kRampColours; ++k) {
        const float t = static_cast<float>(k) / (kRampColours - 1);
        if (colour)
            pg.pgscr(kRampFirst + k, std::clamp(2 * t - 0.5f, 0.0f, 1.0f), 1.0f - std::abs(2 * t - 1.0f),
                     std::clamp(1.5f - 2 * t, 0.0f, 1.0f));
        else
            pg.pgscr(kRampFirst + k, 0.85f * (1 - t), 0.85f * (1 - t), 0.85f * (1 - t));
    }
}

int ramp_index(float v, float lo, float hi) {
    const float t = hi > lo ? (v - lo) / (hi - lo) : 0.5f;
    return kRampFirst + std::clamp(static_cast<int>(t * kRampColours), 0, kRampColours - 1);
}

}  // namespace

void draw_scatter(Session& s, const std::vector<ScatterPoint>& points, const ScatterLabels& labels) {
    Graphics& pg = s.pg;
    DrawBracket bracket(pg);
    c_pgsubp(s, 1, 1);
    float x1 = NAN, x2 = NAN, y1 = NAN, y2 = NAN, c1 = NAN, c2 = NAN;
    for (const ScatterPoint& p : points) {
        take_min(x1, p.x);
        take_max(x2, p.x);
        take_min(y1, p.y);
        take_max(y2, p.y);
        if (p.colour) {
            take_min(c1, *p.colour);
            take_max(c2, *p.colour);
        }
    }
    const float mx = 0.05f * (x2 - x1), my = 0.05f * (y2 - y1);
    x1 -= mx;
    x2 += mx;
    y1 -= my;
    y2 += my;
    check(x2, x1);
    check(y2, y1);
    const bool coloured = !labels.colour.empty() && std::isfinite(c1);
    if (coloured) pg.pgsvp(0.12f, 0.82f, 0.13f, 0.9f);  // room for the bar
    pg.pgsci(1);
    if (coloured) {
        pg.pgswin(x1, x2, y1, y2);
        pg.pgbox("BCNST", 0.0f, 0, "BCNST", 0.0f, 0);
    } else {
        pg.pgenv(x1, x2, y1, y2, 0, 0);
    }
    pg.pglab(labels.x, labels.y, labels.top);
    if (coloured) set_ramp(pg, s.logo.COLOUR);
    for (const ScatterPoint& p : points) {
        pg.pgsci(coloured && p.colour ? ramp_index(*p.colour, c1, c2) : (s.logo.COLOUR ? 4 : 1));
        pg.pgpt(1, &p.x, &p.y, 17);
    }
    // The front, joined in the order of the abscissa and named.
    std::vector<const ScatterPoint*> front;
    for (const ScatterPoint& p : points)
        if (p.front) front.push_back(&p);
    std::sort(front.begin(), front.end(),
              [](auto* a, auto* b) { return a->x < b->x || (a->x == b->x && a->y < b->y); });
    if (!front.empty()) {
        std::vector<float> fx, fy;
        for (const ScatterPoint* p : front) {
            fx.push_back(p->x);
            fy.push_back(p->y);
        }
        pg.pgsci(s.logo.COLOUR ? 2 : 1);
        pg.pgline(static_cast<int>(fx.size()), fx.data(), fy.data());
        pg.pgpt(static_cast<int>(fx.size()), fx.data(), fy.data(), 23);
        pg.pgsci(1);
        pg.pgsch(0.6f);
        for (const ScatterPoint* p : front) pg.pgptxt(p->x, p->y, 0.0f, -0.15f, "  " + p->label);
        pg.pgsch(1.0f);
    }
    if (coloured) {
        // the bar: the ramp from the lowest value to the highest
        pg.pgsvp(0.86f, 0.89f, 0.13f, 0.9f);
        pg.pgswin(0.0f, 1.0f, c1, c2 > c1 ? c2 : c1 + 1.0f);
        const float step = ((c2 > c1 ? c2 : c1 + 1.0f) - c1) / kRampColours;
        for (int k = 0; k < kRampColours; ++k) {
            pg.pgsci(kRampFirst + k);
            pg.pgsfs(1);
            pg.pgrect(0.0f, 1.0f, c1 + step * static_cast<float>(k), c1 + step * static_cast<float>(k + 1));
        }
        pg.pgsci(1);
        pg.pgbox("BC", 0.0f, 0, "BCMST", 0.0f, 0);
        pg.pgptxt(3.8f, 0.5f * (c1 + c2), 90.0f, 0.5f, labels.colour);
    }
    pg.pgsci(1);
    title(s);
}

}  // namespace viewer
