// The fit menu, the dispatcher and the fit hook of a plot, through the
// recorded graphics and scripted clicks.
#include <gtest/gtest.h>

#include <vector>

#include "control/fortran_format.hpp"
#include "fit_bench.hpp"
#include "fitting/fit.hpp"

using namespace viewer;
using namespace viewer::fit_testing;

namespace {

constexpr float mark_x = 0.03f;
float mark_y(int pick) {
    return 0.90f - 0.05f * static_cast<float>(pick - 1);
}

// Names of the recorded calls from index `from` on.
std::vector<std::string> names_from(const RecordingGraphics& g, std::size_t from) {
    std::vector<std::string> out;
    for (std::size_t i = from; i < g.calls.size(); ++i) out.push_back(g.calls[i].name);
    return out;
}

// Index of the first call after the last selection of the plot window.
std::size_t after_menu(const RecordingGraphics& g, int plot_device) {
    std::size_t from = 0;
    for (std::size_t i = 0; i < g.calls.size(); ++i)
        if (g.calls[i].name == "pgslct" && g.calls[i].args[0] == plot_device) from = i + 1;
    return from;
}

// Pointer that also records where each cursor started.
struct WatchingPointer : Pointer {
    std::vector<ScriptedPointer::Click> clicks, starts;
    std::size_t next = 0;
    int pgband(int, int, float xref, float yref, float& x, float& y, char& ch) override {
        starts.push_back({xref, yref});
        if (next >= clicks.size()) {
            ch = '\0';
            return 1;
        }
        x = clicks[next].x;
        y = clicks[next].y;
        ++next;
        ch = ' ';
        return 1;
    }
};

const std::vector<std::string> drawing_bracket = {"pgbbuf", "pgsave", "pgsci",  "pgsls",
                                                  "pgsls",  "pgunsa", "pgebuf", "pgupdt"};

}  // namespace

TEST(FitMenu, PageOfEighteenMarksAndThePick) {
    FitBench b;
    b.p.clicks = {{mark_x, (mark_y(3) + mark_y(4)) / 2}};  // exactly between 3 and 4: the upper wins
    int ID_F = 0;
    fit_menu(*b.s, ID_F);
    EXPECT_EQ(ID_F, 3);

    const auto& calls = b.g.calls;
    ASSERT_GE(calls.size(), 3u);
    EXPECT_EQ(calls[0].name, "pgslct");
    EXPECT_EQ(calls[0].args[0], b.s->window.MENU_DEVICE);
    EXPECT_EQ(calls[1].name, "pgscr");
    EXPECT_EQ(calls[1].args, (std::vector<double>{0, 0.8f, 0.8f, 0.8f}));
    EXPECT_EQ(calls[2].name, "pgscf");
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
    const auto tail = names_from(b.g, static_cast<std::size_t>(circles[18] - calls.data()) - 3);
    EXPECT_EQ(tail, (std::vector<std::string>{"pgsave", "pgsci", "pgsfs", "pgcirc", "pgunsa", "pgslct"}));
    EXPECT_EQ(calls[calls.size() - 5].args[0], 2);  // red
    EXPECT_EQ(calls.back().args[0], b.s->window.PLOT_DEVICE);
    EXPECT_EQ(b.g.selected, b.s->window.PLOT_DEVICE);
    EXPECT_TRUE(b.console().empty());
}

TEST(FitMenu, LastPickRedClicksBesideIgnoredNoCursorIsZero) {
    FitBench b;
    WatchingPointer wp;
    Session s(b.g, wp, b.in, b.out, b.dir);
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
    EXPECT_EQ((circles[18] - 1)->name, "pgsci");
    EXPECT_EQ((circles[18] - 1)->args[0], 2);
    ASSERT_EQ(wp.starts.size(), 2u);
    EXPECT_FLOAT_EQ(wp.starts[0].x, 0.03f);  // first opening: the initial place
    EXPECT_FLOAT_EQ(wp.starts[0].y, 0.5f);
    EXPECT_FLOAT_EQ(wp.starts[1].x, 0.5f);  // then where the pointer was left
    EXPECT_FLOAT_EQ(wp.starts[1].y, 0.5f);

    // The next menu opens at the last pick; a device without cursor gives 0.
    b.g.clear();
    fit_menu(s, ID_F);
    EXPECT_EQ(ID_F, 0);
    ASSERT_EQ(wp.starts.size(), 3u);
    EXPECT_FLOAT_EQ(wp.starts[2].x, mark_x + 0.01f);
    EXPECT_FLOAT_EQ(wp.starts[2].y, mark_y(18));
    EXPECT_EQ(b.g.named("pgcirc").size(), 19u);  // the old pick 18 marked; no new pick drawn
    EXPECT_EQ(b.g.selected, s.window.PLOT_DEVICE);
}

