// Run file readers: block-buffered lines, fixed records cut by columns,
// free records split at blanks, commas and line ends, and the one number
// parser behind both.
#include "core/run_files.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <limits>

namespace viewer {

RecordError::RecordError(std::string f, long l, int c, std::string w)
    : std::runtime_error(std::move(w)), file(std::move(f)), line(l), column(c) {}

std::string RecordError::message() const {
    std::string s = file + ", line " + std::to_string(line);
    if (column > 0) s += ", column " + std::to_string(column);
    return s + ": " + what();
}

// ---------------------------------------------------------------------------
// Lines

namespace {
constexpr std::size_t kBlock = 1 << 18;  // bytes read per system call
}  // namespace

TableFile::~TableFile() {
    close();
}

bool TableFile::open(const std::string& path) {
    close();
    int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st {};
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {  // a directory opens, but reads fail
        ::close(fd);
        return false;
    }
    fd_ = fd;
    name_ = path;
    // A long line of the previous file need not stay in memory.
    if (buf_.size() != kBlock) std::vector<char>(kBlock).swap(buf_);
    rewind();
    return true;
}

void TableFile::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    name_.clear();
    begin_ = end_ = 0;
    eof_ = false;
    line_no_ = 0;
}

void TableFile::rewind() {
    if (fd_ < 0) return;
    ::lseek(fd_, 0, SEEK_SET);
    begin_ = end_ = 0;
    eof_ = false;
    line_no_ = 0;
}

