// Ten runs on one plot as a user asks for them: the whole viewer process
// drawing the beam size of runs 1 to 10 (PKT records each) to PostScript,
// beside reading the twenty tables it needs, which it cannot beat.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "app/startup.hpp"
#include "bench/bench_support.hpp"
#include "tests/support/temp_dir.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

constexpr int kRuns = 10;

struct TenRuns {
    testing::TempDir scratch{"runs_bench"};
    const fs::path dir{scratch.path};
    TenRuns() {
        for (int run = 1; run <= kRuns; ++run)
            for (Kind k : {Kind::Xemit, Kind::Yemit})
                bench::write_beam_table(dir, k, "." + run_digits(run), run);
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

// The whole process, from exec to exit.
void BM_RunsOnePlotProcess(benchmark::State& state) {
    const TenRuns& runs = ten_runs();
    bench::time_viewer(
        state, runs.dir,
        {"bench", "--plot", "1:2", "--runs", "1-10", "--out", (runs.dir / "runs.ps").string()});
}
BENCHMARK(BM_RunsOnePlotProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

// `viewer --projects` in a directory of 3000 files: a hundred runs of
// thirty kinds, and 900 other files.
void BM_ProjectsOf3000Files(benchmark::State& state) {
    viewer::testing::TempDir dir{"projects_bench"};
    for (int run = 1; run <= 100; ++run)
        for (const RunKind& k : run_catalogue())
            if (k.kind != Kind::Sub_emit) dir.write(run_file_name(k, "big", "." + run_digits(run)), "");
    for (int i = 0; i < 900; ++i) dir.write("other" + std::to_string(i) + ".txt", "");
    bench::time_viewer(state, dir.path, {"--projects"});
}
BENCHMARK(BM_ProjectsOf3000Files)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
