// Core emittances by plane, and the beam with and without a group of
// particles: curves, ranges that leave some curves out, keys, labels,
// statistics of the reduced beam, the charge share.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

struct Cores : PlotTest {
    // A core table of `n` rows: z = row, field f holds 10 f + row, so every
    // core lies above the full beam of its plane.
    void cores(int n, bool c99 = false) {
        std::vector<std::vector<float>> rows;
        for (int r = 1; r <= n; ++r) {
            rows.emplace_back(1, static_cast<float>(r));
            for (int f = 1; f < 13; ++f) rows.back().push_back(10.0f * f + r);
        }
        s.fexist.Cemit_EXISTS = !c99;
        table(23, c99 ? &Fexist::C99emit_EXISTS : &Fexist::Cemit_EXISTS, "p.Cemit.001", rows);
    }
    // Two passes of .Xemit, .Yemit and the table of unit 19.
    void parts(bool sub) {
        table(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", {{1, 0, 0, 3, 0, 5, 0}, {2, 0, 0, 4, 0, 6, 0}});
        table(11, &Fexist::Yemit_EXISTS, "p.Yemit.001",
              {{1, 0, 0, 3.5f, 0, 5.5f, 0}, {2, 0, 0, 4.5f, 0, 6.5f, 0}});
        s.fexist.Cr_emit_EXISTS = s.fexist.Sub_emit_EXISTS = false;
        table(19, sub ? &Fexist::Sub_emit_EXISTS : &Fexist::Cr_emit_EXISTS, "p.Cr_emit.001",
              {{1, 0, 1, 1.5f, 2, 2.5f, 3, 1}, {2, 0, 1.2f, 1.4f, 2.2f, 2.4f, 0, 0}});
    }
};

}  // namespace

TEST_F(Cores, CorePlotsByPlaneWithTheFullBeamAloneSettingTheRange) {
    cores(3);
    const char* emit = "\\ge \\gp \\fimrad mm ";
    const struct {
        int selection;
        const char *y, *top;
        std::vector<float> first;  // full beam, then 95, 90, 80 %
    } planes[] = {
        {9, emit, "Horizontal core Emittance", {11, 21, 31, 41}},
        {10, emit, "Vertical core Emittance", {51, 61, 71, 81}},
        {11, "\\ge \\gp \\fikeV mm", "Longitudinal core Emittance", {91, 101, 111, 121}},
    };
    for (const auto& p : planes) {
        SCOPED_TRACE(p.top);
        draw(pgex409, p.selection);
        EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", p.y, p.top}));
        EXPECT_EQ(first_points(), p.first);
        const float full = p.first[0] + 2;  // the cores above it run off the top
        EXPECT_TRUE(window_is(env(), 1, 3, 0, full + 0.2f * full));
        EXPECT_EQ(keys(), (std::vector<std::string>{" \\fi100%", " \\fi 95%", " \\fi 90%", " \\fi 80%"}));
        EXPECT_FLOAT_EQ(key_box(), 0.83f);
        EXPECT_EQ(console(), "");
    }
    // A .C99emit file keeps the curve order and names the outer fractions.
    cores(1, true);
    draw(pgex409, 9);
    EXPECT_EQ(keys(),
              (std::vector<std::string>{" \\fi100%", " \\fi 99.99%", " \\fi 99.90%", " \\fi 99.00%"}));
    EXPECT_TRUE(window_is(env(), 0.9f, 1.1f, 0, 13.2f));  // one point: the mended abscissa
    zoom_z(true, 5, 6);  // no record taken: the start values, whatever the call before showed
    draw(pgex409, 9);
    EXPECT_TRUE(window_is(env(), 1e10f, -1e10f, -0.1f, 0.1f));
}

TEST_F(Cores, WithAndWithoutAGroupOfParticles) {
    const struct {
        bool sub;
        int selection;
        const char *y, *top;
        std::vector<float> first;
        float ymax;
    } rows[] = {
        // clang-format off
        {false, 12, "\\fim mm ", "Emittance with and without cross over particles", {2, 2.5f, 5, 5.5f}, 7.8f},
        // The full beam is drawn but left out of the range.
        {false, 13, "\\gs\\fix \\gs\\fiy \\fimrad mm ", "beam size without cross over particles", {1, 1.5f, 3, 3.5f}, 1.8f},
        // 100 SUMQ_CR / (SUMQ + SUMQ_CR); the second pass divides 0 by 0 and leaves the range alone.
        {false, 14, "charge %", "Charge of cross over particles", {25}, 30},
        {true, 12, "\\ge \\gp \\fimrad mm ", "Sub-ensemble emittance", {2, 2.5f, 5, 5.5f}, 7.8f},
        {true, 13, "\\gs\\fix \\gs\\fiy \\fi mm ", "Beam size of sub-ensemble", {1, 1.5f, 3, 3.5f}, 1.8f},
        {true, 14, "charge %", "Charge of sub-ensemble", {75}, 90},
        // clang-format on
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.top);
        parts(r.sub);
        draw(pgex411, r.selection);
        EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", r.y, r.top}));
        EXPECT_EQ(first_points(), r.first);
        EXPECT_TRUE(window_is(env(), 1, 2, 0, r.ymax));
        // The statistics of the reduced beam; none of the charge.
        const std::string reduced =
            stats(kBlack, 2, 2.2f, 2, 1, 2.2f, 2, 2.1f) + stats(kRed, 2.5f, 2.4f, 2.4f, 2, 2.5f, 1, 2.45f);
        EXPECT_TRUE(r.selection != 12 || console() == reduced) << console();
        EXPECT_EQ(console().empty(), r.selection == 14);
        EXPECT_TRUE(rec.named("pgtext").empty());  // no key
    }
    EXPECT_TRUE(std::isnan(first("pgline").ys.at(1)));
    s.fexist.Sub_emit_EXISTS = false;  // without its table nothing is read: the start values
    draw(pgex411, 12);
    EXPECT_TRUE(window_is(env(), 1e10f, -1e10f, 0, -8e9f));
    EXPECT_EQ(console(), "");
}
