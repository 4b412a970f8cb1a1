// The browser view through httplib's own client on 127.0.0.1: the door,
// every endpoint and refusal, the answers equal to the export's, the cache
// against a changed table, the events, and many clients at once.
#include "web/server.hpp"

#include <gtest/gtest.h>
#include <httplib.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/web/served.hpp"
#include "web/serve.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

std::size_t resident_kib() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) return std::stoul(line.substr(6));
    return 0;
}

}  // namespace

TEST(Web, TokenAndHeaders) {
    EXPECT_EQ(web::new_token().size(), 32u);
    EXPECT_NE(web::new_token(), web::new_token());
    EXPECT_TRUE(web::same_token(kToken, kToken));
    EXPECT_FALSE(web::same_token(kToken, kToken.substr(1) + "0"));
    Served s;
    auto c = s.client();
    const std::string cookie = "viewer_token_" + std::to_string(s.server->port()) + "=" + kToken;
    // clang-format off
    const std::tuple<std::string, httplib::Headers, int> cases[] = {
        {"/api/runs", {}, 403}, {"/api/runs?token=nope", {}, 403}, {"/api/runs?token=" + kToken.substr(2), {}, 403},
        {"/nothing", {}, 403},  {"/api/runs?token=" + kToken, {}, 200}, {"/api/runs", {{"Cookie", cookie}}, 200},
        {"/api/runs", {{"Cookie", "a=1; " + cookie + "; b=2"}}, 200}, {"/api/runs", {{"Cookie", cookie + "0"}}, 403},
    };
    // clang-format on
    for (const auto& [path, headers, status] : cases) {
        SCOPED_TRACE(path);
        const auto r = c.Get(path, headers);
        ASSERT_TRUE(r);
        EXPECT_EQ(r->status, status);
        EXPECT_EQ(r->get_header_value("Content-Security-Policy"), "default-src 'self'");
        EXPECT_EQ(r->get_header_value("X-Content-Type-Options"), "nosniff");
        EXPECT_TRUE(status != 403 || r->body.find("rfgun") == std::string::npos);  // no data behind the door
    }
    const auto first = s.get("/");
    EXPECT_EQ(first->get_header_value("Set-Cookie"), cookie + "; Path=/; HttpOnly; SameSite=Strict");
}

TEST(Web, EveryEndpointAndRefusal) {
    Served s;
    // clang-format off
    const std::tuple<const char*, int, const char*> cases[] = {
        {"/", 200, "text/html"}, {"/app.js", 200, "text/javascript"}, {"/app.css", 200, "text/css"},
        {"/api/runs", 200, "\"runs\":[1,2,3]"}, {"/api/rows?run=3", 200, "\"needs\":\".Sigma\""},
        {"/api/plot/1:2.png", 200, "image/png"}, {"/api/plot/1:2.txt?zoom=1:2", 200, " rms Beam Size\n"},
        {"/api/plot/1:2.csv", 200, "z [m],sigma_x [mm],sigma_y [mm]\n"}, {"/api/plot/1:2.json?fit=3", 200, "\"pick\": 3"},
        {"/api/plot/2:12.ps?runs=1-3&mono=1", 200, "%!PS"}, {"/api/plot/3:31.pdf?bins=7", 200, "%PDF"},
        {"/api/overview/1.png?size=400x300&geometry=1", 200, "image/png"}, {"/api/overview/4.pdf?runs=all", 200, "%PDF"},
        {"/api/plot/1:x.png", 400, "a row is PAGE:ROW"}, {"/api/plot/9:1.png", 400, "a row is PAGE:ROW"},
        {"/api/plot/1:2.png?zoom=1", 400, "zoom takes LOW:HIGH"}, {"/api/plot/1:2.png?fit=12", 400, "fit takes"},
        {"/api/plot/1:2.png?bins=0", 400, "bins takes"}, {"/api/plot/1:2.png?size=100x300", 400, "size takes"},
        {"/api/plot/1:2.png?runs=1,,2", 400, "--runs takes"}, {"/api/plot/1:2.png?run=1000", 400, "run takes"},
        {"/api/plot/1:14.png?runs=1-2", 400, "shows one run"}, {"/api/plot/1:2.png?colour=1", 400, "unknown parameter"},
        {"/api/rows?run=x", 400, "run takes"}, {"/api/nothing", 404, "not found: /api/nothing"},
        {"/api/plot/1:2.gif", 404, "no such path"}, {"/api/overview/1.csv", 404, "a sheet comes as .png or .pdf"},
        {"/api/plot/2:8.png", 404, "row 2:8 is blank"}, {"/api/plot/5:1.png?run=3", 404, "it needs .Sigma"},
        {"/api/plot/1:2.png?run=7", 404, "no data files of project rfgun"},
    };
    // clang-format on
    for (const auto& [path, status, holds] : cases) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        ASSERT_TRUE(r);
        EXPECT_EQ(r->status, status) << r->body;
        EXPECT_TRUE(has(r->body + r->get_header_value("Content-Type"), holds));
        EXPECT_TRUE(status < 400 || std::count(r->body.begin(), r->body.end(), '\n') == 1) << r->body;
    }
    // the frame of the plot: its viewport inside the image, its window as drawn
    const auto png = s.get("/api/plot/1:2.png?size=600x400");
    const auto frame = nlohmann::json::parse(png->get_header_value("X-Viewer-Frame"));
    const auto vp = frame["panels"][0]["viewport"];
    EXPECT_TRUE(vp[0] > 0 && vp[1] < 600 && vp[2] > 0 && vp[3] < 400 && vp[2] < vp[3]) << vp;
    EXPECT_EQ(frame["panels"][0]["window"][2], 0.0);
}

