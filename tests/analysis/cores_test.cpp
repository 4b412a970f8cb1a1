// Core emittances by plane, and the beam with and without a group of
// particles: curves, ranges that leave some curves out, keys, labels,
// statistics of the reduced beam, the charge share.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::fixed_records;
using viewer::testing::open_table;
using viewer::testing::window_is;

namespace {

struct CoresTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();

    // A core table of `n` rows: z = row, field f holds 10 f + row, so every
    // core lies above the full beam of its plane.
    void cores(int n, bool c99 = false) {
        std::vector<std::vector<float>> rows;
        for (int r = 1; r <= n; ++r) {
            rows.emplace_back(1, static_cast<float>(r));
            for (int f = 1; f < 13; ++f) rows.back().push_back(10.0f * f + r);
        }
        s.fexist.Cemit_EXISTS = !c99;
        open_table(s, 23, c99 ? &Fexist::C99emit_EXISTS : &Fexist::Cemit_EXISTS, "p.Cemit.001",
                   fixed_records(rows));
    }
    // Two passes of .Xemit, .Yemit and the table of unit 19.
    void parts(bool sub) {
        open_table(s, 10, &Fexist::Xemit_EXISTS, "p.Xemit.001",
                   fixed_records({{1, 0, 0, 3, 0, 5, 0}, {2, 0, 0, 4, 0, 6, 0}}));
        open_table(s, 11, &Fexist::Yemit_EXISTS, "p.Yemit.001",
                   fixed_records({{1, 0, 0, 3.5f, 0, 5.5f, 0}, {2, 0, 0, 4.5f, 0, 6.5f, 0}}));
        s.fexist.Cr_emit_EXISTS = s.fexist.Sub_emit_EXISTS = false;
        open_table(s, 19, sub ? &Fexist::Sub_emit_EXISTS : &Fexist::Cr_emit_EXISTS, "p.Cr_emit.001",
                   fixed_records({{1, 0, 1, 1.5f, 2, 2.5f, 3, 1}, {2, 0, 1.2f, 1.4f, 2.2f, 2.4f, 0, 0}}));
    }
    void draw(void (*plot)(Session&, int), int selection) {
        h.g.clear();
        h.out.str("");
        s.window.SELECTION = selection;
        plot(s, PKT);
    }
    const GraphicsCall& env() const { return *h.g.named("pgenv").at(0); }
    std::vector<std::string> labels() const { return h.g.named("pglab").at(0)->texts; }
    std::vector<float> first_points() const {
        std::vector<float> v;
        for (auto* l : h.g.named("pgline")) v.push_back(l->ys.empty() ? NAN : l->ys[0]);
        return v;
    }
    std::vector<std::string> keys() const {
        std::vector<std::string> k;
        for (auto* t : h.g.named("pgtext")) k.push_back(std::string(trim_right(t->texts.at(0))));
        return k;
    }
};

}  // namespace

TEST_F(CoresTest, CorePlotsByPlaneWithTheFullBeamAloneSettingTheRange) {
    cores(3);
    struct Plane {
        int selection;
        const char* y;
        const char* top;
        std::vector<float> first;  // full beam, then 95, 90, 80 %
    };
    const Plane planes[] = {
        {9, "\\ge \\gp \\fimrad mm ", "Horizontal core Emittance", {11, 21, 31, 41}},
        {10, "\\ge \\gp \\fimrad mm ", "Vertical core Emittance", {51, 61, 71, 81}},
        {11, "\\ge \\gp \\fikeV mm", "Longitudinal core Emittance", {91, 101, 111, 121}},
    };
    for (const Plane& p : planes) {
        SCOPED_TRACE(p.top);
        draw(pgex409, p.selection);
        EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", p.y, p.top}));
        EXPECT_EQ(first_points(), p.first);
        const float full = p.first[0] + 2;  // the cores above it run off the top
        EXPECT_TRUE(window_is(env(), 1, 3, 0, full + 0.2f * full));
        EXPECT_EQ(keys(), (std::vector<std::string>{" \\fi100%", " \\fi 95%", " \\fi 90%", " \\fi 80%"}));
        EXPECT_FLOAT_EQ(static_cast<float>(h.g.named("pgrect").at(0)->args[0]), 0.83f);
        EXPECT_EQ(h.console(), "");
    }
    // A .C99emit file keeps the curve order and names the outer fractions.
    cores(1, true);
    draw(pgex409, 9);
    EXPECT_EQ(keys(),
              (std::vector<std::string>{" \\fi100%", " \\fi 99.99%", " \\fi 99.90%", " \\fi 99.00%"}));
    EXPECT_TRUE(window_is(env(), 0.9f, 1.1f, 0, 13.2f));  // one point: the mended abscissa
    // No record taken: the start values, whatever the call before showed.
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = 5;
    s.graph.Z_UPPER = 6;
    draw(pgex409, 9);
    EXPECT_TRUE(window_is(env(), 1e10f, -1e10f, -0.1f, 0.1f));
}

