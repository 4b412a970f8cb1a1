// Every reader of a zoom window keeps both bounds: on each row of the
// bundled runs, a window whose bounds are abscissae the row draws unzoomed
// draws exactly from the lower to the upper bound, in each family (z,
// phase, scanned parameter, time).
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "app/dialogues.hpp"
#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

// The abscissae of the data of the upper (or only) panel: what is drawn
// there in the window of its frame (the key and the foot draw in windows of
// their own).
std::vector<float> drawn_abscissae(const RecordingGraphics& g) {
    std::vector<float> x;
    std::vector<std::vector<double>> frames;  // the window of each panel's frame
    std::vector<double> window;
    std::size_t panel = 0;
    for (const GraphicsCall& c : g.calls) {
        if (c.name == "pgenv") {
            frames.emplace_back(c.args.begin(), c.args.begin() + 4);
            panel = frames.size();
        }
        if (c.name == "pgpanl") panel = static_cast<std::size_t>(c.args[1]);
        if (c.name == "pgenv" || c.name == "pgswin") window.assign(c.args.begin(), c.args.begin() + 4);
        if (panel != 1 || frames.empty() || window != frames[0]) continue;
        if (c.name == "pgline" || c.name == "pgpt") x.insert(x.end(), c.xs.begin(), c.xs.end());
        if (c.name == "pgrect")
            x.insert(x.end(), {static_cast<float>(c.args[0]), static_cast<float>(c.args[1])});
    }
    return x;
}

}  // namespace

TEST(Zoom, EveryReaderKeepsBothBoundsOfTheWindow) {
    std::set<std::string> families;
    for (const char* run : {"rfgun,1", "rfgun,2", "rfgun,3"}) {
        Harness h;
        for (const auto& e : fs::directory_iterator(fs::path(VIEWER_SOURCE_DIR) / "examples"))
            fs::copy_file(e.path(), h.dir.file(e.path().filename().string()));
        Session& s = h.session();
        s.FNAME = run;
        parse_arguments(s);
        ASSERT_TRUE(load_run(s));
        s.logo.TO_FILE = true;  // no question is asked of a hardcopy
        for (int page = 1; page <= s.window.N_PAGES; ++page)
            for (int code = 1; code <= 17; ++code) {
                const MenuRow* row = find_row(page, code);
                if (!row || !available(*row, s.fexist)) continue;
                SCOPED_TRACE(::testing::Message() << run << " row " << page << ":" << code);
                s.window.PAGE = page;
                page_fill(s);
                const ZoomWindow w = zoom_family(s, page, code);
                auto draw = [&](bool zoomed) {
                    *w.zoomed = zoomed;
                    s.window.SELECTION = code;
                    h.g.clear();
                    dispatch(s);
                    return drawn_abscissae(h.g);
                };
                std::vector<float> all = draw(false);
                std::sort(all.begin(), all.end());
                all.erase(std::unique(all.begin(), all.end()), all.end());
                ASSERT_GE(all.size(), 4u) << "too few abscissae to zoom into";
                const std::size_t k = all.size() / 4;
                *w.lower = all[k];
                *w.upper = all[all.size() - 1 - k];
                const std::vector<float> zoomed = draw(true);
                *w.zoomed = false;
                ASSERT_FALSE(zoomed.empty());
                // A time step takes two clock readings: the first record in the window gives only one.
                const bool clock_first = page == 2 && code == 11;
                EXPECT_EQ(*std::min_element(zoomed.begin(), zoomed.end()),
                          clock_first ? all[k + 1] : *w.lower);
                EXPECT_EQ(*std::max_element(zoomed.begin(), zoomed.end()), *w.upper);
                families.insert(w.lower == &s.graph.Z_LOWER       ? "z"
                                : w.lower == &s.graph.PHASE_LOWER ? "phase"
                                : w.lower == &s.graph.SCAN_LOWER  ? "scan"
                                                                  : "time");
            }
    }
    EXPECT_EQ(families, (std::set<std::string>{"phase", "scan", "time", "z"}));
}
