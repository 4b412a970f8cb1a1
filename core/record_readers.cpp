// Records of run files: fixed records cut by columns, free records split
// at blanks, commas and line ends, and A80 text lines.
#include <array>
#include <charconv>
#include <type_traits>
#include <vector>

#include "core/number_parsing.hpp"
#include "core/run_files.hpp"

namespace viewer {

using number::e12_4_factors;
using number::is_blank;
using number::parse_canonical;
using number::parse_e12_4;
using number::parse_field;
using number::parse_int;
using number::parse_number;

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

namespace {

constexpr std::size_t kMaxFixedFields = 32;  // more than any table has

// The truth field after the numbers of a fixed record.
bool read_logical(const TableFile& f, std::string_view line, std::size_t pos, bool& out) {
    std::string_view field = pos < line.size() ? line.substr(pos, 3) : std::string_view{};
    if (!parse_fortran_logical(field, out))
        throw RecordError(f.name(), f.line_number(), static_cast<int>(pos + 1),
                          "cannot read a truth value from \"" + std::string(field) + "\"");
    return true;
}

}  // namespace

bool read_fixed(TableFile& f, std::span<float> reals, bool* logical, int width) {
    std::string_view line;
    if (!f.next_line(line)) return false;
    const std::size_t w = static_cast<std::size_t>(width);
    if (!f.line_ended() && line.size() < reals.size() * w) return false;  // still being written
    // The tracker's own form in every field: the factors of each, then all
    // the divisions in one loop, which the compiler does several at a time.
    const std::size_t n = reals.size();
    if (w == 12 && n <= kMaxFixedFields && line.size() >= n * 12) {
        std::array<float, kMaxFixedFields> num, den;
        std::size_t i = 0;
        while (i < n && e12_4_factors(line.data() + 12 * i, num[i], den[i])) ++i;
        if (i == n) {
            for (std::size_t k = 0; k < n; ++k) reals[k] = num[k] / den[k];
            return logical ? read_logical(f, line, 12 * n, *logical) : true;
        }
    }
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
    return logical ? read_logical(f, line, pos, *logical) : true;
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

bool convert(std::string_view tok, FreeField::Type type, Value& v) {
    const char* b = tok.data();
    const char* e = b + tok.size();
    switch (type) {
        case FreeField::Int:
            return parse_int(b, e, v.i);
        case FreeField::Real:
            return parse_canonical(b, e, v.r) || parse_number(b, e, 0, v.r);
        case FreeField::Double:
            return parse_canonical(b, e, v.d) || parse_number(b, e, 0, v.d);
    }
    return false;
}

// The number at `b` in the library's own spelling, read in the one pass
// that also finds where it ends: the end when a separator or the line's end
// follows it, null for every other item (Fortran exponents, a leading plus,
// values out of range, words), which `convert` then reads as a whole.
template <class T>
const char* scan_as(const char* b, const char* e, T& out) {
    if constexpr (std::is_floating_point_v<T>) {
        // The tracker's own -d.ddddE+dd first: its length is known.
        const char* end = b + (*b == '-' ? 11 : 10);
        if (end <= e && (end == e || free_class(*end) != kToken) && parse_canonical(b, end, out)) return end;
    }
    const auto r = std::from_chars(b, e, out);
    if (r.ec != std::errc{} || r.ptr == b || (r.ptr != e && free_class(*r.ptr) == kToken)) return nullptr;
    return r.ptr;
}

const char* scan(const char* b, const char* e, FreeField::Type type, Value& v) {
    switch (type) {
        case FreeField::Int:
            return scan_as(b, e, v.i);
        case FreeField::Real:
            return scan_as(b, e, v.r);
        case FreeField::Double:
            return scan_as(b, e, v.d);
    }
    return nullptr;
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
        if (const char* end = scan(line.data() + pos, line.data() + line.size(), fields[n].type, vals[n])) {
            pos = static_cast<std::size_t>(end - line.data());
            continue;
        }
        std::size_t end = pos;
        while (end < line.size() && free_class(line[end]) == kToken) ++end;
        const std::string_view tok = line.substr(pos, end - pos);
        if (!convert(tok, fields[n].type, vals[n])) {
            if (end == line.size() && !f.line_ended()) return false;  // a writer cut short
            bad_token(f, line, tok, fields[n].type == FreeField::Int ? "an integer" : "a number");
        }
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
