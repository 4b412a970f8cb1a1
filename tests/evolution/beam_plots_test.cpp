// The nine beam plots as rows of one table: which columns they draw, their
// rule for the ordinate, labels and overlay form; and the velocity that
// pgex9 makes of the energy.
#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "evolution/plots.hpp"
#include "plot/frame.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;

namespace {

// Every field of every table holds a value of its own: base + 10 field + row.
float cell(float base, int field, int row) {
    return field == 0 ? row + 1.0f : base + 10.0f * field + row + 1.0f;
}

struct BeamPlotsTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;
};

}  // namespace

TEST_F(BeamPlotsTest, EachMemberDrawsItsColumnsWithItsRuleLabelsAndOverlay) {
    const std::tuple<int, bool Fexist::*, const char*> tables[] = {
        {10, &Fexist::Xemit_EXISTS, "p.Xemit.001"},
        {11, &Fexist::Yemit_EXISTS, "p.Yemit.001"},
        {12, &Fexist::Zemit_EXISTS, "p.Zemit.001"}};
    for (int t = 0; t < 3; ++t) {
        std::vector<std::vector<float>> rows(3);
        for (int r = 0; r < 3; ++r)
            for (int k = 0; k < 7; ++k) rows[r].push_back(cell(100.0f * t, k, r));
        const auto& [unit, present, name] = tables[t];
        viewer::testing::open_table(s, unit, present, name, viewer::testing::fixed_records(rows));
    }
    s.geometry = {{1.0f, 3.0f}, {2.0f, 4.0f}, 1.0f, 3.0f, 4.0f, 2};
    s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = s.logo.COLOUR = true;

    struct Member {
        void (*plot)(Session&, int);
        float base1;                // table of the first curve (0 .Xemit, 200 .Zemit)
        int field1, field2;         // field2 of .Yemit, or -1 for one curve
        bool margin;                // margin rule, else zero rule
        std::size_t outline_lines;  // 1 upper, 2 mirrored
        const char *ylabel, *title;
    };
    const Member members[] = {
        {pgex1, 0, xemit::NX_EMIT, yemit::NY_EMIT, false, 1, "\\ge \\gp \\fimrad mm ",
         "Transverse Emittance"},
        {pgex2, 0, xemit::X_RMS, yemit::Y_RMS, false, 1, "\\gs\\fix \\gs\\fiy \\fimm", "Beam Size"},
        {pgex3, 0, xemit::XP_RMS, yemit::YP_RMS, false, 1, "\\fipx/pz  py/pz mrad", "Beam Divergence"},
        {pgex4, 200, zemit::NZ_EMIT, -1, false, 1, "\\ge\\fiz \\gp \\fikeV mm", "Longitudinal Emittance"},
        {pgex5, 200, zemit::Z_RMS, -1, false, 1, "\\gs\\fiz mm", "Bunch Length"},
        {pgex6, 200, zemit::E_RMS, -1, false, 1, "\\gD\\fiE keV", "rms Energy Spread"},
        {pgex7, 200, zemit::CO_EZ, -1, true, 2, "\\gD\\fiE keV", "correlated Energy Spread"},
        {pgex8, 200, zemit::E_MEAN, -1, true, 1, "\\fiE MeV", "average particle energy"},
    };
    for (const Member& m : members) {
        SCOPED_TRACE(m.title);
        rec.clear();
        h.out.str("");
        m.plot(s, PKT);
        EXPECT_EQ(rec.named("pglab").at(0)->texts, (std::vector<std::string>{"\\fiz m", m.ylabel, m.title}));
        const std::size_t curves = m.field2 < 0 ? 1 : 2;
        const auto lines = rec.named("pgline");
        ASSERT_EQ(lines.size(), curves + m.outline_lines);
        std::vector<float> y1, y2;
        for (int r = 0; r < 3; ++r) {
            y1.push_back(cell(m.base1, m.field1, r));
            if (curves == 2) y2.push_back(cell(100, m.field2, r));
        }
        EXPECT_EQ(lines[0]->ys, y1);
        EXPECT_EQ(curves == 2 ? lines[1]->ys : y2, y2);
        // the ordinate from the last curve's maximum and the rule
        EXPECT_TRUE(viewer::testing::window_is(*rec.named("pgenv").at(0), 1, 3,
                                               m.margin ? 0.8f * y1.front() : 0,
                                               1.2f * (curves == 2 ? y2.back() : y1.back())));
        // statistics of one or two curves
        EXPECT_EQ(h.console().find("1: black (horizontal)") != std::string::npos, curves == 2);
    }
    // Each plot keeps its own saved values.
    EXPECT_FLOAT_EQ(s.plot(1).MAX_A[0], cell(0, xemit::NX_EMIT, 2));
    EXPECT_FLOAT_EQ(s.plot(4).MAX_A[0], cell(200, zemit::NZ_EMIT, 2));
    EXPECT_EQ(s.plot(4).NP, 3);
}

TEST_F(BeamPlotsTest, VelocityFromEnergy) {
    viewer::testing::open_table(s, 12, &Fexist::Zemit_EXISTS, "v.Zemit.001",
                                viewer::testing::fixed_records({{1, 0, 0}, {1, 0, 0.511f}, {1, 0, 10}}));
    pgex9(s, PKT);
    const std::vector<float>& beta = rec.named("pgline").at(0)->ys;
    ASSERT_EQ(beta.size(), 3u);
    for (int i : {0, 1, 2}) EXPECT_NEAR(beta[i], (std::vector<double>{0, 0.866, 0.999})[i], 5e-4);
    // The statistics and the range are of beta, not of the energy.
    const double gamma = 1.0 + 10.0 / 0.511, beta10 = std::sqrt(1.0 - 1.0 / (gamma * gamma));
    EXPECT_TRUE(viewer::testing::has(h.console(), "     maximum:                   " + fmt_d(beta10)));
    const GraphicsCall& env = *rec.named("pgenv").at(0);
    EXPECT_EQ(env.args[2], 0.0);
    EXPECT_NEAR(env.args[3], 1.2 * beta10, 1e-5);
    EXPECT_EQ(rec.named("pglab")[0]->texts,
              (std::vector<std::string>{"\\fiz m", "\\gb", "Particle velocity"}));
}
