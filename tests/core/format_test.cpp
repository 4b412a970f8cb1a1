// Fortran-style output fields.
#include <gtest/gtest.h>

#include "core/fortran_format.hpp"

using namespace viewer;

TEST(FortranFormat, ValueFieldsOfTwelveColumns) {
    EXPECT_EQ(fmt_d(1.2345), "  1.2345D+00");
    EXPECT_EQ(fmt_d(-1.2345), " -1.2345D+00");
    EXPECT_EQ(fmt_d(0.0), "  0.0000D+00");
    EXPECT_EQ(fmt_d(123.456), "  1.2346D+02");
    EXPECT_EQ(fmt_d(1e-5), "  1.0000D-05");
    EXPECT_EQ(fmt_d(9.99995), "  1.0000D+01");  // rounding carries into the exponent
    EXPECT_EQ(fmt_d(1.5e120), "  1.5000+120");  // three exponent digits drop the letter
    EXPECT_EQ(fmt_e12_4(2.5), "  2.5000E+00");
    EXPECT_EQ(fmt_exp(1.0, 8, 4, 'D'), "********");
}

TEST(FortranFormat, NonFiniteValues) {
    EXPECT_EQ(fmt_d(std::numeric_limits<double>::quiet_NaN()), "         NaN");
    EXPECT_EQ(fmt_d(std::numeric_limits<double>::infinity()), "    Infinity");
    EXPECT_EQ(fmt_d(-std::numeric_limits<double>::infinity()), "   -Infinity");
}

TEST(FortranFormat, IntegersAndTexts) {
    EXPECT_EQ(fmt_i(42, 4), "  42");
    EXPECT_EQ(fmt_i(-7, 5), "   -7");
    EXPECT_EQ(fmt_i(12345, 4), "****");
    EXPECT_EQ(pad("abc", 5), "abc  ");
    EXPECT_EQ(pad("abcdef", 3), "abc");
    EXPECT_EQ(trim_right("ab  "), "ab");
    EXPECT_EQ(trim_right("   "), "");
    EXPECT_EQ(up_to_blank("rfgun 001"), "rfgun");
    EXPECT_EQ(right_in("run5.ps", 10), "   run5.ps");
    EXPECT_EQ(right_in("abcdefghijkl", 5), "abcde");
    EXPECT_EQ(upp("yes, Sir  "), "YES, SIR");
    float f = 0.1f;
    EXPECT_EQ(std::stof(fmt_float_exact(f)), f);
}
