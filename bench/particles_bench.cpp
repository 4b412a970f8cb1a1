// Particle files: the statistics of a bunch of 10^6 particles beside a plain
// block read of the same bytes, the density picture of x:x' (one pass that
// keeps x and px, then the bins) on one thread and on two, and the line
// parser alone. The file is
// written into a temporary directory when the benchmark binary starts, in
// the tracker's 20-column form: x y z px py pz clock charge, species, flag.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "bench/bench_support.hpp"
#include "bench/null_graphics.hpp"
#include "core/fortran_format.hpp"
#include "core/particles.hpp"
#include "particles/views.hpp"
#include "tests/support/temp_dir.hpp"

namespace {

namespace fs = std::filesystem;

constexpr long kParticles = 1'000'000;
constexpr int kLinePool = 4096;

// Particle lines with random but plausible values: every sign, exponents
// over the range each column shows in real runs, and a few particles lost
// or kept as probes.
class Lines {
public:
    explicit Lines(unsigned seed) : rng_(seed) {}

    std::string reference() {
        return line({1e-6 * value(0, 0), 1e-6 * value(0, 0), 0.8948281119634, value(1, 2), value(1, 2),
                     5.657862634561e6, 3.015569914481},
                    5);
    }
    std::string particle() {
        const int state = flag_(rng_);
        const int flag = state == 0 ? -15 : state == 1 ? 3 : 5;
        return line({value(-6, -2), value(-6, -2), value(-7, -3), value(0, 4), value(0, 4), value(1, 5),
                     value(-6, -2)},
                    flag);
    }

private:
    // ±[1, 10) * 10^k, k in [lo, hi].
    double value(int lo, int hi) {
        std::uniform_int_distribution<int> ex(lo, hi);
        return (sign_(rng_) ? -1 : 1) * mant_(rng_) * std::pow(10.0, ex(rng_));
    }
    static std::string line(const std::array<double, 7>& v, int flag) {
        std::string s;
        for (double d : v) s += viewer::fmt_exp(d, 20, 12, 'E');
        s += viewer::fmt_exp(-4.8828125e-4, 20, 12, 'E') + viewer::fmt_i(1, 4) + viewer::fmt_i(flag, 4);
        return s + '\n';
    }
    std::mt19937 rng_;
    std::uniform_real_distribution<double> mant_{1.0, 10.0};
    std::uniform_int_distribution<int> sign_{0, 1};
    std::uniform_int_distribution<int> flag_{0, 99};  // 1 % lost, 1 % probes
};

// The generated particle file; removed at exit.
struct Bunch {
    viewer::testing::TempDir scratch{"particles_bench"};
    std::string path = scratch.file("bench.0100.001");
    long bytes = 0;

    Bunch() {
        Lines lines(2024);
        std::FILE* f = std::fopen(path.c_str(), "w");
        std::fputs(lines.reference().c_str(), f);
        for (long r = 1; r < kParticles; ++r) std::fputs(lines.particle().c_str(), f);
        std::fclose(f);
        bytes = static_cast<long>(fs::file_size(path));
    }
};

const Bunch& bunch() {
    static const Bunch b;
    return b;
}

// The process's peak resident set [MiB]. Its high-water mark is reset first
// where the system allows it, so that the peak is the benchmark's own and
// not that of the benchmarks or the fixtures before it.
void reset_peak_memory() {
    std::ofstream("/proc/self/clear_refs") << "5";
}
double peak_memory_mib() {
    rusage u{};
    ::getrusage(RUSAGE_SELF, &u);
    return static_cast<double>(u.ru_maxrss) / 1024;  // KiB on Linux
}

void BM_particle_statistics(benchmark::State& state) {
    const Bunch& b = bunch();
    reset_peak_memory();
    long active = 0;
    for (auto _ : state) {
        const viewer::ParticleSummary s = viewer::summarise_particles(b.path);
        active = s.stats.counts.active;
        benchmark::DoNotOptimize(s.stats.x.emit_n);
    }
    if (active == 0) state.SkipWithError("no active particle read");
    state.SetItemsProcessed(state.iterations() * kParticles);
    state.SetBytesProcessed(state.iterations() * b.bytes);
    state.counters["file_MiB"] = static_cast<double>(b.bytes) / (1 << 20);
    state.counters["peak_RSS_MiB"] = peak_memory_mib();
}

// The density picture of x:x' as the export draws it, its graphics drawing
// nowhere: the file read once in `threads` parts, keeping x and px, then
// binned.
void BM_particle_density_plane(benchmark::State& state) {
    const Bunch& b = bunch();
    viewer::NullGraphics g;
    viewer::QuietSession q(g, b.scratch.path);
    const viewer::Plane xxp{viewer::Coord::x, viewer::Coord::xp};
    reset_peak_memory();
    bool density = false;
    for (auto _ : state) {
        viewer::ParticleReader f(b.path);
        f.use_threads(static_cast<int>(state.range(0)));
        const viewer::ParticleScan scan = viewer::scan_particles(f, {&xxp, 1});
        density = viewer::draw_plane(q.s, f, scan, xxp, {}).density && scan.kept;
    }
    if (!density) state.SkipWithError("not a density picture from the kept coordinates");
    state.SetItemsProcessed(state.iterations() * kParticles);
    state.SetBytesProcessed(state.iterations() * b.bytes);
    state.counters["peak_RSS_MiB"] = peak_memory_mib();
}

// The same bytes through read() in blocks of the reader's size, nothing parsed.
void BM_plain_read_particles(benchmark::State& state) {
    viewer::bench::plain_read(state, bunch().path, bunch().bytes);
}

// One line of the 20-column form, the inner step of the statistics; a pool
// of different lines, so that no branch learns one line by heart.
void BM_parse_particle_line(benchmark::State& state) {
    Lines lines(99);
    std::vector<std::string> pool;
    for (int k = 0; k < kLinePool; ++k) {
        std::string l = lines.particle();
        l.pop_back();  // the reader hands out lines without their end
        pool.push_back(std::move(l));
    }
    const std::string file = "bench.0100.001";
    std::array<double, 10> v{};
    std::size_t k = 0;
    long bytes = 0;
    for (auto _ : state) {
        const std::string& l = pool[k++ % kLinePool];
        viewer::parse_particle_line(l, v, file, 2);
        benchmark::DoNotOptimize(v);
        bytes += static_cast<long>(l.size()) + 1;
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(bytes);
}

// Wall time: the reading runs on threads besides the benchmark's own.
BENCHMARK(BM_particle_statistics)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_particle_density_plane)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_plain_read_particles)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_parse_particle_line);

}  // namespace
