// Studies over a generated tree: which runs are found (links, loops,
// unreadable folders, names with dots and signs, twins in two folders),
// their states and figures against their tables, the Pareto front against
// its definition, the names that tell runs apart, and the cache.
#include "core/study.hpp"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <random>
#include <sstream>

#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

// `n` records along z of a beam table; the rms size dips to `low` at record `dip`.
std::string table(int n, double low = 0.5, int dip = 3, double scale = 1) {
    std::string t;
    for (int i = 0; i < n; ++i)
        t += fixed_record(
            {0.1 * i, 1e-3 * i, 0.01, i == dip ? low : scale * (1 + 0.1 * i), 0.5, scale * (2 + i), 0.1});
    return t;
}

void put(const fs::path& dir, const std::string& name, const std::string& text, bool old = true) {
    fs::create_directories(dir);
    std::ofstream(dir / name) << text;
    if (old) fs::last_write_time(dir / name, fs::file_time_type::clock::now() - std::chrono::hours(1));
}

std::string cell(const StudyRun& r, const char* figure) {
    const auto v = r.values[static_cast<std::size_t>(figure_index(figure))];
    return v ? std::to_string(*v).substr(0, 6) : "-";
}

TEST(Study, RunsOfATreeWithTheirStatesAndFigures) {
    TempDir d;
    const fs::path root = d.path;
    put(root, "gun.Xemit.001", table(10));
    put(root, "gun.Yemit.001", table(10, 0.25, 5, 2));
    put(root, "gun.Zemit.001", table(10));
    put(root, "gun.ref.001", "0 0 0 0 0 0 0\n");              // not a beam table
    put(root / "a", "gun_nx=ny=16.Xemit.002", table(4));      // x alone
    put(root / "a", "gun_H=-10.Zemit.001", table(4), false);  // written just now
    put(root / "a" / "b", "gun.Xemit.001", table(6));         // the twin of the root's, deeper
    put(root / "a" / "b", "gun.Yemit.001", table(5));         // ends earlier
    put(root / "dead", "Candidate000001.Xemit.001", "");
    put(root / "dead", "Candidate000001.Yemit.001", "  1.0000E+00");  // no whole record
    put(root / "1/2/3/4/5/6/7/8", "deep.Xemit.001", table(2));
    put(root / "1/2/3/4/5/6/7/8/9", "deeper.Xemit.001", table(2));  // past 8 levels
    TempDir outside;
    put(outside.path, "out.Xemit.001", table(3));
    fs::create_directory_symlink(outside.path, root / "out");             // leads out: not followed
    fs::create_directory_symlink(root / "a", root / "a" / "b" / "loop");  // back in: not twice
    fs::create_directories(root / "locked");
    put(root / "locked", "hidden.Xemit.001", table(3));
    fs::permissions(root / "locked", fs::perms::none);
    const bool root_user = ::geteuid() == 0;  // root reads every folder

    StudyCache cache;
    std::ostringstream err;
    const Study s = run_study({d.path}, cache, err, 2);
    std::vector<std::string> rows;
    for (const StudyRun& r : s.runs)
        rows.push_back(r.name() + " " + state_name(r.state) + " " + std::to_string(r.records) + " " +
                       cell(r, "X_RMS") + " " + cell(r, "Y_RMS_MIN") + " " + cell(r, "Y_RMS_MIN_Z") + " " +
                       cell(r, "E_MEAN"));
    std::vector<std::string> want = {
        // by folder, project and run
        "gun,001 complete 10 1.9000 0.2500 0.5000 0.0100", "1/2/3/4/5/6/7/8/deep,001 complete 2 1.1000 - - -",
        "a/gun_H=-10,001 growing 4 - - - 0.0100",
        "a/gun_nx=ny=16,002 complete 4 0.5000 - - -",  // its last record is the dip
        "a/b/gun,001 partial 6 1.5000 0.5000 0.3000 -",    "dead/Candidate000001,001 empty 0 - - - -",
    };
    if (root_user) want.push_back("locked/hidden,001 complete 3 1.2000 - - -");
    EXPECT_EQ(rows, want);
    EXPECT_EQ(err.str().find("locked") != std::string::npos, !root_user) << err.str();
    fs::permissions(root / "locked", fs::perms::owner_all);
    EXPECT_THROW(run_study({d.path + "/nothere"}, cache, err), std::runtime_error);
}

TEST(Study, TheCacheReadsATableAgainOnlyWhenItChanged) {
    TempDir d;
    put(d.path, "p.Xemit.001", table(10));
    put(d.path, "p.Zemit.001", table(10));
    StudyCache cache;
    std::ostringstream err;
    run_study({d.path}, cache, err, 1);
    run_study({d.path}, cache, err, 1);
    EXPECT_EQ(cache.reads(), 2u);
    put(d.path, "p.Xemit.001", table(12));
    const Study s = run_study({d.path}, cache, err, 1);
    EXPECT_EQ(cache.reads(), 3u);
    EXPECT_EQ(s.runs.at(0).records, 12);
    EXPECT_EQ(s.runs.at(0).state, RunState::partial);
}

// No run off the front is left undominated, none on it is dominated, and a
// run lacking a figure takes no part.
TEST(Study, TheFrontIsWhatNoOtherRunBeats) {
    std::mt19937 rng(5);
    std::uniform_int_distribution<int> v(0, 6), gap(0, 9);  // few values: ties are many
    for (int trial = 0; trial < 50; ++trial) {
        const int m = 2 + trial % 2;
        std::vector<bool> larger(static_cast<std::size_t>(m));
        for (int k = 0; k < m; ++k) larger[static_cast<std::size_t>(k)] = (trial + k) % 3 == 0;
        std::vector<std::vector<std::optional<double>>> rows(40);
        for (auto& r : rows)
            for (int k = 0; k < m; ++k) r.push_back(gap(rng) ? std::optional<double>(v(rng)) : std::nullopt);
        const std::vector<bool> on = pareto_front(rows, larger);
        auto whole = [&](std::size_t i) {
            return std::all_of(rows[i].begin(), rows[i].end(), [](auto& x) { return x.has_value(); });
        };
        auto beats = [&](std::size_t a, std::size_t b) {  // a dominates b
            bool strictly = false;
            for (int k = 0; k < m; ++k) {
                double x = *rows[a][static_cast<std::size_t>(k)], y = *rows[b][static_cast<std::size_t>(k)];
                if (larger[static_cast<std::size_t>(k)]) std::swap(x, y);
                if (x > y) return false;
                strictly = strictly || x < y;
            }
            return strictly;
        };
        for (std::size_t i = 0; i < rows.size(); ++i) {
            bool beaten = false;
            for (std::size_t j = 0; j < rows.size(); ++j)
                beaten = beaten || (whole(i) && whole(j) && beats(j, i));
            EXPECT_EQ(on[i], whole(i) && !beaten) << "trial " << trial << ", run " << i;
        }
    }
}

TEST(Study, NamesAsShortAsTellsTheRunsApart) {
    auto run = [](std::string folder, std::string project, int n) {
        StudyRun r;
        r.root = "/data";
        r.folder = std::move(folder);
        r.project = std::move(project);
        r.run = n;
        return r;
    };
    const std::vector<StudyRun> runs = {run("mesh/a", "gun", 1), run("old/a", "gun", 1),
                                        run("mesh/b", "gun", 1), run("mesh/b", "gun", 2),
                                        run(".", "solo", 3)};
    EXPECT_EQ(shortest_names(runs),
              (std::vector<std::string>{"mesh/a/gun,1", "old/a/gun,1", "b/gun,1", "gun,2", "solo,3"}));
}

}  // namespace
