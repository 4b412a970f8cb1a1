// The probe plots over interleaved .track records, seen as the segments the
// device receives (which points each probe joins, on which panel, in what
// colour and style); their ranges, labels and overlay forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

using Row = std::vector<float>;  // I, Z, X, Y, EZ, ER, BFI; missing fields are 0

// A drawn segment: the panel, colour index and line style in force (0: never
// set), then x1, y1, x2, y2.
using Seg = std::array<float, 7>;

// Panels advance with pgenv and pgpage; pgpanl picks one.
std::vector<Seg> segments(const RecordingGraphics& g) {
    std::vector<Seg> out;
    int panel = 0, ci = 0, ls = 0;
    for (const GraphicsCall& c : g.calls) {
        if (c.name == "pgenv" || c.name == "pgpage") panel = panel % 2 + 1;
        if (c.name == "pgpanl") panel = static_cast<int>(c.args[1]);
        if (c.name == "pgsci") ci = static_cast<int>(c.args[0]);
        if (c.name == "pgsls") ls = static_cast<int>(c.args[0]);
        for (std::size_t k = 1; c.name == "pgline" && k < c.xs.size(); ++k)
            out.push_back({float(panel), float(ci), float(ls), c.xs[k - 1], c.ys[k - 1], c.xs[k], c.ys[k]});
    }
    return out;
}

struct ProbePlots : ::testing::Test {
    Harness h;
    Session& s = h.session();

    // Opens the rows as .track in the zoom window lo..hi, if zoomed, and clears the record.
    void track(const std::vector<Row>& rows, bool zoomed = false, float lo = 0, float hi = 0) {
        std::string t;
        for (const Row& r : rows)  // a status of 0 after the probe number
            for (std::size_t k = 0; k < 8; ++k)
                t += k == 0 ? std::to_string(static_cast<int>(r[0])) + " 0"
                            : (k < 7 ? " " + std::to_string(k < r.size() ? r[k] : 0.0f) : "\n");
        open_table(s, 15, &Fexist::track_EXISTS, "p.track.001", t);
        std::tie(s.logo.ZOOM_Z, s.graph.Z_LOWER, s.graph.Z_UPPER) = std::tuple(zoomed, lo, hi);
        h.g.clear();
    }
};

// What a plot joins: the fields of a record on the upper panel (abscissa,
// ordinate) and on the lower; 7 is the radius of x and y.
struct Member {
    void (*plot)(Session&);
    std::array<std::size_t, 4> fields;
    Seg seg(int p, const Row& a, const Row& b) const {
        auto at = [](const Row& r, std::size_t k) { return k == 7 ? std::hypot(r[2], r[3]) : r[k]; };
        const std::size_t x = fields[2 * (p - 1)], y = fields[2 * (p - 1) + 1];
        return {float(p), 1, 0, at(a, x), at(a, y), at(b, x), at(b, y)};
    }
};
// pgex16: the last field is not zero, so Ex above, Ey below.
const Member kMembers[] = {{pgex14, {1, 2, 1, 3}}, {pgex15, {1, 7, 2, 3}}, {pgex16, {1, 5, 1, 6}}};

}  // namespace

TEST_F(ProbePlots, EachProbeJoinsItsOwnPointsInFileOrderInItsStyleOrNothingIsDrawn) {
    // clang-format off
    const std::vector<Row> rows = {{1, 0, 1, 2, 10, 20, 30}, {2, 0, 3, 4, 11, 21, 31}, {2, 1, 5, 6, 12, 22, 32},
        {1, 1, 7, 8, 13, 23, 33}, {3, 1.5, 9, 9, 14, 24, 34}, {1, 2, 9, 10, 15, 25, 35}, {2, 2, 11, 12, 16, 26, 36}};
    const struct {
        std::vector<Row> rows; bool zoomed; float lo, hi;
        std::vector<std::array<int, 2>> joins;  // rows joined, in file order
        bool page;  // a page is drawn
    } cases[] = {
        {rows, false, 0, 0, {{1, 2}, {0, 3}, {3, 5}, {2, 6}}, true},  // probe 3 has one record: no line
        {rows, true, 0.5f, 2.5f, {{3, 5}, {2, 6}}, true},  // a probe starts at its first record in the window
        {rows, true, 1.5f, 1.5f, {}, true},  // the lone record in the window: a frame, no line
        {rows, true, 5, 6, {}, false}, {{}, false, 0, 0, {}, false},
        {{{101, 0}, {0, 1}}, false, 0, 0, {}, false},  // no probe number in range
    };
    // clang-format on
    for (const Member& m : kMembers) {
        for (const auto& c : cases) {
            SCOPED_TRACE(::testing::Message() << (&m - kMembers) << " case " << (&c - cases));
            track(c.rows, c.zoomed, c.lo, c.hi);
            m.plot(s);
            EXPECT_EQ(h.g.named("pgptxt").size(), c.page ? 1u : 0u);  // the page foot
            EXPECT_EQ(h.g.calls.empty(), !c.page);
            std::vector<Seg> want;  // the upper panel, then the lower
            for (int p : {1, 2})
                for (auto [a, b] : c.joins) want.push_back(m.seg(p, c.rows[a], c.rows[b]));
            EXPECT_EQ(segments(h.g), want);
        }
        // A record out of range is not counted, yet it uses up the count of the
        // drawing pass of pgex15 and pgex16: their last records stay undrawn.
        track({{1, 0}, {101, 0.5f}, {0, 0.7f}, {1, 1}, {1, 2}, {1, 3}});
        m.plot(s);
        EXPECT_EQ(segments(h.g).size(), m.plot == pgex14 ? 6u : 2u);
    }
    // In colour the style of a multiple of 15 stays for the probes after it;
    // 101 and 0 draw nothing. What was drawn before the first style is set
    // goes to both panels first.
    std::vector<Row> probes;
    for (float z : {0.0f, 1.0f})
        for (int p : {1, 14, 15, 16, 30, 75, 90, 101, 0}) probes.push_back({float(p), z, z, z, 0, 0, 1});
    track(probes);
    s.logo.COLOUR = true;
    pgex14(s);
    std::vector<std::array<float, 3>> got;  // panel, colour index, line style
    for (const Seg& g : segments(h.g)) got.push_back({g[0], g[1], g[2]});
    // clang-format off
    EXPECT_EQ(got, (std::vector<std::array<float, 3>>{{1, 1, 0}, {1, 14, 0}, {2, 1, 0}, {2, 14, 0}, {1, 15, 2}, {1, 1, 2},
        {1, 15, 3}, {1, 15, 1}, {1, 15, 2}, {2, 15, 2}, {2, 1, 2}, {2, 15, 3}, {2, 15, 1}, {2, 15, 2}}));
    // clang-format on
}

