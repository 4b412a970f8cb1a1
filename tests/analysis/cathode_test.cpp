// Emission at the cathode against time: each plot counts its own records,
// the time zoom, the statistics of the first curve (also under a fit), the
// curves in colours 1, 2, 3 on any device, the key of the bunch position.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;
using viewer::testing::window_is;

namespace {

struct CathodeTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();

    // Records of Z_MEAN, CLOCK, EZ, EACC, QEMIT, GZ_MIN, GZ_MAX and the emission flag.
    void cathode(const std::vector<std::vector<float>>& rows) {
        std::string t;
        for (const auto& r : rows) {
            const std::string line = viewer::testing::fixed_records({r});
            t += line.substr(0, line.size() - 1) + "  T\n";
        }
        viewer::testing::open_table(s, 26, &Fexist::Cathode_EXISTS, "p.Cathode.001", t);
    }
    void two_records() {
        cathode(
            {{1e-3f, 0.1f, 100, 1e6f, 0.5f, -2e-4f, 3e-4f}, {2e-3f, 0.2f, 300, 2e6f, 1.0f, -1e-4f, 4e-4f}});
    }
    void draw(void (*plot)(Session&)) {
        h.g.clear();
        h.out.str("");
        plot(s);
    }
    const GraphicsCall& env() const { return *h.g.named("pgenv").at(0); }
};

}  // namespace

TEST_F(CathodeTest, ThreePlotsTheirCurvesRangesAndStatistics) {
    two_records();
    struct Row {
        void (*plot)(Session&);
        const char* y;
        const char* top;
        std::vector<std::vector<float>> curves;
        float y1, y2;  // from the first curve alone
    };
    const Row rows[] = {
        // -EACC runs far below the frame.
        {pgex414, "\\fiEz V/m", "Space Charge field at the Cathode", {{100, 300}, {-1e6f, -2e6f}}, 80, 360},
        {pgex415, "\\fiQ nC", "Charge emission vs. time", {{0.5f, 1.0f}}, 0.4f, 1.2f},
        {pgex416,
         "\\fiz m",
         "Bunch position vs.time",
         {{1e-3f, 2e-3f}, {1e-3f + -2e-4f, 2e-3f + -1e-4f}, {1e-3f + 3e-4f, 2e-3f + 4e-4f}},
         0.8e-3f,
         2.4e-3f},
    };
    for (bool colour : {true, false}) {
        s.logo.COLOUR = colour;
        for (const Row& r : rows) {
            SCOPED_TRACE(r.top);
            draw(r.plot);
            EXPECT_EQ(h.g.named("pglab").at(0)->texts, (std::vector<std::string>{"\\fit ns", r.y, r.top}));
            EXPECT_TRUE(window_is(env(), 0.1f, 0.2f, r.y1, r.y2));
            // Curve k in colour index k whatever the device.
            std::vector<std::string> want, got;
            for (std::size_t k = 0; k < r.curves.size(); ++k) {
                want.insert(want.end(), {"pgsci" + std::to_string(k + 1), "pgline"});
                EXPECT_EQ(h.g.named("pgline").at(k)->ys, r.curves[k]);
            }
            const auto t = trace(h.g);
            for (std::size_t i = 0; i < t.size(); ++i)
                if (t[i].rfind("pgline", 0) == 0) got.insert(got.end(), {t[i - 1], "pgline"});
            EXPECT_EQ(got, want);
        }
        // The key stands top left, from 0.5 DELY to 1 - 0.83; head is curve 3, tail curve 2.
        const auto rect = h.g.named("pgrect");
        ASSERT_EQ(rect.size(), 2u);
        EXPECT_FLOAT_EQ(static_cast<float>(rect[0]->args[0]), 0.0175f);
        EXPECT_FLOAT_EQ(static_cast<float>(rect[0]->args[1]), 0.17f);
        std::vector<std::string> keys, samples;
        for (auto* c : h.g.named("pgtext")) keys.push_back(c->texts.at(0));
        EXPECT_EQ(keys, (std::vector<std::string>{pad(" head", 40), pad(" average", 40), pad(" tail", 40)}));
        const auto t = trace(h.g);
        for (std::size_t i = 1; i < t.size(); ++i)
            if (t[i] == "pgmove") samples.push_back(t[i - 1]);
        const std::string k = colour ? "pgsci" : "pgsls";  // the key follows the device
        EXPECT_EQ(samples, (std::vector<std::string>{k + "3", k + "1", k + "2"}));
    }

    draw(pgex415);
    EXPECT_EQ(h.console(),
              "\n"
              "       \n"
              "     beginning:                   5.0000D-01\n"
              "     end:                         1.0000D+00\n"
              "     minimum:                     5.0000D-01  at z =   1.0000D-01\n"
              "     maximum:                     1.0000D+00  at z =   2.0000D-01\n"
              "     average:                     7.5000D-01\n"
              "\n");
    // Under a fit the block comes all the same, and the fit is dashed in colour 2.
    s.logo.FIT_REQUESTED = s.logo.TO_FILE = true;
    s.plot(415).ID_F = 3;  // a straight line, the pick of the last fit
    draw(pgex415);
    EXPECT_EQ(h.console().rfind("\n       \n     beginning:                   5.0000D-01\n", 0), 0u);
    const auto t = trace(h.g);
    const std::vector<std::string> dashed = {"pgsci2", "pgsls2"};
    const auto after_curves = std::find(t.begin(), t.end(), "pgunsa");
    EXPECT_NE(std::search(after_curves, t.end(), dashed.begin(), dashed.end()), t.end());
}

