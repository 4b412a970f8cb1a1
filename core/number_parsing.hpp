// The one number parser behind the fixed and the free record readers: the
// Fortran reading of a field, with exact fast paths for the form the
// tracker writes. Internal to the readers.
#pragma once

#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace viewer::number {

inline bool is_digit(char c) {
    return static_cast<unsigned char>(c - '0') < 10;
}
inline bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

// Powers of ten that are exact in each type, for the exact fast path.
template <class T>
struct Exact;
template <>
struct Exact<float> {
    static constexpr std::uint64_t max_mantissa = std::uint64_t{1} << 24;
    static constexpr int max_pow = 10;
    static constexpr float pow10[] = {1e0f, 1e1f, 1e2f, 1e3f, 1e4f, 1e5f, 1e6f, 1e7f, 1e8f, 1e9f, 1e10f};
};
template <>
struct Exact<double> {
    static constexpr std::uint64_t max_mantissa = std::uint64_t{1} << 53;
    static constexpr int max_pow = 22;
    static constexpr double pow10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                       1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
};

// The exact factors of 10^k for |k| <= max_pow, split so that a value is
// m * up[k] / down[k] with one of the two equal to 1: multiplying by 1 and
// dividing by 1 are exact, so no branch on the sign of k is needed and the
// result is the one the single rounding of the branchy form gives.
template <class T>
struct ExactScale {
    static constexpr int n = 2 * Exact<T>::max_pow + 1;
    static constexpr auto make(bool upward) {
        std::array<T, n> t{};
        for (int k = -Exact<T>::max_pow; k <= Exact<T>::max_pow; ++k)
            t[static_cast<std::size_t>(k + Exact<T>::max_pow)] =
                (k >= 0) == upward ? Exact<T>::pow10[k >= 0 ? k : -k] : T(1);
        return t;
    }
    static constexpr std::array<T, n> up = make(true), down = make(false);
};

// v with its sign bit set when `neg`: the sign of a random table is no
// branch to mispredict, and -0 comes out as from_chars gives it.
template <class T>
inline T with_sign(T v, bool neg) {
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    return std::bit_cast<T>(std::bit_cast<Bits>(v) | (static_cast<Bits>(neg) << (8 * sizeof(T) - 1)));
}

// The digits of a number are read into a 64-bit integer while they fit;
// past 19 significant digits the conversion goes through from_chars.
constexpr int kMaxDigits = 19;

// Slow path: the digits without the point, an exponent, and the library's
// correctly rounded conversion. Beyond the range of T the value goes to
// zero or infinity, as a formatted read gives it.
template <class T>
bool convert_slow(bool neg, const char* ib, const char* ie, const char* fb, const char* fe, long long k,
                  T& out) {
    std::string s;
    s.reserve(static_cast<std::size_t>((ie - ib) + (fe - fb)) + 24);
    s.append(ib, ie).append(fb, fe);
    std::size_t lead = s.find_first_not_of('0');
    if (lead == std::string::npos) {
        out = neg ? -T(0) : T(0);
        return true;
    }
    // Magnitude: the value lies in [10^(mag-1), 10^mag).
    long long mag = static_cast<long long>(s.size() - lead) + k;
    s += 'e';
    s += std::to_string(k);
    T v{};
    auto r = std::from_chars(s.data() + lead, s.data() + s.size(), v);
    if (r.ec == std::errc::result_out_of_range)
        v = mag > 0 ? std::numeric_limits<T>::infinity() : T(0);
    else if (r.ec != std::errc{} || r.ptr != s.data() + s.size())
        return false;
    out = neg ? -v : v;
    return true;
}

