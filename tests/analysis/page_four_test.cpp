// The emittance comparisons, core emittances, the beam with and without a
// group of particles, and the emission at the cathode against time:
// columns, titles, keys and ranges by selection, the start values of an
// empty frame.
#include <gtest/gtest.h>

#include "core/run_catalogue.hpp"
#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

struct PageFour : PlotTest {
    // The tables below with `n` rows: z = row, field f of table t holds
    // 100 t + 10 f + row, so every core lies above its full beam; the table
    // of `short_unit` gets one row less.
    void tables(int n, int short_unit = 0) {
        const Kind kinds[] = {Kind::Xemit,  Kind::Yemit,  Kind::Zemit,  Kind::Xemit2,
                              Kind::Yemit2, Kind::Zemit2, Kind::TRemit, Kind::Cemit};
        for (int t = 0; t < 8; ++t) {
            const RunKind& k = run_kind(kinds[t]);
            std::vector<std::vector<float>> rows;
            for (int r = 1; r <= n - (k.unit == short_unit); ++r) {
                rows.emplace_back(1, static_cast<float>(r));
                for (int f = 1; f < (t == 7 ? 13 : 7); ++f) rows.back().push_back(100.0f * t + 10.0f * f + r);
            }
            table(k.unit, k.exists, std::string("p") + k.suffix, rows);
        }
    }
};

}  // namespace

TEST_F(PageFour, EachSelectionItsColumnsKeysAndRangeAndTheEmptyFrames) {
    const struct {
        Plot plot;
        int selection, rows = 3, short_unit = 0;
        const char* summary;
        bool Fexist::*missing = nullptr;  // a flag turned off after the tables are written
        bool empty_zoom = false;
    } rows[] = {
        // clang-format off
        {pgex401, 1, 3, 0, "[1 3 0 519.6] 51 151 331 431 keys 4 at 0.76 | Transverse emittance & reduced emittance Z"},
        {pgex401, 2, 3, 0, "[1 3 0 555.6] 51 151 361 461 keys 4 at 0.76 | Transverse emittance & reduced emittance Z & E"},
        // Negative differences stand below an axis that stops at 0.
        {pgex401, 3, 3, 0, "[1 3 0 -224] -280 -280 -310 -310 keys 4 at 0.76 | Emittance Difference"},
        // The sum raises the range too.
        {pgex404, 4, 3, 0, "[1 3 0 1.5984e+09] 3.11e+08 3.21e+08 3.41e+08 3.51e+08 1.324e+09 keys 5 at 0.8 | Correlated Emittance Contributions"},
        {pgex404, 5, 3, 0, "[1 3 0 2.0784e+09] 4.11e+08 4.21e+08 4.41e+08 4.51e+08 1.724e+09 keys 5 at 0.8 | Correlated Emittance Contributions"},
        {pgex406, 6, 3, 0, "[1 3 0 675.6] 251 541 561 keys 3 at 0.56 | Long. emittance & long. emit. minus 2nd order corr."},
        {pgex407, 7, 3, 0, "[1 3 0 759.6] 51 151 621 631 keys 4 at 0.76 | Phase Space Emittance & Trace Space Emittance"},
        {pgex408, 8, 3, 0, "[1 3 0 771.6] 251 641 keys 2 at 0.73 | Phase Space Emittance & Trace Space Emittance"},
        // The full beam alone sets the range; its cores run off the top.
        {pgex409, 9, 3, 0, "[1 3 0 855.6] 711 721 731 741 keys 4 at 0.83 | Horizontal core Emittance"},
        {pgex409, 10, 3, 0, "[1 3 0 903.6] 751 761 771 781 keys 4 at 0.83 | Vertical core Emittance"},
        {pgex409, 11, 3, 0, "[1 3 0 951.6] 791 801 811 821 keys 4 at 0.83 | Longitudinal core Emittance"},
        // The shorter table decides; one record mends the abscissa.
        {pgex401, 1, 3, 25, "[1 2 0 518.4] 51 151 331 431 keys 4 at 0.76 | Transverse emittance & reduced emittance Z"},
        {pgex409, 9, 1, 0, "[0.9 1.1 0 853.2] 711 721 731 741 keys 4 at 0.83 | Horizontal core Emittance"},
        // No record: the start values ZMIN 1e10, ZMAX -1e10, YMAX -1e10 + 0.2e10, for a flag asked
        // for but not read, a table read, a zoom that takes none; the cores, whatever the call before.
        {pgex404, 4, 3, 0, "[1e+10 -1e+10 0 -8e+09] nan nan nan nan nan keys 5 at 0.8 | Correlated Emittance Contributions", &Fexist::Zemit_EXISTS},
        {pgex407, 7, 3, 0, "[1e+10 -1e+10 0 -8e+09] nan nan nan nan keys 4 at 0.76 | Phase Space Emittance & Trace Space Emittance", &Fexist::TRemit_EXISTS},
        {pgex401, 2, 3, 0, "[1e+10 -1e+10 0 -8e+09] nan nan nan nan keys 4 at 0.76 | Transverse emittance & reduced emittance Z & E", nullptr, true},
        {pgex409, 9, 3, 0, "[1e+10 -1e+10 -0.1 0.1] nan nan nan nan keys 4 at 0.83 | Horizontal core Emittance", nullptr, true},
        // clang-format on
    };
    for (const auto& r : rows) {
        tables(r.rows, r.short_unit);
        if (r.missing) s.fexist.*r.missing = false;
        zoom_z(r.empty_zoom);
        draw(r.plot, r.selection);
        EXPECT_EQ(summary(), r.summary);
        EXPECT_EQ(console(), "");  // no statistics block
    }
    s.fexist.C99emit_EXISTS = true;  // the same unit, the outer fractions
    draw(pgex409, 9);
    EXPECT_EQ(keys()[1], " \\fi 99.99%");
}

