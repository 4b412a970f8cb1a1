// The fit menu, the dispatcher and the fit hook of a plot, through the
// recorded graphics and scripted clicks.
#include <gtest/gtest.h>

#include <vector>

#include "control/fortran_format.hpp"
#include "fit_bench.hpp"

using namespace viewer;
using namespace viewer::fit_testing;
using viewer::testing::trace;

namespace {

constexpr float mark_x = 0.03f;
float mark_y(int pick) {
    return 0.90f - 0.05f * static_cast<float>(pick - 1);
}

// Index of the first call after the last selection of the plot window.
std::size_t after_menu(const RecordingGraphics& g, int plot_device) {
    std::size_t from = 0;
    for (std::size_t i = 0; i < g.calls.size(); ++i)
        if (g.calls[i].name == "pgslct" && g.calls[i].args[0] == plot_device) from = i + 1;
    return from;
}

}  // namespace

TEST(FitMenu, PageOfEighteenMarksAndThePick) {
    FitBench b;
    b.p.clicks = {{mark_x, (mark_y(3) + mark_y(4)) / 2}};  // exactly between 3 and 4: the upper wins
    int ID_F = 0;
    fit_menu(*b.s, ID_F);
    EXPECT_EQ(ID_F, 3);

    const auto& calls = b.g.calls;
    const auto t = trace(b.g);
    ASSERT_GE(t.size(), 3u);
    EXPECT_EQ(std::vector<std::string>(t.begin(), t.begin() + 3),
              (std::vector<std::string>{"pgslct", "pgscr", "pgscf"}));
    EXPECT_EQ(calls[0].args[0], b.s->window.MENU_DEVICE);
    EXPECT_EQ(calls[1].args, (std::vector<double>{0, 0.8f, 0.8f, 0.8f}));
    EXPECT_EQ(b.g.named("pgeras").size(), 1u);

    const auto texts = b.g.named("pgptxt");
    ASSERT_EQ(texts.size(), 19u);
    EXPECT_EQ(texts[0]->texts[0], "\\fiFIT MENU");
    EXPECT_EQ(texts[1]->texts[0], pad("A/r fit", 33));
    EXPECT_EQ(texts[11]->texts[0], pad("double gauss", 33));
    EXPECT_EQ(texts[12]->texts[0], std::string(33, ' '));
    EXPECT_EQ(texts[18]->texts[0], pad("EXIT sub menu", 33));
    EXPECT_FLOAT_EQ(static_cast<float>(texts[18]->args[1]), 0.05f - 0.008f);

    // 18 marks, no old pick, then the new pick in red.
    const auto circles = b.g.named("pgcirc");
    ASSERT_EQ(circles.size(), 19u);
    EXPECT_FLOAT_EQ(static_cast<float>(circles[18]->args[1]), mark_y(3));
    EXPECT_EQ(trace(b.g, static_cast<std::size_t>(circles[18] - calls.data()) - 3),
              (std::vector<std::string>{"pgsave", "pgsci2", "pgsfs", "pgcirc", "pgunsa", "pgslct"}));
    EXPECT_EQ(calls.back().args[0], b.s->window.PLOT_DEVICE);
    EXPECT_EQ(b.g.selected, b.s->window.PLOT_DEVICE);
    EXPECT_TRUE(b.console().empty());
}

TEST(FitMenu, LastPickRedClicksBesideIgnoredNoCursorIsZero) {
    FitBench b;
    ScriptedPointer wp;
    Session s(b.g, wp, b.in, b.out, b.dir.path);
    s.window.MENU_DEVICE = 2;
    s.window.PLOT_DEVICE = 1;
    // A click beside the marks is passed over; the next one picks 18.
    wp.clicks = {{0.5f, 0.5f}, {mark_x + 0.01f, mark_y(18)}};
    int ID_F = 7;
    fit_menu(s, ID_F);
    EXPECT_EQ(ID_F, 18);
    const auto circles = b.g.named("pgcirc");
    ASSERT_EQ(circles.size(), 20u);  // 18 marks, the old pick, the new pick
    EXPECT_FLOAT_EQ(static_cast<float>(circles[18]->args[1]), mark_y(7));
    EXPECT_EQ(trace(b.g, static_cast<std::size_t>(circles[18] - b.g.calls.data()) - 1)[0], "pgsci2");
    // First opening at the initial place, then where the pointer was left.
    auto starts = [&] {
        std::vector<float> v;
        for (const auto& c : wp.starts) v.insert(v.end(), {c.x, c.y});
        return v;
    };
    EXPECT_EQ(starts(), (std::vector<float>{0.03f, 0.5f, 0.5f, 0.5f}));

    // The next menu opens at the last pick; a device without cursor gives 0.
    b.g.clear();
    fit_menu(s, ID_F);
    EXPECT_EQ(ID_F, 0);
    EXPECT_EQ(starts(), (std::vector<float>{0.03f, 0.5f, 0.5f, 0.5f, mark_x + 0.01f, mark_y(18)}));
    EXPECT_EQ(b.g.named("pgcirc").size(), 19u);  // the old pick 18 marked; no new pick drawn
    EXPECT_EQ(b.g.selected, s.window.PLOT_DEVICE);
}

