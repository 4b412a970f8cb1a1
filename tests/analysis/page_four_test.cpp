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
    // Records of Z_MEAN, CLOCK, EZ, EACC, QEMIT, GZ_MIN, GZ_MAX and the emission flag.
    void cathode(const std::vector<std::vector<float>>& records) {
        std::string t;
        for (const auto& v : records) t += fixed_records({v}).insert(12 * v.size(), "  T");
        open_table(s, 26, &Fexist::Cathode_EXISTS, "p.Cathode.001", t);
    }
};

}  // namespace

TEST_F(PageFour, EachSelectionItsColumnsKeysAndRangeAndTheEmptyFrames) {
    tables(3);
    // clang-format off
    check({
        {pgex401, 1, "[1 3 0 519.6] 51 151 331 431 keys 4 at 0.76 | Transverse emittance & reduced emittance Z"},
        {pgex401, 2, "[1 3 0 555.6] 51 151 361 461 keys 4 at 0.76 | Transverse emittance & reduced emittance Z & E"},
        // Negative differences stand below an axis that stops at 0.
        {pgex401, 3, "[1 3 0 -224] -280 -280 -310 -310 keys 4 at 0.76 | Emittance Difference"},
        // The sum raises the range too.
        {pgex404, 4, "[1 3 0 1.5984e+09] 3.11e+08 3.21e+08 3.41e+08 3.51e+08 1.324e+09 keys 5 at 0.8 | Correlated Emittance Contributions"},
        {pgex404, 5, "[1 3 0 2.0784e+09] 4.11e+08 4.21e+08 4.41e+08 4.51e+08 1.724e+09 keys 5 at 0.8 | Correlated Emittance Contributions"},
        {pgex406, 6, "[1 3 0 675.6] 251 541 561 keys 3 at 0.56 | Long. emittance & long. emit. minus 2nd order corr."},
        {pgex407, 7, "[1 3 0 759.6] 51 151 621 631 keys 4 at 0.76 | Phase Space Emittance & Trace Space Emittance"},
        {pgex408, 8, "[1 3 0 771.6] 251 641 keys 2 at 0.73 | Phase Space Emittance & Trace Space Emittance"},
        // The full beam alone sets the range; its cores run off the top.
        {pgex409, 9, "[1 3 0 855.6] 711 721 731 741 keys 4 at 0.83 | Horizontal core Emittance"},
        {pgex409, 10, "[1 3 0 903.6] 751 761 771 781 keys 4 at 0.83 | Vertical core Emittance"},
        {pgex409, 11, "[1 3 0 951.6] 791 801 811 821 keys 4 at 0.83 | Longitudinal core Emittance"},
        // A zoom that takes no record: the start values ZMIN 1e10, ZMAX -1e10, YMAX -1e10 + 0.2e10;
        // the cores whatever the call before.
        {pgex401, 2, "[1e+10 -1e+10 0 -8e+09] nan nan nan nan keys 4 at 0.76 | Transverse emittance & reduced emittance Z & E", "", 10, 20},
        {pgex409, 9, "[1e+10 -1e+10 -0.1 0.1] nan nan nan nan keys 4 at 0.83 | Horizontal core Emittance", "", 10, 20},
    });
    s.fexist.Zemit_EXISTS = false;  // asked for but not read
    check({{pgex404, 4, "[1e+10 -1e+10 0 -8e+09] nan nan nan nan nan keys 5 at 0.8 | Correlated Emittance Contributions"}});
    tables(3, 25);  // the shorter table decides
    check({{pgex401, 1, "[1 2 0 518.4] 51 151 331 431 keys 4 at 0.76 | Transverse emittance & reduced emittance Z"}});
    tables(1);  // the abscissa mended
    check({{pgex409, 9, "[0.9 1.1 0 853.2] 711 721 731 741 keys 4 at 0.83 | Horizontal core Emittance"}});
    // clang-format on
}

