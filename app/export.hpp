// The headless front end: menu rows or an overview sheet drawn into a file
// through the same page rows, plots, ranges and statistics as an
// interactive pass, with no window and no question; several runs on one
// plot; the points and numbers behind the plots as CSV and JSON.
#pragma once

#include <ctime>
#include <iosfwd>

#include "app/command_line.hpp"
#include "core/session.hpp"
#include "plot/capture.hpp"

namespace viewer {

// Carries out `r` over the session, whose graphics must be `capture` (it
// passes the drawing on to the device the capture targets, and keeps what
// the plots draw where the request needs it); statistics go to the
// session's console, failures to `err`. Returns the exit status: 0 done,
// 1 no data or a file that cannot be read or written, 2 a request this run
// cannot serve.
int run_export(Session& s, Capture& capture, const ExportRequest& r, const std::tm& now, std::ostream& err);

}  // namespace viewer
