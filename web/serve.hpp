// `viewer [ARG] --serve [[HOST:]PORT]`: the browser view of a run, served
// until the process is told to stop (SIGINT, SIGTERM).
#pragma once

#include <ctime>
#include <iosfwd>

#include "app/command_line.hpp"

namespace viewer::web {

// Serves the run of `r`: prints the URL with its token on `out`, warnings
// and failures on `err`. Returns 0 when stopped by a signal, 1 when the
// address cannot be bound.
int run_serve(const ExportRequest& r, const std::tm& now, std::ostream& out, std::ostream& err);

// 127.0.0.0/8, ::1 and "localhost": addresses only this machine reaches.
bool loopback(const std::string& host);

}  // namespace viewer::web
