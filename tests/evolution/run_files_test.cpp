// The run file readers, by record form: lines of a table, fixed records cut
// by columns, free records, label lines, and the number conversion behind
// them checked bit for bit against the library's correctly rounded one.
#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "control/fortran_format.hpp"
#include "evolution/run_files.hpp"

namespace {

using namespace viewer;
namespace fs = std::filesystem;

class RunFiles : public ::testing::Test {
protected:
    void SetUp() override {
        std::string tmpl = (fs::temp_directory_path() / "run-files-test-XXXXXX").string();
        ASSERT_NE(mkdtemp(tmpl.data()), nullptr);
        dir_ = tmpl;
    }
    void TearDown() override {
        std::error_code ec;
        fs::remove_all(dir_, ec);
    }
    // Writes the bytes as they stand and opens the file.
    TableFile& table(const std::string& name, const std::string& bytes) {
        std::ofstream(dir_ / name, std::ios::binary) << bytes;
        files_.emplace_back(std::make_unique<TableFile>());
        EXPECT_TRUE(files_.back()->open((dir_ / name).string()));
        return *files_.back();
    }
    std::string path(const std::string& name) const { return (dir_ / name).string(); }

    fs::path dir_;
    std::vector<std::unique_ptr<TableFile>> files_;
};

std::vector<std::string> all_lines(TableFile& f) {
    std::vector<std::string> out;
    std::string_view l;
    while (f.next_line(l)) out.emplace_back(l);
    return out;
}

// Texts right-aligned in fields of 12 columns.
std::string fields(std::initializer_list<const char*> texts) {
    std::string line;
    for (const char* t : texts) line += right_in(t, 12);
    return line;
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

// The library's reading of a number, mapped as a formatted read maps the
// ends of the range: 0 below, infinity above.
template <class T>
T reference(const std::string& text) {
    const char* b = text.data();
    if (*b == '+') ++b;
    T v{};
    auto r = std::from_chars(b, text.data() + text.size(), v);
    if (r.ec == std::errc::result_out_of_range) {
        bool neg = text[0] == '-';
        std::size_t epos = text.find_first_of("eE");
        bool big = std::stoi(text.substr(epos + 1)) > 0;
        v = big ? std::numeric_limits<T>::infinity() : T(0);
        return neg ? -v : v;
    }
    EXPECT_EQ(r.ec, std::errc{}) << text;
    return v;
}

template <class T>
auto bits(T v) {
    if constexpr (sizeof(T) == 4) return std::bit_cast<std::uint32_t>(v);
    else return std::bit_cast<std::uint64_t>(v);
}

// ---------------------------------------------------------------------------
// Lines

TEST_F(RunFiles, LinesEndInLfOrCrlfAndTheLastNeedsNoEnd) {
    EXPECT_EQ(all_lines(table("lf", "a\nbb\n\nccc\n")), (std::vector<std::string>{"a", "bb", "", "ccc"}));
    EXPECT_EQ(all_lines(table("crlf", "a\r\nbb\r\n\r\nccc\r\n")),
              (std::vector<std::string>{"a", "bb", "", "ccc"}));
    EXPECT_EQ(all_lines(table("open-end", "a\nlast")), (std::vector<std::string>{"a", "last"}));
    EXPECT_EQ(all_lines(table("open-end-cr", "a\nlast\r")), (std::vector<std::string>{"a", "last"}));
    EXPECT_TRUE(all_lines(table("empty", "")).empty());
    EXPECT_EQ(all_lines(table("one-blank", "\n")), (std::vector<std::string>{""}));

    TableFile& f = table("numbers", "x\ny\nz");
    std::string_view l;
    ASSERT_TRUE(f.next_line(l));
    ASSERT_TRUE(f.next_line(l));
    EXPECT_EQ(f.line_number(), 2);
    EXPECT_FALSE(TableFile().next_line(l)) << "a file never opened has no lines";
}

TEST_F(RunFiles, LinesLongerThanTheBufferComeWholeAndMemoryStaysFlat) {
    const std::string long_line(1'500'000, 'x');
    TableFile& f = table("long", "head\n" + long_line + "\ntail\n" + long_line);
    std::string_view l;
    ASSERT_TRUE(f.next_line(l));
    EXPECT_EQ(l, "head");
    ASSERT_TRUE(f.next_line(l));
    EXPECT_EQ(l.size(), long_line.size());
    EXPECT_EQ(l, long_line);
    ASSERT_TRUE(f.next_line(l));
    EXPECT_EQ(l, "tail");
    ASSERT_TRUE(f.next_line(l));
    EXPECT_EQ(l, long_line) << "a long last line without a line end";
    EXPECT_FALSE(f.next_line(l));

    // Many short lines, several times the buffer in all: the buffer keeps
    // its size, and the line count and the last line come out right.
    std::string many;
    for (int i = 0; i < 200'000; ++i) many += fmt_e12_4(i) + fmt_e12_4(-i) + "\n";
    TableFile& g = table("many", many);
    const std::size_t start = g.buffer_capacity();
    long n = 0;
    std::string last;
    while (g.next_line(l)) ++n, last = l;
    EXPECT_EQ(n, 200'000);
    EXPECT_EQ(last, fmt_e12_4(199'999) + fmt_e12_4(-199'999));
    EXPECT_EQ(g.buffer_capacity(), start);
    EXPECT_LT(g.buffer_capacity(), many.size() / 4);

    // The buffer grown for a long line is let go when the next file opens.
    ASSERT_TRUE(f.open(path("many")));
    EXPECT_EQ(f.buffer_capacity(), start);
}

TEST_F(RunFiles, RewindStartsAgainAtTheFirstLine) {
    TableFile& f = table("t", "1\n2\n3\n");
    std::string_view l;
    ASSERT_TRUE(f.next_line(l));
    ASSERT_TRUE(f.next_line(l));
    f.rewind();
    EXPECT_EQ(f.line_number(), 0);
    ASSERT_TRUE(f.next_line(l));
    EXPECT_EQ(l, "1");
    EXPECT_EQ(f.line_number(), 1);
    while (f.next_line(l)) {
    }
    f.rewind();  // after the end of the file as well
    EXPECT_EQ(all_lines(f), (std::vector<std::string>{"1", "2", "3"}));

    TableFile missing;
    EXPECT_FALSE(missing.open(path("no-such-file")));
    EXPECT_FALSE(missing.is_open());
    EXPECT_FALSE(missing.open(dir_.string())) << "a directory is no table";
    EXPECT_FALSE(missing.is_open());
    f.close();
    EXPECT_FALSE(f.is_open());
    EXPECT_FALSE(f.next_line(l));
}

// ---------------------------------------------------------------------------
// Fixed records

TEST_F(RunFiles, FixedRecordsAreCutByColumnsNotAtBlanks) {
    float r[2];
    TableFile& f = table("cols",
                         "  1.2345E+00  6.7890E+01\n"
                         "   1.2345E+00  6.7890E+01\n"     // one column to the right
                         "-1.23456E-01-2.50000E+00\n"      // fields touch
                         "  1.0000E+00  2.0000E+00  3.0000E+00 and more text\n");
    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_FLOAT_EQ(r[0], 1.2345f);
    EXPECT_FLOAT_EQ(r[1], 67.89f);
    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_FLOAT_EQ(r[0], 1.2345f);  // "   1.2345E+0": the exponent lost a digit, by luck still 0
    EXPECT_FLOAT_EQ(r[1], 6.789f);   // "0  6.7890E+0": blanks ignored, read wrongly
    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_FLOAT_EQ(r[0], -0.123456f);
    EXPECT_FLOAT_EQ(r[1], -2.5f);
    ASSERT_TRUE(read_fixed(f, r)) << "what stands behind the last field is ignored";
    EXPECT_FLOAT_EQ(r[0], 1.0f);
    EXPECT_FLOAT_EQ(r[1], 2.0f);
    EXPECT_FALSE(read_fixed(f, r));

    // Another field width.
    float w[3];
    TableFile& g = table("w10", "  1.50E+00 -2.25E+00     3.125\n");
    ASSERT_TRUE(read_fixed(g, w, nullptr, 10));
    EXPECT_FLOAT_EQ(w[0], 1.5f);
    EXPECT_FLOAT_EQ(w[1], -2.25f);
    EXPECT_FLOAT_EQ(w[2], 3.125f);
}

TEST_F(RunFiles, FixedFieldsFollowTheE12_4ReadingRules) {
    float r[7];
    TableFile& f = table("rules",
                         fields({"12345", "12345E2", "-5", "1.2345", "7.", ".5E1", "-0"}) + "\n" +
                         fields({"1.23 45E+00", "1.0000D+01", "2.5000Q-01", "1.5000+001", "1.0000-002",
                                 "+2.0000e+00"}) + "\n" +
                         "  1.0000E+00  2.0000E+00\n"  // short line
                         "\n"                          // blank line
                         "  1.0000E+39 -1.0000E+39  1.0000E-50 -1.0000E-50  1.0000E-40         inf         nan\n"
                         "  1.0000E+00  2.0000E+00  3.0000E+00  4.0000E+00  5.0000E+00  6.0000E+00  7.0000E+00\r\n");
    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_FLOAT_EQ(r[0], 1.2345f);   // no point: the last four digits are decimals
    EXPECT_FLOAT_EQ(r[1], 123.45f);   // the same with an exponent
    EXPECT_FLOAT_EQ(r[2], -0.0005f);  // fewer digits than decimals
    EXPECT_FLOAT_EQ(r[3], 1.2345f);   // a point: read as written
    EXPECT_FLOAT_EQ(r[4], 7.0f);
    EXPECT_FLOAT_EQ(r[5], 5.0f);
    EXPECT_EQ(r[6], 0.0f);
    EXPECT_TRUE(std::signbit(r[6]));

    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_FLOAT_EQ(r[0], 1.2345f);  // inner blanks are ignored
    EXPECT_FLOAT_EQ(r[1], 10.0f);    // D and Q exponents
    EXPECT_FLOAT_EQ(r[2], 0.25f);
    EXPECT_FLOAT_EQ(r[3], 15.0f);    // an exponent with its sign and no letter
    EXPECT_FLOAT_EQ(r[4], 0.01f);
    EXPECT_FLOAT_EQ(r[5], 2.0f);
    EXPECT_EQ(r[6], 0.0f) << "a field past the end of the line reads as 0";

    for (float& v : r) v = 99.0f;
    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_EQ(std::vector<float>(r, r + 7), (std::vector<float>{1, 2, 0, 0, 0, 0, 0}));
    for (float& v : r) v = 99.0f;
    ASSERT_TRUE(read_fixed(f, r)) << "a blank line is a record of zeros";
    EXPECT_EQ(std::vector<float>(r, r + 7), std::vector<float>(7, 0.0f));

    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_EQ(r[0], std::numeric_limits<float>::infinity());  // past the range of a float
    EXPECT_EQ(r[1], -std::numeric_limits<float>::infinity());
    EXPECT_EQ(r[2], 0.0f);
    EXPECT_EQ(r[3], 0.0f);
    EXPECT_TRUE(std::signbit(r[3]));
    EXPECT_EQ(r[4], 1e-40f);  // a subnormal float is kept
    EXPECT_TRUE(std::isinf(r[5]));
    EXPECT_TRUE(std::isnan(r[6]));

    ASSERT_TRUE(read_fixed(f, r)) << "CRLF";
    EXPECT_FLOAT_EQ(r[6], 7.0f);
    EXPECT_FALSE(read_fixed(f, r));
    f.rewind();
    ASSERT_TRUE(read_fixed(f, r));
    EXPECT_FLOAT_EQ(r[0], 1.2345f);
}

TEST_F(RunFiles, FixedRecordWithTruthField) {
    float r[7];
    bool l = false;
    const std::string seven = "  1.0000E+00  2.0000E+00  3.0000E+00  4.0000E+00  5.0000E+00  6.0000E+00  7.0000E+00";
    TableFile& f = table("cathode", seven + "  T\n" + seven + "  F\n" + seven + ".TRUE.\n" + seven + "  t  rest\n" +
                                        seven + "   \n" + seven + "\n" + seven + "  X\n");
    std::vector<bool> got;
    for (int k = 0; k < 6; ++k) {
        l = !l;  // so that a field that leaves the flag alone would show
        ASSERT_TRUE(read_fixed(f, r, &l));
        got.push_back(l);
    }
    EXPECT_EQ(got, (std::vector<bool>{true, false, true, true, false, false}));
    EXPECT_FLOAT_EQ(r[6], 7.0f);
    EXPECT_EQ(error_of([&] { read_fixed(f, r, &l); }),
              path("cathode") + ", line 7, column 85: cannot read a truth value from \"  X\"");
}

TEST_F(RunFiles, FixedRecordThatCannotBeConvertedNamesFileLineAndColumn) {
    float r[7];
    const std::string good = "  1.0000E+00  2.0000E+00  3.0000E+00  4.0000E+00\n";
    TableFile& f = table("bad", good + good + "  1.0000E+00  2.0000E+00  3.0000E+00  1.2x45E+00\n" +
                                    "       1.2.3\n" + "      1.0E+ \n" + "           .\n" + "           -\n" +
                                    "          E5\n" + "  1.0000E+00        abcd\n");
    ASSERT_TRUE(read_fixed(f, r));
    ASSERT_TRUE(read_fixed(f, r));
    try {
        read_fixed(f, r);
        FAIL() << "letters in a number field";
    } catch (const RecordError& e) {
        EXPECT_EQ(e.file, path("bad"));
        EXPECT_EQ(e.line, 3);
        EXPECT_EQ(e.column, 37);
        EXPECT_STREQ(e.what(), "cannot read a number from \"  1.2x45E+00\"");
        EXPECT_EQ(e.message(), path("bad") + ", line 3, column 37: cannot read a number from \"  1.2x45E+00\"");
    }
    for (int line = 4; line <= 8; ++line)
        EXPECT_NE(error_of([&] { read_fixed(f, r); }).find(", line " + std::to_string(line) + ", column 1:"),
                  std::string::npos)
            << "line " << line;
    EXPECT_EQ(error_of([&] { read_fixed(f, r); }),
              path("bad") + ", line 9, column 13: cannot read a number from \"        abcd\"");
}

// ---------------------------------------------------------------------------
// Free records

TEST_F(RunFiles, FreeRecordsAreSplitAtBlanksCommasAndLineEnds) {
    TableFile& f = table("free",
                         "    1    0  1.2345E-01  2.0E+00 3 4 5 6\n"  // one line
                         "2,1,1.5,2.5\t3.5 , 4.5,5.5,6.5\n"            // commas and a tab
                         "\n"                                          // a blank line is passed over
                         "   3   1\n"                                  // a record over three lines
                         "   0.1 0.2\n"
                         "0.3 0.4 0.5 0.6   9 9 9 dropped\n"           // rest of its last line dropped
                         "4 0 1 2 3 4 5 6 7 8 9\n");                   // more numbers than fields
    int i = 0, st = 0;
    float v[6];
    auto read = [&] { return read_free(f, {&i, &st, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5]}); };
    ASSERT_TRUE(read());
    EXPECT_EQ(i, 1);
    EXPECT_EQ(st, 0);
    EXPECT_FLOAT_EQ(v[0], 0.12345f);
    EXPECT_FLOAT_EQ(v[5], 6.0f);
    ASSERT_TRUE(read());
    EXPECT_EQ(i, 2);
    EXPECT_EQ(st, 1);
    EXPECT_EQ(std::vector<float>(v, v + 6), (std::vector<float>{1.5f, 2.5f, 3.5f, 4.5f, 5.5f, 6.5f}));
    ASSERT_TRUE(read());
    EXPECT_EQ(i, 3);
    EXPECT_EQ(std::vector<float>(v, v + 6), (std::vector<float>{0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f}));
    EXPECT_EQ(f.line_number(), 6);
    ASSERT_TRUE(read()) << "the next record starts on a new line";
    EXPECT_EQ(i, 4);
    EXPECT_FLOAT_EQ(v[5], 6.0f);
    EXPECT_FALSE(read());

    f.rewind();
    ASSERT_TRUE(read());
    EXPECT_EQ(i, 1);
}

TEST_F(RunFiles, FreeRecordCutByTheEndOfTheFileIsDropped) {
    float z = -1, t = -1, e = -1, g = -1, l = -1, x = -1, y = -1;
    auto read = [&](TableFile& f) { return read_free(f, {&z, &t, &e, &g, &l, &x, &y}); };
    TableFile& f = table("ref", "1 2 3 4 5 6 7\n8 9 10 11\n");
    ASSERT_TRUE(read(f));
    EXPECT_FLOAT_EQ(y, 7.0f);
    EXPECT_FALSE(read(f)) << "a record that stops after four numbers";
    EXPECT_FLOAT_EQ(z, 1.0f) << "a dropped record leaves the targets alone";
    EXPECT_FLOAT_EQ(g, 4.0f);
    EXPECT_FALSE(read(f));

    TableFile& h = table("open-end", "1 2 3 4 5 6 7\n  1.5 2 3 4 5 6 7.5");
    ASSERT_TRUE(read(h));
    ASSERT_TRUE(read(h)) << "a last line without a line end";
    EXPECT_FLOAT_EQ(y, 7.5f);
    EXPECT_FALSE(read(h));

    EXPECT_FALSE(read(table("empty", ""))) << "an empty table has no records";
    EXPECT_FALSE(read(table("blank", "\n\n  \n"))) << "nor has one of blank lines";

    // A slash ends a record early; the fields after it keep their values.
    TableFile& s = table("slash", "1 2 / 3 4\n5 6 7 8 9 10 11\n");
    x = 42;
    ASSERT_TRUE(read(s));
    EXPECT_FLOAT_EQ(z, 1.0f);
    EXPECT_FLOAT_EQ(t, 2.0f);
    EXPECT_FLOAT_EQ(x, 42.0f);
    ASSERT_TRUE(read(s));
    EXPECT_FLOAT_EQ(z, 5.0f);
}

TEST_F(RunFiles, FreeRecordFieldsAreTypedAndBadOnesNameTheirColumn) {
    int i = 0, n = 0;
    float r = 0;
    double d = 0;
    TableFile& f = table("typed",
                         "+5 -7 1.0D+01 1.234567890123456789E-03\n"
                         "3 2 1.5+2 -2.5d-1\n"
                         "1 0 7 0.1000000000000000055511151231257827\n"
                         "  1.0  2 3 4\n"       // a real in an integer field
                         "1 3000000000 3 4\n"   // an integer past 32 bits
                         "1 2 3.0.0 4\n"        // not a number
                         "1 2 3 1e\n");
    auto read = [&] { return read_free(f, {&i, &n, &r, &d}); };
    ASSERT_TRUE(read());
    EXPECT_EQ(i, 5);
    EXPECT_EQ(n, -7);
    EXPECT_EQ(r, 10.0f);
    EXPECT_EQ(d, 1.234567890123456789E-03) << "64-bit fields keep their digits";
    ASSERT_TRUE(read());
    EXPECT_EQ(r, 150.0f);
    EXPECT_EQ(d, -0.25);
    ASSERT_TRUE(read());
    EXPECT_EQ(r, 7.0f) << "an integer in a real field";
    EXPECT_EQ(d, 0.1);
    EXPECT_EQ(error_of(read), path("typed") + ", line 4, column 3: cannot read an integer from \"1.0\"");
    EXPECT_EQ(error_of(read), path("typed") + ", line 5, column 3: cannot read an integer from \"3000000000\"");
    EXPECT_EQ(error_of(read), path("typed") + ", line 6, column 5: cannot read a number from \"3.0.0\"");
    EXPECT_EQ(error_of(read), path("typed") + ", line 7, column 7: cannot read a number from \"1e\"");
    EXPECT_EQ(i, 1) << "a record that fails writes nothing";
    EXPECT_EQ(d, 0.1);
}

// ---------------------------------------------------------------------------
// Label lines

TEST_F(RunFiles, LabelLinesAreCutOrPaddedToEightyCharacters) {
    const std::string long_text(100, 'L');
    TableFile& f = table("lab", "\\fiz\\fn m\r\n\n" + long_text + "\n\ttab kept  \nlast");
    std::string t;
    ASSERT_TRUE(read_a80(f, t));
    EXPECT_EQ(t, pad("\\fiz\\fn m", 80));
    ASSERT_TRUE(read_a80(f, t));
    EXPECT_EQ(t, std::string(80, ' '));
    ASSERT_TRUE(read_a80(f, t));
    EXPECT_EQ(t, std::string(80, 'L'));
    ASSERT_TRUE(read_a80(f, t));
    EXPECT_EQ(t, pad("\ttab kept", 80));
    ASSERT_TRUE(read_a80(f, t));
    EXPECT_EQ(t, pad("last", 80));
    EXPECT_FALSE(read_a80(f, t));
}

// ---------------------------------------------------------------------------
// Number conversion: every path gives the library's correctly rounded float

// All five-digit mantissas at every exponent where the exact fast path
// works, and samples elsewhere, through the field parser.
TEST(NumberConversion, E12_4FieldsAreBitIdenticalToFromChars) {
    char text[32];
    long checked = 0, differ = 0;
    for (int x = -45; x <= 40; ++x) {
        const bool dense = x >= -6 && x <= 14;
        for (int m = 10000; m <= 99999; m += dense ? 1 : 7) {
            {
                std::snprintf(text, sizeof text, "%s%d.%04dE%c%02d", m % 2 ? "-" : "", m / 10000, m % 10000,
                              x < 0 ? '-' : '+', std::abs(x));
                float got = -123.0f;
                ASSERT_TRUE(parse_fortran_real(text, 4, got)) << text;
                if (bits(got) != bits(reference<float>(text)) && differ++ < 5)
                    ADD_FAILURE() << text << " reads " << got << ", from_chars " << reference<float>(text);
                ++checked;
            }
        }
    }
    EXPECT_EQ(differ, 0);
    EXPECT_GT(checked, 1'900'000);
}

// Random numbers of every shape: digit counts up to 25, with and without
// point, with and without exponent, as 32- and 64-bit values.
TEST(NumberConversion, AnyNumberFormIsBitIdenticalToFromChars) {
    std::mt19937_64 rng(20240501);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int n = 0; n < 300'000; ++n) {
        std::string digits;
        int nd = pick(1, 25);
        for (int k = 0; k < nd; ++k) digits += static_cast<char>('0' + pick(0, 9));
        int point = pick(-1, nd);  // -1: no point
        int x = pick(0, 3) == 0 ? 0 : pick(-60, 60);
        bool with_x = x != 0 || pick(0, 1);
        std::string sign = pick(0, 2) == 0 ? "-" : "";

        std::string text = sign;
        text += point < 0 ? digits : digits.substr(0, point) + "." + digits.substr(point);
        if (with_x) text += "E" + std::to_string(x);
        // What it means: with no point, none of the digits are decimals here.
        std::string plain = sign + digits + "e" + std::to_string(x - (point < 0 ? 0 : nd - point));

        float f = -123.0f;
        double d = -123.0;
        ASSERT_TRUE(parse_fortran_real(text, 0, f)) << text;
        ASSERT_TRUE(parse_fortran_real(text, 0, d)) << text;
        ASSERT_EQ(bits(f), bits(reference<float>(plain))) << text;
        ASSERT_EQ(bits(d), bits(reference<double>(plain))) << text;
    }
}

// The column reader has its own fast path for full fields, and the free
// reader its own token path: both must agree with the library too.
TEST_F(RunFiles, RecordReadersAreBitIdenticalToFromChars) {
    std::mt19937 rng(99);
    std::uniform_int_distribution<int> mant(0, 99999), ex(-40, 40), sign(0, 1);
    std::vector<std::string> texts;
    std::string fixed, free;
    for (int n = 0; n < 70'000; ++n) {
        int m = mant(rng), x = ex(rng);
        char t[32];
        std::snprintf(t, sizeof t, "%s%d.%04dE%c%02d", sign(rng) ? "-" : "", m / 10000, m % 10000, x < 0 ? '-' : '+',
                      std::abs(x));
        texts.push_back(t);
        fixed += right_in(t, 12);
        free += std::string(" ") + t;
        if (n % 7 == 6) fixed += "\n", free += "\n";
    }
    TableFile& f = table("fixed", fixed);
    TableFile& g = table("free", free);
    float r[7];
    std::size_t k = 0;
    while (read_fixed(f, r))
        for (float v : r) {
            ASSERT_EQ(bits(v), bits(reference<float>(texts[k]))) << texts[k] << " in a fixed record";
            ++k;
        }
    EXPECT_EQ(k, texts.size());
    // Mixed widths in one record: 64-bit fields at even places, 32-bit at odd.
    float fv[7];
    double dv[7];
    std::vector<FreeField> fields;
    for (int j = 0; j < 7; ++j) fields.push_back(j % 2 ? FreeField(&fv[j]) : FreeField(&dv[j]));
    k = 0;
    while (read_free(g, fields))
        for (int j = 0; j < 7; ++j, ++k) {
            if (j % 2) {
                ASSERT_EQ(bits(fv[j]), bits(reference<float>(texts[k]))) << texts[k] << " in a free record";
            } else {
                ASSERT_EQ(bits(dv[j]), bits(reference<double>(texts[k]))) << texts[k] << " in a free record";
            }
        }
    EXPECT_EQ(k, texts.size());
}

}  // namespace
