// The run file readers, by record form: lines of a table, fixed records cut
// by columns, free records, label lines, and the number conversion behind
// them checked bit for bit against the library's correctly rounded one.
#include "core/run_files.hpp"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using viewer::testing::library_value;
using viewer::testing::same_bits;

// Numbers in their shortest exact form (so -0, inf and nan show), blank-separated.
template <class T>
std::string shortest(T v) {
    char b[64];
    return std::string(b, std::to_chars(b, b + sizeof b, v).ptr);
}
std::string text(std::span<const float> v) {
    std::string s;
    for (float x : v) s += (s.empty() ? "" : " ") + shortest(x);
    return s;
}

// Fields of `n` columns each, right-aligned.
std::string cols(std::initializer_list<const char*> fields, int n = 12) {
    std::string s;
    for (const char* t : fields) s += right_in(t, n);
    return s;
}

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

    // Every record `read` gives until it gives none, or the message of the
    // error in its place, with the file named without its folder.
    template <class Read>
    std::vector<std::string> records(Read read) const {
        std::vector<std::string> out;
        for (int k = 0; k < 50; ++k) try {
                const std::optional<std::string> r = read();
                if (!r) break;
                out.push_back(*r);
            } catch (const RecordError& e) {
                out.push_back(e.message().substr(path("").size()));
            }
        return out;
    }
    // Fixed or free records of `n` real fields, which start at 99 so that
    // one left alone would show; a truth field after the reals on request.
    std::vector<std::string> fixed(TableFile& f, std::size_t n, int width = 12, bool truth = false) {
        bool l = false;
        return records([&]() -> std::optional<std::string> {
            std::vector<float> r(n, 99.0f);
            l = !l;
            if (!read_fixed(f, r, truth ? &l : nullptr, width)) return {};
            return text(r) + (truth ? l ? " T" : " F" : "");
        });
    }
    std::vector<std::string> free(TableFile& f, std::size_t n) {
        return records([&]() -> std::optional<std::string> {
            std::vector<float> r(n, 99.0f);
            std::vector<FreeField> targets;
            for (float& v : r) targets.emplace_back(&v);
            if (!read_free(f, targets)) return {};
            return text(r);
        });
    }

    viewer::testing::TempDir dir_;
    std::vector<std::unique_ptr<TableFile>> files_;
};

std::vector<std::string> all_lines(TableFile& f) {
    std::vector<std::string> out;
    for (std::string_view l; f.next_line(l);) out.emplace_back(l);
    return out;
}

TEST_F(RunFiles, LinesEndsRewindAndFilesThatAreNoTables) {
    const std::vector<std::string> abc{"a", "bb", "", "ccc"}, open_end{"a", "last"};
    // clang-format off
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"a\nbb\n\nccc\n", abc}, {"a\r\nbb\r\n\r\nccc\r\n", abc}, {"a\nlast", open_end},
        {"a\nlast\r", open_end}, {"", {}}, {"\n", {""}}, {"\xEF\xBB\xBF" "a\nbb\n\nccc\n", abc}};
    // clang-format on
    for (const auto& [bytes, lines] : cases) EXPECT_EQ(all_lines(table("t", bytes)), lines) << bytes;

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
    EXPECT_FALSE(missing.open(path("no-such-file")) || missing.is_open());
}

