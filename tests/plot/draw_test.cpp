// The rows of a table drawn as curves and the boxed key, recorded: which
// colour or line style each curve and each key sample takes, and where the
// box and its entries stand.
#include "plot/draw.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;
using viewer::testing::window_is;

namespace {

struct DrawTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;
};

}  // namespace

TEST_F(DrawTest, PolyLineStylesEachRowAndDrawsNothingForAnEmptyRange) {
    // Seven curves of two points, curve j at height j.
    const float X[] = {0, 1};
    std::vector<float> Y;
    for (int j = 1; j <= 7; ++j) Y.insert(Y.end(), {float(j), float(j)});
    struct Case {
        bool colour;
        std::vector<std::string> calls;
    };
    const Case cases[] = {
        {true,
         {"pgsci1", "pgsci1", "pgline+", "pgsci2", "pgline+", "pgsci3", "pgline+", "pgsci4", "pgline+",
          "pgsci5", "pgline+", "pgsci6", "pgline+", "pgsci7", "pgline+", "pgsci1"}},
        // Without colour styles 1 to 5, then again from 1 in colour index 15.
        {false,
         {"pgsci1", "pgsls1", "pgline+", "pgsls2", "pgline+", "pgsls3", "pgline+", "pgsls4", "pgline+",
          "pgsls5", "pgline+", "pgsci15", "pgsls1", "pgline+", "pgsci15", "pgsls2", "pgline+", "pgsci1"}},
    };
    for (const Case& c : cases) {
        rec.clear();
        s.logo.COLOUR = c.colour;
        poly_line(s, 2, 2, X, Y.data(), 1, 7);
        EXPECT_EQ(trace(rec), c.calls);
        const auto lines = rec.named("pgline");
        for (std::size_t j = 0; j < lines.size(); ++j)
            EXPECT_EQ(lines[j]->ys, (std::vector<float>{float(j + 1), float(j + 1)}));
    }
    rec.clear();
    poly_line(s, 2, 2, X, Y.data(), 3, 2);
    EXPECT_EQ(trace(rec), (std::vector<std::string>{"pgsci1", "pgsci1"}));
}

TEST_F(DrawTest, LegendBoxSamplesAndTextsThenTheWindowBack) {
    const std::vector<std::string> text = {"one", "two"};
    const std::vector<int> num = {2, 7};
    s.pg.pgswin(5, 6, 7, 8);
    for (bool colour : {true, false}) {
        for (LegendPos pos : {LegendPos::TR, LegendPos::TL}) {
            rec.clear();
            s.logo.COLOUR = colour;
            legend(s, text, num, pos == LegendPos::TR ? 0.0f : 0.7f, pos);
            const std::vector<std::string> style =
                colour ? std::vector<std::string>{"pgsci2"} : std::vector<std::string>{"pgsls2"};
            std::vector<std::string> want = {"pgqwin", "pgswin", "pgsci0", "pgsls1", "pgsfs",
                                             "pgrect", "pgsfs",  "pgsci1", "pgrect", "pgsch"};
            want.insert(want.end(), style.begin(), style.end());
            want.insert(want.end(), {"pgmove", "pgdraw", "pgtext"});
            if (colour)
                want.push_back("pgsci7");
            else
                want.insert(want.end(), {"pgsci15", "pgsls2"});
            want.insert(want.end(), {"pgmove", "pgdraw", "pgtext", "pgsch", "pgsci1", "pgswin"});
            EXPECT_EQ(trace(rec), want);

            // Box from the edge to the frame (0: 0.77), three and a half steps of 0.035 deep.
            const float x = pos == LegendPos::TR ? 0.77f : 0.0175f;
            const float x2 = pos == LegendPos::TR ? 0.9825f : 0.3f;
            EXPECT_TRUE(window_is(*rec.named("pgswin")[0], 0, 1, 1, 0));
            for (const GraphicsCall* r : rec.named("pgrect"))
                EXPECT_TRUE(window_is(*r, x, x2, 3.4f * 0.035f, 0.035f));
            EXPECT_EQ(rec.named("pgsfs")[0]->args[0], 1);
            EXPECT_EQ(rec.named("pgsfs")[1]->args[0], 2);
            const GraphicsCall& move = *rec.named("pgmove")[1];
            EXPECT_FLOAT_EQ(float(move.args[0]), x + 0.01f);
            EXPECT_FLOAT_EQ(float(move.args[1]), 2.6f * 0.035f);
            const GraphicsCall& t = *rec.named("pgtext")[1];
            EXPECT_FLOAT_EQ(float(t.args[0]), x + 0.065f);
            EXPECT_FLOAT_EQ(float(t.args[1]), 2.8f * 0.035f);
            EXPECT_EQ(t.texts[0], "two" + std::string(37, ' '));
            EXPECT_EQ(rec.named("pgsch")[0]->args[0], 0.8f);
            EXPECT_EQ(rec.named("pgsch")[1]->args[0], 1.0f);
            EXPECT_TRUE(window_is(*rec.named("pgswin")[1], 5, 6, 7, 8));
        }
    }
}
