// A directory of runs served on 127.0.0.1 for the tests of the browser
// view, and the export's own answer to hold an answer against.
#pragma once

#include <httplib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <thread>

#include "app/export.hpp"
#include "app/startup.hpp"
#include "tests/support/harness.hpp"
#include "web/server.hpp"

namespace viewer::testing {

inline const std::string kToken = "00112233445566778899aabbccddeeff";

// The runs of `source` (the bundled ones unless named) served from a
// directory of their own.
struct Served {
    TempDir dir;
    std::unique_ptr<web::Server> server;
    std::thread thread;
    explicit Served(bool poll = false,
                    const std::filesystem::path& source = std::filesystem::path(VIEWER_SOURCE_DIR) /
                                                          "examples",
                    const std::string& project = "rfgun") {
        for (const auto& e : std::filesystem::directory_iterator(source))
            std::filesystem::copy_file(e.path(), dir.file(e.path().filename().string()));
        server = std::make_unique<web::Server>(
            web::Served{dir.path, project, 1, fixed_time()}, kToken, [] { return make_pgplot_graphics(); },
            poll);
        if (!server->bind("127.0.0.1", 0)) throw std::runtime_error("cannot bind");
        thread = std::thread([this] { server->run(); });
    }
    ~Served() {
        server->stop();
        thread.join();
    }
    httplib::Client client() const {
        httplib::Client c("127.0.0.1", server->port());
        c.set_read_timeout(std::chrono::seconds(60));
        return c;
    }
    // GET with the token in the URL.
    httplib::Result get(const std::string& path) const {
        return client().Get(path + (path.find('?') == std::string::npos ? "?" : "&") + "token=" + kToken);
    }
};

// Run `run` of `project` in `folder` of `dir`: the beam tables of the
// bundled run `from`, the y table cut to `y_lines` lines (0: whole); written
// an hour ago unless `now`.
inline void run_in(const TempDir& dir, const std::string& folder, const std::string& project, int run,
                   int y_lines = 0, bool now = false, int from = 1) {
    namespace fs = std::filesystem;
    fs::create_directories(dir.path + "/" + folder);
    for (const std::string kind : {"Xemit", "Yemit", "Zemit"}) {
        const std::string name = folder + "/" + project + "." + kind + "." + run_digits(run);
        std::ifstream in(std::string(VIEWER_SOURCE_DIR) + "/examples/rfgun." + kind + "." + run_digits(from));
        std::string text, line;
        for (int n = 0; std::getline(in, line) && (kind != "Yemit" || y_lines == 0 || n < y_lines); ++n)
            text += line + "\n";
        dir.write(name, text);
        if (!now)
            fs::last_write_time(dir.file(name), fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
}

// A particle file of `n` particles about the reference particle at `z`,
// written whole under its name as the tracker leaves one.
inline void particles_in(const TempDir& dir, const std::string& name, int n = 40, double z = 1.5) {
    std::ostringstream f;
    f << "0 0 " << z << " 0 0 3.0e6 1.0 -1e-3 1 5\n";
    for (int i = 1; i < n; ++i)
        f << 1e-4 * ((i * 7) % 11 - 5) << ' ' << 1e-4 * ((i * 5) % 13 - 6) << ' ' << 1e-5 * (i % 9 - 4) << ' '
          << 10 * (i % 7 - 3) << ' ' << 10 * (i % 5 - 2) << ' ' << 1e3 * (i % 3 - 1) << " 0 -1e-3 1 "
          << (i % 10 ? 5 : -15) << "\n";
    dir.write(name + ".part", f.str());
    std::filesystem::rename(dir.file(name + ".part"), dir.file(name));
}

// The export's own answer for the same options, drawn in this process: the
// file it writes, or its standard output when `file` is empty.
inline std::string exported(const Served& s, const std::string& args, const std::string& file) {
    auto pg = make_pgplot_graphics();
    Capture cap(pg.get());
    ScriptedPointer p;
    std::istringstream in;
    std::ostringstream out, err;
    Session session(cap, p, in, out, s.dir.path);
    run_export(session, cap, request_of(args), fixed_time(), err);
    if (file.empty()) return out.str();
    std::ifstream f(s.dir.file(file), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(f), {});
}

}  // namespace viewer::testing
