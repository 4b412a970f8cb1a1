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

WinConfig read_text(const std::string& text, bool* ok = nullptr) {
    WinConfig c;
    std::istringstream in(text);
    bool r = read_win_config(in, c);
    if (ok) *ok = r;
    return c;
}

// Starts the configuration as the session does and ends it again.
void start_and_end(Harness& h) {
    Session& s = h.session();
    set_win_config(s);
    end_prog(s);
}

}  // namespace

TEST(WinConfig, NamelistReading) {
    bool ok = false;
    WinConfig c = read_text("", &ok);
    EXPECT_TRUE(ok);  // an empty file only meets the end: defaults stand
    EXPECT_EQ(c.LINE_WIDTH, 2);
    EXPECT_FLOAT_EQ(c.CHARACTER_HEIGHT, 1.2f);

    c = read_text("&WIN_CONFIG LINE_WIDTH = 3 /\n", &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(c.LINE_WIDTH, 3);
    EXPECT_FLOAT_EQ(c.WIN101_SCALE, 1.0f);

    c = read_text("&win_config\n fixed=.TRUE., character_height=1.5\n win102_scale = 2,\n plot_mode=4 /",
                  &ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(c.FIXED);
    EXPECT_FLOAT_EQ(c.CHARACTER_HEIGHT, 1.5f);
    EXPECT_FLOAT_EQ(c.WIN102_SCALE, 2.0f);
    EXPECT_EQ(c.PLOT_MODE, 4);

    c = read_text("some words first\n&WIN_CONFIG ! a comment\n CONTRA = 0.25 &END\n", &ok);
    EXPECT_TRUE(ok);
    EXPECT_FLOAT_EQ(c.CONTRA, 0.25f);

    c = read_text("&WIN_CONFIG LINE_WIDTH = , CONTRA = 2 BRIGHT = /", &ok);  // null values
    EXPECT_TRUE(ok);
    EXPECT_EQ(c.LINE_WIDTH, 2);
    EXPECT_FLOAT_EQ(c.CONTRA, 2.0f);
    EXPECT_FLOAT_EQ(c.BRIGHT, 0.5f);

    {  // keys before a broken one are taken, as read
        WinConfig partial;
        std::istringstream in("&WIN_CONFIG LINE_WIDTH = 5, BOGUS = 1, PLOT_MODE = 3 /");
        EXPECT_FALSE(read_win_config(in, partial));
        EXPECT_EQ(partial.LINE_WIDTH, 5);
        EXPECT_EQ(partial.PLOT_MODE, 0);
    }

    for (const char* broken : {"&WIN_CONFIG COLOUR = 3 /",         // unknown key
                               "&WIN_CONFIG LINE_WIDTH = two /",   // not a number
                               "&WIN_CONFIG LINE_WIDTH = 2.5 /",   // a real for an integer
                               "&WIN_CONFIG FIXED = maybe /",      // not a truth value
                               "&WIN_CONFIG LINE_WIDTH 3 /",       // no '='
                               "&WIN_CONFIG LINE_WIDTH = 3\n"}) {  // never closed
        WinConfig before;
        std::istringstream in(broken);
        EXPECT_FALSE(read_win_config(in, before)) << broken;
    }
}

TEST(WinConfig, WrittenGroupReadsBack) {
    WinConfig c;
    c.FIXED = false;
    c.LINE_WIDTH = 5;
    c.CHARACTER_HEIGHT = 0.7f;
    c.COLOR_MODE = 1;
    c.CONTRA = 1.0f / 3.0f;
    c.BRIGHT = 0.1f;
    c.PLOT_MODE = 9;
    c.WIN101_SCALE = 2.0f;
    c.WIN102_SCALE = 1.25f;
    std::string text = write_win_config(c);
    EXPECT_EQ(text.rfind("&WIN_CONFIG\n FIXED = F,\n LINE_WIDTH = 5,\n CHARACTER_HEIGHT = 0.7,\n", 0), 0u);
    const char* order[] = {"FIXED",  "LINE_WIDTH", "CHARACTER_HEIGHT", "COLOR_MODE",  "CONTRA",
                           "BRIGHT", "PLOT_MODE",  "WIN101_SCALE",     "WIN102_SCALE"};
    std::size_t at = 0;
    for (const char* key : order) {
        auto p = text.find(key, at);
        ASSERT_NE(p, std::string::npos) << key;
        at = p;
    }
    bool ok = false;
    WinConfig back = read_text(text, &ok);
    EXPECT_TRUE(ok);
    EXPECT_EQ(back.LINE_WIDTH, 5);
    EXPECT_EQ(back.CONTRA, c.CONTRA);  // full float precision
    EXPECT_EQ(back.WIN102_SCALE, 1.25f);
    EXPECT_EQ(back.PLOT_MODE, 9);
}

TEST(WinConfig, SessionEndsWriteOrKeepTheFile) {
    {  // missing: created with the defaults
        Harness h;
        start_and_end(h);
        EXPECT_EQ(h.dir.read("win_config.dat"), write_win_config(WinConfig{}));
        EXPECT_TRUE(h.g.ended);
    }
    {  // empty: the full group is written
        Harness h;
        h.dir.write("win_config.dat", "");
        start_and_end(h);
        EXPECT_EQ(h.dir.read("win_config.dat"), write_win_config(WinConfig{}));
    }
    {  // partial: the key kept, the rest added
        Harness h;
        h.dir.write("win_config.dat", "&WIN_CONFIG\n LINE_WIDTH = 3\n /\n");
        start_and_end(h);
        WinConfig expect;
        expect.LINE_WIDTH = 3;
        EXPECT_EQ(h.session().win_config.LINE_WIDTH, 3);
        EXPECT_EQ(h.dir.read("win_config.dat"), write_win_config(expect));
    }
    {  // locked: byte for byte unchanged
        Harness h;
        const std::string locked = "&WIN_CONFIG  FIXED=T, LINE_WIDTH=4 /   \n";
        h.dir.write("win_config.dat", locked);
        start_and_end(h);
        EXPECT_EQ(h.dir.read("win_config.dat"), locked);
    }
    {  // edited during the session: the edit survives
        Harness h;
        Session& s = h.session();
        set_win_config(s);
        h.dir.write("win_config.dat", "&WIN_CONFIG WIN101_SCALE = 2 /\n");
        end_prog(s);
        EXPECT_FLOAT_EQ(s.win_config.WIN101_SCALE, 2.0f);
        EXPECT_NE(h.dir.read("win_config.dat").find("WIN101_SCALE = 2.0"), std::string::npos);
    }
    {  // broken during the session: overwritten with what memory holds
        Harness h;
        h.dir.write("win_config.dat", "&WIN_CONFIG LINE_WIDTH = 6 /\n");
        Session& s = h.session();
        set_win_config(s);
        h.dir.write("win_config.dat", "&WIN_CONFIG FIXED = T, BOGUS = 1 /\n");
        end_prog(s);
        WinConfig expect;
        expect.LINE_WIDTH = 6;
        EXPECT_EQ(h.dir.read("win_config.dat"), write_win_config(expect));
    }
}

TEST(WinConfig, BrokenFileAtStartStops) {
    Harness h;
    h.dir.write("win_config.dat", "&WIN_CONFIG UNKNOWN_KEY = 1 /\n");
    const std::string before = h.dir.read("win_config.dat");
    int status = h.run({"rfgun"});
    EXPECT_EQ(status, 0);
    EXPECT_EQ(h.console(), "\n          Error reading win_config.dat\n          Program stops\n\n");
    EXPECT_EQ(h.dir.read("win_config.dat"), before);  // a failure leaves the file alone
    EXPECT_FALSE(h.g.ended);
}

TEST(WinConfig, UnwritableDirectoryStillEndsPgplot) {
    if (geteuid() == 0) {
        // root writes anywhere; an unwritable place is a path under a file
        Harness h;
        Session& s = h.session();
        h.dir.write("plain", "x");
        s.dir = h.dir.file("plain");
        end_prog(s);
        EXPECT_TRUE(h.g.ended);
        EXPECT_NE(h.console().find("Cannot write win_config.dat"), std::string::npos);
        return;
    }
    Harness h;
    chmod(h.dir.path.c_str(), 0500);
    Session& s = h.session();
    end_prog(s);
    EXPECT_TRUE(h.g.ended);
    EXPECT_NE(h.console().find("Cannot write win_config.dat"), std::string::npos);
    EXPECT_FALSE(h.dir.exists("win_config.dat.new"));
}

TEST(Windows, OpenWindowSizesAndColours) {
    Harness h;
    h.dir.write("win_config.dat", "&WIN_CONFIG WIN101_SCALE = 2, LINE_WIDTH = 3, CHARACTER_HEIGHT = 1.0 /\n");
    Session& s = h.session();
    open_window(s);
    ASSERT_EQ(h.g.opened.size(), 2u);
    EXPECT_EQ(h.g.opened[0], "102/XWINDOW");
    EXPECT_EQ(h.g.opened[1], "101/XWINDOW");
    auto paps = h.g.named("pgpap");
    ASSERT_EQ(paps.size(), 2u);
    EXPECT_FLOAT_EQ(paps[0]->args[0], 8.0f);
    EXPECT_FLOAT_EQ(paps[0]->args[1], 0.707f);
    EXPECT_FLOAT_EQ(paps[1]->args[0], 5.0f);  // the menu scaled, aspect kept
    EXPECT_FLOAT_EQ(paps[1]->args[1], 2.7f);
    auto widths = h.g.named_on("pgslw", s.window.PLOT_DEVICE);
    ASSERT_FALSE(widths.empty());
    EXPECT_EQ(widths[0]->args[0], 3);
    EXPECT_EQ(h.g.named_on("pgswin", s.window.MENU_DEVICE).back()->args[1], 0.37f);
    EXPECT_EQ(h.g.selected, s.window.MENU_DEVICE);
    auto foot = h.g.named("pgptxt");
    ASSERT_EQ(foot.size(), 1u);
    EXPECT_EQ(foot[0]->texts[0], "PGPLOT");
    EXPECT_EQ(foot[0]->args[3], 1.0);  // right aligned in the corner

    h.g.clear();
    c_pgsubp(s, 3, 3);
    c_pgsubp(s, 1, 2);
    c_pgsubp(s, 2, 2);
    c_pgsubp(s, 1, 1);
    c_pgsubp(s, 4, 1);
    auto heights = h.g.named("pgsch");
    ASSERT_EQ(heights.size(), 4u);  // 4 by 1 leaves the height as it is
    EXPECT_FLOAT_EQ(heights[0]->args[0], 1.25f);
    EXPECT_FLOAT_EQ(heights[1]->args[0], 1.5f);
    EXPECT_FLOAT_EQ(heights[2]->args[0], 1.5f);
    EXPECT_FLOAT_EQ(heights[3]->args[0], 1.0f);
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
    EXPECT_EQ(s.labels.rec[3].PLOT_TITLE, "A very long title that runs beyond forty");
    EXPECT_EQ(s.labels.rec[3].ABSCISSA_LABEL, "");
    EXPECT_EQ(s.labels.rec[3].ORDINATE_LABEL, "Ordinate");
    EXPECT_FALSE(s.fexist.lab_EXISTS);
    EXPECT_NE(h.console().find("     \\d  = subscript & end superscribt\n"), std::string::npos);
    EXPECT_NE(h.console().find("     Label of the ordinate: "), std::string::npos);

    h.input("T\nX\nY\n");
    s.window.LAST_SELECTION = 33;  // right column: second bank
    s.fexist.lab_E_EXISTS = true;
    change_title(s);
    EXPECT_EQ(s.labels.rec[43].PLOT_TITLE, "T");
    EXPECT_FALSE(s.fexist.lab_E_EXISTS);
}
