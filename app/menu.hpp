// The menu widget: one page of dots and texts in the menu window, and the
// pick of a dot through the pointer.
#pragma once

#include "core/session.hpp"

namespace viewer {

// Draws the page held in `s.menue` (N left rows), marks `last`, waits for a
// pick and returns its code: 1..N left, 31..30+N_RIGHT right, -1 for a pick
// above the rows, 0 when the device gives no cursor.
int menu(Session& s, int last, int page, int n_pages, int N);

// Row heights of a page of N rows, 1-based.
float menu_row_y(int i, int N);

}  // namespace viewer
