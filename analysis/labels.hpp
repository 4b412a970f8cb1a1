// The label files of the scan plots: up to eleven groups of three lines
// (abscissa, ordinate, title), read once per run into the session's labels.
#pragma once

#include <iosfwd>

#include "core/records.hpp"
#include "core/run_files.hpp"

namespace viewer {

constexpr int kLabelGroups = 11;

// Reads groups from where `f` stands into places first .. first + 10 of
// `labels`, each line straight into its text, so a file that ends inside a
// group keeps the lines it had. After each complete group `complete` (if
// given) changes it and `exists` is cleared: the file is read once, and a
// title typed later is not overwritten. False when the file cannot be read.
bool read_label_groups(TableFile& f, Labels& labels, int first, bool& exists,
                       void (*complete)(LabelRecord&) = nullptr);

// A group of the run-series file made fit a histogram: the title cut before
// its first "vs", the figure moved to the abscissa, counts on the ordinate.
void as_histogram_labels(LabelRecord& rec);

// The message of a label file that cannot be read.
void report_label_error(std::ostream& out);

}  // namespace viewer
