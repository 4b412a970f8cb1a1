// The five menu pages as one table of data: row, text, condition, plot and
// panel layout. The page fill, the echo, the dispatch and the overview all
// read the same rows.
#pragma once

#include <string>
#include <string_view>

#include "core/session.hpp"

namespace viewer {

// When a row is offered, and the tables that takes.
struct Condition {
    bool (*holds)(const Fexist&);
    const char* needs;  // ".Xemit and .Yemit"
};

struct MenuRow {
    int code;                        // 1..25 left row, 31.. right row
    const char* text;                // as shown when the condition holds
    const Condition* shown;          // null: never shown
    void (*plot)(Session&);          // null: nothing drawn
    int nx = 1, ny = 1;              // panel layout
    const char* sub_text = nullptr;  // text while `.Sub_emit` is on show
};

// The row of `code` on `page`, or null where the page has none.
const MenuRow* find_row(int page, int code);

// A row that draws a plot and whose tables are there.
bool available(const MenuRow& r, const Fexist& f);

// Calls the plot of the row `window.SELECTION` of `window.PAGE` with its
// panels, and marks it as the last selection; codes without a row, the
// common rows and the actions of page 3 call nothing.
void dispatch(Session& s);

// Blanks the page and writes the rows whose conditions hold, and the common
// rows 19 to 25.
void page_fill(Session& s);

// Row 18 follows the geometry flag.
void write_geometry_row(Session& s);

// The text of a row as the menu shows it while its tables are there.
std::string menu_text(const MenuRow& r, const Fexist& f);

// A row drawn against z, whose curves several runs can share one frame.
bool along_z(int page, int code);

// The text echoed after a pick.
std::string echo_text(const Session& s, int code);

// A menu text as it is echoed: the two Twiss rows by their names.
std::string spoken(std::string_view menu_text);

}  // namespace viewer
