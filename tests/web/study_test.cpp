// The study in the browser view over a generated tree (the bundled project
// at the top, a second project in two folders, one run of it partial): the
// table and every answer against the export's, the refusals, a run the
// optimiser writes appearing on the next request, the particle files of a
// run of the study, and the frame that places the scatter's dots.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "app/startup.hpp"
#include "core/particles.hpp"
#include "tests/web/served.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

struct Tree : Served {
    Tree() {
        run_in(dir, "mesh", "gun", 1);
        run_in(dir, "mesh", "gun", 2);
        run_in(dir, "old/a", "gun", 1, 5);  // stopped early in y: partial
    }
    nlohmann::json study() const { return nlohmann::json::parse(get("/api/study")->body); }
    // The id of the run named as the export names it ("mesh/gun,1").
    int id(const std::string& name) const {
        const nlohmann::json all = study();  // kept: a range over a temporary's member dangles
        for (const auto& r : all["runs"])
            if ((r["folder"] == "." ? "" : r["folder"].get<std::string>() + "/") +
                    r["project"].get<std::string>() + "," + std::to_string(r["run"].get<int>()) ==
                name)
                return r["id"];
        return -1;
    }
};

}  // namespace

TEST(WebStudy, TheTableIsTheExports) {
    Tree s;
    const nlohmann::json listed = s.study();
    const nlohmann::json exp =
        nlohmann::json::parse(exported(s, "--study " + s.dir.path + " --stats e.json", "e.json"))["runs"];
    ASSERT_EQ(listed["runs"].size(), exp.size());
    ASSERT_EQ(exp.size(), 6u);  // rfgun 1 to 3, mesh/gun 1 and 2, old/a/gun 1
    EXPECT_EQ(listed["figures"].size(), study_figures().size());
    for (std::size_t i = 0; i < exp.size(); ++i) {
        const nlohmann::json& r = listed["runs"][i];
        SCOPED_TRACE(r.dump());
        EXPECT_EQ(r["id"], i);
        for (const char* field : {"folder", "project", "run", "state", "records", "figures"})
            EXPECT_EQ(r[field], exp[i][field]) << field;
    }
    std::vector<std::string> names, states;
    for (const auto& r : listed["runs"]) {
        names.push_back(r["name"]);
        states.push_back(r["state"]);
    }
    EXPECT_EQ(names,
              (std::vector<std::string>{"rfgun,1", "rfgun,2", "rfgun,3", "mesh/gun,1", "gun,2", "a/gun,1"}));
    EXPECT_EQ(states[5], "partial");
    EXPECT_EQ(states[3], "complete");
}

TEST(WebStudy, AnswersAreTheExports) {
    Tree s;
    const std::string one = std::to_string(s.id("mesh/gun,1")), two = std::to_string(s.id("mesh/gun,2")),
                      cut = std::to_string(s.id("old/a/gun,1"));
    const std::string study = "--study " + s.dir.path + " --scatter ";
    for (const auto& [path, args, file] :
         std::initializer_list<std::tuple<std::string, std::string, const char*>>{
             {"/api/study/scatter.png?x=NX_EMIT&y=E_MEAN&front=NX_EMIT,-E_MEAN&size=500x400",
              study + "NX_EMIT:E_MEAN --front NX_EMIT,-E_MEAN --size 500x400 --out e.png", "e.png"},
             {"/api/study/scatter.png?x=X_RMS&y=Y_RMS&colour=Z_RMS",
              study + "X_RMS:Y_RMS --colour Z_RMS --out e.png", "e.png"},
             {"/api/plot/1:2.txt?study=" + one, "mesh/gun,1 --plot 1:2 --csv /dev/null", ""},
             {"/api/plot/1:2.csv?study=" + cut, "old/a/gun,1 --plot 1:2 --csv e.csv", "e.csv"},
             {"/api/plot/1:2.png?studies=" + one + "," + two + "," + cut + "&size=600x400",
              "mesh/gun,1 --plot 1:2 --runs mesh/gun,1 mesh/gun,2 old/a/gun,1 --size 600x400 --out e.png",
              "e.png"},
             {"/api/plot/1:2.txt?studies=" + two + "," + one,
              "mesh/gun,2 --plot 1:2 --runs mesh/gun,2 mesh/gun,1 --csv /dev/null", ""},
             {"/api/overview/1.png?study=" + two, "mesh/gun,2 --overview 1 --out e.png", "e.png"},
         }) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        ASSERT_TRUE(r);
        ASSERT_EQ(r->status, 200) << r->body;
        EXPECT_EQ(r->body, exported(s, args, file));
    }
    // The rows a study run offers are its own: the cut run has no .Sigma either, but has its tables.
    const auto rows = nlohmann::json::parse(s.get("/api/rows?study=" + cut)->body);
    EXPECT_EQ(rows["run"], 1);
    EXPECT_TRUE(has(s.get("/api/runs?study=" + one)->body, "\"project\":\"gun\""));
}

