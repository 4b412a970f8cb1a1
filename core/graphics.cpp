// PGPLOT behind the `Graphics` and `Pointer` seams.
#include "core/graphics.hpp"

#include <cpgplot.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

namespace viewer {
namespace {

// The PNG driver allocates its device record at open and never clears the
// record's error flag: a stale 1 left on the heap makes it skip writing the
// picture, at random in a process that lives on (the notebook module, the
// server). A zeroed block of the record's size, freed just before the open,
// is the block the allocator hands out next on this thread.
void zeroed_heap_for_png(const std::string& device) {
    constexpr std::size_t kRecord = 0x338;
    std::string type = device.substr(std::min(device.rfind('/'), device.size()));
    for (char& c : type) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (type != "/PNG" && type != "/TPNG") return;
    void* p = std::malloc(kRecord);
    if (!p) return;
    std::memset(p, 0, kRecord);
    asm volatile("" : : "r"(p) : "memory");  // the zeros are written, not elided
    std::free(p);
}

class PgplotGraphics final : public Graphics {
public:
    int pgopen(const std::string& d) override {
        zeroed_heap_for_png(d);
        return cpgopen(d.c_str());
    }
    void pgslct(int id) override { cpgslct(id); }
    void pgclos() override { cpgclos(); }
    void pgend() override { cpgend(); }
    void pgask(bool f) override { cpgask(f ? 1 : 0); }
    void pgpap(float w, float a) override { cpgpap(w, a); }
    void pgenv(float a, float b, float c, float d, int j, int ax) override { cpgenv(a, b, c, d, j, ax); }
    void pglab(const std::string& x, const std::string& y, const std::string& t) override {
        cpglab(x.c_str(), y.c_str(), t.c_str());
    }
    void pgbox(const std::string& xo, float xt, int nx, const std::string& yo, float yt, int ny) override {
        cpgbox(xo.c_str(), xt, nx, yo.c_str(), yt, ny);
    }
    void pgswin(float a, float b, float c, float d) override { cpgswin(a, b, c, d); }
    void pgsvp(float a, float b, float c, float d) override { cpgsvp(a, b, c, d); }
    void pgvsiz(float a, float b, float c, float d) override { cpgvsiz(a, b, c, d); }
    void pgsubp(int nx, int ny) override { cpgsubp(nx, ny); }
    void pgpage() override { cpgpage(); }
    void pgpanl(int ix, int iy) override { cpgpanl(ix, iy); }
    void pgline(int n, const float* x, const float* y) override { cpgline(n, x, y); }
    void pgpt(int n, const float* x, const float* y, int s) override { cpgpt(n, x, y, s); }
    void pgmove(float x, float y) override { cpgmove(x, y); }
    void pgdraw(float x, float y) override { cpgdraw(x, y); }
    void pgrect(float a, float b, float c, float d) override { cpgrect(a, b, c, d); }
    void pgimag(const float* a, int idim, int jdim, int i1, int i2, int j1, int j2, float a1, float a2,
                const float* tr) override {
        cpgimag(a, idim, jdim, i1, i2, j1, j2, a1, a2, tr);
    }
    void pgctab(const float* l, const float* r, const float* g, const float* b, int nc, float contra,
                float bright) override {
        cpgctab(l, r, g, b, nc, contra, bright);
    }
    void pgcirc(float x, float y, float r) override { cpgcirc(x, y, r); }
    void pgptxt(float x, float y, float a, float f, const std::string& t) override {
        cpgptxt(x, y, a, f, t.c_str());
    }
    void pgtext(float x, float y, const std::string& t) override { cpgtext(x, y, t.c_str()); }
    void pgeras() override { cpgeras(); }
    void pgsci(int ci) override { cpgsci(ci); }
    void pgsls(int ls) override { cpgsls(ls); }
    void pgslw(int lw) override { cpgslw(lw); }
    void pgsfs(int fs) override { cpgsfs(fs); }
    void pgscf(int f) override { cpgscf(f); }
    void pgsch(float s) override { cpgsch(s); }
    void pgscr(int ci, float r, float g, float b) override { cpgscr(ci, r, g, b); }
    void pgbbuf() override { cpgbbuf(); }
    void pgebuf() override { cpgebuf(); }
    void pgsave() override { cpgsave(); }
    void pgunsa() override { cpgunsa(); }
    void pgupdt() override { cpgupdt(); }
    void pgqvp(int u, float& a, float& b, float& c, float& d) override { cpgqvp(u, &a, &b, &c, &d); }
    void pgqvsz(int u, float& a, float& b, float& c, float& d) override { cpgqvsz(u, &a, &b, &c, &d); }
    void pgqwin(float& a, float& b, float& c, float& d) override { cpgqwin(&a, &b, &c, &d); }
};

class PgplotPointer final : public Pointer {
public:
    int pgband(int mode, int posn, float xref, float yref, float& x, float& y, char& ch) override {
        return cpgband(mode, posn, xref, yref, &x, &y, &ch);
    }
};

}  // namespace

std::unique_ptr<Graphics> make_pgplot_graphics() {
    return std::make_unique<PgplotGraphics>();
}
std::unique_ptr<Pointer> make_pgplot_pointer() {
    return std::make_unique<PgplotPointer>();
}

}  // namespace viewer
