// The reference-particle plots over free .ref records: the clamped and
// margin rules, labels, the mirrored overlay, the page foot in an overview,
// and the two panels of the trajectory with their own ranges.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "evolution/plots.hpp"
#include "plot/frame.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::trace;
using viewer::testing::window_is;

namespace {

struct RefPlotsTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    // One free record a line: z, clock, ENE, GRAD, LARMOR, XX, YY; counted as the run load does.
    void ref_rows(const std::vector<std::vector<float>>& rows) {
        std::ostringstream t;
        for (const auto& r : rows) {
            for (float v : r) t << " " << v;
            t << "\n";
        }
        rec.clear();
        viewer::testing::open_table(s, 13, &Fexist::ref_EXISTS, "p.ref.001", t.str());
        s.R_PKT = static_cast<int>(rows.size());
    }
    // Offsets XX and YY along z = 1, 2, ...
    void offsets(const std::vector<float>& xx, const std::vector<float>& yy) {
        std::vector<std::vector<float>> rows;
        for (std::size_t i = 0; i < xx.size(); ++i) rows.push_back({i + 1.0f, 0, 0, 0, 0, xx[i], yy[i]});
        ref_rows(rows);
    }
    const GraphicsCall& env(std::size_t k = 0) const { return *rec.named("pgenv").at(k); }
    void with_outline() {
        s.geometry = {{1.0f, 2.0f}, {1.0f, 2.0f}, 1.0f, 2.0f, 2.0f, 2};
        s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = true;
    }
};

}  // namespace

TEST_F(RefPlotsTest, OneCurvePlotsRuleLabelsOverlayAndPageFoot) {
    struct Member {
        void (*plot)(Session&, int);
        int field;
        float ymin, ymax;  // of the values field - 1 and field
        const char *ylabel, *title;
    };
    const Member members[] = {
        {pgex10, reference::ENE, 0, 2.4f, "\\fip\\dz  MeV/c", "longitudinal momentum of reference particle"},
        {pgex11, reference::GRAD, 1.6f, 3.6f, "\\fidp\\dz\\u/dz MeV/c/m",
         "momentum change of reference particle"},
        {pgex13, reference::LARMOR, 2.4f, 4.8f, "\\fiLarmor angle  rad", "Larmor angle"},
    };
    with_outline();
    s.logo.OVERVIEW = true;  // these plots write their foot all the same
    for (const Member& m : members) {
        SCOPED_TRACE(m.title);
        ref_rows({{1, 0, 1, 2, 3, 4, 5}, {2, 0, 2, 3, 4, 5, 6}});
        m.plot(s, s.R_PKT);
        EXPECT_TRUE(window_is(env(), 1, 2, m.ymin, m.ymax));
        EXPECT_EQ(rec.named("pglab").at(0)->texts, (std::vector<std::string>{"\\fiz m", m.ylabel, m.title}));
        const auto lines = rec.named("pgline");
        ASSERT_EQ(lines.size(), 3u);  // the curve, the outline and its mirror
        EXPECT_EQ(lines[0]->ys, (std::vector<float>{m.field - 1.0f, m.field + 0.0f}));
        EXPECT_EQ(lines[2]->ys, (std::vector<float>{-1, -2}));
        EXPECT_EQ(rec.named("pgptxt").size(), 1u);
    }
    // The momentum is clamped at zero while positive, a constant one too.
    for (auto [start, ymin] : {std::pair{5.f, 0.f}, {0.f, 0.f}, {-5.f, -6.f}, {10.f, 0.f}}) {
        ref_rows({{1, 0, start, 0, 0, 0, 0}, {2, 0, 10, 0, 0, 0, 0}});
        pgex10(s, s.R_PKT);
        EXPECT_TRUE(window_is(env(), 1, 2, ymin, 12)) << start;
    }
}

TEST_F(RefPlotsTest, SevenNumbersARecordUpToTheCountTakenAtLoad) {
    // Wider lines than seven numbers, and a record over two lines.
    viewer::testing::open_table(s, 13, &Fexist::ref_EXISTS, "p.ref.001",
                                " 1 0 10 0 0 0 0 99\n 2, 0, 20,\n 0 0 0 0\n 3 0 30 0 0 0 0\n");
    pgex10(s, 3);
    EXPECT_EQ(rec.named("pgline").at(0)->ys, (std::vector<float>{10, 20, 30}));
    EXPECT_EQ(rec.named("pgline").at(0)->xs, (std::vector<float>{1, 2, 3}));
    pgex12(s, 2);  // the table grew after the run was loaded
    EXPECT_EQ(s.plot(12).NP, 2);
}

