// The aperture outline: loaded once per process from "Geometry.dat" (or a
// file named at the prompt) and laid over the plots along z.
#pragma once

#include "core/session.hpp"

namespace viewer {

// Fills `s.geometry` from the aperture file; at most GEOM_MAX points.
void load_geom(Session& s);
// The same from the file at `path`, without a question.
void load_geom_file(Session& s, const std::string& path);

// Loads the outline the first time a plot needs it.
void ensure_geometry(Session& s);

// The outline in a window of its own over the frame: abscissa ZMIN..ZMAX,
// ordinate -RMAX..RMAX with RMAX = 1.05 GEOM_RMAX. The plot's own window
// (ZMIN, ZMAX, YMIN, YMAX) is restored afterwards.
void overlay_upper(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX);
void overlay_mirrored(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX);
void overlay_two_panels(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX);

}  // namespace viewer