TEST_F(CoresTest, WithAndWithoutAGroupOfParticles) {
    struct Row {
        bool sub;
        int selection;
        const char* y;
        const char* top;
        std::vector<float> first;
        float ymax;
        bool statistics;
    };
    const Row rows[] = {
        {false,
         12,
         "\\fim mm ",
         "Emittance with and without cross over particles",
         {2, 2.5f, 5, 5.5f},
         7.8f,
         true},
        // The full beam is drawn but left out of the range.
        {false,
         13,
         "\\gs\\fix \\gs\\fiy \\fimrad mm ",
         "beam size without cross over particles",
         {1, 1.5f, 3, 3.5f},
         1.8f,
         true},
        // 100 SUMQ_CR / (SUMQ + SUMQ_CR); the second pass divides 0 by 0 and leaves the range alone.
        {false, 14, "charge %", "Charge of cross over particles", {25}, 30, false},
        {true, 12, "\\ge \\gp \\fimrad mm ", "Sub-ensemble emittance", {2, 2.5f, 5, 5.5f}, 7.8f, true},
        {true,
         13,
         "\\gs\\fix \\gs\\fiy \\fi mm ",
         "Beam size of sub-ensemble",
         {1, 1.5f, 3, 3.5f},
         1.8f,
         true},
        {true, 14, "charge %", "Charge of sub-ensemble", {75}, 90, false},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.top);
        parts(r.sub);
        draw(pgex411, r.selection);
        EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", r.y, r.top}));
        EXPECT_EQ(first_points(), r.first);
        EXPECT_TRUE(window_is(env(), 1, 2, 0, r.ymax));
        EXPECT_EQ(h.console().empty(), !r.statistics);
        EXPECT_TRUE(h.g.named("pgtext").empty());  // no key
    }
    EXPECT_TRUE(std::isnan(h.g.named("pgline").at(0)->ys.at(1)));

    parts(false);
    draw(pgex411, 12);  // the statistics speak of the reduced beam
    EXPECT_EQ(h.console(),
              "\n"
              "     1: black (horizontal): \n"
              "     beginning:                   2.0000D+00\n"
              "     end:                         2.2000D+00\n"
              "     minimum:                     2.0000D+00  at z =   1.0000D+00\n"
              "     maximum:                     2.2000D+00  at z =   2.0000D+00\n"
              "     average:                     2.1000D+00\n"
              "\n"
              "     2: red (vertical): \n"
              "     beginning:                   2.5000D+00\n"
              "     end:                         2.4000D+00\n"
              "     minimum:                     2.4000D+00  at z =   2.0000D+00\n"
              "     maximum:                     2.5000D+00  at z =   1.0000D+00\n"
              "     average:                     2.4500D+00\n"
              "\n");
    // Without its table nothing is read and the frame takes the start values.
    s.fexist.Cr_emit_EXISTS = false;
    draw(pgex411, 12);
    EXPECT_TRUE(window_is(env(), 1e10f, -1e10f, 0, -8e9f));
    EXPECT_EQ(h.console(), "");
}