TEST_F(RunFiles, LinesLongerThanTheBufferComeWholeAndMemoryStaysFlat) {
    const std::string long_line(1'500'000, 'x');
    TableFile& f = table("long", "head\n" + long_line + "\ntail\n" + long_line);
    EXPECT_EQ(all_lines(f), (std::vector<std::string>{"head", long_line, "tail", long_line}));

    // Many short lines, several times the buffer in all: the buffer keeps its size.
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

TEST_F(RunFiles, FixedRecordsAreCutByColumnsAndFollowTheE12_4ReadingRules) {
    const std::string seven = cols({"1.0", "2.0", "3.0", "4.0", "5.0", "6.0", "7.0"});
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {"  1.2345E+00  6.7890E+01", "1.2345 67.89 0 0 0 0 0"},  // fields past the line end read 0
        // Cut by columns, not at blanks: the exponent lost a digit, by luck still 0.
        {"   1.2345E+00  6.7890E+01", "1.2345 6.789 1e-04 0 0 0 0"},
        {"-1.23456E-01-2.50000E+00", "-0.123456 -2.5 0 0 0 0 0"},  // fields touch
        // Without a point the last four digits are decimals, with an exponent
        // too, and there may be fewer digits than decimals; -0 keeps its sign;
        // what stands behind the last field is ignored.
        {cols({"12345", "12345E2", "-5", "1.2345", "7.", ".5E1", "-0"}) + " and more", "1.2345 123.45 -5e-04 1.2345 7 5 -0"},
        // Inner blanks; D and Q exponents; an exponent with its sign and no letter.
        {cols({"1.23 45E+00", "1.0000D+01", "2.5000Q-01", "1.5000+001", "1.0000-002", "+2.0000e+00"}), "1.2345 10 0.25 15 0.01 2 0"},
        {"", "0 0 0 0 0 0 0"},  // a blank line is a record of zeros
        {"\t 1.0000E+00  2.0000E+00", "1 2 0 0 0 0 0"},  // a tab is one blank column
        // Past the range of a float: infinity or 0; a subnormal is kept.
        {cols({"1.0000E+39", "-1.0000E+39", "1.0000E-50", "-1.0000E-50", "1.0000E-40", "inf", "nan"}), "inf -inf 0 -0 1e-40 inf nan"},
        {cols({"NaN", "Infinity", "-Infinity", "+Inf", "nan", "1.", "2."}), "nan inf -inf inf nan 1 2"},  // a Fortran runtime's spellings
        {seven + "\r", "1 2 3 4 5 6 7"},
        {"  1.0000E+00  2.0000E+00  1.2x45E+00", "cols, line 11, column 25: cannot read a number from \"  1.2x45E+00\""},
        {"       1.2.3", "cols, line 12, column 1: cannot read a number from \"       1.2.3\""},
        {"      1.0E+ ", "cols, line 13, column 1: cannot read a number from \"      1.0E+ \""},
        {"           .", "cols, line 14, column 1: cannot read a number from \"           .\""},
        {"           -", "cols, line 15, column 1: cannot read a number from \"           -\""},
        {"          E5", "cols, line 16, column 1: cannot read a number from \"          E5\""},
        {"  1.0000E+00        abcd", "cols, line 17, column 13: cannot read a number from \"        abcd\""},
    };
    // clang-format on
    std::string bytes;
    std::vector<std::string> want;
    for (const auto& [line, record] : cases) bytes += line + "\n", want.push_back(record);
    // A last line without its line end is read when whole, dropped when cut (still being written).
    EXPECT_EQ(fixed(table("cols", bytes + seven.substr(0, 30)), 7), want);
    EXPECT_EQ(fixed(table("w10", "  1.50E+00 -2.25E+00     3.125"), 3, 10),
              (std::vector<std::string>{"1.5 -2.25 3.125"}));

    // A truth field after the reals: its first non-blank letter, blank is false.
    TableFile& f = table("cathode", seven + "  T\n" + seven + "  F\n" + seven + ".TRUE.\n" + seven +
                                        "  t  rest\n" + seven + "   \n" + seven + "\n" + seven + "  X\n");
    const std::string s7 = "1 2 3 4 5 6 7";
    EXPECT_EQ(
        fixed(f, 7, 12, true),
        (std::vector<std::string>{s7 + " T", s7 + " F", s7 + " T", s7 + " T", s7 + " F", s7 + " F",
                                  "cathode, line 7, column 85: cannot read a truth value from \"  X\""}));
}

