// Storing a plot's curves to a reference file and laying one over a plot.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "fit_bench.hpp"
#include "fitting/fit.hpp"

using namespace viewer;
using namespace viewer::fit_testing;

namespace {

std::string read_file(const std::string& path) {
    std::ifstream in(path);
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
}

void write_file(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

int lines_of(const std::string& text) {
    int n = 0;
    for (char c : text) n += c == '\n';
    return n;
}

// Values that need every digit to come back the same.
const std::vector<float> xs = {0.1f, 1.0f / 3.0f, 2.5e-7f, 123456.79f, -7.25f};
const std::vector<float> y1s = {1.0f, 3.0f, 2.0f, 0.3f, 1.0f / 7.0f};
const std::vector<float> y2s = {-1.5f, 1e20f, 0.0f, 6.0f, 2.0f / 3.0f};

}  // namespace

TEST(ReferenceCurves, OneCurveStoredAndReadBack) {
    FitBench b("ref1.dat\nref1.dat\n");
    const int NP = static_cast<int>(xs.size());
    fit(*b.s, 17, 1, 1, NP, xs.data(), y1s.data());
    EXPECT_EQ(b.console(), "     Enter file name: " + rule() +
                               "     Data saved to reference file: ref1.dat\n");
    EXPECT_TRUE(no_curve(b.s->fit_variables));
    const std::string text = read_file(b.file("ref1.dat"));
    EXPECT_EQ(lines_of(text), NP);
    EXPECT_EQ(text.substr(0, 6), " 0.1 1");

    b.clear_console();
    fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
    const FitVariables& fv = b.s->fit_variables;
    ASSERT_EQ(fv.N_FIT, NP);
    EXPECT_EQ(std::vector<float>(fv.X_FIT.begin(), fv.X_FIT.begin() + NP), xs);
    EXPECT_EQ(std::vector<float>(fv.Y1_FIT.begin(), fv.Y1_FIT.begin() + NP), y1s);
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

TEST(ReferenceCurves, TwoCurvesStoredAndReadBack) {
    FitBench b("pair.dat\npair.dat\n");
    const int NP = static_cast<int>(xs.size());
    fit(*b.s, 17, 1, 2, NP, xs.data(), y1s.data());
    // Between the two calls curve 1 waits and the file stays open, empty.
    EXPECT_EQ(b.s->fit_variables.N_FIT, 0);
    EXPECT_EQ(b.s->fit_variables.Y2_FIT, y1s);
    ASSERT_TRUE(b.s->ref.store_file);
    fit(*b.s, 17, 2, 2, NP, xs.data(), y2s.data());
    EXPECT_TRUE(no_curve(b.s->fit_variables));
    EXPECT_FALSE(b.s->ref.store_file);
    EXPECT_EQ(lines_of(read_file(b.file("pair.dat"))), NP);

    b.clear_console();
    fit(*b.s, 16, 1, 2, 0, nullptr, nullptr);
    fit(*b.s, 16, 2, 2, 0, nullptr, nullptr);
    const FitVariables& fv = b.s->fit_variables;
    ASSERT_EQ(fv.N_FIT, NP);
    EXPECT_EQ(std::vector<float>(fv.X_FIT.begin(), fv.X_FIT.begin() + NP), xs);
    EXPECT_EQ(std::vector<float>(fv.Y1_FIT.begin(), fv.Y1_FIT.begin() + NP), y1s);
    EXPECT_EQ(std::vector<float>(fv.Y2_FIT.begin(), fv.Y2_FIT.begin() + NP), y2s);
    EXPECT_NE(b.console().find("     1: black (horizontal): \n"), std::string::npos);
    EXPECT_NE(b.console().find("     2: red (vertical): \n"), std::string::npos);
    EXPECT_EQ(b.console().find("Enter reference file name"), b.console().rfind("Enter reference file name"));
}

TEST(ReferenceCurves, RoundTripThroughTheHookDrawsTheStoredPoints) {
    FitBench b("round.dat\nround.dat\n");
    const int NP = static_cast<int>(xs.size());
    b.s->logo.FIT_REQUESTED = true;
    const float mark_x = 0.03f;
    b.p.clicks = {{mark_x, 0.10f}, {mark_x, 0.15f}};  // store, then read
    int ID_F = 0;
    fit_hook(*b.s, ID_F, NP, xs.data(), y1s.data(), y2s.data());
    EXPECT_EQ(ID_F, 17);
    EXPECT_TRUE(b.g.named("pgline").empty());  // storing adds no curve
    fit_hook(*b.s, ID_F, NP, xs.data(), y1s.data(), y2s.data());
    EXPECT_EQ(ID_F, 16);
    const auto lines = b.g.named("pgline");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]->xs, xs);
    EXPECT_EQ(lines[0]->ys, y1s);
    EXPECT_EQ(lines[1]->ys, y2s);
    EXPECT_TRUE(no_curve(b.s->fit_variables));

    // A hardcopy reads the same file again without asking.
    b.s->logo.TO_FILE = true;
    b.g.clear();
    fit_hook(*b.s, ID_F, NP, xs.data(), y1s.data(), y2s.data());
    EXPECT_EQ(b.g.named("pgline").size(), 2u);
    EXPECT_EQ(b.console().find("Enter reference file name"), b.console().rfind("Enter reference file name"));
}

