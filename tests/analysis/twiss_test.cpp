// Twiss functions and coherence length: the computation against values
// known in closed form, and the two plots as recorded.
#include "analysis/twiss.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

TEST(TwissFunctions, BetaAlphaAndGammaBetaFromTheEnergy) {
    const std::vector<BeamStep> plain = {{0, 2, 4, 0.5f, 1, 0, 0, 0}, {1, 3, 9, -1, 2, 2, 0.25f, 0}};
    const struct {
        TwissFunction f;
        std::vector<BeamStep> steps;
        std::vector<float> x, y;
        float GAMBET;  // after the call; 2 before it
    } cases[] = {
        // beta = size^2 * beta gamma / emittance; no emittance, no beta; no
        // positive energy keeps beta gamma from an earlier call.
        {TwissFunction::beta, plain, {2, 2}, {0, 4}, 2},
        {TwissFunction::alpha, plain, {-0.5f, 2.0f / 3}, {0, -0.5f}, 2},
        // Kinetic energy of gamma = sqrt(2) gives beta gamma = 1.
        {TwissFunction::beta, {{0, 1, 1, 0, 1, 1, 0, 0.511f * (std::sqrt(2.0f) - 1)}}, {1}, {1}, 1},
    };
    for (const auto& c : cases) {
        float GAMBET = 2;
        const TwoCurves t = twiss_functions(c.steps, c.f, GAMBET);
        EXPECT_NEAR(GAMBET, c.GAMBET, 1e-5f);
        ASSERT_EQ(t.X.size(), c.x.size());
        for (std::size_t i = 0; i < c.x.size(); ++i) {
            EXPECT_NEAR(t.X[i], c.x[i], 1e-5f) << i;
            EXPECT_NEAR(t.Y[i], c.y[i], 1e-5f) << i;
        }
    }
}

TEST(TwissFunctions, PhaseAdvanceOfAConstantBetaGrowsAsZOverBeta) {
    // beta 2 m in x, 0.5 m in y; the first interval is integrated from 0,
    // so the line starts half a step late. A step without emittance in x
    // adds nothing there.
    std::vector<BeamStep> steps;
    const float dz = 0.01f;
    for (int i = 0; i <= 200; ++i) steps.push_back({i * dz, 2, i == 100 ? 0.0f : 2.0f, 0, 1, 2, 0, 0});
    float GAMBET = 1;
    const TwoCurves t = twiss_functions(steps, TwissFunction::phase_advance, GAMBET);
    EXPECT_EQ(std::pair(t.X[0], t.Y[0]), std::pair(0.0f, 0.0f));
    for (int i : {1, 50, 99, 100, 200}) {
        const double z = i * dz - dz / 2, lost = i >= 100 ? dz : 0;  // the flat step
        EXPECT_NEAR(t.X[i], (z - lost) / 2 * 57.29578, 1e-3) << i;
        EXPECT_NEAR(t.Y[i], z / 0.5 * 57.29578, 1e-3) << i;
    }
}

using TwissPlot = PlotTest;

TEST_F(TwissPlot, StatisticsFrameAndTheKeyAfterTheOutline) {
    // Steps of z, x size, x emittance, y size, y emittance, energy 0. The
    // step at z = 2 has an emittance too small to count, in x only: it goes
    // in both planes.
    std::vector<std::vector<float>> x, y, z;
    for (const auto& r :
         std::vector<std::vector<float>>{{1, 2, 4, 1, 1}, {2, 1, 1e-31f, 1, 1}, {3, 3, 9, 2, 2}}) {
        x.push_back({r[0], 0, 0, r[1], 0, r[2], 0});
        y.push_back({r[0], 0, 0, r[3], 0, r[4], 0});
        z.push_back({r[0], 0, 0, 0, 0, 0, 0});
    }
    table(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", x);
    table(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", y);
    table(12, &Fexist::Zemit_EXISTS, "p.Zemit.001", z);
    s.page2.GAMBET = 2;  // left by an earlier call
    s.geometry = {{1.0f, 3.0f}, {2.0f, 4.0f}, 1.0f, 3.0f, 4.0f, 2};
    s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = true;
    draw(pgex212, 12);
    EXPECT_EQ(console(), stats(kBlack, 2, 2, 2, 1, 2, 1, 2) + stats(kRed, 2, 4, 2, 1, 4, 3, 3));
    EXPECT_TRUE(window_is(env(), 1, 3, 0, 4.8f));
    const auto t = trace(rec);  // the mirrored outline before the key
    EXPECT_LT(std::find(t.begin(), t.end(), "pgline-"), std::find(t.begin(), t.end(), "pgtext"));
    EXPECT_EQ(keys(), (std::vector<std::string>{"  \\gb\\dx", "  \\gb\\dy"}));
    EXPECT_EQ(key_box(), 0.86f);

    draw(pgex215);  // coherence length: no key
    const float l1 = 0.38f * 3 / 9;
    EXPECT_EQ(console(), stats(kBlack, 0.19f, l1, l1, 3, 0.19f, 1, (0.19f + l1) / 2) +
                             stats(kRed, 0.38f, 0.38f, 0.38f, 1, 0.38f, 1, 0.38f));
    EXPECT_TRUE(rec.named("pgtext").empty());
}
