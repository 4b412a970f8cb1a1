// What every fuzz target shares: a working directory of its own, the input
// written there as a file, and a fresh session over recording graphics
// whose console reads nothing and writes nowhere.
#pragma once

#include <fcntl.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "core/session.hpp"
#include "tests/support/recording_graphics.hpp"
#include "tests/support/temp_dir.hpp"

namespace viewer::fuzz {

// One directory a process, made at the first call; a process that ends
// normally leaves nothing behind.
inline const std::string& work_dir() {
    static const testing::TempDir dir("viewer-fuzz");
    return dir.path;
}

// `data` as the whole content of the open file `fd`.
inline void rewrite(int fd, const std::uint8_t* data, std::size_t size) {
    if (fd < 0 || ::ftruncate(fd, 0) != 0) std::abort();
    for (std::size_t done = 0; done < size;) {
        const ssize_t n = ::pwrite(fd, data + done, size - done, static_cast<off_t>(done));
        if (n <= 0) std::abort();
        done += static_cast<std::size_t>(n);
    }
}

// The input as the file `name` of the work directory. The file stays open
// between inputs and is rewritten in place: an input costs no open.
inline std::string write_file(const std::string& name, const std::uint8_t* data, std::size_t size) {
    static std::map<std::string, int> open_files;
    const std::string path = work_dir() + "/" + name;
    int& fd = open_files[name];
    if (fd <= 0) fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    rewrite(fd, data, size);
    return path;
}

// The input as a file in memory, for targets that only read it: the path
// opens the same memory, and no file system is touched.
inline std::string memory_file(const std::uint8_t* data, std::size_t size) {
    static const int fd = ::memfd_create("fuzz-input", MFD_CLOEXEC);
    rewrite(fd, data, size);
    return "/proc/self/fd/" + std::to_string(fd);
}

// A session in the work directory; `input` answers its prompts.
struct FuzzSession {
    explicit FuzzSession(std::string input = "") : in(std::move(input)), s(g, p, in, out, work_dir()) {}
    RecordingGraphics g;
    ScriptedPointer p;
    std::istringstream in;
    std::ostringstream out;
    Session s;
};

}  // namespace viewer::fuzz
