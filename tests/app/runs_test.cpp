// Several runs on one plot: the lists of runs, one statistics block a run
// as the run alone gives it, the frame over all runs, each run's colour or
// line width and the key naming them, and every refusal with its status.
#include "plot/runs.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <sstream>

#include "app/export.hpp"
#include "app/startup.hpp"
#include "core/run_catalogue.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

// Runs 1 to 3 of project "p", each of its own size; run 3 ends at z = 0.1.
struct Runs {
    Harness h;
    std::ostringstream err;
    Runs() {
        for (int r = 1; r <= 3; ++r)
            for (const char* kind : {".Xemit.00", ".Yemit.00", ".Zemit.00"})
                h.dir.write(std::string("p") + kind + std::to_string(r), emit_table(r == 3 ? 2 : 6, 0.5 * r));
    }
    int run(const std::string& line) { return h.export_line(line, err); }
    // The colour index and line width of each curve drawn, in order.
    std::vector<std::pair<int, int>> looks() const {
        std::vector<std::pair<int, int>> out;
        std::vector<std::pair<int, int>> saved;
        int ci = 1, lw = 1;
        for (const GraphicsCall& c : h.g.calls) {
            if (c.name == "pgsci") ci = static_cast<int>(c.args[0]);
            if (c.name == "pgslw") lw = static_cast<int>(c.args[0]);
            if (c.name == "pgsave") saved.emplace_back(ci, lw);
            if (c.name == "pgunsa" && !saved.empty()) std::tie(ci, lw) = saved.back(), saved.pop_back();
            if (c.name == "pgline" && c.layer == Layer::data && c.xs.size() > 1) out.emplace_back(ci, lw);
        }
        return out;
    }
};

}  // namespace

TEST(Runs, ListsOfRuns) {
    // clang-format off
    const std::pair<const char*, std::vector<int>> good[] = {
        {"1,3,5", {1, 3, 5}}, {"1-5", {1, 2, 3, 4, 5}}, {"2-4,7", {2, 3, 4, 7}}, {"5-3", {5, 4, 3}},
        {"0", {0}}, {"999", {999}}, {"3,1,3,2-3", {3, 1, 2}}, {"007", {7}},
    };
    // clang-format on
    for (const auto& [text, runs] : good) {
        SCOPED_TRACE(text);
        EXPECT_EQ(parse_run_list(text).runs, runs);
    }
    EXPECT_TRUE(parse_run_list("all").all);
    for (const char* bad : {"", "1,", ",1", "1-", "-1", "a", "1000", "1-1000", "1--2", "1-2-3", " 1", "1;2",
                            "0x1", "+1", "All"}) {
        SCOPED_TRACE(bad);
        EXPECT_THROW(parse_run_list(bad), UsageError);
    }
}

