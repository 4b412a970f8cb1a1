// The probe plots over interleaved .track records, seen as the segments the
// device receives (which points each probe joins, on which panel, in what
// colour and style); the ranges, the overlay forms, and real runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::window_is;

namespace {

using Row = std::vector<float>;  // I, Z, X, Y, EZ, ER, BFI; missing fields are 0

// A drawn segment with the panel, colour index and line style in force (0: never set).
struct Seg {
    int panel, ci, ls;
    float x1, y1, x2, y2;
    bool operator==(const Seg&) const = default;
};

// Panels advance with pgenv and pgpage; pgpanl picks one.
std::vector<Seg> segments(const RecordingGraphics& g, int only_panel = 0) {
    std::vector<Seg> out;
    int panel = 0, ci = 0, ls = 0;
    for (const GraphicsCall& c : g.calls) {
        if (c.name == "pgenv" || c.name == "pgpage") panel = panel % 2 + 1;
        if (c.name == "pgpanl") panel = static_cast<int>(c.args[1]);
        if (c.name == "pgsci") ci = static_cast<int>(c.args[0]);
        if (c.name == "pgsls") ls = static_cast<int>(c.args[0]);
        for (std::size_t k = 1; c.name == "pgline" && k < c.xs.size(); ++k)
            if (only_panel == 0 || panel == only_panel)
                out.push_back({panel, ci, ls, c.xs[k - 1], c.ys[k - 1], c.xs[k], c.ys[k]});
    }
    return out;
}

struct ProbePlotsTest : ::testing::Test {
    viewer::testing::Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    void track(const std::vector<Row>& rows) {
        std::ostringstream t;
        for (const Row& r : rows) {
            t << static_cast<int>(r[0]) << " 0";
            for (std::size_t k = 1; k < 7; ++k) t << " " << (k < r.size() ? r[k] : 0.0f);
            t << "\n";
        }
        viewer::testing::open_table(s, 15, &Fexist::track_EXISTS, "p.track.001", t.str());
    }
    void zoom(bool on, float lo, float hi) {
        s.logo.ZOOM_Z = on;
        s.graph.Z_LOWER = lo;
        s.graph.Z_UPPER = hi;
    }
};

// The segment a plot draws from record a to record b on panel p (no colour).
struct Member {
    void (*plot)(Session&);
    Seg (*seg)(int p, const Row& a, const Row& b);
};
float r_of(const Row& a) {
    return std::sqrt(a[2] * a[2] + a[3] * a[3]);
}
const Member kMembers[] = {
    {pgex14, [](int p, const Row& a, const Row& b) { return Seg{p, 1, 0, a[1], a[p + 1], b[1], b[p + 1]}; }},
    {pgex15,
     [](int p, const Row& a, const Row& b) {
         return p == 1 ? Seg{1, 1, 0, a[1], r_of(a), b[1], r_of(b)} : Seg{2, 1, 0, a[2], a[3], b[2], b[3]};
     }},
    {pgex16,  // the last field is not zero: Ex above, Ey below
     [](int p, const Row& a, const Row& b) { return Seg{p, 1, 0, a[1], a[p + 4], b[1], b[p + 4]}; }},
};

}  // namespace

TEST_F(ProbePlotsTest, EachProbeJoinsItsOwnPointsInFileOrder) {
    const std::vector<Row> rows = {{1, 0, 1, 2, 10, 20, 30},   {2, 0, 3, 4, 11, 21, 31},
                                   {2, 1, 5, 6, 12, 22, 32},   {1, 1, 7, 8, 13, 23, 33},
                                   {3, 1.5, 9, 9, 14, 24, 34}, {1, 2, 9, 10, 15, 25, 35},
                                   {2, 2, 11, 12, 16, 26, 36}};
    struct Case {
        bool zoomed;
        float lo, hi;
        std::vector<std::array<int, 2>> joins;  // rows joined, in file order
    };
    const Case cases[] = {
        {false, 0, 0, {{1, 2}, {0, 3}, {3, 5}, {2, 6}}},  // probe 3 has one record: no line
        {true, 0.5f, 2.5f, {{3, 5}, {2, 6}}},             // a probe starts at its first record in the window
        {true, 1.5f, 1.5f, {}},                           // the lone record in the window: a frame, no line
    };
    track(rows);
    for (const Member& m : kMembers)
        for (const Case& c : cases) {
            rec.clear();
            zoom(c.zoomed, c.lo, c.hi);
            m.plot(s);
            EXPECT_EQ(rec.named("pgptxt").size(), 1u);  // the page foot
            for (int p : {1, 2}) {
                std::vector<Seg> want;
                for (auto [a, b] : c.joins) want.push_back(m.seg(p, rows[a], rows[b]));
                EXPECT_TRUE(segments(rec, p) == want)
                    << (&m - kMembers) << " panel " << p << " zoom " << c.lo;
            }
        }
}

