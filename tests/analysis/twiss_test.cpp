// Twiss functions and coherence length: the computation against values
// known in closed form, the two plots as recorded, and every row of page
// two over the bundled run and the real runs.
#include "analysis/twiss.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;
using viewer::testing::window_is;

TEST(TwissFunctions, BetaAlphaAndGammaBetaFromTheEnergy) {
    // beta = size^2 * beta gamma / emittance; no emittance, no beta.
    const BeamStep steps[] = {{0, 2, 4, 0.5f, 1, 0, 0, 0}, {1, 3, 9, -1, 2, 2, 0.25f, 0}};
    struct Case {
        TwissFunction f;
        std::vector<float> x, y;
    };
    const Case cases[] = {
        {TwissFunction::beta, {2, 2}, {0, 4}},
        {TwissFunction::alpha, {-0.5f, 2.0f / 3}, {0, -0.5f}},
    };
    for (const Case& c : cases) {
        float GAMBET = 2;  // from an earlier call: no energy here is positive
        const TwoCurves t = twiss_functions(steps, c.f, GAMBET);
        EXPECT_EQ(t.Z, (std::vector<float>{0, 1}));
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_FLOAT_EQ(t.X[i], c.x[i]);
            EXPECT_FLOAT_EQ(t.Y[i], c.y[i]);
        }
        EXPECT_EQ(GAMBET, 2);
    }
    // Kinetic energy of gamma = sqrt(2) gives beta gamma = 1.
    float GAMBET = 0;
    const BeamStep fast[] = {{0, 1, 1, 0, 1, 1, 0, 0.511f * (std::sqrt(2.0f) - 1)}};
    twiss_functions(fast, TwissFunction::beta, GAMBET);
    EXPECT_NEAR(GAMBET, 1.0f, 1e-5f);
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
    EXPECT_EQ(t.X[0], 0);
    EXPECT_EQ(t.Y[0], 0);
    for (int i : {1, 50, 99, 100, 200}) {
        const double z = i * dz - dz / 2, lost = i >= 100 ? dz : 0;  // the flat step
        EXPECT_NEAR(t.X[i], (z - lost) / 2 * 57.29578, 1e-3) << i;
        EXPECT_NEAR(t.Y[i], z / 0.5 * 57.29578, 1e-3) << i;
    }
}

namespace {

struct TwissPlotTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    // One step a row: z, x size, x emittance, y size, y emittance, energy.
    void tables(const std::vector<std::vector<float>>& steps) {
        std::vector<std::vector<float>> x, y, z;
        for (const auto& r : steps) {
            x.push_back({r[0], 0, 0, r[1], 0, r[2], 0});
            y.push_back({r[0], 0, 0, r[3], 0, r[4], 0});
            z.push_back({r[0], 0, r[5], 0, 0, 0, 0});
        }
        using viewer::testing::fixed_records;
        viewer::testing::open_table(s, 10, &Fexist::Xemit_EXISTS, "p.Xemit.001", fixed_records(x));
        viewer::testing::open_table(s, 11, &Fexist::Yemit_EXISTS, "p.Yemit.001", fixed_records(y));
        viewer::testing::open_table(s, 12, &Fexist::Zemit_EXISTS, "p.Zemit.001", fixed_records(z));
    }
};

std::string curve(const char* head, float first, float last, float mn, float mn_at, float mx, float mx_at,
                  float avr) {
    return std::string(head) + "     beginning:                 " + fmt_d(first) +
           "\n     end:                       " + fmt_d(last) +
           "\n     minimum:                   " + fmt_d(mn) + "  at z = " + fmt_d(mn_at) +
           "\n     maximum:                   " + fmt_d(mx) + "  at z = " + fmt_d(mx_at) +
           "\n     average:                   " + fmt_d(avr) + "\n\n";
}

}  // namespace

