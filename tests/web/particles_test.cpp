// The particle files in the browser view: the list with what each file
// holds, each view in every form equal to the export's, the refusals, and
// files the tracker writes while the page is open.
#include "core/particles.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/web/served.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

const fs::path kReal = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata" / "simframe-injector400";

#define NEED_REAL_DATA() \
    if (!fs::is_directory(kReal)) GTEST_SKIP() << kReal << " is absent"

// A file written whole under its name, as the tracker leaves one.
void put(const Served& s, const std::string& name, const std::string& content) {
    s.dir.write("partial", content);
    fs::rename(s.dir.file("partial"), s.dir.file(name));
}

// PostScript says the minute it was written.
std::string undated(std::string file) {
    if (const auto at = file.find("%%CreationDate:"); at != std::string::npos)
        file.erase(at, file.find('\n', at) - at);
    return file;
}

nlohmann::json listed(const Served& s, const std::string& query = "") {
    const auto r = s.get("/api/particles" + query);
    return r && r->status == 200 ? nlohmann::json::parse(r->body)["files"] : nlohmann::json();
}

}  // namespace

TEST(WebParticles, ListsTheFilesAndWhatEachHolds) {
    NEED_REAL_DATA();
    Served s(false, kReal, "injector400");
    s.dir.write("injector400.0200.001", "0 0 0 0 0 0 0 0 1 5\nno numbers here\n");
    const auto check = [&](const std::vector<std::string>& names) {
        const nlohmann::json files = listed(s);
        ASSERT_EQ(files.size(), names.size()) << files;
        for (std::size_t i = 0; i < names.size(); ++i) {
            SCOPED_TRACE(names[i]);
            EXPECT_EQ(files[i]["id"], i);
            EXPECT_EQ(files[i]["name"], names[i]);
            try {
                const BunchStats st = summarise_particles(s.dir.file(names[i])).stats;
                EXPECT_DOUBLE_EQ(files[i]["z"].get<double>(), st.z_ref);
                EXPECT_EQ(std::pair(files[i]["particles"].get<long>(), files[i]["active"].get<long>()),
                          std::pair(st.counts.total, st.counts.active));
            } catch (const ParticleError& e) {
                // said of the file by its name: the page knows where it is
                EXPECT_EQ(files[i]["error"],
                          names[i] + std::string(e.what()).substr(s.dir.file(names[i]).size()));
                EXPECT_FALSE(files[i].contains("particles"));
            }
        }
    };
    check({"injector400.0089.001", "injector400.0098.001", "injector400.0200.001", "injector400.0330.001"});
    EXPECT_EQ(listed(s, "?run=2"), nlohmann::json::array());

    // The tracker writes another; then writes it anew with other particles.
    put(s, "injector400.0400.001", s.dir.read("injector400.0330.001"));
    check({"injector400.0089.001", "injector400.0098.001", "injector400.0200.001", "injector400.0330.001",
           "injector400.0400.001"});
    const std::string first = s.get("/api/particles/4.txt")->body;
    EXPECT_EQ(first, exported(s, "injector400,1 --particles 0400", ""));
    put(s, "injector400.0400.001", s.dir.read("injector400.0089.001"));
    check({"injector400.0089.001", "injector400.0098.001", "injector400.0200.001", "injector400.0330.001",
           "injector400.0400.001"});
    const std::string second = s.get("/api/particles/4.txt")->body;
    EXPECT_NE(second, first);
    EXPECT_EQ(second, exported(s, "injector400,1 --particles 0400", ""));
}

