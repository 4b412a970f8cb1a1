// Studies at the size of an optimisation: 10^4 runs of three 400-record
// beam tables in 100 folders, made when the binary starts. The study over
// them (warm cache of the system, empty cache of figures, both cores)
// beside reading the same files once with the readers; the refresh of one
// changed run through the cache of figures; and the peak resident memory.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"
#include "core/study.hpp"
#include "tests/support/temp_dir.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

constexpr int kFolders = 100, kRunsPerFolder = 100, kRecords = 400;

struct Tree {
    testing::TempDir scratch{"study_bench"};
    std::vector<std::string> files;
    Tree() {
        std::string table;
        for (int i = 0; i < kRecords; ++i)
            for (double v : {0.01 * i, 1e-3 * i, 0.01, 1 + 0.001 * i, 0.5, 2 + 0.01 * i, 0.1})
                table += fmt_e12_4(v);
        // lines of 84 bytes: 7 fields and a line end
        std::string lines;
        for (std::size_t k = 0; k < table.size(); k += 84) lines += table.substr(k, 84) + "\n";
        for (int f = 0; f < kFolders; ++f) {
            const fs::path dir =
                fs::path(scratch.path) / ("family" + std::to_string(f / 10)) / ("f" + std::to_string(f));
            fs::create_directories(dir);
            for (int r = 0; r < kRunsPerFolder; ++r)
                for (const char* kind : {".Xemit.", ".Yemit.", ".Zemit."}) {
                    char run[8];
                    std::snprintf(run, sizeof run, "%03d", r % 1000);
                    const std::string name = (dir / ("gun_" + std::to_string(r) + kind + run)).string();
                    std::ofstream(name) << lines;
                    files.push_back(name);
                }
        }
        const auto old = fs::file_time_type::clock::now() - std::chrono::hours(1);
        for (const auto& f : files) fs::last_write_time(f, old);
    }
};

Tree& tree() {
    static Tree t;  // made once for all benchmarks of the binary
    return t;
}

long peak_kib() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_maxrss;
}

void BM_StudyOfTenThousandRuns(benchmark::State& state) {
    Tree& t = tree();
    std::size_t runs = 0;
    for (auto _ : state) {
        StudyCache cache;
        std::ostringstream err;
        runs = run_study({t.scratch.path}, cache, err, static_cast<int>(state.range(0))).runs.size();
    }
    state.counters["runs"] = static_cast<double>(runs);
    state.counters["peak_MiB"] = static_cast<double>(peak_kib()) / 1024;
}
BENCHMARK(BM_StudyOfTenThousandRuns)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// The floor: every table read once with the project's readers, on both cores.
void BM_ReadTheSameTablesOnce(benchmark::State& state) {
    Tree& t = tree();
    for (auto _ : state) {
        std::atomic<std::size_t> next{0};
        auto work = [&] {
            RunRecord r(run_kind(Kind::Xemit));
            for (std::size_t k; (k = next++) < t.files.size();) {
                TableFile f;
                f.open(t.files[k]);
                while (r.read(f)) benchmark::DoNotOptimize(r.real(3));
            }
        };
        std::thread other(work);
        work();
        other.join();
    }
}
BENCHMARK(BM_ReadTheSameTablesOnce)->Unit(benchmark::kMillisecond)->UseRealTime();

// --serve after the optimiser wrote one run: the folder the watch names,
// through the warm cache of figures, its one changed table read anew.
void BM_RefreshOfOneChangedRun(benchmark::State& state) {
    Tree& t = tree();
    StudyCache cache;
    std::ostringstream err;
    run_study({t.scratch.path}, cache, err);
    const fs::path changed = t.files[0];
    const std::string folder = changed.parent_path().lexically_relative(t.scratch.path).string();
    for (auto _ : state) {
        state.PauseTiming();
        fs::last_write_time(changed, fs::file_time_type::clock::now() - std::chrono::hours(2));
        state.ResumeTiming();
        benchmark::DoNotOptimize(runs_of_folder(t.scratch.path, folder, cache).size());
    }
}
BENCHMARK(BM_RefreshOfOneChangedRun)->Unit(benchmark::kMillisecond)->UseRealTime();

// The whole tree again through the warm cache: the walk and a look at
// every table, nothing read.
void BM_StudyAgainWithWarmCache(benchmark::State& state) {
    Tree& t = tree();
    StudyCache cache;
    std::ostringstream err;
    run_study({t.scratch.path}, cache, err);
    for (auto _ : state) benchmark::DoNotOptimize(run_study({t.scratch.path}, cache, err).runs.size());
}
BENCHMARK(BM_StudyAgainWithWarmCache)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