TEST_F(ProbePlotsTest, ColourAndStyleOfAProbeAndOutOfRangeNumbers) {
    std::vector<Row> rows;
    for (float z : {0.0f, 1.0f})
        for (int p : {1, 14, 15, 16, 30, 75, 90, 101, 0}) rows.push_back({float(p), z, z, z, 0, 0, 1});
    track(rows);
    // The style of a multiple of 15 stays for the probes after it; 101 and 0 draw nothing.
    const std::vector<std::array<int, 2>> colour = {{1, 0},  {14, 0}, {15, 2}, {1, 2},
                                                    {15, 3}, {15, 1}, {15, 2}};
    for (bool c : {true, false}) {
        rec.clear();
        s.logo.COLOUR = c;
        pgex14(s);
        for (int p : {1, 2}) {
            std::vector<std::array<int, 2>> got;
            for (const Seg& g : segments(rec, p)) got.push_back({g.ci, g.ls});
            EXPECT_EQ(got, (c ? colour : std::vector<std::array<int, 2>>(colour.size(), {1, 0}))) << p;
        }
    }
    // A record out of range is not counted, yet it uses up the count of the
    // drawing pass of pgex15 and pgex16: their last records stay undrawn.
    track({{1, 0}, {101, 0.5f}, {0, 0.7f}, {1, 1}, {1, 2}, {1, 3}});
    for (const Member& m : kMembers) {
        rec.clear();
        m.plot(s);
        EXPECT_EQ(segments(rec, 1).size(), m.plot == pgex14 ? 3u : 1u);
    }
}

TEST_F(ProbePlotsTest, RangesMarginsZoomAndTheKindOfFieldPage) {
    const std::vector<Row> data = {
        {1, 0, 1, 2, 10, 20, 0}, {1, 2, 11, -12, 20, 40, 0}, {2, 3, 1, 1, 10, 20, -5}};
    struct Case {
        void (*plot)(Session&);
        std::vector<Row> rows;
        bool zoomed;  // to -1 .. 2.5
        std::vector<std::array<float, 4>> envs;
        std::vector<std::string> ylabels;
    };
    const Case cases[] = {
        {pgex14, data, false, {{0, 3, 0.8f, 13.2f}, {0, 3, -14.4f, 2.4f}}, {"\\fix mm", "\\fiy mm"}},
        {pgex14, data, true, {{0, 2, 0.8f, 13.2f}, {0, 2, -14.4f, 2.4f}}, {"\\fix mm", "\\fiy mm"}},
        {pgex15,
         data,
         true,
         {{-1, 2.5f, 0, 1.2f * std::sqrt(265.0f)}},
         {"\\fir mm", "\\fiy mm"}},  // the window
        {pgex16, data, false, {{0, 3, 17, 46}, {0, 3, -5.75f, 0}}, {"\\fiEx V/m", "\\fiEy V/m"}},
        {pgex16, data, true, {{0, 2, 8.5f, 23}, {0, 2, 17, 46}}, {"\\fiEz V/m", "\\fiEr V/m"}},
        {pgex15, {{1, 0}, {1, 1}}, false, {{0, 1, 0, 0.1f}}, {"\\fir mm", "\\fiy mm"}},  // x and y all zero
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        rec.clear();
        track(c.rows);
        zoom(c.zoomed, -1, 2.5f);
        c.plot(s);
        const auto envs = rec.named("pgenv");
        ASSERT_EQ(envs.size(), c.envs.size());
        for (std::size_t k = 0; k < c.envs.size(); ++k)
            EXPECT_TRUE(window_is(*envs[k], c.envs[k][0], c.envs[k][1], c.envs[k][2], c.envs[k][3]));
        for (std::size_t k = 0; k < 2; ++k) EXPECT_EQ(rec.named("pglab").at(k)->texts[1], c.ylabels[k]);
    }
    // The last case: a square cross section of 2.4 inches, 0.1 around zero.
    EXPECT_TRUE(window_is(*rec.named("pgswin").at(0), -0.1f, 0.1f, -0.1f, 0.1f));
    EXPECT_EQ(rec.named("pgvsiz").at(0)->args, (std::vector<double>{0.42f, 2.82f, 0.42f, 2.82f}));
}

