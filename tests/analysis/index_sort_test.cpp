// The index sort against the standard library's order of the values, on the
// shapes that break naive quicksorts, and the bound on its stack.
#include "analysis/index_sort.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <numeric>
#include <random>
#include <vector>

using namespace viewer;

TEST(Index4, OrdersValuesLikeAStableSortWithinItsStack) {
    using Shape = std::function<float(int i, int n, std::mt19937& rng)>;
    const std::pair<const char*, Shape> shapes[] = {
        {"sorted", [](int i, int, std::mt19937&) { return 0.5f * i; }},
        {"reversed", [](int i, int n, std::mt19937&) { return static_cast<float>(n - i); }},
        {"all equal", [](int, int, std::mt19937&) { return 3.0f; }},
        {"organ pipe",
         [](int i, int n, std::mt19937&) { return static_cast<float>(std::min(i, n - 1 - i)); }},
        {"many duplicates", [](int, int, std::mt19937& rng) { return static_cast<float>(rng() % 5) - 2.0f; }},
        {"random",
         [](int, int, std::mt19937& rng) { return std::uniform_real_distribution<float>(-1e3f, 1e3f)(rng); }},
    };
    for (const auto& [name, shape] : shapes)
        for (int n : {0, 1, 2, 6, 7, 8, 9, 100, 1000, 100000}) {
            SCOPED_TRACE(std::string(name) + " " + std::to_string(n));
            std::mt19937 rng(static_cast<unsigned>(n));
            std::vector<float> arr(static_cast<std::size_t>(n));
            for (int i = 0; i < n; ++i) arr[static_cast<std::size_t>(i)] = shape(i, n, rng);
            const std::vector<float> before = arr;
            std::vector<int> indx(arr.size());
            std::iota(indx.begin(), indx.end(), 0);

            const IndexSortResult r = index4(arr, indx);

            ASSERT_TRUE(r.ok);
            EXPECT_LE(r.most_stacked, 2 * static_cast<int>(std::bit_width(static_cast<unsigned>(n))));
            EXPECT_EQ(arr, before);  // the values stay where they are
            std::vector<float> got;
            for (int k : indx) got.push_back(arr[static_cast<std::size_t>(k)]);
            std::vector<float> want = arr;
            std::stable_sort(want.begin(), want.end());
            EXPECT_EQ(got, want);
            std::sort(indx.begin(), indx.end());  // each index once
            for (int i = 0; i < n; ++i) ASSERT_EQ(indx[static_cast<std::size_t>(i)], i);
        }
}

TEST(Index4, ReportsAStackTooSmall) {
    std::vector<float> arr(1000);
    std::iota(arr.rbegin(), arr.rend(), 0.0f);
    std::vector<int> indx(arr.size());
    std::iota(indx.begin(), indx.end(), 0);
    EXPECT_FALSE(index4(arr, indx, 2).ok);
}
