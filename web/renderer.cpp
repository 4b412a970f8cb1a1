// The renderer thread and one pass of the export for a request.
#include "web/renderer.hpp"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <type_traits>

#include "app/export.hpp"
#include "app/export_files.hpp"
#include "app/startup.hpp"
#include "plot/capture.hpp"

namespace viewer::web {
namespace {

// Each panel's viewport in the pixels of the image, counted from its upper
// left corner as a page counts them (the device counts rows from the
// bottom), and its world window.
std::string frames_json(const std::vector<DeviceFrame>& frames) {
    nlohmann::ordered_json j = {{"panels", nlohmann::json::array()}};
    for (const DeviceFrame& f : frames) {
        const float top = f.surface[3];  // the device's top row
        j["panels"].push_back(
            {{"viewport", {f.viewport[0], f.viewport[1], top - f.viewport[3], top - f.viewport[2]}},
             {"window", {f.window[0], f.window[1], f.window[2], f.window[3]}}});
    }
    return j.dump();
}

}  // namespace

std::string make_scratch_dir() {
    std::string t = (std::filesystem::temp_directory_path() / "viewer-serve-XXXXXX").string();
    if (!::mkdtemp(t.data())) throw std::runtime_error("cannot make a private directory like " + t);
    return t;
}

void remove_scratch_dir(const std::string& dir) {
    std::error_code ec;
    std::filesystem::remove_all(dir, ec);
}

Renderer::Renderer(Served served, std::function<std::unique_ptr<Graphics>()> graphics)
    : served_(std::move(served)),
      make_graphics_(std::move(graphics)),
      scratch_(make_scratch_dir()),
      thread_([this] { loop(); }) {}

Renderer::~Renderer() {
    {
        std::lock_guard lock(m_);
        stopping_ = true;
    }
    cv_.notify_all();
    thread_.join();
    remove_scratch_dir(scratch_);
}

Rendered Renderer::render(const PlotQuery& q, std::chrono::milliseconds wait) {
    return queue(q, wait);
}

Rendered Renderer::render(const ParticleQuery& q, std::chrono::milliseconds wait) {
    return queue(q, wait);
}

Rendered Renderer::render(const StudyQuery& q, std::chrono::milliseconds wait) {
    return queue(q, wait);
}

Rendered Renderer::queue(Query q, std::chrono::milliseconds wait) {
    auto job = std::make_shared<Job>();
    job->q = std::move(q);
    std::future<Rendered> answer = job->done.get_future();
    {
        std::lock_guard lock(m_);
        if (stopping_) return {503, "text/plain; charset=utf-8", "the server is stopping\n", {}, {}};
        jobs_.push_back(job);
    }
    cv_.notify_one();
    if (answer.wait_for(wait) == std::future_status::ready) return answer.get();
    std::lock_guard lock(m_);
    job->abandoned = true;
    return {503, "text/plain; charset=utf-8", "the plot waited too long to be drawn; ask again\n", {}, {}};
}

std::size_t Renderer::drawn() const {
    std::lock_guard lock(m_);
    return drawn_;
}

void Renderer::loop() {
    graphics_ = make_graphics_();
    for (;;) {
        std::shared_ptr<Job> job;
        {
            std::unique_lock lock(m_);
            cv_.wait(lock, [&] { return stopping_ || !jobs_.empty(); });
            if (stopping_) break;
            job = jobs_.front();
            jobs_.pop_front();
            if (job->abandoned) continue;
        }
        Rendered r;
        try {
            r = draw(job->q);
        } catch (const std::exception& e) {
            r = {500, "text/plain; charset=utf-8", std::string("drawing failed: ") + e.what() + "\n", {}, {}};
        }
        {
            std::lock_guard lock(m_);
            ++drawn_;
        }
        job->done.set_value(std::move(r));
    }
    for (auto& job : jobs_)
        job->done.set_value({503, "text/plain; charset=utf-8", "the server is stopping\n", {}, {}});
    if (graphics_) graphics_->pgend();
}

Rendered Renderer::draw(const Query& query) {
    if (const auto* v = std::get_if<StudyQuery>(&query)) return draw_scatter(*v);
    const SharedOptions& q = *std::visit(
        [](const auto& v) -> const SharedOptions* {
            if constexpr (std::is_base_of_v<SharedOptions, std::decay_t<decltype(v)>>) return &v;
            return nullptr;
        },
        query);
    ExportRequest r;
    const int run = q.run >= 0 ? q.run : served_.run;
    r.arg = q.arg.empty() ? served_.project + "," + run_digits(run) : q.arg;
    r.has_arg = true;
    r.window_config = false;  // the directory's own look file is not the server's to read
    if (const auto* p = std::get_if<PlotQuery>(&query)) {
        if (p->overview)
            r.overview = p->page;
        else
            r.plots = {{p->page, p->row}};
        r.fit = p->fit;
        r.geometry = p->geometry;
        r.runs = p->runs;
    } else {
        const auto& v = std::get<ParticleQuery>(query);
        r.particles = v.file;  // a path in the served directory
        if (!v.plane.empty()) r.planes = {v.plane};
        r.slices = v.slices;
        r.slice_z = v.slice_z;
        r.along = v.along;
        r.sheet = v.sheet;
        r.lost = v.lost;
        r.window = v.window;
        r.window_x1 = v.window_x1;
        r.window_x2 = v.window_x2;
        r.window_y1 = v.window_y1;
        r.window_y2 = v.window_y2;
    }
    const std::string stem = scratch_ + "/answer";
    std::string file;
    switch (q.answer) {
        case Answer::png:
            r.format = OutFormat::png;
            r.out = file = stem + ".png";
            r.width = q.width;
            r.height = q.height;
            break;
        case Answer::ps:
            r.format = OutFormat::ps;
            r.out = file = stem + ".ps";
            break;
        case Answer::pdf:
            r.format = OutFormat::pdf;
            r.out = file = stem + ".pdf";
            break;
        case Answer::csv:
            r.csv = file = stem + ".csv";
            break;
        case Answer::json:
            r.stats = file = stem + ".json";
            break;
        case Answer::txt:
            break;
    }
    r.zoom = q.zoom;
    r.zoom_low = q.zoom_low;
    r.zoom_high = q.zoom_high;
    r.bins = q.bins;
    r.mono = q.mono;

    return pass(r, file, q.answer);
}

Rendered Renderer::draw_scatter(const StudyQuery& q) {
    ExportRequest r;
    r.window_config = false;
    r.study = true;
    r.study_dirs = {served_.dir};
    r.scatter_x = q.x;
    r.scatter_y = q.y;
    r.front = q.front;
    r.colour_by = q.colour;
    r.format = OutFormat::png;
    r.out = scratch_ + "/answer.png";
    r.width = q.width;
    r.height = q.height;
    return pass(r, r.out, Answer::png);
}

Rendered Renderer::pass(const ExportRequest& r, const std::string& file, Answer answer) {
    Capture capture(graphics_.get());
    capture.keep_frames(answer == Answer::png);
    NoPointer pointer;
    std::istringstream in;
    std::ostringstream out, err;
    Session s(capture, pointer, in, out, served_.dir);
    const int status = run_export(s, capture, r, served_.now, err);
    Rendered a;
    a.text = out.str();
    a.frame = frames_json(capture.take_frames());
    if (status != 0) {
        std::string why = err.str();
        if (why.starts_with("viewer: ")) why.erase(0, 8);
        std::error_code ec;
        if (!file.empty()) std::filesystem::remove(file, ec);
        // A row, run or file the directory cannot serve is not found; a table
        // that cannot be read is the server's failure.
        const bool missing = status == 2 || why.starts_with("no data files") || why.starts_with("no run") ||
                             why.starts_with("no particle file");
        return {missing ? 404 : 500, "text/plain; charset=utf-8", why, a.text, {}};
    }
    a.type = content_type(answer);
    a.body = file.empty() ? a.text : read_file(file);
    std::error_code ec;
    if (!file.empty()) std::filesystem::remove(file, ec);
    return a;
}

}  // namespace viewer::web
