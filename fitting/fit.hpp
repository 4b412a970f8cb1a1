// The fit menu, the dispatcher of the eleven models and the reference
// curves, and the hook by which a plot draws a fit over its curves.
#pragma once

#include <initializer_list>
#include <string_view>

#include "core/session.hpp"

namespace viewer {

// Shows the fit menu in the menu window and takes a pick (1..18, 0 when the
// device gives no cursor). Leaves the plot window selected.
void fit_menu(Session& s, int& ID_F);

// The fit menu's name of pick 1 to 11 ("straight line fit"); empty for others.
std::string_view fit_menu_label(int pick);

// Runs pick `ID_F` on curve `CURVE` of `N_CURVES`, leaving its curve in
// `fit_variables`.
void fit(Session& s, int ID_F, int CURVE, int N_CURVES, int NP, const float* X, const float* Y);

// How a plot's hook draws: the first colour index, and dashed or solid.
struct FitStyle {
    int first_colour = 1;
    bool dashed = true;
};

// The fit hook of a plot: menu (unless drawing to a file), one `fit` per
// curve, the result drawn, the arrays released. `Y` holds one ordinate
// array a curve, one or two; the count is what it says, also where a curve
// holds no point and its array is null.
void fit_hook(Session& s, int& ID_F, int NP, const float* X, std::initializer_list<const float*> Y,
              FitStyle style = {});

}  // namespace viewer