TEST_F(PageFour, WithAndWithoutAGroupOfParticles) {
    table(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", {{1, 0, 0, 3, 0, 5, 0}, {2, 0, 0, 4, 0, 6, 0}});
    table(11, &Fexist::Yemit_EXISTS, "p.Yemit.001",
          {{1, 0, 0, 3.5f, 0, 5.5f, 0}, {2, 0, 0, 4.5f, 0, 6.5f, 0}});
    const struct {
        bool Fexist::*kind;  // of unit 19
        int selection;
        const char* summary;
    } rows[] = {
        // clang-format off
        {&Fexist::Cr_emit_EXISTS, 12, "[1 2 0 7.8] 2 2.5 5 5.5 | Emittance with and without cross over particles"},
        // The full beam is drawn but left out of the range.
        {&Fexist::Cr_emit_EXISTS, 13, "[1 2 0 1.8] 1 1.5 3 3.5 | beam size without cross over particles"},
        // 100 SUMQ_CR / (SUMQ + SUMQ_CR); the second pass divides 0 by 0 and leaves the range alone.
        {&Fexist::Cr_emit_EXISTS, 14, "[1 2 0 30] 25 | Charge of cross over particles"},
        {&Fexist::Sub_emit_EXISTS, 12, "[1 2 0 7.8] 2 2.5 5 5.5 | Sub-ensemble emittance"},
        {&Fexist::Sub_emit_EXISTS, 14, "[1 2 0 90] 75 | Charge of sub-ensemble"},
        {nullptr, 12, "[1e+10 -1e+10 0 -8e+09] nan nan nan nan | Sub-ensemble emittance"},  // no table
        // clang-format on
    };
    for (const auto& r : rows) {
        s.fexist.Cr_emit_EXISTS = s.fexist.Sub_emit_EXISTS = false;  // unit 19 holds one of them
        if (r.kind)
            table(19, r.kind, "p.Cr_emit.001",
                  {{1, 0, 1, 1.5f, 2, 2.5f, 3, 1}, {2, 0, 1.2f, 1.4f, 2.2f, 2.4f, 0, 0}});
        draw(pgex411, r.selection);
        EXPECT_EQ(summary(), r.summary);
        // The statistics of the reduced beam; none of the charge.
        const std::string reduced =
            stats(kBlack, 2, 2.2f, 2, 1, 2.2f, 2, 2.1f) + stats(kRed, 2.5f, 2.4f, 2.4f, 2, 2.5f, 1, 2.45f);
        EXPECT_EQ(console(), !r.kind || r.selection == 14 ? "" : r.selection == 12 ? reduced : console());
        EXPECT_TRUE(r.selection != 14 || std::isnan(first("pgline").ys.at(1)));
    }
}

TEST_F(PageFour, CathodeCurvesInColoursOneTwoThreeTheirKeyRangesAndStatistics) {
    const std::vector<float> r1 = {1e-3f, 0.1f, 100, 1e6f, 0.5f, -2e-4f, 3e-4f},
                             r2 = {2e-3f, 0.2f, 300, 2e6f, 1.0f, -1e-4f, 4e-4f},
                             r3 = {0, 0.15f, 1, 0, 0.75f, 0, 0};
    const struct {
        void (*plot)(Session&);
        std::vector<std::vector<float>> records;
        bool present, zoom;
        const char* summary;
    } rows[] = {
        // clang-format off
        // The load's count of the table (1) is not used; -EACC runs far below the frame.
        {pgex414, {r1, r2}, true, false, "[0.1 0.2 80 360] 100 -1e+06 | Space Charge field at the Cathode"},
        {pgex415, {r1, r2}, true, false, "[0.1 0.2 0.4 1.2] 0.5 | Charge emission vs. time"},
        // The key: head is curve 3, tail curve 2.
        {pgex416, {r1, r2}, true, false, "[0.1 0.2 0.0008 0.0024] 0.001 0.0008 0.0013 keys 3 at 0.0175 | Bunch position vs.time"},
        // Time not monotonic; the window bounds are kept.
        {pgex415, {r1, r2, r3}, true, true, "[0.15 0.2 0.6 1.2] 1 | Charge emission vs. time"},
        {pgex415, {r1}, true, false, "[0.09 0.11 0.4 0.6] 0.5 | Charge emission vs. time"},  // ranges mended
        // A zoom that takes no record keeps the abscissa of the call before, as an empty table does.
        {pgex415, {r1, r2}, true, true, "[0.09 0.11 -0.1 0.1] nan | Charge emission vs. time"},
        {pgex415, {}, true, false, "[0.09 0.11 -0.1 0.1] nan | Charge emission vs. time"},
        {pgex416, {r1}, false, false, "[-0.1 0.1 -0.1 0.1] | Bunch position vs.time"},  // no table: nothing drawn
        // clang-format on
    };
    // Records of Z_MEAN, CLOCK, EZ, EACC, QEMIT, GZ_MIN, GZ_MAX and the emission flag.
    auto cathode = [&](const std::vector<std::vector<float>>& records, bool present = true) {
        std::string t;
        for (const auto& v : records) t += fixed_records({v}).insert(12 * v.size(), "  T");
        open_table(s, 26, &Fexist::Cathode_EXISTS, "p.Cathode.001", t);
        s.fexist.Cathode_EXISTS = present;
    };
    s.C_PKT = 1;
    s.graph.TIME_UPPER = 0.2f;
    for (bool colour : {true, false}) {
        s.logo.COLOUR = colour;
        for (const auto& r : rows) {
            cathode(r.records, r.present);
            s.logo.ZOOM_TIME = r.zoom;
            s.graph.TIME_LOWER = r.zoom && r.records.size() == 2 ? 5 : 0.15f;
            draw(r.plot);
            EXPECT_EQ(summary(), r.summary);
            std::vector<std::string> before_lines, want = {"pgsci1", "pgsci2", "pgsci3"};  // on any device
            const auto calls = trace(rec);
            for (std::size_t i = 1; i < calls.size(); ++i)
                if (calls[i].rfind("pgline", 0) == 0) before_lines.push_back(calls[i - 1]);
            want.resize(before_lines.size());
            EXPECT_EQ(before_lines, want);
        }
    }
    // The statistics of the first curve, also under a fit.
    cathode({r1, r2});
    s.logo.ZOOM_TIME = false;
    s.logo.FIT_REQUESTED = s.logo.TO_FILE = true;
    s.plot(415).ID_F = 3;  // a straight line, the pick of the last fit
    draw(pgex415);
    EXPECT_EQ(console().rfind(stats(kOneCurve, 0.5f, 1, 0.5f, 0.1f, 1, 0.2f, 0.75f), 0), 0u);
}
