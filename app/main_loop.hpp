// The viewer from start to end: start-up, run load, the main loop over the
// menu pages, and the ways a session stops. Runs over the session's seams,
// so a test can drive a whole session from a script of clicks and lines.
#pragma once

#include <ctime>

#include "core/session.hpp"

namespace viewer {

// Runs a whole session; returns the exit status.
int run_viewer(Session& s, int argc, const char* const* argv, const std::tm& now);

}  // namespace viewer
