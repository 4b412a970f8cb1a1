// The nine beam plots as rows of one table: which columns they draw, their
// rule for the ordinate, labels, overlay form and page foot; and the
// velocity that pgex9 makes of the energy.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "control/fortran_format.hpp"
#include "control/session.hpp"
#include "evolution/frame.hpp"
#include "evolution/plots.hpp"

using namespace viewer;
namespace fs = std::filesystem;

namespace {

struct TempDir {
    TempDir() {
        char t[] = "/tmp/beam_test_XXXXXX";
        path = ::mkdtemp(t);
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    std::string path;
};

constexpr int kRows = 3;

// Every field of every table holds a value of its own: base + 10 field + row.
float cell(float base, int field, int row) {
    const float r = static_cast<float>(row + 1);
    return field == 0 ? r : base + 10.0f * static_cast<float>(field) + r;
}

struct BeamPlotsTest : ::testing::Test {
    TempDir tmp;
    RecordingGraphics rec;
    ScriptedPointer ptr;
    std::istringstream in;
    std::ostringstream out;
    Session s{rec, ptr, in, out, tmp.path};

    void table(int unit, bool Fexist::*flag, const std::string& name, float base) {
        std::ofstream f(s.path(name));
        for (int r = 0; r < kRows; ++r) {
            for (int k = 0; k < 7; ++k) f << fmt_e12_4(cell(base, k, r));
            f << "\n";
        }
        f.close();
        ASSERT_TRUE(s.unit(unit).open(s.path(name)));
        s.fexist.*flag = true;
    }
    void SetUp() override {
        table(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", 0);
        table(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", 100);
        table(12, &Fexist::Zemit_EXISTS, "p.Zemit.001", 200);
        s.chara.PAGE_TITLE = "p 001  01.02  03:04";
    }
};

struct Member {
    void (*plot)(Session&, int);
    int number;
    float base1;  // table of the first curve (0 .Xemit, 200 .Zemit)
    int field1;
    int field2;   // of .Yemit, or -1 for one curve
    bool margin;  // margin rule, else zero rule
    const char* ylabel;
    const char* title;
    int outline_lines;  // 1 upper, 2 mirrored
};

const Member kMembers[] = {
    {pgex1, 1, 0, xemit::NX_EMIT, yemit::NY_EMIT, false, "\\ge \\gp \\fimrad mm ", "Transverse Emittance", 1},
    {pgex2, 2, 0, xemit::X_RMS, yemit::Y_RMS, false, "\\gs\\fix \\gs\\fiy \\fimm", "Beam Size", 1},
    {pgex3, 3, 0, xemit::XP_RMS, yemit::YP_RMS, false, "\\fipx/pz  py/pz mrad", "Beam Divergence", 1},
    {pgex4, 4, 200, zemit::NZ_EMIT, -1, false, "\\ge\\fiz \\gp \\fikeV mm", "Longitudinal Emittance", 1},
    {pgex5, 5, 200, zemit::Z_RMS, -1, false, "\\gs\\fiz mm", "Bunch Length", 1},
    {pgex6, 6, 200, zemit::E_RMS, -1, false, "\\gD\\fiE keV", "rms Energy Spread", 1},
    {pgex7, 7, 200, zemit::CO_EZ, -1, true, "\\gD\\fiE keV", "correlated Energy Spread", 2},
    {pgex8, 8, 200, zemit::E_MEAN, -1, true, "\\fiE MeV", "average particle energy", 1},
};

}  // namespace

TEST_F(BeamPlotsTest, EachMemberDrawsItsColumnsWithItsRuleLabelsAndOverlay) {
    s.geometry = {{1.0f, 3.0f}, {2.0f, 4.0f}, 1.0f, 3.0f, 4.0f, 2};
    s.logo.GEOMETRY_LOADED = true;
    s.logo.WITH_GEOMETRY = true;
    s.logo.COLOUR = true;

    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.number);
        rec.clear();
        m.plot(s, PKT);

        const auto lab = rec.named("pglab");
        ASSERT_EQ(lab.size(), 1u);
        EXPECT_EQ(lab[0]->texts, (std::vector<std::string>{"\\fiz m", m.ylabel, m.title}));

        const int curves = m.field2 < 0 ? 1 : 2;
        const auto lines = rec.named("pgline");
        ASSERT_EQ(lines.size(), static_cast<std::size_t>(curves + m.outline_lines));
        std::vector<float> y1, y2;
        for (int r = 0; r < kRows; ++r) {
            y1.push_back(cell(m.base1, m.field1, r));
            if (curves == 2) y2.push_back(cell(100, m.field2, r));
        }
        EXPECT_EQ(lines[0]->ys, y1);
        if (curves == 2) {
            EXPECT_EQ(lines[1]->ys, y2);
        }

