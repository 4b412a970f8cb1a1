// The browser view against the export it serves: a plot drawn for an HTTP
// request (the table touched before each, so that no answer is kept)
// beside the export drawing the same row in the process; the same plot
// answered from the cache; and the time from a table's change to the
// event that tells the page.
#include <benchmark/benchmark.h>
#include <httplib.h>
#include <sys/stat.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <thread>

#include "app/export.hpp"
#include "bench/bench_support.hpp"
#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"
#include "tests/support/recording_graphics.hpp"
#include "tests/support/temp_dir.hpp"
#include "web/server.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

const std::string kToken = "0123456789abcdef0123456789abcdef";

std::tm start_time() {
    std::tm t{};
    t.tm_year = 126;
    t.tm_mday = 1;
    return t;
}

struct BeamServer {
    viewer::testing::TempDir scratch{"web_bench"};
    std::unique_ptr<web::Server> server;
    std::thread thread;
    BeamServer() {
        for (Kind k : {Kind::Xemit, Kind::Yemit, Kind::Zemit})
            bench::write_beam_table(scratch.path, k, ".001");
        server = std::make_unique<web::Server>(web::Served{scratch.path, "bench", 1, start_time()}, kToken,
                                               [] { return make_pgplot_graphics(); });
        server->bind("127.0.0.1", 0);
        thread = std::thread([this] { server->run(); });
    }
    ~BeamServer() {
        server->stop();
        thread.join();
    }
    // A new modification time for the table: the next answer is drawn anew.
    long tick = 0;
    void touch() {
        ++tick;
        const timespec t[2] = {{1700000000 + tick, 0}, {1700000000 + tick, 0}};
        ::utimensat(AT_FDCWD, scratch.file("bench.Xemit.001").c_str(), t, 0);
    }
};

BeamServer& beam_server() {
    static BeamServer s;
    return s;
}

const std::string kPlot = "/api/plot/1:2.png?size=800x600&token=" + kToken;

void BM_WebPlotUncached(benchmark::State& state) {
    BeamServer& s = beam_server();
    httplib::Client c("127.0.0.1", s.server->port());
    for (auto _ : state) {
        state.PauseTiming();
        s.touch();
        state.ResumeTiming();
        const auto r = c.Get(kPlot);
        if (!r || r->status != 200) state.SkipWithError("no plot");
    }
}
BENCHMARK(BM_WebPlotUncached)->Unit(benchmark::kMillisecond)->UseRealTime();

// The export's own pass for the same row and size, in this process.
void BM_WebFloor_ExportSameRow(benchmark::State& state) {
    BeamServer& s = beam_server();
    auto pg = make_pgplot_graphics();
    ExportRequest r;
    r.arg = "bench,1";
    r.has_arg = true;
    r.plots = {{1, 2}};
    r.width = 800;
    r.height = 600;
    r.out = s.scratch.file("floor.png");
    r.format = OutFormat::png;
    r.window_config = false;
    for (auto _ : state) {
        Capture cap(pg.get());
        ScriptedPointer p;
        std::istringstream in;
        std::ostringstream out, err;
        Session session(cap, p, in, out, s.scratch.path);
        if (run_export(session, cap, r, start_time(), err) != 0) state.SkipWithError("no export");
    }
}
BENCHMARK(BM_WebFloor_ExportSameRow)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WebPlotCached(benchmark::State& state) {
    BeamServer& s = beam_server();
    httplib::Client c("127.0.0.1", s.server->port());
    c.Get(kPlot);
    for (auto _ : state) {
        const auto r = c.Get(kPlot);
        if (!r || r->status != 200) state.SkipWithError("no plot");
    }
}
BENCHMARK(BM_WebPlotCached)->Unit(benchmark::kMicrosecond)->UseRealTime();

// From a table's change to the event on an open stream.
void BM_WebEventAfterChange(benchmark::State& state) {
    BeamServer& s = beam_server();
    httplib::Client c("127.0.0.1", s.server->port());
    std::mutex m;
    std::condition_variable cv;
    int events = 0;
    bool done = false;
    std::thread stream([&] {
        c.Get("/api/events?run=1&token=" + kToken, [&](const char* data, std::size_t n) {
            std::lock_guard lock(m);
            if (std::string_view(data, n).find("event: change") != std::string_view::npos) ++events;
            cv.notify_all();
            return !done;
        });
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    for (auto _ : state) {
        state.PauseTiming();
        // The events come at most twice a second: wait out the last one's half second.
        std::this_thread::sleep_for(std::chrono::milliseconds(510));
        std::unique_lock lock(m);
        const int before = events;
        state.ResumeTiming();
        s.touch();
        if (!cv.wait_for(lock, std::chrono::seconds(3), [&] { return events > before; }))
            state.SkipWithError("no event");
    }
    {
        std::lock_guard lock(m);
        done = true;
    }
    s.touch();  // one more event lets the stream see that it is done
    stream.join();
}
BENCHMARK(BM_WebEventAfterChange)->Unit(benchmark::kMicrosecond)->UseRealTime()->Iterations(10);

}  // namespace
