// Run files as streams of lines: block-buffered reads, rewind, and the
// read error that names file, line and column.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "core/run_files.hpp"

namespace viewer {

RecordError::RecordError(std::string f, long l, int c, std::string w)
    : std::runtime_error(std::move(w)), file(std::move(f)), line(l), column(c) {}

std::string RecordError::message() const {
    std::string s = file + ", line " + std::to_string(line);
    if (column > 0) s += ", column " + std::to_string(column);
    return s + ": " + what();
}

namespace {
constexpr std::size_t kBlock = 1 << 18;     // bytes read per system call
constexpr std::size_t kMinBlock = 1 << 12;  // the buffer of the smallest table
}  // namespace

TableFile::~TableFile() {
    close();
}

bool TableFile::open(const std::string& path) {
    return open(path, 0, UINT64_MAX);
}

bool TableFile::open(const std::string& path, std::uint64_t from, std::uint64_t to) {
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
    from_ = from;
    to_ = std::max(from, to);
    // A small table needs no full block; a long line of the previous file
    // need not stay in memory. A table that grows later is read in the
    // smaller pieces, and a line longer than the buffer still grows it.
    const auto size = static_cast<std::size_t>(
        std::min<std::uint64_t>(st.st_size > 0 ? static_cast<std::uint64_t>(st.st_size) : 0, to_ - from_));
    const std::size_t want = std::clamp<std::size_t>(size + 1, kMinBlock, kBlock);
    if (buf_.size() < want || buf_.size() > kBlock) std::vector<char>(want).swap(buf_);
    rewind();
    return true;
}

void TableFile::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    bytes_read_ = 0;
    name_.clear();
    begin_ = end_ = 0;
    eof_ = false;
    line_no_ = 0;
    ended_ = true;
    from_ = pos_ = 0;
    to_ = UINT64_MAX;
}

void TableFile::rewind() {
    if (fd_ < 0) return;
    ::lseek(fd_, static_cast<off_t>(from_), SEEK_SET);
    pos_ = from_;
    begin_ = end_ = 0;
    eof_ = false;
    line_no_ = 0;
    ended_ = true;
}

bool TableFile::fill() {
    if (eof_ || fd_ < 0) return false;
    if (begin_ > 0) {
        std::memmove(buf_.data(), buf_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buf_.size()) buf_.resize(buf_.size() * 2);  // a line longer than the buffer
    const std::size_t room =
        static_cast<std::size_t>(std::min<std::uint64_t>(buf_.size() - end_, to_ - pos_));
    ssize_t got = 0;
    while (room > 0 && (got = ::read(fd_, buf_.data() + end_, room)) < 0 && errno == EINTR) {
    }
    if (got < 0)
        throw RecordError(name_, line_no_ + 1, 0, std::string("read error: ") + std::strerror(errno));
    if (got == 0) {
        eof_ = true;
        return false;
    }
    end_ += static_cast<std::size_t>(got);
    pos_ += static_cast<std::uint64_t>(got);
    bytes_read_ += static_cast<std::uint64_t>(got);
    return true;
}

std::uint64_t line_after(const std::string& path, std::uint64_t at, long lines) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat st {};
    if (fd < 0 || ::fstat(fd, &st) != 0) {
        if (fd >= 0) ::close(fd);
        throw RecordError(path, 0, 0, "cannot be opened");
    }
    const auto size = static_cast<std::uint64_t>(std::max<off_t>(st.st_size, 0));
    char b[4096];
    while (lines > 0 && at < size) {
        ssize_t got;
        while ((got = ::pread(fd, b, sizeof b, static_cast<off_t>(at))) < 0 && errno == EINTR) {
        }
        if (got <= 0) {
            const int error = got < 0 ? errno : 0;
            ::close(fd);
            if (error) throw RecordError(path, 0, 0, std::string("read error: ") + std::strerror(error));
            return size;  // the file has shrunk
        }
        const char* p = b;
        const char* const e = b + got;
        for (const void* nl; lines > 0 && (nl = std::memchr(p, '\n', static_cast<std::size_t>(e - p)));) {
            p = static_cast<const char*>(nl) + 1;
            --lines;
        }
        at += lines > 0 ? static_cast<std::uint64_t>(got) : static_cast<std::uint64_t>(p - b);
    }
    ::close(fd);
    return std::min(at, size);
}

bool TableFile::next_line(std::string_view& line) {
    if (fd_ < 0) return false;
    std::size_t scanned = begin_;  // bytes before this are known to hold no line end
    for (;;) {
        const char* start = buf_.data() + begin_;
        const void* nl = std::memchr(buf_.data() + scanned, '\n', end_ - scanned);
        std::size_t len;
        ended_ = nl != nullptr;
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
        // An editor's byte order mark would shift every column of the first line.
        if (line_no_ == 0 && from_ == 0 && line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
        ++line_no_;
        return true;
    }
}

}  // namespace viewer
