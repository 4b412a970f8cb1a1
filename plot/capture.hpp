// A graphics seam that keeps what a plot draws: each call in order, with
// the layer it belongs to (data, fit, outline, key, foot), so that a page
// can be taken apart afterwards: the points behind each curve, several runs
// laid on one frame. It passes every call on to a device when it has one,
// and keeps calls only while recording.
//
//   Capture cap(&device);            // draws as before
//   cap.record(true);                // ... and keeps what it draws
//   dispatch(s);                     // s.pg is `cap`
//   const Figure f = figure_of(cap.calls());
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/graphics.hpp"

namespace viewer {

// One call kept, with everything needed to make it again.
struct DrawCall {
    enum Op : std::uint8_t {
        pgopen,
        pgslct,
        pgclos,
        pgend,
        pgask,
        pgpap,
        pgenv,
        pglab,
        pgbox,
        pgswin,
        pgsvp,
        pgvsiz,
        pgsubp,
        pgpage,
        pgpanl,
        pgline,
        pgpt,
        pgmove,
        pgdraw,
        pgrect,
        pgcirc,
        pgptxt,
        pgtext,
        pgeras,
        pgsci,
        pgsls,
        pgslw,
        pgsfs,
        pgscf,
        pgsch,
        pgscr,
        pgbbuf,
        pgebuf,
        pgsave,
        pgunsa,
        pgupdt,
    };
    Op op;
    Layer layer = Layer::data;
    std::array<float, 4> f{};         // real arguments in order
    std::array<int, 2> i{};           // integer arguments in order
    std::vector<std::string> text{};  // text arguments in order
    std::vector<float> x{}, y{};      // the points of pgline and pgpt
};

// Makes `c` again on `to`.
void replay(const DrawCall& c, Graphics& to);

// A panel's frame as the device holds it once drawn: the viewport in the
// device's own units (the pixels of an image, counted from the lower left)
// and the world window.
struct DeviceFrame {
    std::array<float, 4> viewport{};  // x1, x2, y1, y2
    std::array<float, 4> window{};
    std::array<float, 4> surface{};  // the whole view surface, same units
};

class Capture final : public Graphics {
public:
    explicit Capture(Graphics* device = nullptr) : device_(device) {}
    // Where calls go on: a device, or nowhere.
    void target(Graphics* device) { device_ = device; }
    Graphics* device() const { return device_; }
    // Keeps the calls from now on (true), or only passes them on.
    void record(bool on) { recording_ = on; }
    const std::vector<DrawCall>& calls() const { return calls_; }
    std::vector<DrawCall> take() { return std::exchange(calls_, {}); }
    // Asks the device for each frame it draws (true); only a front end that
    // maps the pointer back to the plot needs them.
    void keep_frames(bool on) { keep_frames_ = on; }
    std::vector<DeviceFrame> take_frames() { return std::exchange(frames_, {}); }

    void layer(Layer l) override;
    int pgopen(const std::string& device) override;
    void pgslct(int id) override;
    void pgclos() override;
    void pgend() override;
    void pgask(bool flag) override;
    void pgpap(float width, float aspect) override;
    void pgenv(float xmin, float xmax, float ymin, float ymax, int just, int axis) override;
    void pglab(const std::string& x, const std::string& y, const std::string& top) override;
    void pgbox(const std::string& xopt, float xtick, int nxsub, const std::string& yopt, float ytick,
               int nysub) override;
    void pgswin(float x1, float x2, float y1, float y2) override;
    void pgsvp(float x1, float x2, float y1, float y2) override;
    void pgvsiz(float x1, float x2, float y1, float y2) override;
    void pgsubp(int nx, int ny) override;
    void pgpage() override;
    void pgpanl(int ix, int iy) override;
    void pgline(int n, const float* x, const float* y) override;
    void pgpt(int n, const float* x, const float* y, int symbol) override;
    void pgmove(float x, float y) override;
    void pgdraw(float x, float y) override;
    void pgrect(float x1, float x2, float y1, float y2) override;
    // images go to the device only: no page that is taken apart holds one
    void pgimag(const float* a, int idim, int jdim, int i1, int i2, int j1, int j2, float a1, float a2,
                const float* tr) override {
        if (device_) device_->pgimag(a, idim, jdim, i1, i2, j1, j2, a1, a2, tr);
    }
    void pgctab(const float* l, const float* r, const float* g, const float* b, int nc, float contra,
                float bright) override {
        if (device_) device_->pgctab(l, r, g, b, nc, contra, bright);
    }
    void pgcirc(float x, float y, float radius) override;
    void pgptxt(float x, float y, float angle, float fjust, const std::string& text) override;
    void pgtext(float x, float y, const std::string& text) override;
    void pgeras() override;
    void pgsci(int ci) override;
    void pgsls(int ls) override;
    void pgslw(int lw) override;
    void pgsfs(int fs) override;
    void pgscf(int font) override;
    void pgsch(float size) override;
    void pgscr(int ci, float r, float g, float b) override;
    void pgbbuf() override;
    void pgebuf() override;
    void pgsave() override;
    void pgunsa() override;
    void pgupdt() override;
    void pgqvp(int units, float& x1, float& x2, float& y1, float& y2) override;
    void pgqvsz(int units, float& x1, float& x2, float& y1, float& y2) override;
    void pgqwin(float& x1, float& x2, float& y1, float& y2) override;

private:
    DrawCall& keep(DrawCall::Op op);
    Graphics* device_;
    bool recording_ = false;
    bool keep_frames_ = false;
    std::vector<DeviceFrame> frames_;
    Layer layer_ = Layer::data;
    std::vector<DrawCall> calls_;
    std::array<float, 4> win_{0, 1, 0, 1}, vp_{0, 1, 0, 1};  // answered when there is no device
};

// --- taking a page apart ------------------------------------------------------

// One frame of a plot: its world window and its labels.
struct Panel {
    std::array<float, 4> window{};  // x1, x2, y1, y2 as the frame was drawn
    std::string x{}, y{}, top{};
};

// What one call of a curve drew: a line or marks through points, or a row
// of bars (x from x to x_to, from 0 to y).
struct Series {
    enum Form { line, marks, bars } form = line;
    Layer layer = Layer::data;
    int panel = 0;  // 0-based index into Figure::panels
    std::vector<float> x{}, y{}, x_to{};
};

struct Figure {
    std::vector<Panel> panels;
    std::vector<Series> series;  // in the order drawn
};

// The frames and curves of the last page among `calls`. Bars drawn twice
// over (filled, then outlined) count once.
Figure figure_of(std::span<const DrawCall> calls);

}  // namespace viewer
