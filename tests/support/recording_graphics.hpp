// Test doubles of the two seams: graphics that record every call with its
// arguments, and a pointer that answers from a script of clicks.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "core/graphics.hpp"

namespace viewer {

// One recorded call: its name, its numeric arguments in order, its text
// arguments, and for curves the points themselves.
struct GraphicsCall {
    std::string name;
    std::vector<double> args;
    std::vector<std::string> texts;
    std::vector<float> xs, ys;
    int device = 0;             // id of the device selected when the call was made
    Layer layer = Layer::data;  // what the call drew, as the plot marked it
};

// Records every call. Devices open with increasing ids; names listed in
// `refuse_open` fail with id 0, as an uncreatable file would.
class RecordingGraphics : public Graphics {
public:
    std::vector<GraphicsCall> calls;
    std::vector<std::string> refuse_open;
    std::vector<std::string> opened;  // device texts given to pgopen, in order
    int selected = 0;
    bool ended = false;

    std::vector<const GraphicsCall*> named(const std::string& name) const { return named_on(name, -1); }
    std::vector<const GraphicsCall*> named_on(const std::string& name, int device) const;  // -1: any
    void clear() { calls.clear(); }

    void layer(Layer l) override { layer_ = l; }
    int pgopen(const std::string& device) override;
    void pgslct(int id) override;
    void pgclos() override;
    void pgend() override;
    void pgask(bool f) override { add("pgask", {f ? 1.0 : 0.0}); }
    void pgpap(float w, float a) override { add("pgpap", {w, a}); }
    void pgenv(float xmin, float xmax, float ymin, float ymax, int just, int axis) override;
    void pglab(const std::string& x, const std::string& y, const std::string& t) override {
        add("pglab", {}, {x, y, t});
    }
    void pgbox(const std::string& xo, float xt, int nx, const std::string& yo, float yt, int ny) override {
        add("pgbox", {xt, double(nx), yt, double(ny)}, {xo, yo});
    }
    void pgswin(float x1, float x2, float y1, float y2) override;
    void pgsvp(float x1, float x2, float y1, float y2) override;
    void pgvsiz(float a, float b, float c, float d) override { add("pgvsiz", {a, b, c, d}); }
    void pgsubp(int nx, int ny) override { add("pgsubp", {double(nx), double(ny)}); }
    void pgpage() override { add("pgpage", {}); }
    void pgpanl(int ix, int iy) override { add("pgpanl", {double(ix), double(iy)}); }
    void pgline(int n, const float* x, const float* y) override {
        add_points("pgline", {double(n)}, n, x, y);
    }
    void pgpt(int n, const float* x, const float* y, int symbol) override {
        add_points("pgpt", {double(n), double(symbol)}, n, x, y);
    }
    void pgmove(float x, float y) override { add("pgmove", {x, y}); }
    void pgdraw(float x, float y) override { add("pgdraw", {x, y}); }
    void pgrect(float a, float b, float c, float d) override { add("pgrect", {a, b, c, d}); }
    // the image's cells in xs, in the order given
    void pgimag(const float* a, int idim, int jdim, int i1, int i2, int j1, int j2, float a1, float a2,
                const float* tr) override {
        add("pgimag", {double(idim), double(jdim), double(i1), double(i2), double(j1), double(j2), a1, a2,
                       tr[0], tr[1], tr[2], tr[3], tr[4], tr[5]});
        calls.back().xs.assign(a, a + idim * jdim);
    }
    void pgctab(const float* l, const float*, const float*, const float*, int nc, float contra,
                float bright) override {
        add("pgctab", {double(nc), contra, bright, l[0], l[nc - 1]});
    }
    void pgcirc(float x, float y, float r) override { add("pgcirc", {x, y, r}); }
    void pgptxt(float x, float y, float a, float f, const std::string& t) override {
        add("pgptxt", {x, y, a, f}, {t});
    }
    void pgtext(float x, float y, const std::string& t) override { add("pgtext", {x, y}, {t}); }
    void pgeras() override { add("pgeras", {}); }
    void pgsci(int ci) override { add("pgsci", {double(ci)}); }
    void pgsls(int ls) override { add("pgsls", {double(ls)}); }
    void pgslw(int lw) override { add("pgslw", {double(lw)}); }
    void pgsfs(int fs) override { add("pgsfs", {double(fs)}); }
    void pgscf(int f) override { add("pgscf", {double(f)}); }
    void pgsch(float s) override { add("pgsch", {s}); }
    void pgscr(int ci, float r, float g, float b) override { add("pgscr", {double(ci), r, g, b}); }
    void pgbbuf() override { add("pgbbuf", {}); }
    void pgebuf() override { add("pgebuf", {}); }
    void pgsave() override { add("pgsave", {}); }
    void pgunsa() override { add("pgunsa", {}); }
    void pgupdt() override { add("pgupdt", {}); }
    void pgqvp(int units, float& x1, float& x2, float& y1, float& y2) override;
    void pgqvsz(int units, float& x1, float& x2, float& y1, float& y2) override;
    void pgqwin(float& x1, float& x2, float& y1, float& y2) override;

private:
    void add(std::string name, std::vector<double> args, std::vector<std::string> texts = {});
    void add_points(std::string name, std::vector<double> args, int n, const float* x, const float* y);
    int next_id_ = 1;
    Layer layer_ = Layer::data;
    std::array<float, 4> win_{0, 1, 0, 1}, vp_{0, 1, 0, 1};
};

// Scripted pointer for tests: each click is a world position; a script that
// runs out answers with the null character (no cursor).
class ScriptedPointer : public Pointer {
public:
    struct Click {
        float x, y;
    };
    std::vector<Click> clicks;
    std::vector<Click> starts;  // where the cursor stood when each wait began
    std::size_t next = 0;
    int pgband(int mode, int posn, float xref, float yref, float& x, float& y, char& ch) override;
};

}  // namespace viewer