TEST_F(ProbePlotsTest, OverlayInOwnAxesOrInItsOwnWindow) {
    s.geometry = {{-1.0f, 3.0f}, {5.0f, 5.0f}, -1.0f, 3.0f, 5.0f, 2};
    s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = true;
    track({{1, 0, -3, 1, 1, 1, 1}, {1, 1, -4, 2, 2, 2, 2}});  // all x negative
    struct Case {
        void (*plot)(Session&);
        std::vector<std::array<float, 4>> last_envs;  // of the page that stays
        std::vector<Seg> outline;
        std::size_t pages;
    };
    const Case cases[] = {
        // x is only lowered to the outline, y only raised; both panels mirrored, solid
        {pgex14,
         {{-1, 3, -5.5f, -2.4f}, {-1, 3, 0.8f, 5.5f}},
         {{1, 1, 0, -1, 5, 3, 5}, {1, 1, 0, -1, -5, 3, -5}, {2, 1, 0, -1, 5, 3, 5}, {2, 1, 0, -1, -5, 3, -5}},
         2},
        {pgex15, {{-1, 3, 0, 5.5f}}, {{1, 1, 1, -1, 5, 3, 5}}, 2},  // upper outline only
        {pgex16,  // in the overlay window, dashed, over the unwidened page
         {{0, 1, 0.85f, 2.3f}, {0, 1, 0.85f, 2.3f}},
         {{1, 1, 2, -1, 5, 3, 5}, {1, 1, 2, -1, -5, 3, -5}, {2, 1, 2, -1, -5, 3, -5}, {2, 1, 2, -1, 5, 3, 5}},
         1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(&c - cases);
        rec.clear();
        c.plot(s);
        const auto envs = rec.named("pgenv");
        ASSERT_EQ(envs.size(), c.pages * c.last_envs.size());
        for (std::size_t k = 0, first = envs.size() - c.last_envs.size(); k < c.last_envs.size(); ++k) {
            const auto& w = c.last_envs[k];
            EXPECT_TRUE(window_is(*envs[first + k], w[0], w[1], w[2], w[3]));
        }
        const auto all = segments(rec);
        ASSERT_EQ(all.size(),
                  2 * c.pages + c.outline.size());  // a segment a panel and page, then the outline
        EXPECT_TRUE(std::equal(c.outline.begin(), c.outline.end(), all.begin() + 2 * c.pages));
        const Seg &first = all[0], &last = all[2 * c.pages - 2];  // the same curves on both pages
        EXPECT_TRUE(first.x1 == last.x1 && first.y1 == last.y1 && first.x2 == last.x2 && first.y2 == last.y2);
        EXPECT_EQ(rec.named("pgptxt").size(), 1u);
    }
}

TEST_F(ProbePlotsTest, NothingToDrawLeavesThePageAndABadRecordRewinds) {
    for (const Member& m : kMembers) {
        s.fexist.track_EXISTS = false;
        m.plot(s);
        track({});
        m.plot(s);
        track({{1, 0}, {1, 1}});
        zoom(true, 5, 6);
        m.plot(s);
        track({{101, 0}, {0, 1}});
        zoom(false, 0, 0);
        m.plot(s);
        EXPECT_TRUE(rec.calls.empty());
        viewer::testing::open_table(s, 15, &Fexist::track_EXISTS, "p.track.001", "1 0 0 0 0 0 0 0\n2 0 x\n");
        EXPECT_THROW(m.plot(s), RecordError);
        EXPECT_EQ(s.unit(15).line_number(), 0);
        rec.clear();
    }
}

// Whole sessions on the bundled run and on every real run with a .track:
// rows 14 to 16 draw their pages or, with no record, leave the page of row 1.
TEST(ProbePlotSessions, BundledAndRealRunsDrawOrLeaveThePage) {
    namespace fs = std::filesystem;
    struct Run {
        fs::path dir;
        std::string arg;
        std::vector<int> rows;
        std::size_t frames;
    };
    // with the outline, row 18 draws row 16 again
    std::vector<Run> runs = {
        {fs::path(VIEWER_SOURCE_DIR) / "examples", "rfgun,1", {1, 14, 15, 16, 18, 14, 15, 16}, 16}};
    const fs::path real = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    for (const auto& d : fs::is_directory(real) ? fs::directory_iterator(real) : fs::directory_iterator())
        for (const auto& e : d.is_directory() ? fs::directory_iterator(d.path()) : fs::directory_iterator())
            if (auto p = e.path().filename().string().find(".track."); p != std::string::npos)
                runs.push_back({d.path(),
                                e.path().filename().string().substr(0, p) + ",1",
                                {1, 14, 15, 16},
                                fs::file_size(e) ? 6u : 1u});
    EXPECT_GE(runs.size(), 3u);
    for (const Run& r : runs) {
        viewer::testing::Harness h;
        for (const auto& e : fs::directory_iterator(r.dir))
            fs::copy_file(e.path(), h.dir.file(e.path().filename().string()));
        for (int row : r.rows) h.row(row);
        h.row(25);
        EXPECT_EQ(h.run({r.arg}), 0);
        EXPECT_EQ(h.console().find("Error"), std::string::npos) << h.console();
        const int plot = h.session().window.PLOT_DEVICE;
        EXPECT_EQ(h.g.named_on("pgenv", plot).size(), r.frames) << r.dir;
        std::size_t drawn = 0, finite = 0;
        for (auto* line : h.g.named_on("pgline", plot))
            for (float y : line->ys) drawn++, finite += std::isfinite(y);
        EXPECT_EQ(drawn > 0, r.frames > 1) << r.dir;
        EXPECT_EQ(finite, drawn) << r.dir;
    }
}
