// A whole viewer session in one process: a temporary working directory,
// recorded graphics, scripted clicks and console streams.
#pragma once

#include <ctime>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "control/graphics.hpp"
#include "control/main_loop.hpp"
#include "control/menu.hpp"
#include "control/records.hpp"
#include "control/session.hpp"
#include "control/fortran_format.hpp"

namespace viewer::testing {

class TempDir {
public:
    TempDir() {
        std::string tmpl = (std::filesystem::temp_directory_path() / "viewer-test-XXXXXX").string();
        path = mkdtemp(tmpl.data());
    }
    ~TempDir() {
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

// A fixed record of 12-column fields.
inline std::string fixed_record(std::initializer_list<double> values) {
    std::string line;
    for (double v : values) line += fmt_e12_4(v);
    return line + "\n";
}

// `n` records of an emittance table along z (7 fields), z from 0 by 0.1 m.
inline std::string emit_table(int n, double scale = 1.0) {
    std::string t;
    for (int i = 0; i < n; ++i) {
        double z = 0.1 * i;
        t += fixed_record({z, 1e-9 * i, 0.0, scale * (1.0 + 0.1 * i), scale * (0.5 + 0.01 * i),
                           scale * (2.0 + 0.2 * i), 0.1 * i});
    }
    return t;
}

inline std::tm fixed_time() {
    std::tm t{};
    t.tm_year = 126;
    t.tm_mon = 10;
    t.tm_mday = 22;
    t.tm_hour = 9;
    t.tm_min = 5;
    return t;
}

struct Harness {
    explicit Harness(std::string input = "") : in(std::move(input)) {}

    TempDir dir;
    RecordingGraphics g;
    ScriptedPointer p;
    std::istringstream in;
    std::ostringstream out;
    std::unique_ptr<Session> s;

    Session& session() {
        if (!s) s = std::make_unique<Session>(g, p, in, out, dir.path);
        return *s;
    }
    void input(const std::string& text) { in.str(text); in.clear(); }

    // Runs a whole session with `args` (without the program name).
    int run(const std::vector<std::string>& args) {
        std::vector<const char*> argv{"viewer"};
        for (const auto& a : args) argv.push_back(a.c_str());
        return run_viewer(session(), static_cast<int>(argv.size()), argv.data(), fixed_time());
    }

    void click(float x, float y) { p.clicks.push_back({x, y}); }
    void row(int i) { click(0.03f, menu_row_y(i, NBOX)); }
    void right_row(int i) { click(0.21f, menu_row_y(i, NBOX)); }
    void turn_page() { click(0.2f, 0.99f); }

    std::string console() const { return out.str(); }
};

// Lines of the echo after each pick: the texts that follow a rule of dashes.
inline std::vector<std::string> echoes(const std::string& console) {
    std::vector<std::string> out;
    std::istringstream ss(console);
    std::string line, rule = " " + std::string(74, '-');
    bool after = false;
    while (std::getline(ss, line)) {
        if (after && line != rule && !line.empty() && line[0] == ' ' && line.rfind("     ", 0) != 0)
            out.push_back(line.substr(1));
        after = (line == rule);
    }
    return out;
}

}  // namespace viewer::testing
