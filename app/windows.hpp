// The two graphics windows, their configuration file `win_config.dat`, the
// panel layout with its character height, and the page foot.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "core/session.hpp"
#include "plot/page.hpp"

namespace viewer {

// Opens the plot window 102, then the menu window 101, reads the
// configuration and sets sizes, colours and fonts. Leaves the menu selected.
void open_window(Session& s);

// Defaults, overlaid by `win_config.dat` when it exists; a broken file stops
// the program with a message.
void set_win_config(Session& s);

// Brings `win_config.dat` up to date unless it is locked, then ends PGPLOT.
void end_prog(Session& s);

// Asks for the three texts of the label record of the plot on show.
void change_title(Session& s);

// Paper, colours, font, height and width of a hardcopy device.
void set_hardcopy_look(Session& s);

// The namelist group WIN_CONFIG: read over `cfg` (false on a read error),
// and written with all nine keys in canonical order.
bool read_win_config(std::istream& in, WinConfig& cfg);
std::string write_win_config(const WinConfig& cfg);

}  // namespace viewer
