// The run named on the command line, the tables loaded for it and their record counts.
#include "app/run_load.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>

#include "app/startup.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

TEST(RunLoad, ArgumentForms) {
    // typed, project|run, the run number not understood. Only three characters behind the comma
    // count; an inner dot stays; the project ends at the first blank, but before a comma blanks stay.
    // clang-format off
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"rfgun.", "rfgun|.001", nullptr}, {"rfgun.,12", "rfgun|.012", nullptr}, {"rfgun,000", "rfgun|.000", nullptr},
        {"rfgun,0123", "rfgun|.012", nullptr}, {"a.b,3", "a.b|.003", nullptr}, {"  other,3", "other|.003", nullptr},
        {"rfgun 12", "rfgun|.001", nullptr}, {"my proj,3", "my proj|.003", nullptr},
        {"rfgun,abc", "rfgun|.001", "abc"}, {"rfgun,-5", "rfgun|.001", "-5"},
    };
    // clang-format on
    for (auto [typed, want, complaint] : cases) {
        SCOPED_TRACE(typed);
        Harness h;
        Session& s = h.session();
        s.FNAME = typed;
        parse_arguments(s);
        EXPECT_EQ(s.chara.PROJECT + "|" + s.chara.RUN, want);
        EXPECT_EQ(s.chara.RUN, "." + run_digits(s.RUN_NUMBER));
        const std::string said = complaint ? "\"" + std::string(complaint) + "\", run 001 is used\n" : "";
        EXPECT_EQ(h.console(), (complaint ? "\n     Run number not understood: " : "") + said);
    }
}

// Which tables make a run with data, the pages, and which table holds a shared
// unit: .Sub_emit before .Cr_emit on unit 19, .C99emit over .Cemit on unit 23.
TEST(RunLoad, WhatCountsAsDataAndWhichTableTakesAUnit) {
    // tables of p, run 001, the i-th holding the number i; data; pages; a unit and the number first read on
    // it
    // clang-format off
    const std::tuple<const char*, bool, int, int, float> cases[] = {
        {"", false, 4, 0, 0}, {"Xemit", false, 4, 10, 1}, {"Xemit Yemit", true, 4, 11, 2},
        {"lab lab-E Sigma Xemit2 Yemit2 Zemit2", false, 5, 0, 0}, {"Cr_emit Sub_emit Cemit C99emit", true, 4, 23, 4},
        {"Cr_emit Sub_emit", true, 4, 19, 2}, {"Cr_emit", true, 4, 19, 1},
    };
    // clang-format on
    for (auto [kinds, data, pages, unit, first] : cases) {
        SCOPED_TRACE(kinds);
        Harness h;
        Session& s = h.session();
        s.chara.PROJECT = "p", s.chara.RUN = ".001";
        std::istringstream in(kinds);
        int i = 0;
        for (std::string k; in >> k;)
            h.dir.write("p." + k + ".001", viewer::testing::fixed_record({++i + 0.0}));
        const bool loaded = load_run(s);
        float got = 0;
        if (unit) read_fixed(s.unit(unit), std::span<float>(&got, 1));
        EXPECT_EQ(std::tuple(loaded, s.window.N_PAGES, got), std::tuple(data, pages, first));
        EXPECT_FALSE(s.fexist.Cr_emit_EXISTS && s.fexist.Sub_emit_EXISTS);
    }
}

TEST(RunLoad, RecordCounts) {
    // binary records framed by their length; an H in the first item marks no text
    const std::uint32_t len = 72;
    const std::string frame(reinterpret_cast<const char*>(&len), 4),
        rec = frame + "HEADER" + std::string(66, '\0') + frame;
    // clang-format off
    const std::pair<std::string, int> cases[] = {  // -1: neither text nor whole binary records
        {"0 0 1\n\n   \n0.1 0 1\n0.2,0,1\n", 3}, {"", 0}, {rec + rec + rec, 3}, {"Hello\n", -1}, {rec + "H", -1},
    };
    // clang-format on
    for (const auto& [text, want] : cases) {
        Harness h;
        h.dir.write("t.dat", text);
        int count = -1;  // left as it was on a stop
        try {
            get_size(h.session(), "t.dat", count);
        } catch (const ProgramStop&) {
        }
        EXPECT_EQ(count, want) << text;
        EXPECT_EQ(h.console(),
                  want < 0 ? "          Error while reading file: t.dat\n          Program stops\n" : "");
    }
}
