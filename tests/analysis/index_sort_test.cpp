// The index sort against the standard library's order of the values, on the
// shapes that break naive quicksorts, and the bound on its stack.
#include "analysis/index_sort.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <random>

using namespace viewer;

TEST(Index4, OrdersValuesLikeASortWithinItsStack) {
    // Sorted, reversed, all equal, organ pipe, five values, random.
    for (int shape = 0; shape < 6; ++shape)
        for (int n : {0, 1, 2, 7, 8, 9, 100, 1000, 100000}) {
            std::mt19937 rng(static_cast<unsigned>(n));
            std::vector<float> arr, got;
            for (int i = 0; i < n; ++i)
                arr.push_back(std::vector<float>{0.5f * i, float(n - i), 3, float(std::min(i, n - 1 - i)),
                                                 float(rng() % 5), float(rng()) - 2e9f}[shape]);
            std::vector<int> indx(arr.size()), all(arr.size());
            std::iota(indx.begin(), indx.end(), 0);
            std::iota(all.begin(), all.end(), 0);
            const IndexSortResult r = index4(arr, indx);
            EXPECT_TRUE(r.ok && r.most_stacked <= 2 * static_cast<int>(std::bit_width(unsigned(n))))
                << shape << n;
            for (int i : indx) got.push_back(arr[static_cast<std::size_t>(i)]);
            std::sort(arr.begin(), arr.end());
            std::sort(indx.begin(), indx.end());
            EXPECT_TRUE(got == arr && indx == all)
                << "shape " << shape << ", " << n << " values";  // each index once
        }
    std::vector<float> arr(1000);
    std::vector<int> indx(arr.size());
    std::iota(arr.rbegin(), arr.rend(), 0.0f);
    std::iota(indx.begin(), indx.end(), 0);
    EXPECT_FALSE(index4(arr, indx, 2).ok);  // a stack too small is reported
}