bool TableFile::fill() {
    if (eof_ || fd_ < 0) return false;
    if (begin_ > 0) {
        std::memmove(buf_.data(), buf_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buf_.size()) buf_.resize(buf_.size() * 2);  // a line longer than the buffer
    ssize_t got;
    do {
        got = ::read(fd_, buf_.data() + end_, buf_.size() - end_);
    } while (got < 0 && errno == EINTR);
    if (got < 0)
        throw RecordError(name_, line_no_ + 1, 0, std::string("read error: ") + std::strerror(errno));
    if (got == 0) {
        eof_ = true;
        return false;
    }
    end_ += static_cast<std::size_t>(got);
    return true;
}

bool TableFile::next_line(std::string_view& line) {
    if (fd_ < 0) return false;
    std::size_t scanned = begin_;  // bytes before this are known to hold no line end
    for (;;) {
        const char* start = buf_.data() + begin_;
        const void* nl = std::memchr(buf_.data() + scanned, '\n', end_ - scanned);
        std::size_t len;
        if (nl) {
            len = static_cast<std::size_t>(static_cast<const char*>(nl) - start);
            begin_ += len + 1;
        } else {
            std::size_t held = end_ - begin_;
            if (fill()) {
                scanned = begin_ + held;
                continue;
            }
            if (begin_ == end_) return false;
            len = end_ - begin_;  // last line without a line end
            start = buf_.data() + begin_;
            begin_ = end_;
        }
        if (len > 0 && start[len - 1] == '\r') --len;
        line = std::string_view(start, len);
        ++line_no_;
        return true;
    }
}

// ---------------------------------------------------------------------------
// Numbers

namespace {

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
template <class T>
inline bool parse_canonical(const char* b, const char* e, T& out) {
    if (e - b < 10) return false;
    const bool neg = *b == '-';
    const char* p = b + (neg || *b == '+');
    if (e - p != 10) return false;
    if (!(is_digit(p[0]) && p[1] == '.' && is_digit(p[2]) && is_digit(p[3]) && is_digit(p[4]) &&
          is_digit(p[5]) && (p[6] == 'E' || p[6] == 'e') && (p[7] == '+' || p[7] == '-') && is_digit(p[8]) &&
          is_digit(p[9])))
        return false;
    const unsigned m = static_cast<unsigned>(p[0] - '0') * 10000 + static_cast<unsigned>(p[2] - '0') * 1000 +
                       static_cast<unsigned>(p[3] - '0') * 100 + static_cast<unsigned>(p[4] - '0') * 10 +
                       static_cast<unsigned>(p[5] - '0');
    int k = (p[8] - '0') * 10 + (p[9] - '0');
    k = (p[7] == '-' ? -k : k) - 4;
    if (k < -Exact<T>::max_pow || k > Exact<T>::max_pow) return false;
    T v = static_cast<T>(m);
    v = k >= 0 ? v * Exact<T>::pow10[k] : v / Exact<T>::pow10[-k];
    out = neg ? -v : v;
    return true;
}

// A full 12-column field " -d.ddddE+dd" or "  d.ddddE+dd", the bulk of
// every fixed table. The tests are combined without branches because signs
// and exponents vary at random from field to field.
template <class T>
inline bool parse_e12_4(const char* f, T& out) {
    const bool neg = f[1] == '-';
    const char* p = f + 2;
    const unsigned d0 = static_cast<unsigned char>(p[0] - '0'), d1 = static_cast<unsigned char>(p[2] - '0'),
                   d2 = static_cast<unsigned char>(p[3] - '0'), d3 = static_cast<unsigned char>(p[4] - '0'),
                   d4 = static_cast<unsigned char>(p[5] - '0'), x1 = static_cast<unsigned char>(p[8] - '0'),
                   x2 = static_cast<unsigned char>(p[9] - '0');
    const bool ok = (f[0] == ' ') & (neg | (f[1] == ' ')) & (p[1] == '.') & ((p[6] | 0x20) == 'e') &
                    ((p[7] == '+') | (p[7] == '-')) & (d0 < 10) & (d1 < 10) & (d2 < 10) & (d3 < 10) &
                    (d4 < 10) & (x1 < 10) & (x2 < 10);
    if (!ok) return false;
    const unsigned m = d0 * 10000 + d1 * 1000 + d2 * 100 + d3 * 10 + d4;
    int k = static_cast<int>(x1 * 10 + x2);
    k = (p[7] == '-' ? -k : k) - 4;
    if (k < -Exact<T>::max_pow || k > Exact<T>::max_pow) return false;
    const T v = static_cast<T>(m);
    const T up = v * Exact<T>::pow10[k >= 0 ? k : 0];
    const T down = v / Exact<T>::pow10[k < 0 ? -k : 0];
    const T r = k >= 0 ? up : down;
    out = neg ? -r : r;
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

bool parse_int(const char* p, const char* e, int& out) {
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

}  // namespace

bool parse_fortran_real(std::string_view field, int d, float& out) {
    return parse_field(field, d, out);
}
bool parse_fortran_real(std::string_view field, int d, double& out) {
    return parse_field(field, d, out);
}

bool parse_fortran_logical(std::string_view field, bool& out) {
    std::size_t i = 0;
    while (i < field.size() && is_blank(field[i])) ++i;
    if (i == field.size()) {
        out = false;
        return true;
    }
    if (field[i] == '.') ++i;
    if (i == field.size()) return false;
    char c = field[i];
    if (c == 'T' || c == 't')
        out = true;
    else if (c == 'F' || c == 'f')
        out = false;
    else
        return false;
    return true;  // the rest of the field (".TRUE.") is not looked at
}

// ---------------------------------------------------------------------------
// Records

bool read_fixed(TableFile& f, std::span<float> reals, bool* logical, int width) {
    std::string_view line;
    if (!f.next_line(line)) return false;
    const std::size_t w = static_cast<std::size_t>(width);
    std::size_t pos = 0;
    for (float& r : reals) {
        if (w == 12 && pos + 12 <= line.size() && parse_e12_4(line.data() + pos, r)) {
            pos += w;
            continue;
        }
        std::string_view field = pos < line.size() ? line.substr(pos, w) : std::string_view{};
        if (!parse_field(field, 4, r))
            throw RecordError(f.name(), f.line_number(), static_cast<int>(pos + 1),
                              "cannot read a number from \"" + std::string(field) + "\"");
        pos += w;
    }
    if (logical) {
        std::string_view field = pos < line.size() ? line.substr(pos, 3) : std::string_view{};
        if (!parse_fortran_logical(field, *logical))
            throw RecordError(f.name(), f.line_number(), static_cast<int>(pos + 1),
                              "cannot read a truth value from \"" + std::string(field) + "\"");
    }
    return true;
}

namespace {

// Character classes of a free record, looked up in one step.
enum : unsigned char { kToken = 0, kSep = 1, kSlash = 2 };
constexpr std::array<unsigned char, 256> kFreeClass = [] {
    std::array<unsigned char, 256> t{};
    t[static_cast<unsigned char>(' ')] = kSep;
    t[static_cast<unsigned char>('\t')] = kSep;
    t[static_cast<unsigned char>(',')] = kSep;
    t[static_cast<unsigned char>('/')] = kSlash;
    return t;
}();
inline unsigned char free_class(char c) {
    return kFreeClass[static_cast<unsigned char>(c)];
}

union Value {
    float r;
    int i;
    double d;
};

[[noreturn]] void bad_token(const TableFile& f, std::string_view line, std::string_view tok,
                            const char* what) {
    int col = static_cast<int>(tok.data() - line.data()) + 1;
    throw RecordError(f.name(), f.line_number(), col,
                      std::string("cannot read ") + what + " from \"" + std::string(tok) + "\"");
}

void convert(const TableFile& f, std::string_view line, std::string_view tok, FreeField::Type type,
             Value& v) {
    const char* b = tok.data();
    const char* e = b + tok.size();
    switch (type) {
        case FreeField::Int:
            if (!parse_int(b, e, v.i)) bad_token(f, line, tok, "an integer");
            return;
        case FreeField::Real:
            if (!parse_canonical(b, e, v.r) && !parse_number(b, e, 0, v.r))
                bad_token(f, line, tok, "a number");
            return;
        case FreeField::Double:
            if (!parse_canonical(b, e, v.d) && !parse_number(b, e, 0, v.d))
                bad_token(f, line, tok, "a number");
            return;
    }
}

void commit(const FreeField& fld, const Value& v) {
    switch (fld.type) {
        case FreeField::Int:
            *static_cast<int*>(fld.ptr) = v.i;
            return;
        case FreeField::Real:
            *static_cast<float*>(fld.ptr) = v.r;
            return;
        case FreeField::Double:
            *static_cast<double*>(fld.ptr) = v.d;
            return;
    }
}

}  // namespace

bool read_free(TableFile& f, std::span<const FreeField> fields) {
    // The targets change only when the whole record is in, so a record cut
    // short by the end of the file leaves them as they were.
    std::array<Value, 32> small;
    std::vector<Value> large;
    Value* vals = small.data();
    if (fields.size() > small.size()) {
        large.resize(fields.size());
        vals = large.data();
    }

    std::string_view line;
    std::size_t pos = 0;
    bool have_line = false;
    std::size_t n = 0;
    for (; n < fields.size(); ++n) {
        for (;;) {
            if (!have_line) {
                if (!f.next_line(line)) return false;
                have_line = true;
                pos = 0;
            }
            while (pos < line.size() && free_class(line[pos]) == kSep) ++pos;
            if (pos < line.size()) break;
            have_line = false;
        }
        if (line[pos] == '/') break;  // a slash ends the record; the rest keep their values
        std::size_t end = pos;
        while (end < line.size() && free_class(line[end]) == kToken) ++end;
        convert(f, line, line.substr(pos, end - pos), fields[n].type, vals[n]);
        pos = end;
    }
    for (std::size_t k = 0; k < n; ++k) commit(fields[k], vals[k]);
    return true;
}

bool read_free(TableFile& f, std::initializer_list<FreeField> fields) {
    return read_free(f, std::span<const FreeField>(fields.begin(), fields.size()));
}

bool read_a80(TableFile& f, std::string& text) {
    std::string_view line;
    if (!f.next_line(line)) return false;
    text.assign(line.substr(0, 80));
    text.resize(80, ' ');
    return true;
}

}  // namespace viewer
