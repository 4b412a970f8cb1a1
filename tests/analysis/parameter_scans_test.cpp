// The parameter-scan plot: records sorted by the scanned parameter, zoom,
// ranges, labels read once from .lab, the real scan tables, and every row of
// page 3 on the bundled run in a whole session.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "analysis/plots.hpp"
#include "core/fortran_format.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::count_of;
using viewer::testing::Harness;
using viewer::testing::open_table;
using viewer::testing::window_is;

namespace {

struct ScanPlot : ::testing::Test {
    Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    // Free records: parameter, position, then FOM(k) = k * y.
    void scan(const std::vector<std::pair<float, float>>& zy) {
        std::ostringstream t;
        for (const auto& [z, y] : zy) {
            t << z << " " << 10 * y;
            for (int k = 1; k <= 10; ++k) t << " " << k * y;
            t << "\n";
        }
        open_table(s, 16, &Fexist::Scan_EXISTS, "p.Scan.001", t.str());
        s.S_PKT = static_cast<int>(zy.size());
    }
    void draw(int row, int N = -1) {
        rec.clear();
        s.window.SELECTION = row;
        pgex301(s, N < 0 ? s.S_PKT : N);
    }
    const GraphicsCall& call(const char* name) const { return *rec.named(name).at(0); }
};

std::vector<std::pair<float, float>> pairs(const std::vector<float>& z, const std::vector<float>& y) {
    std::vector<std::pair<float, float>> p;
    for (std::size_t i = 0; i < z.size() && i < y.size(); ++i) p.emplace_back(z[i], y[i]);
    std::sort(p.begin(), p.end());
    return p;
}

}  // namespace

TEST_F(ScanPlot, RecordsSortedByTheParameterWithZoomAndRanges) {
    scan({{3, 4}, {1, 2}, {2, 5}, {1, 1}, {0.5f, 3}});
    struct Case {
        int row, N;
        bool zoom;
        std::vector<float> z, y;
    };
    const Case cases[] = {
        {1, -1, false, {0.5f, 1, 1, 2, 3}, {3, 2, 1, 5, 4}},  // equal parameters stay adjacent
        {2, -1, false, {0.5f, 1, 1, 2, 3}, {6, 4, 2, 10, 8}},
        {11, -1, false, {0.5f, 1, 1, 2, 3}, {30, 20, 10, 50, 40}},
        {1, 3, false, {1, 2, 3}, {2, 5, 4}},  // no more records than counted
        {1, -1, true, {1, 1, 2}, {2, 1, 5}},  // the bounds belong to the window
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.row);
        s.logo.ZOOM_SCAN = c.zoom;
        s.graph.SCAN_LOWER = 1;
        s.graph.SCAN_UPPER = 2;
        draw(c.row, c.N);
        const auto& xs = call("pgline").xs;
        EXPECT_TRUE(std::is_sorted(xs.begin(), xs.end()));
        EXPECT_EQ(pairs(xs, call("pgline").ys), pairs(c.z, c.y));  // equal parameters in any order
        EXPECT_EQ(call("pgpt").xs, call("pgline").xs);
        EXPECT_EQ(call("pgpt").args.back(), 5);
        const auto [mn, mx] = std::minmax_element(c.y.begin(), c.y.end());
        const float YMAX = *mx + 0.1f * (*mx - *mn);
        EXPECT_TRUE(window_is(call("pgenv"), c.z.front(), c.z.back(), *mn - 0.1f * (YMAX - *mn), YMAX));
    }
}

TEST_F(ScanPlot, StatisticsAfterSortingAndAnEmptyZoom) {
    scan({{3, 4}, {1, 2}, {2, 5}, {1, 1}, {0.5f, 3}});
    draw(1);
    const std::string c = h.console();
    EXPECT_NE(c.find("     beginning:                 " + fmt_d(3) + "\n     end:                       " +
                     fmt_d(4) + "\n     minimum:                   " + fmt_d(1) + "  at z = " + fmt_d(1) +
                     "\n     maximum:                   " + fmt_d(5) + "  at z = " + fmt_d(2) + "\n"),
              std::string::npos)
        << c;
    s.logo.ZOOM_SCAN = true;  // a window that holds no record: an empty frame
    s.graph.SCAN_LOWER = 10;
    s.graph.SCAN_UPPER = 20;
    draw(1);
    EXPECT_EQ(call("pgline").xs.size(), 0u);
    EXPECT_TRUE(window_is(call("pgenv"), 0.5f, 3, -0.1f, 0.1f));  // the parameter range of the last drawing
}

