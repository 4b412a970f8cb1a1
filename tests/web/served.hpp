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
