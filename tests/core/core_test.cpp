// The Fortran-style output fields; the run file readers by record form, over
// the bytes other programs leave (Fortran spellings, CRLF, a BOM, cut
// records); the number conversion behind them checked bit for bit against
// the library's correctly rounded one; and every real and bundled table read
// as its kind.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <set>

#include "core/run_catalogue.hpp"
#include "core/run_files.hpp"
#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

template <class T>
std::string shortest(T v) {  // so that -0, inf and nan show
    char b[64];
    return std::string(b, std::to_chars(b, b + sizeof b, v).ptr);
}

enum Form { Lines, Text, Typed, Fixed, Truth, Free };

// What a reader gives from `bytes` until it gives nothing: each record as its
// numbers (a field the record left alone stays 99), or the message of its
// error, the file "t" named without its folder. Read twice, with a rewind
// between; the buffer never grows with the file, only with its longest line.
std::vector<std::string> records(Form form, const std::string& bytes) {
    TempDir d;
    d.write("t", bytes);
    TableFile f;
    EXPECT_TRUE(f.open(d.file("t")));
    std::vector<std::string> out[2];
    int i = 0, n = 0;
    double x = 0;
    std::size_t longest = 0, peak = 0;
    for (auto& o : out) {
        for (bool more = true, l = false; more && o.size() < 300'000; l = !l) try {
                std::vector<float> r(form == Free ? 8 : 7, 99.0f);
                std::string t;
                std::string_view line;
                // clang-format off
                more = form == Lines ? f.next_line(line)
                     : form == Text  ? read_a80(f, t)
                     : form == Typed ? read_free(f, {&i, &n, &r[0], &x})
                     : form == Free  ? read_free(f, {&r[0], &r[1], &r[2], &r[3], &r[4], &r[5], &r[6], &r[7]})
                                     : read_fixed(f, r, form == Truth ? &l : nullptr);
                // clang-format on
                for (float v : r) t += form < Fixed ? "" : (t.empty() ? "" : " ") + shortest(v);
                if (form == Lines) t = line;
                if (form == Typed)
                    t = shortest(i) + " " + shortest(n) + " " + shortest(r[0]) + " " + shortest(x);
                longest = std::max(longest, line.size());
                peak = std::max(peak, f.buffer_capacity());
                if (more) o.push_back(form == Truth ? t + (l ? " T" : " F") : t);
            } catch (const RecordError& e) {
                o.push_back(e.message().substr(d.path.size() + 1));
            }
        f.rewind();
    }
    EXPECT_LE(peak, std::max<std::size_t>(1 << 20, 4 * longest)) << "the buffer grew with the file";
    EXPECT_EQ(out[0], out[1]) << "read again after a rewind";
    return out[0];
}

TEST(FortranFormat, FieldsAndTexts) {
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {fmt_d(1.2345), "  1.2345D+00"}, {fmt_d(-1.2345), " -1.2345D+00"}, {fmt_d(0.0), "  0.0000D+00"}, {fmt_d(123.456), "  1.2346D+02"},
        {fmt_d(1e-5), "  1.0000D-05"}, {fmt_d(9.99995), "  1.0000D+01"},  // rounding carries into the exponent
        {fmt_d(1.5e120), "  1.5000+120"},  // three exponent digits drop the letter
        {fmt_e12_4(2.5), "  2.5000E+00"}, {fmt_exp(1.0, 8, 4, 'D'), "********"}, {fmt_float_exact(0.1f), "0.1"},  // shortest that reads back
        {fmt_d(NAN), "         NaN"}, {fmt_d(INFINITY), "    Infinity"}, {fmt_d(-INFINITY), "   -Infinity"},
        {fmt_i(42, 4), "  42"}, {fmt_i(-7, 5), "   -7"}, {fmt_i(12345, 4), "****"}, {pad("abc", 5), "abc  "}, {pad("abcdef", 3), "abc"},
        {std::string(trim_right("ab  ")), "ab"}, {std::string(trim_right("   ")), ""}, {std::string(up_to_blank("rfgun 001")), "rfgun"},
        {right_in("run5.ps", 10), "   run5.ps"}, {right_in("abcdefghijkl", 5), "abcde"}, {upp("yes, Sir  "), "YES, SIR"},
    };
    // clang-format on
    for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
}

