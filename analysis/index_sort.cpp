// Quicksort on indices with a median of three, insertion sort on short
// stretches and an explicit stack. The larger stretch is always the one put
// aside, so no more than log2(N) stretches wait at once.
#include "analysis/index_sort.hpp"

#include <stdexcept>
#include <utility>
#include <vector>

namespace viewer {

IndexSortResult index4(std::span<const float> ARR, std::span<int> INDX, int NSTACK) {
    IndexSortResult res;
    const int N = static_cast<int>(INDX.size());
    for (int v : INDX)
        if (v < 0 || static_cast<std::size_t>(v) >= ARR.size())
            throw std::logic_error("index4: an index lies outside the array it sorts");
    if (N < 2) return res;

    // 1-based views, so that the bounds read as the stretches are described.
    auto ix = [&](int k) -> int& { return INDX[static_cast<std::size_t>(k - 1)]; };
    auto val = [&](int k) { return ARR[static_cast<std::size_t>(ix(k))]; };
    constexpr int M = 7;  // stretches shorter than this are sorted by insertion
    std::vector<int> ISTACK(static_cast<std::size_t>(NSTACK > 0 ? NSTACK : 0));
    int JSTACK = 0;
    int L = 1, IR = N;
    for (;;) {
        if (IR - L < M) {
            for (int J = L + 1; J <= IR; ++J) {
                const int INDXT = ix(J);
                const float A = ARR[static_cast<std::size_t>(INDXT)];
                int I = J - 1;
                for (; I >= 1; --I) {
                    if (val(I) <= A) break;
                    ix(I + 1) = ix(I);
                }
                ix(I + 1) = INDXT;
            }
            if (JSTACK == 0) return res;
            IR = ISTACK[static_cast<std::size_t>(JSTACK - 1)];
            L = ISTACK[static_cast<std::size_t>(JSTACK - 2)];
            JSTACK -= 2;
            continue;
        }
        const int K = (L + IR) / 2;
        std::swap(ix(K), ix(L + 1));
        if (val(L + 1) > val(IR)) std::swap(ix(L + 1), ix(IR));
        if (val(L) > val(IR)) std::swap(ix(L), ix(IR));
        if (val(L + 1) > val(L)) std::swap(ix(L + 1), ix(L));
        int I = L + 1, J = IR;
        const int INDXT = ix(L);
        const float A = ARR[static_cast<std::size_t>(INDXT)];
        for (;;) {
            // The median of three bounds both walks; the limits only guard
            // against values that compare with nothing.
            do ++I;
            while (I < IR && val(I) < A);
            do --J;
            while (J > L && val(J) > A);
            if (J < I) break;
            std::swap(ix(I), ix(J));
        }
        ix(L) = ix(J);
        ix(J) = INDXT;
        JSTACK += 2;
        if (JSTACK > NSTACK) {
            res.ok = false;
            return res;
        }
        if (JSTACK > res.most_stacked) res.most_stacked = JSTACK;
        if (IR - I + 1 >= J - L) {
            ISTACK[static_cast<std::size_t>(JSTACK - 1)] = IR;
            ISTACK[static_cast<std::size_t>(JSTACK - 2)] = I;
            IR = J - 1;
        } else {
            ISTACK[static_cast<std::size_t>(JSTACK - 1)] = J - 1;
            ISTACK[static_cast<std::size_t>(JSTACK - 2)] = L;
            L = I;
        }
    }
}

}  // namespace viewer
