// Drawing helpers every plot shares.
#include "plot/draw.hpp"

#include <vector>

#include "core/fortran_format.hpp"

namespace viewer {

CurveStyle curve_style(int n, bool colour) {
    if (colour) return {n, 0};
    if (n > 5) return {15, n - 5};
    return {1, n};
}

void set_curve_style(Session& s, int n) {
    const CurveStyle st = curve_style(n, s.logo.COLOUR);
    if (s.logo.COLOUR) {
        s.pg.pgsci(st.colour);
        return;
    }
    if (st.colour != 1) s.pg.pgsci(st.colour);
    s.pg.pgsls(st.line_style);
}

void poly_line(Session& s, int LD, int NP, const float* X, const float* Y, int FIRST, int LAST) {
    Graphics& pg = s.pg;
    pg.pgsci(1);
    if (LAST < FIRST) {
        pg.pgsci(1);
        return;
    }
    for (int I = FIRST; I <= LAST; ++I) {
        set_curve_style(s, I);
        pg.pgline(NP, X, Y + static_cast<std::ptrdiff_t>(I - 1) * LD);
    }
    pg.pgsci(1);
}

void legend(Session& s, std::span<const std::string> LEG_TEXT, std::span<const int> LEG_NUM, float XPOS,
            LegendPos POS, std::span<const int> LEG_WIDTH) {
    Graphics& pg = s.pg;
    LayerScope layer(pg, Layer::key);
    const float DELY = 0.035f;
    if (XPOS == 0.0f) XPOS = 0.77f;
    const int N = static_cast<int>(std::min(LEG_TEXT.size(), LEG_NUM.size()));
    float X1, X2, Y1, Y2;
    pg.pgqwin(X1, X2, Y1, Y2);
    pg.pgswin(0.0f, 1.0f, 1.0f, 0.0f);

    const bool left = POS == LegendPos::TL;
    const float bx1 = left ? 0.5f * DELY : XPOS;
    const float bx2 = left ? 1.0f - XPOS : 1.0f - 0.5f * DELY;
    const float by1 = (static_cast<float>(N) + 1.4f) * DELY;
    pg.pgsci(0);
    pg.pgsls(1);
    pg.pgsfs(1);
    pg.pgrect(bx1, bx2, by1, DELY);
    pg.pgsfs(2);
    pg.pgsci(1);
    pg.pgrect(bx1, bx2, by1, DELY);
    pg.pgsch(0.8f);

    const float XPOS2 = left ? 0.5f * DELY : XPOS;
    for (int I = 1; I <= N; ++I) {
        set_curve_style(s, LEG_NUM[static_cast<std::size_t>(I - 1)]);
        const float fi = static_cast<float>(I);
        const auto k = static_cast<std::size_t>(I - 1);
        if (k < LEG_WIDTH.size()) pg.pgslw(LEG_WIDTH[k]);
        pg.pgmove(XPOS2 + 0.01f, (fi + 0.6f) * DELY);
        pg.pgdraw(XPOS2 + 0.05f, (fi + 0.6f) * DELY);
        if (k < LEG_WIDTH.size()) pg.pgslw(LEG_WIDTH[0]);  // the text as the first sample
        pg.pgtext(XPOS2 + 0.065f, (fi + 0.8f) * DELY, pad(LEG_TEXT[static_cast<std::size_t>(I - 1)], 40));
    }
    pg.pgsch(1.0f);
    pg.pgsci(1);
    pg.pgswin(X1, X2, Y1, Y2);
}

}  // namespace viewer
