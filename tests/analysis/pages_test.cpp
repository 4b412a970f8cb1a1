// Every row of pages 2 to 5 in whole sessions, on the bundled run and on the
// real run tables: each row draws its frame, without a stop or a prompt,
// and the rows with tables draw curves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <set>

#include "core/run_catalogue.hpp"
#include "tests/analysis/analysis_fixture.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

void check_pages(const fs::path& from, const std::string& run) {
    std::set<Kind> kinds;  // of the tables of the run that hold anything
    std::string project;
    for (const auto& e : fs::directory_iterator(from))
        if (const RunKind* k = kind_of_stem(e.path().stem().string())) {
            project =
                e.path().stem().string().substr(0, e.path().stem().string().size() - std::strlen(k->suffix));
            if (e.path().extension() == "." + run && fs::file_size(e.path()) > 0) kinds.insert(k->kind);
        }
    auto has = [&](Kind k) { return kinds.count(k) > 0; };
    const Kind four[] = {Kind::Xemit2,  Kind::Yemit2,  Kind::Zemit2,   Kind::TRemit, Kind::Cemit,
                         Kind::C99emit, Kind::Cr_emit, Kind::Sub_emit, Kind::Cathode};
    // The frames of pages 2 to 5 (a row without its tables draws an empty
    // one) and the least number of curves of more than one point: two a
    // Twiss row, five scaling factors, a curve a scan.
    const int rows[] = {15, 11, 17, 5}, frames[] = {14, 11 + 11 * has(Kind::Error), 17, 5};
    const int least[] = {8 * has(Kind::Zemit) + 5 * has(Kind::tcheck) + 4 * has(Kind::PScan),
                         11 * has(Kind::Scan), std::any_of(std::begin(four), std::end(four), has), 1};
    for (int page = 2; page <= (has(Kind::Sigma) ? 5 : 4); ++page) {
        SCOPED_TRACE(::testing::Message() << from << " " << project << run << " page " << page);
        Harness h;  // draws every row of the page (both columns of page 3) and ends
        for (const auto& e : fs::directory_iterator(from))
            fs::copy_file(e.path(), h.dir.file(e.path().filename().string()));
        for (int turn = 1; turn < page; ++turn) h.turn_page();
        for (int row = 1; row <= rows[page - 2]; ++row) h.row(row);
        for (int row = 1; row <= 11 && page == 3; ++row) h.right_row(row);
        h.row(25);
        EXPECT_EQ(h.run({project + "," + run}), 0);
        const std::string c = h.console();
        for (const char* bad : {"Error", "Program stops", "Enter"}) EXPECT_EQ(c.find(bad), c.npos) << c;
        const int device = h.session().window.PLOT_DEVICE;
        EXPECT_EQ(h.g.named_on("pgenv", device).size(), static_cast<std::size_t>(frames[page - 2]));
        int curves = 0;
        for (auto* line : h.g.named_on("pgline", device)) {
            curves += line->args[0] > 1;
            for (float y : line->ys) EXPECT_TRUE(page < 4 || std::isfinite(y));
        }
        EXPECT_GE(curves, least[page - 2]);
        EXPECT_EQ(curves > 0, least[page - 2] > 0);
        EXPECT_EQ(count_of(c, "     number of runs:"), page == 3 && has(Kind::Error) ? 11u : 0u);
    }
}

}  // namespace

TEST(Pages, EveryRowOfPagesTwoToFiveOnTheBundledAndRealRuns) {
    for (const char* run : {"001", "002", "003"}) check_pages(fs::path(VIEWER_SOURCE_DIR) / "examples", run);
    const fs::path real = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!fs::is_directory(real)) GTEST_SKIP() << "no real run tables at " << real;
    for (const auto& dir : fs::directory_iterator(real))
        if (dir.is_directory()) check_pages(dir.path(), "001");
}
