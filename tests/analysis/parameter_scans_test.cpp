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
using viewer::testing::Harness;
using viewer::testing::open_table;
using viewer::testing::window_is;

namespace {

struct ScanPlot : ::testing::Test {
    Harness h;
    Session& s = h.session();

    // Free records: parameter, position 10 y, then FOM(k) = k y.
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
        h.g.clear();
        s.window.SELECTION = row;
        pgex301(s, N < 0 ? s.S_PKT : N);
    }
    const GraphicsCall& call(const char* name) const { return *h.g.named(name).at(0); }
};

// Points as sorted pairs: equal parameters may come in either order.
std::vector<std::pair<float, float>> pairs(const std::vector<float>& z, const std::vector<float>& y) {
    std::vector<std::pair<float, float>> p;
    for (std::size_t i = 0; i < z.size(); ++i) p.emplace_back(z[i], y.at(i));
    std::sort(p.begin(), p.end());
    return p;
}

}  // namespace

TEST_F(ScanPlot, RecordsSortedByTheParameterWithZoomRangesAndStatistics) {
    scan({{3, 4}, {1, 2}, {2, 5}, {1, 1}, {0.5f, 3}});
    struct Case {
        int row, N;
        bool zoom;
        std::vector<float> z, y;
    };
    for (const Case& c : {Case{1, -1, false, {0.5f, 1, 1, 2, 3}, {3, 2, 1, 5, 4}},
                          Case{2, -1, false, {0.5f, 1, 1, 2, 3}, {6, 4, 2, 10, 8}},
                          Case{11, -1, false, {0.5f, 1, 1, 2, 3}, {30, 20, 10, 50, 40}},  // the position
                          Case{1, 3, false, {1, 2, 3}, {2, 5, 4}},     // no more records than counted
                          Case{1, -1, true, {1, 1, 2}, {2, 1, 5}}}) {  // the bounds belong to the window
        s.logo.ZOOM_SCAN = c.zoom;
        s.graph.SCAN_LOWER = 1;
        s.graph.SCAN_UPPER = 2;
        draw(c.row, c.N);
        const auto& xs = call("pgline").xs;
        EXPECT_TRUE(std::is_sorted(xs.begin(), xs.end())) << c.row;
        EXPECT_EQ(pairs(xs, call("pgline").ys), pairs(c.z, c.y));
        EXPECT_EQ(call("pgpt").xs, xs);
        EXPECT_EQ(call("pgpt").args.back(), 5);
        const auto [mn, mx] = std::minmax_element(c.y.begin(), c.y.end());
        const float YMAX = *mx + 0.1f * (*mx - *mn);  // a tenth above, a tenth of the raised span below
        EXPECT_TRUE(window_is(call("pgenv"), c.z.front(), c.z.back(), *mn - 0.1f * (YMAX - *mn), YMAX));
    }
    // Beginning and end after sorting; the extremes where first met in the file.
    EXPECT_NE(h.console().find("     beginning:                 " + fmt_d(3) +
                               "\n     end:                       " + fmt_d(4) +
                               "\n     minimum:                   " + fmt_d(1) + "  at z = " + fmt_d(1)),
              std::string::npos);
    s.graph.SCAN_LOWER = 10;  // a window that holds no record: an empty frame
    s.graph.SCAN_UPPER = 20;
    draw(1);
    EXPECT_TRUE(call("pgline").xs.empty());
    EXPECT_TRUE(window_is(call("pgenv"), 1, 2, -0.1f, 0.1f));  // the parameter range of the last drawing
}

TEST_F(ScanPlot, LabelsFromTheFileOncePerRun) {
    struct Case {
        std::string file, row1, row2;  // the texts drawn for rows 1 and 2, joined by '|'
        bool read;                     // a complete group was read
    };
    scan({{1, 1}, {2, 2}});
    for (const Case& c : {Case{"a\nb\nc\n", "a|b|c", "||", true},      // fewer than 11 groups
                          Case{"a\nb\nc\nd\n", "a|b|c", "d||", true},  // ends inside group 2
                          Case{"a\nb\n", "a|b|", "||", false}}) {      // inside group 1
        s.labels = {};
        open_table(s, 21, &Fexist::lab_EXISTS, "p.lab.001", c.file);
        for (auto [row, want] : {std::pair{1, c.row1}, {2, c.row2}}) {
            draw(row);
            const auto& t = call("pglab").texts;
            EXPECT_EQ(std::string(trim_right(t[0])) + "|" + std::string(trim_right(t[1])) + "|" +
                          std::string(trim_right(t[2])),
                      want);
            EXPECT_EQ(t[0].size(), 80u);
        }
        EXPECT_EQ(s.fexist.lab_EXISTS, !c.read);
    }
    s.labels.rec[1].PLOT_TITLE = "typed";  // as "change title" leaves it: the file is not read again
    draw(1);
    EXPECT_EQ(call("pglab").texts[2], pad("typed", 80));
}

TEST_F(ScanPlot, RealScanTables) {
    const auto dir =
        std::filesystem::path(VIEWER_SOURCE_DIR) / ".." / "shared/realdata/fadd-parallelbeam-scan";
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
    EXPECT_EQ(call("pglab").texts[2],
              pad("\\fiVertical trajectory angle vs. position of quadrupole (group) no. 2", 80));
    draw(3);  // zero throughout
    EXPECT_TRUE(window_is(call("pgenv"), xs.front(), xs.back(), -0.1f, 0.1f));
}

TEST(Page3, EveryRowOfTheBundledRunDraws) {
    Harness h("5\nMy title\nx label\ny label\n");
    for (const auto& e : std::filesystem::directory_iterator(std::string(VIEWER_SOURCE_DIR) + "/examples"))
        std::filesystem::copy_file(e.path(), h.dir.file(e.path().filename().string()));
    h.turn_page();
    h.turn_page();
    for (int row = 1; row <= 11; ++row) h.row(row);
    for (int row = 1; row <= 11; ++row) h.right_row(row);
    h.row(15);  // five bins, drawn at once
    h.row(16);  // a title for the histogram on show
    h.row(25);
    EXPECT_EQ(h.run({"rfgun,1"}), 0);
    EXPECT_EQ(h.console().find("Error"), std::string::npos) << h.console();
    EXPECT_EQ(viewer::testing::count_of(h.console(), "     number of runs:     40\n"), 13u);
    EXPECT_NE(h.console().find("     average value:    9.9940E+01\n     rms value:        0.0000E+00\n"),
              std::string::npos);  // Err. FOM(9), the same in every run
    const int plot = h.session().window.PLOT_DEVICE;
    EXPECT_EQ(h.g.named_on("pgenv", plot).size(), 24u);
    EXPECT_EQ(h.g.named_on("pgpt", plot).size(), 11u);
    // Err. FOM(9) is the same in every run: one bar
    EXPECT_EQ(h.g.named_on("pgrect", plot).size(), 2u * (10 * 10 + 1 + 5 + 5));
    EXPECT_EQ(h.g.named_on("pglab", plot).back()->texts,
              (std::vector<std::string>{pad("x label", 80), pad("y label", 80), pad("My title", 80)}));
}
