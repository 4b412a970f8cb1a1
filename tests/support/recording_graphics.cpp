// The recording stand-in for PGPLOT and the scripted pointer.
#include "tests/support/recording_graphics.hpp"

#include <algorithm>

namespace viewer {

void RecordingGraphics::add(std::string name, std::vector<double> args, std::vector<std::string> texts) {
    calls.push_back({std::move(name), std::move(args), std::move(texts), {}, {}, selected});
}

std::vector<const GraphicsCall*> RecordingGraphics::named(const std::string& name) const {
    std::vector<const GraphicsCall*> out;
    for (const auto& c : calls)
        if (c.name == name) out.push_back(&c);
    return out;
}

std::vector<const GraphicsCall*> RecordingGraphics::named_on(const std::string& name, int device) const {
    std::vector<const GraphicsCall*> out;
    for (const auto& c : calls)
        if (c.name == name && c.device == device) out.push_back(&c);
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
void RecordingGraphics::pgask(bool f) {
    add("pgask", {f ? 1.0 : 0.0});
}
void RecordingGraphics::pgpap(float w, float a) {
    add("pgpap", {w, a});
}
void RecordingGraphics::pgenv(float a, float b, float c, float d, int j, int ax) {
    win_[0] = a;
    win_[1] = b;
    win_[2] = c;
    win_[3] = d;
    add("pgenv", {a, b, c, d, double(j), double(ax)});
}
void RecordingGraphics::pglab(const std::string& x, const std::string& y, const std::string& t) {
    add("pglab", {}, {x, y, t});
}
void RecordingGraphics::pgbox(const std::string& xo, float xt, int nx, const std::string& yo, float yt,
                              int ny) {
    add("pgbox", {xt, double(nx), yt, double(ny)}, {xo, yo});
}
void RecordingGraphics::pgswin(float a, float b, float c, float d) {
    win_[0] = a;
    win_[1] = b;
    win_[2] = c;
    win_[3] = d;
    add("pgswin", {a, b, c, d});
}
void RecordingGraphics::pgsvp(float a, float b, float c, float d) {
    vp_[0] = a;
    vp_[1] = b;
    vp_[2] = c;
    vp_[3] = d;
    add("pgsvp", {a, b, c, d});
}
void RecordingGraphics::pgvsiz(float a, float b, float c, float d) {
    add("pgvsiz", {a, b, c, d});
}
void RecordingGraphics::pgsubp(int nx, int ny) {
    add("pgsubp", {double(nx), double(ny)});
}
void RecordingGraphics::pgpage() {
    add("pgpage", {});
}
void RecordingGraphics::pgpanl(int ix, int iy) {
    add("pgpanl", {double(ix), double(iy)});
}
void RecordingGraphics::pgline(int n, const float* x, const float* y) {
    add("pgline", {double(n)});
    if (n > 0) {
        calls.back().xs.assign(x, x + n);
        calls.back().ys.assign(y, y + n);
    }
}
void RecordingGraphics::pgpt(int n, const float* x, const float* y, int s) {
    add("pgpt", {double(n), double(s)});
    if (n > 0) {
        calls.back().xs.assign(x, x + n);
        calls.back().ys.assign(y, y + n);
    }
}
void RecordingGraphics::pgmove(float x, float y) {
    add("pgmove", {x, y});
}
void RecordingGraphics::pgdraw(float x, float y) {
    add("pgdraw", {x, y});
}
void RecordingGraphics::pgrect(float a, float b, float c, float d) {
    add("pgrect", {a, b, c, d});
}
void RecordingGraphics::pgcirc(float x, float y, float r) {
    add("pgcirc", {x, y, r});
}
void RecordingGraphics::pgptxt(float x, float y, float a, float f, const std::string& t) {
    add("pgptxt", {x, y, a, f}, {t});
}
void RecordingGraphics::pgtext(float x, float y, const std::string& t) {
    add("pgtext", {x, y}, {t});
}
void RecordingGraphics::pgeras() {
    add("pgeras", {});
}
void RecordingGraphics::pgsci(int ci) {
    add("pgsci", {double(ci)});
}
void RecordingGraphics::pgsls(int ls) {
    add("pgsls", {double(ls)});
}
void RecordingGraphics::pgslw(int lw) {
    add("pgslw", {double(lw)});
}
void RecordingGraphics::pgsfs(int fs) {
    add("pgsfs", {double(fs)});
}
void RecordingGraphics::pgscf(int f) {
    add("pgscf", {double(f)});
}
void RecordingGraphics::pgsch(float s) {
    add("pgsch", {s});
}
void RecordingGraphics::pgscr(int ci, float r, float g, float b) {
    add("pgscr", {double(ci), r, g, b});
}
void RecordingGraphics::pgbbuf() {
    add("pgbbuf", {});
}
void RecordingGraphics::pgebuf() {
    add("pgebuf", {});
}
void RecordingGraphics::pgsave() {
    add("pgsave", {});
}
void RecordingGraphics::pgunsa() {
    add("pgunsa", {});
}
void RecordingGraphics::pgupdt() {
    add("pgupdt", {});
}
void RecordingGraphics::pgqvp(int u, float& a, float& b, float& c, float& d) {
    // Inches on an 8 by 5.66 inch surface, as the plot window has.
    float s = (u == 1) ? 8.0f : 1.0f;
    a = vp_[0] * s;
    b = vp_[1] * s;
    c = vp_[2] * s;
    d = vp_[3] * s;
    add("pgqvp", {double(u)});
}
void RecordingGraphics::pgqvsz(int u, float& a, float& b, float& c, float& d) {
    a = 0;
    c = 0;
    b = (u == 0) ? 1.0f : 8.0f;
    d = (u == 0) ? 1.0f : 5.656f;
    add("pgqvsz", {double(u)});
}
void RecordingGraphics::pgqwin(float& a, float& b, float& c, float& d) {
    a = win_[0];
    b = win_[1];
    c = win_[2];
    d = win_[3];
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
