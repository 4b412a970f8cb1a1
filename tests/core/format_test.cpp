// Fortran-style output fields and texts.
#include <gtest/gtest.h>

#include <limits>

#include "core/fortran_format.hpp"

using namespace viewer;

TEST(FortranFormat, FieldsAndTexts) {
    const double nan = std::numeric_limits<double>::quiet_NaN(),
                 inf = std::numeric_limits<double>::infinity();
    // clang-format off
    const std::pair<std::string, std::string> cases[] = {
        {fmt_d(1.2345), "  1.2345D+00"}, {fmt_d(-1.2345), " -1.2345D+00"}, {fmt_d(0.0), "  0.0000D+00"}, {fmt_d(123.456), "  1.2346D+02"},
        {fmt_d(1e-5), "  1.0000D-05"}, {fmt_d(9.99995), "  1.0000D+01"},  // rounding carries into the exponent
        {fmt_d(1.5e120), "  1.5000+120"},  // three exponent digits drop the letter
        {fmt_e12_4(2.5), "  2.5000E+00"}, {fmt_exp(1.0, 8, 4, 'D'), "********"},
        {fmt_d(nan), "         NaN"}, {fmt_d(inf), "    Infinity"}, {fmt_d(-inf), "   -Infinity"},
        {fmt_i(42, 4), "  42"}, {fmt_i(-7, 5), "   -7"}, {fmt_i(12345, 4), "****"}, {pad("abc", 5), "abc  "}, {pad("abcdef", 3), "abc"},
        {std::string(trim_right("ab  ")), "ab"}, {std::string(trim_right("   ")), ""}, {std::string(up_to_blank("rfgun 001")), "rfgun"},
        {right_in("run5.ps", 10), "   run5.ps"}, {right_in("abcdefghijkl", 5), "abcde"}, {upp("yes, Sir  "), "YES, SIR"},
    };
    // clang-format on
    for (const auto& [got, want] : cases) EXPECT_EQ(got, want);
    const float f = 0.1f;
    EXPECT_EQ(std::stof(fmt_float_exact(f)), f);
}
