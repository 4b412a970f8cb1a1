// Start-up: argument forms, the notice, the identity lines and the page foot.
#include "app/startup.hpp"

#include <gtest/gtest.h>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

namespace {

struct Parsed {
    std::string project, run;
    int number;
    std::string console;
};

Parsed parse(const std::string& fname) {
    Harness h;
    Session& s = h.session();
    s.FNAME = fname;
    parse_arguments(s);
    return {s.chara.PROJECT, s.chara.RUN, s.RUN_NUMBER, h.console()};
}

}  // namespace

TEST(Startup, ArgumentForms) {
    auto p = parse("rfgun");
    EXPECT_EQ(p.project, "rfgun");
    EXPECT_EQ(p.run, ".001");
    EXPECT_EQ(p.number, 1);

    p = parse("rfgun.");
    EXPECT_EQ(p.project, "rfgun");
    EXPECT_EQ(p.run, ".001");

    p = parse("rfgun,7");
    EXPECT_EQ(p.project, "rfgun");
    EXPECT_EQ(p.run, ".007");
    EXPECT_EQ(p.number, 7);

    p = parse("rfgun.,12");
    EXPECT_EQ(p.project, "rfgun");
    EXPECT_EQ(p.run, ".012");

    p = parse("rfgun,0123");  // only three characters behind the comma count
    EXPECT_EQ(p.run, ".012");
    EXPECT_EQ(p.number, 12);

    p = parse("a.b,3");  // an inner dot stays
    EXPECT_EQ(p.project, "a.b");
    EXPECT_EQ(p.run, ".003");

    p = parse("photogun_H=0.00097656_nx=ny=8_nz=64,1");
    EXPECT_EQ(p.project, "photogun_H=0.00097656_nx=ny=8_nz=64");

    p = parse(",5");  // an empty project: names begin with the suffix
    EXPECT_EQ(p.project, "");
    EXPECT_EQ(p.run, ".005");

    p = parse("  other,3");  // typed with leading blanks
    EXPECT_EQ(p.project, "other");
    EXPECT_EQ(p.run, ".003");

    p = parse("rfgun 12");  // the project ends at the first blank
    EXPECT_EQ(p.project, "rfgun");
    EXPECT_EQ(p.run, ".001");

    p = parse("my proj,3");  // before a comma the blanks stay; file names stop at the first
    EXPECT_EQ(p.project, "my proj");
    EXPECT_EQ(p.run, ".003");
}

TEST(Startup, RunFieldThatIsNoRunNumber) {
    for (const char* bad : {"rfgun,abc", "rfgun,", "rfgun,   ", "rfgun,-5", "rfgun,1.5"}) {
        auto p = parse(bad);
        EXPECT_EQ(p.run, ".001") << bad;
        EXPECT_EQ(p.number, 1) << bad;
        EXPECT_NE(p.console.find("Run number not understood"), std::string::npos) << bad;
    }
    auto p = parse("rfgun,999");
    EXPECT_EQ(p.run, ".999");
    EXPECT_EQ(p.console, "");
    p = parse("rfgun,000");  // run 0 still writes as three digits
    EXPECT_EQ(p.run, ".000");
    EXPECT_EQ(p.number, 0);
}

TEST(Startup, NoticeIdentityAndDate) {
    Harness h;
    Session& s = h.session();
    const char* argv[] = {"viewer"};
    start_prog(s, 1, argv, viewer::testing::fixed_time());
    print_identity(s);
    EXPECT_EQ(h.console(),
              "\n     program was called with no arguments, \n"
              "     try to work on project: rfgun\n"
              "     run number: .001\n"
              "\n     Project name is: rfgun\n"
              "     Run number is:   001\n");
    EXPECT_EQ(s.DATE, "    22.11  09:05");
    EXPECT_FALSE(s.LIARG);
    build_page_title(s);
    EXPECT_EQ(s.chara.PAGE_TITLE, "rfgun 001  22.11  09:05");

    Harness h2;
    Session& s2 = h2.session();
    std::string longname(100, 'x');
    const char* argv2[] = {"viewer", longname.c_str(), "ignored"};
    start_prog(s2, 3, argv2, viewer::testing::fixed_time());
    EXPECT_TRUE(s2.LIARG);
    EXPECT_EQ(s2.FNAME.size(), 80u);
    EXPECT_EQ(h2.console(), "");
    parse_arguments(s2);
    EXPECT_EQ(s2.chara.PROJECT, std::string(80, 'x'));
    EXPECT_EQ(run_digits(7), "007");
}