TEST(WebParticles, AnswersAreTheExports) {
    NEED_REAL_DATA();
    Served s(false, kReal, "injector400");
    const std::string arg = "injector400,1 --particles ";
    for (const auto& [path, args, file] :
         std::initializer_list<std::tuple<const char*, std::string, const char*>>{
             {"/api/particles/2.png?size=500x300", arg + "0330 --size 500x300 --out e.png", "e.png"},
             {"/api/particles/2.txt?plane=x:y", arg + "0330 --plane x:y", ""},
             {"/api/particles/0.csv?plane=z:dE&window=-2:2,-100:100",
              arg + "0089 --plane z:dE --window -2:2,-100:100 --csv e.csv", "e.csv"},
             {"/api/particles/1.json?slices=10&along=z", arg + "0098 --slices 10 --along z --stats e.json",
              "e.json"},
             {"/api/particles/2.png?sheet=1&mono=1&lost=1&bins=40",
              arg + "0330 --sheet --mono --lost --bins 40 --out e.png", "e.png"},
             {"/api/particles/2.csv?slices=8", arg + "0330 --slices 8 --csv e.csv", "e.csv"},
             {"/api/particles/2.ps?plane=E:t", arg + "0330 --plane E:t --out e.ps", "e.ps"},
             {"/api/particles/0.png?zoom=-1:1&plane=y:yp", arg + "0089 --zoom -1:1 --plane y:yp --out e.png",
              "e.png"}}) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        ASSERT_TRUE(r);
        ASSERT_EQ(r->status, 200) << r->body;
        EXPECT_EQ(undated(r->body), undated(exported(s, args, file)));
    }
    // Asked again: kept, not drawn again.
    const std::size_t drawn = s.server->renderer().drawn();
    EXPECT_EQ(s.get("/api/particles/2.txt?plane=x:y")->status, 200);
    EXPECT_EQ(s.server->renderer().drawn(), drawn);
}

TEST(WebParticles, Refusals) {
    NEED_REAL_DATA();
    Served s(false, kReal, "injector400");
    s.dir.write("injector400.0200.001", "0 0 0 0 0 0 0 0 1 5\nno numbers here\n");  // id 2
    // clang-format off
    const std::tuple<const char*, int, const char*> cases[] = {
        {"/api/particles/4.png", 404, "no particle file 4 in run 001: /api/particles?run=1 lists them"},
        {"/api/particles/0.png?run=7", 404, "no particle file 0 in run 007"},
        {"/api/particles/injector400.0330.001.png", 400, "a particle file is named by its number"},
        {"/api/particles/..%2Finjector400.0330.001.txt", 400, "a particle file is named by its number"},
        {"/api/particles/-1.txt", 400, "a particle file is named by its number"},
        {"/api/particles/3.gif", 404, "no such path"}, {"/api/particles/3", 404, "no such path"},
        {"/api/particles/3.png?plane=x:q", 400, "plane takes A:B, two of x, y, z, xp"},
        {"/api/particles/3.png?plane=x", 400, "plane takes"}, {"/api/particles/3.png?slices=0", 400, "slices takes"},
        {"/api/particles/3.png?along=y", 400, "along takes t or z"},
        {"/api/particles/3.png?sheet=1&plane=x:y", 400, "a view each"},
        {"/api/particles/3.png?slices=5&plane=x:y", 400, "a view each"},
        {"/api/particles/3.png?window=1:0,0:1", 400, "window takes"},
        {"/api/particles/3.png?fit=3", 400, "unknown parameter \"fit\""},
        {"/api/plot/1:2.png?plane=x:y", 400, "unknown parameter \"plane\""},
        {"/api/particles/2.png", 500, "injector400.0200.001"},
        {"/api/particles/3.txt?slices=5&along=z&lost=1&bins=20&mono=1&size=400x300&zoom=-1:1", 200, "0330"},
        {"/api/particles/3.pdf?sheet=1", 200, "%PDF"},
    };
    // clang-format on
    for (const auto& [path, status, holds] : cases) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        ASSERT_TRUE(r);
        EXPECT_EQ(r->status, status) << r->body;
        EXPECT_TRUE(has(r->body, holds));
    }
}

TEST(WebParticles, AnEventWhenAParticleFileAppears) {
    NEED_REAL_DATA();
    for (bool poll : {false, true}) {
        SCOPED_TRACE(poll ? "polling" : "inotify");
        Served s(poll, kReal, "injector400");
        std::string seen;
        std::thread writer([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            put(s, "injector400.0500.001", s.dir.read("injector400.0330.001"));
        });
        const auto start = std::chrono::steady_clock::now();
        s.client().Get("/api/events?run=1&token=" + kToken, [&](const char* data, std::size_t n) {
            seen.append(data, n);
            return !has(seen, "event: change") &&
                   std::chrono::steady_clock::now() - start < std::chrono::seconds(8);
        });
        writer.join();
        EXPECT_TRUE(has(seen, "event: change\ndata: {\"run\":1"));
    }
}
