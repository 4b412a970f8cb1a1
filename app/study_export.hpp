// A study in the headless export: the table of runs on standard output,
// every figure as CSV or JSON, the Pareto front, and the scatter page.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "app/command_line.hpp"
#include "core/study.hpp"
#include "plot/scatter.hpp"

namespace viewer {

// The runs of a request, sorted as asked, with the front where asked.
struct StudyTable {
    Study study;
    std::vector<std::string> shown;  // the figures of the table
    std::vector<bool> front;         // empty without --front
    std::vector<std::string> names;  // the shortest names that tell the runs apart
};

// Walks and reads; throws ExportFailure for a folder that is none or a
// study without a run.
StudyTable make_study(const ExportRequest& r, StudyCache& cache, std::ostream& err);

// One line a run: folder, project, run, state, figures, front.
void print_study(std::ostream& out, const StudyTable& t, const ExportRequest& r);
// Every figure of every run; empty fields for what a run lacks.
void write_study_csv(std::ostream& out, const StudyTable& t);
std::string study_json(const StudyTable& t, const ExportRequest& r);

// The points of --scatter A:B [--colour C] and their CSV.
std::vector<ScatterPoint> scatter_points(const StudyTable& t, const ExportRequest& r);
ScatterLabels scatter_labels(const ExportRequest& r);
void write_scatter_csv(std::ostream& out, const StudyTable& t, const ExportRequest& r);

}  // namespace viewer
