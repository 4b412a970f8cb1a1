// The reference-particle plots over free .ref records: the clamped and
// margin rules, labels, the mirrored overlay, the page foot in an overview,
// and the two panels of the trajectory with their own ranges.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "control/session.hpp"
#include "evolution/frame.hpp"
#include "evolution/plots.hpp"

using namespace viewer;
namespace fs = std::filesystem;

namespace {

struct TempDir {
    TempDir() {
        char t[] = "/tmp/ref_test_XXXXXX";
        path = ::mkdtemp(t);
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    std::string path;
};

struct RefPlotsTest : ::testing::Test {
    TempDir tmp;
    RecordingGraphics rec;
    ScriptedPointer ptr;
    std::istringstream in;
    std::ostringstream out;
    Session s{rec, ptr, in, out, tmp.path};

    // Writes .ref as given, opens it on unit 13 and counts its lines as the run load does.
    void ref(const std::string& text) {
        s.unit(13).close();
        std::ofstream(s.path("p.ref.001")) << text;
        ASSERT_TRUE(s.unit(13).open(s.path("p.ref.001")));
        s.fexist.ref_EXISTS = true;
        s.R_PKT = static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    }
    // One record a line: z, clock, ENE, GRAD, LARMOR, XX, YY.
    void ref_rows(const std::vector<std::vector<float>>& rows) {
        std::ostringstream t;
        for (const auto& r : rows) {
            for (float v : r) t << " " << v;
            t << "\n";
        }
        ref(t.str());
    }
    std::vector<float> window(std::size_t k = 0) const {
        const auto& a = rec.named("pgenv").at(k)->args;
        return {static_cast<float>(a[0]), static_cast<float>(a[1]), static_cast<float>(a[2]),
                static_cast<float>(a[3])};
    }
};

void expect_window(const std::vector<float>& w, float x1, float x2, float y1, float y2) {
    EXPECT_FLOAT_EQ(w[0], x1);
    EXPECT_FLOAT_EQ(w[1], x2);
    EXPECT_FLOAT_EQ(w[2], y1);
    EXPECT_FLOAT_EQ(w[3], y2);
}

}  // namespace

TEST_F(RefPlotsTest, MomentumIsClampedAtZeroOnlyWhileItStaysPositive) {
    struct Case {
        float low, ymin;
    };
    for (const Case c : {Case{5, 0}, Case{0, 0}, Case{-5, -6}}) {
        SCOPED_TRACE(c.low);
        rec.clear();
        ref_rows({{1, 0, c.low, 0, 0, 0, 0}, {2, 0, 10, 0, 0, 0, 0}});
        pgex10(s, s.R_PKT);
        expect_window(window(), 1, 2, c.ymin, 12);
    }
    // A constant positive momentum still starts at zero.
    rec.clear();
    ref_rows({{1, 0, 2, 0, 0, 0, 0}, {2, 0, 2, 0, 0, 0, 0}});
    pgex10(s, s.R_PKT);
    expect_window(window(), 1, 2, 0, 2.4f);
}

TEST_F(RefPlotsTest, GradientAndLarmorAngleTakeMarginsFromTheirExtremes) {
    ref_rows({{1, 0, 0, -2, 0.5f, 0, 0}, {2, 0, 0, 3, -1, 0, 0}});
    pgex11(s, s.R_PKT);
    pgex13(s, s.R_PKT);
    expect_window(window(0), 1, 2, -2.4f, 3.6f);
    expect_window(window(1), 1, 2, -1.2f, 0.6f);
}

TEST_F(RefPlotsTest, LabelsOverlayAndPageFootOfTheOneCurvePlots) {
    ref_rows({{1, 0, 1, 2, 3, 4, 5}, {2, 0, 2, 3, 4, 5, 6}});
    s.geometry = {{1.0f, 2.0f}, {1.0f, 2.0f}, 1.0f, 2.0f, 2.0f, 2};
    s.logo.GEOMETRY_LOADED = true;
    s.logo.WITH_GEOMETRY = true;
    s.logo.OVERVIEW = true;  // these plots write their foot all the same
    s.chara.PAGE_TITLE = "p 001";

    struct Member {
        void (*plot)(Session&, int);
        int field;
        const char* ylabel;
        const char* title;
    };
    const Member members[] = {
        {pgex10, reference::ENE, "\\fip\\dz  MeV/c", "longitudinal momentum of reference particle"},
        {pgex11, reference::GRAD, "\\fidp\\dz\\u/dz MeV/c/m", "momentum change of reference particle"},
        {pgex13, reference::LARMOR, "\\fiLarmor angle  rad", "Larmor angle"},
    };
    for (const Member& m : members) {
        SCOPED_TRACE(m.title);
        rec.clear();
        m.plot(s, s.R_PKT);
        EXPECT_EQ(rec.named("pglab").at(0)->texts, (std::vector<std::string>{"\\fiz m", m.ylabel, m.title}));
        const auto lines = rec.named("pgline");
        ASSERT_EQ(lines.size(), 3u);  // the curve, the outline and its mirror
        EXPECT_EQ(lines[0]->ys, (std::vector<float>{static_cast<float>(m.field - 1), static_cast<float>(m.field)}));
        EXPECT_EQ(lines[1]->ys, (std::vector<float>{1, 2}));
        EXPECT_EQ(lines[2]->ys, (std::vector<float>{-1, -2}));
        EXPECT_EQ(s.geometry.GEOM_R, (std::vector<float>{1, 2}));
        ASSERT_EQ(rec.named("pgptxt").size(), 1u);
    }
}

TEST_F(RefPlotsTest, FreeRecordsOfSevenNumbers) {
    // Wider lines than seven numbers, a record over two lines, a last record cut short.
    ref(" 1 0 10 0 0 0 0 99 99\n"
        " 2, 0, 20,\n 0 0 0 0\n"
        " 3 0 30 0\n");
    pgex10(s, s.R_PKT);
    const auto lines = rec.named("pgline");
    EXPECT_EQ(lines.at(0)->ys, (std::vector<float>{10, 20}));
    EXPECT_EQ(lines.at(0)->xs, (std::vector<float>{1, 2}));
}

TEST_F(RefPlotsTest, RecordsBeyondTheCountTakenAtLoadAreNotShown) {
    ref_rows({{1, 0, 1, 0, 0, 0, 0}, {2, 0, 2, 0, 0, 0, 0}, {3, 0, 3, 0, 0, 0, 0}});
    pgex10(s, 2);  // the table grew after the run was loaded
    EXPECT_EQ(s.plot(10).NP, 2);
    pgex12(s, 2);
    EXPECT_EQ(s.plot(12).NP, 2);
}

TEST_F(RefPlotsTest, TrajectoryInTwoPanelsWithTheirOwnRanges) {
    ref_rows({{1, 0, 0, 0, 0, 1, 0.5f}, {2, 0, 0, 0, 0, -2, 1}, {3, 0, 0, 0, 0, 0.5f, 2}});
    s.logo.COLOUR = false;
    pgex12(s, s.R_PKT);

    expect_window(window(0), 1, 3, -2.4f, 1.2f);
    expect_window(window(1), 1, 3, 0.4f, 2.4f);
    const auto lab = rec.named("pglab");
    ASSERT_EQ(lab.size(), 2u);
    const std::string title = "off-axis trajectory of reference particle (w.o. space charge)";
    EXPECT_EQ(lab[0]->texts, (std::vector<std::string>{"\\fiz m", "\\fix mm", title}));
    EXPECT_EQ(lab[1]->texts, (std::vector<std::string>{"\\fiz m", "\\fiy mm", ""}));
    const auto lines = rec.named("pgline");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]->ys, (std::vector<float>{1, -2, 0.5f}));
    EXPECT_EQ(lines[1]->ys, (std::vector<float>{0.5f, 1, 2}));
    EXPECT_TRUE(rec.named("pgsls").empty());  // one curve a panel, solid and black
    EXPECT_NE(out.str().find("     2: red (vertical): \n"), std::string::npos);

    // Order of the frame: two frames, no fit, the foot, the update.
    std::vector<std::string> names;
    for (const auto& c : rec.calls) names.push_back(c.name);
    const std::vector<std::string> head{"pgbbuf", "pgsave", "pgsci", "pgenv", "pglab", "pgsci", "pgline",
                                        "pgenv",  "pglab",  "pgsci", "pgline", "pgunsa", "pgebuf", "pgupdt"};
    ASSERT_GE(names.size(), head.size());
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + static_cast<long>(head.size())), head);
    EXPECT_EQ(names.back(), "pgupdt");
    EXPECT_EQ(rec.named("pgptxt").size(), 1u);
}