// The Fortran reading of a number without blanks: sign, digits with at most
// one point, then an exponent `E`, `D` or `Q` with optional sign, or a bare
// sign; inf and nan as the library spells them. Without a point the last `d`
// digits are decimals.
template <class T>
bool parse_number(const char* p, const char* e, int d, T& out) {
    bool neg = false;
    if (p < e && (*p == '+' || *p == '-')) neg = *p++ == '-';

    std::uint64_t m = 0;
    int sig = 0;  // significant digits taken into m
    const char* ib = p;
    while (p < e && *p == '0') ++p;
    for (; p < e && is_digit(*p); ++p)
        if (++sig <= kMaxDigits) m = m * 10 + static_cast<unsigned>(*p - '0');
    const char* ie = p;
    const char *fb = p, *fe = p;
    bool point = false;
    if (p < e && *p == '.') {
        point = true;
        fb = ++p;
        if (sig == 0)
            while (p < e && *p == '0') ++p;
        for (; p < e && is_digit(*p); ++p)
            if (++sig <= kMaxDigits) m = m * 10 + static_cast<unsigned>(*p - '0');
        fe = p;
    }
    if (ie == ib && fe == fb) {
        // No digit at all: only inf and nan remain.
        if (point || p == e || !(*p == 'i' || *p == 'I' || *p == 'n' || *p == 'N')) return false;
        T v{};
        auto r = std::from_chars(p, e, v);
        if (r.ec != std::errc{} || r.ptr != e) return false;
        out = neg ? -v : v;
        return true;
    }

    long long x = 0;
    if (p < e) {
        char c = *p;
        if (c == 'E' || c == 'e' || c == 'D' || c == 'd' || c == 'Q' || c == 'q')
            ++p;
        else if (c != '+' && c != '-')
            return false;
        bool xneg = false;
        if (p < e && (*p == '+' || *p == '-')) xneg = *p++ == '-';
        if (p == e) return false;
        for (; p < e; ++p) {
            if (!is_digit(*p)) return false;
            if (x < 100000) x = x * 10 + (*p - '0');  // saturates far outside any range
        }
        if (xneg) x = -x;
    }
    long long k = x - (fe - fb);
    if (!point) k -= d;

    if (sig <= kMaxDigits) {
        if (m == 0) {
            out = neg ? -T(0) : T(0);
            return true;
        }
        if (m <= Exact<T>::max_mantissa && k >= -Exact<T>::max_pow && k <= Exact<T>::max_pow) {
            // Both factors are exact, so one rounding gives the correctly
            // rounded result, the same one from_chars gives.
            T v = static_cast<T>(m);
            v = k >= 0 ? v * Exact<T>::pow10[k] : v / Exact<T>::pow10[-k];
            out = neg ? -v : v;
            return true;
        }
    }
    return convert_slow(neg, ib, ie, fb, fe, k, out);
}

// The form the tracker writes, [-]d.ddddE+dd, checked by position: nearly
// every number of a table takes this path. Same rounding as parse_number.
// The ten bytes after the sign are checked eight and two at a time, without
// a branch on signs, which vary at random from number to number.
template <class T>
[[gnu::always_inline]] inline bool parse_canonical(const char* b, const char* e, T& out) {
    if (e - b < 10) return false;
    const bool neg = *b == '-';
    const char* p = b + (neg | (*b == '+'));
    if (e - p != 10) return false;
    std::uint64_t q;  // bytes 0..7: digit, point, four digits, exponent letter, its sign
    std::uint16_t r;  // bytes 8..9: the exponent's digits
    std::memcpy(&q, p, 8);
    std::memcpy(&r, p + 8, 2);
    const unsigned letter = (static_cast<unsigned>(q >> 48) & 0xFF) | 0x20,
                   sign = static_cast<unsigned>(q >> 56);
    // The digits' high nibbles 3 and their low ones at most 9 (adding 6
    // keeps such a nibble inside its byte); byte 1 the point.
    const bool ok = ((q & 0x0000F0F0F0F0FFF0ULL) == 0x0000303030302E30ULL) &
                    ((((q & 0x00000F0F0F0F000FULL) + 0x0000060606060006ULL) & 0x0000F0F0F0F000F0ULL) == 0) &
                    ((r & 0xF0F0U) == 0x3030U) & ((((r & 0x0F0FU) + 0x0606U) & 0xF0F0U) == 0) &
                    (letter == 'e') & ((sign == '+') | (sign == '-'));
    std::uint32_t x = static_cast<std::uint32_t>(q >> 16) & 0x0F0F0F0FU;  // four digits to one number
    x = (x * 10 + (x >> 8)) & 0x00FF00FFU;
    x = (x * 100 + (x >> 16)) & 0xFFFFU;
    const unsigned m = (static_cast<unsigned>(q) & 0x0F) * 10000 + x;
    const int xneg = sign == '-';
    const int k = ((static_cast<int>((r & 0x0F) * 10 + ((r >> 8) & 0x0F)) ^ -xneg) + xneg) - 4;
    if (!ok || k < -Exact<T>::max_pow || k > Exact<T>::max_pow) return false;
    const auto at = static_cast<std::size_t>(k + Exact<T>::max_pow);
    out = with_sign(static_cast<T>(m) * ExactScale<T>::up[at] / ExactScale<T>::down[at], neg);
    return true;
}

