// The headless export as a user runs it: the whole viewer process writing
// the overview sheet of page 1 from PKT-record beam tables to PostScript,
// beside the time to only read the three tables, which it cannot beat.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/null_graphics.hpp"
#include "core/fortran_format.hpp"
#include "core/records.hpp"
#include "core/run_catalogue.hpp"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace viewer;

struct BeamRun {
    testing::TempDir scratch{"export_bench"};
    const fs::path dir{scratch.path};
    BeamRun() {
        for (Kind k : {Kind::Xemit, Kind::Yemit, Kind::Zemit}) {
            std::FILE* f = std::fopen((dir / run_file_name(run_kind(k), "bench", ".001")).c_str(), "w");
            for (int r = 0; r < PKT; ++r) {
                const double z = 1e-3 * r;  // m
                std::string line = fmt_e12_4(z) + fmt_e12_4(1e-9 * r);
                for (int c = 2; c < 7; ++c) line += fmt_e12_4(1.0 + 0.3 * std::sin(z * c));
                std::fputs((line + "\n").c_str(), f);
            }
            std::fclose(f);
        }
    }
};

const BeamRun& beam_run() {
    static const BeamRun r;
    return r;
}

void BM_ExportFloor_ReadThreeTables(benchmark::State& state) {
    const BeamRun& run = beam_run();
    for (auto _ : state) {
        float sum = 0;
        for (Kind k : {Kind::Xemit, Kind::Yemit, Kind::Zemit}) {
            TableFile f;
            f.open((run.dir / run_file_name(run_kind(k), "bench", ".001")).string());
            RunRecord rec(run_kind(k));
            while (rec.read(f)) sum += rec.real(3);
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_ExportFloor_ReadThreeTables)->Unit(benchmark::kMillisecond);

// The whole process, from exec to exit; wall time, since the work is in the child.
void BM_ExportOverviewProcess(benchmark::State& state) {
    const BeamRun& run = beam_run();
    const std::string out = (run.dir / "page1.ps").string();
    const char* argv[] = {VIEWER_BINARY, "bench", "--overview", "1", "--out", out.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addchdir_np(&quiet, run.dir.c_str());
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, VIEWER_BINARY, &quiet, nullptr, const_cast<char* const*>(argv), environ) != 0)
            state.SkipWithError("cannot start the viewer");
        int status = 0;
        ::waitpid(pid, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) state.SkipWithError("the export failed");
    }
    posix_spawn_file_actions_destroy(&quiet);
}
BENCHMARK(BM_ExportOverviewProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