        const float top = curves == 2 ? y2.back() : y1.back();
        const auto env = rec.named("pgenv");
        ASSERT_EQ(env.size(), 1u);
        EXPECT_FLOAT_EQ(static_cast<float>(env[0]->args[3]), 1.2f * top);
        EXPECT_FLOAT_EQ(static_cast<float>(env[0]->args[2]), m.margin ? 0.8f * y1.front() : 0.0f);

        // The outline in its own window, then the plot's window back.
        const auto win = rec.named("pgswin");
        ASSERT_GE(win.size(), 2u);
        EXPECT_FLOAT_EQ(static_cast<float>(win[0]->args[2]), -1.05f * 4.0f);
        EXPECT_FLOAT_EQ(static_cast<float>(win[0]->args[3]), 1.05f * 4.0f);
        EXPECT_EQ(std::vector<double>(win[1]->args.begin(), win[1]->args.end()),
                  std::vector<double>(env[0]->args.begin(), env[0]->args.begin() + 4));

        // Statistics of one or two curves.
        EXPECT_EQ(out.str().find("1: black (horizontal)") != std::string::npos, curves == 2);
        out.str("");
    }
}

TEST_F(BeamPlotsTest, PageFootIsLeftOutDuringAnOverview) {
    using Plot = void (*)(Session&, int);
    for (Plot p : {pgex1, pgex2, pgex3, pgex4, pgex5, pgex6, pgex7, pgex8, pgex9}) {
        rec.clear();
        s.logo.OVERVIEW = false;
        p(s, PKT);
        const auto foot = rec.named("pgptxt");
        ASSERT_EQ(foot.size(), 1u);
        EXPECT_EQ(foot[0]->texts.at(0).substr(0, 19), "p 001  01.02  03:04");

        rec.clear();
        s.logo.OVERVIEW = true;
        p(s, PKT);
        EXPECT_TRUE(rec.named("pgptxt").empty());
        EXPECT_EQ(rec.calls.back().name, "pgupdt");
    }
}

TEST_F(BeamPlotsTest, VelocityFromEnergy) {
    s.unit(12).close();
    {
        std::ofstream f(s.path("v.Zemit.001"));
        for (float e : {0.0f, 0.511f, 10.0f})
            f << fmt_e12_4(1) << fmt_e12_4(0) << fmt_e12_4(e) << "\n";
    }
    ASSERT_TRUE(s.unit(12).open(s.path("v.Zemit.001")));
    pgex9(s, PKT);

    const auto lines = rec.named("pgline");
    ASSERT_EQ(lines.size(), 1u);
    const std::vector<float>& beta = lines[0]->ys;
    ASSERT_EQ(beta.size(), 3u);
    EXPECT_EQ(beta[0], 0.0f);
    EXPECT_NEAR(beta[1], 0.866, 5e-4);
    EXPECT_NEAR(beta[2], 0.999, 5e-4);

    // The statistics and the range are of beta, not of the energy.
    const double gamma = 1.0 + 10.0 / 0.511;
    const double beta10 = std::sqrt(1.0 - 1.0 / (gamma * gamma));
    EXPECT_NE(out.str().find("     maximum:                   " + fmt_d(beta10)), std::string::npos) << out.str();
    const auto env = rec.named("pgenv");
    EXPECT_FLOAT_EQ(static_cast<float>(env[0]->args[2]), 0.0f);
    EXPECT_NEAR(env[0]->args[3], 1.2 * beta10, 1e-5);
    EXPECT_EQ(rec.named("pglab")[0]->texts, (std::vector<std::string>{"\\fiz m", "\\gb", "Particle velocity"}));
}

TEST_F(BeamPlotsTest, EachPlotKeepsItsOwnSavedValues) {
    pgex1(s, PKT);
    pgex4(s, PKT);
    EXPECT_EQ(s.plot(1).NP, kRows);
    EXPECT_FLOAT_EQ(s.plot(1).MAX_A[0], cell(0, xemit::NX_EMIT, kRows - 1));
    EXPECT_FLOAT_EQ(s.plot(4).MAX_A[0], cell(200, zemit::NZ_EMIT, kRows - 1));
    EXPECT_EQ(s.plots.count(2), 0u);
}