TEST(ReferenceCurves, NamesEndAtABlankAndShowTwentyCharacters) {
    FitBench b("'ab cd'\nabcdefghijklmnopqrstuvwxy\n");
    const float x[] = {1}, y[] = {2};
    fit(*b.s, 17, 1, 1, 1, x, y);
    EXPECT_TRUE(std::filesystem::exists(b.file("ab")));
    EXPECT_NE(b.console().find("reference file: ab cd\n"), std::string::npos);
    b.clear_console();
    fit(*b.s, 17, 1, 1, 1, x, y);
    EXPECT_TRUE(std::filesystem::exists(b.file("abcdefghijklmnopqrstuvwxy")));
    EXPECT_NE(b.console().find("reference file: abcdefghijklmnopqrst\n"), std::string::npos);
}

TEST(ReferenceCurves, AMissingFileIsAskedForAgain) {
    FitBench b("missing.dat\nthere.dat\n");
    write_file(b.file("there.dat"), " 1 2\n\n 3 4\n");
    fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
    const std::string ask = rule() + "     Enter reference file name: ";
    EXPECT_EQ(b.console().substr(0, 2 * ask.size() + 20), ask + " File doesn't exist\n" + ask);
    EXPECT_EQ(b.s->fit_variables.N_FIT, 2);  // the blank line is no record

    FitBench none("missing.dat\n");  // no way out but the end of input
    EXPECT_THROW(fit(*none.s, 16, 1, 1, 0, nullptr, nullptr), EndOfInput);
    FitBench silent;
    const float x[] = {1}, y[] = {2};
    EXPECT_THROW(fit(*silent.s, 17, 1, 1, 1, x, y), EndOfInput);
}

TEST(ReferenceCurves, HardcopyWhoseFileHasGoneEndsWithAMessage) {
    FitBench b;
    b.s->logo.TO_FILE = true;
    b.s->ref.get_name = "gone.dat";
    fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
    EXPECT_EQ(b.console(), " File doesn't exist\n     Reference curve left out of the hardcopy: gone.dat\n");
    EXPECT_TRUE(no_curve(b.s->fit_variables));
}

TEST(ReferenceCurves, FilesThatCannotBeWrittenOrRead) {
    {
        FitBench b("'nodir/x.dat'\n");
        const float x[] = {1, 2}, y[] = {3, 4};
        fit(*b.s, 17, 1, 1, 2, x, y);
        EXPECT_EQ(b.console(), "     Enter file name:      Cannot write reference file: nodir/x.dat\n");
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {  // Refused at the first curve of a pair: the second is silent.
        FitBench b("'nodir/x.dat'\n");
        const float x[] = {1, 2}, y[] = {3, 4};
        fit(*b.s, 17, 1, 2, 2, x, y);
        fit(*b.s, 17, 2, 2, 2, x, y);
        EXPECT_EQ(b.console(), "     Enter file name:      Cannot write reference file: nodir/x.dat\n");
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {
        FitBench b("sub\n");
        std::filesystem::create_directory(b.file("sub"));
        fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
        EXPECT_NE(b.console().find("     Cannot read reference file: sub\n"), std::string::npos);
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {
        FitBench b("bad.dat\n");
        write_file(b.file("bad.dat"), " 1 2\n 3 abc\n");
        fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
        EXPECT_NE(b.console().find("     Cannot read reference file: bad.dat, line 2, column 4\n"),
                  std::string::npos)
            << b.console();
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
    {  // An empty file gives no points, no statistics and no arrays.
        FitBench b("empty.dat\n");
        write_file(b.file("empty.dat"), "");
        fit(*b.s, 16, 1, 2, 0, nullptr, nullptr);
        EXPECT_EQ(b.console(), rule() + "     Enter reference file name: ");
        EXPECT_TRUE(no_curve(b.s->fit_variables));
    }
}

TEST(ReferenceCurves, FilesOfAnotherShape) {
    {  // A two-curve plot takes three numbers a record, across line ends:
        // the rest of the line that ends a record is skipped, so four
        // lines of two give two records, and only those are drawn.
        FitBench b("two.dat\n");
        write_file(b.file("two.dat"), "1 10\n2 20\n3 30\n4 40\n");
        fit(*b.s, 16, 1, 2, 0, nullptr, nullptr);
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 2);
        EXPECT_EQ(fv.X_FIT[0], 1.0f);
        EXPECT_EQ(fv.Y1_FIT[0], 10.0f);
        EXPECT_EQ(fv.Y2_FIT[0], 2.0f);
        EXPECT_EQ(fv.X_FIT[1], 3.0f);
        EXPECT_EQ(fv.Y1_FIT[1], 30.0f);
        EXPECT_EQ(fv.Y2_FIT[1], 4.0f);
    }
    {  // A one-curve plot takes the first curve of a two-curve file.
        FitBench b("three.dat\n");
        write_file(b.file("three.dat"), " 1 10 100\n 2 20 200\n");
        fit(*b.s, 16, 1, 1, 0, nullptr, nullptr);
        const FitVariables& fv = b.s->fit_variables;
        ASSERT_EQ(fv.N_FIT, 2);
        EXPECT_EQ(fv.X_FIT[1], 2.0f);
        EXPECT_EQ(fv.Y1_FIT[1], 20.0f);
    }
}