TEST(RunFiles, EveryReaderOverTheBytesItMeets) {
    std::string many;
    std::vector<std::string> abc{"a", "bb", "", "ccc"}, s7{"1 2 3 4 5 6 7"}, many_lines;
    for (int i = 0; i < 200'000; ++i) many += many_lines.emplace_back(fmt_e12_4(i)) + "\n";
    const std::string seven = fixed_record({1, 2, 3, 4, 5, 6, 7}).substr(0, 84), big(1'500'000, 'x');
    const std::string e = "t, line 1, column ", no = ": cannot read a number from ";
    const struct {
        Form form;
        std::string bytes;
        std::vector<std::string> want;
    } cases[] = {
        // clang-format off
        {Lines, "a\nbb\n\nccc\n", abc}, {Lines, "a\r\nbb\r\n\r\nccc\r\n", abc}, {Lines, "\xEF\xBB\xBF" "a\nbb\n\nccc\n", abc},
        {Lines, "a\nlast", {"a", "last"}}, {Lines, "a\nlast\r", {"a", "last"}}, {Lines, "", {}}, {Lines, many, many_lines},
        {Lines, "head\n" + big + "\ntail\n" + big, {"head", big, "tail", big}},  // longer than the buffer
        // Cut by columns, not at blanks; fields past the line end read 0, what stands behind the last is ignored.
        {Fixed, "  1.2345E+00  6.7890E+01\n", {"1.2345 67.89 0 0 0 0 0"}}, {Fixed, "\n", {"0 0 0 0 0 0 0"}},
        {Fixed, "   1.2345E+00  6.7890E+01\n", {"1.2345 6.789 1e-04 0 0 0 0"}},
        {Fixed, "-1.23456E-01-2.50000E+00\n", {"-0.123456 -2.5 0 0 0 0 0"}}, {Fixed, "\t 1.0000E+00  2.0000E+00\n", {"1 2 0 0 0 0 0"}},
        // Without a point the last four digits are decimals, with an exponent too; -0 keeps its sign.
        {Fixed, "       12345     12345E2          -5      1.2345          7.        .5E1          -0 and more\n", {"1.2345 123.45 -5e-04 1.2345 7 5 -0"}},
        // Inner blanks; D and Q exponents; an exponent with its sign and no letter.
        {Fixed, " 1.23 45E+00  1.0000D+01  2.5000Q-01  1.5000+001  1.0000-002 +2.0000e+00\n", {"1.2345 10 0.25 15 0.01 2 0"}},
        // Past the range of a float: infinity or 0; a subnormal is kept; a Fortran runtime's spellings.
        {Fixed, "  1.0000E+39 -1.0000E+39  1.0000E-50 -1.0000E-50  1.0000E-40         inf         nan\n", {"inf -inf 0 -0 1e-40 inf nan"}},
        {Fixed, "         NaN    Infinity   -Infinity        +Inf         nan          1.          2.\n", {"nan inf -inf inf nan 1 2"}},
        {Fixed, seven, s7}, {Fixed, seven + "\r\n" + seven.substr(0, 30), s7},  // a last line cut short is still being written
        {Fixed, "  1.0000E+00  2.0000E+00  1.2x45E+00\n", {e + "25" + no + "\"  1.2x45E+00\""}},
        {Fixed, "  1.0000E+00************\n", {e + "13" + no + "\"************\""}},  // overflow
        {Fixed, "          E5\n", {e + "1" + no + "\"          E5\""}}, {Typed, "1 2 3.0.0 4\n", {e + "5" + no + "\"3.0.0\""}},
        // A truth field after the reals: its first non-blank letter, blank is false.
        {Truth, seven + "  T\n" + seven + "  F\n" + seven + ".TRUE.\n" + seven + "  t  rest\n" + seven + "   \n" + seven + "\n" + seven + "  X\n",
         {s7[0] + " T", s7[0] + " F", s7[0] + " T", s7[0] + " T", s7[0] + " F", s7[0] + " F",
          "t, line 7, column 85: cannot read a truth value from \"  X\""}},
        {Free, "    1    0  1.2345E-01  2.0E+00 3 4 5 6\r\n"  // blanks
               "2,1,1.5,2.5\t3.5 , 4.5,5.5,6.5\n\n"           // commas and a tab; a blank line passed over
               "   3   1\n   0.1 0.2\n0.3 0.4 0.5 0.6   9 9 9 dropped\n"  // over three lines, the rest dropped
               "4 0 1 2 3 4 5 6 7 8 9\n",
         {"1 0 0.12345 2 3 4 5 6", "2 1 1.5 2.5 3.5 4.5 5.5 6.5", "3 1 0.1 0.2 0.3 0.4 0.5 0.6", "4 0 1 2 3 4 5 6"}},
        {Free, "1 2 / 3 4\n5 6 7 8 9 10 11 12\n", {"1 2 99 99 99 99 99 99", "5 6 7 8 9 10 11 12"}},  // a slash ends it
        {Free, "1 2 3 4 5 6 7 8\n  1.5 2 3 4 5 6 7 7.5", {"1 2 3 4 5 6 7 8", "1.5 2 3 4 5 6 7 7.5"}},
        {Free, "1 2 3 4 5 6 7 8\n8 9 10 11\n", {"1 2 3 4 5 6 7 8"}},  // cut by the end of the file: dropped
        {Free, "1 2 3 4 5 6 7 8\n8 9 10 11 12 1.3E", {"1 2 3 4 5 6 7 8"}},  // even in a number
        {Free, "NaN Infinity -Infinity +Inf 1 2 3 4\n", {"nan inf -inf inf 1 2 3 4"}}, {Free, "\n\n  \n", {}},
        {Typed, "+5 -7 1.0D+01 1.234567890123456789E-03\n", {"5 -7 10 0.0012345678901234567"}},  // 64 bits kept
        {Typed, "3 2 1.5+2 -2.5d-1\n1 0 7 0.1000000000000000055511151231257827\n", {"3 2 150 -0.25", "1 0 7 0.1"}},
        {Typed, "  1.0  2 3 4\n", {e + "3: cannot read an integer from \"1.0\""}},
        {Typed, "1 3000000000 3 4\n", {e + "3: cannot read an integer from \"3000000000\""}},
        {Typed, "1 2 3 1e\n", {e + "7" + no + "\"1e\""}},
        {Text, "\\fiz\\fn m\r\n\n" + std::string(100, 'L') + "\n\ttab kept  \nlast",
         {pad("\\fiz\\fn m", 80), pad("", 80), std::string(80, 'L'), pad("\ttab kept", 80), pad("last", 80)}},
        // clang-format on
    };
    for (const auto& c : cases) EXPECT_EQ(records(c.form, c.bytes), c.want) << c.bytes.substr(0, 200);
}

// The tracker's form [-]d.ddddE+xx with all mantissas at the exponents where
// the exact paths of a float and of a double begin and end and where a float
// overflows or goes subnormal; then random shapes of up to 25 digits.
TEST(RunFiles, EveryNumberIsBitIdenticalToFromChars) {
    std::vector<std::string> texts;
    char b[32];
    for (int x : {-45, -39, -19, -18, -7, -6, 14, 15, 26, 27, 39})
        for (int m = 10000; m <= 99999; ++m)
            texts.emplace_back(
                b, std::snprintf(b, sizeof b, "%s%d.%04dE%+03d", m % 2 ? "-" : "", m / 10000, m % 10000, x));
    std::mt19937_64 rng(20240501);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int k = 0; k < 5000; ++k) {
        std::string t = pick(0, 2) ? "" : "-";
        for (int d = pick(1, 25), point = pick(-1, d); d >= 0; --d)
            t += (d == point ? "." : "") + (d > 0 ? std::string(1, static_cast<char>('0' + pick(0, 9))) : "");
        texts.push_back(pick(0, 1) ? t + "E" + std::to_string(pick(-60, 60)) : t);
    }
    for (const std::string& t : texts) {  // the first that differs stops it
        float f = -123.0f;
        double d = -123.0;
        ASSERT_TRUE(parse_fortran_real(t, 0, f) && parse_fortran_real(t, 0, d) &&
                    same_bits(f, library_value<float>(t)) && same_bits(d, library_value<double>(t)))
            << t << " reads " << f << " and " << d;
    }
}

