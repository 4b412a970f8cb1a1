// Cost of a redraw of the beta functions over full .Xemit, .Yemit and
// .Zemit tables (PKT records each), beside the cost of only reading the
// three tables, which a redraw cannot beat. The redraw goes to a Graphics
// that does nothing (the viewer's own share) and to PGPLOT's /NULL device.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <streambuf>
#include <string>

#include "analysis/plots.hpp"
#include "bench/null_graphics.hpp"
#include "core/fortran_format.hpp"
#include "core/session.hpp"
#include "tests/support/recording_graphics.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

const char* const kKinds[] = {"Xemit", "Yemit", "Zemit"};

// The three tables, written once per process into a temporary directory.
struct EmitTables {
    testing::TempDir scratch{"twiss_bench"};
    const fs::path dir{scratch.path};
    EmitTables() {
        for (const char* kind : kKinds) {
            std::FILE* f = std::fopen((dir / (std::string("bench.") + kind + ".001")).c_str(), "w");
            for (int r = 0; r < PKT; ++r) {
                const double z = 0.3 + 1e-3 * r;  // m
                const double size = 0.4 + 0.1 * std::sin(z * 5.0);
                const double energy = kind[0] == 'Z' ? 5.0 + z : size;  // MeV in .Zemit
                std::string line = fmt_e12_4(z) + fmt_e12_4(1e-9 * r) + fmt_e12_4(energy) + fmt_e12_4(size) +
                                   fmt_e12_4(1.5) + fmt_e12_4(0.8 + 1e-5 * r) + fmt_e12_4(-0.3) + "\n";
                std::fputs(line.c_str(), f);
            }
            std::fclose(f);
        }
    }
};

const EmitTables& tables() {
    static const EmitTables t;
    return t;
}

// A session with the three tables open on their units, as the run load leaves it.
struct BenchSession : QuietSession {
    explicit BenchSession(Graphics& g) : QuietSession(g, tables().dir.string()) {
        for (int u = 10; u <= 12; ++u)
            if (!s.unit(u).open(s.path(std::string("bench.") + kKinds[u - 10] + ".001"))) std::abort();
        s.fexist.Xemit_EXISTS = s.fexist.Yemit_EXISTS = s.fexist.Zemit_EXISTS = true;
        s.window.SELECTION = 12;
    }
};

void BM_ReadThreeTables(benchmark::State& state) {
    NullGraphics g;
    BenchSession b(g);
    float x[7], y[7], z[7];
    for (auto _ : state) {
        int n = 0;
        while (read_fixed(b.s.unit(10), x) && read_fixed(b.s.unit(11), y) && read_fixed(b.s.unit(12), z)) ++n;
        for (int u = 10; u <= 12; ++u) b.s.unit(u).rewind();
        if (n != PKT) state.SkipWithError("tables short");
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
        benchmark::DoNotOptimize(z);
    }
    state.SetItemsProcessed(state.iterations() * PKT);
}
BENCHMARK(BM_ReadThreeTables)->Unit(benchmark::kMicrosecond);

void BM_RedrawBeta_NullGraphics(benchmark::State& state) {
    NullGraphics g;
    BenchSession b(g);
    for (auto _ : state) pgex212(b.s, PKT);
    if (b.s.plot(212).NP != PKT) state.SkipWithError("not all points drawn");
    state.SetItemsProcessed(state.iterations() * PKT);
}
BENCHMARK(BM_RedrawBeta_NullGraphics)->Unit(benchmark::kMicrosecond);

void BM_RedrawBeta_PgplotNull(benchmark::State& state) {
    auto g = make_pgplot_graphics();
    if (g->pgopen("/NULL") <= 0) {
        state.SkipWithError("no /NULL device");
        return;
    }
    BenchSession b(*g);
    for (auto _ : state) pgex212(b.s, PKT);
    g->pgclos();
    state.SetItemsProcessed(state.iterations() * PKT);
}
BENCHMARK(BM_RedrawBeta_PgplotNull)->Unit(benchmark::kMicrosecond);

}  // namespace