TEST_F(RefPlotsTest, TrajectoryWithoutDataOpensOnAHugeFallingRange) {
    // Even after a draw with data: the ranges start anew at each call.
    ref_rows({{1, 0, 0, 0, 0, 1, 1}, {2, 0, 0, 0, 0, 2, 2}});
    pgex12(s, s.R_PKT);
    rec.clear();
    out.str("");
    s.fexist.ref_EXISTS = false;
    pgex12(s, s.R_PKT);
    EXPECT_EQ(out.str(), "");
    ASSERT_EQ(rec.named("pgenv").size(), 2u);
    expect_window(window(0), 1e10f, -1e10f, -0.1f, 0.1f);
    expect_window(window(1), 1e10f, -1e10f, -0.1f, 0.1f);

    // A zoom window without records gives the same.
    rec.clear();
    s.fexist.ref_EXISTS = true;
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = 5;
    s.graph.Z_UPPER = 6;
    pgex12(s, s.R_PKT);
    expect_window(window(0), 1e10f, -1e10f, -0.1f, 0.1f);
}

TEST_F(RefPlotsTest, TrajectoryWithOneOffsetAllZero) {
    ref_rows({{1, 0, 0, 0, 0, 0, 1}, {2, 0, 0, 0, 0, 0, 3}});
    pgex12(s, s.R_PKT);
    expect_window(window(0), 1, 2, -0.1f, 0.1f);
    expect_window(window(1), 1, 2, 0.8f, 3.6f);
}

