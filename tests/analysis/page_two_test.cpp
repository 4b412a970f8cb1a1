// Page two: the phase scans, the bars of .LandF, the space-charge plots of
// .tcheck, the Twiss functions and the coherence length, recorded.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "analysis/twiss.hpp"
#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

TEST(TwissFunctions, BetaGammaFromTheKineticEnergy) {
    float GAMBET = 0;  // gamma 3 at 1.022 MeV
    twiss_functions(std::vector<BeamStep>{{0, 1, 1, 0, 1, 1, 0, 1.022f}}, TwissFunction::beta, GAMBET);
    EXPECT_NEAR(GAMBET, std::sqrt(8.0f), 1e-5f);
}

namespace {

struct PageTwo : PlotTest {
    // .LandF: z, particles, charge, loss, deposition, loading; the second record at z = 1 is dropped.
    // .tcheck: records without scaling data (NR_R 0) count for nothing, their clock neither.
    // Steps of z, x size, x emittance, y size, y emittance, correlations 1 and 0.5, energy 0; the
    // step at z = 2 has an emittance too small to count, in x only: it goes in both planes.
    // Two phase scans, the second cut after 100 records and half a degree later.
    PageTwo() {
        table(17, &Fexist::LandF_EXISTS, "p.LandF.001",
              {{0, 9, 1, 0, 0, 0}, {1, 9, 1, 2, 1, -3}, {1, 9, 1, 100, 100, 100}, {3, 9, 1, 6, 2, 4}});
        open_table(s, 14, &Fexist::tcheck_EXISTS, "p.tcheck.001",
                   "0.0 1.0 0 0 0 0 0 0\n0.1 2.0 1 2 3 4 5 1\n0.2 3.0 0 0 0 0 0 0\n0.3 6.0 2 1 1 1 1 3\n");
        table(10, &Fexist::Xemit_EXISTS, "p.Xemit.001",
              {{1, 0, 0, 2, 0, 4, 1}, {2, 0, 0, 1, 0, 1e-31f, 1}, {3, 0, 0, 3, 0, 9, 1}});
        table(11, &Fexist::Yemit_EXISTS, "p.Yemit.001",
              {{1, 0, 0, 1, 0, 1, 0.5f}, {2, 0, 0, 1, 0, 1, 0.5f}, {3, 0, 0, 2, 0, 2, 0.5f}});
        table(12, &Fexist::Zemit_EXISTS, "p.Zemit.001",
              {{1, 0, 0, 0, 0, 0, 0}, {2, 0, 0, 0, 0, 0, 0}, {3, 0, 0, 0, 0, 0, 0}});
        std::vector<std::vector<float>> scans;
        for (int j = 1; j <= 2; ++j)
            for (int k = 1; k <= (j == 2 ? 100 : 360); ++k)
                scans.push_back({k + (j - 1) * 0.5f, 1000.0f * j + k, float(j), 2});
        table(20, &Fexist::PScan_EXISTS, "p.PScan.001", scans);
        s.page2.GAMBET = 2;  // left by an earlier call
        s.logo.COLOUR = true;
    }
};

const Plot phases[] = {
    +[](Session& s, int) { pgex201(s, 500, 360); }, +[](Session& s, int) { pgex202(s, 500, 360); },
    +[](Session& s, int) { pgex203(s, 500, 360); }, +[](Session& s, int) { pgex204(s, 500, 360); }};

}  // namespace

