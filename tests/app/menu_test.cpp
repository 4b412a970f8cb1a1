// The menu widget: drawing, marks and the hit tests.
#include "app/menu.hpp"

#include <gtest/gtest.h>

#include "app/pages.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

namespace {

// The menu of page 1 of 4 answered by `clicks`.
int pick(Harness& h, std::vector<ScriptedPointer::Click> clicks, int last = 0) {
    h.p.clicks = std::move(clicks);
    h.p.next = 0;
    return menu(h.session(), last, 1, 4, NBOX);
}

}  // namespace

TEST(Menu, HitTests) {
    const float y1 = menu_row_y(1, NBOX), y2 = menu_row_y(2, NBOX);
    struct Case {
        float x, y;
        int n_right, code;
    };
    const Case cases[] = {
        {0.03f, y1 - 0.001f, 0, 1},
        {0.031f, menu_row_y(25, NBOX), 0, 25},
        {0.03f, (y1 + y2) / 2, 0, 1},  // rows lie 1/26 apart: between two rows goes to the upper one
        {0.03f, menu_row_y(7, NBOX) - 0.019f, 0, 7},
        {0.03f, 1.0f - 1.0f / 27.0f + 0.001f, 0, -1},  // the page-turn line is tried before row 1
        {0.3f, 0.99f, 0, -1},
        {0.21f, menu_row_y(3, NBOX), 11, 33},  // right column: only rows up to N_RIGHT have a dot
        {0.21f, menu_row_y(12, NBOX), 11, 0},  // ignored, then no cursor
    };
    Harness h;
    for (const Case& c : cases) {
        h.session().menue.N_RIGHT = c.n_right;
        EXPECT_EQ(pick(h, {{c.x, c.y}}), c.code) << c.x << " " << c.y;
    }
    // a click in empty space is ignored; the next pick counts, and the cursor comes back there
    EXPECT_EQ(pick(h, {{0.12f, 0.5f}, {0.03f, menu_row_y(4, NBOX)}}), 4);
    EXPECT_FLOAT_EQ(h.session().menu_XX, 0.03f);
    EXPECT_EQ(pick(h, {}), 0);  // no cursor at all
}

TEST(Menu, PageDrawingAndMarks) {
    Harness h;
    Session& s = h.session();
    s.fexist.Xemit_EXISTS = s.fexist.Yemit_EXISTS = true;
    s.window.PAGE = 1;
    page_fill(s);
    EXPECT_EQ(pick(h, {{0.03f, menu_row_y(2, NBOX)}}, 5), 2);
    auto texts = h.g.named("pgptxt");
    ASSERT_EQ(texts.size(), 26u);  // heading and 25 rows, blank ones included
    EXPECT_EQ(texts[0]->texts[0], "\\fiMENU 1 of 4");
    EXPECT_EQ(texts[1]->texts[0], pad("Trans. Emittance", 33));
    EXPECT_EQ(texts[4]->texts[0], std::string(33, ' '));  // Zemit missing: blank text, dot kept
    EXPECT_EQ(texts[25]->texts[0], pad("EXIT", 33));
    auto circles = h.g.named("pgcirc");
    ASSERT_EQ(circles.size(), 27u);  // 25 dots, the last mark, the pick mark
    EXPECT_EQ(circles[25]->args, (std::vector<double>{0.03f, menu_row_y(5, NBOX), 0.015f}));
    EXPECT_EQ(circles[26]->args, (std::vector<double>{0.03f, menu_row_y(2, NBOX), 0.02f}));

    for (int last : {30, 0}) {  // marked nowhere
        h.g.clear();
        pick(h, {{0.03f, menu_row_y(2, NBOX)}}, last);
        EXPECT_EQ(h.g.named("pgcirc").size(), 26u) << last;
    }
    h.g.clear();
    s.menue.N_RIGHT = 11;
    h.p.clicks = {{0.03f, menu_row_y(2, NBOX)}};
    h.p.next = 0;
    menu(s, 33, 3, 5, NBOX);
    auto marks = h.g.named("pgcirc");
    ASSERT_EQ(marks.size(), 25u + 11u + 2u);
    EXPECT_FLOAT_EQ(marks[36]->args[0], 0.21f);
    EXPECT_FLOAT_EQ(marks[36]->args[1], menu_row_y(3, NBOX));
}

TEST(Menu, PageFillConditions) {
    Harness h;
    Session& s = h.session();
    auto left = [&](int i) {
        return std::string(trim_right(s.menue.LEFT_TEXT[static_cast<std::size_t>(i)]));
    };
    s.window.PAGE = 3;
    page_fill(s);
    EXPECT_EQ(left(15), "");  // no .Error: no bins row
    EXPECT_EQ(left(16), "change title");
    EXPECT_EQ(s.menue.N_RIGHT, 0);
    s.fexist.Error_EXISTS = true;
    page_fill(s);
    EXPECT_EQ(left(15), "change number of bins");
    EXPECT_EQ(s.menue.N_RIGHT, 11);
    EXPECT_EQ(std::string(trim_right(s.menue.RIGHT_TEXT[11])), "Err. position");

    s.window.PAGE = 4;
    s.fexist.Sub_emit_EXISTS = true;
    page_fill(s);
    EXPECT_EQ(left(12), "Sub-ensemble emittance");
    EXPECT_EQ(left(4), "");
    s.fexist = {};
    s.fexist.Cr_emit_EXISTS = s.fexist.Xemit2_EXISTS = s.fexist.Yemit2_EXISTS = true;
    page_fill(s);
    EXPECT_EQ(left(12), "Emittance w.o. cross over part.");
    // the field of 33 characters ends before the last letter
    EXPECT_EQ(s.menue.LEFT_TEXT[4], "trans. cor. emitt. contributions ");
    EXPECT_EQ(left(4), left(5));
    EXPECT_EQ(left(18), "include geometry");
    s.logo.WITH_GEOMETRY = true;
    write_geometry_row(s);
    EXPECT_EQ(left(18), "remove geometry");

    s.window.PAGE = 2;
    s.fexist.Xemit_EXISTS = s.fexist.Yemit_EXISTS = s.fexist.Zemit_EXISTS = true;
    page_fill(s);
    for (auto [row, echo] :
         {std::pair{8, ""}, {12, "beta function"}, {13, "alpha function"}, {14, "phase advance"}})
        EXPECT_EQ(echo_text(s, row), echo);
}
