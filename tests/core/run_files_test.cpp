// The run file readers, by record form: lines of a table, fixed records cut
// by columns, free records, label lines, and the number conversion behind
// them checked bit for bit against the library's correctly rounded one.
#include "core/run_files.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using viewer::testing::library_value;
using viewer::testing::same_bits;

class RunFiles : public ::testing::Test {
protected:
    // Writes the bytes as they stand and opens the file.
    TableFile& table(const std::string& name, const std::string& bytes) {
        dir_.write(name, bytes);
        files_.emplace_back(std::make_unique<TableFile>());
        EXPECT_TRUE(files_.back()->open(path(name)));
        return *files_.back();
    }
    std::string path(const std::string& name) const { return dir_.file(name); }

    viewer::testing::TempDir dir_;
    std::vector<std::unique_ptr<TableFile>> files_;
};

std::vector<std::string> all_lines(TableFile& f) {
    std::vector<std::string> out;
    for (std::string_view l; f.next_line(l);) out.emplace_back(l);
    return out;
}

// The next fixed or free record of `n` real fields, or nothing at the end of
// the table. Fields start at 99, so that one left alone would show.
std::vector<float> fixed_row(TableFile& f, std::size_t n, int width = 12) {
    std::vector<float> r(n, 99.0f);
    if (!read_fixed(f, r, nullptr, width)) r.clear();
    return r;
}
std::vector<float> free_row(TableFile& f, std::size_t n) {
    std::vector<float> r(n, 99.0f);
    std::vector<FreeField> targets;
    for (float& v : r) targets.emplace_back(&v);
    if (!read_free(f, targets)) r.clear();
    return r;
}

// What a caught RecordError says, or "no error".
template <class F>
std::string error_of(F&& read) {
    try {
        read();
    } catch (const RecordError& e) {
        return e.message();
    }
    return "no error";
}

TEST_F(RunFiles, LinesEndsRewindAndFilesThatAreNoTables) {
    const std::vector<std::string> abc{"a", "bb", "", "ccc"}, open_end{"a", "last"};
    EXPECT_EQ(all_lines(table("lf", "a\nbb\n\nccc\n")), abc);
    EXPECT_EQ(all_lines(table("crlf", "a\r\nbb\r\n\r\nccc\r\n")), abc);
    EXPECT_EQ(all_lines(table("open-end", "a\nlast")), open_end);
    EXPECT_EQ(all_lines(table("open-end-cr", "a\nlast\r")), open_end);
    EXPECT_TRUE(all_lines(table("empty", "")).empty());
    EXPECT_EQ(all_lines(table("one-blank", "\n")), (std::vector<std::string>{""}));

    // Rewound after the end of the file, the line count starts again too.
    TableFile& f = table("t", "1\n2\n3\n");
    EXPECT_EQ(all_lines(f).size(), 3u);
    EXPECT_EQ(f.line_number(), 3);
    f.rewind();
    EXPECT_EQ(f.line_number(), 0);
    EXPECT_EQ(all_lines(f), (std::vector<std::string>{"1", "2", "3"}));
    f.close();
    std::string_view l;
    EXPECT_FALSE(f.is_open() || f.next_line(l));

    TableFile missing;
    EXPECT_FALSE(missing.next_line(l)) << "a file never opened has no lines";
    EXPECT_FALSE(missing.open(path("no-such-file")));
    EXPECT_FALSE(missing.open(dir_.path) || missing.is_open()) << "a directory is no table";
}