TEST_F(CathodeTest, CountsItsOwnRecordsZoomsInTimeAndDrawsEmptyFrames) {
    struct Case {
        const char* what;
        std::vector<std::vector<float>> rows;  // none: no table at all
        bool zoom;
        int NP;
        float x1, x2, y1, y2;
    };
    const std::vector<float> r1 = {0, 0.1f, 1, 0, 0.5f, 0, 0}, r2 = {0, 0.2f, 1, 0, 1.0f, 0, 0},
                             r3 = {0, 0.15f, 1, 0, 0.75f, 0, 0};
    const Case cases[] = {
        // The load's count of the table is not used: three records, three points; time not monotonic.
        {"all records", {r1, r2, r3}, false, 3, 0.1f, 0.2f, 0.4f, 1.2f},
        {"the window bounds are kept", {r1, r2, r3}, true, 2, 0.15f, 0.2f, 0.6f, 1.2f},
        {"one record: the ranges collapse and are mended", {r1}, false, 1, 0.09f, 0.11f, 0.4f, 0.6f},
        // The abscissa stays as the call before left it.
        {"a zoom that takes no record", {r1, r2}, true, 0, 0.09f, 0.11f, -0.1f, 0.1f},
        {"an empty table", {}, false, 0, 0.09f, 0.11f, -0.1f, 0.1f},
    };
    s.C_PKT = 1;
    s.graph.TIME_LOWER = 0.15f;
    s.graph.TIME_UPPER = 0.2f;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        cathode(c.rows);
        s.logo.ZOOM_TIME = c.zoom;
        if (c.NP == 0) s.graph.TIME_LOWER = 5;
        draw(pgex415);
        EXPECT_EQ(s.plot(415).NP, c.NP);
        EXPECT_EQ(h.g.named("pgline").at(0)->args[0], c.NP);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
        EXPECT_EQ(h.console().empty(), c.NP == 0);
    }
    // Without the table: an empty frame around 0, no curve, no key, nothing printed.
    s.fexist.Cathode_EXISTS = false;
    draw(pgex416);
    EXPECT_TRUE(window_is(env(), -0.1f, 0.1f, -0.1f, 0.1f));
    EXPECT_TRUE(h.g.named("pgline").empty());
    EXPECT_TRUE(h.g.named("pgtext").empty());
    EXPECT_EQ(h.console(), "");
}
