// Watches the run directory while the tracker writes: each run's tables and
// particle files (and the aperture file) by size and modification time.
// Changes are learned from inotify, or by looking once a second where it is
// not to be had; a waiter is woken when a run it watches has changed.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "web/inotify.hpp"

namespace viewer::web {

// One table of a run as the directory holds it now.
struct TableState {
    std::string kind;  // ".Xemit"
    std::string file;
    std::uintmax_t size = 0;
    std::int64_t modified_ns = 0;  // since the epoch
    std::uint64_t inode = 0;       // a table written anew under its name is a new file,
                                   // whatever the resolution of the times
};

// The tables of run `run` of `project` in `dir` that exist, in the order
// of the run-file catalogue.
std::vector<TableState> tables_of(const std::string& dir, const std::string& project, int run);

// The particle files of run `run` (kind "particles"), in the order of
// `particle_files`, whose places are the files' ids; a file gone since it
// was listed keeps its place with nothing in its state.
std::vector<TableState> particles_of(const std::string& dir, const std::string& project, int run);

// The state of each file as one text that differs whenever any of them changes.
std::string states(const std::vector<TableState>& files);

// Sizes, times and inodes of the tables of `runs` (and of Geometry.dat when asked),
// as one text that differs whenever any of them changes.
std::string signature(const std::string& dir, const std::string& project, const std::vector<int>& runs,
                      bool geometry);

class Watcher {
public:
    // `poll`: look every second instead of asking inotify (also where
    // inotify cannot be had).
    Watcher(std::string dir, std::string project, bool poll = false);
    ~Watcher();
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // How many changes of run `run` have been seen.
    std::uint64_t changes(int run);
    // Waits until run `run` has changed more than `seen` times, the watcher
    // stops, or `timeout` passes; returns the count of changes then.
    std::uint64_t wait(int run, std::uint64_t seen, std::chrono::milliseconds timeout);
    void stop();
    bool polling() const { return polling_; }

private:
    void loop();
    void look(int run);  // under the mutex: compares run's files with what was seen

    std::string dir_, project_;
    bool polling_;
    Inotify inotify_;
    std::mutex m_;
    std::condition_variable cv_;
    std::map<int, std::string> seen_;  // signature of each run asked about
    std::map<int, std::uint64_t> changes_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace viewer::web