TEST_F(RefPlotsTest, TrajectoryOverlayInBothPanels) {
    ref_rows({{1, 0, 0, 0, 0, 1, 1}, {2, 0, 0, 0, 0, 2, 2}});
    s.geometry = {{1.0f, 2.0f}, {1.0f, 2.0f}, 1.0f, 2.0f, 2.0f, 2};
    s.logo.GEOMETRY_LOADED = true;
    s.logo.WITH_GEOMETRY = true;
    pgex12(s, s.R_PKT);

    // Outline and mirror in the upper panel, mirror and outline in the lower,
    // in one window; the lower panel's window comes back.
    std::vector<std::string> seq;
    bool in_overlay = false;
    for (const auto& c : rec.calls) {
        if (c.name == "pgswin" && !in_overlay) {
            in_overlay = true;
            EXPECT_FLOAT_EQ(static_cast<float>(c.args[2]), -2.1f);
            EXPECT_FLOAT_EQ(static_cast<float>(c.args[3]), 2.1f);
        }
        if (!in_overlay) continue;
        std::string e = c.name;
        if (c.name == "pgpanl") e += std::to_string(static_cast<int>(c.args[1]));
        if (c.name == "pgline") e += c.ys.at(0) > 0 ? "+" : "-";
        seq.push_back(e);
        if (c.name == "pgupdt") break;
    }
    EXPECT_EQ(seq, (std::vector<std::string>{"pgswin", "pgsci", "pgsls", "pgpanl1", "pgline+", "pgline-", "pgpanl2",
                                             "pgline-", "pgline+", "pgsls", "pgswin", "pgpanl2", "pgunsa", "pgebuf",
                                             "pgupdt"}));
    const auto win = rec.named("pgswin");
    ASSERT_GE(win.size(), 2u);
    const auto lower = window(1);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_FLOAT_EQ(static_cast<float>(win[1]->args[i]), lower[i]);
    EXPECT_EQ(s.geometry.GEOM_R, (std::vector<float>{1, 2}));
}
