// Cost of the probe plots over a long .track (10^6 records, 100 probes
// interleaved, ~80 MB), beside two plain parsing passes over the same file,
// which is the floor of a plot that reads it twice. A plot goes to a
// Graphics that does nothing (the viewer's own share), to PGPLOT's /NULL
// device and to a PostScript page. The peak resident memory after a plot at
// 10^5 and at 10^6 records shows that the plots stream the file.
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/resource.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <sstream>
#include <streambuf>
#include <string>

#include "bench/null_graphics.hpp"
#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"
#include "core/session.hpp"
#include "evolution/plots.hpp"
#include "tests/support/recording_graphics.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

constexpr long kRecords = 1'000'000;
constexpr int kProbes = 100;

// .track files of a given length, written once per process into a temporary directory.
class TrackFiles {
public:
    testing::TempDir scratch{"probe_bench"};
    const fs::path dir{scratch.path};

    std::string name(long records) {
        std::string n = "bench" + std::to_string(records) + ".track.001";
        if (written_[records]) return n;
        std::FILE* f = std::fopen((dir / n).c_str(), "w");
        for (long r = 0; r < records; ++r) {
            const int I = static_cast<int>(r % kProbes) + 1;
            const double z = 1e-4 * static_cast<double>(r / kProbes);  // m
            const double phase = 0.06 * I;
            std::string line = fmt_i(I, 5) + fmt_i(0, 5) + fmt_e12_4(z) + fmt_e12_4(std::sin(z * 3 + phase)) +
                               fmt_e12_4(0.5 * std::cos(z * 3 + phase)) + fmt_e12_4(-3e5 + 1e4 * I) +
                               fmt_e12_4(2e5 * std::sin(phase)) + fmt_e12_4(1e3 * z) + "\n";
            std::fputs(line.c_str(), f);
        }
        std::fclose(f);
        written_[records] = true;
        return n;
    }

private:
    std::map<long, bool> written_;
};

TrackFiles& files() {
    static TrackFiles t;
    return t;
}

// A session with the .track of `records` lines open on its unit, as the run load leaves it.
struct BenchSession : QuietSession {
    BenchSession(Graphics& g, long records) : QuietSession(g, files().dir.string()) {
        const RunKind& k = run_kind(Kind::track);
        if (!s.unit(k.unit).open(s.path(files().name(records)))) std::abort();
        s.fexist.track_EXISTS = true;
    }
};

void records_done(benchmark::State& state, long records) {
    state.SetItemsProcessed(state.iterations() * records);
}

void BM_TwoParsingPasses(benchmark::State& state) {
    NullGraphics g;
    BenchSession b(g, kRecords);
    const RunKind& k = run_kind(Kind::track);
    RunRecord r(k);
    TableFile& f = b.s.unit(k.unit);
    for (auto _ : state) {
        long n = 0;
        for (int pass = 0; pass < 2; ++pass) {
            while (r.read(f)) n += r.integer(track::I) <= kProbes;
            f.rewind();
        }
        if (n != 2 * kRecords) state.SkipWithError("file short");
        benchmark::DoNotOptimize(r.real(track::Z));
    }
    records_done(state, kRecords);
}
BENCHMARK(BM_TwoParsingPasses)->Unit(benchmark::kMillisecond);

void plot_null(benchmark::State& state, void (*plot)(Session&)) {
    NullGraphics g;
    BenchSession b(g, kRecords);
    for (auto _ : state) plot(b.s);
    records_done(state, kRecords);
}
void BM_pgex14_NullGraphics(benchmark::State& state) {
    plot_null(state, pgex14);
}
void BM_pgex16_NullGraphics(benchmark::State& state) {
    plot_null(state, pgex16);
}
BENCHMARK(BM_pgex14_NullGraphics)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_pgex16_NullGraphics)->Unit(benchmark::kMillisecond);

void plot_pgplot_null(benchmark::State& state, void (*plot)(Session&)) {
    auto g = make_pgplot_graphics();
    if (g->pgopen("/NULL") <= 0) {
        state.SkipWithError("no /NULL device");
        return;
    }
    BenchSession b(*g, kRecords);
    for (auto _ : state) {
        g->pgsubp(1, 2);  // the page foot leaves one panel, as the dispatch finds it
        plot(b.s);
    }
    g->pgclos();
    records_done(state, kRecords);
}
void BM_pgex14_PgplotNull(benchmark::State& state) {
    plot_pgplot_null(state, pgex14);
}
void BM_pgex16_PgplotNull(benchmark::State& state) {
    plot_pgplot_null(state, pgex16);
}
BENCHMARK(BM_pgex14_PgplotNull)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_pgex16_PgplotNull)->Unit(benchmark::kMillisecond);

// Open, draw, close: a hardcopy of the page.
void plot_postscript(benchmark::State& state, void (*plot)(Session&)) {
    auto g = make_pgplot_graphics();
    BenchSession b(*g, kRecords);
    const std::string device = (files().dir / "page.ps").string() + "/PS";
    for (auto _ : state) {
        if (g->pgopen(device) <= 0) {
            state.SkipWithError("cannot open the PostScript file");
            break;
        }
        g->pgsubp(1, 2);
        plot(b.s);
        g->pgclos();
    }
    records_done(state, kRecords);
}
void BM_pgex14_PostScript(benchmark::State& state) {
    plot_postscript(state, pgex14);
}
void BM_pgex16_PostScript(benchmark::State& state) {
    plot_postscript(state, pgex16);
}
BENCHMARK(BM_pgex14_PostScript)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(BM_pgex16_PostScript)->Unit(benchmark::kMillisecond)->Iterations(1);

// Peak resident memory of the process after a plot over `range(0)` records
// to /NULL; run at 10^5 first, then 10^6: a streaming plot leaves it where it was.
void BM_pgex14_PeakMemory(benchmark::State& state) {
    const long records = state.range(0);
    files().name(records);  // written before the measurement
    auto g = make_pgplot_graphics();
    if (g->pgopen("/NULL") <= 0) {
        state.SkipWithError("no /NULL device");
        return;
    }
    BenchSession b(*g, records);
    auto peak_kib = [] {
        rusage u{};
        getrusage(RUSAGE_SELF, &u);
        return static_cast<double>(u.ru_maxrss);
    };
    const double before = peak_kib();
    for (auto _ : state) {
        g->pgsubp(1, 2);
        pgex14(b.s);
    }
    g->pgclos();
    state.counters["peak_KiB"] = peak_kib();
    state.counters["growth_KiB"] = peak_kib() - before;
    records_done(state, records);
}
BENCHMARK(BM_pgex14_PeakMemory)->Arg(100'000)->Arg(kRecords)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
