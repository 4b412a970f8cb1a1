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

const auto row_y = [](int row) { return menu_row_y(row, NBOX); };

}  // namespace

TEST(Menu, HitTestsRowsDotsAndMarks) {
    // x, y, N_RIGHT, the code. Rows lie 1/26 apart: between two rows goes to the upper one; the
    // page-turn line is tried before row 1; in the right column only rows up to N_RIGHT have a
    // dot, a click beside them is ignored, then there is no cursor.
    // clang-format off
    const std::tuple<float, float, int, int> cases[] = {
        {0.03f, row_y(1) - 0.001f, 0, 1}, {0.031f, row_y(25), 0, 25}, {0.03f, row_y(7) - 0.019f, 0, 7},
        {0.03f, (row_y(1) + row_y(2)) / 2, 0, 1}, {0.03f, 1.0f - 1.0f / 27.0f + 0.001f, 0, -1}, {0.3f, 0.99f, 0, -1},
        {0.21f, row_y(3), 11, 33}, {0.21f, row_y(12), 11, 0},
    };
    // clang-format on
    Harness h;
    Session& s = h.session();
    s.fexist.Xemit_EXISTS = s.fexist.Yemit_EXISTS = true;
    page_fill(s);
    for (auto [x, y, n_right, code] : cases) {
        s.menue.N_RIGHT = n_right;
        EXPECT_EQ(pick(h, {{x, y}}), code) << x << " " << y;
    }
    // a click in empty space is ignored; the next pick counts, and the cursor comes back there
    h.g.calls.clear();
    EXPECT_EQ(pick(h, {{0.12f, 0.5f}, {0.03f, row_y(2)}}, 33), 2);
    EXPECT_FLOAT_EQ(s.menu_XX, 0.03f);
    auto texts = h.g.named("pgptxt");
    ASSERT_EQ(texts.size(), 37u);  // heading, 25 rows of the left column, blank ones too, and 11 right
    // no .Zemit: row 4 has a blank text, its dot kept
    EXPECT_EQ(
        (std::vector{texts[0]->texts[0], texts[1]->texts[0], texts[4]->texts[0]}),
        (std::vector<std::string>{"\\fiMENU 1 of 4", pad("Trans. Emittance", 33), std::string(33, ' ')}));
    auto circles = h.g.named("pgcirc");
    // 25 dots on the left, 11 on the right, the mark of the last pick over the dot of its row, a
    // larger mark of this pick
    ASSERT_EQ(circles.size(), 38u);
    EXPECT_EQ(circles[36]->args, circles[25 + 2]->args);
    EXPECT_EQ(circles[37]->args, (std::vector<double>{0.03f, row_y(2), 0.02f}));
}
