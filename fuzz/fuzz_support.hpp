// What every fuzz target shares: a working directory of its own, the input
// written there as a file, and a fresh session over recording graphics
// whose console reads nothing and writes nowhere.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

#include "core/session.hpp"
#include "tests/support/recording_graphics.hpp"

namespace viewer::fuzz {

// One directory a process, made at the first call.
inline const std::string& work_dir() {
    static const std::string dir = [] {
        std::string tmpl = (std::filesystem::temp_directory_path() / "viewer-fuzz-XXXXXX").string();
        if (!::mkdtemp(tmpl.data())) std::abort();
        return tmpl;
    }();
    return dir;
}

inline std::string write_file(const std::string& name, const std::uint8_t* data, std::size_t size) {
    const std::string path = work_dir() + "/" + name;
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    return path;
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
