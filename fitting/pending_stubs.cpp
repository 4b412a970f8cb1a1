// Placeholders until the fitting subsystem is written.
#include "fitting/fit.hpp"

namespace viewer {
void fit_menu(Session&, int&) {}
void fit(Session&, int, int, int, int, const float*, const float*) {}
void fit_hook(Session&, int&, int, const float*, const float*, const float*, FitStyle) {}
}  // namespace viewer