TEST(Runs, EachRunAsAloneOnOneFrameInItsLook) {
    const std::string echo = " " + std::string(74, '-') + "\n rms Beam Size\n";
    Runs all;
    ASSERT_EQ(all.run("p --plot 1:2 --runs 3,1,2 --zoom 0:0.3 --out a.ps"), 0) << all.err.str();
    std::string blocks = echo;
    std::array<float, 4> frame{1e30f, -1e30f, 1e30f, -1e30f};
    for (int r : {3, 1, 2}) {
        Runs one;
        ASSERT_EQ(one.run("p," + std::to_string(r) + " --plot 1:2 --zoom 0:0.3 --out a.ps"), 0);
        blocks += "     run 00" + std::to_string(r) + "\n" + one.h.console().substr(echo.size());
        const GraphicsCall& f = *one.h.g.named("pgenv").at(0);
        frame = {std::min(frame[0], float(f.args[0])), std::max(frame[1], float(f.args[1])),
                 std::min(frame[2], float(f.args[2])), std::max(frame[3], float(f.args[3]))};
    }
    EXPECT_EQ(all.h.console(), blocks);  // in the order of the list
    ASSERT_EQ(all.h.g.named("pgenv").size(), 1u);
    EXPECT_TRUE(window_is(*all.h.g.named("pgenv")[0], frame[0], frame[1], frame[2], frame[3]));
    // two curves a run, told apart by line style; the runs by colour, and the key names them
    EXPECT_EQ(all.looks(),
              (std::vector<std::pair<int, int>>{{1, 2}, {1, 2}, {2, 2}, {2, 2}, {3, 2}, {3, 2}}));
    std::vector<std::string> keys;
    for (auto* t : all.h.g.named("pgtext")) keys.push_back(std::string(trim_right(t->texts[0])));
    EXPECT_EQ(keys, (std::vector<std::string>{"run 003", "run 001", "run 002"}));

    // A run without a point in the window leaves the frame to the others; a
    // mono page tells the runs apart by line width.
    Runs mono, two;
    ASSERT_EQ(mono.run("p --plot 1:2 --runs 1-3 --zoom 0.2:0.5 --mono --out a.ps"), 0);
    ASSERT_EQ(two.run("p --plot 1:2 --runs 1-2 --zoom 0.2:0.5 --mono --out a.ps"), 0);
    EXPECT_EQ(mono.h.g.named("pgenv")[0]->args, two.h.g.named("pgenv")[0]->args);
    EXPECT_EQ(mono.looks(), (std::vector<std::pair<int, int>>{{1, 2}, {1, 2}, {1, 4}, {1, 4}}));
    // the look of a run: colours 1 to 15 then again, widths 1 to 4 times the page's
    const std::tuple<int, bool, RunLook> plan[] = {
        {0, true, {1, 2}},  {1, true, {2, 2}},  {14, true, {15, 2}}, {15, true, {1, 2}},
        {0, false, {1, 2}}, {3, false, {1, 8}}, {4, false, {1, 2}}};
    for (const auto& [k, colour, look] : plan) {
        const RunLook got = run_look(k, colour, 2);
        EXPECT_EQ(std::pair(got.colour, got.width), std::pair(look.colour, look.width)) << k;
    }
}

// Runs of other projects and folders: each item's tables, named in the key
// as briefly as tells them apart, and the items told from lists of runs.
TEST(Runs, RunsOfOtherProjectsAndFolders) {
    Runs r;
    for (const char* dir : {"mesh/a", "old/a"}) {
        std::filesystem::create_directories(r.h.dir.file(dir));
        for (const char* kind : {".Xemit.001", ".Yemit.001"})
            r.h.dir.write(std::string(dir) + "/gun" + kind, emit_table(4, dir[0] == 'm' ? 2 : 3));
    }
    ASSERT_EQ(r.run("--plot 1:2 --runs mesh/a/gun,1 old/a/gun,1 p,2 --out a.ps"), 0) << r.err.str();
    std::vector<std::string> keys;
    for (auto* t : r.h.g.named("pgtext")) keys.push_back(std::string(trim_right(t->texts[0])));
    EXPECT_EQ(keys, (std::vector<std::string>{"mesh/a/gun,1", "old/a/gun,1", "p,2"}));
    EXPECT_TRUE(has(r.h.console(), "     old/a/gun,1\n"));
    EXPECT_NEAR(r.h.g.named("pgenv").at(0)->args[3], 3 * (1 + 0.1 * 3) * 1.2, 1e-5);  // the largest, old/a's
    // clang-format off
    const std::tuple<const char*, bool> items[] = {
        {"gun,1", true}, {"mesh/gun_n=16,1", true}, {"../old/gun,3", true}, {"1,3,5", false}, {"2-4,7", false},
        {"all", false}, {",1", false},
    };
    // clang-format on
    for (const auto& [text, item] : items) EXPECT_EQ(is_run_item(text), item) << text;
    for (const char* bad : {"--runs gun,1000", "--runs gun,x", "--runs gun,"}) {
        SCOPED_TRACE(bad);
        EXPECT_THROW(request_of(std::string("--plot 1:2 ") + bad + " --out a.ps"), UsageError);
    }
}

