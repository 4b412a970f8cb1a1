// Fortran-style output fields, in one place: `1.2345D+00` value fields,
// `E12.4` table fields, `I6` integers, list-directed numbers, and the
// blank-padded texts that the console shows.
#pragma once

#include <string>
#include <string_view>

namespace viewer {

// A 1P scaled exponent field of width `w` with `d` decimals and exponent
// letter `letter` (D or E): 1.2345D+00, right-aligned; asterisks when it
// does not fit. Exponents beyond two digits drop the letter, as Fortran does.
std::string fmt_exp(double v, int w, int d, char letter);
inline std::string fmt_d(double v) {
    return fmt_exp(v, 12, 4, 'D');
}  // the console value field
inline std::string fmt_e12_4(double v) {
    return fmt_exp(v, 12, 4, 'E');
}  // a table field

// Integer right-aligned in `w` columns; asterisks when it does not fit.
std::string fmt_i(long long v, int w);

// Shortest text that reads back to the same 32-bit float.
std::string fmt_float_exact(float v);

// Text cut or blank-padded to `n` characters.
std::string pad(std::string_view s, std::size_t n);
// Text up to its last non-blank character.
std::string_view trim_right(std::string_view s);
// Text up to its first blank (the length rule of the system's names).
std::string_view up_to_blank(std::string_view s);
// Right-aligned in a field of `n` columns; a longer text is cut to its first `n`.
std::string right_in(std::string_view s, std::size_t n);

// Capitals of `text` up to its last non-blank character.
std::string upp(std::string_view text);

}  // namespace viewer
