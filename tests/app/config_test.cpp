// win_config.dat: reading, writing, locking, breaking, and the windows it shapes.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(WinConfig, NamelistReading) {
    struct Case {
        const char* text;
        bool ok;
        Edit expect;  // the defaults changed as the text should; null: not checked
    };
    const Case cases[] = {
        {"", true, [](WinConfig&) {}},  // an empty file only meets the end: defaults stand
        {"&WIN_CONFIG LINE_WIDTH = 3 /\n", true, [](WinConfig& c) { c.LINE_WIDTH = 3; }},
        {"&win_config\n fixed=.TRUE., character_height=1.5\n win102_scale = 2,\n plot_mode=4 /", true,
         [](WinConfig& c) {
             c.FIXED = true, c.CHARACTER_HEIGHT = 1.5f, c.WIN102_SCALE = 2, c.PLOT_MODE = 4;
         }},
        {"some words first\n&WIN_CONFIG ! a comment\n CONTRA = 0.25 &END\n", true,
         [](WinConfig& c) { c.CONTRA = 0.25f; }},
        {"&WIN_CONFIG LINE_WIDTH = , CONTRA = 2 BRIGHT = /", true, [](WinConfig& c) { c.CONTRA = 2; }},
        // keys before a broken one are taken, as read
        {"&WIN_CONFIG LINE_WIDTH = 5, BOGUS = 1, PLOT_MODE = 3 /", false,
         [](WinConfig& c) { c.LINE_WIDTH = 5; }},
        {"&WIN_CONFIG COLOUR = 3 /", false, nullptr},
        {"&WIN_CONFIG LINE_WIDTH = two /", false, nullptr},
        {"&WIN_CONFIG LINE_WIDTH = 2.5 /", false, nullptr},  // a real for an integer
        {"&WIN_CONFIG FIXED = maybe /", false, nullptr},
        {"&WIN_CONFIG LINE_WIDTH 3 /", false, nullptr},
        {"&WIN_CONFIG LINE_WIDTH = 3\n", false, nullptr},  // never closed
    };
    for (const Case& c : cases) {
        WinConfig got;
        std::istringstream in(c.text);
        EXPECT_EQ(read_win_config(in, got), c.ok) << c.text;
        EXPECT_TRUE(!c.expect || write_win_config(got) == group(c.expect)) << c.text;
    }
}

TEST(WinConfig, WrittenGroupReadsBack) {
    const WinConfig c{false, 5, 0.7f, 1, 1.0f / 3.0f, 0.1f, 9, 2.0f, 1.25f};
    const std::string text = write_win_config(c);
    EXPECT_EQ(text.substr(0, text.find(" CONTRA")),
              "&WIN_CONFIG\n FIXED = F,\n LINE_WIDTH = 5,\n CHARACTER_HEIGHT = 0.7,\n COLOR_MODE = 1,\n");
    EXPECT_EQ(text.substr(text.find(" BRIGHT")),
              " BRIGHT = 0.1,\n PLOT_MODE = 9,\n WIN101_SCALE = 2.0,\n WIN102_SCALE = 1.25,\n /\n");
    WinConfig back;
    std::istringstream in(text);
    EXPECT_TRUE(read_win_config(in, back));
    EXPECT_EQ(back.CONTRA, c.CONTRA);  // full float precision
    EXPECT_EQ(write_win_config(back), text);
}

TEST(WinConfig, SessionEndsWriteOrKeepTheFile) {
    const std::string locked = "&WIN_CONFIG  FIXED=T, LINE_WIDTH=4 /   \n";
    struct Case {
        const char* before;  // at the start, null: missing
        const char* during;  // written during the session, or null
        std::string after;
    };
    const Case cases[] = {
        {nullptr, nullptr, group(nullptr)},  // created with the defaults
        {"", nullptr, group(nullptr)},       // the full group written
        {"&WIN_CONFIG\n LINE_WIDTH = 3\n /\n", nullptr, group([](WinConfig& c) { c.LINE_WIDTH = 3; })},
        {locked.c_str(), nullptr, locked},  // byte for byte unchanged
        {nullptr, "&WIN_CONFIG WIN101_SCALE = 2 /\n", group([](WinConfig& c) { c.WIN101_SCALE = 2; })},
        // broken during the session: overwritten with what memory holds
        {"&WIN_CONFIG LINE_WIDTH = 6 /\n", "&WIN_CONFIG FIXED = T, BOGUS = 1 /\n",
         group([](WinConfig& c) { c.LINE_WIDTH = 6; })},
    };
    for (const Case& c : cases) {
        Harness h;
        if (c.before) h.dir.write("win_config.dat", c.before);
        Session& s = h.session();
        set_win_config(s);
        if (c.during) h.dir.write("win_config.dat", c.during);
        end_prog(s);
        EXPECT_EQ(h.dir.read("win_config.dat"), c.after);
        EXPECT_TRUE(c.before == locked.c_str() ||
                    write_win_config(s.win_config) == c.after);  // in memory too
        EXPECT_TRUE(h.g.ended);
        EXPECT_EQ(h.console(), "");
    }
}

