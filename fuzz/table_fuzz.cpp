// One table kind of a run (FUZZ_KIND, its place in the catalogue): the input
// is written as that table beside a small valid run, the run is loaded, and
// every row of every page is drawn through the recording graphics. A stop
// on a record that cannot be read is the viewer's answer, not a fault.
#include <cstdio>

#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "core/run_catalogue.hpp"
#include "fuzz/fuzz_support.hpp"
#include "plot/page.hpp"

#ifndef FUZZ_KIND
#define FUZZ_KIND 0
#endif

namespace {

// A short valid beam table, so that plots reading the fuzzed kind with
// others have partners.
void write_partners() {
    using viewer::Kind;
    static bool done = false;
    if (done) return;
    done = true;
    const char* row =
        "  1.0000E-01  0.0000E+00  0.0000E+00  1.0000E+00  1.0000E+00  1.0000E+00  1.0000E+00\n";
    std::string t;
    for (int i = 0; i < 4; ++i) t += row;
    for (Kind k : {Kind::Xemit, Kind::Yemit, Kind::Zemit}) {
        const std::string name = viewer::run_file_name(viewer::run_kind(k), "f", ".001");
        viewer::fuzz::write_file(name, reinterpret_cast<const std::uint8_t*>(t.data()), t.size());
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    const RunKind& kind = run_catalogue()[FUZZ_KIND];
    write_partners();
    const std::string name = run_file_name(kind, "f", ".001");
    fuzz::write_file(name, data, size);

    fuzz::FuzzSession fs;
    Session& s = fs.s;
    s.chara.PROJECT = "f";
    s.chara.RUN = ".001";
    try {
        load_run(s);
        s.logo.TO_FILE = true;  // no fit menu, no question
        for (int page = 1; page <= s.window.N_PAGES; ++page) {
            s.window.PAGE = page;
            page_fill(s);
            for (int code = 1; code <= 41; ++code) {
                const MenuRow* row = find_row(page, code);
                if (!row || !row->plot) continue;
                s.window.SELECTION = code;
                c_pgsubp(s, 1, 1);
                dispatch(s);
            }
        }
    } catch (const RecordError&) {
    } catch (const ProgramStop&) {
    } catch (const EndOfInput&) {
    }
    close_all(s);
    return 0;
}
