// The frame of the plots along z, driven through its members and recorded:
// lock-step reading, zoom, point limit, statistics block, ranges by rule,
// drawing order, rewinding, and a pass over the real run tables.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "control/fortran_format.hpp"
#include "control/session.hpp"
#include "evolution/frame.hpp"
#include "evolution/plots.hpp"
#include "fitting/fit.hpp"

using namespace viewer;
namespace fs = std::filesystem;

namespace {

using Row = std::array<float, 7>;

struct TempDir {
    TempDir() {
        char t[] = "/tmp/frame_test_XXXXXX";
        path = ::mkdtemp(t);
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    std::string path;
};

struct FrameTest : ::testing::Test {
    TempDir tmp;
    RecordingGraphics rec;
    ScriptedPointer ptr;
    std::istringstream in;
    std::ostringstream out;
    Session s{rec, ptr, in, out, tmp.path};

    // A 7E12.4 table, opened on its unit and flagged present.
    void emit(int unit, bool Fexist::*flag, const std::string& name, const std::vector<Row>& rows) {
        std::ofstream f(s.path(name));
        for (const Row& r : rows) {
            for (float v : r) f << fmt_e12_4(v);
            f << "\n";
        }
        f.close();
        ASSERT_TRUE(s.unit(unit).open(s.path(name)));
        s.fexist.*flag = true;
    }
    // Rows with position z and one value in field `field`, the rest zero.
    static std::vector<Row> column(const std::vector<float>& z, int field, const std::vector<float>& v) {
        std::vector<Row> rows;
        for (std::size_t i = 0; i < z.size(); ++i) {
            Row r{};
            r[0] = z[i];
            r[static_cast<std::size_t>(field)] = v[i];
            rows.push_back(r);
        }
        return rows;
    }
    void zemit(const std::vector<float>& z, int field, const std::vector<float>& v) {
        emit(12, &Fexist::Zemit_EXISTS, "p.Zemit.001", column(z, field, v));
    }

