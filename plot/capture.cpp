// The capturing seam, making calls again, and the curves of a kept page.
#include "plot/capture.hpp"

#include <algorithm>

namespace viewer {

DrawCall& Capture::keep(DrawCall::Op op) {
    calls_.push_back({op, layer_});
    return calls_.back();
}

void Capture::layer(Layer l) {
    layer_ = l;
    if (device_) device_->layer(l);
}

int Capture::pgopen(const std::string& d) {
    const int id = device_ ? device_->pgopen(d) : 1;
    if (recording_) keep(DrawCall::pgopen).text = {d};
    return id;
}
void Capture::pgslct(int id) {
    if (device_) device_->pgslct(id);
    if (recording_) keep(DrawCall::pgslct).i = {id, 0};
}
void Capture::pgclos() {
    if (device_) device_->pgclos();
    if (recording_) keep(DrawCall::pgclos);
}
void Capture::pgend() {
    if (device_) device_->pgend();
    if (recording_) keep(DrawCall::pgend);
}
void Capture::pgask(bool flag) {
    if (device_) device_->pgask(flag);
    if (recording_) keep(DrawCall::pgask).i = {flag ? 1 : 0, 0};
}
void Capture::pgpap(float w, float a) {
    if (device_) device_->pgpap(w, a);
    if (recording_) keep(DrawCall::pgpap).f = {w, a, 0, 0};
}
void Capture::pgenv(float a, float b, float c, float d, int just, int axis) {
    win_ = {a, b, c, d};
    if (device_) device_->pgenv(a, b, c, d, just, axis);
    if (device_ && keep_frames_) {
        DeviceFrame f;
        device_->pgqvp(3, f.viewport[0], f.viewport[1], f.viewport[2], f.viewport[3]);
        device_->pgqwin(f.window[0], f.window[1], f.window[2], f.window[3]);
        device_->pgqvsz(3, f.surface[0], f.surface[1], f.surface[2], f.surface[3]);
        frames_.push_back(f);
    }
    if (!recording_) return;
    DrawCall& k = keep(DrawCall::pgenv);
    k.f = {a, b, c, d};
    k.i = {just, axis};
}
void Capture::pglab(const std::string& x, const std::string& y, const std::string& t) {
    if (device_) device_->pglab(x, y, t);
    if (recording_) keep(DrawCall::pglab).text = {x, y, t};
}
void Capture::pgbox(const std::string& xo, float xt, int nx, const std::string& yo, float yt, int ny) {
    if (device_) device_->pgbox(xo, xt, nx, yo, yt, ny);
    if (!recording_) return;
    DrawCall& k = keep(DrawCall::pgbox);
    k.text = {xo, yo};
    k.f = {xt, yt, 0, 0};
    k.i = {nx, ny};
}
void Capture::pgswin(float a, float b, float c, float d) {
    win_ = {a, b, c, d};
    if (device_) device_->pgswin(a, b, c, d);
    if (recording_) keep(DrawCall::pgswin).f = {a, b, c, d};
}
void Capture::pgsvp(float a, float b, float c, float d) {
    vp_ = {a, b, c, d};
    if (device_) device_->pgsvp(a, b, c, d);
    if (recording_) keep(DrawCall::pgsvp).f = {a, b, c, d};
}
void Capture::pgvsiz(float a, float b, float c, float d) {
    if (device_) device_->pgvsiz(a, b, c, d);
    if (recording_) keep(DrawCall::pgvsiz).f = {a, b, c, d};
}
void Capture::pgsubp(int nx, int ny) {
    if (device_) device_->pgsubp(nx, ny);
    if (recording_) keep(DrawCall::pgsubp).i = {nx, ny};
}
void Capture::pgpage() {
    if (device_) device_->pgpage();
    if (recording_) keep(DrawCall::pgpage);
}
void Capture::pgpanl(int ix, int iy) {
    if (device_) device_->pgpanl(ix, iy);
    if (recording_) keep(DrawCall::pgpanl).i = {ix, iy};
}
void Capture::pgline(int n, const float* x, const float* y) {
    if (device_) device_->pgline(n, x, y);
    if (!recording_) return;
    DrawCall& k = keep(DrawCall::pgline);
    if (n > 0) {
        k.x.assign(x, x + n);
        k.y.assign(y, y + n);
    }
}
void Capture::pgpt(int n, const float* x, const float* y, int symbol) {
    if (device_) device_->pgpt(n, x, y, symbol);
    if (!recording_) return;
    DrawCall& k = keep(DrawCall::pgpt);
    k.i = {symbol, 0};
    if (n > 0) {
        k.x.assign(x, x + n);
        k.y.assign(y, y + n);
    }
}
void Capture::pgmove(float x, float y) {
    if (device_) device_->pgmove(x, y);
    if (recording_) keep(DrawCall::pgmove).f = {x, y, 0, 0};
}
void Capture::pgdraw(float x, float y) {
    if (device_) device_->pgdraw(x, y);
    if (recording_) keep(DrawCall::pgdraw).f = {x, y, 0, 0};
}
void Capture::pgrect(float a, float b, float c, float d) {
    if (device_) device_->pgrect(a, b, c, d);
    if (recording_) keep(DrawCall::pgrect).f = {a, b, c, d};
}
void Capture::pgcirc(float x, float y, float r) {
    if (device_) device_->pgcirc(x, y, r);
    if (recording_) keep(DrawCall::pgcirc).f = {x, y, r, 0};
}
void Capture::pgptxt(float x, float y, float a, float fj, const std::string& t) {
    if (device_) device_->pgptxt(x, y, a, fj, t);
    if (!recording_) return;
    DrawCall& k = keep(DrawCall::pgptxt);
    k.f = {x, y, a, fj};
    k.text = {t};
}
void Capture::pgtext(float x, float y, const std::string& t) {
    if (device_) device_->pgtext(x, y, t);
    if (!recording_) return;
    DrawCall& k = keep(DrawCall::pgtext);
    k.f = {x, y, 0, 0};
    k.text = {t};
}
void Capture::pgeras() {
    if (device_) device_->pgeras();
    if (recording_) keep(DrawCall::pgeras);
}
void Capture::pgsci(int ci) {
    if (device_) device_->pgsci(ci);
    if (recording_) keep(DrawCall::pgsci).i = {ci, 0};
}
void Capture::pgsls(int ls) {
    if (device_) device_->pgsls(ls);
    if (recording_) keep(DrawCall::pgsls).i = {ls, 0};
}
void Capture::pgslw(int lw) {
    if (device_) device_->pgslw(lw);
    if (recording_) keep(DrawCall::pgslw).i = {lw, 0};
}
void Capture::pgsfs(int fs) {
    if (device_) device_->pgsfs(fs);
    if (recording_) keep(DrawCall::pgsfs).i = {fs, 0};
}
void Capture::pgscf(int font) {
    if (device_) device_->pgscf(font);
    if (recording_) keep(DrawCall::pgscf).i = {font, 0};
}
void Capture::pgsch(float size) {
    if (device_) device_->pgsch(size);
    if (recording_) keep(DrawCall::pgsch).f = {size, 0, 0, 0};
}
void Capture::pgscr(int ci, float r, float g, float b) {
    if (device_) device_->pgscr(ci, r, g, b);
    if (!recording_) return;
    DrawCall& k = keep(DrawCall::pgscr);
    k.i = {ci, 0};
    k.f = {r, g, b, 0};
}
void Capture::pgbbuf() {
    if (device_) device_->pgbbuf();
    if (recording_) keep(DrawCall::pgbbuf);
}
void Capture::pgebuf() {
    if (device_) device_->pgebuf();
    if (recording_) keep(DrawCall::pgebuf);
}
void Capture::pgsave() {
    if (device_) device_->pgsave();
    if (recording_) keep(DrawCall::pgsave);
}
void Capture::pgunsa() {
    if (device_) device_->pgunsa();
    if (recording_) keep(DrawCall::pgunsa);
}
void Capture::pgupdt() {
    if (device_) device_->pgupdt();
    if (recording_) keep(DrawCall::pgupdt);
}

void Capture::pgqvp(int units, float& x1, float& x2, float& y1, float& y2) {
    if (device_) return device_->pgqvp(units, x1, x2, y1, y2);
    const float s = units == 0 ? 1.0f : 8.0f;  // inches of a page like the plot window's
    x1 = vp_[0] * s, x2 = vp_[1] * s, y1 = vp_[2] * s, y2 = vp_[3] * s;
}
void Capture::pgqvsz(int units, float& x1, float& x2, float& y1, float& y2) {
    if (device_) return device_->pgqvsz(units, x1, x2, y1, y2);
    x1 = y1 = 0;
    x2 = units == 0 ? 1.0f : 8.0f;
    y2 = units == 0 ? 1.0f : 5.656f;
}
void Capture::pgqwin(float& x1, float& x2, float& y1, float& y2) {
    if (device_) return device_->pgqwin(x1, x2, y1, y2);
    x1 = win_[0], x2 = win_[1], y1 = win_[2], y2 = win_[3];
}

void replay(const DrawCall& c, Graphics& to) {
    const auto& f = c.f;
    const auto& i = c.i;
    auto text = [&](std::size_t k) { return k < c.text.size() ? c.text[k] : std::string(); };
    switch (c.op) {
        case DrawCall::pgopen:
            to.pgopen(text(0));
            break;
        case DrawCall::pgslct:
            to.pgslct(i[0]);
            break;
        case DrawCall::pgclos:
            to.pgclos();
            break;
        case DrawCall::pgend:
            to.pgend();
            break;
        case DrawCall::pgask:
            to.pgask(i[0] != 0);
            break;
        case DrawCall::pgpap:
            to.pgpap(f[0], f[1]);
            break;
        case DrawCall::pgenv:
            to.pgenv(f[0], f[1], f[2], f[3], i[0], i[1]);
            break;
        case DrawCall::pglab:
            to.pglab(text(0), text(1), text(2));
            break;
        case DrawCall::pgbox:
            to.pgbox(text(0), f[0], i[0], text(1), f[1], i[1]);
            break;
        case DrawCall::pgswin:
            to.pgswin(f[0], f[1], f[2], f[3]);
            break;
        case DrawCall::pgsvp:
            to.pgsvp(f[0], f[1], f[2], f[3]);
            break;
        case DrawCall::pgvsiz:
            to.pgvsiz(f[0], f[1], f[2], f[3]);
            break;
        case DrawCall::pgsubp:
            to.pgsubp(i[0], i[1]);
            break;
        case DrawCall::pgpage:
            to.pgpage();
            break;
        case DrawCall::pgpanl:
            to.pgpanl(i[0], i[1]);
            break;
        case DrawCall::pgline:
            to.pgline(static_cast<int>(c.x.size()), c.x.data(), c.y.data());
            break;
        case DrawCall::pgpt:
            to.pgpt(static_cast<int>(c.x.size()), c.x.data(), c.y.data(), i[0]);
            break;
        case DrawCall::pgmove:
            to.pgmove(f[0], f[1]);
            break;
        case DrawCall::pgdraw:
            to.pgdraw(f[0], f[1]);
            break;
        case DrawCall::pgrect:
            to.pgrect(f[0], f[1], f[2], f[3]);
            break;
        case DrawCall::pgcirc:
            to.pgcirc(f[0], f[1], f[2]);
            break;
        case DrawCall::pgptxt:
            to.pgptxt(f[0], f[1], f[2], f[3], text(0));
            break;
        case DrawCall::pgtext:
            to.pgtext(f[0], f[1], text(0));
            break;
        case DrawCall::pgeras:
            to.pgeras();
            break;
        case DrawCall::pgsci:
            to.pgsci(i[0]);
            break;
        case DrawCall::pgsls:
            to.pgsls(i[0]);
            break;
        case DrawCall::pgslw:
            to.pgslw(i[0]);
            break;
        case DrawCall::pgsfs:
            to.pgsfs(i[0]);
            break;
        case DrawCall::pgscf:
            to.pgscf(i[0]);
            break;
        case DrawCall::pgsch:
            to.pgsch(f[0]);
            break;
        case DrawCall::pgscr:
            to.pgscr(i[0], f[0], f[1], f[2]);
            break;
        case DrawCall::pgbbuf:
            to.pgbbuf();
            break;
        case DrawCall::pgebuf:
            to.pgebuf();
            break;
        case DrawCall::pgsave:
            to.pgsave();
            break;
        case DrawCall::pgunsa:
            to.pgunsa();
            break;
        case DrawCall::pgupdt:
            to.pgupdt();
            break;
    }
}

Figure figure_of(std::span<const DrawCall> calls) {
    Figure fig;
    int nx = 1, panel = -1;  // panels in the order their frames are drawn
    bool bars_open = false;  // the last series takes the next bar
    for (const DrawCall& c : calls) {
        if (c.op != DrawCall::pgrect) bars_open = false;
        switch (c.op) {
            case DrawCall::pgpage:
                fig = {};
                panel = -1;
                break;
            case DrawCall::pgsubp:
                nx = std::max(c.i[0], 1);
                break;
            case DrawCall::pgenv:
                fig.panels.push_back({{c.f[0], c.f[1], c.f[2], c.f[3]}});
                panel = static_cast<int>(fig.panels.size()) - 1;
                break;
            case DrawCall::pglab:
                if (panel >= 0) {
                    Panel& p = fig.panels[static_cast<std::size_t>(panel)];
                    p.x = c.text[0], p.y = c.text[1], p.top = c.text[2];
                }
                break;
            case DrawCall::pgpanl:
                panel = (c.i[1] - 1) * nx + c.i[0] - 1;
                break;
            case DrawCall::pgline:
            case DrawCall::pgpt:
                if (c.layer == Layer::data || c.layer == Layer::fit)
                    fig.series.push_back({c.op == DrawCall::pgline ? Series::line : Series::marks,
                                          c.layer,
                                          std::max(panel, 0),
                                          c.x,
                                          c.y,
                                          {}});
                break;
            case DrawCall::pgrect:
                if (c.layer != Layer::data) break;
                if (!bars_open) fig.series.push_back({Series::bars, c.layer, std::max(panel, 0), {}, {}, {}});
                bars_open = true;
                fig.series.back().x.push_back(c.f[0]);
                fig.series.back().x_to.push_back(c.f[1]);
                fig.series.back().y.push_back(c.f[3] == 0.0f ? c.f[2] : c.f[3]);
                break;
            default:
                break;
        }
    }
    // A row of bars drawn twice, filled and then outlined, is one row.
    auto same = [](const Series& a, const Series& b) {
        return a.form == Series::bars && b.form == Series::bars && a.panel == b.panel && a.x == b.x &&
               a.x_to == b.x_to && a.y == b.y;
    };
    fig.series.erase(std::unique(fig.series.begin(), fig.series.end(), same), fig.series.end());
    return fig;
}

}  // namespace viewer
