// Emission at the cathode against time: each plot counts its own records,
// the time zoom, the statistics of the first curve (also under a fit), the
// curves in colours 1, 2, 3 on any device, the key of the bunch position.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

struct Cathode : PlotTest {
    // Records of Z_MEAN, CLOCK, EZ, EACC, QEMIT, GZ_MIN, GZ_MAX and the emission flag.
    void cathode(const std::vector<std::vector<float>>& rows) {
        std::string t;
        for (const auto& r : rows) {
            const std::string line = fixed_records({r});
            t += line.substr(0, line.size() - 1) + "  T\n";
        }
        open_table(s, 26, &Fexist::Cathode_EXISTS, "p.Cathode.001", t);
    }
    // The call before each curve and each key sample.
    std::vector<std::string> before(const char* name) const {
        std::vector<std::string> v;
        const auto t = trace(rec);
        for (std::size_t i = 1; i < t.size(); ++i)
            if (t[i].rfind(name, 0) == 0) v.push_back(t[i - 1]);
        return v;
    }
};

}  // namespace

TEST_F(Cathode, ThreePlotsTheirCurvesRangesAndStatistics) {
    cathode({{1e-3f, 0.1f, 100, 1e6f, 0.5f, -2e-4f, 3e-4f}, {2e-3f, 0.2f, 300, 2e6f, 1.0f, -1e-4f, 4e-4f}});
    const struct {
        void (*plot)(Session&);
        const char *y, *top;
        std::vector<std::vector<float>> curves;
        float y1, y2;  // from the first curve alone
    } rows[] = {
        // clang-format off
        // -EACC runs far below the frame.
        {pgex414, "\\fiEz V/m", "Space Charge field at the Cathode", {{100, 300}, {-1e6f, -2e6f}}, 80, 360},
        {pgex415, "\\fiQ nC", "Charge emission vs. time", {{0.5f, 1.0f}}, 0.4f, 1.2f},
        {pgex416, "\\fiz m", "Bunch position vs.time",
         {{1e-3f, 2e-3f}, {1e-3f + -2e-4f, 2e-3f + -1e-4f}, {1e-3f + 3e-4f, 2e-3f + 4e-4f}}, 0.8e-3f, 2.4e-3f},
        // clang-format on
    };
    for (bool colour : {true, false}) {
        s.logo.COLOUR = colour;
        for (const auto& r : rows) {
            SCOPED_TRACE(r.top);
            draw(r.plot);
            EXPECT_EQ(labels(), (std::vector<std::string>{"\\fit ns", r.y, r.top}));
            EXPECT_TRUE(window_is(env(), 0.1f, 0.2f, r.y1, r.y2));
            std::vector<std::vector<float>> ys;
            for (auto* l : rec.named("pgline")) ys.push_back(l->ys);
            EXPECT_EQ(ys, r.curves);
            // Curve k in colour index k whatever the device.
            const std::vector<std::string> colours = {"pgsci1", "pgsci2", "pgsci3"};
            EXPECT_EQ(before("pgline"),
                      std::vector<std::string>(colours.begin(), colours.begin() + ys.size()));
        }
        // The key stands top left, from 0.5 DELY to 1 - 0.83; head is curve 3, tail curve 2.
        ASSERT_EQ(rec.named("pgrect").size(), 2u);
        EXPECT_FLOAT_EQ(key_box(), 0.0175f);
        EXPECT_FLOAT_EQ(static_cast<float>(first("pgrect").args[1]), 0.17f);
        EXPECT_EQ(keys(), (std::vector<std::string>{" head", " average", " tail"}));
        const std::string k = colour ? "pgsci" : "pgsls";  // the key follows the device
        EXPECT_EQ(before("pgmove"), (std::vector<std::string>{k + "3", k + "1", k + "2"}));
    }
    draw(pgex415);
    EXPECT_EQ(console(), stats(kOneCurve, 0.5f, 1, 0.5f, 0.1f, 1, 0.2f, 0.75f));
    // Under a fit the block comes all the same, and the fit is dashed in colour 2.
    s.logo.FIT_REQUESTED = s.logo.TO_FILE = true;
    s.plot(415).ID_F = 3;  // a straight line, the pick of the last fit
    draw(pgex415);
    EXPECT_EQ(console().rfind(kOneCurve + "     beginning:                 " + fmt_d(0.5), 0), 0u);
    const auto t = trace(rec);
    const std::vector<std::string> dashed = {"pgsci2", "pgsls2"};
    EXPECT_NE(std::search(std::find(t.begin(), t.end(), "pgunsa"), t.end(), dashed.begin(), dashed.end()),
              t.end());
}

TEST_F(Cathode, CountsItsOwnRecordsZoomsInTimeAndDrawsEmptyFrames) {
    const std::vector<float> r1 = {0, 0.1f, 1, 0, 0.5f, 0, 0}, r2 = {0, 0.2f, 1, 0, 1.0f, 0, 0},
                             r3 = {0, 0.15f, 1, 0, 0.75f, 0, 0};
    const struct {
        const char* what;
        std::vector<std::vector<float>> rows;
        bool zoom;
        int NP;
        float x1, x2, y1, y2;
    } cases[] = {
        // clang-format off
        // The load's count of the table is not used: three records, three points; time not monotonic.
        {"all records", {r1, r2, r3}, false, 3, 0.1f, 0.2f, 0.4f, 1.2f},
        {"the window bounds are kept", {r1, r2, r3}, true, 2, 0.15f, 0.2f, 0.6f, 1.2f},
        {"one record: the ranges collapse and are mended", {r1}, false, 1, 0.09f, 0.11f, 0.4f, 0.6f},
        // The abscissa stays as the call before left it.
        {"a zoom that takes no record", {r1, r2}, true, 0, 0.09f, 0.11f, -0.1f, 0.1f},
        {"an empty table", {}, false, 0, 0.09f, 0.11f, -0.1f, 0.1f},
        // clang-format on
    };
    s.C_PKT = 1;
    s.graph.TIME_LOWER = 0.15f;
    s.graph.TIME_UPPER = 0.2f;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        cathode(c.rows);
        s.logo.ZOOM_TIME = c.zoom;
        if (c.NP == 0) s.graph.TIME_LOWER = 5;
        draw(pgex415);
        EXPECT_EQ(s.plot(415).NP, c.NP);
        EXPECT_EQ(first("pgline").args[0], c.NP);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
        EXPECT_EQ(console().empty(), c.NP == 0);
    }
    s.fexist.Cathode_EXISTS = false;  // without the table: an empty frame around 0, nothing else
    draw(pgex416);
    EXPECT_TRUE(window_is(env(), -0.1f, 0.1f, -0.1f, 0.1f));
    EXPECT_TRUE(rec.named("pgline").empty() && rec.named("pgtext").empty());
    EXPECT_EQ(console(), "");
}
