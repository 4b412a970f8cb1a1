// Several runs of one row laid on one page.
#include "plot/runs.hpp"

#include <algorithm>
#include <set>
#include <utility>

#include "plot/draw.hpp"

namespace viewer {
namespace {

using Box = std::array<float, 4>;  // x1, x2, y1, y2

// The panel (0-based, in the order the frames are drawn) each call draws
// in; -1 before the first frame.
std::vector<int> panels_of(std::span<const DrawCall> calls) {
    std::vector<int> out;
    out.reserve(calls.size());
    int nx = 1, frames = 0, panel = -1;
    for (const DrawCall& c : calls) {
        if (c.op == DrawCall::pgsubp) nx = std::max(c.i[0], 1);
        if (c.op == DrawCall::pgenv) panel = frames++;
        if (c.op == DrawCall::pgpanl) panel = (c.i[1] - 1) * nx + c.i[0] - 1;
        out.push_back(panel);
    }
    return out;
}

bool draws_points(const DrawCall& c) {
    return c.layer == Layer::data &&
           (((c.op == DrawCall::pgline || c.op == DrawCall::pgpt) && !c.x.empty()) ||
            c.op == DrawCall::pgrect);
}

// Calls that set up a page, a frame or the drawing bracket: a run laid over
// another draws only its curves into the frame already there.
bool frame_call(DrawCall::Op op) {
    switch (op) {
        case DrawCall::pgopen:
        case DrawCall::pgslct:
        case DrawCall::pgclos:
        case DrawCall::pgend:
        case DrawCall::pgask:
        case DrawCall::pgpap:
        case DrawCall::pgenv:
        case DrawCall::pglab:
        case DrawCall::pgbox:
        case DrawCall::pgsvp:
        case DrawCall::pgvsiz:
        case DrawCall::pgsubp:
        case DrawCall::pgpage:
        case DrawCall::pgpanl:
        case DrawCall::pgeras:
        case DrawCall::pgscr:
        case DrawCall::pgbbuf:
        case DrawCall::pgebuf:
        case DrawCall::pgsave:
        case DrawCall::pgunsa:
        case DrawCall::pgupdt:
            return true;
        default:
            return false;
    }
}

// One run's page with what is needed to lay it over the others.
struct View {
    const RunPage& page;
    std::vector<int> panel;  // of each call
    std::vector<Box> frame;  // its own frames
    RunLook look;
};

// A window of the run's own frames, in the frames over all runs: the
// abscissa range of any frame, the ordinate range of any frame.
Box widened(const Box& w, const View& v, std::span<const Box> all) {
    Box out = w;
    for (std::size_t k = 0; k < v.frame.size() && k < all.size(); ++k)
        if (w[0] == v.frame[k][0] && w[1] == v.frame[k][1]) {
            out[0] = all[k][0], out[1] = all[k][1];
            break;
        }
    for (std::size_t k = 0; k < v.frame.size() && k < all.size(); ++k)
        if (w[2] == v.frame[k][2] && w[3] == v.frame[k][3]) {
            out[2] = all[k][2], out[3] = all[k][3];
            break;
        }
    return out;
}

class Layering {
public:
    Layering(Session& s, std::span<const RunPage> runs, const std::string& foot)
        : s_(s), to_(s.pg), foot_(foot), all_(frames_over(runs)) {
        for (std::size_t r = 0; r < runs.size(); ++r) {
            View v{runs[r],
                   panels_of(runs[r].calls),
                   {},
                   run_look(static_cast<int>(r), s.logo.COLOUR, s.win_config.LINE_WIDTH)};
            for (const DrawCall& c : runs[r].calls)
                if (c.op == DrawCall::pgenv) v.frame.push_back({c.f[0], c.f[1], c.f[2], c.f[3]});
            views_.push_back(std::move(v));
        }
    }

    void draw() {
        const View& base = views_.front();
        const auto& calls = base.page.calls;
        bool keyed = false;
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const DrawCall& c = calls[i];
            if (c.layer == Layer::foot && !keyed) keyed = key();
            emit(c, base);
            const bool last = i + 1 == calls.size();
            if (last || calls[i + 1].layer != c.layer || base.panel[i + 1] != base.panel[i])
                lay_over(c.layer, base.panel[i]);
        }
        if (!keyed) key();
        if (layer_ != Layer::data) to_.layer(Layer::data);
    }

private:
    // A call of run `v`, in the frames over all runs and in the run's look.
    void emit(const DrawCall& c, const View& v) {
        const bool curves = c.layer == Layer::data || c.layer == Layer::fit;
        if (c.layer != layer_) to_.layer(layer_ = c.layer);
        switch (c.op) {
            case DrawCall::pgenv: {
                const Box w = frame_window(c, v);
                to_.pgenv(w[0], w[1], w[2], w[3], c.i[0], c.i[1]);
                window_ = w;
                return;
            }
            case DrawCall::pgswin: {
                const Box w = widened({c.f[0], c.f[1], c.f[2], c.f[3]}, v, all_);
                to_.pgswin(w[0], w[1], w[2], w[3]);
                if (&v == &views_.front()) window_ = w;
                return;
            }
            case DrawCall::pgsci:
                to_.pgsci(curves && c.i[0] != 0 ? v.look.colour : c.i[0]);
                return;
            case DrawCall::pgslw:
                to_.pgslw(curves ? v.look.width : c.i[0]);
                return;
            case DrawCall::pgptxt:
                if (c.layer == Layer::foot) return to_.pgptxt(c.f[0], c.f[1], c.f[2], c.f[3], foot_);
                [[fallthrough]];
            default:
                replay(c, to_);
        }
    }

