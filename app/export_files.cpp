// Files of the headless export.
#include "app/export_files.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string_view>

#include "app/pages.hpp"

namespace viewer {

namespace fs = std::filesystem;

void check_writable(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "a");
    if (!f) throw ExportFailure("cannot write " + path + ": " + std::strerror(errno));
    std::fclose(f);
}

std::tm clock_now() {
    std::time_t t = std::time(nullptr);
    if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH")) {
        long long v = 0;
        const char* end = epoch + std::strlen(epoch);
        if (const auto r = std::from_chars(epoch, end, v); r.ec == std::errc() && r.ptr == end && *epoch)
            t = static_cast<std::time_t>(v);
    }
    std::tm now{};
    localtime_r(&t, &now);
    return now;
}

bool on_path(const char* program) {
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "/usr/bin:/bin";
    while (!rest.empty()) {
        const auto colon = rest.find(':');
        const fs::path dir(std::string(rest.substr(0, colon)));
        if (::access((dir / program).c_str(), X_OK) == 0) return true;
        rest = colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
    }
    return false;
}

bool to_pdf(const std::string& ps, const std::string& pdf) {
    const std::string out = "-sOutputFile=" + pdf;
    const char* argv[] = {"gs",        "-q",       "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite",
                          out.c_str(), ps.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int rc = posix_spawnp(&pid, "gs", &quiet, nullptr, const_cast<char* const*>(argv), environ);
    posix_spawn_file_actions_destroy(&quiet);
    if (rc != 0) return false;
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void write_file(const std::string& path, const std::string& text) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    if (f) f << text;
    if (!f) throw ExportFailure("cannot write " + path + ": " + std::strerror(errno));
}

std::string read_file(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    std::ostringstream s;
    s << f.rdbuf();
    return s.str();
}

void list_rows(Session& s) {
    std::ostream& out = s.con.out;
    for (int page = 1; page <= s.window.N_PAGES; ++page) {
        s.window.PAGE = page;
        page_fill(s);
        out << "page " << page << "\n";
        for (int code = 1; code <= 41; ++code) {
            const MenuRow* row = find_row(page, code);
            if (!row || !available(*row, s.fexist)) continue;
            const std::string ref = std::to_string(page) + ":" + std::to_string(code);
            // The row's whole name: the menu's 33 characters make two rows alike.
            out << "  " << ref << std::string(ref.size() < 7 ? 7 - ref.size() : 1, ' ')
                << spoken(menu_text(*row, s.fexist)) << "\n";
        }
    }
}

OwnStderr::OwnStderr() {
    std::fflush(stderr);
    saved_ = ::dup(2);
    const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (saved_ >= 0 && null >= 0) ::dup2(null, 2);
    if (null >= 0) ::close(null);
    buf_.fd = saved_ >= 0 ? saved_ : 2;
}

OwnStderr::~OwnStderr() {
    out_.flush();
    std::fflush(stderr);
    if (saved_ < 0) return;
    ::dup2(saved_, 2);
    ::close(saved_);
}

std::streamsize OwnStderr::Buffer::xsputn(const char* s, std::streamsize n) {
    std::streamsize done = 0;
    while (done < n) {
        const ssize_t w = ::write(fd, s + done, static_cast<std::size_t>(n - done));
        if (w < 0 && errno == EINTR) continue;
        if (w <= 0) break;
        done += w;
    }
    return done;
}

OwnStderr::Buffer::int_type OwnStderr::Buffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char ch = traits_type::to_char_type(c);
    return xsputn(&ch, 1) == 1 ? c : traits_type::eof();
}

}  // namespace viewer
