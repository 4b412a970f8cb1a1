// Ten runs on one plot as a user asks for them: the whole viewer process
// drawing the beam size of runs 1 to 10 (PKT records each) to PostScript,
// beside reading the twenty tables it needs, which it cannot beat.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>

#include "app/startup.hpp"
#include "core/fortran_format.hpp"
#include "core/records.hpp"
#include "core/run_catalogue.hpp"
#include "tests/support/temp_dir.hpp"

extern char** environ;

namespace {

namespace fs = std::filesystem;
using namespace viewer;

constexpr int kRuns = 10;

struct TenRuns {
    testing::TempDir scratch{"runs_bench"};
    const fs::path dir{scratch.path};
    TenRuns() {
        for (int run = 1; run <= kRuns; ++run)
            for (Kind k : {Kind::Xemit, Kind::Yemit}) {
                std::FILE* f = std::fopen(path(k, run).c_str(), "w");
                for (int r = 0; r < PKT; ++r) {
                    const double z = 1e-3 * r;  // m
                    std::string line = fmt_e12_4(z) + fmt_e12_4(1e-9 * r);
                    for (int c = 2; c < 7; ++c) line += fmt_e12_4(run + 0.3 * std::sin(z * c));
                    std::fputs((line + "\n").c_str(), f);
                }
                std::fclose(f);
            }
    }
    std::string path(Kind k, int run) const {
        return (dir / run_file_name(run_kind(k), "bench", "." + run_digits(run))).string();
    }
};

const TenRuns& ten_runs() {
    static const TenRuns r;
    return r;
}

void BM_RunsFloor_ReadTwentyTables(benchmark::State& state) {
    const TenRuns& runs = ten_runs();
    for (auto _ : state) {
        float sum = 0;
        for (int run = 1; run <= kRuns; ++run)
            for (Kind k : {Kind::Xemit, Kind::Yemit}) {
                TableFile f;
                f.open(runs.path(k, run));
                RunRecord rec(run_kind(k));
                while (rec.read(f)) sum += rec.real(3);
            }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(BM_RunsFloor_ReadTwentyTables)->Unit(benchmark::kMillisecond);

// The whole process, from exec to exit; wall time, since the work is in the child.
void BM_RunsOnePlotProcess(benchmark::State& state) {
    const TenRuns& runs = ten_runs();
    const std::string out = (runs.dir / "runs.ps").string();
    const char* argv[] = {VIEWER_BINARY, "bench", "--plot",    "1:2",  "--runs",
                          "1-10",        "--out", out.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addchdir_np(&quiet, runs.dir.c_str());
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
BENCHMARK(BM_RunsOnePlotProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