TEST(Web, AnswersAreTheExportsAndFollowTheTables) {
    Served s;
    for (const auto& [path, args, file] :
         std::initializer_list<std::tuple<const char*, const char*, const char*>>{
             {"/api/plot/1:2.png?size=500x300&zoom=0.5:3",
              "rfgun,1 --plot 1:2 --size 500x300 --zoom 0.5:3 --out e.png", "e.png"},
             {"/api/plot/1:2.txt?fit=3&run=2", "rfgun,2 --plot 1:2 --fit 3 --csv e.csv", ""},
             {"/api/plot/2:12.csv?runs=1,3", "rfgun --plot 2:12 --runs 1,3 --csv e.csv", "e.csv"}}) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        ASSERT_TRUE(r && r->status == 200);
        // drawn while the renderer waits between requests
        EXPECT_EQ(r->body, exported(s, args, file));
    }
    // A reload is free; a table that grows is drawn again.
    const std::size_t drawn = s.server->renderer().drawn();
    const std::string before = s.get("/api/plot/1:2.txt")->body;
    EXPECT_EQ(s.get("/api/plot/1:2.txt")->body, before);
    EXPECT_EQ(s.server->renderer().drawn(), drawn + 1);
    std::ofstream(s.dir.file("rfgun.Xemit.001"), std::ios::app) << fixed_record({5.1, 0, 0, 9.5, 1, 1, 0});
    std::ofstream(s.dir.file("rfgun.Yemit.001"), std::ios::app) << fixed_record({5.1, 0, 0, 9.5, 1, 1, 0});
    const std::string after = s.get("/api/plot/1:2.txt")->body;
    EXPECT_TRUE(has(after, "maximum:                     9.5000D+00  at z =   5.1000D+00"));
    EXPECT_EQ(s.server->renderer().drawn(), drawn + 2);
    // Written anew at the same size, maybe within one tick of the clock:
    // another file all the same.
    std::string x = s.dir.read("rfgun.Xemit.001");
    x.replace(x.rfind("9.5000E+00"), 10, "8.5000E+00");
    s.dir.write("new", x);
    fs::rename(s.dir.file("new"), s.dir.file("rfgun.Xemit.001"));
    EXPECT_TRUE(has(s.get("/api/plot/1:2.txt")->body,
                    "maximum:                     8.5000D+00  at z =   5.1000D+00"));
    EXPECT_EQ(s.server->renderer().drawn(), drawn + 3);
}

