// A directory of its own under the system's temporary directory, removed
// with the object: for tests, benchmarks and fuzz targets alike.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace viewer::testing {

class TempDir {
public:
    explicit TempDir(const std::string& stem = "viewer-test") {
        std::string tmpl = (std::filesystem::temp_directory_path() / (stem + "-XXXXXX")).string();
        if (!::mkdtemp(tmpl.data())) throw std::runtime_error("cannot make a directory like " + tmpl);
        path = tmpl;
    }
    ~TempDir() {
        // A test may have taken the owner's rights away.
        std::error_code ec;
        std::filesystem::permissions(path, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ec);
        std::filesystem::remove_all(path, ec);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string file(const std::string& name) const { return path + "/" + name; }
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
    }
    std::string read(const std::string& name) const {
        std::ifstream in(file(name), std::ios::binary);
        std::stringstream ss;
        ss << in.rdbuf();
        return ss.str();
    }
    bool exists(const std::string& name) const { return std::filesystem::exists(file(name)); }

    std::string path;
};

}  // namespace viewer::testing
