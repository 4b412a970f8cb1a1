// Files of the headless export: checking that a file can be written,
// PostScript turned into PDF, and the rows a run offers.
#pragma once

#include <ctime>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>

#include "core/session.hpp"

namespace viewer {

// A failure of the export that is not the command line's: exit status 1.
struct ExportFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The date of the page foot: now, or the time SOURCE_DATE_EPOCH gives in
// seconds, so that pictures made twice are the same bytes.
std::tm clock_now();

// Fails unless `path` can be written, with the system's reason.
void check_writable(const std::string& path);

// True when `program` is an executable on the PATH.
bool on_path(const char* program);

// PostScript to PDF through ghostscript, without a shell between.
bool to_pdf(const std::string& ps, const std::string& pdf);

// Writes `text` to `path`, or fails naming the file.
void write_file(const std::string& path, const std::string& text);
// The bytes of `path`; empty when there is no such file.
std::string read_file(const std::string& path);

// An export has no window: any wait for the pointer finds no cursor.
class NoPointer final : public Pointer {
public:
    int pgband(int, int, float, float, float&, float&, char& ch) override {
        ch = '\0';
        return 0;
    }
};

// The rows the loaded run offers, page by page, as PAGE:ROW and menu text.
void list_rows(Session& s);

// Standard error for the viewer's own lines. The graphics library writes
// notes of its own to the same descriptor ("writing new file as ..."):
// while this object lives they go nowhere, and `err` reaches the terminal.
class OwnStderr {
public:
    OwnStderr();
    ~OwnStderr();
    OwnStderr(const OwnStderr&) = delete;
    OwnStderr& operator=(const OwnStderr&) = delete;
    std::ostream& err() { return out_; }

private:
    struct Buffer : std::streambuf {
        int fd = -1;
        int_type overflow(int_type c) override;
        std::streamsize xsputn(const char* s, std::streamsize n) override;
    };
    int saved_ = -1;
    Buffer buf_;
    std::ostream out_{&buf_};
};

}  // namespace viewer
