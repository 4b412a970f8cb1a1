// The probe plots over interleaved .track records, seen as the segments the
// device receives: which probe joins which points on which panel, in what
// colour and style; the ranges, the overlay forms, and real runs.
#include <gtest/gtest.h>

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

using Row = std::vector<float>;  // I, Z, X, Y, EZ, ER, BFI

// One drawn segment with the panel, colour index and line style in force
// (0: never set since the plot began).
struct Seg {
    int panel, ci, ls;
    float x1, y1, x2, y2;
    bool operator==(const Seg&) const = default;
};

std::ostream& operator<<(std::ostream& o, const Seg& g) {
    return o << "panel " << g.panel << " ci " << g.ci << " ls " << g.ls << " (" << g.x1 << "," << g.y1
             << ")-(" << g.x2 << "," << g.y2 << ")";
}

// Replays the recorded calls: panels advance with pgenv and pgpage, pgpanl
// picks one, pgsave/pgunsa keep and restore colour and style.
std::vector<Seg> segments(const RecordingGraphics& g) {
    std::vector<Seg> out;
    std::vector<std::array<int, 2>> saved;
    int panel = 0, ci = 0, ls = 0;
    float px = 0, py = 0;
    for (const GraphicsCall& c : g.calls) {
        if (c.name == "pgenv" || c.name == "pgpage") panel = panel % 2 + 1;
        if (c.name == "pgpanl") panel = static_cast<int>(c.args[1]);
        if (c.name == "pgsci") ci = static_cast<int>(c.args[0]);
        if (c.name == "pgsls") ls = static_cast<int>(c.args[0]);
        if (c.name == "pgsave") saved.push_back({ci, ls});
        if (c.name == "pgunsa") {
            ci = saved.back()[0];
            ls = saved.back()[1];
            saved.pop_back();
        }
        if (c.name == "pgmove") px = float(c.args[0]), py = float(c.args[1]);
        if (c.name == "pgdraw") {
            out.push_back({panel, ci, ls, px, py, float(c.args[0]), float(c.args[1])});
            px = float(c.args[0]), py = float(c.args[1]);
        }
        for (std::size_t k = 1; c.name == "pgline" && k < c.xs.size(); ++k)
            out.push_back({panel, ci, ls, c.xs[k - 1], c.ys[k - 1], c.xs[k], c.ys[k]});
    }
    return out;
}

std::vector<Seg> on_panel(const std::vector<Seg>& all, int panel) {
    std::vector<Seg> out;
    for (const Seg& g : all)
        if (g.panel == panel) out.push_back(g);
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
    void zoom(float lo, float hi) {
        s.logo.ZOOM_Z = true;
        s.graph.Z_LOWER = lo;
        s.graph.Z_UPPER = hi;
    }
    const GraphicsCall& env(std::size_t k) const { return *rec.named("pgenv").at(k); }
};

// Where a record ends a segment in each panel, per plot.
struct Member {
    const char* name;
    void (*plot)(Session&);
    Seg (*seg)(int panel, const Row& a, const Row& b);
};
float r_of(const Row& a) {
    return std::sqrt(a[2] * a[2] + a[3] * a[3]);
}
const Member kMembers[] = {
    {"pgex14", pgex14,
     [](int p, const Row& a, const Row& b) { return Seg{p, 1, 0, a[1], a[p + 1], b[1], b[p + 1]}; }},
    {"pgex15", pgex15,
     [](int p, const Row& a, const Row& b) {
         return p == 1 ? Seg{1, 1, 0, a[1], r_of(a), b[1], r_of(b)} : Seg{2, 1, 0, a[2], a[3], b[2], b[3]};
     }},
    {"pgex16", pgex16,  // the last field is not zero: Ex above, Ey below
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
        {true, 0.5f, 2.5f, {{3, 5}, {2, 6}}},             // each probe's first record in the window starts it
        {true, 1.5f, 1.5f, {}},                           // the lone record in the window: frame, no line
    };
    track(rows);
    for (const Member& m : kMembers)
        for (const Case& c : cases) {
            SCOPED_TRACE(std::string(m.name) + " zoom " + std::to_string(c.lo));
            rec.clear();
            s.logo.ZOOM_Z = c.zoomed;
            s.graph.Z_LOWER = c.lo;
            s.graph.Z_UPPER = c.hi;
            m.plot(s);
            EXPECT_FALSE(rec.named("pgptxt").empty());  // the page was drawn
            const auto all = segments(rec);
            for (int p : {1, 2}) {
                std::vector<Seg> want;
                for (auto [a, b] : c.joins) want.push_back(m.seg(p, rows[a], rows[b]));
                EXPECT_EQ(on_panel(all, p), want) << "panel " << p;
            }
            EXPECT_EQ(all.size(), 2 * c.joins.size());
        }
}