// The tracker's 12-column fields take a fast path of the fixed reader: each
// case of a table of boundaries, and a million random fields, reads as the
// library's correctly rounded value of its text.
TEST(RunFiles, TheTrackersFieldsReadBitIdenticalToFromChars) {
    std::vector<std::string> fields = {
        "  0.0000E+00", " -0.0000E+00", "  9.9999E+38", " -9.9999E+38", "  3.4028E+38", "  3.4029E+38",
        "  1.1755E-38", "  1.1754E-38", "  1.4013E-45", "  7.0065E-46", "  1.0000E-46", " -1.0000E-50",
        "  1.2345D+00", "  1.2345d-03", "  1.2345e+00", " -9.9999D+10", "  9.9999E+11", "  1.0000E-06",
        "  5.0000E-01", " 1.23 45E+00", "-1.23456E-01", "  1.2345E+5 ", "  1.2345E 05", "  1.2345+005"};
    std::mt19937_64 rng(20261124);
    char b[32];
    for (int k = 0; k < 1'000'000; ++k) {
        const auto r = rng();
        std::snprintf(b, sizeof b, " %c%d.%04d%c%c%02d", r & 1 ? '-' : ' ',
                      static_cast<int>(r >> 1 & 0xF) % 10, static_cast<int>(r >> 5 & 0x3FFF) % 10000,
                      "EeDd"[r >> 19 & 3], r >> 21 & 1 ? '-' : '+', static_cast<int>(r >> 22 & 0x7F) % 50);
        fields.emplace_back(b);
    }
    TempDir d;
    std::string text;
    for (std::size_t i = 0; i < fields.size(); i += 7) {
        for (std::size_t k = i; k < i + 7; ++k) text += k < fields.size() ? fields[k] : "  0.0000E+00";
        text += "\n";
    }
    d.write("t", text);
    TableFile f;
    ASSERT_TRUE(f.open(d.file("t")));
    std::array<float, 7> r{};
    for (std::size_t i = 0; i < fields.size(); i += 7) {
        ASSERT_TRUE(read_fixed(f, r));
        for (std::size_t k = i; k < i + 7 && k < fields.size(); ++k) {
            std::string t;  // the field's text as the library reads it
            for (char c : fields[k]) t += c == ' ' ? "" : std::string(1, c == 'D' || c == 'd' ? 'E' : c);
            if (t.find_first_of("Ee") == std::string::npos && t.find_last_of("+-") > 0)
                t.insert(t.find_last_of("+-"), "E");
            ASSERT_TRUE(same_bits(r[k - i], library_value<float>(t)))
                << "\"" << fields[k] << "\" reads " << r[k - i];
        }
    }
}

