// Reading speed of the run file readers, each beside a plain block read of
// the same bytes, which is the limit a reader can approach. The tables are
// written into a temporary directory when the benchmark binary starts:
// a `.Xemit` of PKT fixed records and a `.track` of 10^6 free records.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "bench/bench_support.hpp"
#include "core/fortran_format.hpp"
#include "core/records.hpp"
#include "core/run_files.hpp"
#include "tests/support/temp_dir.hpp"

namespace {

namespace fs = std::filesystem;

constexpr long kTrackRecords = 1'000'000;
constexpr long kRefRecords = 100'000;

// The generated tables; removed at exit.
struct Tables {
    viewer::testing::TempDir scratch{"read_bench"};
    const fs::path dir{scratch.path};
    std::string xemit, track, ref;
    long xemit_bytes = 0, track_bytes = 0, ref_bytes = 0;

    Tables() {
        xemit = (dir / "bench.Xemit.001").string();
        track = (dir / "bench.track.001").string();
        std::mt19937 rng(12345);
        std::uniform_real_distribution<double> mant(1.0, 9.9999);
        std::uniform_int_distribution<int> ex(-6, 3);
        std::uniform_int_distribution<int> sign(0, 1);
        auto value = [&] { return (sign(rng) ? -1 : 1) * mant(rng) * std::pow(10.0, ex(rng)); };

        std::FILE* f = std::fopen(xemit.c_str(), "w");
        for (int r = 0; r < viewer::PKT; ++r) {
            std::string line;
            for (int k = 0; k < 7; ++k) line += viewer::fmt_e12_4(value());
            line += '\n';
            std::fputs(line.c_str(), f);
        }
        std::fclose(f);

        f = std::fopen(track.c_str(), "w");
        for (long r = 0; r < kTrackRecords; ++r) {
            std::string line = viewer::fmt_i(r % 10 + 1, 5) + viewer::fmt_i(0, 5);
            for (int k = 0; k < 6; ++k) line += viewer::fmt_e12_4(value());
            line += '\n';
            std::fputs(line.c_str(), f);
        }
        std::fclose(f);
        // .ref as other writers leave it: seven fields of 20 columns, 12 decimals.
        ref = (dir / "bench.ref.001").string();
        f = std::fopen(ref.c_str(), "w");
        for (long r = 0; r < kRefRecords; ++r) {
            std::string line;
            for (int k = 0; k < 7; ++k) line += viewer::fmt_exp(value(), 20, 12, 'E');
            line += '\n';
            std::fputs(line.c_str(), f);
        }
        std::fclose(f);
        ref_bytes = static_cast<long>(fs::file_size(ref));
        xemit_bytes = static_cast<long>(fs::file_size(xemit));
        track_bytes = static_cast<long>(fs::file_size(track));
    }
};

const Tables& tables() {
    static const Tables t;
    return t;
}

void report(benchmark::State& state, long records, long bytes) {
    state.SetItemsProcessed(state.iterations() * records);
    state.SetBytesProcessed(state.iterations() * bytes);
    state.counters["records"] = benchmark::Counter(static_cast<double>(records));
}

void BM_read_fixed_Xemit(benchmark::State& state) {
    const Tables& t = tables();
    viewer::TableFile f;
    if (!f.open(t.xemit)) {
        state.SkipWithError("cannot open the table");
        return;
    }
    float r[7];
    long n = 0;
    for (auto _ : state) {
        n = 0;
        while (viewer::read_fixed(f, r)) ++n;
        benchmark::DoNotOptimize(r);
        f.rewind();
    }
    report(state, n, t.xemit_bytes);
    state.counters["buffer_KiB"] = static_cast<double>(f.buffer_capacity()) / 1024;
}

void BM_read_free_track(benchmark::State& state) {
    const Tables& t = tables();
    viewer::TableFile f;
    if (!f.open(t.track)) {
        state.SkipWithError("cannot open the table");
        return;
    }
    int i = 0, stat = 0;
    float z, x, y, ez, er, bfi;
    long n = 0;
    for (auto _ : state) {
        n = 0;
        while (viewer::read_free(f, {&i, &stat, &z, &x, &y, &ez, &er, &bfi})) ++n;
        benchmark::DoNotOptimize(z);
        benchmark::DoNotOptimize(bfi);
        f.rewind();
    }
    report(state, n, t.track_bytes);
    state.counters["buffer_KiB"] = static_cast<double>(f.buffer_capacity()) / 1024;
}

void BM_read_free_ref20(benchmark::State& state) {
    const Tables& t = tables();
    viewer::TableFile f;
    if (!f.open(t.ref)) {
        state.SkipWithError("cannot open the table");
        return;
    }
    float v[7];
    long n = 0;
    for (auto _ : state) {
        n = 0;
        while (viewer::read_free(f, {&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6]})) ++n;
        benchmark::DoNotOptimize(v);
        f.rewind();
    }
    report(state, n, t.ref_bytes);
}

void BM_plain_read_Xemit(benchmark::State& state) {
    viewer::bench::plain_read(state, tables().xemit, tables().xemit_bytes);
}
void BM_plain_read_track(benchmark::State& state) {
    viewer::bench::plain_read(state, tables().track, tables().track_bytes);
}

// One E12.4 field, the inner step of every fixed record.
void BM_parse_E12_4_field(benchmark::State& state) {
    std::vector<std::string> fields;
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> mant(1.0, 9.9999);
    std::uniform_int_distribution<int> ex(-6, 3);
    for (int k = 0; k < 4096; ++k) fields.push_back(viewer::fmt_e12_4(mant(rng) * std::pow(10.0, ex(rng))));
    std::size_t k = 0;
    float v = 0;
    for (auto _ : state) {
        viewer::parse_fortran_real(fields[k++ & 4095], 4, v);
        benchmark::DoNotOptimize(v);
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * 12);
}

BENCHMARK(BM_read_fixed_Xemit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_plain_read_Xemit)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_read_free_track)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_plain_read_track)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_read_free_ref20)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_parse_E12_4_field);

}  // namespace
