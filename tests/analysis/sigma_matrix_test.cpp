// The coupling measures of the sigma matrix: the determinant summed from
// minors against a direct expansion, and the 32-bit steps of the plotted values.
#include "analysis/sigma_matrix.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

using namespace viewer;

TEST(SigmaMatrix, DeterminantFromMinorsMatchesTheSumOverPermutations) {
    std::mt19937 gen(11);
    std::uniform_real_distribution<double> u(-1, 1);
    const double scale[] = {1e-3, 2e-4, 5e-4, 3e-4};  // beam sizes (m) and angles (rad)
    for (int rank : {4, 3, 2})
        for (int n = 0; n < 50; ++n) {
            SCOPED_TRACE(::testing::Message() << "rank " << rank << " case " << n);
            double B[4][4]{};  // S = B B^T, of the given rank
            for (int i = 0; i < 4; ++i)
                for (int k = 0; k < rank; ++k) B[i][k] = scale[i] * u(gen);
            SigmaMatrix S{};
            for (int i = 0; i < 4; ++i)
                for (int j = 0; j < 4; ++j)
                    for (int k = 0; k < 4; ++k) S[i][j] += B[i][k] * B[j][k];
            std::array<int, 4> p{0, 1, 2, 3};
            long double want = 0;
            do {
                long double term = 1;
                for (int i = 0; i < 4; ++i) {
                    term *= S[i][p[i]];
                    for (int j = i + 1; j < 4; ++j) term *= p[i] > p[j] ? -1 : 1;
                }
                want += term;
            } while (std::next_permutation(p.begin(), p.end()));
            const double bound = S[0][0] * S[1][1] * S[2][2] * S[3][3];  // of |DET| (Hadamard)
            if (rank == 4) {
                EXPECT_NEAR(determinant4(S) / want, 1.0, 1e-6);
            } else {
                EXPECT_LE(std::fabs(determinant4(S)), 1e-12 * bound);  // singular: 0 up to rounding
            }
        }
}

TEST(SigmaMatrix, PlottedValuesTheirSignsAndThirtyTwoBitSteps) {
    // The 32-bit values differ in the last bit from the same formulas carried
    // out in 64 bits to the end (0x1.ed88c4p+2, 0x1.023934p-3).
    const struct {
        const char* what;
        int selection;
        double S11, S13, S14, S23, S24;  // the rest: S22 = S33 = S44 = 1, others 0
        float Y1, Y2;
    } cases[] = {
        // clang-format off
        {"4D: root to 32 bits, then the factor", 1, 0x1.1f9056c5f3f7cp-74, 0, 0, 0, 0, 0x1.ed88c2p+2f, 0},
        {"4D: negative determinant shows 0", 1, -1e-12, 0, 0, 0, 0, 0, 0},
        {"coupling: C to 32 bits before the root", 2, 1, 0x1.1e62ba32ff33dp-46, 0, 0, 1, 0x1.023936p-3f, 0},
        {"coupling: a negative C gives the same", 2, 1, -0x1.1e62ba32ff33dp-46, 0, 0, 1, 0x1.023936p-3f, 0},
        {"coupling: C = S13 S24 - S14 S23", 2, 1, 2, 3, 5, 4, 2645751.25f, 0},  // 1e6 sqrt(7)
        {"angular momentum and coupling angle", 3, 1, 0.5, 0.25, -0.75, 2, 0.5f, -0.75f},
        {"trace", 4, 2.5, 9, 9, 9, 9, 5.5f, 0},
        {"no such selection", 5, 2.5, 9, 9, 9, 9, 0, 0},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        SigmaMatrix S{};
        S[0][0] = c.S11;
        S[1][1] = S[2][2] = S[3][3] = 1;
        S[0][2] = S[2][0] = c.S13;
        S[0][3] = S[3][0] = c.S14;
        S[1][2] = S[2][1] = c.S23;
        S[1][3] = S[3][1] = c.S24;
        const CouplingPoint p = coupling_point(S, c.selection);
        EXPECT_EQ(p.Y1, c.Y1);
        EXPECT_EQ(p.Y2, c.Y2);
    }
    EXPECT_TRUE(coupling_labels(0) == nullptr && coupling_labels(5) == nullptr);
}