TEST_F(ProbePlotsTest, ColourAndStyleOfAProbeAndOutOfRangeNumbers) {
    const int probes[] = {1, 14, 15, 16, 30, 75, 90, 101, 0};
    std::vector<Row> rows;
    for (float z : {0.0f, 1.0f})
        for (int p : probes) rows.push_back({float(p), z, z, z, 0, 0, 1});
    track(rows);
    // The style of a multiple of 15 stays for the probes after it.
    const std::vector<std::array<int, 2>> colour = {{1, 0},  {14, 0}, {15, 2}, {1, 2},
                                                    {15, 3}, {15, 1}, {15, 2}};
    for (bool c : {true, false}) {
        rec.clear();
        s.logo.COLOUR = c;
        pgex14(s);
        for (int p : {1, 2}) {
            const auto drawn = on_panel(segments(rec), p);
            ASSERT_EQ(drawn.size(), colour.size());  // probes 101 and 0 draw nothing
            for (std::size_t k = 0; k < drawn.size(); ++k) {
                const std::array<int, 2> want = c ? colour[k] : std::array<int, 2>{1, 0};
                EXPECT_EQ((std::array<int, 2>{drawn[k].ci, drawn[k].ls}), want)
                    << k << " panel " << p << " " << c;
            }
        }
    }
    // A record out of range is not counted, yet it uses up the count of the
    // drawing pass of pgex15 and pgex16: their last record stays undrawn.
    track({{1, 0, 1, 1, 1, 1, 1},
           {101, 0.5f, 1, 1, 1, 1, 1},
           {0, 0.7f, 1, 1, 1, 1, 1},
           {1, 1, 2, 2, 2, 2, 2},
           {1, 2, 3, 3, 3, 3, 3},
           {1, 3, 4, 4, 4, 4, 4}});
    for (const Member& m : kMembers) {
        rec.clear();
        m.plot(s);
        EXPECT_EQ(on_panel(segments(rec), 1).size(), m.plot == pgex14 ? 3u : 1u) << m.name;
    }
}

