// The watch over a study's folder tree: after each thing an optimiser or a
// person does to the tree the runs it keeps are those a walk finds, a changed
// run reads its own folder again and no other, and the pages hear of it.
#include "web/study_watch.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/web/served.hpp"
#include "web/study.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

// The study as a walk finds it now, with a cache of its own.
std::string walked(const std::string& root) {
    StudyCache cache;
    std::ostringstream err;
    return web::study_signature(run_study({root}, cache, err).runs);
}

// A record more at the end of each of the run's tables, written an hour ago.
void grow(const TempDir& dir, const std::string& stem) {
    for (const char* kind : {".Xemit.", ".Yemit.", ".Zemit."}) {
        const std::string name = stem.substr(0, stem.rfind('.')) + kind + stem.substr(stem.rfind('.') + 1);
        std::ofstream(dir.file(name), std::ios::app) << fixed_record({5.1, 1, 0, 2, 1, 1, 0});
        fs::last_write_time(dir.file(name), fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
}

// Waits for an event on `path` while `act` changes the tree; what the stream said.
std::string heard(const Served& s, const std::string& path, const std::function<void()>& act) {
    std::string seen;
    std::thread actor([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        act();
    });
    const auto start = std::chrono::steady_clock::now();
    s.client().Get(path + (has(path, "?") ? "&" : "?") + "token=" + kToken,
                   [&](const char* data, std::size_t n) {
                       seen.append(data, n);
                       return !has(seen, "event: change") &&
                              std::chrono::steady_clock::now() - start < std::chrono::seconds(10);
                   });
    actor.join();
    return seen;
}

}  // namespace

TEST(WebStudyWatch, KeepsWhatAWalkFinds) {
    TempDir dir("study-watch");
    TempDir outside("study-watch-out");
    run_in(dir, ".", "gun", 1);
    run_in(dir, "mesh", "gun", 1, 0, false, 2);
    run_in(outside, "far", "gun", 1);
    web::StudyWatch w(dir.path);
    std::string nine = "l1";
    for (int level = 2; level <= 9; ++level) nine += "/l" + std::to_string(level);
    const std::tuple<const char*, std::function<void()>, bool> steps[] = {
        {"a run in a folder watched", [&] { run_in(dir, "mesh", "gun", 3, 0, false, 3); }, true},
        {"a folder made", [&] { run_in(dir, "new", "opt", 1); }, true},
        {"folders made deep at once", [&] { run_in(dir, "deep/a/b/c", "opt", 2, 7); }, true},
        {"a run that grows", [&] { grow(dir, "mesh/gun.001"); }, true},
        {"a link to a folder walked", [&] { fs::create_directory_symlink(dir.file("mesh"), dir.file("z")); },
         false},
        {"a link out of the tree",
         [&] { fs::create_directory_symlink(outside.file("far"), dir.file("far")); }, false},
        {"a folder moved in the tree", [&] { fs::rename(dir.file("new"), dir.file("deep/moved")); }, true},
        {"a folder removed", [&] { fs::remove_all(dir.file("deep/a")); }, true},
        {"a run removed", [&] { fs::remove(dir.file("mesh/gun.Xemit.003")); }, true},
        {"nine levels down", [&] { run_in(dir, nine, "opt", 1); }, false},
        {"a run eight levels down", [&] { run_in(dir, nine.substr(0, nine.rfind('/')), "opt", 1); }, true},
        {"a folder moved out of the tree", [&] { fs::rename(dir.file("l1"), outside.file("l1")); }, true},
    };
    for (const auto& [what, act, changes] : steps) {
        SCOPED_TRACE(what);
        const std::uint64_t before = w.changes();
        act();
        EXPECT_EQ(web::study_signature(w.study()->runs), walked(dir.path));
        EXPECT_EQ(w.changes() > before, changes);
        std::set<std::string> seen;
        std::ostringstream err;
        EXPECT_EQ(w.folders(), study_folders(dir.path, ".", seen, err).size());
    }
    EXPECT_FALSE(w.polling());
}

TEST(WebStudyWatch, AChangedRunReadsItsFolderAlone) {
    TempDir dir("study-watch");
    for (const char* folder : {"a", "b", "c", "d", "e", "f"}) run_in(dir, folder, "gun", 1);
    web::StudyWatch w(dir.path);
    const auto first = w.study();
    const std::size_t read = w.refreshes();
    grow(dir, "d/gun.001");
    const auto now = w.study();
    // one folder; a write and a change of time the watch may take apart
    EXPECT_GE(w.refreshes(), read + 1);
    EXPECT_LE(w.refreshes(), read + 2);
    ASSERT_EQ(now->runs.size(), 6u);
    EXPECT_EQ(now->runs[3].records, first->runs[3].records + 1);
    EXPECT_EQ(now->runs[2].records, first->runs[2].records);
}

TEST(WebStudyWatch, PagesHearOfTheStudyAndOfTheirRun) {
    for (bool poll : {false, true}) {
        SCOPED_TRACE(poll ? "polling" : "inotify");
        Served s(poll);
        run_in(s.dir, "mesh", "gun", 1);
        EXPECT_EQ(s.server->tree().polling(), poll);
        EXPECT_TRUE(has(heard(s, "/api/study/events", [&] { run_in(s.dir, "later/on", "opt", 1); }),
                        "event: change\ndata: {\"changes\":"));
        const auto runs = s.server->study()->runs;
        ASSERT_EQ(runs.size(), 5u);  // rfgun 1 to 3, later/on/opt,1, mesh/gun,1
        ASSERT_EQ(runs[4].name(), "mesh/gun,001");
        const std::string said =
            heard(s, "/api/events?study=4", [&] { particles_in(s.dir, "mesh/gun.0200.001"); });
        EXPECT_TRUE(has(said,
                        "event: change\ndata: {\"study\":4,\"run\":1,\"tables\":[{\"kind\":\".Xemit\","
                        "\"file\":\"gun.Xemit.001\""))
            << said;
    }
}
