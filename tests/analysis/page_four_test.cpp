// The emittance comparisons, core emittances, the beam with and without a
// group of particles, and the emission at the cathode against time:
// columns, titles, keys and ranges by selection, the start values of an
// empty frame.
#include <gtest/gtest.h>

#include <cmath>

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
    // Records of Z_MEAN, CLOCK, EZ, EACC, QEMIT, GZ_MIN, GZ_MAX and the emission flag.
    void cathode(const std::vector<std::vector<float>>& rows) {
        std::string t;
        for (const auto& r : rows) t += fixed_records({r}).insert(12 * r.size(), "  T");
        open_table(s, 26, &Fexist::Cathode_EXISTS, "p.Cathode.001", t);
    }
};

}  // namespace

TEST_F(PageFour, EachSelectionDrawsItsColumnsTitleKeysAndRange) {
    tables(3);
    const struct {
        Plot plot;
        int selection;
        const char* top;
        std::vector<float> first;  // the first point of each curve, one key each
        float ymax, key_x;
    } rows[] = {
        // clang-format off
        {pgex401, 1, "Transverse emittance & reduced emittance Z", {51, 151, 331, 431}, 519.6f, 0.76f},
        {pgex401, 2, "Transverse emittance & reduced emittance Z & E", {51, 151, 361, 461}, 555.6f, 0.76f},
        // Negative differences stand below an axis that stops at 0.
        {pgex401, 3, "Emittance Difference", {-280, -280, -310, -310}, -224, 0.76f},
        // The sum raises the range too.
        {pgex404, 4, "Correlated Emittance Contributions", {311e6f, 321e6f, 341e6f, 351e6f, 1324e6f}, 1598.4e6f, 0.80f},
        {pgex404, 5, "Correlated Emittance Contributions", {411e6f, 421e6f, 441e6f, 451e6f, 1724e6f}, 2078.4e6f, 0.80f},
        {pgex406, 6, "Long. emittance & long. emit. minus 2nd order corr.", {251, 541, 561}, 675.6f, 0.56f},
        {pgex407, 7, "Phase Space Emittance & Trace Space Emittance", {51, 151, 621, 631}, 759.6f, 0.76f},
        {pgex408, 8, "Phase Space Emittance & Trace Space Emittance", {251, 641}, 771.6f, 0.73f},
        // The full beam alone sets the range; its cores run off the top.
        {pgex409, 9, "Horizontal core Emittance", {711, 721, 731, 741}, 855.6f, 0.83f},
        {pgex409, 10, "Vertical core Emittance", {751, 761, 771, 781}, 903.6f, 0.83f},
        {pgex409, 11, "Longitudinal core Emittance", {791, 801, 811, 821}, 951.6f, 0.83f},
        // clang-format on
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.selection);
        draw(r.plot, r.selection);
        EXPECT_EQ(labels()[2], r.top);
        EXPECT_EQ(first_points(), r.first);
        EXPECT_TRUE(window_is(env(), 1, 3, 0, r.ymax));
        EXPECT_EQ(keys().size(), r.first.size());
        EXPECT_FLOAT_EQ(key_box(), r.key_x);
        EXPECT_EQ(console(), "");  // no statistics block
    }
    s.fexist.C99emit_EXISTS = true;  // the same unit, the outer fractions
    draw(pgex409, 9);
    EXPECT_EQ(keys()[1], " \\fi 99.99%");
}

TEST_F(PageFour, ShortTablesMissingFlagsAndEmptyZooms) {
    const struct {
        const char* what;
        Plot plot;
        int selection, rows, short_unit;
        bool Fexist::*missing;  // a flag turned off after the tables are written
        bool empty_zoom;
        float x1, x2, y1, y2;
    } cases[] = {
        // clang-format off
        {"the shorter table decides", pgex401, 1, 3, 25, nullptr, false, 1, 2, 0, 518.4f},
        {"one record: the abscissa mended", pgex409, 9, 1, 0, nullptr, false, 0.9f, 1.1f, 0, 853.2f},
        // Start values: ZMIN 1e10, ZMAX -1e10, YMAX -1e10 + 0.2e10.
        {"a flag asked for but not read", pgex404, 4, 3, 0, &Fexist::Zemit_EXISTS, false, 1e10f, -1e10f, 0, -8e9f},
        {"a table read", pgex407, 7, 3, 0, &Fexist::TRemit_EXISTS, false, 1e10f, -1e10f, 0, -8e9f},
        {"a zoom that takes no record", pgex401, 2, 3, 0, nullptr, true, 1e10f, -1e10f, 0, -8e9f},
        {"no core record, whatever the call before", pgex409, 9, 3, 0, nullptr, true, 1e10f, -1e10f, -0.1f, 0.1f},
        {"no group table", pgex411, 12, 3, 0, nullptr, false, 1e10f, -1e10f, 0, -8e9f},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        tables(c.rows, c.short_unit);
        if (c.missing) s.fexist.*c.missing = false;
        zoom_z(c.empty_zoom);
        draw(c.plot, c.selection);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
    }
}

