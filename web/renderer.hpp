// The one thread that draws. PGPLOT keeps one state for the whole process,
// so every plot of the browser view is drawn here, one request after the
// other, through the export's own pass over a session of the thread's; the
// HTTP threads only queue requests and wait for the answer.
#pragma once

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <variant>

#include "core/graphics.hpp"
#include "web/query.hpp"

namespace viewer::web {

// What the server shows: a project and its run, in a directory.
struct Served {
    std::string dir;      // the run directory
    std::string project;  // blank-free stem
    int run = 1;          // the run of the command line
    std::tm now{};        // the date of the page foot, taken at start
    bool study = false;   // runs of several projects or folders: the page opens on the study
};

// One answer as drawn.
struct Rendered {
    int status = 200;  // 404: the run cannot draw it; 503: waited too long
    std::string type;  // content type
    std::string body;
    std::string text;   // the console text of the pass
    std::string frame;  // JSON: the image's size and each panel's viewport and window
};

class Renderer {
public:
    // `graphics` makes the drawing seam on the renderer thread (the real
    // library; a test's stand-in).
    Renderer(Served served, std::function<std::unique_ptr<Graphics>()> graphics);
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    // Queues `q` and waits for it; a request still waiting after `wait`
    // gets 503 and is dropped from the queue.
    Rendered render(const PlotQuery& q, std::chrono::milliseconds wait = std::chrono::seconds(30));
    Rendered render(const ParticleQuery& q, std::chrono::milliseconds wait = std::chrono::seconds(30));
    Rendered render(const StudyQuery& q, std::chrono::milliseconds wait = std::chrono::seconds(30));

    std::size_t drawn() const;  // passes drawn so far

private:
    using Query = std::variant<PlotQuery, ParticleQuery, StudyQuery>;
    struct Job {
        Query q;
        std::promise<Rendered> done;
        bool abandoned = false;  // under the mutex
    };
    Rendered queue(Query q, std::chrono::milliseconds wait);
    void loop();
    Rendered draw(const Query& query);
    Rendered draw_scatter(const StudyQuery& q);
    // One pass of the export into `file` (empty: its console text).
    Rendered pass(const ExportRequest& r, const std::string& file, Answer answer);

    Served served_;
    std::function<std::unique_ptr<Graphics>()> make_graphics_;
    std::unique_ptr<Graphics> graphics_;  // made and used on the thread only
    std::string scratch_;                 // a private directory of the thread's files
    mutable std::mutex m_;
    std::condition_variable cv_;
    std::deque<std::shared_ptr<Job>> jobs_;
    bool stopping_ = false;
    std::size_t drawn_ = 0;
    std::thread thread_;  // last: starts once the rest is made
};

// A private directory under the system's temporary one, removed with its files.
std::string make_scratch_dir();
void remove_scratch_dir(const std::string& dir);

}  // namespace viewer::web