TEST_F(ScanPlot, LabelsFromTheFileOncePerRun) {
    struct Case {
        std::string file;
        std::vector<std::string> row1, row2;
        bool read;  // a complete group was read
    };
    const Case cases[] = {
        {"a\nb\nc\n", {"a", "b", "c"}, {"", "", ""}, true},      // fewer than 11 groups
        {"a\nb\nc\nd\n", {"a", "b", "c"}, {"d", "", ""}, true},  // ends inside group 2
        {"a\nb\n", {"a", "b", ""}, {"", "", ""}, false},         // inside group 1
        {"", {"", "", ""}, {"", "", ""}, false},
    };
    scan({{1, 1}, {2, 2}});
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        s.labels = {};
        open_table(s, 21, &Fexist::lab_EXISTS, "p.lab.001", c.file);
        draw(1);
        auto want = [](const std::vector<std::string>& t) {
            return std::vector<std::string>{pad(t[0], 80), pad(t[1], 80), pad(t[2], 80)};
        };
        EXPECT_EQ(call("pglab").texts, want(c.row1));
        draw(2);
        EXPECT_EQ(call("pglab").texts, want(c.row2));
        EXPECT_EQ(s.fexist.lab_EXISTS, !c.read);
    }
    // A title typed after the file was read stays.
    open_table(s, 21, &Fexist::lab_EXISTS, "p.lab.001", "a\nb\nc\n");
    draw(1);
    s.labels.rec[1].PLOT_TITLE = "typed";
    draw(1);
    EXPECT_EQ(call("pglab").texts[2], pad("typed", 80));
}

TEST_F(ScanPlot, RealScanTables) {
    const auto dir =
        std::filesystem::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata" / "fadd-parallelbeam-scan";
    if (!std::filesystem::is_directory(dir)) GTEST_SKIP() << "no real run tables at " << dir;
    auto text = [&](const char* name) {
        std::ifstream in(dir / name);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    open_table(s, 16, &Fexist::Scan_EXISTS, "p.Scan.001", text("parallelBeam.Scan.001"));
    open_table(s, 21, &Fexist::lab_EXISTS, "p.lab.001", text("parallelBeam.lab.001"));
    s.S_PKT = 100;
    draw(2);
    const std::vector<float> xs = call("pgline").xs;
    ASSERT_EQ(xs.size(), 100u);
    EXPECT_TRUE(std::is_sorted(xs.begin(), xs.end()));
    EXPECT_FLOAT_EQ(xs.front(), 0.3f);
    EXPECT_EQ(call("pglab").texts,
              (std::vector<std::string>{
                  pad("\\fiquadrupole position m", 80), pad("\\fitrajectory angle mrad", 80),
                  pad("\\fiVertical trajectory angle vs. position of quadrupole (group) no. 2", 80)}));
    EXPECT_FALSE(s.fexist.lab_EXISTS);
    draw(3);  // a figure that is zero throughout
    EXPECT_TRUE(window_is(call("pgenv"), xs.front(), xs.back(), -0.1f, 0.1f));
}

TEST(Page3, EveryRowOfTheBundledRunDraws) {
    Harness h("5\nMy title\nx label\ny label\n");
    const std::filesystem::path from = std::filesystem::path(VIEWER_SOURCE_DIR) / "examples";
    for (const auto& e : std::filesystem::directory_iterator(from))
        std::filesystem::copy_file(e.path(), h.dir.file(e.path().filename().string()));
    h.turn_page();
    h.turn_page();
    for (int row = 1; row <= 11; ++row) h.row(row);
    for (int row = 1; row <= 11; ++row) h.right_row(row);
    h.row(15);  // five bins, drawn at once
    h.row(16);  // a title for the histogram on show
    h.row(25);
    EXPECT_EQ(h.run({"rfgun,1"}), 0);
    const std::string c = h.console();
    EXPECT_EQ(c.find("Error"), std::string::npos) << c;
    EXPECT_EQ(count_of(c, "     number of runs:     40\n"), 13u);
    const int plot = h.session().window.PLOT_DEVICE;
    EXPECT_EQ(h.g.named_on("pgenv", plot).size(), 24u);
    EXPECT_EQ(h.g.named_on("pgpt", plot).size(), 11u);
    const auto rects = h.g.named_on("pgrect", plot);
    EXPECT_EQ(rects.size(), 2u * (10 * 10 + 1 + 5 + 5));  // Err. FOM(9) is the same in every run: one bar
    const auto lab = h.g.named_on("pglab", plot);
    EXPECT_EQ(lab.back()->texts,
              (std::vector<std::string>{pad("x label", 80), pad("y label", 80), pad("My title", 80)}));
    EXPECT_EQ(lab[11]->texts[1], pad("\\fioccurence", 80));
}