TEST_F(PageFour, WithAndWithoutAGroupOfParticles) {
    // clang-format off
    table(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", {{1, 0, 0, 3, 0, 5, 0}, {2, 0, 0, 4, 0, 6, 0}});
    table(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", {{1, 0, 0, 3.5f, 0, 5.5f, 0}, {2, 0, 0, 4.5f, 0, 6.5f, 0}});
    const std::vector<std::vector<float>> group = {{1, 0, 1, 1.5f, 2, 2.5f, 3, 1}, {2, 0, 1.2f, 1.4f, 2.2f, 2.4f, 0, 0}};
    table(19, &Fexist::Cr_emit_EXISTS, "p.Cr_emit.001", group);
    check({
        // The statistics of the reduced beam.
        {pgex411, 12, "[1 2 0 7.8] 2 2.5 5 5.5 | Emittance with and without cross over particles", stats(kBlack, 2, 2.2f, 2, 1, 2.2f, 2, 2.1f) + stats(kRed, 2.5f, 2.4f, 2.4f, 2, 2.5f, 1, 2.45f)},
        // The full beam is drawn but left out of the range.
        {pgex411, 13, "[1 2 0 1.8] 1 1.5 3 3.5 | beam size without cross over particles", stats(kBlack, 1, 1.2f, 1, 1, 1.2f, 2, 1.1f) + stats(kRed, 1.5f, 1.4f, 1.4f, 2, 1.5f, 1, 1.45f)},
        // 100 SUMQ_CR / (SUMQ + SUMQ_CR); the second pass divides 0 by 0 and leaves the range alone.
        {pgex411, 14, "[1 2 0 30] 25 | Charge of cross over particles"}});
    s.fexist.Cr_emit_EXISTS = false;  // unit 19 holds one or the other
    table(19, &Fexist::Sub_emit_EXISTS, "p.Sub_emit.001", group);
    check({{pgex411, 14, "[1 2 0 90] 75 | Charge of sub-ensemble"}});
    s.fexist.Sub_emit_EXISTS = false;  // without its table nothing is read
    check({{pgex411, 12, "[1e+10 -1e+10 0 -8e+09] nan nan nan nan | Sub-ensemble emittance"}});
    // clang-format on
}

TEST_F(PageFour, CathodeCurvesTheirKeyRangesAndStatistics) {
    const Plot cathode_plots[] = {+[](Session& p, int) { pgex414(p); }, +[](Session& p, int) { pgex415(p); },
                                  +[](Session& p, int) { pgex416(p); }};
    s.C_PKT = 1;  // the load's count of the table is not used
    s.logo.COLOUR = false;
    s.graph.TIME_LOWER = 0.15f;
    s.graph.TIME_UPPER = 0.2f;
    // clang-format off
    const std::vector<float> r1 = {1e-3f, 0.1f, 100, 1e6f, 0.5f, -2e-4f, 3e-4f}, r2 = {2e-3f, 0.2f, 300, 2e6f, 1.0f, -1e-4f, 4e-4f}, r3 = {0, 0.15f, 1, 0, 0.75f, 0, 0};
    cathode({r1, r2});
    check({
        // -EACC runs far below the frame.
        {cathode_plots[0], 0, "[0.1 0.2 80 360] 100 -1e+06 | Space Charge field at the Cathode", stats(kOneCurve, 100, 300, 100, 0.1f, 300, 0.2f, 200)},
        {cathode_plots[1], 0, "[0.1 0.2 0.4 1.2] 0.5 | Charge emission vs. time", stats(kOneCurve, 0.5f, 1, 0.5f, 0.1f, 1, 0.2f, 0.75f)},
        // The key: head is curve 3, tail curve 2.
        {cathode_plots[2], 0, "[0.1 0.2 0.0008 0.0024] 0.001 0.0008 0.0013 keys 3 at 0.0175 | Bunch position vs.time", stats(kOneCurve, 1e-3f, 2e-3f, 1e-3f, 0.1f, 2e-3f, 0.2f, 1.5e-3f)}});
    std::string colours;  // 1, 2, 3 on any device
    const auto t = trace(rec);
    for (std::size_t i = 1; i < t.size(); ++i) colours += t[i].rfind("pgline", 0) ? "" : t[i - 1];
    EXPECT_EQ(colours, "pgsci1pgsci2pgsci3");
    cathode({r1, r2, r3});  // time not monotonic; the window bounds are kept
    s.logo.ZOOM_TIME = true;
    check({{cathode_plots[1], 0, "[0.15 0.2 0.6 1.2] 1 | Charge emission vs. time", stats(kOneCurve, 1, 0.75f, 0.75f, 0.15f, 1, 0.2f, 0.875f)}});
    s.fexist.Cathode_EXISTS = false;  // no table: nothing drawn
    check({{cathode_plots[2], 0, "[-0.1 0.1 -0.1 0.1] | Bunch position vs.time"}});
    // clang-format on
}
