// The phase scans: the counting of scan blocks on its own, then the four
// plots as recorded (abscissas, ranges, keys, the fit of the first scan).
#include "analysis/phase_scans.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::window_is;

namespace {

// `scans` scans of phases 1..360, energy = scan number * 1000 + phase; the
// last one cut after `last` records.
std::vector<PScanRow> scans(int n, int last = 360) {
    std::vector<PScanRow> r;
    for (int j = 1; j <= n; ++j)
        for (int k = 1; k <= (j == n ? last : 360); ++k)
            r.push_back({float(k), 1000.0f * j + k, float(j), 2.0f});
    return r;
}

}  // namespace

TEST(ScanCounting, BlocksPointsAndRangesOnTheEdgeCases) {
    struct Case {
        const char* name;
        std::vector<PScanRow> rows;
        PhaseZoom zoom;
        int NSCAN;
        int J, NP;
        float first, last;  // DAT of scan 1 point 1 and of scan J point NP
    };
    const Case cases[] = {
        {"three full scans", scans(3), {}, 500, 3, 360, 1001, 3360},
        {"last scan cut", scans(3, 100), {}, 500, 3, 100, 1001, 3100},
        {"one scan", scans(1), {}, 500, 1, 360, 1001, 1360},
        {"empty", {}, {}, 500, 0, 0, 0, 0},
        // The 360 record outside the window still closes its scan.
        {"window without 360", scans(3), {true, 10, 20}, 500, 3, 11, 1010, 3020},
        // Taken, it closes nothing: the shortened scans run together.
        {"window with 360", scans(3), {true, 300, 360}, 500, 1, 183, 1300, 3360},
        // More scans than the table holds: taking stops at its limit.
        {"more scans than the table", scans(4), {true, 10, 20}, 2, 2, 11, 1010, 2020},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ScanTable t = count_scans(c.rows, ScanOrdinate::energy, c.zoom, c.NSCAN);
        EXPECT_EQ(t.J, c.J);
        EXPECT_EQ(t.NP, c.NP);
        if (c.J == 0) {
            EXPECT_EQ(t.ZMAX, -1e10f);
            EXPECT_EQ(t.EMIN, 1e10f);
            continue;
        }
        EXPECT_EQ(t.at(1, 1), c.first);
        EXPECT_EQ(t.at(c.J, c.NP), c.last);
        EXPECT_EQ(t.phases(c.J)[c.NP - 1], t.Z[static_cast<std::size_t>(c.NP - 1)]);
        EXPECT_EQ(t.EMAX, c.last);
    }
}

TEST(ScanCounting, SlopeCarriesAcrossScansSkipsZoomedRecordsAndDividesRepeatedPhases) {
    // Scan 2 starts from the last record taken of scan 1: 360, or 359 when the zoom skips 360.
    const ScanTable all = count_scans(scans(2), ScanOrdinate::slope, {});
    const ScanTable cut = count_scans(scans(2), ScanOrdinate::slope, {true, 0, 359});
    EXPECT_EQ(all.at(1, 1), 0.0f);  // nothing before it
    EXPECT_EQ(all.at(1, 2), 1.0f);
    EXPECT_EQ(all.at(2, 1), (2001.0f - 1360.0f) / (1.0f - 360.0f));
    EXPECT_EQ(cut.J, 2);
    EXPECT_EQ(cut.at(2, 1), (2001.0f - 1359.0f) / (1.0f - 359.0f));
    const std::vector<PScanRow> repeated = {{1, 10}, {1, 11}, {2, 12}};
    const ScanTable rep = count_scans(repeated, ScanOrdinate::slope, {});
    EXPECT_TRUE(std::isinf(rep.at(1, 2)));
    EXPECT_TRUE(std::isinf(rep.EMAX));
}