TEST(FitDispatch, PicksWithoutActionAndTheExitPick) {
    FitBench b;
    const float x[] = {0, 1}, y[] = {0, 1};
    b.s->fit_variables.N_FIT = 0;
    for (int pick : {0, 12, 13, 14, 15, 19, -1}) fit(*b.s, pick, 1, 1, 2, x, y);
    EXPECT_TRUE(b.console().empty());
    EXPECT_TRUE(no_curve(b.s->fit_variables));

    fit(*b.s, 3, 1, 1, 2, x, y);
    ASSERT_EQ(b.s->fit_variables.N_FIT, 2);
    b.s->logo.FIT_REQUESTED = true;
    fit(*b.s, 18, 1, 2, 2, x, y);
    fit(*b.s, 18, 2, 2, 2, x, y);  // twice has the effect of once
    EXPECT_FALSE(b.s->logo.FIT_REQUESTED);
    EXPECT_EQ(b.s->fit_variables.N_FIT, 0);
}

TEST(FitHook, SkippedUnlessAFitIsRequested) {
    FitBench b;
    b.p.clicks = {{mark_x, mark_y(3)}};
    const float x[] = {0, 1}, y[] = {0, 1};
    int ID_F = 5;
    fit_hook(*b.s, ID_F, 2, x, y, nullptr);
    EXPECT_TRUE(b.g.calls.empty());
    EXPECT_TRUE(b.console().empty());
    EXPECT_EQ(ID_F, 5);
    EXPECT_EQ(b.p.next, 0u);
}

TEST(FitHook, OneCurveDrawnDashedThenReleased) {
    FitBench b;
    b.s->logo.FIT_REQUESTED = true;
    b.p.clicks = {{mark_x, mark_y(3)}};
    const float x[] = {1, 2, 3}, y[] = {3, 5, 7};
    int ID_F = 0;
    fit_hook(*b.s, ID_F, 3, x, y, nullptr);
    EXPECT_EQ(ID_F, 3);
    EXPECT_NE(b.console().find("     straight line fit: Y = a + b*x\n"), std::string::npos);

    const std::size_t from = after_menu(b.g, b.s->window.PLOT_DEVICE);
    EXPECT_EQ(names_from(b.g, from), (std::vector<std::string>{"pgbbuf", "pgsave", "pgsci", "pgsls", "pgline",
                                                               "pgsls", "pgunsa", "pgebuf", "pgupdt"}));
    const auto& c = b.g.calls;
    EXPECT_EQ(c[from + 2].args[0], 1);  // black
    EXPECT_EQ(c[from + 3].args[0], 2);  // dashed
    EXPECT_EQ(c[from + 5].args[0], 1);  // solid again
    EXPECT_EQ(c[from + 4].xs, (std::vector<float>{1, 3}));
    EXPECT_NEAR(c[from + 4].ys[1], 7.0f, 1e-5);
    EXPECT_TRUE(no_curve(b.s->fit_variables));
    EXPECT_TRUE(b.s->logo.FIT_REQUESTED);  // stays until pick 18
}

