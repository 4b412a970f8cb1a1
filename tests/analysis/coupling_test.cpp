// Coupling from the sigma matrix: the determinant summed from minors against
// a triangular factor, the 32-bit steps of the plotted values, and the plot
// along z with its statistics, span margin and the texts kept from the last
// record taken.
#include <gtest/gtest.h>

#include <random>

#include "analysis/sigma_matrix.hpp"
#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

TEST(SigmaMatrix, DeterminantAndThePlottedValuesInThirtyTwoBitSteps) {
    // S = B B^T with B lower triangular has DET = (B11 B22 B33 B44)^2; a
    // zero on the diagonal makes it singular. Sizes (m) and angles (rad).
    std::mt19937 gen(11);
    std::uniform_real_distribution<double> u(-1, 1);
    const double scale[] = {1e-3, 2e-4, 5e-4, 3e-4};
    for (int n = 0; n < 100; ++n) {
        double B[4][4]{}, want = 1;
        for (int i = 0; i < 4; ++i)
            for (int k = 0; k <= i; ++k) B[i][k] = n % 3 == 0 && k == i && i == n % 4 ? 0 : scale[i] * u(gen);
        SigmaMatrix S{};
        for (int i = 0; i < 4; ++i) {
            want *= B[i][i] * B[i][i];
            for (int j = 0; j < 4; ++j)
                for (int k = 0; k < 4; ++k) S[i][j] += B[i][k] * B[j][k];
        }
        EXPECT_NEAR(determinant4(S), want, 1e-9 * S[0][0] * S[1][1] * S[2][2] * S[3][3]) << n;
    }
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
        const double upper[21] = {c.S11, 0, c.S13, c.S14, 0, 0, 1, c.S23, c.S24, 0, 0, 1, 0, 0, 0, 1};
        const CouplingPoint p = coupling_point(sigma_of_upper(upper), c.selection);
        EXPECT_EQ(std::pair(p.Y1, p.Y2), std::pair(c.Y1, c.Y2)) << c.what;
    }
    EXPECT_TRUE(coupling_labels(0) == nullptr && coupling_labels(5) == nullptr);
}

namespace {

struct Coupling : PlotTest {
    // One .Sigma record a row: z, then S11 S13 S14 S22 S23 S24 S33 S44; the rest 0.
    void draw(int selection, const std::vector<std::vector<double>>& rows) {
        std::string t;
        for (const auto& r : rows) {
            const double upper[21] = {r[1], 0, r[2], r[3], 0, 0, r[4], r[5], r[6], 0, 0, r[7], 0, 0, 0, r[8]};
            t += std::to_string(r[0]) + " 1.5";  // z, E_MEAN
            for (int k = 0; k < 21; ++k) t += (k % 6 == 3 ? "\n " : " ") + std::to_string(upper[k]);
            t += "\n";
        }
        open_table(s, 29, &Fexist::Sigma_EXISTS, "p.Sigma.001", t);
        PlotTest::draw(+[](Session&, int) {});
        pgex501(s, PKT, selection);
    }
};

}  // namespace

TEST_F(Coupling, StatisticsRangesFromTheSpanAndTextsKeptFromTheLastRecordTaken) {
    draw(3, {{1, 1, 0.2, 0.4, 1, 0, 0, 1, 1}, {2, 1, -0.6, 1.0, 1, 0, 0, 1, 1}});
    EXPECT_EQ(console(), stats(kBlack, 0.2f, 0.5f, 0.2f, 1, 0.5f, 2, 0.35f) +
                             stats(kRed, 0.1f, -0.3f, -0.3f, 2, 0.1f, 1, -0.1f));
    // 0.2 of the span 0.8 on both sides.
    EXPECT_EQ(summary(), "[1 2 -0.46 0.66] 0.2 0.1 | Angular Momentum & Coupling Angle x-y");

    s.TWICE = false;
    s.STRG1 = s.STRG2 = pad("", 40);  // as never drawn
    const struct {
        int selection;
        bool empty_zoom;
        const char* summary;
    } steps[] = {
        // clang-format off
        {3, true, "[1 2 -0.1 0.1] nan | "},  // never drawn: blank texts, one curve; the abscissa kept
        {4, false, "[1 2 0 14.4] 7 | Trace x-y"},  // the 0 of the second curve is in the range
        {2, false, "[1 2 0 600000] 500000 | Coupling Emittance x-y"},
        {1, false, "[1 2 0 3.18974e+12] 1.34629e+12 | 4D Emittance x-y"},  // from 0 up; DET 29/16, 4416/625
        {3, false, "[1 2 0 0.3] 0.25 0 | Angular Momentum & Coupling Angle x-y"},
        // A zoom that takes no record keeps the texts and curve count of the call before.
        {4, true, "[1 2 -0.1 0.1] nan nan | Angular Momentum & Coupling Angle x-y"},
        // clang-format on
    };
    for (const auto& st : steps) {
        zoom_z(st.empty_zoom);
        // C = 0.25 then 0.16, trace 7 then 12, S14 - S23 = 0.5 then 0.2, S13 = S24.
        draw(st.selection, {{1, 4, 0.5, 0, 1, -0.5, 0.5, 1, 1}, {2, 9, 0.4, 0, 1, -0.2, 0.4, 1, 1}});
        EXPECT_EQ(summary(), st.summary);
    }
    EXPECT_EQ(labels()[1], pad(" m / rad", 40));
}
