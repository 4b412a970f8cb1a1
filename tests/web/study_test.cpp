// The study in the browser view over a generated tree (the bundled project
// at the top, a second project in two folders, one run of it partial): the
// table and every answer against the export's, the refusals, and a run the
// optimiser writes appearing on the next request.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "app/startup.hpp"
#include "tests/web/served.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

// The first `lines` lines of `text`; all of it when 0.
std::string head(const std::string& text, int lines) {
    std::size_t at = 0;
    for (int i = 0; lines > 0 && i < lines && at != std::string::npos; ++i) at = text.find('\n', at + 1);
    return lines > 0 && at != std::string::npos ? text.substr(0, at + 1) : text;
}

// Run `run` of `project` in `folder`: the bundled run 1's beam tables, the
// y table cut to `y_lines` lines (0: whole); written an hour ago unless `now`.
void run_in(const Served& s, const std::string& folder, const std::string& project, int run, int y_lines = 0,
            bool now = false) {
    fs::create_directories(s.dir.path + "/" + folder);
    for (const char* kind : {"Xemit", "Yemit", "Zemit"}) {
        const std::string name = folder + "/" + project + "." + kind + "." + run_digits(run);
        const std::string text = s.dir.read(std::string("rfgun.") + kind + ".001");
        s.dir.write(name, kind == std::string("Yemit") ? head(text, y_lines) : text);
        if (!now)
            fs::last_write_time(s.dir.file(name), fs::file_time_type::clock::now() - std::chrono::hours(1));
    }
}

struct Tree : Served {
    Tree() {
        run_in(*this, "mesh", "gun", 1);
        run_in(*this, "mesh", "gun", 2);
        run_in(*this, "old/a", "gun", 1, 5);  // stopped early in y: partial
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

    run_in(s, "mesh", "gun", 3, 0, true);  // the optimiser writes another
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
