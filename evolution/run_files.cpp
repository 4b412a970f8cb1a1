// Run file readers: block-buffered lines, fixed records cut by columns,
// free records split at blanks, commas and line ends.
#include "evolution/run_files.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <charconv>
#include <cstring>

namespace viewer {

RecordError::RecordError(std::string f, long l, int c, std::string w)
    : std::runtime_error(std::move(w)), file(std::move(f)), line(l), column(c) {}

namespace {
constexpr std::size_t kBlock = 1 << 18;  // bytes read per system call

inline bool is_sep(char c) { return c == ' ' || c == ',' || c == '\t'; }
}  // namespace

TableFile::~TableFile() { close(); }

bool TableFile::open(const std::string& path) {
    close();
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) return false;
    name_ = path;
    buf_.resize(kBlock);
    rewind();
    return true;
}

void TableFile::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
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
    if (end_ == buf_.size()) buf_.resize(buf_.size() * 2);  // a line longer than the block
    ssize_t got;
    do {
        got = ::read(fd_, buf_.data() + end_, buf_.size() - end_);
    } while (got < 0 && errno == EINTR);
    if (got <= 0) {
        eof_ = true;
        return false;
    }
    end_ += static_cast<std::size_t>(got);
    return true;
}

bool TableFile::next_line(std::string_view& line) {
    if (fd_ < 0) return false;
    std::size_t scanned = begin_;
    for (;;) {
        const char* start = buf_.data() + begin_;
        const void* nl = std::memchr(buf_.data() + scanned, '\n', end_ - scanned);
        if (nl) {
            std::size_t len = static_cast<const char*>(nl) - start;
            begin_ += len + 1;
            if (len > 0 && start[len - 1] == '\r') --len;
            line = std::string_view(start, len);
            ++line_no_;
            return true;
        }
        std::size_t done = end_ - begin_;
        if (!fill()) {
            if (begin_ == end_) return false;
            // last line without a line end
            std::size_t len = end_ - begin_;
            const char* s = buf_.data() + begin_;
            begin_ = end_;
            if (len > 0 && s[len - 1] == '\r') --len;
            line = std::string_view(s, len);
            ++line_no_;
            return true;
        }
        scanned = begin_ + done;
    }
}

namespace {

bool from_chars_float(const char* b, const char* e, float& out) {
    if (b < e && *b == '+') ++b;
    auto r = std::from_chars(b, e, out);
    return r.ec == std::errc{} && r.ptr == e;
}

}  // namespace

bool parse_fortran_real(std::string_view field, int d, float& out) {
    // Fast path: no inner blanks, a point, an E exponent or none.
    std::size_t b = 0, e = field.size();
    while (b < e && field[b] == ' ') ++b;
    while (e > b && field[e - 1] == ' ') --e;
    if (b == e) {
        out = 0.0f;
        return true;
    }
    std::string_view t = field.substr(b, e - b);
    bool simple = true, has_point = false;
    for (char c : t) {
        if (c == '.') has_point = true;
        else if (c == ' ' || c == 'D' || c == 'd' || c == 'Q' || c == 'q' || c == '\t') simple = false;
    }
    if (simple && has_point && from_chars_float(t.data(), t.data() + t.size(), out)) return true;

    // General Fortran form: blanks ignored, D or Q exponent letters, an
    // exponent sign without a letter, and an implied decimal point.
    std::string s;
    s.reserve(t.size() + 8);
    for (char c : t)
        if (c != ' ' && c != '\t') s += c;
    std::size_t i = 0;
    std::string mant;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) mant += s[i++];
    std::string digits;
    bool point = false;
    std::size_t int_digits = 0;
    while (i < s.size() && ((s[i] >= '0' && s[i] <= '9') || s[i] == '.')) {
        if (s[i] == '.') {
            if (point) return false;
            point = true;
        } else {
            digits += s[i];
            if (!point) ++int_digits;
        }
        ++i;
    }
    if (digits.empty()) {
        // not a plain number: let the library try inf and nan
        return from_chars_float(s.data(), s.data() + s.size(), out);
    }
    std::string exp;
    if (i < s.size()) {
        char c = s[i];
        if (c == 'E' || c == 'e' || c == 'D' || c == 'd' || c == 'Q' || c == 'q') ++i;
        else if (c != '+' && c != '-') return false;
        if (i < s.size() && (s[i] == '+' || s[i] == '-')) exp += s[i++];
        std::size_t ed = 0;
        while (i < s.size() && s[i] >= '0' && s[i] <= '9') exp += s[i++], ++ed;
        if (ed == 0 || i != s.size()) return false;
    }
    if (point) {
        mant += digits.substr(0, int_digits) + "." + digits.substr(int_digits);
    } else {
        // no point: the last d digits are decimals
        std::string dg = digits;
        if (dg.size() < static_cast<std::size_t>(d) + 1) dg.insert(0, d + 1 - dg.size(), '0');
        mant += dg.substr(0, dg.size() - d) + "." + dg.substr(dg.size() - d);
    }
    if (!exp.empty()) mant += "e" + exp;
    return from_chars_float(mant.data(), mant.data() + mant.size(), out);
}