    // The frame of the base run's next panel, over all runs.
    Box frame_window(const DrawCall& c, const View& v) {
        const std::size_t k = frames_drawn_++;
        if (k < all_.size()) return all_[k];
        return widened({c.f[0], c.f[1], c.f[2], c.f[3]}, v, all_);
    }

    // After the first run's curves (or fits) of a panel, those of the others.
    void lay_over(Layer layer, int panel) {
        if ((layer != Layer::data && layer != Layer::fit) || panel < 0) return;
        if (!done_.emplace(layer, panel).second) return;
        for (std::size_t r = 1; r < views_.size(); ++r) {
            const View& v = views_[r];
            bool opened = false, moved = false;
            for (std::size_t i = 0; i < v.page.calls.size(); ++i) {
                const DrawCall& c = v.page.calls[i];
                if (c.layer != layer || v.panel[i] != panel || frame_call(c.op)) continue;
                if (!opened) {
                    to_.pgsave();
                    to_.pgsci(v.look.colour);
                    to_.pgslw(v.look.width);
                    to_.pgsls(1);
                    opened = true;
                }
                moved = moved || c.op == DrawCall::pgswin;
                emit(c, v);
            }
            if (!opened) continue;
            to_.pgunsa();
            if (moved) to_.pgswin(window_[0], window_[1], window_[2], window_[3]);
        }
    }

    // The key of the runs, in the upper left corner.
    bool key() {
        layer_ = Layer::data;  // the key marks its own layer and leaves the data's
        std::vector<std::string> text;
        std::vector<int> num, width;
        for (const View& v : views_) {
            text.push_back(v.page.label);
            num.push_back(s_.logo.COLOUR ? v.look.colour : 1);
            width.push_back(v.look.width);
        }
        legend(s_, text, num, 0.78f, LegendPos::TL, s_.logo.COLOUR ? std::span<const int>{} : width);
        return true;
    }

    Session& s_;
    Graphics& to_;
    const std::string& foot_;
    std::vector<Box> all_;
    std::vector<View> views_;
    std::set<std::pair<Layer, int>> done_;  // laid over already
    std::size_t frames_drawn_ = 0;
    Box window_{0, 1, 0, 1};
    Layer layer_ = Layer::data;  // as last told to the graphics
};

}  // namespace

RunLook run_look(int k, bool colour, int line_width) {
    if (colour) return {1 + k % 15, line_width};
    return {1, line_width * (1 + k % 4)};
}

std::vector<std::array<float, 4>> frames_over(std::span<const RunPage> runs) {
    std::vector<Box> all;
    std::vector<bool> seen;  // a run with points in the panel has widened it
    for (const RunPage& r : runs) {
        const std::vector<int> panel = panels_of(r.calls);
        std::vector<Box> own;
        std::vector<bool> points;
        for (std::size_t i = 0; i < r.calls.size(); ++i) {
            const DrawCall& c = r.calls[i];
            if (c.op == DrawCall::pgenv) {
                own.push_back({c.f[0], c.f[1], c.f[2], c.f[3]});
                points.push_back(false);
            }
            if (draws_points(c) && panel[i] >= 0 && static_cast<std::size_t>(panel[i]) < points.size())
                points[static_cast<std::size_t>(panel[i])] = true;
        }
        for (std::size_t k = 0; k < own.size(); ++k) {
            if (k >= all.size()) {
                all.push_back(own[k]);
                seen.push_back(points[k]);
                continue;
            }
            if (!points[k]) continue;
            if (!seen[k]) {
                all[k] = own[k];
                seen[k] = true;
                continue;
            }
            all[k] = {std::min(all[k][0], own[k][0]), std::max(all[k][1], own[k][1]),
                      std::min(all[k][2], own[k][2]), std::max(all[k][3], own[k][3])};
        }
    }
    return all;
}

void draw_runs(Session& s, std::span<const RunPage> runs, const std::string& foot) {
    if (runs.empty()) return;
    Layering(s, runs, foot).draw();
}

}  // namespace viewer
