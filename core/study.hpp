// Studies: every run of a folder tree with its figures of merit, taken from
// the last record and the minima of its beam tables, and the runs on the
// Pareto front of some of them.
//
//   StudyCache cache;
//   Study s = run_study({"scans"}, cache, err);   // walks, reads on every core
//   auto front = pareto_front(s, {"NX_EMIT", "-E_MEAN"});
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace viewer {

// A figure a run may have: its name and unit.
struct FigureSpec {
    std::string name;  // "NX_EMIT", "X_RMS_MIN", ...
    std::string unit;  // "pi mrad mm"; "" where none
};
// Every figure, in the order of the columns.
const std::vector<FigureSpec>& study_figures();
// The position of `name` among them, or -1.
int figure_index(std::string_view name);
// "NX_EMIT NY_EMIT X_RMS Y_RMS Z_RMS E_MEAN"
const std::vector<std::string>& default_figures();

enum class RunState { complete, growing, empty, partial };
const char* state_name(RunState s);

struct StudyRun {
    std::string root;     // the folder given
    std::string folder;   // relative to root; "." for the root itself
    std::string project;  // as in the file names
    int run = 0;
    RunState state = RunState::complete;
    long records = 0;                           // the most of any of its beam tables
    std::vector<std::optional<double>> values;  // one a figure of `study_figures`
    std::string dir() const;                    // root/folder
    std::string name() const;                   // folder/project,run
};

// What one beam table gives, kept by path, size and time.
struct TableFigures {
    long records = 0;
    std::vector<float> last;  // the last whole record; empty when none
    float min_rms = 0, min_rms_z = 0;
    bool recent = false;  // changed in the last 60 s when read
};

// Figures of the tables read so far; safe to share between threads.
class StudyCache {
public:
    // The figures of `path`, read anew only when its size or time changed.
    TableFigures figures(const std::string& path, int kind_index);
    std::size_t size() const;
    std::size_t reads() const;  // tables read, not taken from the cache

private:
    struct Entry {
        std::uintmax_t size;
        std::int64_t modified_ns;
        TableFigures f;
    };
    mutable std::mutex m_;
    std::map<std::string, Entry> entries_;
    std::size_t reads_ = 0;
};

struct Study {
    std::vector<StudyRun> runs;  // by root, folder, project, run
};

// Walks each root (8 levels at most; links to folders followed only inside
// the root and never twice), finds every run with at least one of .Xemit,
// .Yemit, .Zemit and takes its figures on `threads` threads (0: every
// core). Unreadable folders are named on `err`. Throws std::runtime_error
// for a root that is no folder.
Study run_study(const std::vector<std::string>& roots, StudyCache& cache, std::ostream& err, int threads = 0);

// The folders a study reads under `root`, relative to it ("." for the root
// itself), from `from` down, depth first in name order: 8 levels below the
// root at most, links to folders followed only inside the root, and none
// whose real path is in `seen`, which gains those walked. A watch walks a
// folder made later with the `seen` of its walk so far. Unreadable folders
// are named on `err` and left out. Throws std::runtime_error for a root that
// is no folder.
std::vector<std::string> study_folders(const std::string& root, const std::string& from,
                                       std::set<std::string>& seen, std::ostream& err);

// The runs of a folder (no walk) with their figures.
std::vector<StudyRun> runs_of_folder(const std::string& root, const std::string& folder, StudyCache& cache);

// For each run, whether it is on the Pareto front of the named figures
// (a leading '-': larger is better). A run lacking any of them is not.
std::vector<bool> pareto_front(const Study& s, const std::vector<std::string>& figures);
// The same over plain rows of values, `larger[k]` for figure k.
std::vector<bool> pareto_front(const std::vector<std::vector<std::optional<double>>>& rows,
                               const std::vector<bool>& larger);

// The shortest names that tell the runs apart: the last folders of each,
// as few as needed, then project and run ("gun,1", "b/gun,1", ...).
std::vector<std::string> shortest_names(const std::vector<StudyRun>& runs);

}  // namespace viewer