    const GraphicsCall& env(std::size_t k = 0) const { return *rec.named("pgenv").at(k); }
    std::vector<const GraphicsCall*> lines() const { return rec.named("pgline"); }
};

void expect_window(const GraphicsCall& c, float x1, float x2, float y1, float y2) {
    EXPECT_FLOAT_EQ(static_cast<float>(c.args[0]), x1);
    EXPECT_FLOAT_EQ(static_cast<float>(c.args[1]), x2);
    EXPECT_FLOAT_EQ(static_cast<float>(c.args[2]), y1);
    EXPECT_FLOAT_EQ(static_cast<float>(c.args[3]), y2);
}

// Name and numeric arguments of every call, for order checks.
std::vector<std::string> trace(const RecordingGraphics& rec) {
    std::vector<std::string> t;
    for (const auto& c : rec.calls) {
        std::string e = c.name;
        if (c.name == "pgsci" || c.name == "pgsls" || c.name == "pgline")
            e += "(" + std::to_string(static_cast<int>(c.args[0])) + ")";
        t.push_back(e);
    }
    return t;
}

}  // namespace

TEST_F(FrameTest, TwoCurvesStatisticsRangesAndAbscissaOfTheLastTable) {
    // .Yemit stands half a metre behind .Xemit: the points take its positions.
    emit(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", column({1, 2, 3}, xemit::X_RMS, {1, 3, 2}));
    emit(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", column({1.5f, 2.5f, 3.5f}, yemit::Y_RMS, {2, 5, 5}));
    pgex2(s, PKT);

    EXPECT_EQ(out.str(),
              "\n"
              "     1: black (horizontal): \n"
              "     beginning:                   1.0000D+00\n"
              "     end:                         2.0000D+00\n"
              "     minimum:                     1.0000D+00  at z =   1.5000D+00\n"
              "     maximum:                     3.0000D+00  at z =   2.5000D+00\n"
              "     average:                     2.0000D+00\n"
              "\n"
              "     2: red (vertical): \n"
              "     beginning:                   2.0000D+00\n"
              "     end:                         5.0000D+00\n"
              "     minimum:                     2.0000D+00  at z =   1.5000D+00\n"
              "     maximum:                     5.0000D+00  at z =   2.5000D+00\n"  // first of two
              "     average:                     4.0000D+00\n"
              "\n");
    expect_window(env(), 1.5f, 3.5f, 0.0f, 6.0f);  // the larger curve sets the top
    EXPECT_EQ(env().args[4], 0);
    EXPECT_EQ(env().args[5], 1);
    ASSERT_EQ(lines().size(), 2u);
    EXPECT_EQ(lines()[0]->xs, (std::vector<float>{1.5f, 2.5f, 3.5f}));
    EXPECT_EQ(lines()[0]->ys, (std::vector<float>{1, 3, 2}));
    EXPECT_EQ(lines()[1]->ys, (std::vector<float>{2, 5, 5}));
    EXPECT_EQ(s.plot(2).NP, 3);
}

TEST_F(FrameTest, DrawingOrderByColourOrLineStyle) {
    emit(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", column({1, 2}, xemit::X_RMS, {1, 2}));
    emit(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", column({1, 2}, yemit::Y_RMS, {1, 2}));
    s.logo.OVERVIEW = true;  // no page foot, so the whole sequence is the frame's

    s.logo.COLOUR = true;
    pgex2(s, PKT);
    EXPECT_EQ(trace(rec), (std::vector<std::string>{"pgbbuf", "pgsave", "pgsci(1)", "pgenv", "pglab", "pgsci(1)",
                                                    "pgline(2)", "pgsci(2)", "pgline(2)", "pgsls(1)", "pgunsa",
                                                    "pgebuf", "pgupdt", "pgupdt"}));

    // On a monochrome device the second curve is dashed and stays black.
    rec.clear();
    s.logo.COLOUR = false;
    pgex2(s, PKT);
    EXPECT_EQ(trace(rec), (std::vector<std::string>{"pgbbuf", "pgsave", "pgsci(1)", "pgenv", "pglab", "pgsci(1)",
                                                    "pgline(2)", "pgsls(2)", "pgline(2)", "pgsls(1)", "pgunsa",
                                                    "pgebuf", "pgupdt", "pgupdt"}));
    EXPECT_NE(out.str().find("2: red (vertical)"), std::string::npos);  // the text speaks of red all the same
}

TEST_F(FrameTest, FitHookRunsBetweenTheCurvesAndTheOverlayWithThePlotsOwnPick) {
    emit(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", column({1, 2, 3}, xemit::X_RMS, {1, 2, 3}));
    emit(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", column({1, 2, 3}, yemit::Y_RMS, {3, 5, 7}));
    s.geometry = {{1.0f, 3.0f}, {1.0f, 1.0f}, 1.0f, 3.0f, 1.0f, 2};
    s.logo.GEOMETRY_LOADED = true;
    s.logo.WITH_GEOMETRY = true;
    s.logo.FIT_REQUESTED = true;
    s.logo.TO_FILE = true;  // a hardcopy: the saved pick, no menu
    const int straight_line = 3;
    s.plot(2).ID_F = straight_line;

    // What the hook alone draws for these points...
    const std::vector<float> z{1, 2, 3}, y1{1, 2, 3}, y2{3, 5, 7};
    int pick = straight_line;
    fit_hook(s, pick, 3, z.data(), y1.data(), y2.data(), FitStyle{1, true});
    const std::vector<std::string> hook = trace(rec);

    // ...stands in the plot between the frame's update and the overlay.
    rec.clear();
    pgex2(s, PKT);
    const std::vector<std::string> all = trace(rec);
    const auto curves_done = std::find(all.begin(), all.end(), "pgupdt");
    const auto overlay = std::find(all.begin(), all.end(), "pgswin");
    ASSERT_NE(curves_done, all.end());
    ASSERT_NE(overlay, all.end());
    ASSERT_GE(overlay - curves_done, 3);  // the overlay opens with pgbbuf, pgsave
    const std::vector<std::string> in_plot(curves_done + 1, overlay - 2);
    EXPECT_EQ(in_plot, hook);
    // Two fitted lines, dashed.
    EXPECT_EQ(std::count_if(in_plot.begin(), in_plot.end(),
                            [](const std::string& c) { return c.rfind("pgline", 0) == 0; }),
              2);
    EXPECT_NE(std::find(in_plot.begin(), in_plot.end(), "pgsls(2)"), in_plot.end());
}

TEST_F(FrameTest, ZoomWindowKeepsItsBoundsAndStatisticsSeeOnlyIt) {
    zemit({1, 2, 3, 4, 5}, zemit::Z_RMS, {10, 20, 30, 40, 50});
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = 2;
    s.graph.Z_UPPER = 4;
    pgex5(s, PKT);

    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(lines()[0]->xs, (std::vector<float>{2, 3, 4}));
    expect_window(env(), 2, 4, 0, 48);
    const std::string o = out.str();
    EXPECT_NE(o.find("     beginning:                   2.0000D+01\n"), std::string::npos);
    EXPECT_NE(o.find("     end:                         4.0000D+01\n"), std::string::npos);
    EXPECT_NE(o.find("     average:                     3.0000D+01\n"), std::string::npos);
}

TEST_F(FrameTest, PointLimitStopsReadingAndZoomCountsOnlyKeptPoints) {
    std::vector<float> z(PKT + 1), v(PKT + 1);
    for (int i = 0; i <= PKT; ++i) {
        z[static_cast<std::size_t>(i)] = 0.001f * static_cast<float>(i);
        v[static_cast<std::size_t>(i)] = 1.0f + static_cast<float>(i % 7);
    }
    zemit(z, zemit::Z_RMS, v);

    pgex5(s, PKT);
    EXPECT_EQ(s.plot(5).NP, PKT);
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(lines()[0]->args[0], PKT);
    EXPECT_FLOAT_EQ(lines()[0]->xs.back(), z[PKT - 1]);  // the 9103rd record is not read

    // A window of 100 records far down the table: all 100, whichever they are.
    rec.clear();
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = z[8000];
    s.graph.Z_UPPER = z[8099];
    pgex5(s, PKT);
    EXPECT_EQ(s.plot(5).NP, 100);
    EXPECT_FLOAT_EQ(lines()[0]->xs.front(), z[8000]);

    // A smaller limit cuts the curve there.
    rec.clear();
    s.logo.ZOOM_Z = false;
    pgex5(s, 5);
    EXPECT_EQ(s.plot(5).NP, 5);
    EXPECT_EQ(lines()[0]->args[0], 5);
}

TEST_F(FrameTest, NoPointsDrawAnEmptyFrameAndPrintNothing) {
    // Never drawn, table missing: both ranges mended around zero.
    pgex5(s, PKT);
    EXPECT_EQ(out.str(), "");
    expect_window(env(), -0.1f, 0.1f, -0.1f, 0.1f);
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(lines()[0]->args[0], 0);
    EXPECT_EQ(s.plot(5).NP, 0);

    // A limit below 1 reads nothing either, and the table stays where it stands.
    zemit({1, 2, 3}, zemit::Z_RMS, {1, 2, 3});
    rec.clear();
    pgex5(s, 0);
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(s.plot(5).NP, 0);

    // After a draw with data, an empty zoom window keeps that plot's z range,
    // while the ordinate is mended anew; another plot has its own.
    rec.clear();
    pgex5(s, PKT);
    expect_window(env(), 1, 3, 0, 3.6f);
    rec.clear();
    out.str("");
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = 10;
    s.graph.Z_UPPER = 20;
    pgex5(s, PKT);
    pgex6(s, PKT);
    EXPECT_EQ(out.str(), "");
    expect_window(env(0), 1, 3, -0.1f, 0.1f);
    expect_window(env(1), -0.1f, 0.1f, -0.1f, 0.1f);
}

TEST_F(FrameTest, SinglePointOpensAroundItAndDrawsNoLine) {
    zemit({2}, zemit::E_MEAN, {2});
    pgex8(s, PKT);
    expect_window(env(), 1.8f, 2.2f, 1.6f, 2.4f);
    EXPECT_EQ(lines()[0]->args[0], 1);
    const std::string o = out.str();
    EXPECT_NE(o.find("     beginning:                   2.0000D+00\n"
                     "     end:                         2.0000D+00\n"),
              std::string::npos);

    // At a negative position the mended range falls from left to right:
    // ZMAX = -2.2 stands at the right end.
    s.unit(12).close();
    rec.clear();
    zemit({-2}, zemit::E_MEAN, {2});
    pgex8(s, PKT);
    expect_window(env(), -1.8f, -2.2f, 1.6f, 2.4f);
}

TEST_F(FrameTest, ConstantCurvesUnderEachRule) {
    struct Case {
        void (*plot)(Session&, int);
        int field;
        float value, ymin, ymax;
    };
    const Case cases[] = {
        {pgex8, zemit::E_MEAN, 2.0f, 1.6f, 2.4f},   // margin: a fifth of the value each side
        {pgex8, zemit::E_MEAN, 0.0f, -0.1f, 0.1f},  // margin around zero: mended
        {pgex5, zemit::Z_RMS, 2.0f, 0.0f, 2.4f},    // zero rule
        {pgex5, zemit::Z_RMS, 0.0f, -0.1f, 0.1f},   // zero rule, all zero: mended
        {pgex7, zemit::CO_EZ, -2.0f, -2.4f, -1.6f}, // margin below zero opens outwards
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.value);
        s.unit(12).close();
        rec.clear();
        zemit({1, 2, 3}, c.field, {c.value, c.value, c.value});
        c.plot(s, PKT);
        expect_window(env(), 1, 3, c.ymin, c.ymax);
    }
}

TEST_F(FrameTest, CurveBelowZeroUnderTheMarginRule) {
    zemit({1, 2, 3}, zemit::CO_EZ, {-1, -3, -2});
    pgex7(s, PKT);
    expect_window(env(), 1, 3, -3.6f, -0.8f);
}

TEST_F(FrameTest, ShorterTableDecidesAndEveryUnitIsRewound) {
    emit(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", column({1, 2, 3}, xemit::NX_EMIT, {1, 2, 3}));
    emit(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", column({1, 2}, yemit::NY_EMIT, {4, 5}));
    pgex1(s, PKT);
    EXPECT_EQ(s.plot(1).NP, 2);

    // Both stand at their first record again.
    float r[7];
    ASSERT_TRUE(read_fixed(s.unit(10), r));
    EXPECT_FLOAT_EQ(r[0], 1);
    ASSERT_TRUE(read_fixed(s.unit(11), r));
    EXPECT_FLOAT_EQ(r[yemit::NY_EMIT], 4);
    s.unit(10).rewind();
    s.unit(11).rewind();

    // The other way round the surplus record of .Xemit is dropped with its pass.
    s.unit(10).close();
    s.unit(11).close();
    emit(10, &Fexist::Xemit_EXISTS, "p.Xemit.001", column({1, 2}, xemit::NX_EMIT, {1, 2}));
    emit(11, &Fexist::Yemit_EXISTS, "p.Yemit.001", column({1, 2, 3}, yemit::NY_EMIT, {4, 5, 6}));
    pgex1(s, PKT);
    EXPECT_EQ(s.plot(1).NP, 2);

    // A plot missing one of its tables reads neither.
    s.fexist.Yemit_EXISTS = false;
    rec.clear();
    pgex1(s, PKT);
    EXPECT_EQ(s.plot(1).NP, 0);
    ASSERT_TRUE(read_fixed(s.unit(10), r));
    EXPECT_FLOAT_EQ(r[0], 1);
}

TEST_F(FrameTest, MisuseOfTheFrameIsNamed) {
    zemit({1}, zemit::Z_RMS, {1});
    AlongZ row{.plot = 99, .tables = {table::Zemit}, .curves = {col(table::Xemit, xemit::X_RMS)}};
    try {
        plot_along_z(s, PKT, row);
        FAIL() << "a curve over a table the plot does not read";
    } catch (const std::logic_error& e) {
        EXPECT_NE(std::string(e.what()).find("unit 10"), std::string::npos);
    }
}

TEST_F(FrameTest, BadRecordEndsTheDrawAndTheTableIsRewound) {
    std::ofstream(s.path("p.Zemit.001")) << "  1.0000E+00  0.0000E+00  1.0000E+00  2.0000E+00\n"
                                            "  2.0000E+00  0.0000E+00  abcdefghijkl  2.0000E+00\n";
    ASSERT_TRUE(s.unit(12).open(s.path("p.Zemit.001")));
    s.fexist.Zemit_EXISTS = true;
    EXPECT_THROW(pgex5(s, PKT), RecordError);
    EXPECT_TRUE(rec.named("pgenv").empty());
    float r[7];
    ASSERT_TRUE(read_fixed(s.unit(12), r));
    EXPECT_FLOAT_EQ(r[0], 1);
}

// Every plot of page 1 that has its tables, over the real tables of other
// groups' runs: no failure, every record inside the limit drawn, finite ranges.
TEST(FrameRealData, EveryPlotDrawsEachRealRun) {
    const fs::path root = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!fs::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;

    struct Kind {
        const char* suffix;
        int unit;
        bool Fexist::*flag;
    };
    const Kind kinds[] = {{".Xemit.001", 10, &Fexist::Xemit_EXISTS},
                          {".Yemit.001", 11, &Fexist::Yemit_EXISTS},
                          {".Zemit.001", 12, &Fexist::Zemit_EXISTS},
                          {".ref.001", 13, &Fexist::ref_EXISTS}};
    using Plot = void (*)(Session&, int);
    const Plot emit_plots[] = {pgex1, pgex2, pgex3, pgex4, pgex5, pgex6, pgex7, pgex8, pgex9};
    const Plot ref_plots[] = {pgex10, pgex11, pgex12, pgex13};

    int runs = 0;
    for (const auto& d : fs::directory_iterator(root)) {
        if (!d.is_directory()) continue;
        SCOPED_TRACE(d.path().filename().string());
        RecordingGraphics rec;
        ScriptedPointer ptr;
        std::istringstream in;
        std::ostringstream out;
        Session s(rec, ptr, in, out, d.path().string());
        int lines[40] = {};
        for (const auto& f : fs::directory_iterator(d.path())) {
            const std::string name = f.path().filename().string();
            for (const Kind& k : kinds) {
                const std::string suf = k.suffix;
                if (name.size() <= suf.size() || name.compare(name.size() - suf.size(), suf.size(), suf) != 0)
                    continue;
                ASSERT_TRUE(s.unit(k.unit).open(f.path().string()));
                s.fexist.*(k.flag) = true;
                std::string_view l;
                while (s.unit(k.unit).next_line(l)) ++lines[k.unit];
                s.unit(k.unit).rewind();
            }
        }
        s.R_PKT = lines[13];

        auto run = [&](Plot plot, int N, int expect_np, int plot_no) {
            rec.clear();
            ASSERT_NO_THROW(plot(s, N));
            EXPECT_EQ(s.plot(plot_no).NP, expect_np) << "pgex" << plot_no;
            for (const GraphicsCall* e : rec.named("pgenv"))
                for (int i = 0; i < 4; ++i) EXPECT_TRUE(std::isfinite(e->args[static_cast<std::size_t>(i)]));
            for (const GraphicsCall* l : rec.named("pgline")) EXPECT_EQ(l->args[0], expect_np);
            ++runs;
        };
        if (s.fexist.Xemit_EXISTS && s.fexist.Yemit_EXISTS)
            for (int i = 0; i < 3; ++i) run(emit_plots[i], PKT, std::min({lines[10], lines[11], PKT}), i + 1);
        if (s.fexist.Zemit_EXISTS)
            for (int i = 3; i < 9; ++i) run(emit_plots[i], PKT, std::min(lines[12], PKT), i + 1);
        if (s.fexist.ref_EXISTS)
            for (int i = 0; i < 4; ++i) run(ref_plots[i], s.R_PKT, s.R_PKT, i + 10);
    }
    EXPECT_GT(runs, 0);
}