TEST_F(PageFour, WithAndWithoutAGroupOfParticles) {
    const struct {
        bool sub;
        int selection;
        const char* top;
        std::vector<float> first;
        float ymax;
    } rows[] = {
        // clang-format off
        {false, 12, "Emittance with and without cross over particles", {2, 2.5f, 5, 5.5f}, 7.8f},
        // The full beam is drawn but left out of the range.
        {false, 13, "beam size without cross over particles", {1, 1.5f, 3, 3.5f}, 1.8f},
        // 100 SUMQ_CR / (SUMQ + SUMQ_CR); the second pass divides 0 by 0 and leaves the range alone.
        {false, 14, "Charge of cross over particles", {25}, 30},
        {true, 12, "Sub-ensemble emittance", {2, 2.5f, 5, 5.5f}, 7.8f},
        {true, 14, "Charge of sub-ensemble", {75}, 90},
        // clang-format on
    };
    table(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", {{1, 0, 0, 3, 0, 5, 0}, {2, 0, 0, 4, 0, 6, 0}});
    table(11, &Fexist::Yemit_EXISTS, "p.Yemit.001",
          {{1, 0, 0, 3.5f, 0, 5.5f, 0}, {2, 0, 0, 4.5f, 0, 6.5f, 0}});
    for (const auto& r : rows) {
        SCOPED_TRACE(r.top);
        s.fexist.Cr_emit_EXISTS = s.fexist.Sub_emit_EXISTS = false;  // unit 19 holds one of them
        table(19, r.sub ? &Fexist::Sub_emit_EXISTS : &Fexist::Cr_emit_EXISTS, "p.Cr_emit.001",
              {{1, 0, 1, 1.5f, 2, 2.5f, 3, 1}, {2, 0, 1.2f, 1.4f, 2.2f, 2.4f, 0, 0}});
        draw(pgex411, r.selection);
        EXPECT_EQ(labels()[2], r.top);
        EXPECT_EQ(first_points(), r.first);
        EXPECT_TRUE(window_is(env(), 1, 2, 0, r.ymax));
        // The statistics of the reduced beam; none of the charge.
        const std::string reduced =
            stats(kBlack, 2, 2.2f, 2, 1, 2.2f, 2, 2.1f) + stats(kRed, 2.5f, 2.4f, 2.4f, 2, 2.5f, 1, 2.45f);
        EXPECT_EQ(console(), r.selection == 14 ? "" : r.selection == 12 ? reduced : console());
        EXPECT_TRUE(r.selection != 14 || std::isnan(first("pgline").ys.at(1)));
    }
}

TEST_F(PageFour, CathodePlotsTheirCurvesColoursKeyAndStatistics) {
    cathode({{1e-3f, 0.1f, 100, 1e6f, 0.5f, -2e-4f, 3e-4f}, {2e-3f, 0.2f, 300, 2e6f, 1.0f, -1e-4f, 4e-4f}});
    const struct {
        void (*plot)(Session&);
        const char* top;
        std::vector<std::vector<float>> curves;
        float y1, y2;  // from the first curve alone
    } rows[] = {
        // clang-format off
        // -EACC runs far below the frame.
        {pgex414, "Space Charge field at the Cathode", {{100, 300}, {-1e6f, -2e6f}}, 80, 360},
        {pgex415, "Charge emission vs. time", {{0.5f, 1.0f}}, 0.4f, 1.2f},
        {pgex416, "Bunch position vs.time", {{1e-3f, 2e-3f}, {0.8e-3f, 1.9e-3f}, {1.3e-3f, 2.4e-3f}}, 0.8e-3f, 2.4e-3f},
        // clang-format on
    };
    for (bool colour : {true, false}) {
        s.logo.COLOUR = colour;
        for (const auto& r : rows) {
            SCOPED_TRACE(r.top);
            draw(r.plot);
            EXPECT_EQ(labels()[2], r.top);
            EXPECT_TRUE(window_is(env(), 0.1f, 0.2f, r.y1, r.y2));
            std::vector<std::vector<float>> ys;
            std::vector<std::string> colours, want = {"pgsci1", "pgsci2", "pgsci3"};  // whatever the device
            const auto t = trace(rec);
            for (std::size_t i = 1; i < t.size(); ++i)
                if (t[i][2] == 'l' && t[i][3] == 'i') colours.push_back(t[i - 1]);  // before each pgline
            for (auto* l : rec.named("pgline")) ys.push_back(l->ys);
            for (std::size_t i = 0; i < ys.size(); ++i) EXPECT_EQ(colours.at(i), want[i]);
            ASSERT_EQ(ys.size(), r.curves.size());
            for (std::size_t i = 0; i < ys.size(); ++i)
                for (std::size_t k = 0; k < 2; ++k) EXPECT_FLOAT_EQ(ys[i][k], r.curves[i][k]);
        }
        // The key of the bunch position stands top left.
        EXPECT_FLOAT_EQ(key_box(), 0.0175f);
        EXPECT_EQ(keys(), (std::vector<std::string>{" head", " average", " tail"}));
    }
    // The statistics of the first curve, also under a fit.
    s.logo.FIT_REQUESTED = s.logo.TO_FILE = true;
    s.plot(415).ID_F = 3;  // a straight line, the pick of the last fit
    draw(pgex415);
    EXPECT_EQ(console().rfind(stats(kOneCurve, 0.5f, 1, 0.5f, 0.1f, 1, 0.2f, 0.75f), 0), 0u);
}

TEST_F(PageFour, CathodeCountsItsOwnRecordsZoomsInTimeAndDrawsEmptyFrames) {
    const std::vector<float> r1 = {0, 0.1f, 1, 0, 0.5f, 0, 0}, r2 = {0, 0.2f, 1, 0, 1.0f, 0, 0},
                             r3 = {0, 0.15f, 1, 0, 0.75f, 0, 0};
    const struct {
        const char* what;
        std::vector<std::vector<float>> rows;
        bool present, zoom;
        int NP;
        float x1, x2, y1, y2;
    } cases[] = {
        // clang-format off
        // The load's count of the table is not used: three records, three points; time not monotonic.
        {"all records", {r1, r2, r3}, true, false, 3, 0.1f, 0.2f, 0.4f, 1.2f},
        {"the window bounds are kept", {r1, r2, r3}, true, true, 2, 0.15f, 0.2f, 0.6f, 1.2f},
        {"one record: the ranges collapse and are mended", {r1}, true, false, 1, 0.09f, 0.11f, 0.4f, 0.6f},
        // The abscissa stays as the call before left it.
        {"a zoom that takes no record", {r1, r2}, true, true, 0, 0.09f, 0.11f, -0.1f, 0.1f},
        {"an empty table", {}, true, false, 0, 0.09f, 0.11f, -0.1f, 0.1f},
        {"no table: an empty frame around 0", {r1}, false, false, 0, -0.1f, 0.1f, -0.1f, 0.1f},
        // clang-format on
    };
    s.C_PKT = 1;
    s.graph.TIME_LOWER = 0.15f;
    s.graph.TIME_UPPER = 0.2f;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        cathode(c.rows);
        s.fexist.Cathode_EXISTS = c.present;
        s.logo.ZOOM_TIME = c.zoom;
        if (c.NP == 0) s.graph.TIME_LOWER = 5;
        draw(pgex415);
        EXPECT_EQ(s.plot(415).NP, c.NP);
        EXPECT_EQ(rec.named("pgline").size(), c.present ? 1u : 0u);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
        EXPECT_EQ(console().empty(), c.NP == 0);
    }
}
