// The index sort against the standard library's order of the values, on the
// shapes that break naive quicksorts, and the bound on its stack.
#include "analysis/index_sort.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <numeric>
#include <random>
#include <vector>

using namespace viewer;

TEST(Index4, OrdersValuesLikeASortWithinItsStack) {
    // Sorted, reversed, all equal, organ pipe, few distinct values, random.
    for (int shape = 0; shape < 6; ++shape)
        for (int n : {0, 1, 2, 7, 8, 9, 100, 1000, 100000}) {
            SCOPED_TRACE(::testing::Message() << "shape " << shape << ", " << n << " values");
            std::mt19937 rng(static_cast<unsigned>(n));
            std::vector<float> arr(static_cast<std::size_t>(n)), got;
            for (int i = 0; i < n; ++i) {
                const float v[] = {0.5f * i,
                                   float(n - i),
                                   3,
                                   float(std::min(i, n - 1 - i)),
                                   float(rng() % 5),
                                   std::uniform_real_distribution<float>(-1e3f, 1e3f)(rng)};
                arr[static_cast<std::size_t>(i)] = v[shape];
            }
            std::vector<int> indx(arr.size()), all(arr.size());
            std::iota(indx.begin(), indx.end(), 0);
            std::iota(all.begin(), all.end(), 0);

            const IndexSortResult r = index4(arr, indx);

            ASSERT_TRUE(r.ok);
            EXPECT_LE(r.most_stacked, 2 * static_cast<int>(std::bit_width(static_cast<unsigned>(n))));
            for (int i : indx) got.push_back(arr[static_cast<std::size_t>(i)]);
            std::sort(arr.begin(), arr.end());
            EXPECT_EQ(got, arr);
            std::sort(indx.begin(), indx.end());
            EXPECT_EQ(indx, all);  // each index once
        }
    std::vector<float> arr(1000);
    std::vector<int> indx(arr.size());
    std::iota(arr.rbegin(), arr.rend(), 0.0f);
    std::iota(indx.begin(), indx.end(), 0);
    EXPECT_FALSE(index4(arr, indx, 2).ok);  // a stack too small is reported
}
