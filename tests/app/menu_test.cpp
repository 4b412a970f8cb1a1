// The menu widget: drawing, marks and the hit tests.
#include "app/menu.hpp"

#include <gtest/gtest.h>

#include "app/pages.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

namespace {

int pick(Harness& h, float x, float y, int last = 0, int n_right = 0) {
    Session& s = h.session();
    s.menue.N_RIGHT = n_right;
    h.p.clicks = {{x, y}};
    h.p.next = 0;
    return menu(s, last, 1, 4, NBOX);
}

}  // namespace

TEST(Menu, HitTests) {
    Harness h;
    const float y1 = menu_row_y(1, NBOX), y2 = menu_row_y(2, NBOX);
    EXPECT_EQ(pick(h, 0.03f, y1 - 0.001f), 1);
    EXPECT_EQ(pick(h, 0.031f, menu_row_y(25, NBOX)), 25);
    // rows lie 1/26 apart: a pick between two rows goes to the upper one
    EXPECT_EQ(pick(h, 0.03f, (y1 + y2) / 2), 1);
    EXPECT_EQ(pick(h, 0.03f, menu_row_y(7, NBOX) - 0.019f), 7);
    // the page-turn line lies inside row 1's circle and is tried first
    EXPECT_EQ(pick(h, 0.03f, 1.0f - 1.0f / 27.0f + 0.001f), -1);
    EXPECT_EQ(pick(h, 0.3f, 0.99f), -1);
    // right column: only rows up to N_RIGHT have a dot
    EXPECT_EQ(pick(h, 0.21f, menu_row_y(3, NBOX), 0, 11), 33);
    EXPECT_EQ(pick(h, 0.21f, menu_row_y(12, NBOX), 0, 11), 0);  // ignored, then no cursor
    // a click in empty space is ignored; the next pick counts
    Session& s = h.session();
    h.p.clicks = {{0.12f, 0.5f}, {0.03f, menu_row_y(4, NBOX)}};
    h.p.next = 0;
    EXPECT_EQ(menu(s, 0, 1, 4, NBOX), 4);
    EXPECT_FLOAT_EQ(s.menu_XX, 0.03f);  // the cursor comes back where it was
    // no cursor at all
    h.p.clicks.clear();
    h.p.next = 0;
    EXPECT_EQ(menu(s, 0, 1, 4, NBOX), 0);
}

TEST(Menu, PageDrawingAndMarks) {
    Harness h;
    Session& s = h.session();
    s.fexist.Xemit_EXISTS = s.fexist.Yemit_EXISTS = true;
    s.window.PAGE = 1;
    page_fill(s);
    h.p.clicks = {{0.03f, menu_row_y(2, NBOX)}};
    EXPECT_EQ(menu(s, 5, 1, 4, NBOX), 2);
    auto texts = h.g.named("pgptxt");
    ASSERT_EQ(texts.size(), 26u);  // heading and 25 rows, blank ones included
    EXPECT_EQ(texts[0]->texts[0], "\\fiMENU 1 of 4");
    EXPECT_EQ(texts[1]->texts[0], pad("Trans. Emittance", 33));
    EXPECT_EQ(texts[4]->texts[0], std::string(33, ' '));  // Zemit missing: blank text, dot kept
    EXPECT_EQ(texts[25]->texts[0], pad("EXIT", 33));
    auto circles = h.g.named("pgcirc");
    ASSERT_EQ(circles.size(), 27u);  // 25 dots, the last mark, the pick mark
    EXPECT_FLOAT_EQ(circles[25]->args[1], menu_row_y(5, NBOX));
    EXPECT_FLOAT_EQ(circles[25]->args[2], 0.015f);
    EXPECT_FLOAT_EQ(circles[26]->args[1], menu_row_y(2, NBOX));
    EXPECT_FLOAT_EQ(circles[26]->args[2], 0.02f);

    for (int last : {30, 0}) {  // marked nowhere
        h.g.clear();
        h.p.clicks = {{0.03f, menu_row_y(2, NBOX)}};
        h.p.next = 0;
        menu(s, last, 1, 4, NBOX);
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
    EXPECT_EQ(echo_text(s, 12), "beta function");
    EXPECT_EQ(echo_text(s, 13), "alpha function");
    EXPECT_EQ(echo_text(s, 14), "phase advance");
    EXPECT_EQ(echo_text(s, 8), "");
}