TEST(Runs, Refusals) {
    // clang-format off
    const std::tuple<const char*, int, const char*> cases[] = {
        {"p --plot 1:14 --runs 1-3 --out a.ps", 2, "row 1:14 (\"Trajectories x vs. z; y vs. z\") shows one run"},
        {"p --plot 2:1 --runs 1-3 --out a.ps", 2, "shows one run"},
        {"p --plot 1:2 --runs 7-9 --out a.ps", 1, "no data files of project p for the runs listed"},
        {"p --plot 1:10 --runs 1-3 --out a.ps", 1, "no run of the list has the tables of row 1:10"},
        {"p --plot 1:2 --runs 2,9 --out a.ps", 0, "viewer: run 009 is left out of row 1:2: it has no .Xemit and .Yemit"},
        {"q --plot 1:2 --runs all --out a.ps", 1, "no runs of project q in"},
        {"p --plot 1:2 --runs 1-1000", -1, "--runs takes run numbers 0 to 999"},
        {"p --list --runs 1", -1, "--list goes alone"},
        {"p --plot 1:2 --runs 1 --size 20x20 --csv a.csv", -1, "--size is for .png files only"},
    };
    // clang-format on
    for (auto [args, status, words] : cases) {
        SCOPED_TRACE(args);
        Runs e;
        try {
            EXPECT_EQ(e.run(args), status);
            EXPECT_TRUE(has(e.err.str(), words));
        } catch (const UsageError& u) {
            EXPECT_TRUE(status == -1 && has(u.what(), words)) << u.what();
        }
    }
}

TEST(Projects, WhatADirectoryHolds) {
    // clang-format off
    const std::tuple<std::vector<std::string>, int, std::string> cases[] = {
        {{"p.Xemit.001", "p.Yemit.001", "p.ref.002", "q.r=1.5.Zemit.010", "q.r=1.5.lab-E.010"}, 0,
         "p  2 runs\n  001  .Xemit .Yemit\n  002  .ref\nq.r=1.5  1 run\n  010  .Zemit .lab-E\n"},
        {{"notes.Xemit.txt", "a.Xemit.1234", "b.Xemit.01", "c.Xemit.00x", "Xemit.001", "d.Xemit.002"}, 0,
         "d  1 run\n  002  .Xemit\n"},
        {{}, 1, ""},
        {{"notes.Xemit.txt", "a.Xemit.1234"}, 1, ""},
    };
    // clang-format on
    for (const auto& [files, status, listed] : cases) {
        Harness h;
        for (const std::string& f : files) h.dir.write(f, "1\n");
        std::ostringstream err;
        EXPECT_EQ(h.export_line("--projects", err), status);
        EXPECT_EQ(h.console(), listed);
        EXPECT_TRUE(status == 0 || has(err.str(), "viewer: no run tables in "));
    }
    // Thousands of files: a project a hundred runs of thirty tables, wrapped to 80 columns.
    Harness many;
    for (int run = 1; run <= 100; ++run)
        for (const RunKind& k : run_catalogue())
            if (k.kind != Kind::Sub_emit) many.dir.write(run_file_name(k, "big", "." + run_digits(run)), "");
    for (int i = 0; i < 900; ++i) many.dir.write("other" + std::to_string(i) + ".txt", "");
    std::ostringstream err;
    ASSERT_EQ(many.export_line("--projects", err), 0);
    const std::string c = many.console();
    EXPECT_TRUE(c.starts_with("big  100 runs\n  001  .Xemit .Yemit"));
    std::size_t lines = 0;
    for (std::size_t at = 0, next; (next = c.find('\n', at)) != std::string::npos; at = next + 1, ++lines)
        EXPECT_LE(next - at, 80u);
    EXPECT_EQ(lines, 1u + 100u * 3u);  // each run's 21 kinds take three lines
    EXPECT_THROW(request_of("p --projects"), UsageError);
}
