// Run file readers: the open table of one kind, streamed line by line, and
// the record forms the tracker writes.
//
//   TableFile f;  f.open("rfgun.Xemit.001");
//   float r[7];
//   while (read_fixed(f, r)) { ... }   // 7E12.4, cut by columns
//   f.rewind();
//   float z, t, e; int i;
//   while (read_free(f, {&i, &z, &t, &e})) { ... }   // blanks, commas, line ends
//
// A record that cannot be converted throws `RecordError`, which names the
// file, the line and the column.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace viewer {

// what() says what went wrong; the place is in the fields, and message()
// puts both together: "<file>, line <n>, column <c>: <what>".
struct RecordError : std::runtime_error {
    RecordError(std::string file, long line, int column, std::string what);
    std::string message() const;
    std::string file;
    long line;   // 1-based line number in the file
    int column;  // 1-based column of the field that failed; 0 for the whole line
};

// A text table open for sequential reading, with rewind. Reads in large
// blocks and hands out one line at a time, so memory does not grow with the
// file; only a line longer than the block makes the buffer grow, to hold
// that line. Line ends are LF or CRLF; a last line without one still counts.
// A UTF-8 byte order mark before the first line is not part of it.
// A read error of the system throws RecordError.
class TableFile {
public:
    TableFile() = default;
    ~TableFile();
    TableFile(const TableFile&) = delete;
    TableFile& operator=(const TableFile&) = delete;

    bool open(const std::string& path);  // false if it cannot be opened or is a directory
    // Only the bytes [from, to) of the file, as if they were all of it: a
    // piece of a large table read beside the other pieces (where the pieces
    // begin: line_after). Line numbers count from the piece's start.
    bool open(const std::string& path, std::uint64_t from, std::uint64_t to);
    void close();
    bool is_open() const { return fd_ >= 0; }
    void rewind();
    // Next line without its line end; false at end of file. The view holds
    // until the next call.
    bool next_line(std::string_view& line);
    const std::string& name() const { return name_; }
    long line_number() const { return line_no_; }                // of the line last handed out
    bool line_ended() const { return ended_; }                   // the last line had its line end
    std::size_t buffer_capacity() const { return buf_.size(); }  // bytes held, whatever the file size
    std::uint64_t bytes_read() const { return bytes_read_; }     // since the file was opened, rewinds and all

private:
    bool fill();
    int fd_ = -1;
    std::string name_;
    std::vector<char> buf_;
    std::size_t begin_ = 0, end_ = 0;
    bool eof_ = false;
    std::uint64_t bytes_read_ = 0;
    long line_no_ = 0;
    bool ended_ = true;
    std::uint64_t from_ = 0, to_ = UINT64_MAX;  // the piece of the file
    std::uint64_t pos_ = 0;                     // where the next read starts
};

// Where a piece of a file that is to begin at byte `at` begins on a line:
// the offset just past the `lines`-th line end at or after `at`, or the
// file's size when there are fewer. Throws RecordError when the file cannot
// be read.
std::uint64_t line_after(const std::string& path, std::uint64_t at, long lines = 1);

// Fixed record: `reals.size()` fields of `width` columns (E12.4 reading
// rules), optionally followed by an `L3` truth field. Takes exactly one line:
// a blank line is a record of zeros, a short line reads zeros past its end,
// and what stands behind the last field is ignored. A last line without its
// line end that stops before its last field is a record still being
// written: it is dropped, as the end of the file.
bool read_fixed(TableFile& f, std::span<float> reals, bool* logical = nullptr, int width = 12);

// One target of a free record.
struct FreeField {
    enum Type { Real, Int, Double } type;
    void* ptr;
    FreeField(float* p) : type(Real), ptr(p) {}
    FreeField(int* p) : type(Int), ptr(p) {}
    FreeField(double* p) : type(Double), ptr(p) {}
};

// Free record: numbers separated by blanks, commas or line ends, possibly
// over several lines; blank lines are passed over and the rest of the last
// line is dropped. End of file inside the record drops it and answers false,
// and so does an item that is not a number at the very end of a last line
// without its line end (a writer cut short).
// A slash ends the record early. The targets are written only when the
// record is complete. An integer field takes an integer only: "1.0" there
// throws. Reals read as in a fixed field (E, D or Q exponent, or a bare
// exponent sign as in 1.0+100).
bool read_free(TableFile& f, std::initializer_list<FreeField> fields);
bool read_free(TableFile& f, std::span<const FreeField> fields);

// A text line cut or blank-padded to 80 characters.
bool read_a80(TableFile& f, std::string& text);

// The Ew.d reading of one field; false when it is not a number. Blanks are
// ignored and a blank field reads as 0; without a decimal point the last `d`
// digits are decimals. The result is the correctly rounded value, the same
// as from_chars gives; past the range of the type it is 0 or infinity.
bool parse_fortran_real(std::string_view field, int d, float& out);
bool parse_fortran_real(std::string_view field, int d, double& out);
// The L reading: optional blanks and point, then T or F; blank is false.
bool parse_fortran_logical(std::string_view field, bool& out);

}  // namespace viewer
