// The coupling plot along z: statistics of one or two curves, the range
// from the span, the texts kept from the last record taken.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

struct Coupling : PlotTest {
    // One .Sigma record a row: z, then S11 S13 S14 S22 S23 S24 S33 S44; the rest 0.
    void sigma(const std::vector<std::vector<double>>& rows) {
        std::string t;
        for (const auto& r : rows) {
            double S[6][6]{};
            const int at[][2] = {{0, 0}, {0, 2}, {0, 3}, {1, 1}, {1, 2}, {1, 3}, {2, 2}, {3, 3}};
            for (int k = 0; k < 8; ++k) S[at[k][0]][at[k][1]] = r[static_cast<std::size_t>(k) + 1];
            t += std::to_string(r[0]) + " 1.5";  // z, E_MEAN
            for (int i = 0; i < 6; ++i)
                for (int j = i; j < 6; ++j) t += (j == 3 ? "\n " : " ") + std::to_string(S[i][j]);
            t += "\n";
        }
        open_table(s, 29, &Fexist::Sigma_EXISTS, "p.Sigma.001", t);
    }
    void draw(int selection) {
        clear();
        pgex501(s, PKT, selection);
    }
};

}  // namespace

TEST_F(Coupling, TwoCurvesPrintTwoBlocksAndTakeTheMarginFromTheSpan) {
    sigma({{1, 1, 0.2, 0.4, 1, 0, 0, 1, 1}, {2, 1, -0.6, 1.0, 1, 0, 0, 1, 1}});
    draw(3);
    EXPECT_EQ(console(), stats(kBlack, 0.2f, 0.5f, 0.2f, 1, 0.5f, 2, 0.35f) +
                             stats(kRed, 0.1f, -0.3f, -0.3f, 2, 0.1f, 1, -0.1f));
    EXPECT_TRUE(window_is(env(), 1, 2, -0.46f, 0.66f));  // 0.2 of the span 0.8 on both sides
}

TEST_F(Coupling, OneCurveRangesAndTextsKeptFromTheLastRecordTaken) {
    // C = 0.25 then 0.16, trace 7 then 12, S14 - S23 = 0.5 then 0.2, S13 = S24.
    sigma({{1, 4, 0.5, 0, 1, -0.5, 0.5, 1, 1}, {2, 9, 0.4, 0, 1, -0.2, 0.4, 1, 1}});
    const std::string angular = "Angular Momentum & Coupling Angle x-y";
    const struct {
        int selection;
        bool empty_zoom;
        std::string y, top;
        std::size_t lines;
        float ymin, ymax;
    } steps[] = {
        // clang-format off
        {3, true, "", "", 1, -0.1f, 0.1f},  // never drawn: blank texts, one curve
        {4, false, "", "Trace x-y", 1, 0, 14.4f},  // the 0 of the second curve is in the range
        {2, false, "\\ge \\gp \\fimrad mm ", "Coupling Emittance x-y", 1, 0, 6e5f},
        {3, false, " m / rad", angular, 2, 0, 0.3f},
        // A zoom that takes no record keeps the texts and curve count of the call before.
        {4, true, " m / rad", angular, 2, -0.1f, 0.1f},
        // clang-format on
    };
    for (const auto& st : steps) {
        SCOPED_TRACE(st.selection);
        zoom_z(st.empty_zoom);
        draw(st.selection);
        EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", pad(st.y, 40), pad(st.top, 40)}));
        EXPECT_EQ(rec.named("pgline").size(), st.lines);
        EXPECT_FLOAT_EQ(static_cast<float>(env().args[2]), st.ymin);
        EXPECT_NEAR(env().args[3], st.ymax, 1e-6 * st.ymax + 1e-7);
        EXPECT_TRUE(!st.empty_zoom || console().empty());
    }
    // Selection 1 on determinants 4 and 9: the axis starts at 0, the roots are scaled by 1e12.
    zoom_z(false);
    sigma({{1, 4, 0, 0, 1, 0, 0, 1, 1}, {2, 9, 0, 0, 1, 0, 0, 1, 1}});
    draw(1);
    EXPECT_EQ(first("pgline").ys, (std::vector<float>{2e12f, 3e12f}));
    EXPECT_TRUE(window_is(env(), 1, 2, 0, 3.6e12f));
    EXPECT_EQ(console().rfind(kOneCurve + "     beginning:                 " + fmt_d(2e12), 0), 0u);
}
