// The headless export as a user runs it: the whole viewer process writing
// the overview sheet of page 1 from PKT-record beam tables to PostScript,
// beside the time to only read the three tables, which it cannot beat.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "bench/bench_support.hpp"
#include "bench/null_graphics.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

struct BeamRun {
    testing::TempDir scratch{"export_bench"};
    const fs::path dir{scratch.path};
    BeamRun() {
        for (Kind k : {Kind::Xemit, Kind::Yemit, Kind::Zemit}) bench::write_beam_table(dir, k, ".001");
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

// The whole process, from exec to exit.
void BM_ExportOverviewProcess(benchmark::State& state) {
    const BeamRun& run = beam_run();
    bench::time_viewer(state, run.dir,
                       {"bench", "--overview", "1", "--out", (run.dir / "page1.ps").string()});
}
BENCHMARK(BM_ExportOverviewProcess)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
