// The run load: existence flags, priorities, counts, and the failures.
#include "app/run_load.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::fixed_record;
using viewer::testing::Harness;

namespace {

struct RunLoad : ::testing::Test {
    Harness h;
    Session& s = h.session();
    void SetUp() override { run("p"); }
    void run(const std::string& project, const std::string& run = ".001") {
        s.chara.PROJECT = project;
        s.chara.RUN = run;
    }
    // The first field of the next record on `unit`.
    float first_on(int unit) {
        float r[8] = {};
        EXPECT_TRUE(read_fixed(s.unit(unit), std::span<float>(r, unit == 23 ? 1 : 8)));
        return r[0];
    }
};

}  // namespace

TEST_F(RunLoad, WhatCountsAsData) {
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

TEST_F(RunLoad, PrioritiesOfSharedUnits) {
    h.dir.write("p.Cr_emit.001", fixed_record({1, 0, 0, 0, 0, 0, 0, 7}));
    h.dir.write("p.Sub_emit.001", fixed_record({2, 0, 0, 0, 0, 0, 0, 9}));
    h.dir.write("p.Cemit.001", fixed_record({3}));
    h.dir.write("p.C99emit.001", fixed_record({4}));
    ASSERT_TRUE(load_run(s));
    EXPECT_TRUE(s.fexist.Sub_emit_EXISTS && s.fexist.Cemit_EXISTS && s.fexist.C99emit_EXISTS);
    EXPECT_FALSE(s.fexist.Cr_emit_EXISTS);
    EXPECT_EQ(first_on(19), 2.0f);  // .Sub_emit on unit 19
    EXPECT_EQ(first_on(23), 4.0f);  // .C99emit on unit 23

    std::filesystem::remove(h.dir.file("p.Sub_emit.001"));
    ASSERT_TRUE(load_run(s));
    EXPECT_TRUE(s.fexist.Cr_emit_EXISTS);
    EXPECT_EQ(first_on(19), 1.0f);
}

TEST_F(RunLoad, CountsAndTheirMemory) {
    h.dir.write("p.ref.001", "0 0 1 2 3 4 5\n\n   \n0.1 0 1 2 3 4 5\n0.2,0,1,2,3,4,5\n");
    h.dir.write("p.tcheck.001", "");
    h.dir.write("p.Scan.001", "1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.dir.write("p.Error.001", "1 2 3 4 5 6 7 8 9 10 11 12\n1 2 3 4 5 6 7 8 9 10 11 12\n");
    h.dir.write("p.Cathode.001", fixed_record({0, 1}));
    ASSERT_TRUE(load_run(s));
    // blank lines are no records
    EXPECT_EQ((std::vector<int>{s.R_PKT, s.T_PKT, s.S_PKT, s.E_PKT, s.C_PKT}),
              (std::vector<int>{3, 0, 1, 2, 1}));

    run("p", ".002");
    h.dir.write("p.Zemit.002", viewer::testing::emit_table(2));
    ASSERT_TRUE(load_run(s));
    EXPECT_FALSE(s.fexist.ref_EXISTS);
    EXPECT_EQ(s.R_PKT, 3);  // kept from the run that had it
    EXPECT_EQ(s.window.N_PAGES, 4);

    run("");  // an empty project: names begin with the suffix
    h.dir.write(".Zemit.001", viewer::testing::emit_table(2));
    EXPECT_TRUE(load_run(s));
    close_all(s);
    for (auto& u : s.units) EXPECT_FALSE(u.is_open());
}

TEST_F(RunLoad, GetSizeOfBinaryAndBrokenFiles) {
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