TEST(FitHook, TwoCurvesBlackThenRedAndThePlotsOwnStyle) {
    {
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        b.p.clicks = {{mark_x, mark_y(3)}};
        const float x[] = {1, 2, 3}, y1[] = {3, 5, 7}, y2[] = {1, 1, 1};
        int ID_F = 0;
        fit_hook(*b.s, ID_F, 3, x, y1, y2);
        const auto lines = b.g.named("pgline");
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_NEAR(lines[0]->ys[1], 7.0f, 1e-5);
        EXPECT_NEAR(lines[1]->ys[1], 1.0f, 1e-5);
        EXPECT_EQ((lines[1] - 1)->name, "pgsci");
        EXPECT_EQ((lines[1] - 1)->args[0], 2);
        EXPECT_NE(b.console().find("\n     black line: \n"), std::string::npos);
        EXPECT_NE(b.console().find("\n     red line: \n"), std::string::npos);
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {  // A plot whose curve is red and whose fit stays solid.
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        b.p.clicks = {{mark_x, mark_y(3)}};
        const float x[] = {1, 2, 3}, y[] = {3, 5, 7};
        int ID_F = 0;
        fit_hook(*b.s, ID_F, 3, x, y, nullptr, FitStyle{2, false});
        const std::size_t from = after_menu(b.g, b.s->window.PLOT_DEVICE);
        EXPECT_EQ(names_from(b.g, from), (std::vector<std::string>{"pgbbuf", "pgsave", "pgsci", "pgline",
                                                                   "pgsls", "pgunsa", "pgebuf", "pgupdt"}));
        EXPECT_EQ(b.g.calls[from + 2].args[0], 2);
        EXPECT_EQ(b.g.calls[from + 4].args[0], 1);
    }
}

TEST(FitHook, HardcopyRepeatsThePickWithoutTheMenu) {
    FitBench b;
    b.s->logo.FIT_REQUESTED = true;
    b.s->logo.TO_FILE = true;
    b.p.clicks = {{mark_x, mark_y(4)}};
    const float x[] = {1, 2, 3}, y[] = {3, 5, 7};
    int ID_F = 3;
    fit_hook(*b.s, ID_F, 3, x, y, nullptr);
    EXPECT_EQ(ID_F, 3);
    EXPECT_EQ(b.p.next, 0u);  // no click taken
    EXPECT_TRUE(b.g.named("pgslct").empty());
    EXPECT_TRUE(b.g.named("pgcirc").empty());
    EXPECT_EQ(b.g.named("pgline").size(), 1u);
    EXPECT_NE(b.console().find("     straight line fit: Y = a + b*x\n"), std::string::npos);
}

TEST(FitHook, ExitAndBlankPicksDrawNothing) {
    for (int pick : {18, 13}) {
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        b.p.clicks = {{mark_x, mark_y(pick)}};
        const float x[] = {1, 2, 3}, y1[] = {3, 5, 7}, y2[] = {1, 2, 3};
        int ID_F = 0;
        fit_hook(*b.s, ID_F, 3, x, y1, y2);
        EXPECT_EQ(ID_F, pick);
        EXPECT_EQ(b.s->logo.FIT_REQUESTED, pick != 18);
        EXPECT_TRUE(b.console().empty());
        EXPECT_TRUE(b.g.named("pgline").empty());
        // The drawing bracket still runs, with the red colour of curve 2.
        const std::size_t from = after_menu(b.g, b.s->window.PLOT_DEVICE);
        EXPECT_EQ(names_from(b.g, from),
                  (std::vector<std::string>{"pgbbuf", "pgsave", "pgsci", "pgsls", "pgsci", "pgsls", "pgunsa",
                                            "pgebuf", "pgupdt"}));
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
}

TEST(FitHook, OnlyArraysThatHoldTheCurveAreDrawn) {
    const float x[] = {1, 2, 3}, bad[] = {-1, -2, -3}, good[] = {2, 4, 8};
    {  // The first curve fails, the second succeeds: only the red line.
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        b.p.clicks = {{mark_x, mark_y(6)}};
        int ID_F = 0;
        fit_hook(*b.s, ID_F, 3, x, bad, good);
        const auto lines = b.g.named("pgline");
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines[0]->args[0], 100);
        EXPECT_EQ((lines[0] - 1)->name, "pgsci");
        EXPECT_EQ((lines[0] - 1)->args[0], 2);
        EXPECT_NEAR(lines[0]->ys.back(), 8.0f, 1e-4);
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {  // The second fails: neither is drawn, and the first is released.
        FitBench b;
        b.s->logo.FIT_REQUESTED = true;
        b.p.clicks = {{mark_x, mark_y(6)}};
        int ID_F = 0;
        fit_hook(*b.s, ID_F, 3, x, good, bad);
        EXPECT_TRUE(b.g.named("pgline").empty());
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