// Windows and labels by margins, zoom and the kind of field; with the
// outline: pgex14 and pgex15 draw the page again in ranges widened to it and
// lay it in their own axes, pgex16 in a window of its own, dashed.
TEST_F(ProbePlots, RangesLabelsAndOverlay) {
    // clang-format off
    const std::vector<Row> data = {{1, 0, 1, 2, 10, 20, 0}, {1, 2, 11, -12, 20, 40, 0}, {2, 3, 1, 1, 10, 20, -5}},
                           neg = {{1, 0, -3, 1, 1, 1, 1}, {1, 1, -4, 2, 2, 2, 2}};  // all x negative
    const std::vector<std::string> xy = {"\\fix mm", "\\fiy mm"}, ry = {"\\fir mm", "\\fiy mm"};
    s.geometry = {{-1.0f, 3.0f}, {5.0f, 5.0f}, -1.0f, 3.0f, 5.0f, 2};
    const struct {
        void (*plot)(Session&); std::vector<Row> rows; bool zoomed, outline;  // zoomed to -1 .. 2.5
        std::vector<std::array<float, 4>> envs; std::vector<std::string> ylabels;
        std::vector<Seg> tail;  // the outline, after the curves
        std::size_t segs;       // all
    } cases[] = {
        {pgex14, data, false, false, {{0, 3, 0.8f, 13.2f}, {0, 3, -14.4f, 2.4f}}, xy, {}, 2},
        {pgex14, data, true, false, {{0, 2, 0.8f, 13.2f}, {0, 2, -14.4f, 2.4f}}, xy, {}, 2},
        {pgex15, data, true, false, {{-1, 2.5f, 0, 1.2f * std::sqrt(265.0f)}}, ry, {}, 2},  // the zoom window itself
        {pgex16, data, false, false, {{0, 3, 17, 46}, {0, 3, -5.75f, 0}}, {"\\fiEx V/m", "\\fiEy V/m"}, {}, 2},
        {pgex16, data, true, false, {{0, 2, 8.5f, 23}, {0, 2, 17, 46}}, {"\\fiEz V/m", "\\fiEr V/m"}, {}, 2},
        // x is only lowered to the outline, y only raised; both panels mirrored, solid
        {pgex14, neg, false, true, {{0, 1, -4.8f, -2.4f}, {0, 1, 0.8f, 2.4f}, {-1, 3, -5.5f, -2.4f}, {-1, 3, 0.8f, 5.5f}}, xy,
         {{1, 1, 0, -1, 5, 3, 5}, {1, 1, 0, -1, -5, 3, -5}, {2, 1, 0, -1, 5, 3, 5}, {2, 1, 0, -1, -5, 3, -5}}, 8},
        {pgex15, neg, false, true, {{0, 1, 0, 1.2f * std::sqrt(20.0f)}, {-1, 3, 0, 5.5f}}, ry, {{1, 1, 1, -1, 5, 3, 5}}, 5},
        {pgex16, neg, false, true, {{0, 1, 0.85f, 2.3f}, {0, 1, 0.85f, 2.3f}}, {"\\fiEx V/m", "\\fiEy V/m"},
         {{1, 1, 2, -1, 5, 3, 5}, {1, 1, 2, -1, -5, 3, -5}, {2, 1, 2, -1, -5, 3, -5}, {2, 1, 2, -1, 5, 3, 5}}, 6},
        {pgex15, {{1, 0}, {1, 1}}, false, false, {{0, 1, 0, 0.1f}}, ry, {}, 2},  // x and y all zero
        // clang-format on
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = c.outline;
        track(c.rows, c.zoomed, -1, 2.5f);
        c.plot(s);
        const auto envs = h.g.named("pgenv"), labs = h.g.named("pglab");
        ASSERT_EQ(envs.size(), c.envs.size());
        for (std::size_t k = 0; k < envs.size(); ++k)
            EXPECT_TRUE(window_is(*envs[k], c.envs[k][0], c.envs[k][1], c.envs[k][2], c.envs[k][3])) << k;
        EXPECT_TRUE(labs.at(0)->texts[1] == c.ylabels[0] && labs.at(1)->texts[1] == c.ylabels[1]);
        const auto all = segments(h.g);
        EXPECT_TRUE(all.size() == c.segs &&
                    std::equal(c.tail.begin(), c.tail.end(), all.end() - static_cast<long>(c.tail.size())));
    }
    // The last case: a square cross section of 2.4 inches, 0.1 around zero.
    EXPECT_TRUE(window_is(*h.g.named("pgswin").at(0), -0.1f, 0.1f, -0.1f, 0.1f));
    EXPECT_EQ(h.g.named("pgvsiz").at(0)->args, (std::vector<double>{0.42f, 2.82f, 0.42f, 2.82f}));
}
