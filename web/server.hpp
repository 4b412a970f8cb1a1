// The browser view over HTTP: the page, the rows, runs and particle files
// as JSON, each plot and particle view in every form the export writes, and
// an event each time a run's tables or particle files change. Every request
// carries the token the viewer printed (in the URL the first time, then in a
// cookie); the HTTP threads check, look up and answer, and leave all drawing
// to the renderer.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/study.hpp"
#include "web/renderer.hpp"
#include "web/study_watch.hpp"
#include "web/watch.hpp"

namespace httplib {
class Server;
struct Request;
struct Response;
}  // namespace httplib

namespace viewer::web {

// 128 bits of the system's random source, as 32 hex digits.
std::string new_token();
// Equal, in a time that does not depend on where they differ.
bool same_token(std::string_view a, std::string_view b);

// The last answers drawn, the least recently asked going first.
class AnswerCache {
public:
    explicit AnswerCache(std::size_t capacity = 64) : capacity_(capacity) {}
    std::shared_ptr<const Rendered> find(const std::string& key);
    void put(const std::string& key, std::shared_ptr<const Rendered> r);
    std::size_t size() const;

private:
    using Entry = std::pair<std::string, std::shared_ptr<const Rendered>>;
    std::size_t capacity_;
    mutable std::mutex m_;
    std::list<Entry> order_;  // most recent first
    std::unordered_map<std::string, std::list<Entry>::iterator> index_;
};

// What the list of a run's particle files says of one file.
struct FileSummary {
    double z = 0;  // m, of the reference particle
    long particles = 0, active = 0;
    std::string error;  // why it cannot be read; empty when it can
};

// Each particle file read once for each state of it: the page asks for the
// list on every change while the tracker writes.
class SummaryCache {
public:
    FileSummary of(const std::string& dir, const TableState& f);

private:
    std::mutex m_;
    std::unordered_map<std::string, std::pair<std::string, FileSummary>> kept_;  // by path: state, summary
};

class Server {
public:
    // `graphics` makes the renderer's drawing seam; `poll`: watch the
    // directory by looking once a second, and the study's tree by walking
    // it every few seconds.
    Server(Served served, std::string token, std::function<std::unique_ptr<Graphics>()> graphics,
           bool poll = false);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // Binds to `host`:`port` (0: a free port); false when it cannot.
    bool bind(const std::string& host, int port);
    int port() const { return port_; }
    // Serves until `stop`.
    void run();
    void stop();

    Renderer& renderer() { return renderer_; }
    // Every run under the served directory as now written; the tree is
    // watched from the first time it is asked for.
    std::shared_ptr<const Study> study();
    StudyWatch& tree();
    const AnswerCache& cache() const { return cache_; }

private:
    // The run a request is about: the served project's, or one of the study's (`study=ID`).
    struct Target {
        std::string dir, project;
        int run = 0;
        std::string folder;  // of a run of the study, under the served directory
        std::string arg;     // the export's name of a run of the study, "[DIR/]PROJECT,RUN"
    };
    Target target(const httplib::Request& req);
    // Drawn once for each key; a file that changed since is a new key: never an old answer for new data.
    template <class Query>
    void draw_once(httplib::Response& res, const std::string& key, const Query& q);
    void routes();
    void particle_routes();
    void event_routes();

    Served served_;
    std::string token_;
    std::unique_ptr<httplib::Server> http_;
    Renderer renderer_;
    Watcher watcher_;
    AnswerCache cache_;
    SummaryCache summaries_;
    bool poll_;
    std::mutex tree_m_;
    std::unique_ptr<StudyWatch> tree_;  // made on the first request of the study
    int port_ = 0;
};

}  // namespace viewer::web