// The table `p` as records of `kind`: one a line, every field the number
// written there.
void read_as(const fs::path& p, const RunKind& kind) {
    SCOPED_TRACE(p.filename().string());
    std::ifstream in(p, std::ios::binary);
    TableFile f;
    RunRecord r(kind);
    ASSERT_TRUE(f.open(p.string()));
    for (std::string line, t; std::getline(in, line);) {
        ASSERT_TRUE(r.read(f)) << line;
        std::istringstream ss(line);
        auto same = [&](auto got) { return ss >> t && same_bits(got, library_value<decltype(got)>(t)); };
        for (int k = 0; k < kind.reals(); ++k) {
            const char c = kind.fields[static_cast<std::size_t>(k)].type;
            EXPECT_TRUE(c == 'i' ? same(r.integer(k)) : (c == 'd' ? same(r.real64(k)) : same(r.real(k))))
                << "line " << f.line_number() << ": " << t;
        }
        EXPECT_TRUE(!kind.logical || (ss >> t && r.logical() == (t == "T"))) << "line " << f.line_number();
    }
    EXPECT_FALSE(r.read(f));
}

TEST(RunFiles, RealAndBundledTablesReadAsTheirKinds) {
    std::map<std::string, std::set<Kind>> seen;
    for (const char* root : {"/examples", "/../shared/realdata"})
        for (const auto& e : fs::recursive_directory_iterator(VIEWER_SOURCE_DIR + std::string(root)))
            if (const RunKind* kind = kind_of_stem(e.path().stem().string())) {  // not the outline, the notes
                seen[root].insert(kind->kind);
                read_as(e.path(), *kind);
            }
    // Longest suffix wins: Xemit2, lab-E. The real sets hold 16 kinds.
    EXPECT_EQ(seen["/examples"].size(), static_cast<std::size_t>(kKindCount));
    EXPECT_EQ(seen["/../shared/realdata"].size(), 16u);
}

}  // namespace
