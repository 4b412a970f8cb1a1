// Test doubles of the two seams: graphics that record every call with its
// arguments, and a pointer that answers from a script of clicks.
#pragma once

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
    int device = 0;  // id of the device selected when the call was made
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

    std::vector<const GraphicsCall*> named(const std::string& name) const;
    std::vector<const GraphicsCall*> named_on(const std::string& name, int device) const;
    void clear() { calls.clear(); }

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
    void add(std::string name, std::vector<double> args, std::vector<std::string> texts = {});
    int next_id_ = 1;
    float win_[4] = {0, 1, 0, 1};
    float vp_[4] = {0, 1, 0, 1};
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
