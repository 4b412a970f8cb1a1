// The one door to PGPLOT. Every drawing call of the viewer goes through
// `Graphics`, so that tests can swap in `RecordingGraphics` and assert frames,
// ranges, labels, colours and curves without reading pixels. The pointer
// (`pgband`) is a separate seam, `Pointer`, so that a test can script clicks.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace viewer {

class Graphics {
public:
    virtual ~Graphics() = default;
    // devices
    virtual int pgopen(const std::string& device) = 0;  // id > 0, or <= 0 on failure
    virtual void pgslct(int id) = 0;
    virtual void pgclos() = 0;
    virtual void pgend() = 0;
    virtual void pgask(bool flag) = 0;
    virtual void pgpap(float width, float aspect) = 0;  // inches
    // frame and panels
    virtual void pgenv(float xmin, float xmax, float ymin, float ymax, int just, int axis) = 0;
    virtual void pglab(const std::string& x, const std::string& y, const std::string& top) = 0;
    virtual void pgbox(const std::string& xopt, float xtick, int nxsub,
                       const std::string& yopt, float ytick, int nysub) = 0;
    virtual void pgswin(float x1, float x2, float y1, float y2) = 0;
    virtual void pgsvp(float x1, float x2, float y1, float y2) = 0;
    virtual void pgvsiz(float x1, float x2, float y1, float y2) = 0;
    virtual void pgsubp(int nx, int ny) = 0;
    virtual void pgpage() = 0;
    virtual void pgpanl(int ix, int iy) = 0;
    // primitives
    virtual void pgline(int n, const float* x, const float* y) = 0;
    virtual void pgpt(int n, const float* x, const float* y, int symbol) = 0;
    virtual void pgmove(float x, float y) = 0;
    virtual void pgdraw(float x, float y) = 0;
    virtual void pgrect(float x1, float x2, float y1, float y2) = 0;
    virtual void pgcirc(float x, float y, float radius) = 0;
    virtual void pgptxt(float x, float y, float angle, float fjust, const std::string& text) = 0;
    virtual void pgtext(float x, float y, const std::string& text) = 0;
    virtual void pgeras() = 0;
    // attributes
    virtual void pgsci(int ci) = 0;
    virtual void pgsls(int ls) = 0;
    virtual void pgslw(int lw) = 0;
    virtual void pgsfs(int fs) = 0;
    virtual void pgscf(int font) = 0;
    virtual void pgsch(float size) = 0;
    virtual void pgscr(int ci, float r, float g, float b) = 0;
    // batching
    virtual void pgbbuf() = 0;
    virtual void pgebuf() = 0;
    virtual void pgsave() = 0;
    virtual void pgunsa() = 0;
    virtual void pgupdt() = 0;
    // queries
    virtual void pgqvp(int units, float& x1, float& x2, float& y1, float& y2) = 0;
    virtual void pgqvsz(int units, float& x1, float& x2, float& y1, float& y2) = 0;
    virtual void pgqwin(float& x1, float& x2, float& y1, float& y2) = 0;
};

// The cursor, in mode 0 only. Returns PGPLOT's status (1 on success) and the
// key or button in `ch`; a null `ch` means the device has no cursor.
class Pointer {
public:
    virtual ~Pointer() = default;
    virtual int pgband(int mode, int posn, float xref, float yref, float& x, float& y, char& ch) = 0;
};

// The real library.
std::unique_ptr<Graphics> make_pgplot_graphics();
std::unique_ptr<Pointer> make_pgplot_pointer();

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
    struct Click { float x, y; };
    std::vector<Click> clicks;
    std::vector<Click> starts;  // where the cursor stood when each wait began
    std::size_t next = 0;
    int pgband(int mode, int posn, float xref, float yref, float& x, float& y, char& ch) override;
};

}  // namespace viewer
