// Stand-ins that do nothing, for the benchmarks that measure the viewer's own
// share of a redraw: graphics that draw nowhere, and a console sink.
#pragma once

#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>

#include "core/graphics.hpp"
#include "core/session.hpp"
#include "tests/support/recording_graphics.hpp"
#include "tests/support/temp_dir.hpp"

namespace viewer {

class NullGraphics final : public Graphics {
public:
    int pgopen(const std::string&) override { return 1; }
    void pgslct(int) override {}
    void pgclos() override {}
    void pgend() override {}
    void pgask(bool) override {}
    void pgpap(float, float) override {}
    void pgenv(float, float, float, float, int, int) override {}
    void pglab(const std::string&, const std::string&, const std::string&) override {}
    void pgbox(const std::string&, float, int, const std::string&, float, int) override {}
    void pgswin(float, float, float, float) override {}
    void pgsvp(float, float, float, float) override {}
    void pgvsiz(float, float, float, float) override {}
    void pgsubp(int, int) override {}
    void pgpage() override {}
    void pgpanl(int, int) override {}
    void pgline(int n, const float* x, const float* y) override {
        benchmark::DoNotOptimize(n);
        benchmark::DoNotOptimize(x);
        benchmark::DoNotOptimize(y);
    }
    void pgpt(int, const float*, const float*, int) override {}
    void pgmove(float, float) override {}
    void pgdraw(float, float) override {}
    void pgrect(float, float, float, float) override {}
    void pgimag(const float*, int, int, int, int, int, int, float, float, const float*) override {}
    void pgctab(const float*, const float*, const float*, const float*, int, float, float) override {}
    void pgcirc(float, float, float) override {}
    void pgptxt(float, float, float, float, const std::string&) override {}
    void pgtext(float, float, const std::string&) override {}
    void pgeras() override {}
    void pgsci(int) override {}
    void pgsls(int) override {}
    void pgslw(int) override {}
    void pgsfs(int) override {}
    void pgscf(int) override {}
    void pgsch(float) override {}
    void pgscr(int, float, float, float) override {}
    void pgbbuf() override {}
    void pgebuf() override {}
    void pgsave() override {}
    void pgunsa() override {}
    void pgupdt() override {}
    void pgqvp(int, float& a, float& b, float& c, float& d) override { a = c = 0, b = d = 1; }
    void pgqvsz(int, float& a, float& b, float& c, float& d) override { a = c = 0, b = d = 1; }
    void pgqwin(float& a, float& b, float& c, float& d) override { a = c = 0, b = d = 1; }
};

struct NullBuf : std::streambuf {
    int overflow(int c) override { return c; }
};

// A session over `g` in `dir` whose console reads nothing and writes nowhere.
struct QuietSession {
    QuietSession(Graphics& g, const std::string& dir) : s(g, ptr, in, out, dir) {
        s.logo.COLOUR = true;
        s.chara.PAGE_TITLE = "bench 001  01.01  00:00";
    }
    NullBuf sink;
    std::istringstream in;
    std::ostream out{&sink};
    ScriptedPointer ptr;
    Session s;
};

}  // namespace viewer