TEST_F(RunFiles, FreeRecordsAreSplitAtBlanksCommasAndLineEnds) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"    1    0  1.2345E-01  2.0E+00 3 4 5 6\r\n"  // one line
         "2,1,1.5,2.5\t3.5 , 4.5,5.5,6.5\n"             // commas and a tab
         "\n"                                           // a blank line is passed over
         "   3   1\n   0.1 0.2\n"                       // a record over three lines,
         "0.3 0.4 0.5 0.6   9 9 9 dropped\n"            // the rest of its last line dropped
         "4 0 1 2 3 4 5 6 7 8 9\n",                     // more numbers than fields
         {"1 0 0.12345 2 3 4 5 6", "2 1 1.5 2.5 3.5 4.5 5.5 6.5", "3 1 0.1 0.2 0.3 0.4 0.5 0.6",
          "4 0 1 2 3 4 5 6"}},
        // A slash ends a record early: the fields after it keep their values.
        {"1 2 / 3 4\n5 6 7 8 9 10 11 12\n", {"1 2 99 99 99 99 99 99", "5 6 7 8 9 10 11 12"}},
        {"1 2 3 4 5 6 7 8\n  1.5 2 3 4 5 6 7 7.5",
         {"1 2 3 4 5 6 7 8", "1.5 2 3 4 5 6 7 7.5"}},           // no line end
        {"1 2 3 4 5 6 7 8\n8 9 10 11\n", {"1 2 3 4 5 6 7 8"}},  // one cut by the end of the file is dropped
        {"1 2 3 4 5 6 7 8\n8 9 10 11 12 1.3E", {"1 2 3 4 5 6 7 8"}},  // even in a number
        {"NaN Infinity -Infinity +Inf 1 2 3 4\n", {"nan inf -inf inf 1 2 3 4"}},
        {"", {}},
        {"\n\n  \n", {}},
    };
    for (const auto& [bytes, want] : cases) EXPECT_EQ(free(table("t", bytes), 8), want) << bytes;

    // A dropped record leaves the targets alone.
    std::vector<float> v(2, -1.0f);
    EXPECT_FALSE(read_free(table("cut", "1\n"), {&v[0], &v[1]}));
    EXPECT_EQ(v, (std::vector<float>{-1, -1}));
}

TEST_F(RunFiles, FreeRecordFieldsAreTypedAndBadOnesNameTheirColumn) {
    int i = 0, n = 0;
    float r = 0;
    double d = 0;
    TableFile& f = table("typed",
                         "+5 -7 1.0D+01 1.234567890123456789E-03\n"
                         "3 2 1.5+2 -2.5d-1\n"
                         "1 0 7 0.1000000000000000055511151231257827\n"
                         "  1.0  2 3 4\n"        // a real in an integer field
                         "1 3000000000 3 4\n"    // an integer past 32 bits
                         "1 2 3.0.0 4\n"         // not a number
                         "1 2 ************ 4\n"  // a value past its width, as Fortran writes it
                         "1 2 3 1e\n");
    EXPECT_EQ(records([&]() -> std::optional<std::string> {
                  if (!read_free(f, {&i, &n, &r, &d})) return {};
                  return shortest(i) + " " + shortest(n) + " " + shortest(r) + " " + shortest(d);
              }),
              (std::vector<std::string>{"5 -7 10 0.0012345678901234567",  // 64-bit fields keep their digits
                                        "3 2 150 -0.25", "1 0 7 0.1",     // an integer in a real field
                                        "typed, line 4, column 3: cannot read an integer from \"1.0\"",
                                        "typed, line 5, column 3: cannot read an integer from \"3000000000\"",
                                        "typed, line 6, column 5: cannot read a number from \"3.0.0\"",
                                        "typed, line 7, column 5: cannot read a number from \"************\"",
                                        "typed, line 8, column 7: cannot read a number from \"1e\""}));
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
    constexpr std::size_t kFields = 5;
    std::vector<std::string> texts;
    char buf[32];
    for (int x : {-45, -39, -19, -18, -7, -6, 14, 15, 26, 27, 39})
        for (int m = 10000; m <= 99999; ++m)
            texts.emplace_back(buf, std::snprintf(buf, sizeof buf, "%s%d.%04dE%+03d", m % 2 ? "-" : "",
                                                  m / 10000, m % 10000, x));
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
    std::string fixed_bytes, free_bytes;
    for (std::size_t k = 0; k < texts.size(); ++k) {
        const bool end = (k + 1) % kFields == 0;
        if (k < tracker) fixed_bytes += right_in(texts[k], 12) + (end ? "\n" : "");
        free_bytes += texts[k] + (end ? "\n" : " ");
    }

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
    TableFile &fx = table("fixed", fixed_bytes), &fr = table("free", free_bytes);
    float r[kFields], fv[kFields];
    double dv[kFields];
    std::size_t k = 0;
    for (; read_fixed(fx, r); k += kFields)
        for (std::size_t j = 0; j < kFields; ++j) check(r[j], texts[k + j], "in a fixed record");
    EXPECT_EQ(k, tracker);
    const std::vector<FreeField> targets{&dv[0], &fv[1], &dv[2], &fv[3], &dv[4]};
    for (k = 0; read_free(fr, targets); k += kFields)
        for (std::size_t j = 0; j < kFields; ++j)
            j % 2 ? check(fv[j], texts[k + j], "in a free record")
                  : check(dv[j], texts[k + j], "in a free record");
    EXPECT_EQ(k, texts.size());
    EXPECT_EQ(differ, 0);
}

}  // namespace