// A full 12-column field " -d.ddddE+dd" or "  d.ddddE+dd" (the exponent
// letter E or D, either case), the bulk of every fixed table, as the two
// exact factors of its value: `num` the signed digits times 10^k for k >= 0,
// `den` 10^-k for k < 0 (else 1). One division num / den then rounds once,
// as from_chars does; a line's divisions go several at a time. The field is
// checked and its digits taken eight and four bytes at a time: signs and
// exponents vary at random from field to field, so the checks are combined
// without branches.
template <class T>
[[gnu::always_inline]] inline bool e12_4_factors(const char* f, T& num, T& den) {
    std::uint64_t q;  // bytes 0..7: blank, blank or minus, digit, point, four digits
    std::uint32_t r;  // bytes 8..11: exponent letter, its sign, two digits
    std::memcpy(&q, f, 8);
    std::memcpy(&r, f + 8, 4);
    const unsigned b1 = static_cast<unsigned>(q >> 8) & 0xFF, letter = (r & 0xFF) | 0x20,
                   sign = (r >> 8) & 0xFF;
    // Byte 0 a blank, byte 3 the point; the digits' high nibbles 3 and their
    // low ones at most 9 (adding 6 keeps such a nibble inside its byte).
    const bool ok = ((q & 0x00000000FF0000FFULL) == 0x000000002E000020ULL) &
                    ((q & 0xF0F0F0F000F00000ULL) == 0x3030303000300000ULL) &
                    ((((q & 0x0F0F0F0F000F0000ULL) + 0x0606060600060000ULL) & 0xF0F0F0F000F00000ULL) == 0) &
                    ((r & 0xF0F00000U) == 0x30300000U) &
                    ((((r & 0x0F0F0000U) + 0x06060000U) & 0xF0F00000U) == 0) & ((b1 == ' ') | (b1 == '-')) &
                    ((letter == 'e') | (letter == 'd')) & ((sign == '+') | (sign == '-'));
    // Four digits d1 d2 d3 d4 of the bytes 4..7 to one number, in two steps.
    std::uint32_t x = static_cast<std::uint32_t>(q >> 32) & 0x0F0F0F0FU;
    x = (x * 10 + (x >> 8)) & 0x00FF00FFU;
    x = (x * 100 + (x >> 16)) & 0xFFFFU;
    const unsigned m = (static_cast<unsigned>(q >> 16) & 0x0F) * 10000 + x;
    const int xneg = sign == '-';
    const int k = (((static_cast<int>(((r >> 16) & 0x0F) * 10 + ((r >> 24) & 0x0F)) ^ -xneg) + xneg)) - 4;
    if (!ok || k < -Exact<T>::max_pow || k > Exact<T>::max_pow) return false;
    const auto at = static_cast<std::size_t>(k + Exact<T>::max_pow);
    num = with_sign(static_cast<T>(m), b1 == '-') * ExactScale<T>::up[at];
    den = ExactScale<T>::down[at];
    return true;
}

// The same field as one value.
template <class T>
[[gnu::always_inline]] inline bool parse_e12_4(const char* f, T& out) {
    T num, den;
    if (!e12_4_factors(f, num, den)) return false;
    out = num / den;
    return true;
}

// A fixed field: blanks around and inside the number are ignored, and a
// field that holds only blanks reads as zero.
template <class T>
bool parse_field(std::string_view field, int d, T& out) {
    const char* b = field.data();
    const char* e = b + field.size();
    while (b < e && is_blank(*b)) ++b;
    while (e > b && is_blank(e[-1])) --e;
    if (b == e) {
        out = T(0);
        return true;
    }
    if (parse_canonical(b, e, out)) return true;
    const char* q = b;
    while (q < e && !is_blank(*q)) ++q;
    if (q == e) return parse_number(b, e, d, out);
    std::string packed;
    for (const char* p = b; p < e; ++p)
        if (!is_blank(*p)) packed += *p;
    return parse_number(packed.data(), packed.data() + packed.size(), d, out);
}

inline bool parse_int(const char* p, const char* e, int& out) {
    bool neg = false;
    if (p < e && (*p == '+' || *p == '-')) neg = *p++ == '-';
    if (p == e) return false;
    long long v = 0;
    for (; p < e; ++p) {
        if (!is_digit(*p)) return false;
        v = v * 10 + (*p - '0');
        if (v > static_cast<long long>(std::numeric_limits<int>::max()) + 1) return false;
    }
    if (neg) v = -v;
    if (v > std::numeric_limits<int>::max()) return false;
    out = static_cast<int>(v);
    return true;
}

}  // namespace viewer::number