TEST(WebStudy, Refusals) {
    Tree s;
    // clang-format off
    const std::tuple<const char*, int, const char*> cases[] = {
        {"/api/study/scatter.png?x=NX_EMIT&y=NOPE", 400, "y takes a figure (Z_MEAN, CLOCK"},
        {"/api/study/scatter.png?x=-NX_EMIT&y=E_MEAN", 400, "x takes a figure"},
        {"/api/study/scatter.png?x=NX_EMIT", 400, "a scatter takes two figures"},
        {"/api/study/scatter.png?x=NX_EMIT&y=E_MEAN&front=NX_EMIT", 400, "front takes two or three"},
        {"/api/study/scatter.png?x=NX_EMIT&y=E_MEAN&front=NX_EMIT,--E_MEAN", 400, "front takes a figure"},
        {"/api/study/scatter.png?x=NX_EMIT&y=E_MEAN&colour=red", 400, "colour takes a figure"},
        {"/api/study/scatter.png?x=NX_EMIT&y=E_MEAN&run=1", 400, "unknown parameter \"run\""},
        {"/api/study/scatter.pdf?x=NX_EMIT&y=E_MEAN", 404, "no such path"},
        {"/api/plot/1:2.png?study=6", 404, "no run 6 in the study: /api/study lists them"},
        {"/api/plot/1:2.png?studies=0,6", 404, "no run 6 in the study"},
        {"/api/rows?study=9", 404, "no run 9 in the study"},
        {"/api/plot/1:2.png?study=..%2Fmesh%2Fgun", 400, "a run of the study is named by its id"},
        {"/api/plot/1:2.png?study=-1", 400, "a run of the study is named by its id"},
        {"/api/plot/1:2.png?studies=1,1", 400, "studies names each run once"},
        {"/api/plot/1:2.png?studies=1,", 400, "named by its id"},
        {"/api/plot/1:2.png?study=1&run=1", 400, "ask with one"},
        {"/api/plot/1:2.png?studies=1,2&runs=1-2", 400, "ask with one"},
        {"/api/plot/1:14.png?studies=1,2", 400, "shows one run"},
        {"/api/plot/1:14.txt?studies=0", 200, "Trajectories"},
    };
    // clang-format on
    for (const auto& [path, status, holds] : cases) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        ASSERT_TRUE(r);
        EXPECT_EQ(r->status, status) << r->body;
        EXPECT_TRUE(has(r->body, holds)) << r->body;
    }
}

TEST(WebStudy, ARunAppearsOnTheNextRequest) {
    Tree s;
    const std::string scatter = "/api/study/scatter.png?x=NX_EMIT&y=Z_RMS";
    ASSERT_EQ(s.get(scatter)->status, 200);
    const std::size_t drawn = s.server->renderer().drawn();
    EXPECT_EQ(s.get(scatter)->status, 200);
    EXPECT_EQ(s.server->renderer().drawn(), drawn);  // the same study: kept

    run_in(s.dir, "mesh", "gun", 3, 0, true);  // the optimiser writes another
    const nlohmann::json runs = s.study()["runs"];
    ASSERT_EQ(runs.size(), 7u);
    EXPECT_EQ(runs[5]["name"], "gun,3");  // no twin elsewhere
    EXPECT_EQ(runs[5]["state"], "growing");
    EXPECT_EQ(runs[5]["figures"], runs[3]["figures"]);  // the same tables as run 1
    const auto r = s.get(scatter);
    EXPECT_EQ(r->status, 200);
    EXPECT_EQ(s.server->renderer().drawn(), drawn + 1);
    EXPECT_EQ(r->body,
              exported(s, "--study " + s.dir.path + " --scatter NX_EMIT:Z_RMS --out e.png", "e.png"));
    EXPECT_EQ(s.get("/api/plot/1:2.txt?study=5")->body,
              exported(s, "mesh/gun,3 --plot 1:2 --csv /dev/null", ""));
}

