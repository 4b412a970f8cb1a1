// What every plot writes on its page besides the curves: the panel layout
// with its character height, and the page foot.
#include "plot/page.hpp"

#include <algorithm>

namespace viewer {

void c_pgsubp(Session& s, int NX, int NY) {
    const float h = s.win_config.CHARACTER_HEIGHT;
    if (NX == 1 && NY == 1)
        s.pg.pgsch(h);
    else if ((NX == 1 && NY == 2) || (NX == 2 && NY == 2))
        s.pg.pgsch(1.5f * h);
    else if (NX == 3 && NY == 3)
        s.pg.pgsch(1.25f * h);
    s.pg.pgsubp(NX, NY);
}

void title(Session& s) {
    Graphics& pg = s.pg;
    LayerScope layer(pg, Layer::foot);
    DrawBracket bracket(pg, DrawBracket::foot);
    pg.pgsci(1);
    pg.pgsubp(1, 1);
    float x1, x2, y1, y2;
    pg.pgqvsz(0, x1, x2, y1, y2);
    pg.pgsvp(x1, x2, y1, y2);
    pg.pgswin(0.0f, 1.0f, 0.0f, 1.0f);
    float height = 0.3f, x = 1.0f, y = 0.00225f;
    if (s.raster_foot) {
        // A picture of pixels cuts what reaches its last row and column, and
        // at 0.3 the foot of a picture for a screen is a smudge of three
        // pixels: there it stands a few pixels in and stays legible.
        constexpr float kMargin = 4, kLegible = 9;  // pixels
        float px1, px2, py1, py2;
        pg.pgqvsz(3, px1, px2, py1, py2);
        const float w = px2 - px1, h = py2 - py1;
        if (w > 0 && h > 0) {
            height = std::max(height, kLegible * 40 / std::min(w, h));
            x = 1 - kMargin / w;
            y = (kMargin + 0.4f * kLegible) / h;  // the descenders clear too
        }
    }
    pg.pgsch(height);
    pg.pgptxt(x, y, 0.0f, 1.0f, s.chara.PAGE_TITLE);
}

void page_foot(Session& s, bool title_in_overview) {
    if (title_in_overview || !s.logo.OVERVIEW) title(s);
    s.pg.pgupdt();
}

}  // namespace viewer
