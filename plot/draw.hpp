// Drawing helpers every plot shares: the rule by which curves are told apart, the rows of a table drawn as
// curves
// (`poly_line`) and the boxed key (`legend`).
#pragma once

#include <span>
#include <string>

#include "core/session.hpp"

namespace viewer {

// How curve `n` (1-based) is told from the others: by colour index n on a
// colour device; otherwise by line style, styles 1 to 5 in the foreground
// and from curve 6 on the styles again in colour index 15.
struct CurveStyle {
    int colour;      // colour index to set
    int line_style;  // 0: leave the line style as it is
};
CurveStyle curve_style(int n, bool colour);
void set_curve_style(Session& s, int n);

// Rows FIRST..LAST (1-based) of a table of curves, `Y[(j-1) * LD + i]` the
// ordinate of point i of curve j, each drawn over the abscissas X with its
// style. Leaves colour index 1; the caller's bracket restores the style.
void poly_line(Session& s, int LD, int NP, const float* X, const float* Y, int FIRST, int LAST);

// Where a legend box stands inside the frame.
enum class LegendPos { TR, TL };

// The boxed key: one sample line and text per entry, the sample in the style
// of curve LEG_NUM[i], and in line width LEG_WIDTH[i] where widths are
// given. XPOS is the normalised x of the box edge (0: 0.77). On return the
// window is as it was, colour index 1, character height 1.
void legend(Session& s, std::span<const std::string> LEG_TEXT, std::span<const int> LEG_NUM, float XPOS,
            LegendPos POS, std::span<const int> LEG_WIDTH = {});

}  // namespace viewer
