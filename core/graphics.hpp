// The one door to PGPLOT. Every drawing call of the viewer goes through
// `Graphics`, so that tests can swap in `RecordingGraphics` and assert frames,
// ranges, labels, colours and curves without reading pixels. The pointer
// (`pgband`) is a separate seam, `Pointer`, so that a test can script clicks.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace viewer {

// What the drawing calls that follow show. PGPLOT has no such call and the
// library ignores it; a front end that takes a page apart (the points
// behind a plot, several runs on one frame) tells by it the plot's data
// from its fit, the aperture outline, the key and the page foot.
enum class Layer { data, fit, outline, key, foot };

class Graphics {
public:
    virtual ~Graphics() = default;
    // annotation, not a library call
    virtual void layer(Layer) {}
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
    virtual void pgbox(const std::string& xopt, float xtick, int nxsub, const std::string& yopt, float ytick,
                       int nysub) = 0;
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
    // images: `a` column-major IDIM by JDIM, cells I1..I2, J1..J2 shaded from
    // A1 to A2 through the colour table, `tr` the cell-to-world transform
    virtual void pgimag(const float* a, int idim, int jdim, int i1, int i2, int j1, int j2, float a1,
                        float a2, const float* tr) = 0;
    virtual void pgctab(const float* l, const float* r, const float* g, const float* b, int nc, float contra,
                        float bright) = 0;
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

// Marks what a helper draws, and the plot's data again when it is done.
class LayerScope {
public:
    LayerScope(Graphics& pg, Layer l) : pg_(pg) { pg_.layer(l); }
    ~LayerScope() { pg_.layer(Layer::data); }
    LayerScope(const LayerScope&) = delete;
    LayerScope& operator=(const LayerScope&) = delete;

private:
    Graphics& pg_;
};

// The buffered, saved drawing state as a guard: opened by the constructor,
// closed by `close()` or when it leaves scope, so no path, a stop on a bad
// record included, leaves the buffer or the attributes unbalanced.
//   plot:   pgbbuf, pgsave ... pgunsa, pgebuf, pgupdt
//   page:   pgbbuf, pgsave ... pgunsa, pgebuf         (the menu pages)
//   foot:   pgsave, pgbbuf ... pgebuf, pgunsa         (the page foot)
class DrawBracket {
public:
    enum Form { plot, page, foot };
    explicit DrawBracket(Graphics& pg, Form form = plot) : pg_(pg), form_(form) {
        if (form_ == foot) {
            pg_.pgsave();
            pg_.pgbbuf();
        } else {
            pg_.pgbbuf();
            pg_.pgsave();
        }
    }
    ~DrawBracket() { close(); }
    DrawBracket(const DrawBracket&) = delete;
    DrawBracket& operator=(const DrawBracket&) = delete;
    void close() {
        if (!open_) return;
        open_ = false;
        if (form_ == foot) {
            pg_.pgebuf();
            pg_.pgunsa();
            return;
        }
        pg_.pgunsa();
        pg_.pgebuf();
        if (form_ == plot) pg_.pgupdt();
    }

private:
    Graphics& pg_;
    Form form_;
    bool open_ = true;
};

}  // namespace viewer
