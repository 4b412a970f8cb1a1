// What every plot writes on its page besides the curves: the panel layout
// with its character height, and the page foot.
#include "plot/page.hpp"

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
    pg.pgsch(0.3f);
    pg.pgptxt(1.0f, 0.00225f, 0.0f, 1.0f, s.chara.PAGE_TITLE);
}

void page_foot(Session& s, bool title_in_overview) {
    if (title_in_overview || !s.logo.OVERVIEW) title(s);
    s.pg.pgupdt();
}

}  // namespace viewer
