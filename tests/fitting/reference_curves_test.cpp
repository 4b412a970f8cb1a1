// Storing a plot's curves to a reference file and laying one over a plot.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "fit_bench.hpp"

using namespace viewer;
using namespace viewer::fit_testing;
using viewer::testing::count_of;

namespace {

// Values that need every digit to come back the same.
const std::vector<float> xs = {0.1f, 1.0f / 3.0f, 2.5e-7f, 123456.79f, -7.25f};
const std::vector<float> y1s = {1.0f, 3.0f, 2.0f, 0.3f, 1.0f / 7.0f};
const std::vector<float> y2s = {-1.5f, 1e20f, 0.0f, 6.0f, 2.0f / 3.0f};
const int NP = static_cast<int>(xs.size());

std::vector<float> first(const std::vector<float>& v, int n) {
    return {v.begin(), v.begin() + n};
}
}  // namespace

TEST(ReferenceCurves, OneCurveStoredAndReadBack) {
    FitBench b("ref1.dat\nref1.dat\n");
    fit(*b.s, 17, 1, 1, NP, xs.data(), y1s.data());
    EXPECT_EQ(b.console(),
              "     Enter file name: " + rule() + "     Data saved to reference file: ref1.dat\n");
    EXPECT_TRUE(no_curve(b.s->fit_variables));
    const std::string text = b.dir.read("ref1.dat");
    EXPECT_EQ(count_of(text, "\n"), 5u);
    EXPECT_EQ(text.substr(0, 6), " 0.1 1");

    b.clear_console();
    fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
    const FitVariables& fv = b.s->fit_variables;
    ASSERT_EQ(fv.N_FIT, NP);
    EXPECT_EQ(first(fv.X_FIT, NP), xs);
    EXPECT_EQ(first(fv.Y1_FIT, NP), y1s);
    EXPECT_TRUE(fv.Y2_FIT.empty());
    // No fit header: the statistics of the curve are the report.
    EXPECT_EQ(b.console(), rule() + "     Enter reference file name: " +
                               "\n       \n"
                               "     beginning:                   1.0000D+00\n"
                               "     end:                         1.4286D-01\n"
                               "     minimum:                     1.4286D-01  at z =  -7.2500D+00\n"
                               "     maximum:                     3.0000D+00  at z =   3.3333D-01\n"
                               "     average:                     1.2886D+00\n"
                               "\n");
}

TEST(ReferenceCurves, TwoCurvesStoredReadBackAndReadAgainForTheHardcopy) {
    FitBench b("pair.dat\npair.dat\n");
    fit(*b.s, 17, 1, 2, NP, xs.data(), y1s.data());
    // Between the two calls curve 1 waits and the file stays open, empty.
    EXPECT_EQ(b.s->fit_variables.N_FIT, 0);
    EXPECT_EQ(b.s->fit_variables.Y2_FIT, y1s);
    ASSERT_TRUE(b.s->ref.store_file);
    fit(*b.s, 17, 2, 2, NP, xs.data(), y2s.data());
    EXPECT_TRUE(no_curve(b.s->fit_variables));
    EXPECT_FALSE(b.s->ref.store_file);
    EXPECT_EQ(count_of(b.dir.read("pair.dat"), "\n"), 5u);

    // A hardcopy reads the same file again without asking.
    for (bool hardcopy : {false, true}) {
        SCOPED_TRACE(hardcopy);
        b.s->logo.TO_FILE = hardcopy;
        b.clear_console();
        fit(*b.s, 16, 1, 2, 0, nullptr, nullptr);
        fit(*b.s, 16, 2, 2, 0, nullptr, nullptr);
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, NP);
        EXPECT_EQ(first(fv.X_FIT, NP), xs);
        EXPECT_EQ(first(fv.Y1_FIT, NP), y1s);
        EXPECT_EQ(first(fv.Y2_FIT, NP), y2s);
        const std::string& c = b.console();
        EXPECT_EQ(count_of(c, "     1: black (horizontal): \n"), 1u);
        EXPECT_EQ(count_of(c, "     2: red (vertical): \n"), 1u);
        EXPECT_EQ(count_of(c, "Enter reference file name"), hardcopy ? 0u : 1u);
    }
}

