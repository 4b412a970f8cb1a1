// Cost of a redraw of the beam-size plot over full .Xemit and .Yemit tables
// (PKT records each), beside the cost of only reading the two tables, which
// a redraw cannot beat. A redraw goes to a Graphics that does nothing (the
// viewer's own share), to PGPLOT's /NULL device (with the library's own
// clipping and transforms), and to a PostScript page (open, draw, close: a
// hardcopy).
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <streambuf>
#include <string>

#include "bench/null_graphics.hpp"
#include "core/fortran_format.hpp"
#include "core/session.hpp"
#include "evolution/plots.hpp"
#include "tests/support/recording_graphics.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

// Both tables, written once per process into a temporary directory.
struct BeamTables {
    testing::TempDir scratch{"plot_bench"};
    const fs::path dir{scratch.path};
    BeamTables() {
        for (const char* kind : {"Xemit", "Yemit"}) {
            std::FILE* f = std::fopen((dir / (std::string("bench.") + kind + ".001")).c_str(), "w");
            for (int r = 0; r < PKT; ++r) {
                const double z = 0.3 + 1e-3 * r;  // m
                const double size = 0.4 + 0.1 * std::sin(z * 5.0) + (kind[0] == 'Y' ? 0.05 : 0.0);
                std::string line = fmt_e12_4(z) + fmt_e12_4(1e-9 * r) + fmt_e12_4(1e-3) + fmt_e12_4(size) +
                                   fmt_e12_4(1.5) + fmt_e12_4(0.8 + 1e-5 * r) + fmt_e12_4(-1.0) + "\n";
                std::fputs(line.c_str(), f);
            }
            std::fclose(f);
        }
    }
};

const BeamTables& tables() {
    static const BeamTables t;
    return t;
}

// A session with both tables open on their units, as the run load leaves it.
struct BenchSession : QuietSession {
    explicit BenchSession(Graphics& g) : QuietSession(g, tables().dir.string()) {
        for (int u : {10, 11})
            if (!s.unit(u).open(s.path(u == 10 ? "bench.Xemit.001" : "bench.Yemit.001"))) std::abort();
        s.fexist.Xemit_EXISTS = s.fexist.Yemit_EXISTS = true;
    }
};

void BM_ReadBothTables(benchmark::State& state) {
    NullGraphics g;
    BenchSession b(g);
    float x[7], y[7];
    for (auto _ : state) {
        int n = 0;
        while (read_fixed(b.s.unit(10), x) && read_fixed(b.s.unit(11), y)) ++n;
        b.s.unit(10).rewind();
        b.s.unit(11).rewind();
        if (n != PKT) state.SkipWithError("tables short");
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
    }
    state.SetItemsProcessed(state.iterations() * PKT);
}
BENCHMARK(BM_ReadBothTables)->Unit(benchmark::kMicrosecond);

void BM_RedrawBeamSize_NullGraphics(benchmark::State& state) {
    NullGraphics g;
    BenchSession b(g);
    for (auto _ : state) pgex2(b.s, PKT);
    if (b.s.plot(2).NP != PKT) state.SkipWithError("not all points drawn");
    state.SetItemsProcessed(state.iterations() * PKT);
}
BENCHMARK(BM_RedrawBeamSize_NullGraphics)->Unit(benchmark::kMicrosecond);

void BM_RedrawBeamSize_PgplotNull(benchmark::State& state) {
    auto g = make_pgplot_graphics();
    const int id = g->pgopen("/NULL");
    if (id <= 0) {
        state.SkipWithError("no /NULL device");
        return;
    }
    BenchSession b(*g);
    for (auto _ : state) pgex2(b.s, PKT);
    g->pgclos();
    state.SetItemsProcessed(state.iterations() * PKT);
}
BENCHMARK(BM_RedrawBeamSize_PgplotNull)->Unit(benchmark::kMicrosecond);

void BM_BeamSizePage_PostScript(benchmark::State& state) {
    auto g = make_pgplot_graphics();
    BenchSession b(*g);
    const std::string device = (tables().dir / "page.ps").string() + "/PS";
    for (auto _ : state) {
        if (g->pgopen(device) <= 0) {
            state.SkipWithError("cannot open the PostScript file");
            break;
        }
        pgex2(b.s, PKT);
        g->pgclos();
    }
    state.SetItemsProcessed(state.iterations() * PKT);
}
BENCHMARK(BM_BeamSizePage_PostScript)->Unit(benchmark::kMicrosecond);

}  // namespace
