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

struct RecordError : std::runtime_error {
    RecordError(std::string file, long line, int column, std::string what);
    std::string file;
    long line;   // 1-based line number in the file
    int column;  // 1-based column of the field that failed
};

// A text table open for sequential reading, with rewind. Reads in large
// blocks and hands out one line at a time, so memory does not grow with the
// file.
class TableFile {
public:
    TableFile() = default;
    ~TableFile();
    TableFile(const TableFile&) = delete;
    TableFile& operator=(const TableFile&) = delete;

    bool open(const std::string& path);  // false if it cannot be opened
    void close();
    bool is_open() const { return fd_ >= 0; }
    void rewind();
    // Next line without its line end; false at end of file.
    bool next_line(std::string_view& line);
    const std::string& name() const { return name_; }
    long line_number() const { return line_no_; }  // of the line last handed out

private:
    bool fill();
    int fd_ = -1;
    std::string name_;
    std::vector<char> buf_;
    std::size_t begin_ = 0, end_ = 0;
    bool eof_ = false;
    long line_no_ = 0;
};

// Fixed record: `reals.size()` fields of `width` columns (E12.4 reading
// rules), optionally followed by an `L3` truth field. Takes exactly one line.
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
// over several lines; the rest of the last line is dropped. End of file
// inside the record drops it and answers false.
bool read_free(TableFile& f, std::initializer_list<FreeField> fields);
bool read_free(TableFile& f, std::span<const FreeField> fields);

// A text line cut or blank-padded to 80 characters.
bool read_a80(TableFile& f, std::string& text);

// The E12.4 reading of one field; nullopt-like failure throws with column.
// Exposed for tests: blank reads as 0, no decimal point means the last `d`
// digits are decimals.
bool parse_fortran_real(std::string_view field, int d, float& out);
bool parse_fortran_logical(std::string_view field, bool& out);

}  // namespace viewer
