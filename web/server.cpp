// Routes of the browser view, its door and its cache.
#include "web/server.hpp"

#include <httplib.h>
#include <sys/random.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "core/particles.hpp"
#include "web/assets.hpp"
#include "web/routes.hpp"
#include "web/study.hpp"

namespace viewer::web {
namespace {

constexpr const char* kText = "text/plain; charset=utf-8";

// The value of cookie `name` in a Cookie header ("a=1; b=2").
std::string cookie(const std::string& header, const std::string& name) {
    std::string_view rest = header;
    while (!rest.empty()) {
        const auto end = rest.find(';');
        std::string_view pair = rest.substr(0, end);
        while (!pair.empty() && pair.front() == ' ') pair.remove_prefix(1);
        if (pair.starts_with(name) && pair.size() > name.size() && pair[name.size()] == '=')
            return std::string(pair.substr(name.size() + 1));
        rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
    }
    return {};
}

}  // namespace

Params params_of(const httplib::Request& req) {
    return {req.params.begin(), req.params.end()};
}

int run_of(const httplib::Request& req, int served) {
    return req.has_param("run") ? parse_run(req.get_param_value("run")) : served;
}

void answer(httplib::Response& res, const Rendered& r) {
    res.status = r.status;
    res.set_content(r.body, r.type);
    if (!r.frame.empty() && r.frame.find("\"panels\":[]") == std::string::npos)
        res.set_header("X-Viewer-Frame", r.frame);
}

json tables_json(const std::vector<TableState>& tables) {
    json out = json::array();
    for (const TableState& t : tables)
        out.push_back({{"kind", t.kind},
                       {"file", t.file},
                       {"size", t.size},
                       {"modified", static_cast<double>(t.modified_ns) / 1e9}});
    return out;
}

const StudyRun& study_run(const Study& s, int id) {
    if (static_cast<std::size_t>(id) >= s.runs.size())
        throw QueryError(404, "no run " + std::to_string(id) + " in the study: /api/study lists them");
    return s.runs[static_cast<std::size_t>(id)];
}

std::string new_token() {
    unsigned char bytes[16];
    std::size_t got = 0;
    while (got < sizeof bytes) {
        const ssize_t n = ::getrandom(bytes + got, sizeof bytes - got, 0);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) throw std::runtime_error("no random numbers from the system for the token");
        got += static_cast<std::size_t>(n);
    }
    static constexpr char kHex[] = "0123456789abcdef";
    std::string t;
    for (unsigned char b : bytes) t += {kHex[b >> 4], kHex[b & 15]};
    return t;
}

bool same_token(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    unsigned char diff = 0;
    for (std::size_t i = 0; i < a.size(); ++i) diff |= static_cast<unsigned char>(a[i] ^ b[i]);
    return diff == 0;
}

std::shared_ptr<const Rendered> AnswerCache::find(const std::string& key) {
    std::lock_guard lock(m_);
    const auto at = index_.find(key);
    if (at == index_.end()) return nullptr;
    order_.splice(order_.begin(), order_, at->second);
    return at->second->second;
}

void AnswerCache::put(const std::string& key, std::shared_ptr<const Rendered> r) {
    std::lock_guard lock(m_);
    if (const auto at = index_.find(key); at != index_.end()) {
        at->second->second = std::move(r);
        order_.splice(order_.begin(), order_, at->second);
        return;
    }
    order_.emplace_front(key, std::move(r));
    index_[key] = order_.begin();
    if (order_.size() > capacity_) {
        index_.erase(order_.back().first);
        order_.pop_back();
    }
}

std::size_t AnswerCache::size() const {
    std::lock_guard lock(m_);
    return order_.size();
}

