// win_config.dat: reading, writing, locking, breaking, and the windows it shapes.
#include <gtest/gtest.h>

#include <sstream>

#include "app/windows.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

namespace {

using Edit = void (*)(WinConfig&);

// The group written for the defaults changed by `edit`.
std::string group(Edit edit) {
    WinConfig c;
    if (edit) edit(c);
    return write_win_config(c);
}

}  // namespace

TEST(WinConfig, ReadingAndWriting) {
    // clang-format off
    const std::tuple<const char*, bool, Edit> cases[] = {  // text, read, the defaults changed as read
        {"", true, [](WinConfig&) {}},  // only the end of the file: defaults stand
        {"&win_config\n fixed=.TRUE., character_height=1.5\n plot_mode=4 /", true,
         [](WinConfig& c) { c.FIXED = true, c.CHARACTER_HEIGHT = 1.5f, c.PLOT_MODE = 4; }},
        {"words first\n&WIN_CONFIG ! a comment\n CONTRA = 0.25 &END\n", true, [](WinConfig& c) { c.CONTRA = 0.25f; }},
        {"&WIN_CONFIG LINE_WIDTH = , CONTRA = 2 BRIGHT = /", true, [](WinConfig& c) { c.CONTRA = 2; }},
        // keys before a broken one are taken, as a namelist read does
        {"&WIN_CONFIG LINE_WIDTH = 5, BOGUS = 1, PLOT_MODE = 3 /", false, [](WinConfig& c) { c.LINE_WIDTH = 5; }},
        // a real for an integer, not a truth value, no equals sign, never closed
        {"&WIN_CONFIG LINE_WIDTH = 2.5 /", false, nullptr}, {"&WIN_CONFIG FIXED = maybe /", false, nullptr},
        {"&WIN_CONFIG LINE_WIDTH 3 /", false, nullptr}, {"&WIN_CONFIG LINE_WIDTH = 3\n", false, nullptr},
    };
    // clang-format on
    for (auto [text, ok, edit] : cases) {
        WinConfig got;
        std::istringstream in(text);
        EXPECT_EQ(read_win_config(in, got), ok) << text;
        EXPECT_TRUE(!edit || write_win_config(got) == group(edit)) << text;
    }
    // every digit a float needs
    EXPECT_EQ(write_win_config({false, 5, 0.7f, 1, 1.0f / 3.0f, 0.1f, 9, 2.0f, 1.25f}),
              "&WIN_CONFIG\n FIXED = F,\n LINE_WIDTH = 5,\n CHARACTER_HEIGHT = 0.7,\n COLOR_MODE = 1,\n"
              " CONTRA = 0.33333334,\n BRIGHT = 0.1,\n PLOT_MODE = 9,\n WIN101_SCALE = 2.0,\n"
              " WIN102_SCALE = 1.25,\n /\n");
}

TEST(WinConfig, SessionEndsWriteOrKeepTheFile) {
    const std::string locked = "&WIN_CONFIG  FIXED=T, LINE_WIDTH=4 /   \n",
                      bad = "&WIN_CONFIG UNKNOWN_KEY = 1 /\n";
    // clang-format off
    const std::tuple<const char*, const char*, std::string> cases[] = {  // at the start, during, at the end
        {nullptr, nullptr, group(nullptr)},  // created with the defaults
        {locked.c_str(), nullptr, locked},   // byte for byte unchanged
        {nullptr, "&WIN_CONFIG WIN101_SCALE = 2 /\n", group([](WinConfig& c) { c.WIN101_SCALE = 2; })},
        // broken during the session: overwritten with what memory holds
        {"&WIN_CONFIG LINE_WIDTH = 6 /\n", "&WIN_CONFIG FIXED = T, BOGUS = 1 /\n",
         group([](WinConfig& c) { c.LINE_WIDTH = 6; })},
    };
    // clang-format on
    for (auto [before, during, after] : cases) {
        Harness h;
        if (before) h.dir.write("win_config.dat", before);
        set_win_config(h.session());
        if (during) h.dir.write("win_config.dat", during);
        end_prog(h.session());
        EXPECT_EQ(h.dir.read("win_config.dat"), after);
        EXPECT_TRUE(h.g.ended && h.console().empty());
    }

    Harness broken;  // at the start: the session stops and leaves the file alone
    broken.dir.write("win_config.dat", bad);
    EXPECT_EQ(broken.run({"rfgun"}), 0);
    EXPECT_EQ(broken.console(), "\n          Error reading win_config.dat\n          Program stops\n\n");
    EXPECT_EQ(std::pair(broken.dir.read("win_config.dat"), broken.g.ended), std::pair(bad, false));

    Harness h;  // nowhere to write: said, and PGPLOT still ended
    h.session().dir = h.dir.file("nodir");
    end_prog(h.session());
    EXPECT_TRUE(h.g.ended);
    EXPECT_EQ(h.console().rfind("\n     Cannot write win_config.dat: ", 0), 0u) << h.console();
}

TEST(WinConfig, ShapesTheWindows) {
    Harness h;
    h.dir.write("win_config.dat", "&WIN_CONFIG WIN101_SCALE = 2, LINE_WIDTH = 3 /\n");
    open_window(h.session());
    EXPECT_EQ(h.g.opened, (std::vector<std::string>{"102/XWINDOW", "101/XWINDOW"}));
    std::vector<double> paps;  // the menu scaled, its aspect kept
    for (auto* c : h.g.named("pgpap")) paps.insert(paps.end(), c->args.begin(), c->args.end());
    EXPECT_EQ(paps, (std::vector<double>{8.0f, 0.707f, 5.0f, 2.7f}));
    EXPECT_EQ(h.g.named_on("pgslw", h.session().window.PLOT_DEVICE).at(0)->args[0], 3);
}
