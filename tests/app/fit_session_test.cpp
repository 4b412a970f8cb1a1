// Fits driven from the menu through the pointer seam, as a user makes them.
#include <gtest/gtest.h>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::beam_tables;
using viewer::testing::count_of;
using viewer::testing::Harness;

namespace {

void fit_pick(Harness& h, int pick) {
    h.click(0.03f, 0.90f - 0.05f * static_cast<float>(pick - 1));
}

// Lines drawn on `device` after line style 2 was set and before it was reset.
std::vector<const GraphicsCall*> dashed_lines(const RecordingGraphics& g, int device) {
    std::vector<const GraphicsCall*> out;
    bool dashed = false;
    for (const auto& c : g.calls) {
        if (c.device != device) continue;
        if (c.name == "pgsls") dashed = c.args[0] == 2;
        if (c.name == "pgline" && dashed) out.push_back(&c);
    }
    return out;
}

}  // namespace

TEST(FitSession, StraightLineOnBothCurvesRepeatedInTheHardcopyUntilExitPick) {
    Harness h("fitted\n");
    beam_tables(h.dir, 6);
    h.picks({2, 20});   // rms Beam Size, fit
    fit_pick(h, 3);     // straight line
    h.picks({21, 20});  // to file: the fit comes again without the fit menu
    fit_pick(h, 18);
    h.row(25);
    EXPECT_EQ(h.run({"p"}), 0);
    Session& s = h.session();
    const std::string c = h.console();
    EXPECT_EQ(count_of(c, "     straight line fit: Y = a + b*x\n"), 2u);  // screen and file
    EXPECT_EQ(count_of(c, "     black line: \n"), 2u);
    EXPECT_EQ(count_of(c, "     red line: \n"), 2u);
    EXPECT_FALSE(s.logo.FIT_REQUESTED);
    EXPECT_EQ(s.plot(2).ID_F, 18);
    EXPECT_TRUE(s.fit_variables.N_FIT == 0 && s.fit_variables.X_FIT.empty());

    auto screen = dashed_lines(h.g, s.window.PLOT_DEVICE);
    ASSERT_EQ(screen.size(), 2u);  // one fit, two curves; pick 18 draws nothing
    EXPECT_EQ(screen[0]->xs, (std::vector<float>{0.0f, 0.5f}));
    EXPECT_FLOAT_EQ(screen[0]->ys.front(), 1.0f);  // X_RMS of the table: 1 + 0.1 i
    EXPECT_FLOAT_EQ(screen[1]->ys.front(), 2.0f);  // Y_RMS, scaled by two
    // the hardcopy repeats the pick into the file, with the fit menu skipped;
    // in black and white the red curve is dashed too
    std::vector<std::size_t> on_file;
    for (auto* line : dashed_lines(h.g, 3)) on_file.push_back(line->xs.size());
    EXPECT_EQ(on_file, (std::vector<std::size_t>{6, 2, 2}));
    EXPECT_EQ(count_of(c, "saved to file:"), 1u);
}

TEST(FitSession, StoredCurveIsLaidOverAnotherPlot) {
    Harness h("ref.dat\nref.dat\n");
    beam_tables(h.dir, 6);
    h.picks({4, 20});  // Long. Emittance, fit
    fit_pick(h, 17);   // store reference file
    h.row(5);          // rms Bunch Length: the fit menu comes again, the flag holds
    fit_pick(h, 16);   // read reference file
    h.row(25);
    h.run({"p"});
    const std::string c = h.console();
    ASSERT_TRUE(h.dir.exists("ref.dat"));
    EXPECT_TRUE(viewer::testing::has(c, "     Data saved to reference file: ref.dat\n"));
    EXPECT_TRUE(viewer::testing::has(c, "     Enter reference file name: "));
    Session& s = h.session();
    EXPECT_EQ(s.plot(4).ID_F, 17);
    EXPECT_EQ(s.plot(5).ID_F, 16);
    auto lines = dashed_lines(h.g, s.window.PLOT_DEVICE);
    ASSERT_EQ(lines.size(), 1u);  // the store draws nothing; the reference curve is dashed
    ASSERT_EQ(lines[0]->ys.size(), 6u);
    EXPECT_FLOAT_EQ(lines[0]->ys[0], 2.0f);  // NZ_EMIT of the first record: 2 + 0.2 i
    EXPECT_FLOAT_EQ(lines[0]->ys[5], 3.0f);
}
