// The emittance comparisons as rows of the frame with their own ranges:
// columns, labels, keys and legend places by selection, the flags they
// require, the start values of an empty frame, the rewinds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

const struct {
    int unit;
    bool Fexist::*present;
    const char* name;
    float base;
} kTables[] = {
    {10, &Fexist::Xemit_EXISTS, "p.Xemit.001", 0},     {11, &Fexist::Yemit_EXISTS, "p.Yemit.001", 100},
    {12, &Fexist::Zemit_EXISTS, "p.Zemit.001", 200},   {24, &Fexist::Xemit2_EXISTS, "p.Xemit2.001", 300},
    {25, &Fexist::Yemit2_EXISTS, "p.Yemit2.001", 400}, {35, &Fexist::Zemit2_EXISTS, "p.Zemit2.001", 500},
    {22, &Fexist::TRemit_EXISTS, "p.TRemit.001", 600},
};

struct Comparisons : PlotTest {
    // Every table with 3 rows: z = row, a field holds base + 10 field + row
    // (or 0 throughout); `short_unit` gets one row less.
    void tables(bool zero = false, int short_unit = 0) {
        for (const auto& t : kTables) {
            std::vector<std::vector<float>> rows;
            for (int r = 1; r <= 3 - (t.unit == short_unit); ++r) {
                rows.emplace_back(1, static_cast<float>(r));
                for (int f = 1; f < 7; ++f) rows.back().push_back(zero ? 0.0f : t.base + 10.0f * f + r);
            }
            table(t.unit, t.present, t.name, rows);
        }
    }
};

}  // namespace

TEST_F(Comparisons, EachPlotDrawsItsColumnsLabelsAndKeys) {
    tables();
    const char* emit = "\\ge \\gp \\fimrad mm ";
    const std::vector<std::string> plain = {"\\fihor. emittance", "\\fiver. emittance", "\\fired. hor. emit.",
                                            "\\fired. ver. emit."};
    const std::string sum = "\\fiSum |\\fiK\\d\\fii\\u|";
    const struct {
        void (*plot)(Session&, int);
        int selection;
        const char *y, *top;
        std::vector<float> first;  // the first point of each curve
        std::vector<std::string> keys;
        float x;  // left edge of the key box
    } rows[] = {
        // clang-format off
        {pgex401, 1, emit, "Transverse emittance & reduced emittance Z", {51, 151, 331, 431}, plain, 0.76f},
        {pgex401, 2, emit, "Transverse emittance & reduced emittance Z & E", {51, 151, 361, 461}, plain, 0.76f},
        // Negative differences stand below an axis that stops at 0.
        {pgex401, 3, emit, "Emittance Difference", {-280, -280, -310, -310},
         {" \\fihor. emit. Z", " \\fiver. emit. Z", " \\fihor. emit. E", " \\fiver. emit. E"}, 0.76f},
        {pgex404, 4, emit, "Correlated Emittance Contributions", {311e6f, 321e6f, 341e6f, 351e6f, 1324e6f},
         {"|\\fiK\\ux\\d\\d2,Z\\u|", "|\\fiK\\ux\\d\\d3,Z\\u|", "|\\fiK\\ux\\d\\d2,E\\u|", "|\\fiK\\ux\\d\\d3,E\\u|", sum}, 0.80f},
        {pgex404, 5, emit, "Correlated Emittance Contributions", {411e6f, 421e6f, 441e6f, 451e6f, 1724e6f},
         {"|\\fiK\\uy\\d\\d2,Z\\u|", "|\\fiK\\uy\\d\\d3,Z\\u|", "|\\fiK\\uy\\d\\d2,E\\u|", "|\\fiK\\uy\\d\\d3,E\\u|", sum}, 0.80f},
        {pgex406, 6, "\\ge \\gp \\fikeV mm", "Long. emittance & long. emit. minus 2nd order corr.", {251, 541, 561},
         {"\\filong. emittance", "\\filong. emit. min. 2nd order", "\\filong. emit. min. 2nd & 3rd order"}, 0.56f},
        {pgex407, 7, emit, "Phase Space Emittance & Trace Space Emittance", {51, 151, 621, 631},
         {"\\fihor Ph Sp emit", "\\fiver Ph Sp emit", "\\fihor Tr Sp emit", "\\fiver Tr Sp emit"}, 0.76f},
        {pgex408, 8, "\\ge \\gp \\gm\\fim ", "Phase Space Emittance & Trace Space Emittance", {251, 641},
         {"\\filong. Ph Sp emit", "\\filong. Tr Sp emit"}, 0.73f},
        // clang-format on
    };
    for (const auto& r : rows) {
        SCOPED_TRACE(r.selection);
        draw(r.plot, r.selection);
        EXPECT_EQ(labels(), (std::vector<std::string>{"\\fiz m", r.y, r.top}));
        EXPECT_EQ(first_points(), r.first);
        float top = -1e10f;
        for (auto* line : rec.named("pgline")) {
            ASSERT_EQ(line->ys.size(), 3u);
            top = std::max(top, *std::max_element(line->ys.begin(), line->ys.end()));
        }
        EXPECT_TRUE(window_is(env(), 1, 3, 0, top + std::fabs(0.2f * top)));  // every curve, the sum too
        EXPECT_EQ(keys(), r.keys);
        EXPECT_FLOAT_EQ(key_box(), r.x);
        EXPECT_EQ(console(), "");  // no statistics block
    }
}

TEST_F(Comparisons, EmptyFramesShorterTablesAndRewinds) {
    const struct {
        const char* what;
        void (*plot)(Session&, int);
        int selection, short_unit;
        bool zero;
        bool Fexist::*missing;  // a flag turned off after the tables are written
        bool empty_zoom;
        int NP;
        float x1, x2, y1, y2;
    } cases[] = {
        // clang-format off
        {"the shorter table decides", pgex401, 1, 25, false, nullptr, false, 2, 1, 2, 0, 518.4f},
        {"the shorter partner of pgex408", pgex408, 8, 12, false, nullptr, false, 2, 1, 2, 0, 770.4f},
        {"all values 0", pgex406, 6, 0, true, nullptr, false, 3, 1, 3, -0.1f, 0.1f},
        // Start values: ZMIN 1e10, ZMAX -1e10, YMAX -1e10 + 0.2e10.
        {"a flag asked for but not read", pgex404, 4, 0, false, &Fexist::Zemit_EXISTS, false, 0, 1e10f, -1e10f, 0, -8e9f},
        {"a table read", pgex407, 7, 0, false, &Fexist::TRemit_EXISTS, false, 0, 1e10f, -1e10f, 0, -8e9f},
        {"a zoom that takes no record", pgex401, 2, 0, false, nullptr, true, 0, 1e10f, -1e10f, 0, -8e9f},
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        tables(c.zero, c.short_unit);
        if (c.missing) s.fexist.*c.missing = false;
        zoom_z(c.empty_zoom);
        draw(c.plot, c.selection);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
        ASSERT_FALSE(rec.named("pgline").empty());
        for (auto* line : rec.named("pgline")) EXPECT_EQ(line->args[0], c.NP);
        for (const auto& t : kTables) {  // every table that exists stands at its first record again
            float first[7];
            EXPECT_TRUE(!(s.fexist.*t.present) || (read_fixed(s.unit(t.unit), first) && first[0] == 1))
                << t.name;
            s.unit(t.unit).rewind();
        }
    }
}
