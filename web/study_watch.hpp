// Watches the study's folder tree while optimisers write runs into it: a
// watch on every folder the study reads (folders made later are added, those
// removed dropped) and the runs of each folder kept with their figures. An
// event refreshes the runs of its own folder through the cache of figures;
// the whole tree is walked again only at the start, when inotify lost
// events, and every half minute as a net for what it cannot see (a network
// file system). Where inotify cannot be had the tree is walked every few
// seconds instead.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "core/study.hpp"
#include "web/inotify.hpp"

namespace viewer::web {

class StudyWatch {
public:
    // Walks `root` and reads its runs before it returns. `poll`: walk the
    // tree every few seconds instead of asking inotify.
    explicit StudyWatch(std::string root, bool poll = false);
    ~StudyWatch();
    StudyWatch(const StudyWatch&) = delete;
    StudyWatch& operator=(const StudyWatch&) = delete;

    // The runs as now written, in the order of `run_study`: what inotify has
    // already told of is taken in first, so a run written before the call
    // is in it (when polling: as of the last walk).
    std::shared_ptr<const Study> study();

    // How many times the study has changed: a run appeared or went, or its
    // state, records or figures changed.
    std::uint64_t changes();
    // How many times anything in `folder` (relative to the root) may have
    // changed, its particle files and other tables too.
    std::uint64_t touches(const std::string& folder);
    // Waits until the count of `changes` (folder empty) or of `touches`
    // passes `seen`, the watch stops, or `timeout` passes; returns the count.
    std::uint64_t wait(const std::string& folder, std::uint64_t seen, std::chrono::milliseconds timeout);

    void stop();
    bool polling() const { return polling_; }
    std::size_t folders();    // under watch
    std::size_t refreshes();  // folders read again so far, one a folder for each catch-up

private:
    enum class Refresh { events, growing, all };
    struct Folder {
        int wd = -1;
        std::string real;  // its canonical path, as the walk's `seen` holds it
        std::vector<StudyRun> runs;
        std::string signature;
        bool growing = false;
    };
    struct Pass;
    void loop();
    // Takes in what inotify queued, then reads again the folders it names
    // (or those with a growing run, or all of them after a new walk).
    void catch_up(Refresh how);
    void track(const std::string& folder);  // watched, or watched anew
    void add(const std::string& folder, Pass& pass);
    void drop(const std::string& folder, Pass& pass);  // with the folders below it
    void walk(Pass& pass);

    const std::string root_;
    std::atomic<bool> polling_;
    Inotify inotify_;
    StudyCache cache_;

    std::mutex work_;  // one catch-up at a time, the thread's or a request's; guards what follows
    std::map<std::string, Folder> folders_;
    std::map<int, std::string> wds_;  // inotify's watch descriptor: the folder
    std::set<std::string> seen_;      // real paths walked
    std::size_t refreshes_ = 0;
    bool published_ = false;

    std::mutex m_;  // guards what follows
    std::condition_variable cv_;
    std::shared_ptr<const Study> study_;
    std::uint64_t changes_ = 0;
    std::map<std::string, std::uint64_t> touched_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace viewer::web