bool parse_fortran_logical(std::string_view field, bool& out) {
    std::size_t i = 0;
    while (i < field.size() && field[i] == ' ') ++i;
    if (i == field.size()) {
        out = false;
        return true;
    }
    if (field[i] == '.') ++i;
    if (i == field.size()) return false;
    char c = field[i];
    if (c == 'T' || c == 't') out = true;
    else if (c == 'F' || c == 'f') out = false;
    else return false;
    return true;
}

bool read_fixed(TableFile& f, std::span<float> reals, bool* logical, int width) {
    std::string_view line;
    if (!f.next_line(line)) return false;
    std::size_t pos = 0;
    const std::size_t w = static_cast<std::size_t>(width);
    for (float& r : reals) {
        std::string_view field = pos < line.size() ? line.substr(pos, w) : std::string_view{};
        if (!parse_fortran_real(field, 4, r))
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

[[noreturn]] void bad_token(const TableFile& f, std::string_view line, std::string_view tok,
                            const char* what) {
    int col = static_cast<int>(tok.data() - line.data()) + 1;
    throw RecordError(f.name(), f.line_number(), col,
                      std::string("cannot read ") + what + " from \"" + std::string(tok) + "\"");
}

void store(const TableFile& f, std::string_view line, std::string_view tok, const FreeField& fld) {
    const char* b = tok.data();
    const char* e = b + tok.size();
    if (*b == '+') ++b;
    switch (fld.type) {
    case FreeField::Int: {
        int v = 0;
        auto r = std::from_chars(b, e, v);
        if (r.ec != std::errc{} || r.ptr != e) bad_token(f, line, tok, "an integer");
        *static_cast<int*>(fld.ptr) = v;
        return;
    }
    case FreeField::Real: {
        float v = 0;
        auto r = std::from_chars(b, e, v);
        if (r.ec != std::errc{} || r.ptr != e) {
            if (!parse_fortran_real(tok, 0, v) ) bad_token(f, line, tok, "a number");
        }
        *static_cast<float*>(fld.ptr) = v;
        return;
    }
    case FreeField::Double: {
        double v = 0;
        auto r = std::from_chars(b, e, v);
        if (r.ec != std::errc{} || r.ptr != e) {
            std::string t(tok);
            for (auto& c : t)
                if (c == 'd' || c == 'D') c = 'e';
            const char* tb = t.data() + (t[0] == '+' ? 1 : 0);
            auto r2 = std::from_chars(tb, t.data() + t.size(), v);
            if (r2.ec != std::errc{} || r2.ptr != t.data() + t.size()) bad_token(f, line, tok, "a number");
        }
        *static_cast<double*>(fld.ptr) = v;
        return;
    }
    }
}

}  // namespace

bool read_free(TableFile& f, std::span<const FreeField> fields) {
    std::string_view line;
    std::size_t pos = 0;
    bool have_line = false;
    for (const FreeField& fld : fields) {
        for (;;) {
            if (!have_line) {
                if (!f.next_line(line)) return false;  // end of file inside the record drops it
                have_line = true;
                pos = 0;
            }
            while (pos < line.size() && is_sep(line[pos])) ++pos;
            if (pos < line.size()) break;
            have_line = false;
        }
        if (line[pos] == '/') return true;  // the slash ends the record; the rest keep their values
        std::size_t end = pos;
        while (end < line.size() && !is_sep(line[end]) && line[end] != '/') ++end;
        store(f, line, line.substr(pos, end - pos), fld);
        pos = end;
    }
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
