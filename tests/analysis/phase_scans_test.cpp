// The phase scans: the counting of scan blocks on its own, then the four
// plots as recorded (abscissas, ranges, keys, the fit of the first scan).
#include "analysis/phase_scans.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

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
    const struct {
        const char* name;
        std::vector<PScanRow> rows;
        PhaseZoom zoom;
        int NSCAN;
        int J, NP;
        float first, last;  // DAT of scan 1 point 1 and of scan J point NP
    } cases[] = {
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
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const ScanTable t = count_scans(c.rows, ScanOrdinate::energy, c.zoom, c.NSCAN);
        EXPECT_EQ(t.J, c.J);
        EXPECT_EQ(t.NP, c.NP);
        if (c.J == 0) continue;
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

using PhasePlots = PlotTest;

TEST_F(PhasePlots, EnergyOnEachScansPhasesTheOthersOnTheLastScansKeysAndFit) {
    // Scan 2, cut after 100 records, stands half a degree later: only pgex201 shows it.
    std::vector<std::vector<float>> rows;
    for (const PScanRow& p : scans(2, 100))
        rows.push_back({p.PHASE + (p.COMPRESS > 1) * 0.5f, p.E_MEAN, p.COMPRESS, 2});
    table(20, &Fexist::PScan_EXISTS, "p.PScan.001", rows);
    s.logo.FIT_REQUESTED = s.logo.TO_FILE = true;
    s.plot(201).ID_F = 3;  // a straight line: the first scan's energies over the last scan's phases
    pgex201(s, 500, 360);
    EXPECT_NE(console().find("b  =  " + fmt_d(1.0)), std::string::npos) << console();
    EXPECT_NE(console().find("a  =  " + fmt_d(999.5)), std::string::npos);
    s.logo.FIT_REQUESTED = false;
    const struct {
        void (*plot)(Session&, int, int);
        float lo, hi;  // ordinate range
    } members[] = {{pgex201, 0, 1.2f * 2100}, {pgex203, 0.8f, 2.4f}, {pgex204, 1.8f, 4.2f}};
    for (const auto& m : members) {
        clear();
        m.plot(s, 500, 360);
        const auto lines = rec.named("pgline");
        ASSERT_GE(lines.size(), 2u);
        EXPECT_EQ(lines[0]->xs.size(), 100u);
        EXPECT_EQ(lines[0]->xs[0], m.plot == pgex201 ? 1.0f : 1.5f);
        EXPECT_EQ(lines[1]->xs[0], 1.5f);
        EXPECT_TRUE(window_is(env(), 1, 360, m.lo, m.hi));
        const auto text = rec.named("pgtext");
        ASSERT_EQ(text.size(), 2u);
        EXPECT_EQ(text[1]->texts[0], "Scan No.02" + std::string(30, ' '));
        EXPECT_EQ(key_box(), 0.81f);
    }
    // One scan has no key; an empty table opens the frame on the start values.
    table(20, &Fexist::PScan_EXISTS, "q.PScan.001", {{1, 1, 1, 1}});
    clear();
    pgex202(s, 500, 360);
    EXPECT_TRUE(rec.named("pgtext").empty());
    open_table(s, 20, &Fexist::PScan_EXISTS, "r.PScan.001", "");
    clear();
    pgex201(s, 500, 360);
    EXPECT_TRUE(rec.named("pgline").empty());
    EXPECT_TRUE(window_is(env(), 1e10f, -1e10f, 0, -8e9f));
}
