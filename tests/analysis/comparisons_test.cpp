// The emittance comparisons as rows of the frame with their own ranges:
// columns, labels, keys and legend places by selection, the flags they
// require, the start values of an empty frame, the rewinds. And every row
// of pages four and five on the bundled run and the real runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "core/run_catalogue.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::window_is;

namespace {

struct Table {
    int unit;
    bool Fexist::*present;
    const char* name;
    float base;
};
const Table kTables[] = {
    {10, &Fexist::Xemit_EXISTS, "p.Xemit.001", 0},     {11, &Fexist::Yemit_EXISTS, "p.Yemit.001", 100},
    {12, &Fexist::Zemit_EXISTS, "p.Zemit.001", 200},   {24, &Fexist::Xemit2_EXISTS, "p.Xemit2.001", 300},
    {25, &Fexist::Yemit2_EXISTS, "p.Yemit2.001", 400}, {35, &Fexist::Zemit2_EXISTS, "p.Zemit2.001", 500},
    {22, &Fexist::TRemit_EXISTS, "p.TRemit.001", 600},
};

struct ComparisonsTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();

    // Every table with `n` rows: z = row, a field holds base + 10 field + row
    // (or 0 throughout); `short_unit` gets one row less.
    void tables(int n = 3, bool zero = false, int short_unit = 0) {
        for (const Table& t : kTables) {
            std::vector<std::vector<float>> rows;
            for (int r = 1; r <= n - (t.unit == short_unit); ++r) {
                rows.emplace_back(1, static_cast<float>(r));
                for (int f = 1; f < 7; ++f) rows.back().push_back(zero ? 0.0f : t.base + 10.0f * f + r);
            }
            viewer::testing::open_table(s, t.unit, t.present, t.name, viewer::testing::fixed_records(rows));
        }
    }
    void draw(void (*plot)(Session&, int), int selection) {
        h.g.clear();
        h.out.str("");
        s.window.SELECTION = selection;
        plot(s, PKT);
    }
    const GraphicsCall& env() const { return *h.g.named("pgenv").at(0); }
};

}  // namespace

