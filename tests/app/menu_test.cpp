// The menu widget: drawing, marks, hit tests and the texts of the rows.
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
}

TEST(Menu, DrawsRowsDotsAndMarks) {
    Harness h;
    Session& s = h.session();
    s.fexist.Xemit_EXISTS = s.fexist.Yemit_EXISTS = true;
    s.window.PAGE = 1;
    page_fill(s);
    s.menue.N_RIGHT = 11;
    EXPECT_EQ(pick(h, {{0.03f, menu_row_y(2, NBOX)}}, 33), 2);
    auto texts = h.g.named("pgptxt");
    ASSERT_EQ(texts.size(), 37u);  // heading, 25 rows of the left column, blank ones too, and 11 right
    EXPECT_EQ(texts[0]->texts[0], "\\fiMENU 1 of 4");
    EXPECT_EQ(texts[1]->texts[0], pad("Trans. Emittance", 33));
    EXPECT_EQ(texts[4]->texts[0], std::string(33, ' '));  // no .Zemit: blank text, the dot kept
    auto circles = h.g.named("pgcirc");
    ASSERT_EQ(circles.size(), 38u);  // the dots, the mark of the last pick, the mark of this one
    EXPECT_FLOAT_EQ(circles[36]->args[0], 0.21f);
    EXPECT_EQ(circles[36]->args[1], menu_row_y(3, NBOX));
    EXPECT_EQ(circles[37]->args, (std::vector<double>{0.03f, menu_row_y(2, NBOX), 0.02f}));
}
