// The run named on the command line and the tables loaded for it.
#include "app/run_load.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <sstream>

#include "app/startup.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::emit_table;
using viewer::testing::fixed_record;
using viewer::testing::Harness;

TEST(RunLoad, ArgumentForms) {
    struct Case {
        const char *fname, *project, *run;
        const char* complaint;  // the field that is no run number, or null
    };
    const Case cases[] = {
        {"rfgun.", "rfgun", ".001", nullptr},
        {"rfgun,7", "rfgun", ".007", nullptr},
        {"rfgun.,12", "rfgun", ".012", nullptr},
        {"rfgun,0123", "rfgun", ".012", nullptr},  // only three characters behind the comma count
        {"a.b,3", "a.b", ".003", nullptr},         // an inner dot stays
        {"photogun_H=0.00097656_nx=ny=8_nz=64,1", "photogun_H=0.00097656_nx=ny=8_nz=64", ".001", nullptr},
        {",5", "", ".005", nullptr},                // an empty project: names begin with the suffix
        {"  other,3", "other", ".003", nullptr},    // typed with leading blanks
        {"rfgun 12", "rfgun", ".001", nullptr},     // the project ends at the first blank
        {"my proj,3", "my proj", ".003", nullptr},  // before a comma the blanks stay
        {"rfgun,999", "rfgun", ".999", nullptr},
        {"rfgun,000", "rfgun", ".000", nullptr},  // run 0 still writes as three digits
        {"rfgun,abc", "rfgun", ".001", "abc"},
        {"rfgun,", "rfgun", ".001", ""},
        {"rfgun,-5", "rfgun", ".001", "-5"},
    };
    for (const Case& c : cases) {
        Harness h;
        Session& s = h.session();
        s.FNAME = c.fname;
        parse_arguments(s);
        EXPECT_EQ(s.chara.PROJECT, c.project) << c.fname;
        EXPECT_EQ("." + run_digits(s.RUN_NUMBER), c.run) << c.fname;
        EXPECT_EQ(s.chara.RUN, c.run) << c.fname;
        EXPECT_EQ(h.console(), c.complaint ? "\n     Run number not understood: \"" +
                                                 std::string(c.complaint) + "\", run 001 is used\n"
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
        for (std::string k; kinds >> k;) h.dir.write("p." + k + ".001", fixed_record({++i + 0.0}));
        EXPECT_EQ(load_run(s), c.data) << c.kinds;
        EXPECT_EQ(s.window.N_PAGES, c.pages) << c.kinds;
        EXPECT_FALSE(s.fexist.Cr_emit_EXISTS && s.fexist.Sub_emit_EXISTS);
        float first = 0;
        EXPECT_EQ(c.unit && read_fixed(s.unit(c.unit), std::span<float>(&first, 1)), c.unit > 0) << c.kinds;
        EXPECT_EQ(first, c.first) << c.kinds;
    }
}

TEST(RunLoad, CountsAreKeptFromTheRunThatHadThem) {
    Harness h;
    Session& s = h.session();
    s.chara.PROJECT = "p";
    s.chara.RUN = ".001";
    h.dir.write("p.ref.001", "0 0 1 2 3 4 5\n\n   \n0.1 0 1 2 3 4 5\n0.2,0,1,2,3,4,5\n");
    h.dir.write("p.tcheck.001", "");
    h.dir.write("p.Scan.001", "1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.dir.write("p.Error.001", "1 2 3 4 5 6 7 8 9 10 11 12\n1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.dir.write("p.Cathode.001", fixed_record({0, 1}));
    ASSERT_TRUE(load_run(s));
    // blank lines are no records
    EXPECT_EQ((std::vector<int>{s.R_PKT, s.T_PKT, s.S_PKT, s.E_PKT, s.C_PKT}),
              (std::vector<int>{3, 0, 1, 2, 1}));

    s.chara.RUN = ".002";
    h.dir.write("p.Zemit.002", emit_table(2));
    ASSERT_TRUE(load_run(s));
    EXPECT_FALSE(s.fexist.ref_EXISTS);
    EXPECT_EQ(s.R_PKT, 3);
    close_all(s);
    for (auto& u : s.units) EXPECT_FALSE(u.is_open());

    {
        std::ofstream out(h.dir.file("bin.dat"), std::ios::binary);
        for (int rec = 0; rec < 3; ++rec) {  // an H in the first item marks a file that is not text
            std::uint32_t len = 72;
            char body[72] = "HEADER";
            out.write(reinterpret_cast<char*>(&len), 4)
                .write(body, 72)
                .write(reinterpret_cast<char*>(&len), 4);
        }
    }
    h.dir.write("Hbad.dat", "Hello\n");  // neither text nor whole binary records
    int count = -1;
    get_size(s, "bin.dat", count);
    EXPECT_EQ(count, 3);
    EXPECT_THROW(get_size(s, "Hbad.dat", count), ProgramStop);
    EXPECT_THROW(get_size(s, "missing.dat", count), ProgramStop);
    EXPECT_EQ(h.console(),
              "          Error while reading file: Hbad.dat\n          Program stops\n"
              "          File missing.dat                    not found\n          Program stops\n");
}
