// The study as the browser view lists it: every run under the served
// directory with its id, figures and shortest name, and the text that
// tells one state of the study from another for the answer cache.
#pragma once

#include <string>

#include "core/study.hpp"

namespace viewer::web {

// JSON: {"figures": [{name, unit}], "runs": [{id, folder, project, run,
// state, records, figures: {"NAME [unit]": value or null}, name}]}.
std::string study_listing(const Study& s);

// What the scatter shows of each run, as one text that differs whenever any of it changes.
std::string study_signature(const std::vector<StudyRun>& runs);

// A run as the export names it: "[DIR/]PROJECT".
std::string item_of(const StudyRun& r);

}  // namespace viewer::web
