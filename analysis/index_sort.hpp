// The index sort of the parameter scans: a quicksort on an index vector,
// without recursion, that leaves the values themselves where they are.
//
//   std::vector<int> INDX(n);
//   std::iota(INDX.begin(), INDX.end(), 0);
//   if (!index4(Z, INDX).ok) ... // the stack of pending stretches ran out
//   // now Z[INDX[0]] <= Z[INDX[1]] <= ...
#pragma once

#include <span>

namespace viewer {

constexpr int kIndexStack = 50;  // entries of the stack, two a pending stretch

struct IndexSortResult {
    bool ok = true;        // false: the stack ran out and INDX is only partly sorted
    int most_stacked = 0;  // the deepest fill of the stack, in entries
};

// Rearranges INDX (0-based positions into ARR, filled by the caller) so that
// ARR[INDX[0]], ARR[INDX[1]], ... ascend. Not stable: equal values come out
// in an order that depends on the stretch boundaries. Every INDX entry must
// be a valid position of ARR. `NSTACK` is the size of the stack.
IndexSortResult index4(std::span<const float> ARR, std::span<int> INDX, int NSTACK = kIndexStack);

}  // namespace viewer
