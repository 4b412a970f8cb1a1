// The extensions of a hardcopy name against the PostScript the library then
// writes: the page's orientation and whether colours are written as colours.
#include "app/hardcopy.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/support/temp_dir.hpp"

using namespace viewer;

TEST(Hardcopy, EachExtensionWritesItsOrientationAndColours) {
    struct Case {
        const char* typed;
        const char* orientation;
        bool colour;
    };
    const Case cases[] = {{"run5", "Landscape", false},    {"run5.ps", "Landscape", false},
                          {"run5.vps", "Portrait", false}, {"run5.cps", "Landscape", true},
                          {"run5.vcps", "Portrait", true}, {"run5.cvps", "Portrait", true}};
    viewer::testing::TempDir dir{"hardcopy"};
    auto pg = make_pgplot_graphics();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.typed);
        const auto dev = device_for_name(c.typed);
        ASSERT_TRUE(dev);
        EXPECT_EQ(dev->colour, c.colour);
        ASSERT_EQ(dev->device.substr(0, 8), "run5.ps/");
        const std::string file = dir.file("run5.ps");
        ASSERT_GT(pg->pgopen(dir.file(dev->device)), 0);
        pg->pgenv(0, 1, 0, 1, 0, 1);
        pg->pgsci(2);
        const float x[] = {0, 1}, y[] = {0, 1};
        pg->pgline(2, x, y);
        pg->pgclos();
        std::stringstream ps;
        ps << std::ifstream(file).rdbuf();
        const std::string text = ps.str();
        EXPECT_NE(text.find(std::string("%%Orientation: ") + c.orientation), std::string::npos);
        // Past the prologue a colour page sets colours with K (red, green, blue), a grey one with G.
        const std::string body = text.substr(text.find("%%EndProlog"));
        EXPECT_EQ(body.find(" K ") != std::string::npos, c.colour);
        EXPECT_EQ(body.find(" G ") != std::string::npos, !c.colour);
    }
    EXPECT_FALSE(device_for_name("run5.gif"));
}

// A picture is written whatever the heap held before its device opened: the
// PNG driver's record would take a stale error flag from a block like this.
TEST(Hardcopy, APictureIsWrittenAfterAStaleBlockOnTheHeap) {
    viewer::testing::TempDir dir{"stale"};
    auto pg = make_pgplot_graphics();
    for (const char* name : {"a.png", "b.png"}) {
        void* stale = std::malloc(0x338);
        ASSERT_NE(stale, nullptr);
        std::memset(stale, 1, 0x338);
        asm volatile("" : : "r"(stale) : "memory");
        std::free(stale);
        ASSERT_GT(pg->pgopen(dir.file(name) + "/PNG"), 0);
        pg->pgenv(0, 1, 0, 1, 0, 1);
        pg->pgclos();
        const std::filesystem::path file = dir.file(name);
        EXPECT_TRUE(std::filesystem::exists(file) && std::filesystem::file_size(file) > 0) << name;
    }
}