TEST_F(PageTwo, EveryPlotItsRangesKeysStatisticsAndEmptyTables) {
    check({
        // clang-format off
        // Energy on each scan's phases, the others on the last scan's.
        {phases[0], 0, "[1 360 0 2520] 1001 2001 keys 2 at 0.81 | Energy vs. Phase"},
        {phases[2], 0, "[1 360 0.8 2.4] 1 2 keys 2 at 0.81 | Compression factor vs. Phase"},
        {phases[3], 0, "[1 360 1.8 4.2] 2 4 keys 2 at 0.81 | Compression factor vs. Phase"},
        // The last height counts twice in the average; the right edge of the last bar closes the range.
        {pgex205, 0, "[0 3 0 3.6] | Particle loss vs. z", stats(kOneCurve, 0, 3, 2, 0, 3, 1, 8.0f / 3)},
        {pgex207, 0, "[0 3 -3.6 2.4] | Energy transfer to the beam", stats(kOneCurve, 0, 3, -3, 0, 2, 1, 1.0f / 3)},
        // The first record inside the window is the start and makes no bar.
        {pgex206, 0, "[1 3 0 1.2] | Energy deposition due to particle loss", stats(kOneCurve, 1, 3, 1, 1, 1, 1, 1), 0.5f, 5},
        // No bar: nothing is reported, and the frame opens around the start.
        {pgex205, 0, "[0.9 1.1 -0.1 0.1] | Particle loss vs. z", "", 0.5f, 2},
        {pgex209, 0, "[0.1 0.3 0.95 5.25] 1 2 3 4 5 keys 5 at 0.77 | Scaling factors for space charge field"},
        {pgex210, 0, "[0.1 0.3 0 3.15] marks 1 3 symbol 12 | Scaling counter between space charge field"},
        // (6 - 2) / (3 + 1)
        {pgex211, 0, "[0.27 0.33 0 1.05] marks 1 symbol 5 | averaged time step for space charge calculation"},
        // beta = size^2 beta gamma / emittance, beta gamma carried from an earlier call; alpha = -correlation beta / size.
        {pgex212, 12, "[1 3 0 4.8] 2 2 keys 2 at 0.86 | \\gb functions", stats(kBlack, 2, 2, 2, 1, 2, 1, 2) + stats(kRed, 2, 4, 2, 1, 4, 3, 3)},
        {pgex212, 13, "[1 3 -1.2 -0.533333] -1 -1 keys 2 at 0.86 | \\ga functions", stats(kBlack, -1, -2.0f / 3, -1, 1, -2.0f / 3, 3, -5.0f / 6) + stats(kRed, -1, -1, -1, 1, -1, 1, -1)},
        // 1 / beta integrated from 0 over the first interval, in degrees.
        {pgex212, 14, "[1 3 0 34.3775] 0 0 keys 2 at 0.86 | \\fi Phase advance", stats(kBlack, 0, 28.6479f, 0, 1, 28.6479f, 3, 14.324f) + stats(kRed, 0, 14.324f, 0, 1, 14.324f, 3, 7.16197f)},
        {pgex215, 0, "[1 3 0 0.456] 0.19 0.38 | \\fi coherence length", stats(kBlack, 0.19f, 0.38f / 3, 0.38f / 3, 3, 0.19f, 1, (0.19f + 0.38f / 3) / 2) + stats(kRed, 0.38f, 0.38f, 0.38f, 1, 0.38f, 1, 0.38f)},
        // clang-format on
    });
    draw(phases[0]);
    EXPECT_EQ(first("pgline").xs[0], 1);
    draw(phases[2]);
    EXPECT_EQ(first("pgline").xs[0], 1.5f);
    draw(pgex207);  // bars filled in colour 2, then outlined
    std::vector<std::vector<double>> want = {{0, 1, -3, 0}, {1, 3, 2, 0}, {0, 1, -3, 0}, {1, 3, 2, 0}}, got;
    for (const GraphicsCall* r : rec.named("pgrect")) got.push_back(r->args);
    EXPECT_EQ(got, want);
    EXPECT_EQ(std::pair(first("pgsfs").args[0], rec.named("pgsci")[1]->args[0]), std::pair(1.0, 2.0));
    table(20, &Fexist::PScan_EXISTS, "q.PScan.001", {{1, 1, 1, 1}});  // one scan: no key
    check({{phases[1], 0, "[0.9 1.1 -0.1 0.1] 0 | dE/dz vs. Phase"}});
    open_table(s, 20, &Fexist::PScan_EXISTS, "r.PScan.001", "");  // the start values
    open_table(s, 14, &Fexist::tcheck_EXISTS, "q.tcheck.001", "");
    // clang-format off
    check({{phases[0], 0, "[1e+10 -1e+10 0 -8e+09] | Energy vs. Phase"},
           {pgex210, 0, "[1e+10 -1e+10 0 -9.5e+09] marks symbol 12 | Scaling counter between space charge field"}});
    // clang-format on
}
