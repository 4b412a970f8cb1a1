// Console dialogues of the main loop: zoom, run stepping, the questions
// after a load without data, and the number of bins.
#pragma once

#include "core/session.hpp"

namespace viewer {

// The abscissa window of a plot family (z, phase, scanned parameter, time)
// and the flag that puts it in force.
struct ZoomWindow {
    float* lower;
    float* upper;
    bool* zoomed;
};
// The family of the plot of `selection` on `page`.
ZoomWindow zoom_family(Session& s, int page, int selection);

// Asks for the abscissa window of the family of the plot on show.
void sub_zoom(Session& s);

// "next run" (forward) and "previous run": close the run, name the
// neighbour, keep the plot on show. The caller then loads the run.
void step_run(Session& s, bool forward);

// Loads the current run; while no data are found, asks the way back, the
// way forward or new arguments. Returns once the main loop can go on.
void load_with_dialogue(Session& s);

// "change number of bins": 1 to 3200, asked again otherwise.
void change_bins(Session& s);

}  // namespace viewer
