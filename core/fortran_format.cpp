// Fortran-style output fields.
#include "core/fortran_format.hpp"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace viewer {

std::string fmt_exp(double v, int w, int d, char letter) {
    std::string body;
    if (std::isnan(v)) {
        body = "NaN";
    } else if (std::isinf(v)) {
        body = v < 0 ? (w >= 9 ? "-Infinity" : "-Inf") : (w >= 8 ? "Infinity" : "Inf");
    } else {
        char buf[64];
        std::snprintf(buf, sizeof buf, "%.*e", d, v);  // d.ddddde+xx
        std::string s(buf);
        auto epos = s.find('e');
        std::string mant = s.substr(0, epos);
        int ex = std::stoi(s.substr(epos + 1));
        char sign = ex < 0 ? '-' : '+';
        int ax = std::abs(ex);
        char eb[16];
        if (ax <= 99)
            std::snprintf(eb, sizeof eb, "%c%c%02d", letter, sign, ax);
        else if (ax <= 999)
            std::snprintf(eb, sizeof eb, "%c%03d", sign, ax);
        else
            return std::string(static_cast<std::size_t>(w), '*');
        body = mant + eb;
    }
    if (static_cast<int>(body.size()) > w) return std::string(static_cast<std::size_t>(w), '*');
    return std::string(static_cast<std::size_t>(w) - body.size(), ' ') + body;
}

std::string fmt_i(long long v, int w) {
    std::string s = std::to_string(v);
    if (static_cast<int>(s.size()) > w) return std::string(static_cast<std::size_t>(w), '*');
    return std::string(static_cast<std::size_t>(w) - s.size(), ' ') + s;
}

std::string fmt_float_exact(float v) {
    char buf[32];
    auto r = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, r.ptr);
}

std::string pad(std::string_view s, std::size_t n) {
    std::string out(s.substr(0, n));
    out.resize(n, ' ');
    return out;
}

std::string_view trim_right(std::string_view s) {
    auto e = s.find_last_not_of(' ');
    return e == std::string_view::npos ? std::string_view{} : s.substr(0, e + 1);
}

std::string_view up_to_blank(std::string_view s) {
    auto p = s.find(' ');
    return p == std::string_view::npos ? s : s.substr(0, p);
}

std::string right_in(std::string_view s, std::size_t n) {
    if (s.size() >= n) return std::string(s.substr(0, n));
    return std::string(n - s.size(), ' ') + std::string(s);
}

std::string upp(std::string_view text) {
    std::string out(trim_right(text));
    for (auto& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

}  // namespace viewer