TEST_F(ComparisonsTest, EachPlotDrawsItsColumnsLabelsAndKeys) {
    tables();
    struct Row {
        void (*plot)(Session&, int);
        int selection;
        const char* y;
        const char* top;
        std::vector<float> first;  // the first point of each curve
        std::vector<std::string> keys;
        float x;  // left edge of the key box
    };
    const char* emit = "\\ge \\gp \\fimrad mm ";
    const std::vector<std::string> plain = {"\\fihor. emittance", "\\fiver. emittance", "\\fired. hor. emit.",
                                            "\\fired. ver. emit."};
    const std::string sum = "\\fiSum |\\fiK\\d\\fii\\u|";
    // clang-format off
    const Row rows[] = {
        {pgex401, 1, emit, "Transverse emittance & reduced emittance Z", {51, 151, 331, 431}, plain, 0.76f},
        {pgex401, 2, emit, "Transverse emittance & reduced emittance Z & E", {51, 151, 361, 461}, plain, 0.76f},
        // Negative differences stand below an axis that stops at 0.
        {pgex401, 3, emit, "Emittance Difference", {-280, -280, -310, -310},
         {" \\fihor. emit. Z", " \\fiver. emit. Z", " \\fihor. emit. E", " \\fiver. emit. E"}, 0.76f},
        {pgex404, 4, emit, "Correlated Emittance Contributions", {311e6f, 321e6f, 341e6f, 351e6f, 1324e6f},
         {"|\\fiK\\ux\\d\\d2,Z\\u|", "|\\fiK\\ux\\d\\d3,Z\\u|", "|\\fiK\\ux\\d\\d2,E\\u|", "|\\fiK\\ux\\d\\d3,E\\u|", sum},
         0.80f},
        {pgex404, 5, emit, "Correlated Emittance Contributions", {411e6f, 421e6f, 441e6f, 451e6f, 1724e6f},
         {"|\\fiK\\uy\\d\\d2,Z\\u|", "|\\fiK\\uy\\d\\d3,Z\\u|", "|\\fiK\\uy\\d\\d2,E\\u|", "|\\fiK\\uy\\d\\d3,E\\u|", sum},
         0.80f},
        {pgex406, 6, "\\ge \\gp \\fikeV mm", "Long. emittance & long. emit. minus 2nd order corr.", {251, 541, 561},
         {"\\filong. emittance", "\\filong. emit. min. 2nd order", "\\filong. emit. min. 2nd & 3rd order"}, 0.56f},
        {pgex407, 7, emit, "Phase Space Emittance & Trace Space Emittance", {51, 151, 621, 631},
         {"\\fihor Ph Sp emit", "\\fiver Ph Sp emit", "\\fihor Tr Sp emit", "\\fiver Tr Sp emit"}, 0.76f},
        {pgex408, 8, "\\ge \\gp \\gm\\fim ", "Phase Space Emittance & Trace Space Emittance", {251, 641},
         {"\\filong. Ph Sp emit", "\\filong. Tr Sp emit"}, 0.73f},
    };
    // clang-format on
    for (const Row& r : rows) {
        SCOPED_TRACE(r.top + std::string(" ") + std::to_string(r.selection));
        draw(r.plot, r.selection);
        EXPECT_EQ(h.g.named("pglab").at(0)->texts, (std::vector<std::string>{"\\fiz m", r.y, r.top}));
        const auto lines = h.g.named("pgline");
        ASSERT_EQ(lines.size(), r.first.size());
        float top = -1e10f;
        for (std::size_t c = 0; c < r.first.size(); ++c) {
            ASSERT_EQ(lines[c]->ys.size(), 3u);
            EXPECT_EQ(lines[c]->ys[0], r.first[c]) << "curve " << c + 1;
            top = std::max(top, *std::max_element(lines[c]->ys.begin(), lines[c]->ys.end()));
        }
        EXPECT_TRUE(window_is(env(), 1, 3, 0, top + std::fabs(0.2f * top)));  // every curve, the sum too
        std::vector<std::string> keys;
        for (auto* t : h.g.named("pgtext")) keys.push_back(t->texts.at(0));
        std::vector<std::string> padded;
        for (const auto& k : r.keys) padded.push_back(pad(k, 40));
        EXPECT_EQ(keys, padded);
        EXPECT_FLOAT_EQ(static_cast<float>(h.g.named("pgrect").at(0)->args[0]), r.x);
        EXPECT_EQ(h.console(), "");  // no statistics block
    }
}

TEST_F(ComparisonsTest, EmptyFramesShorterTablesAndRewinds) {
    struct Case {
        const char* what;
        void (*plot)(Session&, int);
        int selection;
        int rows, short_unit;
        bool zero;
        bool Fexist::*missing;  // a flag turned off after the tables are written
        bool empty_zoom;
        int NP;
        float x1, x2, y1, y2;
    };
    const Case cases[] = {
        {"the shorter table decides", pgex401, 1, 3, 25, false, nullptr, false, 2, 1, 2, 0, 518.4f},
        {"the shorter partner of pgex408", pgex408, 8, 3, 12, false, nullptr, false, 2, 1, 2, 0, 770.4f},
        {"all values 0", pgex406, 6, 3, 0, true, nullptr, false, 3, 1, 3, -0.1f, 0.1f},
        // Start values: ZMIN 1e10, ZMAX -1e10, YMAX -1e10 + 0.2e10.
        {"a flag asked for but not read", pgex404, 4, 3, 0, false, &Fexist::Zemit_EXISTS, false, 0, 1e10f,
         -1e10f, 0, -8e9f},
        {"a table read", pgex407, 7, 3, 0, false, &Fexist::TRemit_EXISTS, false, 0, 1e10f, -1e10f, 0, -8e9f},
        {"a zoom that takes no record", pgex401, 2, 3, 0, false, nullptr, true, 0, 1e10f, -1e10f, 0, -8e9f},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        tables(c.rows, c.zero, c.short_unit);
        if (c.missing) s.fexist.*c.missing = false;
        s.logo.ZOOM_Z = c.empty_zoom;
        s.graph.Z_LOWER = 10;
        s.graph.Z_UPPER = 20;
        draw(c.plot, c.selection);
        EXPECT_TRUE(window_is(env(), c.x1, c.x2, c.y1, c.y2));
        ASSERT_FALSE(h.g.named("pgline").empty());
        for (auto* line : h.g.named("pgline")) EXPECT_EQ(line->args[0], c.NP);
        // Every table that exists stands at its first record again.
        for (const Table& t : kTables) {
            if (!(s.fexist.*t.present)) continue;
            float first[7];
            ASSERT_TRUE(read_fixed(s.unit(t.unit), first)) << t.name;
            EXPECT_EQ(first[0], 1) << t.name;
            s.unit(t.unit).rewind();
        }
    }
}

