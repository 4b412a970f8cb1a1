// The rows of a table drawn as curves and the boxed key, recorded: the
// colour or line style of each curve and key sample, and where the box and
// its entries stand.
#include "plot/draw.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;
using viewer::testing::window_is;

TEST(Draw, PolyLineStylesEachRowAndDrawsNothingForAnEmptyRange) {
    viewer::testing::Harness h;
    Session& s = h.session();
    const float X[] = {0, 1}, Y[] = {1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7};  // curve j at height j
    for (bool colour : {true, false}) {
        h.g.clear();
        s.logo.COLOUR = colour;
        poly_line(s, 2, 2, X, Y, 1, 7);
        std::vector<std::string> want = {"pgsci1"};
        for (int j = 1; j <= 7; ++j) {
            // Without colour styles 1 to 5, then again from 1 in colour index 15.
            if (colour) want.push_back("pgsci" + std::to_string(j));
            if (!colour && j > 5) want.push_back("pgsci15");
            if (!colour) want.push_back("pgsls" + std::to_string(j > 5 ? j - 5 : j));
            want.push_back("pgline+");
        }
        want.push_back("pgsci1");
        EXPECT_EQ(trace(h.g), want);
        EXPECT_EQ(h.g.named("pgline")[6]->ys, (std::vector<float>{7, 7}));
    }
    h.g.clear();
    poly_line(s, 2, 2, X, Y, 3, 2);
    EXPECT_EQ(trace(h.g), (std::vector<std::string>{"pgsci1", "pgsci1"}));
}

TEST(Draw, LegendBoxSamplesAndTextsThenTheWindowBack) {
    viewer::testing::Harness h;
    Session& s = h.session();
    const std::vector<std::string> text = {"one", "two"};
    const std::vector<int> num = {2, 7};
    s.pg.pgswin(5, 6, 7, 8);
    for (bool colour : {true, false}) {
        h.g.clear();
        s.logo.COLOUR = colour;
        const LegendPos pos = colour ? LegendPos::TR : LegendPos::TL;
        legend(s, text, num, colour ? 0.0f : 0.7f, pos);  // 0: the edge at 0.77
        // clang-format off
        std::vector<std::string> want = {"pgqwin", "pgswin", "pgsci0", "pgsls1", "pgsfs", "pgrect", "pgsfs",
                                         "pgsci1", "pgrect", "pgsch", colour ? "pgsci2" : "pgsls2", "pgmove",
                                         "pgdraw", "pgtext"};
        // clang-format on
        if (colour)
            want.push_back("pgsci7");
        else
            want.insert(want.end(), {"pgsci15", "pgsls2"});
        want.insert(want.end(), {"pgmove", "pgdraw", "pgtext", "pgsch", "pgsci1", "pgswin"});
        EXPECT_EQ(trace(h.g), want);

        const float x = colour ? 0.77f : 0.0175f, x2 = colour ? 0.9825f : 0.3f;
        EXPECT_TRUE(window_is(*h.g.named("pgswin")[0], 0, 1, 1, 0));
        EXPECT_TRUE(window_is(*h.g.named("pgrect")[1], x, x2, 3.4f * 0.035f, 0.035f));
        const GraphicsCall& move = *h.g.named("pgmove")[1];
        EXPECT_FLOAT_EQ(float(move.args[0]), x + 0.01f);
        EXPECT_FLOAT_EQ(float(move.args[1]), 2.6f * 0.035f);
        const GraphicsCall& t = *h.g.named("pgtext")[1];
        EXPECT_FLOAT_EQ(float(t.args[0]), x + 0.065f);
        EXPECT_FLOAT_EQ(float(t.args[1]), 2.8f * 0.035f);
        EXPECT_EQ(t.texts[0], "two" + std::string(37, ' '));
        EXPECT_TRUE(window_is(*h.g.named("pgswin")[1], 5, 6, 7, 8));
    }
}
