// The fit menu, the dispatcher and the fit hook of a plot, through the
// recorded graphics and scripted clicks.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "core/fortran_format.hpp"
#include "fit_bench.hpp"

using namespace viewer;
using namespace viewer::fit_testing;
using viewer::testing::trace;

namespace {

constexpr float mark_x = 0.03f;
float mark_y(int pick) {
    return 0.90f - 0.05f * static_cast<float>(pick - 1);
}

}  // namespace

TEST(FitMenu, PicksOldPickAndTheWayBackToThePlot) {
    FitBench b;
    // A click beside the marks is passed over; exactly between 3 and 4 the upper wins.
    b.p.clicks = {{0.5f, 0.5f}, {mark_x, (mark_y(3) + mark_y(4)) / 2}, {mark_x + 0.01f, mark_y(18)}};
    int ID_F = 0;
    fit_menu(*b.s, ID_F);
    EXPECT_EQ(ID_F, 3);
    // The page, on the menu device: title, labels padded to 33, blank slots.
    EXPECT_EQ(b.g.calls.at(0).name + std::to_string(int(b.g.calls[0].args[0])), "pgslct2");
    const auto texts = b.g.named("pgptxt");
    ASSERT_EQ(texts.size(), 19u);
    EXPECT_EQ((std::vector<std::string>{texts[0]->texts[0], texts[1]->texts[0], texts[12]->texts[0],
                                        texts[18]->texts[0]}),
              (std::vector<std::string>{"\\fiFIT MENU", pad("A/r fit", 33), std::string(33, ' '),
                                        pad("EXIT sub menu", 33)}));
    EXPECT_EQ(b.g.named("pgcirc").size(), 19u);  // 18 marks and the pick in red; no old pick
    EXPECT_EQ(b.g.calls.back().name + std::to_string(int(b.g.calls.back().args[0])), "pgslct1");
    EXPECT_TRUE(b.console().empty());

    // The old pick is marked red too; the pointer opens where it was left.
    b.g.clear();
    fit_menu(*b.s, ID_F);
    EXPECT_EQ(ID_F, 18);
    const auto circles = b.g.named("pgcirc");
    ASSERT_EQ(circles.size(), 20u);
    EXPECT_FLOAT_EQ(static_cast<float>(circles[18]->args[1]), mark_y(3));
    EXPECT_EQ(trace(b.g, static_cast<std::size_t>(circles[18] - b.g.calls.data()) - 1)[0], "pgsci2");
    std::vector<float> starts;
    for (const auto& c : b.p.starts) starts.insert(starts.end(), {c.x, c.y});
    const float between = (mark_y(3) + mark_y(4)) / 2;
    EXPECT_EQ(starts, (std::vector<float>{0.03f, 0.5f, 0.5f, 0.5f, mark_x, between}));

    // A device without cursor gives 0 and draws no new pick.
    b.g.clear();
    fit_menu(*b.s, ID_F);
    EXPECT_EQ(ID_F, 0);
    EXPECT_EQ(b.g.named("pgcirc").size(), 19u);
    EXPECT_EQ(b.g.selected, b.s->window.PLOT_DEVICE);
}

TEST(FitMenu, DispatchOfPicksWithoutActionAndAHookNotRequested) {
    FitBench b;
    const float x[] = {0, 1}, y[] = {0, 1};
    for (int pick : {0, 12, 13, 14, 15, 19, -1}) fit(*b.s, pick, 1, 1, 2, x, y);
    EXPECT_TRUE(b.console().empty());
    EXPECT_TRUE(no_curve(b.s->fit_variables));

    b.p.clicks = {{mark_x, mark_y(3)}};
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
    struct Case {
        const char* what;
        int pick;
        std::vector<float> y1, y2;
        FitStyle style;
        std::vector<std::string> drawn;
        std::vector<float> line_ends;  // last ordinate of each line drawn
    };
    // clang-format off
    const Case cases[] = {
        {"one curve", 3, line, {}, {}, {"pgsci1", "pgsls2", "pgline+"}, {7}},
        {"two curves", 3, line, flat, {}, {"pgsci1", "pgsls2", "pgline+", "pgsci2", "pgline+"}, {7, 1}},
        {"red and solid", 3, line, {}, FitStyle{2, false}, {"pgsci2", "pgline+"}, {7}},
        {"exit pick", 18, line, flat, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},
        {"blank pick", 13, line, flat, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},
        {"first fails", 6, bad, rising, {}, {"pgsci1", "pgsls2", "pgsci2", "pgline+"}, {8}},
        {"second fails: neither", 6, rising, bad, {}, {"pgsci1", "pgsls2", "pgsci2"}, {}},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        b.p.clicks = {{mark_x, mark_y(c.pick)}};
        int ID_F = 0;
        fit_hook(*b.s, ID_F, 3, x.data(), c.y1.data(), c.y2.empty() ? nullptr : c.y2.data(), c.style);
        EXPECT_EQ(ID_F, c.pick);
        EXPECT_EQ(b.s->logo.FIT_REQUESTED, c.pick != 18);  // stays until pick 18
        std::vector<std::string> expected = {"pgbbuf", "pgsave"};
        expected.insert(expected.end(), c.drawn.begin(), c.drawn.end());
        expected.insert(expected.end(), {"pgsls1", "pgunsa", "pgebuf", "pgupdt"});
        const auto t = trace(b.g);
        const auto menu_left = std::find(t.rbegin(), t.rend(), "pgslct").base();  // back on the plot
        EXPECT_EQ(std::vector<std::string>(menu_left, t.end()), expected);
        std::vector<float> ends;
        for (const GraphicsCall* l : b.g.named("pgline")) ends.push_back(l->ys.back());
        ASSERT_EQ(ends.size(), c.line_ends.size());
        for (std::size_t i = 0; i < ends.size(); ++i) EXPECT_NEAR(ends[i], c.line_ends[i], 1e-4);
        EXPECT_EQ(b.console().empty(), c.pick > 12);
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }

    FitBench b;  // no input at all for the prompt of pick 17
    b.s->logo.FIT_REQUESTED = true;
    b.p.clicks = {{mark_x, mark_y(17)}};
    int ID_F = 0;
    EXPECT_THROW(fit_hook(*b.s, ID_F, 3, x.data(), line.data(), line.data()), EndOfInput);
    EXPECT_TRUE(no_curve(b.s->fit_variables)) << "the end of input at a prompt leaves nothing allocated";
    EXPECT_FALSE(b.s->ref.store_file);
}