namespace {

// Copies a run directory, draws every row of page four, and of page five
// when the run has one, and ends. Returns the curves of more than one
// point drawn on the plot window.
int draw_pages_four_and_five(const std::filesystem::path& from, const std::string& project, int run) {
    viewer::testing::Harness h;
    bool sigma = false;
    for (const auto& e : std::filesystem::directory_iterator(from)) {
        std::filesystem::copy_file(e.path(), h.dir.file(e.path().filename().string()));
        sigma = sigma || e.path().filename().string() == project + ".Sigma.00" + std::to_string(run);
    }
    for (int turn = 0; turn < 3; ++turn) h.turn_page();
    for (int row = 1; row <= 17; ++row) h.row(row);  // rows without their tables too
    if (sigma) {
        h.turn_page();
        for (int row = 1; row <= 5; ++row) h.row(row);
    }
    h.row(25);
    const std::string arg = project + "," + std::to_string(run);
    EXPECT_EQ(h.run({arg}), 0) << arg;
    const std::string c = h.console();
    EXPECT_EQ(c.find("Error"), std::string::npos) << arg << c;
    EXPECT_EQ(c.find("Enter"), std::string::npos) << arg;  // no prompt was met
    const int device = h.session().window.PLOT_DEVICE;
    EXPECT_EQ(h.g.named_on("pgenv", device).size(), sigma ? 22u : 17u) << arg;
    int curves = 0;
    for (auto* line : h.g.named_on("pgline", device)) {
        curves += line->args[0] > 1;
        for (float y : line->ys) EXPECT_TRUE(std::isfinite(y)) << arg;
    }
    return curves;
}

}  // namespace

TEST(PagesFourAndFive, EveryRowDrawsOnTheBundledRunAndTheRealRuns) {
    for (int run : {1, 2, 3})
        EXPECT_GT(draw_pages_four_and_five(std::string(VIEWER_SOURCE_DIR) + "/examples", "rfgun", run), 0)
            << run;

    const std::filesystem::path root =
        std::filesystem::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!std::filesystem::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;
    int with_tables = 0;
    for (const auto& dir : std::filesystem::directory_iterator(root)) {
        if (!dir.is_directory()) continue;
        std::string project;
        bool tables = false;  // a table of these pages
        for (const auto& e : std::filesystem::directory_iterator(dir.path())) {
            const std::string name = e.path().filename().string();
            const RunKind* k = kind_of_stem(name.substr(0, name.size() - 4));
            if (!k) continue;
            project = name.substr(0, name.size() - 4 - std::string(k->suffix).size());
            tables =
                tables || (k->unit >= 19 && k->unit != 20 && k->unit != 21 && k->unit != 27 && k->unit != 28);
        }
        if (project.empty()) continue;
        SCOPED_TRACE(dir.path().string());
        const int curves = draw_pages_four_and_five(dir.path(), project, 1);
        EXPECT_EQ(curves > 0, tables);
        with_tables += tables;
    }
    EXPECT_EQ(with_tables, 3);  // the 2 tables, a .TRemit, a .Cathode
}
