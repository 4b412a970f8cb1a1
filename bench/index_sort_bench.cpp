// The index sort of the parameter scans on 10^5 values beside std::sort of
// the same indices.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "analysis/index_sort.hpp"

namespace {

std::vector<float> scan_values(std::size_t n) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<float> d(0.0f, 1.0f);
    std::vector<float> v(n);
    for (float& x : v) x = d(rng);
    return v;
}

void BM_index4(benchmark::State& state) {
    const std::vector<float> arr = scan_values(static_cast<std::size_t>(state.range(0)));
    std::vector<int> indx(arr.size());
    for (auto _ : state) {
        std::iota(indx.begin(), indx.end(), 0);
        benchmark::DoNotOptimize(viewer::index4(arr, indx));
    }
}
BENCHMARK(BM_index4)->Arg(100000);

void BM_std_sort_indices(benchmark::State& state) {
    const std::vector<float> arr = scan_values(static_cast<std::size_t>(state.range(0)));
    std::vector<int> indx(arr.size());
    for (auto _ : state) {
        std::iota(indx.begin(), indx.end(), 0);
        std::sort(indx.begin(), indx.end(), [&](int a, int b) {
            return arr[static_cast<std::size_t>(a)] < arr[static_cast<std::size_t>(b)];
        });
        benchmark::DoNotOptimize(indx.data());
    }
}
BENCHMARK(BM_std_sort_indices)->Arg(100000);

}  // namespace
