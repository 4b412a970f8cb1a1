// Start-up: argument forms, the notice, the identity lines and the page foot.
#include "app/startup.hpp"

#include <gtest/gtest.h>

#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::Harness;

TEST(Startup, ArgumentForms) {
    struct Case {
        const char *fname, *project, *run;
        int number;
        const char* complaint;  // the field that is no run number, or null
    };
    const Case cases[] = {
        {"rfgun", "rfgun", ".001", 1, nullptr},
        {"rfgun.", "rfgun", ".001", 1, nullptr},
        {"rfgun,7", "rfgun", ".007", 7, nullptr},
        {"rfgun.,12", "rfgun", ".012", 12, nullptr},
        {"rfgun,0123", "rfgun", ".012", 12, nullptr},  // only three characters behind the comma count
        {"a.b,3", "a.b", ".003", 3, nullptr},          // an inner dot stays
        {"photogun_H=0.00097656_nx=ny=8_nz=64,1", "photogun_H=0.00097656_nx=ny=8_nz=64", ".001", 1, nullptr},
        {",5", "", ".005", 5, nullptr},                // an empty project: names begin with the suffix
        {"  other,3", "other", ".003", 3, nullptr},    // typed with leading blanks
        {"rfgun 12", "rfgun", ".001", 1, nullptr},     // the project ends at the first blank
        {"my proj,3", "my proj", ".003", 3, nullptr},  // before a comma the blanks stay
        {"rfgun,999", "rfgun", ".999", 999, nullptr},
        {"rfgun,000", "rfgun", ".000", 0, nullptr},  // run 0 still writes as three digits
        {"rfgun,abc", "rfgun", ".001", 1, "abc"},
        {"rfgun,", "rfgun", ".001", 1, ""},
        {"rfgun,   ", "rfgun", ".001", 1, ""},
        {"rfgun,-5", "rfgun", ".001", 1, "-5"},
        {"rfgun,1.5", "rfgun", ".001", 1, "1.5"},
    };
    for (const Case& c : cases) {
        Harness h;
        Session& s = h.session();
        s.FNAME = c.fname;
        parse_arguments(s);
        EXPECT_EQ(s.chara.PROJECT, c.project) << c.fname;
        EXPECT_EQ(s.chara.RUN, c.run) << c.fname;
        EXPECT_EQ(s.RUN_NUMBER, c.number) << c.fname;
        EXPECT_EQ(h.console(), c.complaint ? "\n     Run number not understood: \"" +
                                                 std::string(c.complaint) + "\", run 001 is used\n"
                                           : "");
    }
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

    Harness h2;  // the first argument only, cut to 80 characters, and no notice
    Session& s2 = h2.session();
    std::string longname(100, 'x');
    const char* argv2[] = {"viewer", longname.c_str(), "ignored"};
    start_prog(s2, 3, argv2, viewer::testing::fixed_time());
    EXPECT_TRUE(s2.LIARG);
    EXPECT_EQ(h2.console(), "");
    parse_arguments(s2);
    EXPECT_EQ(s2.chara.PROJECT, std::string(80, 'x'));
}