TEST_F(TwissPlotTest, StatisticsFrameAndTheKeyAfterTheOutline) {
    // The step at z = 2 has an emittance too small to count, in x only: it goes in both planes.
    tables({{1, 2, 4, 1, 1, 0}, {2, 1, 1e-31f, 1, 1, 0}, {3, 3, 9, 2, 2, 0}});
    s.page2.GAMBET = 2;  // left by an earlier call
    s.geometry = {{1.0f, 3.0f}, {2.0f, 4.0f}, 1.0f, 3.0f, 4.0f, 2};
    s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = true;
    s.window.SELECTION = 12;
    pgex212(s, PKT);
    EXPECT_EQ(h.console(), curve("\n     1: black (horizontal): \n", 2, 2, 2, 1, 2, 1, 2) +
                               curve("     2: red (vertical): \n", 2, 4, 2, 1, 4, 3, 3));
    EXPECT_TRUE(window_is(*rec.named("pgenv")[0], 1, 3, 0, 4.8f));
    const auto t = trace(rec);
    const auto text = std::find(t.begin(), t.end(), "pgtext");
    ASSERT_NE(text, t.end());
    EXPECT_LT(std::find(t.begin(), t.end(), "pgline-"), text);  // the mirrored outline first
    EXPECT_EQ(rec.named("pgtext")[1]->texts[0], viewer::pad("  \\gb\\dy", 40));
    EXPECT_EQ(rec.named("pgrect")[0]->args[0], 0.86f);

    // Coherence length: no key.
    rec.clear();
    h.out.str("");
    pgex215(s, PKT);
    const float l1 = 0.38f * 3 / 9;
    EXPECT_EQ(h.console(),
              curve("\n     1: black (horizontal): \n", 0.19f, l1, l1, 3, 0.19f, 1, (0.19f + l1) / 2) +
                  curve("     2: red (vertical): \n", 0.38f, 0.38f, 0.38f, 1, 0.38f, 1, 0.38f));
    EXPECT_TRUE(rec.named("pgtext").empty());
}

namespace {

// Copies the tables of `project`, turns to page two, draws rows 1 to 15 and
// ends; every row draws its frame, and those with tables their curves: two
// a Twiss row, five scaling factors, at least one scan a phase-scan row.
void draw_page_two(const std::filesystem::path& from, const std::string& project, const std::string& run) {
    viewer::testing::Harness h;
    std::size_t want = 0;
    for (const auto& e : std::filesystem::directory_iterator(from)) {
        const std::string name = e.path().filename().string();
        std::filesystem::copy_file(e.path(), h.dir.file(name));
        if (name == project + ".Zemit." + run) want += 8;
        if (name == project + ".tcheck." + run) want += 5;
        if (name == project + ".PScan." + run && std::filesystem::file_size(e.path()) > 0) want += 4;
    }
    h.turn_page();
    for (int row = 1; row <= 15; ++row) h.row(row);
    h.row(25);
    const std::string arg = project + "," + run;
    EXPECT_EQ(h.run({arg}), 0) << arg;
    const std::string c = h.console();
    EXPECT_EQ(c.find("Error"), std::string::npos) << arg << c;
    EXPECT_EQ(c.find("Program stops"), std::string::npos) << arg;
    const int dev = h.session().window.PLOT_DEVICE;
    EXPECT_EQ(h.g.named_on("pgenv", dev).size(), 14u)
        << arg;  // a row without its tables draws an empty frame
    std::size_t curves = 0;
    for (auto* line : h.g.named_on("pgline", dev)) curves += line->args[0] > 1;
    EXPECT_GE(curves, want) << arg;
    EXPECT_GT(want, 0u) << arg;
}

}  // namespace

TEST(PageTwo, BundledAndRealRunsDrawEveryRowTheyHaveTablesFor) {
    for (const char* run : {"001", "002", "003"})
        draw_page_two(std::filesystem::path(VIEWER_SOURCE_DIR) / "examples", "rfgun", run);
    const std::filesystem::path root =
        std::filesystem::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!std::filesystem::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;
    for (const auto& dir : std::filesystem::directory_iterator(root)) {
        if (!dir.is_directory()) continue;
        std::string project;
        for (const auto& e : std::filesystem::directory_iterator(dir.path())) {
            const std::string name = e.path().filename().string();
            for (const char* kind : {".Zemit.", ".PScan.", ".tcheck."})
                if (auto p = name.find(kind); p != std::string::npos) project = name.substr(0, p);
        }
        if (!project.empty())
            draw_page_two(dir.path(), project, "001");  // sets without page-two tables are passed over
    }
}
