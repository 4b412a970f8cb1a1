// The run load: existence flags, priorities, counts, and the failures.
#include "app/run_load.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <fstream>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

namespace {

void set_run(Session& s, const std::string& project, const std::string& run = ".001") {
    s.chara.PROJECT = project;
    s.chara.RUN = run;
}

}  // namespace

TEST(RunLoad, WhatCountsAsData) {
    Harness h;
    Session& s = h.session();
    set_run(s, "p");
    EXPECT_FALSE(load_run(s));  // nothing at all

    h.dir.write("p.Xemit.001", viewer::testing::emit_table(3));
    EXPECT_FALSE(load_run(s));  // .Xemit alone is not data
    EXPECT_TRUE(s.fexist.Xemit_EXISTS);
    EXPECT_TRUE(s.unit(10).is_open());

    for (const char* only : {".lab", ".lab-E", ".Sigma", ".Xemit2", ".Yemit2", ".Zemit2"})
        h.dir.write(std::string("p") + only + ".001", "1 2 3\n");
    EXPECT_FALSE(load_run(s));
    EXPECT_TRUE(s.fexist.Sigma_EXISTS);
    EXPECT_EQ(s.window.N_PAGES, 5);

    h.dir.write("p.Yemit.001", viewer::testing::emit_table(3));
    EXPECT_TRUE(load_run(s));
    EXPECT_TRUE(s.unit(11).is_open());
}

TEST(RunLoad, PrioritiesOfSharedUnits) {
    Harness h;
    Session& s = h.session();
    set_run(s, "p");
    h.dir.write("p.Cr_emit.001", viewer::testing::fixed_record({1, 0, 0, 0, 0, 0, 0, 7}));
    h.dir.write("p.Sub_emit.001", viewer::testing::fixed_record({2, 0, 0, 0, 0, 0, 0, 9}));
    h.dir.write("p.Cemit.001", viewer::testing::fixed_record({3}));
    h.dir.write("p.C99emit.001", viewer::testing::fixed_record({4}));
    ASSERT_TRUE(load_run(s));
    EXPECT_TRUE(s.fexist.Sub_emit_EXISTS);
    EXPECT_FALSE(s.fexist.Cr_emit_EXISTS);
    EXPECT_TRUE(s.fexist.Cemit_EXISTS);
    EXPECT_TRUE(s.fexist.C99emit_EXISTS);
    float r[8];
    ASSERT_TRUE(read_fixed(s.unit(19), r));
    EXPECT_EQ(r[0], 2.0f);  // .Sub_emit on unit 19
    ASSERT_TRUE(read_fixed(s.unit(23), std::span<float>(r, 1)));
    EXPECT_EQ(r[0], 4.0f);  // .C99emit on unit 23

    std::filesystem::remove(h.dir.file("p.Sub_emit.001"));
    ASSERT_TRUE(load_run(s));
    EXPECT_TRUE(s.fexist.Cr_emit_EXISTS);
    ASSERT_TRUE(read_fixed(s.unit(19), r));
    EXPECT_EQ(r[0], 1.0f);
}

TEST(RunLoad, CountsAndTheirMemory) {
    Harness h;
    Session& s = h.session();
    set_run(s, "p");
    h.dir.write("p.ref.001", "0 0 1 2 3 4 5\n\n   \n0.1 0 1 2 3 4 5\n0.2,0,1,2,3,4,5\n");
    h.dir.write("p.tcheck.001", "");
    h.dir.write("p.Scan.001", "1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.dir.write("p.Error.001", "1 2 3 4 5 6 7 8 9 10 11 12\n1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.dir.write("p.Cathode.001", viewer::testing::fixed_record({0, 1}));
    ASSERT_TRUE(load_run(s));
    EXPECT_EQ(s.R_PKT, 3);  // blank lines are no records
    EXPECT_EQ(s.T_PKT, 0);
    EXPECT_EQ(s.S_PKT, 1);
    EXPECT_EQ(s.E_PKT, 2);
    EXPECT_EQ(s.C_PKT, 1);

    set_run(s, "p", ".002");
    h.dir.write("p.Zemit.002", viewer::testing::emit_table(2));
    ASSERT_TRUE(load_run(s));
    EXPECT_FALSE(s.fexist.ref_EXISTS);
    EXPECT_EQ(s.R_PKT, 3);  // kept from the run that had it
    EXPECT_EQ(s.window.N_PAGES, 4);

    set_run(s, "");  // an empty project: names begin with the suffix
    h.dir.write(".Zemit.001", viewer::testing::emit_table(2));
    EXPECT_TRUE(load_run(s));
    close_all(s);
    for (auto& u : s.units) EXPECT_FALSE(u.is_open());
}

TEST(RunLoad, GetSizeOfBinaryAndBrokenFiles) {
    Harness h;
    Session& s = h.session();
    {
        std::ofstream out(h.dir.file("bin.dat"), std::ios::binary);
        const char head[] = "HEADER";  // an H in the first item marks a file that is not text
        for (int rec = 0; rec < 3; ++rec) {
            std::uint32_t len = 72;
            char body[72] = {};
            std::memcpy(body, head, sizeof head);
            out.write(reinterpret_cast<char*>(&len), 4);
            out.write(body, 72);
            out.write(reinterpret_cast<char*>(&len), 4);
        }
    }
    int count = -1;
    get_size(s, "bin.dat", count);
    EXPECT_EQ(count, 3);

    {
        std::ofstream out(h.dir.file("Hbad.dat"), std::ios::binary);
        out << "Hello\n";  // neither text nor whole binary records
    }
    EXPECT_THROW(get_size(s, "Hbad.dat", count), ProgramStop);
    EXPECT_NE(h.console().find("          Error while reading file: Hbad.dat\n          Program stops\n"),
              std::string::npos);

    EXPECT_THROW(get_size(s, "missing.dat", count), ProgramStop);
    EXPECT_NE(h.console().find(
                  "          File missing.dat                    not found\n          Program stops\n"),
              std::string::npos);
}