TEST(ReferenceCurves, NamesAskingAgainAndTheEndOfInput) {
    // A name ends at a blank; twenty characters are shown.
    FitBench b("'ab cd'\nabcdefghijklmnopqrstuvwxy\nmissing.dat\nthere.dat\n");
    const float x[] = {1}, y[] = {2};
    fit(*b.s, 17, 1, 1, 1, x, y);
    EXPECT_TRUE(b.dir.exists("ab"));
    EXPECT_NE(b.console().find("reference file: ab cd\n"), std::string::npos);
    b.clear_console();
    fit(*b.s, 17, 1, 1, 1, x, y);
    EXPECT_TRUE(b.dir.exists("abcdefghijklmnopqrstuvwxy"));
    EXPECT_NE(b.console().find("reference file: abcdefghijklmnopqrst\n"), std::string::npos);

    // A missing file is asked for again; a blank line is no record.
    b.dir.write("there.dat", " 1 2\n\n 3 4\n");
    b.clear_console();
    fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
    const std::string ask = rule() + "     Enter reference file name: ";
    EXPECT_TRUE(b.console().starts_with(ask + " File doesn't exist\n" + ask)) << b.console();
    EXPECT_EQ(b.s->fit_variables.N_FIT, 2);

    EXPECT_THROW(fit(*b.s, 16, 1, 1, 0, nullptr, nullptr), EndOfInput);
    EXPECT_THROW(fit(*b.s, 17, 1, 1, 1, x, y), EndOfInput);
}

TEST(ReferenceCurves, FilesThatCannotBeWrittenOrReadOrHaveGone) {
    const float x[] = {1, 2}, y[] = {3, 4};
    for (int curves : {1, 2}) {  // refused at the first curve of a pair: the second is silent
        FitBench b("'nodir/x.dat'\n");
        for (int k = 1; k <= curves; ++k) fit(*b.s, 17, k, curves, 2, x, y);
        EXPECT_EQ(b.console(), "     Enter file name:      Cannot write reference file: nodir/x.dat\n")
            << curves;
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    struct Case {
        const char* name;
        const char* content;  // null: a directory
        int curves;
        std::string console;
    };
    const std::string ask = rule() + "     Enter reference file name: ";
    const Case cases[] = {
        {"sub", nullptr, 1, ask + "     Cannot read reference file: sub\n"},
        {"bad.dat", " 1 2\n 3 abc\n", 1,
         ask + "     Cannot read reference file: bad.dat, line 2, column 4\n"},
        {"empty.dat", "", 2, ask},  // no points, no statistics, no arrays
    };
    for (const Case& c : cases) {
        FitBench b(std::string(c.name) + "\n");
        if (c.content)
            b.dir.write(c.name, c.content);
        else
            std::filesystem::create_directory(b.dir.file(c.name));
        fit(*b.s, 16, 1, c.curves, 0, nullptr, nullptr);
        EXPECT_EQ(b.console(), c.console);
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    FitBench b;  // a hardcopy whose file has gone ends with a message
    b.s->logo.TO_FILE = true;
    b.s->ref.get_name = "gone.dat";
    fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
    EXPECT_EQ(b.console(), " File doesn't exist\n     Reference curve left out of the hardcopy: gone.dat\n");
    EXPECT_TRUE(no_curve(b.s->fit_variables));
}

TEST(ReferenceCurves, FilesOfAnotherShape) {
    // A two-curve plot takes three numbers a record, across line ends: the
    // rest of the line that ends a record is skipped, so four lines of two
    // give two records, and only those are drawn.
    FitBench b("two.dat\nthree.dat\n");
    b.dir.write("two.dat", "1 10\n2 20\n3 30\n4 40\n");
    fit(*b.s, 16, 1, 2, 0, nullptr, nullptr);
    const FitVariables& fv = b.s->fit_variables;
    ASSERT_EQ(fv.N_FIT, 2);
    EXPECT_EQ(first(fv.X_FIT, 2), (std::vector<float>{1, 3}));
    EXPECT_EQ(first(fv.Y1_FIT, 2), (std::vector<float>{10, 30}));
    EXPECT_EQ(first(fv.Y2_FIT, 2), (std::vector<float>{2, 4}));

    // A one-curve plot takes the first curve of a two-curve file.
    b.dir.write("three.dat", " 1 10 100\n 2 20 200\n");
    fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
    ASSERT_EQ(fv.N_FIT, 2);
    EXPECT_EQ(first(fv.X_FIT, 2), (std::vector<float>{1, 2}));
    EXPECT_EQ(first(fv.Y1_FIT, 2), (std::vector<float>{10, 20}));
}
