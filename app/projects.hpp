// `viewer --projects`: the projects whose run tables lie in a directory,
// each with its runs and the kinds of table each run has.
#pragma once

#include <iosfwd>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/run_catalogue.hpp"

namespace viewer {

struct ProjectRuns {
    std::string project;
    std::map<int, std::set<Kind>> runs;  // run number -> the kinds of its tables
};

// Every project with run tables in `dir`, in the order of their names.
std::vector<ProjectRuns> projects_in(const std::string& dir);

// The list as the command prints it: a project a line, then a line a run
// with its table kinds, wrapped to 80 columns.
void print_projects(std::ostream& out, const std::vector<ProjectRuns>& projects);

// `viewer --projects` in `dir`: the list on `out`, status 0; with no run
// table there a line on `err`, status 1.
int list_projects(const std::string& dir, std::ostream& out, std::ostream& err);

}  // namespace viewer
