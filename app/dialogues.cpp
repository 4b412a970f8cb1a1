// Zoom, run stepping and the dialogue after a load without data.
#include "app/dialogues.hpp"

#include <ostream>

#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "core/fortran_format.hpp"

namespace viewer {
namespace {
constexpr int kMaxBins = 3200;  // what the histogram holds
}

ZoomWindow zoom_family(Session& s, int page, int selection) {
    if (page == 3) return {&s.graph.SCAN_LOWER, &s.graph.SCAN_UPPER, &s.logo.ZOOM_SCAN};
    if (page == 2 && selection < 5) return {&s.graph.PHASE_LOWER, &s.graph.PHASE_UPPER, &s.logo.ZOOM_PHASE};
    if (page == 4 && selection > 14) return {&s.graph.TIME_LOWER, &s.graph.TIME_UPPER, &s.logo.ZOOM_TIME};
    return {&s.graph.Z_LOWER, &s.graph.Z_UPPER, &s.logo.ZOOM_Z};
}

void sub_zoom(Session& s) {
    const ZoomWindow w = zoom_family(s, s.window.PAGE, s.window.LAST_SELECTION);
    const double lo = s.con.ask_real("     Lower boundary of abscissa: ");
    const double hi = s.con.ask_real("     Upper boundary of abscissa: ");
    *w.lower = static_cast<float>(lo);
    *w.upper = static_cast<float>(hi);
    *w.zoomed = true;
}

void step_run(Session& s, bool forward) {
    if (forward) {
        if (s.RUN_NUMBER < 999) ++s.RUN_NUMBER;
        s.STEP_BACK = true;
    } else {
        if (s.RUN_NUMBER > 1) --s.RUN_NUMBER;
        s.STEP_FOR = true;
    }
    close_all(s);
    const std::string digits = run_digits(s.RUN_NUMBER);
    s.FNAME = std::string(up_to_blank(s.chara.PROJECT)) + "," + digits;
    s.chara.RUN = "." + digits;
    s.con.out << "     new run number:  " << s.chara.RUN.substr(0, 7) << "\n";
    s.window.SELECTION = s.window.LAST_SELECTION;
    if (s.window.SELECTION != 0) s.logo.SHOW_MENU = false;
}

void load_with_dialogue(Session& s) {
    for (;;) {
        if (load_run(s)) {
            s.STEP_FOR = s.STEP_BACK = false;
            build_page_title(s);
            page_fill(s);
            return;
        }
        std::ostream& out = s.con.out;
        out << "\n     No data files found for: " << trim_right(s.FNAME) << "\n";
        if (s.STEP_BACK || s.STEP_FOR) {
            const bool back = s.STEP_BACK;
            s.con.prompt(back ? "     Step back (Y/N): " : "     Step forward (Y/N): ");
            const std::string answer = s.con.read_line();
            if (upp(answer.substr(0, 1)) == "Y") {
                s.window.SELECTION = back ? 24 : 23;
                s.logo.SHOW_MENU = false;
                s.STEP_FOR = s.STEP_BACK = false;
                return;
            }
            out << "\n";
        }
        s.con.prompt("     Enter input arguments: ");
        s.FNAME = s.con.read_line().substr(0, 80);
        s.LIARG = true;
        parse_arguments(s);
        print_identity(s);
    }
}

void change_bins(Session& s) {
    s.con.out << "     Current number of bins: " << fmt_i(s.graph.N_BINS, 4) << "\n";
    for (;;) {
        const int n = s.con.ask_int("     Enter new number of bins: ");
        if (n >= 1 && n <= kMaxBins) {
            s.graph.N_BINS = n;
            return;
        }
        s.con.out << "     The number of bins must lie between 1 and " << kMaxBins << "\n";
    }
}

}  // namespace viewer
