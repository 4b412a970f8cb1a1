// The recording stand-in for PGPLOT and the scripted pointer.
#include "tests/support/recording_graphics.hpp"

#include <algorithm>

namespace viewer {

void RecordingGraphics::add(std::string name, std::vector<double> args, std::vector<std::string> texts) {
    calls.push_back({std::move(name), std::move(args), std::move(texts), {}, {}, selected, layer_});
}

std::vector<const GraphicsCall*> RecordingGraphics::named_on(const std::string& name, int device) const {
    std::vector<const GraphicsCall*> out;
    for (const auto& c : calls)
        if (c.name == name && (device < 0 || c.device == device)) out.push_back(&c);
    return out;
}

int RecordingGraphics::pgopen(const std::string& d) {
    opened.push_back(d);
    bool refused = std::find(refuse_open.begin(), refuse_open.end(), d) != refuse_open.end();
    int id = refused ? 0 : next_id_++;
    add("pgopen", {double(id)}, {d});
    if (id > 0) selected = id;
    return id;
}
void RecordingGraphics::pgslct(int id) {
    selected = id;
    add("pgslct", {double(id)});
}
void RecordingGraphics::pgclos() {
    add("pgclos", {});
    selected = 0;
}
void RecordingGraphics::pgend() {
    add("pgend", {});
    ended = true;
    selected = 0;
}
void RecordingGraphics::pgenv(float a, float b, float c, float d, int j, int ax) {
    win_ = {a, b, c, d};
    add("pgenv", {a, b, c, d, double(j), double(ax)});
}
void RecordingGraphics::pgswin(float a, float b, float c, float d) {
    win_ = {a, b, c, d};
    add("pgswin", {a, b, c, d});
}
void RecordingGraphics::pgsvp(float a, float b, float c, float d) {
    vp_ = {a, b, c, d};
    add("pgsvp", {a, b, c, d});
}
void RecordingGraphics::add_points(std::string name, std::vector<double> args, int n, const float* x,
                                   const float* y) {
    add(std::move(name), std::move(args));
    if (n > 0) {
        calls.back().xs.assign(x, x + n);
        calls.back().ys.assign(y, y + n);
    }
}
void RecordingGraphics::pgqvp(int u, float& a, float& b, float& c, float& d) {
    // Inches on an 8 by 5.66 inch surface, as the plot window has.
    const float s = (u == 1) ? 8.0f : 1.0f;
    a = vp_[0] * s, b = vp_[1] * s, c = vp_[2] * s, d = vp_[3] * s;
    add("pgqvp", {double(u)});
}
void RecordingGraphics::pgqvsz(int u, float& a, float& b, float& c, float& d) {
    // The same surface at 100 pixels an inch for units 3.
    const float scale = u == 0 ? 0.0f : u == 3 ? 100.0f : 1.0f;
    a = c = 0;
    b = u == 0 ? 1.0f : 8.0f * scale;
    d = u == 0 ? 1.0f : 5.656f * scale;
    add("pgqvsz", {double(u)});
}
void RecordingGraphics::pgqwin(float& a, float& b, float& c, float& d) {
    a = win_[0], b = win_[1], c = win_[2], d = win_[3];
    add("pgqwin", {});
}

int ScriptedPointer::pgband(int, int, float xref, float yref, float& x, float& y, char& ch) {
    starts.push_back({xref, yref});
    if (next >= clicks.size()) {
        ch = '\0';
        return 1;
    }
    x = clicks[next].x;
    y = clicks[next].y;
    ++next;
    ch = 'A';
    return 1;
}

}  // namespace viewer
