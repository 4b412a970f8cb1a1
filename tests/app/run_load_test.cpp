// The run named on the command line and the tables loaded for it.
#include "app/run_load.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>

#include "app/startup.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

TEST(RunLoad, ArgumentForms) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        // typed, project|run, complaint
        {"rfgun.", "rfgun|.001", nullptr},
        {"rfgun.,12", "rfgun|.012", nullptr},
        {"rfgun,0123", "rfgun|.012", nullptr},   // only three characters behind the comma count
        {"a.b,3", "a.b|.003", nullptr},          // an inner dot stays
        {",5", "|.005", nullptr},                // an empty project: names begin with the suffix
        {"  other,3", "other|.003", nullptr},    // typed with leading blanks
        {"rfgun 12", "rfgun|.001", nullptr},     // the project ends at the first blank
        {"my proj,3", "my proj|.003", nullptr},  // before a comma the blanks stay
        {"rfgun,000", "rfgun|.000", nullptr},
        {"rfgun,abc", "rfgun|.001", "abc"},
        {"rfgun,-5", "rfgun|.001", "-5"},
    };
    for (auto [typed, want, complaint] : cases) {
        Harness h;
        Session& s = h.session();
        s.FNAME = typed;
        parse_arguments(s);
        EXPECT_EQ(s.chara.PROJECT + "|" + s.chara.RUN, want);
        EXPECT_EQ(s.chara.RUN, "." + run_digits(s.RUN_NUMBER)) << typed;
        EXPECT_EQ(h.console(), complaint ? "\n     Run number not understood: \"" + std::string(complaint) +
                                               "\", run 001 is used\n"
                                         : "");
    }
}

TEST(RunLoad, WhatCountsAsDataAndWhichTableTakesAUnit) {
    struct Case {
        const char* kinds;  // tables of p, run 001, the i-th holding the number i
        bool data;
        int pages, unit;  // and the number first read on that unit
        float first;
    };
    const Case cases[] = {
        {"", false, 4, 0, 0},
        {"Xemit", false, 4, 10, 1},  // .Xemit alone is no data
        {"lab lab-E Sigma Xemit2 Yemit2 Zemit2", false, 5, 0, 0},
        {"Xemit Yemit", true, 4, 11, 2},
        // .Sub_emit before .Cr_emit on unit 19; .C99emit takes unit 23 over from .Cemit
        {"Cr_emit Sub_emit Cemit C99emit", true, 4, 23, 4},
        {"Cr_emit Sub_emit", true, 4, 19, 2},
        {"Cr_emit", true, 4, 19, 1},
    };
    for (const Case& c : cases) {
        Harness h;
        Session& s = h.session();
        s.chara.PROJECT = "p";
        s.chara.RUN = ".001";
        std::istringstream kinds(c.kinds);
        int i = 0;
        for (std::string k; kinds >> k;)
            h.dir.write("p." + k + ".001", viewer::testing::fixed_record({++i + 0.0}));
        EXPECT_EQ(load_run(s), c.data) << c.kinds;
        EXPECT_EQ(s.window.N_PAGES, c.pages) << c.kinds;
        EXPECT_FALSE(s.fexist.Cr_emit_EXISTS && s.fexist.Sub_emit_EXISTS);
        float first = 0;
        EXPECT_EQ(c.unit && read_fixed(s.unit(c.unit), std::span<float>(&first, 1)), c.unit > 0) << c.kinds;
        EXPECT_EQ(first, c.first) << c.kinds;
    }
}

TEST(RunLoad, RecordCounts) {
    std::string binary;  // three records framed by their length; an H in the first item marks no text
    const std::uint32_t len = 72;
    const std::string frame(reinterpret_cast<const char*>(&len), 4);
    for (int rec = 0; rec < 3; ++rec) binary += frame + "HEADER" + std::string(66, '\0') + frame;
    const std::tuple<const char*, std::string, int> cases[] = {
        {"blank lines are no records", "0 0 1\n\n   \n0.1 0 1\n0.2,0,1\n", 3},
        {"empty", "", 0},
        {"binary", binary, 3},
        {"neither text nor whole binary records", "Hello\n", -1},
    };
    for (auto [why, text, want] : cases) {
        Harness h;
        h.dir.write("t.dat", text);
        int count = -1;
        try {
            get_size(h.session(), "t.dat", count);
        } catch (const ProgramStop&) {  // the count is left as it was
        }
        EXPECT_EQ(count, want) << why;
        EXPECT_EQ(h.console(),
                  want < 0 ? "          Error while reading file: t.dat\n          Program stops\n" : "");
    }
}