TEST(WebStudy, ParticleFilesOfARunOfTheStudy) {
    Tree s;
    // Files of one name in two folders, other particles in each; one that cannot be read.
    particles_in(s.dir, "mesh/gun.0200.001", 40, 1.5);
    particles_in(s.dir, "mesh/gun.0300.001", 30, 2.5);
    particles_in(s.dir, "old/a/gun.0200.001", 20, 0.5);
    s.dir.write("mesh/gun.0400.001", "no numbers here\n");
    const std::string mesh = std::to_string(s.id("mesh/gun,1")), old = std::to_string(s.id("old/a/gun,1"));
    for (const auto& [id, folder, names] :
         std::initializer_list<std::tuple<std::string, std::string, std::vector<std::string>>>{
             {mesh, "mesh", {"gun.0200.001", "gun.0300.001", "gun.0400.001"}},
             {old, "old/a", {"gun.0200.001"}}}) {
        SCOPED_TRACE(folder);
        const nlohmann::json files =
            nlohmann::json::parse(s.get("/api/particles?study=" + id)->body)["files"];
        ASSERT_EQ(files.size(), names.size()) << files;
        for (std::size_t i = 0; i < names.size(); ++i) {
            const std::string path = s.dir.file(folder + "/" + names[i]);
            EXPECT_EQ(files[i]["name"], names[i]);
            try {
                const BunchStats st = summarise_particles(path).stats;
                EXPECT_DOUBLE_EQ(files[i]["z"].get<double>(), st.z_ref);
                EXPECT_EQ(files[i]["active"].get<long>(), st.counts.active);
            } catch (const ParticleError& e) {
                EXPECT_EQ(files[i]["error"], names[i] + std::string(e.what()).substr(path.size()));
            }
        }
    }
    for (const auto& [path, args, file] :
         std::initializer_list<std::tuple<std::string, std::string, const char*>>{
             {"/api/particles/1.txt?study=" + mesh, "mesh/gun,1 --particles 0300", ""},
             {"/api/particles/0.png?study=" + old + "&plane=z:dE&size=400x300",
              "old/a/gun,1 --particles 0200 --plane z:dE --size 400x300 --out e.png", "e.png"},
             {"/api/particles/0.csv?study=" + mesh + "&slices=5",
              "mesh/gun,1 --particles mesh/gun.0200.001 --slices 5 --csv e.csv", "e.csv"},
         }) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        ASSERT_EQ(r->status, 200) << r->body;
        EXPECT_EQ(r->body, exported(s, args, file));
    }
    // clang-format off
    const std::tuple<std::string, int, std::string> refused[] = {
        {"/api/particles/3.txt?study=" + mesh, 404, "no particle file 3 in mesh/gun,001: /api/particles?study=" + mesh + " lists them"},
        {"/api/particles/2.txt?study=" + mesh, 500, "gun.0400.001"},
        {"/api/particles?study=9", 404, "no run 9 in the study"},
        {"/api/particles/0.txt?study=" + mesh + "&run=1", 400, "run and study each name the run"},
        {"/api/particles?study=" + mesh + "&run=1", 400, "run and study each name the run"},
    };
    // clang-format on
    for (const auto& [path, status, holds] : refused) {
        SCOPED_TRACE(path);
        const auto r = s.get(path);
        EXPECT_EQ(r->status, status);
        EXPECT_TRUE(has(r->body, holds)) << r->body;
    }
}

// The page finds the run under a click from the scatter's frame and the figures of /api/study.
TEST(WebStudy, TheScatterSaysWhereItsRunsAre) {
    Tree s;
    for (const auto& [x, y] : {std::pair{"NX_EMIT", "X_RMS"}, std::pair{"NY_EMIT", "NX_EMIT"}}) {
        SCOPED_TRACE(x + std::string(":") + y);
        const auto r = s.get(std::string("/api/study/scatter.png?size=640x480&x=") + x + "&y=" + y);
        ASSERT_EQ(r->status, 200);
        const nlohmann::json panels = nlohmann::json::parse(r->get_header_value("X-Viewer-Frame"))["panels"];
        ASSERT_EQ(panels.size(), 1u);
        // the window: the figures' range and a twentieth of it more on each side, as drawn
        float lo[2] = {INFINITY, INFINITY}, hi[2] = {-INFINITY, -INFINITY};
        const nlohmann::json all = s.study();
        for (const auto& run : all["runs"])
            for (const auto& [name, v] : run["figures"].items())
                for (int k = 0; k < 2; ++k)
                    if (name.starts_with(std::string(k ? y : x) + " ") && !v.is_null()) {
                        lo[k] = std::min(lo[k], v.get<float>());
                        hi[k] = std::max(hi[k], v.get<float>());
                    }
        for (int k = 0; k < 2; ++k) {
            const float margin = 0.05f * (hi[k] - lo[k]);
            EXPECT_FLOAT_EQ(panels[0]["window"][2 * k].get<float>(), lo[k] - margin);
            EXPECT_FLOAT_EQ(panels[0]["window"][2 * k + 1].get<float>(), hi[k] + margin);
        }
        // the viewport in the image, counted from its upper left corner
        const auto vp = panels[0]["viewport"].get<std::vector<float>>();
        EXPECT_TRUE(0 < vp[0] && vp[0] < vp[1] && vp[1] < 640 && 0 < vp[2] && vp[2] < vp[3] && vp[3] < 480);
    }
}
