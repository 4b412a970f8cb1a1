// The run data set: probing the twenty-two kinds of run file, their
// existence flags, the open units, and the measured line counts.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/run_catalogue.hpp"
#include "core/session.hpp"

namespace viewer {

// Probes and opens every kind of the current project and run; sets
// `fexist`, the counts, N_PAGES and NO_FOUND. True when data were found.
bool load_run(Session& s);

// Number of records of a file: non-blank lines of a text file, or records
// of a binary file. Missing file: message and stop.
void get_size(Session& s, const std::string& name, int& count);

// What the name of a run table says: <project><suffix>.<three digits>;
// nullopt for any other file name.
struct TableName {
    std::string project;
    const RunKind* kind;
    int run;  // 0..999
};
std::optional<TableName> table_name(std::string_view file);

// The run numbers of `project` in the working directory, ascending: those
// of every file named <project><suffix>.<three digits> of a kind.
std::vector<int> runs_in_directory(const Session& s, std::string_view project);
std::vector<int> runs_in_directory(const std::string& dir, std::string_view project);

// Which tables of run `run` (".001") of `project` lie in `dir`, as the run
// load would find them, without opening any.
Fexist tables_present(const std::string& dir, std::string_view project, std::string_view run);

// Closes every run file of the run.
void close_all(Session& s);

}  // namespace viewer
