// The headless front end: menu rows or an overview sheet drawn into a file
// through the same page rows, plots, ranges and statistics as an
// interactive pass, with no window and no question.
#pragma once

#include <ctime>
#include <iosfwd>

#include "app/command_line.hpp"
#include "core/session.hpp"

namespace viewer {

// Carries out `r` over the session; statistics go to the session's console,
// failures to `err`. Returns the exit status: 0 done, 1 no data or a file
// that cannot be read or written, 2 a request this run cannot serve.
int run_export(Session& s, const ExportRequest& r, const std::tm& now, std::ostream& err);

}  // namespace viewer