namespace {

struct PhasePlotTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    void table(const std::vector<PScanRow>& rows) {
        std::vector<std::vector<float>> r;
        for (const PScanRow& p : rows) r.push_back({p.PHASE, p.E_MEAN, p.COMPRESS, p.BET_RAT});
        viewer::testing::open_table(s, 20, &Fexist::PScan_EXISTS, "p.PScan.001",
                                    viewer::testing::fixed_records(r));
    }
    std::vector<std::string> keys() const {
        std::vector<std::string> k;
        for (const GraphicsCall* t : rec.named("pgtext")) k.push_back(t->texts[0]);
        return k;
    }
};

}  // namespace

TEST_F(PhasePlotTest, EnergyCurvesOnTheirOwnPhasesTheOthersOnTheLastScans) {
    // Scan 2 is shifted by half a degree: only pgex201 shows it.
    std::vector<PScanRow> rows = scans(2, 100);
    for (std::size_t i = 360; i < rows.size(); ++i) rows[i].PHASE += 0.5f;
    table(rows);
    s.logo.COLOUR = true;
    pgex201(s, 500, 360);
    auto lines = rec.named("pgline");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]->xs.size(), 100u);
    EXPECT_EQ(lines[0]->xs[0], 1.0f);
    EXPECT_EQ(lines[1]->xs[0], 1.5f);
    EXPECT_EQ(rec.named("pgsci")[1]->args[0], 1);
    EXPECT_TRUE(window_is(*rec.named("pgenv")[0], 1, 360, 0, 1.2f * 2100));
    EXPECT_EQ(keys(), (std::vector<std::string>{"Scan No.01" + std::string(30, ' '),
                                                "Scan No.02" + std::string(30, ' ')}));
    EXPECT_EQ(rec.named("pgrect")[0]->args[0], 0.81f);

    struct Member {
        void (*plot)(Session&, int, int);
        float lo, hi;  // ordinate range
        const char* ylabel;
    };
    const Member members[] = {
        {pgex203, 0.8f, 2.4f, "\\gs\\dz\\u/\\gs\\dz0\\u"},
        {pgex204, 1.8f, 4.2f, "\\gs\\dz\\u\\gb\\d0\\u/\\gs\\dz0\\u\\gb"},
    };
    for (const Member& m : members) {
        rec.clear();
        m.plot(s, 500, 360);
        lines = rec.named("pgline");
        ASSERT_EQ(lines.size(), 2u);
        EXPECT_EQ(lines[0]->xs, lines[1]->xs);  // the phases of the last scan
        EXPECT_EQ(lines[0]->xs[0], 1.5f);
        EXPECT_TRUE(window_is(*rec.named("pgenv")[0], 1, 360, m.lo, m.hi));
        EXPECT_EQ(rec.named("pglab")[0]->texts[1], m.ylabel);
        EXPECT_EQ(keys().size(), 2u);
    }
}

TEST_F(PhasePlotTest, OneScanHasNoLegendAndTheFitSeesItsEnergies) {
    std::vector<PScanRow> rows;
    for (int k = 1; k <= 10; ++k) rows.push_back({float(k), 2.0f * k, 1, 1});
    table(rows);
    s.logo.FIT_REQUESTED = s.logo.TO_FILE = true;
    s.plot(201).ID_F = 3;  // a straight line
    pgex201(s, 500, 360);
    EXPECT_TRUE(keys().empty());
    EXPECT_NE(h.console().find("b  =  " + fmt_d(2.0)), std::string::npos) << h.console();
    EXPECT_EQ(rec.named("pgline").size(), 2u);  // the scan and the dashed fit

    // An empty table: the frame of the start values.
    table({});
    rec.clear();
    s.logo.FIT_REQUESTED = false;
    pgex201(s, 500, 360);
    EXPECT_TRUE(rec.named("pgline").empty());
    EXPECT_TRUE(window_is(*rec.named("pgenv")[0], 1e10f, -1e10f, 0, -8e9f));
}
