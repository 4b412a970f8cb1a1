#include "control/main_loop.hpp"
namespace viewer {
int run_viewer(Session&, int, const char* const*, const std::tm&) { return 0; }
}  // namespace viewer
