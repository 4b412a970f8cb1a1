// The names and units of what each row draws, as the columns of a table:
// "z [m]", "sigma_x [mm]". A row states its own; the rows whose labels come
// from the run's files (the scans of page 3) and those whose curves change
// with the run take them from the frame's axis labels.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "plot/capture.hpp"

namespace viewer {

// One frame: the abscissa and one ordinate a curve, in drawing order.
struct PanelColumns {
    std::string x;
    std::vector<std::string> y;
};

// The columns of row `code` of `page`, one entry a panel of `f`.
std::vector<PanelColumns> columns_of(int page, int code, const Figure& f);

// A PGPLOT label in plain text: fonts dropped, greek letters named, sub-
// and superscripts as _ and ^: "\\ge\\dn,x\\u \\gp mrad mm" -> "epsilon_n,x pi mrad mm".
std::string plain_label(std::string_view label);

// "sigma_x [mm]" -> name "sigma_x", unit "mm"; without brackets the unit is "".
struct NameAndUnit {
    std::string name, unit;
};
NameAndUnit split_unit(std::string_view column);

}  // namespace viewer
