// Several runs of one row on one page. Each run's page is drawn once into
// a `Capture` (in the mono look, so that the curves of a run are told apart
// by line style), then the pages are laid over each other: the frames of
// the first run widened to what every run drew, the curves and fits of
// each run in its own colour (or, on a mono page, its own line width), the
// outline, keys and foot once, and a key that names the runs.
//
//   std::vector<RunPage> pages;   // one a run, each captured while its row was drawn
//   draw_runs(s, pages, "rfgun 001,002,003  24.11  09:05");
#pragma once

#include <span>
#include <string>
#include <vector>

#include "core/session.hpp"
#include "plot/capture.hpp"

namespace viewer {

struct RunPage {
    std::string label;            // "run 001": its text in the key
    std::vector<DrawCall> calls;  // what the row drew for the run
};

// How the curves of run k (0-based) are told from those of the others.
struct RunLook {
    int colour;  // colour index: 1, 2, 3, ... 15, then 1 again
    int width;   // line width: the page's own, on a mono page 1 to 4 times it
};
RunLook run_look(int k, bool colour, int line_width);

// The frames of a page: the window of each panel's frame in the order
// drawn, widened to the frames of every run that drew a point in it.
std::vector<std::array<float, 4>> frames_over(std::span<const RunPage> runs);

// Draws the pages of `runs` (at least one) as one on the session's
// graphics; the foot says `foot`.
void draw_runs(Session& s, std::span<const RunPage> runs, const std::string& foot);

}  // namespace viewer