TEST(FitDispatch, PicksWithoutActionDoNothing) {
    FitBench b;
    const float x[] = {0, 1}, y[] = {0, 1};
    for (int pick : {0, 12, 13, 14, 15, 19, -1}) fit(*b.s, pick, 1, 1, 2, x, y);
    EXPECT_TRUE(b.console().empty());
    EXPECT_TRUE(no_curve(b.s->fit_variables));
}

TEST(FitHook, SkippedUnlessAFitIsRequested) {
    FitBench b;
    b.p.clicks = {{mark_x, mark_y(3)}};
    const float x[] = {0, 1}, y[] = {0, 1};
    int ID_F = 5;
    fit_hook(*b.s, ID_F, 2, x, y, nullptr);
    EXPECT_TRUE(b.g.calls.empty() && b.console().empty());
    EXPECT_EQ(ID_F, 5);
    EXPECT_EQ(b.p.next, 0u);
}

// After the menu: the curves that hold a fit drawn in the plot's style, the
// first black, the second red, dashed unless the plot says otherwise; then
// the arrays released.
TEST(FitHook, CurvesDrawnInTheDrawingBracketThenReleased) {
    const std::vector<float> x = {1, 2, 3}, line = {3, 5, 7}, flat = {1, 1, 1}, bad = {-1, -2, -3},
                             rising = {2, 4, 8};
    const std::vector<std::string> open = {"pgbbuf", "pgsave"},
                                   close = {"pgsls1", "pgunsa", "pgebuf", "pgupdt"};
    struct Case {
        const char* what;
        int pick;
        std::vector<float> y1, y2;
        FitStyle style;
        std::vector<std::string> drawn;
        std::vector<float> line_ends;  // last ordinate of each line drawn
    };
    const Case cases[] = {
        {"one curve", 3, line, {}, {}, {"pgsci1", "pgsls2", "pgline+"}, {7}},
        {"two curves", 3, line, flat, {}, {"pgsci1", "pgsls2", "pgline+", "pgsci2", "pgline+"}, {7, 1}},
        {"red and solid", 3, line, {}, FitStyle{2, false}, {"pgsci2", "pgline+"}, {7}},
        {"exit pick", 18, line, flat, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},
        {"blank pick", 13, line, flat, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},
        {"first fails", 6, bad, rising, {}, {"pgsci1", "pgsls2", "pgsci2", "pgline+"}, {8}},
        {"second fails: neither", 6, rising, bad, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        b.p.clicks = {{mark_x, mark_y(c.pick)}};
        int ID_F = 0;
        fit_hook(*b.s, ID_F, 3, x.data(), c.y1.data(), c.y2.empty() ? nullptr : c.y2.data(), c.style);
        EXPECT_EQ(ID_F, c.pick);
        EXPECT_EQ(b.s->logo.FIT_REQUESTED, c.pick != 18);  // stays until pick 18
        std::vector<std::string> expected = open;
        expected.insert(expected.end(), c.drawn.begin(), c.drawn.end());
        expected.insert(expected.end(), close.begin(), close.end());
        EXPECT_EQ(trace(b.g, after_menu(b.g, b.s->window.PLOT_DEVICE)), expected);
        std::vector<float> ends;
        for (const GraphicsCall* l : b.g.named("pgline")) ends.push_back(l->ys.back());
        ASSERT_EQ(ends.size(), c.line_ends.size());
        for (std::size_t i = 0; i < ends.size(); ++i) EXPECT_NEAR(ends[i], c.line_ends[i], 1e-4);
        EXPECT_EQ(b.console().empty(), c.pick > 12);
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
}

TEST(FitHook, EndOfInputAtAPromptLeavesNothingAllocated) {
    FitBench b;  // no input at all
    b.s->logo.FIT_REQUESTED = true;
    b.p.clicks = {{mark_x, mark_y(17)}};
    const float x[] = {1, 2}, y[] = {1, 2};
    int ID_F = 0;
    EXPECT_THROW(fit_hook(*b.s, ID_F, 2, x, y, y), EndOfInput);
    EXPECT_TRUE(no_curve(b.s->fit_variables));
    EXPECT_FALSE(b.s->ref.store_file);
}
