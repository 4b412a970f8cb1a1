// A study through the export: the table with its front, sort and figures,
// the CSV and JSON of every figure (a figure a run lacks is empty or null,
// never 0), the scatter page and its CSV, and every refusal.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using namespace viewer::testing;

// Three runs: a and b with all three tables, c with .Xemit only.
struct Tree {
    Harness h;
    std::ostringstream err;
    Tree() {
        std::filesystem::create_directories(h.dir.file("s/deep"));
        for (const char* kind : {".Xemit.001", ".Yemit.001", ".Zemit.001"}) {
            h.dir.write(std::string("s/a") + kind, emit_table(5, 1.0));
            h.dir.write(std::string("s/deep/b") + kind, emit_table(5, 2.0));
        }
        h.dir.write("s/c.Xemit.001", emit_table(5, 0.5));
        for (const auto& e : std::filesystem::recursive_directory_iterator(h.dir.path))  // not growing
            if (e.is_regular_file())
                std::filesystem::last_write_time(e.path(), e.last_write_time() - std::chrono::hours(1));
    }
    int run(const std::string& line) { return h.export_line(line, err); }
};

TEST(StudyExport, TableFilesAndScatter) {
    Tree t;
    ASSERT_EQ(t.run("--study " + t.h.dir.file("s") +
                    " --front NX_EMIT,-E_MEAN --sort -X_RMS --figures X_RMS,E_MEAN "
                    "--csv all.csv --stats all.json"),
              0)
        << t.err.str();
    const std::string out = t.h.console();
    // sorted by X_RMS downwards: b (2.8), a (1.4), c (0.7); c lacks E_MEAN
    EXPECT_EQ(out,
              "folder  project  run  state           X_RMS       E_MEAN  front\n"
              "deep    b        001  complete          2.8            0      0\n"
              ".       a        001  complete          1.4            0      1\n"
              ".       c        001  complete          0.7            -      0\n"
              "3 runs, 1 on the front of NX_EMIT, -E_MEAN\n");
    const std::string csv = t.h.dir.read("all.csv");
    EXPECT_TRUE(has(csv, "folder,project,run,state,records,Z_MEAN [m],CLOCK [ns],X_MEAN [mm],X_RMS [mm]"));
    EXPECT_TRUE(has(csv,
                    "\n.,c,1,complete,5,0.400000006,3.99999989e-09,0,0.699999988,0.270000011,1.39999998,"
                    "0.400000006,,,,,,,,,,,0.5,0,,,,,0\n"));  // what c lacks is empty
    const auto j = nlohmann::json::parse(t.h.dir.read("all.json"));
    EXPECT_TRUE(j["runs"][2]["figures"]["E_MEAN [MeV]"].is_null());
    EXPECT_EQ(j["front"]["runs"], 1);

    Tree s;
    ASSERT_EQ(s.run("--study " + s.h.dir.file("s") +
                    " --scatter X_RMS:NX_EMIT --colour Z_RMS --out sc.ps --csv sc.csv"),
              0);
    EXPECT_EQ(s.h.g.named("pgpt").size(), 3u + 1u);  // a dot a run, then the front's marks
    EXPECT_EQ(s.h.dir.read("sc.csv"),
              "run,X_RMS [mm],NX_EMIT [pi mrad mm],Z_RMS [mm],front\n"
              "\"a,1\",1.39999998,2.79999995,1.39999998,0\n"
              "\"c,1\",0.699999988,1.39999998,,1\n"
              "\"b,1\",2.79999995,5.5999999,2.79999995,0\n");
}

TEST(StudyExport, Refusals) {
    // clang-format off
    const std::tuple<const char*, int, const char*> cases[] = {
        {"--study nothere", 1, "nothere is no folder"},
        {"--study empty", 1, "no run with .Xemit, .Yemit or .Zemit tables under"},
        {"--study s --figures X_RMS,FOO", -1, "--figures: unknown figure \"FOO\""},
        {"--study s --front NX_EMIT", -1, "--front takes two or three figures"},
        {"--study s --front -FOO,X_RMS", -1, "unknown figure \"-FOO\""},
        {"--study s --out a.ps", -1, "--out draws a --scatter A:B of the study"},
        {"--study s --colour X_RMS", -1, "--colour is for --scatter"},
        {"--sort X_RMS --plot 1:2 --out a.ps", -1, "are for --study"},
        {"p --study s", -1, "--study goes without a run argument"},
    };
    // clang-format on
    for (auto [args, status, words] : cases) {
        SCOPED_TRACE(args);
        Tree t;
        std::filesystem::create_directories(t.h.dir.file("empty"));
        std::string line = args;
        for (const char* d : {"nothere", "empty", "s"})  // folders of the harness
            if (const auto at = line.find(std::string(" ") + d);
                at != std::string::npos && line.find("--study") < at)
                line.replace(at + 1, std::strlen(d), t.h.dir.file(d));
        try {
            EXPECT_EQ(t.run(line), status);
            EXPECT_TRUE(has(t.err.str(), words));
        } catch (const UsageError& u) {
            EXPECT_TRUE(status == -1 && has(u.what(), words)) << u.what();
        }
    }
}

}  // namespace
