// Routes of the browser view over a run's files as they change: the list of
// particle files with what each holds, their views, and the streams of
// events that tell a page its run or the study changed.
#include <chrono>
#include <functional>
#include <optional>
#include <thread>

#include "app/startup.hpp"
#include "web/routes.hpp"
#include "web/study.hpp"

namespace viewer::web {
namespace {

// What a stream of events waits on and tells.
struct Feed {
    std::function<std::uint64_t(std::uint64_t seen)> wait;  // until past `seen`, or a while
    std::function<std::uint64_t()> count;
    std::function<std::optional<json>()> event;  // none: nothing the page wants to hear of
};

void stream(httplib::Server& http, httplib::Response& res, Feed feed) {
    struct State {
        Feed feed;
        std::uint64_t seen;
        std::chrono::steady_clock::time_point last{};
    };
    auto st = std::make_shared<State>(State{std::move(feed), 0});
    st->seen = st->feed.count();
    res.set_chunked_content_provider("text/event-stream", [&http, st](std::size_t, httplib::DataSink& sink) {
        const std::uint64_t n = st->feed.wait(st->seen);
        if (!http.is_running()) {
            sink.done();
            return true;
        }
        if (n != st->seen) {
            // At most two events a second: what changes meanwhile goes into the next.
            std::this_thread::sleep_until(st->last + std::chrono::milliseconds(500));
            st->seen = st->feed.count();
            st->last = std::chrono::steady_clock::now();
            if (const auto j = st->feed.event()) {
                const std::string event = "event: change\ndata: " + j->dump() + "\n\n";
                return sink.write(event.data(), event.size());
            }
        }
        return sink.write(": still here\n\n", 14);  // finds a page that left
    });
}

constexpr auto kStillHere = std::chrono::seconds(10);

}  // namespace

void Server::particle_routes() {
    httplib::Server& h = *http_;
    h.Get("/api/particles", [this](const httplib::Request& req, httplib::Response& res) {
        const Target t = target(req);
        json files = json::array();
        for (const TableState& f : particles_of(t.dir, t.project, t.run)) {
            const FileSummary sum = summaries_.of(t.dir, f);
            json j = {{"id", files.size()}, {"name", f.file}};
            if (sum.error.empty())
                j.update({{"z", sum.z}, {"particles", sum.particles}, {"active", sum.active}});
            else
                j["error"] = sum.error;
            j.update({{"size", f.size}, {"modified", static_cast<double>(f.modified_ns) / 1e9}});
            files.push_back(j);
        }
        res.set_content(json({{"run", t.run}, {"files", files}}).dump(), "application/json");
    });

    h.Get(R"(/api/particles/.*)", [this](const httplib::Request& req, httplib::Response& res) {
        ParticleQuery q = parse_particle_query(req.path, params_of(req));
        const Target t = target(req);
        q.run = t.run;
        q.arg = t.arg;
        // The id is a place in the run's list, never a path: nothing else is served.
        const auto files = particles_of(t.dir, t.project, t.run);
        if (static_cast<std::size_t>(q.id) >= files.size()) {
            const std::string list =
                q.study >= 0 ? "study=" + std::to_string(q.study) : "run=" + std::to_string(t.run);
            throw QueryError(404, "no particle file " + std::to_string(q.id) + " in " +
                                      (t.arg.empty() ? "run " + run_digits(t.run) : t.arg) +
                                      ": /api/particles?" + list + " lists them");
        }
        // The export reads it by its path in the served directory.
        q.file = (t.folder.empty() || t.folder == "." ? "" : t.folder + "/") + files[q.id].file;
        draw_once(res, q.key() + "#" + states({files[q.id]}), q);
    });
}

void Server::event_routes() {
    httplib::Server& h = *http_;
    // A run's tables or particle files changed: the served project's (`run=N`) or one of the study's.
    h.Get("/api/events", [this](const httplib::Request& req, httplib::Response& res) {
        const Target t = target(req);  // the stream follows this run, though ids move as runs appear
        if (t.folder.empty()) {
            const int run = t.run;
            return stream(*http_, res,
                          {[this, run](std::uint64_t seen) { return watcher_.wait(run, seen, kStillHere); },
                           [this, run] { return watcher_.changes(run); },
                           [this, run]() -> std::optional<json> {
                               return json{
                                   {"run", run},
                                   {"tables", tables_json(tables_of(served_.dir, served_.project, run))}};
                           }});
        }
        // Anything in the run's folder wakes the stream; the run's own files say whether it changed.
        const auto now = [t] {
            return signature(t.dir, t.project, {t.run}, false) +
                   states(particles_of(t.dir, t.project, t.run));
        };
        const int id = study_id(req.get_param_value("study"));
        StudyWatch& tree = this->tree();
        stream(*http_, res,
               {[&tree, t](std::uint64_t seen) { return tree.wait(t.folder, seen, kStillHere); },
                [&tree, t] { return tree.touches(t.folder); },
                [t, id, now, last = now()]() mutable -> std::optional<json> {
                    std::string sig = now();
                    if (sig == last) return std::nullopt;
                    last = std::move(sig);
                    return json{{"study", id},
                                {"run", t.run},
                                {"tables", tables_json(tables_of(t.dir, t.project, t.run))}};
                }});
    });

    // The study changed: a run appeared or went, or its figures or state changed.
    h.Get("/api/study/events", [this](const httplib::Request&, httplib::Response& res) {
        StudyWatch& tree = this->tree();
        stream(*http_, res,
               {[&tree](std::uint64_t seen) { return tree.wait("", seen, kStillHere); },
                [&tree] { return tree.changes(); },
                [&tree]() -> std::optional<json> {
                    return json{{"changes", tree.changes()}, {"runs", tree.study()->runs.size()}};
                }});
    });
}

}  // namespace viewer::web