TEST_F(RefPlotsTest, TrajectoryInTwoPanelsWithTheirOwnRanges) {
    offsets({1, -2, 0.5f}, {0.5f, 1, 2});
    pgex12(s, s.R_PKT);
    EXPECT_TRUE(window_is(env(0), 1, 3, -2.4f, 1.2f));
    EXPECT_TRUE(window_is(env(1), 1, 3, 0.4f, 2.4f));
    const auto lab = rec.named("pglab");
    ASSERT_EQ(lab.size(), 2u);
    const std::string title = "off-axis trajectory of reference particle (w.o. space charge)";
    EXPECT_EQ(lab[0]->texts, (std::vector<std::string>{"\\fiz m", "\\fix mm", title}));
    EXPECT_EQ(lab[1]->texts, (std::vector<std::string>{"\\fiz m", "\\fiy mm", ""}));
    const auto lines = rec.named("pgline");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]->ys, (std::vector<float>{1, -2, 0.5f}));
    EXPECT_EQ(lines[1]->ys, (std::vector<float>{0.5f, 1, 2}));
    EXPECT_NE(h.console().find("     2: red (vertical): \n"), std::string::npos);
    EXPECT_EQ(rec.named("pgptxt").size(), 1u);
    const auto t = trace(rec);  // one curve a panel, black and solid
    EXPECT_EQ(std::count(t.begin(), t.end(), "pgsci2") + std::count(t.begin(), t.end(), "pgsls2"), 0);

    offsets({0, 0}, {1, 3});  // one offset all zero: its panel is mended around zero
    pgex12(s, s.R_PKT);
    EXPECT_TRUE(window_is(env(0), 1, 2, -0.1f, 0.1f));
    EXPECT_TRUE(window_is(env(1), 1, 2, 0.8f, 3.6f));

    // Without data, even after a draw with data and in an empty zoom window,
    // both panels open on a huge falling range.
    for (bool zoom : {false, true}) {
        rec.clear();
        h.out.str("");
        s.fexist.ref_EXISTS = s.logo.ZOOM_Z = zoom;
        s.graph.Z_LOWER = 5;
        s.graph.Z_UPPER = 6;
        pgex12(s, s.R_PKT);
        EXPECT_EQ(h.console(), "");
        ASSERT_EQ(rec.named("pgenv").size(), 2u);
        EXPECT_TRUE(window_is(env(0), 1e10f, -1e10f, -0.1f, 0.1f));
        EXPECT_TRUE(window_is(env(1), 1e10f, -1e10f, -0.1f, 0.1f));
    }
}

TEST_F(RefPlotsTest, TrajectoryOverlayInBothPanels) {
    offsets({1, 2}, {1, 2});
    with_outline();
    pgex12(s, s.R_PKT);
    // Outline and mirror in the upper panel, mirror and outline in the lower,
    // in one window; the lower panel's window comes back.
    const std::vector<std::string> t = trace(rec);
    const auto from = std::find(t.begin(), t.end(), "pgswin");
    ASSERT_NE(from, t.end());
    EXPECT_EQ(std::vector<std::string>(from, std::find(from, t.end(), "pgupdt") + 1),
              (std::vector<std::string>{"pgswin", "pgsci1", "pgsls2", "pgpanl1", "pgline+", "pgline-",
                                        "pgpanl2", "pgline-", "pgline+", "pgsls1", "pgswin", "pgpanl2",
                                        "pgunsa", "pgebuf", "pgupdt"}));
    const auto win = rec.named("pgswin");
    EXPECT_TRUE(window_is(*win.at(0), 1, 2, -2.1f, 2.1f));
    EXPECT_EQ(win.at(1)->args, std::vector<double>(env(1).args.begin(), env(1).args.begin() + 4));
    EXPECT_EQ(s.geometry.GEOM_R, (std::vector<float>{1, 2}));
}