TEST(WinConfig, BrokenFileAtStartStops) {
    Harness h;
    h.dir.write("win_config.dat", "&WIN_CONFIG UNKNOWN_KEY = 1 /\n");
    EXPECT_EQ(h.run({"rfgun"}), 0);
    EXPECT_EQ(h.console(), "\n          Error reading win_config.dat\n          Program stops\n\n");
    EXPECT_EQ(h.dir.read("win_config.dat"), "&WIN_CONFIG UNKNOWN_KEY = 1 /\n");  // left alone
    EXPECT_FALSE(h.g.ended);
}

TEST(WinConfig, UnwritableDirectoryStillEndsPgplot) {
    Harness h;
    Session& s = h.session();
    if (geteuid() == 0) {  // root writes anywhere; an unwritable place is a path under a file
        h.dir.write("plain", "x");
        s.dir = h.dir.file("plain");
    } else {
        chmod(h.dir.path.c_str(), 0500);
    }
    end_prog(s);
    EXPECT_TRUE(h.g.ended);
    EXPECT_EQ(h.console().rfind("\n     Cannot write win_config.dat: ", 0), 0u) << h.console();
    EXPECT_FALSE(h.dir.exists("win_config.dat.new"));
}

TEST(Windows, OpenWindowSizesAndColours) {
    Harness h;
    h.dir.write("win_config.dat", "&WIN_CONFIG WIN101_SCALE = 2, LINE_WIDTH = 3, CHARACTER_HEIGHT = 1.0 /\n");
    Session& s = h.session();
    open_window(s);
    EXPECT_EQ(h.g.opened, (std::vector<std::string>{"102/XWINDOW", "101/XWINDOW"}));
    auto paps = h.g.named("pgpap");
    ASSERT_EQ(paps.size(), 2u);
    EXPECT_EQ(paps[0]->args, (std::vector<double>{8.0f, 0.707f}));
    EXPECT_EQ(paps[1]->args, (std::vector<double>{5.0f, 2.7f}));  // the menu scaled, aspect kept
    EXPECT_EQ(h.g.named_on("pgslw", s.window.PLOT_DEVICE).at(0)->args[0], 3);
    EXPECT_EQ(h.g.named_on("pgswin", s.window.MENU_DEVICE).back()->args[1], 0.37f);
    EXPECT_EQ(h.g.selected, s.window.MENU_DEVICE);
    auto foot = h.g.named("pgptxt");
    ASSERT_EQ(foot.size(), 1u);
    EXPECT_EQ(foot[0]->texts[0], "PGPLOT");
    EXPECT_EQ(foot[0]->args[3], 1.0);  // right aligned in the corner

    h.g.clear();
    for (auto [nx, ny] : {std::pair{3, 3}, {1, 2}, {2, 2}, {1, 1}, {4, 1}}) c_pgsubp(s, nx, ny);
    std::vector<double> heights;  // 4 by 1 leaves the height as it is
    for (auto* c : h.g.named("pgsch")) heights.push_back(c->args[0]);
    EXPECT_EQ(heights, (std::vector<double>{1.25, 1.5, 1.5, 1.0}));
    EXPECT_EQ(h.g.named("pgsubp").size(), 5u);
}

TEST(Windows, ChangeTitle) {
    Harness h("A very long title that runs beyond forty characters\n\nOrdinate\n");
    Session& s = h.session();
    s.window.LAST_SELECTION = 0;
    change_title(s);
    EXPECT_EQ(h.console(), "");  // no plot on show: nothing asked

    s.window.LAST_SELECTION = 3;
    s.fexist.lab_EXISTS = true;
    change_title(s);
    const auto& rec = s.labels.rec[3];
    EXPECT_EQ(rec.PLOT_TITLE, "A very long title that runs beyond forty");
    EXPECT_EQ(rec.ABSCISSA_LABEL, "");
    EXPECT_EQ(rec.ORDINATE_LABEL, "Ordinate");
    EXPECT_FALSE(s.fexist.lab_EXISTS);
    EXPECT_TRUE(viewer::testing::has(h.console(), "     \\d  = subscript & end superscribt\n"));
    EXPECT_TRUE(viewer::testing::has(h.console(), "     Label of the ordinate: "));

    h.input("T\nX\nY\n");
    s.window.LAST_SELECTION = 33;  // right column: second bank
    s.fexist.lab_E_EXISTS = true;
    change_title(s);
    EXPECT_EQ(s.labels.rec[43].PLOT_TITLE, "T");
    EXPECT_FALSE(s.fexist.lab_E_EXISTS);
}