FileSummary SummaryCache::of(const std::string& dir, const TableState& f) {
    const std::string state = states({f});
    const std::string path = dir + "/" + f.file;  // runs of a study in other folders name theirs alike
    {
        std::lock_guard lock(m_);
        if (const auto at = kept_.find(path); at != kept_.end() && at->second.first == state)
            return at->second.second;
    }
    FileSummary sum;
    try {
        const BunchStats st = summarise_particles(path).stats;
        sum = {st.z_ref, st.counts.total, st.counts.active, {}};
    } catch (const std::exception& e) {
        sum.error = e.what();
        if (sum.error.starts_with(path)) sum.error.replace(0, path.size(), f.file);  // the page knows where
    }
    std::lock_guard lock(m_);
    kept_[path] = {state, sum};
    return sum;
}

Server::Server(Served served, std::string token, std::function<std::unique_ptr<Graphics>()> graphics,
               bool poll)
    : served_(std::move(served)),
      token_(std::move(token)),
      http_(std::make_unique<httplib::Server>()),
      renderer_(served_, std::move(graphics)),
      watcher_(served_.dir, served_.project, poll),
      poll_(poll) {
    // Each open page holds a thread for its events; more threads than cores.
    http_->new_task_queue = [] { return new httplib::ThreadPool(64); };
    // A port another server listens on is refused, not shared.
    http_->set_socket_options([](socket_t sock) {
        const int yes = 1;
        ::setsockopt(sock, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    routes();
}

Server::~Server() {
    stop();
}

bool Server::bind(const std::string& host, int port) {
    if (port == 0) {
        port_ = http_->bind_to_any_port(host);
        return port_ > 0;
    }
    port_ = port;
    return http_->bind_to_port(host, port);
}

void Server::run() {
    http_->listen_after_bind();
}

void Server::stop() {
    watcher_.stop();
    {
        std::lock_guard lock(tree_m_);
        if (tree_) tree_->stop();
    }
    http_->stop();
}

StudyWatch& Server::tree() {
    std::lock_guard lock(tree_m_);
    if (!tree_) tree_ = std::make_unique<StudyWatch>(served_.dir, poll_);
    return *tree_;
}

std::shared_ptr<const Study> Server::study() {
    return tree().study();
}

Server::Target Server::target(const httplib::Request& req) {
    if (!req.has_param("study")) return {served_.dir, served_.project, run_of(req, served_.run), {}, {}};
    if (req.has_param("run")) throw QueryError(400, "run and study each name the run: ask with one");
    const StudyRun& r = study_run(*study(), study_id(req.get_param_value("study")));  // kept by the watch
    return {r.dir(), r.project, r.run, r.folder, item_of(r) + "," + run_digits(r.run)};
}

void Server::routes() {
    httplib::Server& h = *http_;
    h.set_default_headers({{"Content-Security-Policy", "default-src 'self'"},
                           {"X-Content-Type-Options", "nosniff"},
                           {"Cache-Control", "no-cache"}});
    // The door: the token in the URL, then in the cookie it gives.
    h.set_pre_routing_handler([this](const httplib::Request& req, httplib::Response& res) {
        const std::string name = "viewer_token_" + std::to_string(port_);
        if (req.has_param("token") && same_token(req.get_param_value("token"), token_)) {
            res.set_header("Set-Cookie", name + "=" + token_ + "; Path=/; HttpOnly; SameSite=Strict");
            return httplib::Server::HandlerResponse::Unhandled;
        }
        if (same_token(cookie(req.get_header_value("Cookie"), name), token_))
            return httplib::Server::HandlerResponse::Unhandled;
        res.status = 403;
        res.set_content("forbidden: open the URL the viewer printed, with its token\n", kText);
        return httplib::Server::HandlerResponse::Handled;
    });
    h.set_error_handler([](const httplib::Request& req, httplib::Response& res) {
        if (res.body.empty()) res.set_content("not found: " + req.path + "\n", kText);
    });
    h.set_exception_handler([](const httplib::Request&, httplib::Response& res, std::exception_ptr e) {
        try {
            std::rethrow_exception(e);
        } catch (const QueryError& q) {
            res.status = q.status;
            res.set_content(std::string(q.what()) + "\n", kText);
        } catch (const std::exception& x) {
            res.status = 500;
            res.set_content(std::string(x.what()) + "\n", kText);
        }
    });

    for (const Asset& a : assets())
        h.Get(a.path, [&a](const httplib::Request&, httplib::Response& res) {
            res.set_content(std::string(a.body), a.type);
        });

    h.Get("/api/runs", [this](const httplib::Request& req, httplib::Response& res) {
        const Target t = target(req);
        const json j = {{"project", t.project},
                        {"served", req.has_param("study") ? t.run : served_.run},
                        {"run", t.run},
                        {"runs", runs_in_directory(t.dir, t.project)},
                        {"tables", tables_json(tables_of(t.dir, t.project, t.run))},
                        {"study", served_.study}};
        res.set_content(j.dump(), "application/json");
    });

    h.Get("/api/study", [this](const httplib::Request&, httplib::Response& res) {
        res.set_content(study_listing(*study()), "application/json");
    });

    h.Get("/api/rows", [this](const httplib::Request& req, httplib::Response& res) {
        const Target t = target(req);
        const int run = t.run;
        const Fexist f = tables_present(t.dir, t.project, "." + run_digits(run));
        json pages = json::array();
        for (int page = 1; page <= 5; ++page) {
            json rows = json::array();
            for (int code = 1; code <= 41; ++code) {
                const MenuRow* r = find_row(page, code);
                if (!r || !r->plot || !r->shown) continue;
                const bool ok = available(*r, f);
                json row = {{"page", page},
                            {"row", code},
                            {"text", spoken(menu_text(*r, f))},
                            {"available", ok},
                            {"runs", along_z(page, code)}};
                if (!ok) row["needs"] = r->shown->needs;
                rows.push_back(row);
            }
            pages.push_back({{"page", page}, {"rows", rows}});
        }
        res.set_content(json({{"run", run}, {"pages", pages}}).dump(), "application/json");
    });

    const auto plot = [this](const httplib::Request& req, httplib::Response& res) {
        PlotQuery q = parse_plot_query(req.path, params_of(req));
        if (q.study >= 0 || !q.studies.empty()) {
            // Ids, never paths: the study's own runs under the served directory.
            const auto kept = study();
            const Study& st = *kept;
            std::string sig;
            const auto take = [&](int id) {
                const StudyRun& r = study_run(st, id);
                sig += signature(r.dir(), r.project, {r.run}, q.geometry);
                return RunList::Item{item_of(r), r.run};
            };
            if (q.studies.size() == 1) {  // one run: any row, not only those along z
                q.study = q.studies[0];
                q.studies.clear();
            }
            if (q.study >= 0) {
                const RunList::Item one = take(q.study);
                q.arg = one.project + "," + run_digits(one.run);
            }
            if (!q.studies.empty()) {
                q.runs = RunList{};
                for (int id : q.studies) q.runs->items.push_back(take(id));
                if (q.arg.empty()) q.arg = q.runs->items[0].project + "," + run_digits(q.runs->items[0].run);
            }
            return draw_once(res, q.key() + "#" + sig, q);
        }
        if (q.run < 0) q.run = served_.run;
        std::vector<int> runs = {q.run};
        if (q.runs) runs = q.runs->all ? runs_in_directory(served_.dir, served_.project) : q.runs->runs;
        draw_once(res, q.key() + "#" + signature(served_.dir, served_.project, runs, q.geometry), q);
    };
    h.Get(R"(/api/plot/.*)", plot);
    h.Get(R"(/api/overview/.*)", plot);

    event_routes();  // before the scatter's, whose path would take /api/study/events
    h.Get(R"(/api/study/.*)", [this](const httplib::Request& req, httplib::Response& res) {
        const StudyQuery q = parse_study_query(req.path, params_of(req));
        study();  // what inotify told of is taken in: the count below is that of the study now
        draw_once(res, q.key() + "#" + std::to_string(tree().changes()), q);
    });
    particle_routes();
}

}  // namespace viewer::web
