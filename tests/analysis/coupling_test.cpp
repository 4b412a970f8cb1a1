// The coupling plot along z: statistics of one or two curves, the range
// from the span, the texts kept from the last record taken.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::window_is;

namespace {

struct CouplingTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();

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
        viewer::testing::open_table(s, 29, &Fexist::Sigma_EXISTS, "p.Sigma.001", t);
    }
    void draw(int selection) {
        h.g.clear();
        h.out.str("");
        pgex501(s, PKT, selection);
    }
    const GraphicsCall& env() const { return *h.g.named("pgenv").at(0); }
    std::vector<std::string> labels() const { return h.g.named("pglab").at(0)->texts; }
};

}  // namespace

TEST_F(CouplingTest, TwoCurvesPrintTwoBlocksAndTakeTheMarginFromTheSpan) {
    sigma({{1, 1, 0.2, 0.4, 1, 0, 0, 1, 1}, {2, 1, -0.6, 1.0, 1, 0, 0, 1, 1}});
    draw(3);
    EXPECT_EQ(h.console(),
              "\n"
              "     1: black (horizontal): \n"
              "     beginning:                   2.0000D-01\n"
              "     end:                         5.0000D-01\n"
              "     minimum:                     2.0000D-01  at z =   1.0000D+00\n"
              "     maximum:                     5.0000D-01  at z =   2.0000D+00\n"
              "     average:                     3.5000D-01\n"
              "\n"
              "     2: red (vertical): \n"
              "     beginning:                   1.0000D-01\n"
              "     end:                        -3.0000D-01\n"
              "     minimum:                    -3.0000D-01  at z =   2.0000D+00\n"
              "     maximum:                     1.0000D-01  at z =   1.0000D+00\n"
              "     average:                    -1.0000D-01\n"
              "\n");
    EXPECT_TRUE(window_is(env(), 1, 2, -0.46f, 0.66f));  // 0.2 of the span 0.8 on both sides
    EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", pad(" m / rad", 40),
                                                  pad("Angular Momentum & Coupling Angle x-y", 40)}));
}

TEST_F(CouplingTest, OneCurveRangesAndTextsKeptFromTheLastRecordTaken) {
    // C = 0.25 then 0.16, trace 7 then 12, S14 - S23 = 0.5 then 0.2, S13 = S24.
    sigma({{1, 4, 0.5, 0, 1, -0.5, 0.5, 1, 1}, {2, 9, 0.4, 0, 1, -0.2, 0.4, 1, 1}});
    struct Step {
        int selection;
        bool empty_zoom;
        std::string y, top;
        std::size_t lines;
        float ymin, ymax;
    };
    const std::string blank(40, ' ');
    const Step steps[] = {
        // Never drawn: blank texts, one curve.
        {3, true, blank, blank, 1, -0.1f, 0.1f},
        {4, false, blank, pad("Trace x-y", 40), 1, 0, 14.4f},  // the 0 of the second curve is in the range
        {2, false, pad("\\ge \\gp \\fimrad mm ", 40), pad("Coupling Emittance x-y", 40), 1, 0, 6e5f},
        {3, false, pad(" m / rad", 40), pad("Angular Momentum & Coupling Angle x-y", 40), 2, 0, 0.3f},
        // A zoom that takes no record keeps the texts and curve count of the call before.
        {4, true, pad(" m / rad", 40), pad("Angular Momentum & Coupling Angle x-y", 40), 2, -0.1f, 0.1f},
    };
    for (const Step& st : steps) {
        SCOPED_TRACE(st.selection);
        s.logo.ZOOM_Z = st.empty_zoom;
        s.graph.Z_LOWER = 10;
        s.graph.Z_UPPER = 20;
        draw(st.selection);
        EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", st.y, st.top}));
        EXPECT_EQ(h.g.named("pgline").size(), st.lines);
        const GraphicsCall& e = env();
        EXPECT_FLOAT_EQ(static_cast<float>(e.args[2]), st.ymin);
        EXPECT_NEAR(e.args[3], st.ymax, 1e-6 * st.ymax + 1e-7);
        if (st.empty_zoom) {
            EXPECT_EQ(h.console(), "");
        }
    }
    // Selection 1 on determinants 4 and 9: the axis starts at 0, the roots are scaled by 1e12.
    s.logo.ZOOM_Z = false;
    sigma({{1, 4, 0, 0, 1, 0, 0, 1, 1}, {2, 9, 0, 0, 1, 0, 0, 1, 1}});
    draw(1);
    EXPECT_EQ(h.g.named("pgline").at(0)->ys, (std::vector<float>{2e12f, 3e12f}));
    EXPECT_FLOAT_EQ(static_cast<float>(env().args[2]), 0);
    EXPECT_FLOAT_EQ(static_cast<float>(env().args[3]), 3.6e12f);
    EXPECT_NE(h.console().find("\n       \n     beginning:                   2.0000D+12\n"),
              std::string::npos);
}
