// Coupling from the sigma matrix: the determinant summed from minors against
// a triangular factor, the 32-bit steps of the plotted values, and the plot
// along z with its statistics, span margin and the texts kept from the last
// record taken.
#include <gtest/gtest.h>

#include "analysis/sigma_matrix.hpp"
#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

TEST(SigmaMatrix, DeterminantAndThePlottedValuesInThirtyTwoBitSteps) {
    // S = B B^T with B lower triangular has DET = (B11 B22 B33 B44)^2, every
    // element of S in play; a zero on the diagonal makes it singular.
    for (double B33 : {6.0, 0.0}) {
        const double B[4][4] = {{1, 0, 0, 0}, {2, 3, 0, 0}, {4, 5, B33, 0}, {7, 8, 9, 10}};
        SigmaMatrix S{};
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j)
                for (int k = 0; k < 4; ++k) S[i][j] += B[i][k] * B[j][k];
        EXPECT_EQ(determinant4(S), 900 * B33 * B33);
    }
    // The 32-bit values differ in the last bit from the same formulas carried
    // out in 64 bits to the end (0x1.ed88c4p+2, 0x1.023934p-3).
    // clang-format off
    const struct { const char* what; int selection; double S11, S13, S14, S23, S24; float Y1, Y2; } cases[] = {
        // The rest: S22 = S33 = S44 = 1, others 0.
        {"4D: root to 32 bits, then the factor", 1, 0x1.1f9056c5f3f7cp-74, 0, 0, 0, 0, 0x1.ed88c2p+2f, 0},
        {"4D: negative determinant shows 0", 1, -1e-12, 0, 0, 0, 0, 0, 0},
        {"coupling: C to 32 bits before the root", 2, 1, 0x1.1e62ba32ff33dp-46, 0, 0, 1, 0x1.023936p-3f, 0},
        {"coupling: C = S13 S24 - S14 S23", 2, 1, 2, 3, 5, 4, 2645751.25f, 0},  // 1e6 sqrt(7)
        {"angular momentum and coupling angle", 3, 1, 0.5, 0.25, -0.75, 2, 0.5f, -0.75f},
        {"trace", 4, 2.5, 9, 9, 9, 9, 5.5f, 0},
        {"no such selection", 5, 2.5, 9, 9, 9, 9, 0, 0},
    };
    // clang-format on
    for (const auto& c : cases) {
        const double upper[21] = {c.S11, 0, c.S13, c.S14, 0, 0, 1, c.S23, c.S24, 0, 0, 1, 0, 0, 0, 1};
        const CouplingPoint p = coupling_point(sigma_of_upper(upper), c.selection);
        EXPECT_EQ(std::pair(p.Y1, p.Y2), std::pair(c.Y1, c.Y2)) << c.what;
    }
}

using Coupling = PlotTest;

TEST_F(Coupling, StatisticsRangesFromTheSpanAndTextsKeptFromTheLastRecordTaken) {
    // One .Sigma record a row: z, then S11 S13 S14 S22 S23 S24 S33 S44; the rest 0.
    auto sigma = [&](const std::vector<std::vector<double>>& rows) {
        std::string t;
        for (const auto& r : rows) {
            const double upper[21] = {r[1], 0, r[2], r[3], 0, 0, r[4], r[5], r[6], 0, 0, r[7], 0, 0, 0, r[8]};
            t += std::to_string(r[0]) + " 1.5";  // z, E_MEAN
            for (int k = 0; k < 21; ++k) t += (k % 6 == 3 ? "\n " : " ") + std::to_string(upper[k]);
            t += "\n";
        }
        open_table(s, 29, &Fexist::Sigma_EXISTS, "p.Sigma.001", t);
    };
    const Plot coupling = [](Session& p, int) { pgex501(p, PKT, p.window.SELECTION); };
    const std::string angular = "Angular Momentum & Coupling Angle x-y";
    sigma({{1, 1, 0.2, 0.4, 1, 0, 0, 1, 1}, {2, 1, -0.6, 1.0, 1, 0, 0, 1, 1}});
    // 0.2 of the span 0.8 on both sides.
    check({{coupling, 3, "[1 2 -0.46 0.66] 0.2 0.1 | " + angular,
            stats(kBlack, 0.2f, 0.5f, 0.2f, 1, 0.5f, 2, 0.35f) +
                stats(kRed, 0.1f, -0.3f, -0.3f, 2, 0.1f, 1, -0.1f)}});

    s.TWICE = false;
    s.STRG1 = s.STRG2 = pad("", 40);  // as never drawn
    // C = 0.25 then 0.16, trace 7 then 12, S14 - S23 = 0.5 then 0.2, S13 = S24, DET 29/16 then 4416/625.
    sigma({{1, 4, 0.5, 0, 1, -0.5, 0.5, 1, 1}, {2, 9, 0.4, 0, 1, -0.2, 0.4, 1, 1}});
    const float d1 = 1.3462912e12f, d2 = 2.6581196e12f;
    check({
        // clang-format off
        {coupling, 3, "[1 2 -0.1 0.1] nan | ", "", 10, 20},  // never drawn: blank texts, one curve, the abscissa kept
        {coupling, 4, "[1 2 0 14.4] 7 | Trace x-y", stats(kOneCurve, 7, 12, 7, 1, 12, 2, 9.5f)},  // the 0 of the second curve in the range
        {coupling, 2, "[1 2 0 600000] 500000 | Coupling Emittance x-y", stats(kOneCurve, 5e5f, 4e5f, 4e5f, 2, 5e5f, 1, 4.5e5f)},
        {coupling, 1, "[1 2 0 3.18974e+12] 1.34629e+12 | 4D Emittance x-y", stats(kOneCurve, d1, d2, d1, 1, d2, 2, (d1 + d2) / 2)},
        {coupling, 3, "[1 2 0 0.3] 0.25 0 | " + angular, stats(kBlack, 0.25f, 0.1f, 0.1f, 2, 0.25f, 1, 0.175f) + stats(kRed, 0, 0, 0, 1, 0, 1, 0)},
        // A zoom that takes no record keeps the texts and curve count of the call before.
        {coupling, 4, "[1 2 -0.1 0.1] nan nan | " + angular, "", 10, 20},
        // clang-format on
    });
}
