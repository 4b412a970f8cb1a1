// What every plot writes on its page besides the curves: the panel layout
// with its character height, and the page foot.
#pragma once

#include "core/session.hpp"

namespace viewer {

// Divides the selected device into NX by NY panels and sets the character
// height that fits them.
void c_pgsubp(Session& s, int NX, int NY);

// Writes the page foot on the selected device.
void title(Session& s);

// The page foot (unless left out during an overview), then the update.
void page_foot(Session& s, bool title_in_overview);

}  // namespace viewer