TEST_F(RunFiles, LinesLongerThanTheBufferComeWholeAndMemoryStaysFlat) {
    const std::string long_line(1'500'000, 'x');
    TableFile& f = table("long", "head\n" + long_line + "\ntail\n" + long_line);
    EXPECT_EQ(all_lines(f), (std::vector<std::string>{"head", long_line, "tail", long_line}));

    // Many short lines, several times the buffer in all: the buffer keeps
    // its size, and the line count and the last line come out right.
    std::string many;
    for (int i = 0; i < 200'000; ++i) many += fmt_e12_4(i) + fmt_e12_4(-i) + "\n";
    TableFile& g = table("many", many);
    const std::size_t start = g.buffer_capacity();
    const auto lines = all_lines(g);
    EXPECT_EQ(lines.size(), 200'000u);
    EXPECT_EQ(lines.back(), fmt_e12_4(199'999) + fmt_e12_4(-199'999));
    EXPECT_EQ(g.buffer_capacity(), start);
    EXPECT_LT(g.buffer_capacity(), many.size() / 4);

    // The buffer grown for a long line is let go when the next file opens.
    ASSERT_TRUE(f.open(path("many")));
    EXPECT_EQ(f.buffer_capacity(), start);
}

TEST_F(RunFiles, FixedRecordsAreCutByColumnsNotAtBlanks) {
    TableFile& f = table("cols",
                         "  1.2345E+00  6.7890E+01\n"
                         "   1.2345E+00  6.7890E+01\n"  // one column to the right
                         "-1.23456E-01-2.50000E+00\n"   // fields touch
                         "  1.0000E+00  2.0000E+00  3.0000E+00 and more text\n");
    EXPECT_EQ(fixed_row(f, 2), (std::vector<float>{1.2345f, 67.89f}));
    // "   1.2345E+0": the exponent lost a digit, by luck still 0;
    // "0  6.7890E+0": blanks ignored, read wrongly.
    EXPECT_EQ(fixed_row(f, 2), (std::vector<float>{1.2345f, 6.789f}));
    EXPECT_EQ(fixed_row(f, 2), (std::vector<float>{-0.123456f, -2.5f}));
    EXPECT_EQ(fixed_row(f, 2), (std::vector<float>{1, 2})) << "what stands behind the last field is ignored";
    EXPECT_TRUE(fixed_row(f, 2).empty());
    EXPECT_EQ(fixed_row(table("w10", "  1.50E+00 -2.25E+00     3.125\n"), 3, 10),
              (std::vector<float>{1.5f, -2.25f, 3.125f}));
}

TEST_F(RunFiles, FixedFieldsFollowTheE12_4ReadingRules) {
    std::string rows;
    for (auto texts :
         {std::vector<const char*>{"12345", "12345E2", "-5", "1.2345", "7.", ".5E1", "-0"},
          {"1.23 45E+00", "1.0000D+01", "2.5000Q-01", "1.5000+001", "1.0000-002", "+2.0000e+00"}}) {
        for (const char* t : texts) rows += right_in(t, 12);
        rows += "\n";
    }
    TableFile& f =
        table("rules",
              rows +
                  "  1.0000E+00  2.0000E+00\n"  // short line
                  "\n"                          // blank line
                  "  1.0000E+39 -1.0000E+39  1.0000E-50 -1.0000E-50  1.0000E-40         inf         nan\n"
                  "  1.0000E+00  2.0000E+00  3.0000E+00  4.0000E+00  5.0000E+00  6.0000E+00  7.0000E+00\r\n");
    // Without a point the last four digits are decimals, with an exponent
    // too, and there may be fewer digits than decimals; -0 keeps its sign.
    std::vector<float> r = fixed_row(f, 7);
    EXPECT_EQ(r, (std::vector<float>{1.2345f, 123.45f, -0.0005f, 1.2345f, 7, 5, 0}));
    EXPECT_TRUE(std::signbit(r.at(6)));
    // Inner blanks ignored; D and Q exponents; an exponent with its sign and
    // no letter; a field past the end of the line reads as 0.
    EXPECT_EQ(fixed_row(f, 7), (std::vector<float>{1.2345f, 10, 0.25f, 15, 0.01f, 2, 0}));
    EXPECT_EQ(fixed_row(f, 7), (std::vector<float>{1, 2, 0, 0, 0, 0, 0}));
    EXPECT_EQ(fixed_row(f, 7), std::vector<float>(7, 0.0f)) << "a blank line is a record of zeros";

    r = fixed_row(f, 7);  // past the range of a float: infinity or 0; a subnormal is kept
    ASSERT_EQ(r.size(), 7u);
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(std::vector<float>(r.begin(), r.begin() + 6),
              (std::vector<float>{inf, -inf, 0, 0, 1e-40f, inf}));
    EXPECT_TRUE(std::signbit(r[3]));
    EXPECT_TRUE(std::isnan(r[6]));

    EXPECT_EQ(fixed_row(f, 7), (std::vector<float>{1, 2, 3, 4, 5, 6, 7})) << "CRLF";
    EXPECT_TRUE(fixed_row(f, 7).empty());
    f.rewind();
    EXPECT_EQ(fixed_row(f, 1), (std::vector<float>{1.2345f}));
}

TEST_F(RunFiles, FixedRecordWithTruthField) {
    float r[7];
    const std::string seven =
        "  1.0000E+00  2.0000E+00  3.0000E+00  4.0000E+00  5.0000E+00  6.0000E+00  7.0000E+00";
    TableFile& f = table("cathode", seven + "  T\n" + seven + "  F\n" + seven + ".TRUE.\n" + seven +
                                        "  t  rest\n" + seven + "   \n" + seven + "\n" + seven + "  X\n");
    std::vector<bool> got;
    for (bool l = false; got.size() < 6; got.push_back(l)) {
        l = !l;  // so that a field that leaves the flag alone would show
        ASSERT_TRUE(read_fixed(f, r, &l));
    }
    EXPECT_EQ(got, (std::vector<bool>{true, false, true, true, false, false}));
    EXPECT_FLOAT_EQ(r[6], 7.0f);
    bool l;
    EXPECT_EQ(error_of([&] { read_fixed(f, r, &l); }),
              path("cathode") + ", line 7, column 85: cannot read a truth value from \"  X\"");
}

TEST_F(RunFiles, FixedRecordThatCannotBeConvertedNamesFileLineAndColumn) {
    float r[4];
    const std::string good = "  1.0000E+00  2.0000E+00  3.0000E+00  4.0000E+00\n";
    TableFile& f = table("bad", good + good + "  1.0000E+00  2.0000E+00  3.0000E+00  1.2x45E+00\n" +
                                    "       1.2.3\n      1.0E+ \n           .\n           -\n          E5\n" +
                                    "  1.0000E+00        abcd\n");
    ASSERT_TRUE(read_fixed(f, r) && read_fixed(f, r));
    EXPECT_EQ(error_of([&] { read_fixed(f, r); }),
              path("bad") + ", line 3, column 37: cannot read a number from \"  1.2x45E+00\"");
    for (int line = 4; line <= 8; ++line)
        EXPECT_NE(error_of([&] { read_fixed(f, r); }).find(", line " + std::to_string(line) + ", column 1:"),
                  std::string::npos)
            << "line " << line;
    EXPECT_EQ(error_of([&] { read_fixed(f, r); }),
              path("bad") + ", line 9, column 13: cannot read a number from \"        abcd\"");
}

TEST_F(RunFiles, FreeRecordsAreSplitAtBlanksCommasAndLineEnds) {
    TableFile& f = table("free",
                         "    1    0  1.2345E-01  2.0E+00 3 4 5 6\n"  // one line
                         "2,1,1.5,2.5\t3.5 , 4.5,5.5,6.5\n"           // commas and a tab
                         "\n"                                         // a blank line is passed over
                         "   3   1\n"                                 // a record over three lines
                         "   0.1 0.2\n"
                         "0.3 0.4 0.5 0.6   9 9 9 dropped\n"  // rest of its last line dropped
                         "4 0 1 2 3 4 5 6 7 8 9\n");          // more numbers than fields
    EXPECT_EQ(free_row(f, 8), (std::vector<float>{1, 0, 0.12345f, 2, 3, 4, 5, 6}));
    EXPECT_EQ(free_row(f, 8), (std::vector<float>{2, 1, 1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f}));
    EXPECT_EQ(free_row(f, 8), (std::vector<float>{3, 1, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f}));
    EXPECT_EQ(f.line_number(), 6);
    EXPECT_EQ(free_row(f, 8), (std::vector<float>{4, 0, 1, 2, 3, 4, 5, 6}))
        << "the next record starts on a new line";
    EXPECT_TRUE(free_row(f, 8).empty());
    f.rewind();
    EXPECT_EQ(free_row(f, 1), (std::vector<float>{1}));
}

TEST_F(RunFiles, FreeRecordCutByTheEndOfTheFileIsDroppedAndASlashEndsOneEarly) {
    std::vector<float> v(7, -1.0f);
    auto read = [&](TableFile& f) { return read_free(f, {&v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6]}); };
    TableFile& f = table("ref", "1 2 3 4 5 6 7\n8 9 10 11\n");
    ASSERT_TRUE(read(f));
    EXPECT_FALSE(read(f)) << "a record that stops after four numbers";
    EXPECT_EQ(v, (std::vector<float>{1, 2, 3, 4, 5, 6, 7})) << "a dropped record leaves the targets alone";
    EXPECT_FALSE(read(f));
    // The fields after a slash keep their values.
    v.assign(7, 42.0f);
    TableFile& slash = table("slash", "1 2 / 3 4\n5 6 7 8 9 10 11\n");
    ASSERT_TRUE(read(slash));
    EXPECT_EQ(v, (std::vector<float>{1, 2, 42, 42, 42, 42, 42}));
    EXPECT_EQ(free_row(slash, 7), (std::vector<float>{5, 6, 7, 8, 9, 10, 11}));

    TableFile& h = table("open-end", "1 2 3 4 5 6 7\n  1.5 2 3 4 5 6 7.5");
    EXPECT_EQ(free_row(h, 7).size(), 7u);
    EXPECT_EQ(free_row(h, 7), (std::vector<float>{1.5f, 2, 3, 4, 5, 6, 7.5f}))
        << "a last line without a line end";
    EXPECT_TRUE(free_row(h, 7).empty());
    EXPECT_TRUE(free_row(table("empty", ""), 7).empty()) << "an empty table has no records";
    EXPECT_TRUE(free_row(table("blank", "\n\n  \n"), 7).empty()) << "nor has one of blank lines";
}

TEST_F(RunFiles, FreeRecordFieldsAreTypedAndBadOnesNameTheirColumn) {
    int i = 0, n = 0;
    float r = 0;
    double d = 0;
    TableFile& f = table("typed",
                         "+5 -7 1.0D+01 1.234567890123456789E-03\n"
                         "3 2 1.5+2 -2.5d-1\n"
                         "1 0 7 0.1000000000000000055511151231257827\n"
                         "  1.0  2 3 4\n"      // a real in an integer field
                         "1 3000000000 3 4\n"  // an integer past 32 bits
                         "1 2 3.0.0 4\n"       // not a number
                         "1 2 3 1e\n");
    auto read = [&] { return read_free(f, {&i, &n, &r, &d}); };
    ASSERT_TRUE(read());
    EXPECT_EQ(std::vector<double>({double(i), double(n), r, d}),
              (std::vector<double>{5, -7, 10, 1.234567890123456789E-03}))
        << "64-bit fields keep their digits";
    ASSERT_TRUE(read());
    EXPECT_EQ(std::vector<double>({r, d}), (std::vector<double>{150, -0.25}));
    ASSERT_TRUE(read());
    EXPECT_EQ(std::vector<double>({r, d}), (std::vector<double>{7, 0.1})) << "an integer in a real field";
    const std::string at = path("typed") + ", line ";
    EXPECT_EQ(error_of(read), at + "4, column 3: cannot read an integer from \"1.0\"");
    EXPECT_EQ(error_of(read), at + "5, column 3: cannot read an integer from \"3000000000\"");
    EXPECT_EQ(error_of(read), at + "6, column 5: cannot read a number from \"3.0.0\"");
    EXPECT_EQ(error_of(read), at + "7, column 7: cannot read a number from \"1e\"");
    EXPECT_EQ(i, 1) << "a record that fails writes nothing";
    EXPECT_EQ(d, 0.1);
}

TEST_F(RunFiles, LabelLinesAreCutOrPaddedToEightyCharacters) {
    TableFile& f = table("lab", "\\fiz\\fn m\r\n\n" + std::string(100, 'L') + "\n\ttab kept  \nlast");
    std::vector<std::string> got;
    for (std::string t; read_a80(f, t);) got.push_back(t);
    EXPECT_EQ(got, (std::vector<std::string>{pad("\\fiz\\fn m", 80), std::string(80, ' '),
                                             std::string(80, 'L'), pad("\ttab kept", 80), pad("last", 80)}));
}

// Every path gives the library's correctly rounded value: the tracker's form
// [-]d.ddddE+xx with all five-digit mantissas at the exponents where the
// exact paths of a float and of a double begin and end and where a float
// overflows or goes subnormal; then random shapes, digit counts up to 25,
// with and without point and exponent. All go through the field reading as
// 32- and 64-bit values and through the free reader (64-bit fields at even
// places); the tracker's through the fixed reader's full-field path too.
TEST_F(RunFiles, EveryNumberPathIsBitIdenticalToFromChars) {
    constexpr int kFields = 5;
    std::vector<std::string> texts;
    std::string fixed, free;
    for (int x : {-45, -39, -19, -18, -7, -6, 14, 15, 26, 27, 39})
        for (int m = 10000; m <= 99999; ++m) {
            char t[32];
            std::snprintf(t, sizeof t, "%s%d.%04dE%c%02d", m % 2 ? "-" : "", m / 10000, m % 10000,
                          x < 0 ? '-' : '+', std::abs(x));
            texts.emplace_back(t);
            fixed += right_in(t, 12) + (texts.size() % kFields ? "" : "\n");
        }
    const std::size_t tracker = texts.size();
    std::mt19937_64 rng(20240501);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    while (texts.size() < tracker + 5000) {
        std::string digits;
        for (int k = pick(1, 25); k > 0; --k) digits += static_cast<char>('0' + pick(0, 9));
        const int point = pick(-1, static_cast<int>(digits.size()));  // -1: no point
        std::string t = (pick(0, 2) ? "" : "-") + (point < 0 ? digits : digits.insert(point, "."));
        if (pick(0, 1)) t += "E" + std::to_string(pick(-60, 60));
        texts.push_back(t);
    }
    for (std::size_t k = 0; k < texts.size(); ++k) free += texts[k] + ((k + 1) % kFields ? " " : "\n");

    long differ = 0;
    auto check = [&](auto got, const std::string& t, const char* where) {
        if (!same_bits(got, library_value<decltype(got)>(t)) && differ++ < 5)
            ADD_FAILURE() << t << " reads " << got << " " << where;
    };
    for (const std::string& t : texts) {
        float f = -123.0f;
        double d = -123.0;
        ASSERT_TRUE(parse_fortran_real(t, 0, f) && parse_fortran_real(t, 0, d)) << t;
        check(f, t, "as a float");
        check(d, t, "as a double");
    }
    TableFile &fx = table("fixed", fixed), &fr = table("free", free);
    float r[kFields], fv[kFields];
    double dv[kFields];
    std::vector<FreeField> targets;
    for (int j = 0; j < kFields; ++j) targets.push_back(j % 2 ? FreeField(&fv[j]) : FreeField(&dv[j]));
    std::size_t k = 0;
    for (; read_free(fr, targets); k += kFields) {
        const bool in_fixed = k < tracker && read_fixed(fx, r);
        EXPECT_EQ(in_fixed, k < tracker);
        for (std::size_t j = 0; j < kFields; ++j) {
            j % 2 ? check(fv[j], texts[k + j], "in a free record")
                  : check(dv[j], texts[k + j], "in a free record");
            if (in_fixed) check(r[j], texts[k + j], "in a fixed record");
        }
    }
    EXPECT_EQ(k, texts.size());
    EXPECT_EQ(differ, 0);
}

}  // namespace