TEST(Web, AnEventEachTimeTheTablesChange) {
    for (bool poll : {false, true}) {
        SCOPED_TRACE(poll ? "polling" : "inotify");
        Served s(poll);
        auto c = s.client();
        std::string seen;
        std::thread appender([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            std::ofstream(s.dir.file("rfgun.Xemit.002"), std::ios::app)
                << fixed_record({5.1, 0, 0, 1, 1, 1, 0});
        });
        const auto start = std::chrono::steady_clock::now();
        c.Get("/api/events?run=2&token=" + kToken, [&](const char* data, std::size_t n) {
            seen.append(data, n);
            return seen.find("event: change") == std::string::npos &&
                   std::chrono::steady_clock::now() - start < std::chrono::seconds(8);
        });
        appender.join();
        EXPECT_TRUE(has(seen, "event: change\ndata: {\"run\":2,\"tables\":["));
        EXPECT_TRUE(has(seen, "\"file\":\"rfgun.Xemit.002\",\"size\":" +
                                  std::to_string(fs::file_size(s.dir.file("rfgun.Xemit.002")))));
    }
}

TEST(Web, ManyClientsAtOnce) {
    Served s;
    const char* paths[] = {"/api/plot/1:2.txt", "/api/plot/1:8.csv?zoom=1:2", "/api/plot/2:12.png",
                           "/api/rows?run=2",   "/api/plot/4:1.txt?runs=1-2", "/api/plot/5:1.json",
                           "/api/runs",         "/api/plot/1:5.png?mono=1",   "/api/plot/3:1.txt",
                           "/api/plot/1:14.csv"};
    std::vector<std::string> want;
    for (const char* p : paths) want.push_back(s.get(p)->body);
    std::atomic<int> next{0}, wrong{0};
    std::size_t after_first_hundred = 0;
    auto client = [&] {
        auto c = s.client();
        for (int i; (i = next++) < 500;) {
            const std::size_t k = static_cast<std::size_t>(i) % std::size(paths);
            const auto r =
                c.Get(std::string(paths[k]) + (std::strchr(paths[k], '?') ? "&" : "?") + "token=" + kToken);
            if (!r || r->status != 200 || r->body != want[k]) ++wrong;
            if (i == 100) after_first_hundred = resident_kib();
        }
    };
    std::vector<std::thread> clients;
    for (int t = 0; t < 20; ++t) clients.emplace_back(client);
    for (auto& t : clients) t.join();
    EXPECT_EQ(wrong, 0);
#ifndef __SANITIZE_ADDRESS__  // its quarantine holds freed memory back on purpose
    EXPECT_LT(resident_kib(), after_first_hundred + 10 * 1024);
#endif
    EXPECT_EQ(s.get("/api/runs")->status, 200);  // alive
}

TEST(Web, ServeArgumentsQueueAndDisconnects) {
    // clang-format off
    const std::tuple<const char*, const char*, int> good[] = {
        {"--serve", "127.0.0.1", 8765}, {"--serve 0", "127.0.0.1", 0}, {"--serve 0.0.0.0:8080", "0.0.0.0", 8080},
        {"--serve localhost:65535", "localhost", 65535},
    };
    // clang-format on
    for (const auto& [args, host, port] : good) {
        SCOPED_TRACE(args);
        const ExportRequest r = request_of(std::string("rfgun,2 ") + args);
        EXPECT_EQ(std::tuple(r.serve, r.host, r.port), std::tuple(true, std::string(host), port));
    }
    for (const char* bad : {"--serve 70000", "--serve x:", "--serve :80", "--serve 80 --plot 1:2"})
        EXPECT_THROW(request_of(bad), UsageError) << bad;
    EXPECT_TRUE(web::loopback("127.0.0.1") && web::loopback("::1") && !web::loopback("0.0.0.0"));

    Served s;
    // A request that waits past its time gets 503; the renderer goes on.
    web::PlotQuery q;
    q.page = 1;
    q.row = 2;
    q.answer = web::Answer::txt;
    int waited_too_long = 0;  // a busy machine may draw one before it is given up on
    for (int i = 0; i < 20; ++i)
        waited_too_long += s.server->renderer().render(q, std::chrono::milliseconds(0)).status == 503;
    EXPECT_GT(waited_too_long, 10);
    // A client that leaves in the middle of an answer harms nothing.
    for (int i = 0; i < 5; ++i) {
        httplib::Client c = s.client();
        c.Get("/api/plot/1:14.csv?token=" + kToken, [](const char*, std::size_t) { return false; });
    }
    EXPECT_EQ(s.get("/api/plot/1:2.txt")->status, 200);
}
