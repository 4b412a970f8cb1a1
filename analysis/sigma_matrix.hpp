// Measures of transverse coupling from the sigma matrix of one record: the
// four-dimensional emittance, the coupling emittance, angular momentum and
// coupling angle, the trace. Plain values in, plain values out.
//
//   const SigmaMatrix S = sigma_of_upper({S11, S12, ..., S66});
//   const CouplingPoint p = coupling_point(S, 2);  // p.Y1: coupling emittance
#pragma once

#include <array>
#include <span>

namespace viewer {

// The symmetric 6 by 6 matrix of x, x', y, y', z, E; S[i-1][j-1] is SIG(i,j).
using SigmaMatrix = std::array<std::array<double, 6>, 6>;

// The matrix from its upper triangle given by rows (21 values).
SigmaMatrix sigma_of_upper(std::span<const double, 21> upper);

// C = S13 S24 - S14 S23, the determinant of the x-y cross block.
double cross_determinant(const SigmaMatrix& S);

// Determinant of the x, x', y, y' block, summed from products of 2 by 2
// minors of its first two rows and their complements.
double determinant4(const SigmaMatrix& S);

// The ordinates of one record for a selection of the page, as plotted.
struct CouplingPoint {
    float Y1 = 0.0f;
    float Y2 = 0.0f;  // second curve; 0 where the selection has none
};
// 1: 1e12 sqrt(DET), 0 when DET is not positive; 2: 1e6 sqrt(|C|) (both
// rounded to 32 bits before the factor); 3: (S14 - S23) / 2 and
// (S13 - S24) / 2; 4: S11 + S22 + S33 + S44. Any other: 0 and 0.
CouplingPoint coupling_point(const SigmaMatrix& S, int SELECTION);

// Curve count and texts of a selection; null for one without a plot.
struct CouplingLabels {
    bool TWICE;         // a second curve
    const char* STRG1;  // y label
    const char* STRG2;  // title
};
const CouplingLabels* coupling_labels(int SELECTION);

}  // namespace viewer