TEST_F(ProbePlotsTest, RangesMarginsZoomAndTheKindOfFieldPage) {
    const std::vector<Row> data = {
        {1, 0, 1, 2, 10, 20, 0}, {1, 2, 11, -12, 20, 40, 0}, {2, 3, 1, 1, 10, 20, 5}};
    struct Case {
        const char* name;
        void (*plot)(Session&);
        std::vector<Row> rows;
        bool zoomed;
        std::vector<std::array<float, 4>> envs;
        std::vector<std::string> ylabels;
    };
    const Case cases[] = {
        {"x and y by 0.2",
         pgex14,
         data,
         false,
         {{0, 3, 0.8f, 13.2f}, {0, 3, -14.4f, 2.4f}},
         {"\\fix mm", "\\fiy mm"}},
        {"zoom: the data",
         pgex14,
         data,
         true,
         {{0, 2, 0.8f, 13.2f}, {0, 2, -14.4f, 2.4f}},
         {"\\fix mm", "\\fiy mm"}},
        {"zoom: the window",
         pgex15,
         data,
         true,
         {{-1, 2.5f, 0, 1.2f * std::sqrt(265.0f)}},
         {"\\fir mm", "\\fiy mm"}},
        {"Ex and Ey by 0.15",
         pgex16,
         data,
         false,
         {{0, 3, 17, 46}, {0, 3, 0, 5.75f}},
         {"\\fiEx V/m", "\\fiEy V/m"}},
        {"zoom: Ez and Er",
         pgex16,
         data,
         true,
         {{0, 2, 8.5f, 23}, {0, 2, 17, 46}},
         {"\\fiEz V/m", "\\fiEr V/m"}},
        {"x and y zero",
         pgex15,
         {{1, 0, 0, 0}, {1, 1, 0, 0}},
         false,
         {{0, 1, 0, 0.1f}},
         {"\\fir mm", "\\fiy mm"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        rec.clear();
        track(c.rows);
        s.logo.ZOOM_Z = c.zoomed;
        s.graph.Z_LOWER = -1;
        s.graph.Z_UPPER = 2.5f;
        c.plot(s);
        ASSERT_EQ(rec.named("pgenv").size(), c.envs.size());
        for (std::size_t k = 0; k < c.envs.size(); ++k)
            EXPECT_TRUE(window_is(env(k), c.envs[k][0], c.envs[k][1], c.envs[k][2], c.envs[k][3]));
        const auto labs = rec.named("pglab");
        ASSERT_EQ(labs.size(), 2u);
        for (std::size_t k = 0; k < 2; ++k) EXPECT_EQ(labs[k]->texts[1], c.ylabels[k]);
    }
    // The last case: the cross section is square, 1.2 times the largest |x| or |y|, 0.1 around zero.
    EXPECT_TRUE(window_is(*rec.named("pgswin").at(0), -0.1f, 0.1f, -0.1f, 0.1f));
    EXPECT_EQ(rec.named("pgvsiz").at(0)->args, (std::vector<double>{0.42f, 2.82f, 0.42f, 2.82f}));
}

TEST_F(ProbePlotsTest, OverlayInOwnAxesOrInItsOwnWindow) {
    s.geometry = {{-1.0f, 3.0f}, {5.0f, 5.0f}, -1.0f, 3.0f, 5.0f, 2};
    s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = true;
    track({{1, 0, -3, 1, 1, 1, 1}, {1, 1, -4, 2, 2, 2, 2}});
    struct Case {
        const Member& m;
        std::vector<std::array<float, 4>> last_envs;  // of the page that is left
        std::vector<float> outline;                   // first ordinate of each outline, in order
        int pages;
    };
    const Case cases[] = {
        // all x negative: x is only lowered to the outline, y only raised
        {kMembers[0], {{-1, 3, -5.5f, -2.4f}, {-1, 3, 0.8f, 5.5f}}, {5, -5, 5, -5}, 2},
        {kMembers[1], {{-1, 3, 0, 5.5f}}, {5}, 2},
        {kMembers[2], {{0, 1, 0.85f, 2.3f}, {0, 1, 0.85f, 2.3f}}, {5, -5, -5, 5}, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.m.name);
        rec.clear();
        c.m.plot(s);
        const auto envs = rec.named("pgenv");
        const std::size_t first = envs.size() - c.last_envs.size();
        ASSERT_EQ(envs.size(), c.pages * c.last_envs.size());
        for (std::size_t k = 0; k < c.last_envs.size(); ++k) {
            const auto& w = c.last_envs[k];
            EXPECT_TRUE(window_is(*envs[first + k], w[0], w[1], w[2], w[3]));
        }
        const auto all = segments(rec);
        const auto lines = rec.named("pgline");
        ASSERT_EQ(lines.size(), 2 * c.pages + c.outline.size());  // a segment per panel and page
        for (std::size_t k = 0; k < c.outline.size(); ++k) {
            EXPECT_EQ(lines[2 * c.pages + k]->ys[0], c.outline[k]);
            EXPECT_EQ(all[2 * c.pages + k].panel, c.m.plot == pgex15 ? 1 : 1 + int(k) / 2);
            EXPECT_EQ(all[2 * c.pages + k].ls, c.pages == 1 ? 2 : 0);  // solid in the plot's own axes
        }
        EXPECT_EQ(rec.named("pgpage").size(), c.m.plot == pgex15 ? 3u : c.pages - 1u);
        EXPECT_EQ(rec.named("pgptxt").size(), 1u);
        // both pages show the same segments
        EXPECT_EQ(all[0].y2, all[c.pages == 2 ? 2 : 0].y2);
    }
}

TEST_F(ProbePlotsTest, NothingToDrawLeavesThePageAndABadRecordRewinds) {
    for (const Member& m : kMembers) {
        SCOPED_TRACE(m.name);
        s.fexist.track_EXISTS = false;
        s.logo.ZOOM_Z = false;
        m.plot(s);
        track({});
        m.plot(s);
        track({{1, 0, 1, 1}, {1, 1, 2, 2}});
        zoom(5, 6);
        m.plot(s);
        track({{101, 0, 1, 1}, {0, 1, 2, 2}});
        s.logo.ZOOM_Z = false;
        m.plot(s);
        EXPECT_TRUE(rec.calls.empty());
        viewer::testing::open_table(s, 15, &Fexist::track_EXISTS, "p.track.001", "1 0 0 0 0 0 0 0\n2 0 x\n");
        EXPECT_THROW(m.plot(s), RecordError);
        EXPECT_EQ(s.unit(15).line_number(), 0);
        rec.clear();
    }
}

// Whole sessions on the bundled run and on every real run with a .track:
// rows 14 to 16 draw their pages, or with no record leave the page of row 1.
TEST(ProbePlotSessions, BundledAndRealRunsDrawOrLeaveThePage) {
    namespace fs = std::filesystem;
    struct Run {
        fs::path dir;
        std::string arg;
        std::vector<int> rows;
        std::size_t frames;
    };
    std::vector<Run> runs = {
        // row 1, then 14 to 16 without and with the outline (row 18 draws 16 again with it)
        {fs::path(VIEWER_SOURCE_DIR) / "examples", "rfgun,1", {1, 14, 15, 16, 18, 14, 15, 16}, 1 + 5 + 2 + 8},
    };
    const fs::path real = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (fs::is_directory(real))
        for (const auto& d : fs::directory_iterator(real))
            for (const auto& e :
                 d.is_directory() ? fs::directory_iterator(d.path()) : fs::directory_iterator()) {
                const std::string name = e.path().filename().string();
                if (auto p = name.find(".track."); p != std::string::npos)
                    runs.push_back(
                        {d.path(), name.substr(0, p) + ",1", {1, 14, 15, 16}, fs::file_size(e) ? 6u : 1u});
            }
    EXPECT_GE(runs.size(), 3u);
    for (const Run& r : runs) {
        SCOPED_TRACE(r.dir.string());
        viewer::testing::Harness h;
        for (const auto& e : fs::directory_iterator(r.dir))
            fs::copy_file(e.path(), h.dir.file(e.path().filename().string()));
        for (int row : r.rows) h.row(row);
        h.row(25);
        EXPECT_EQ(h.run({r.arg}), 0);
        EXPECT_EQ(h.console().find("Error"), std::string::npos) << h.console();
        EXPECT_EQ(h.console().find("Square root"), std::string::npos);
        const int plot = h.session().window.PLOT_DEVICE;
        EXPECT_EQ(h.g.named_on("pgenv", plot).size(), r.frames);
        std::size_t drawn = 0;
        for (auto* line : h.g.named_on("pgline", plot)) {
            drawn += line->xs.size() > 1;
            for (float y : line->ys) EXPECT_TRUE(std::isfinite(y));
        }
        EXPECT_EQ(drawn > 0, r.frames > 1);
    }
}
