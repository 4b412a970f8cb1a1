// The main loop: one pass shows the menu (unless a redraw is pending),
// selects the device, opens the plot bracket, dispatches one row, closes
// the bracket and finishes a hardcopy or advances an overview.
#include "app/main_loop.hpp"

#include <ostream>
#include <string>

#include "app/dialogues.hpp"
#include "app/hardcopy.hpp"
#include "app/menu.hpp"
#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "app/windows.hpp"
#include "core/run_files.hpp"

namespace viewer {
namespace {

enum class PassEnd { next, exit };

void close_bracket(Session& s) {
    s.pg.pgebuf();
    s.pg.pgupdt();
    s.pg.pgunsa();
}

// Ends a session from anywhere in the loop: run files closed, configuration
// brought up to date, PGPLOT ended.
void end_session(Session& s) {
    close_all(s);
    end_prog(s);
}

// Redraw of the plot on show, without the menu.
void redraw(Session& s) {
    s.logo.SHOW_MENU = false;
    s.window.SELECTION = s.window.LAST_SELECTION;
}

void hardcopy(Session& s, bool overview) {
    close_bracket(s);
    if (overview) {
        s.logo.OVERVIEW = true;
        s.logo.SHOW_MENU = false;
        s.logo.TO_FILE = true;
    }
    if (!open_file(s)) {
        // Nothing to draw into: the plot window keeps what it shows.
        s.logo.OVERVIEW = false;
        s.logo.TO_FILE = false;
        s.logo.SHOW_MENU = true;
        return;
    }
    if (overview) {
        s.window.SELECTION = 1;
        s.ID_START = s.window.LAST_SELECTION;
    } else {
        s.logo.SHOW_MENU = false;
        s.logo.TO_FILE = true;
        s.window.SELECTION = s.window.LAST_SELECTION;
    }
}

PassEnd pass(Session& s) {
    Window& w = s.window;
    Logo& logo = s.logo;
    std::ostream& out = s.con.out;

    write_geometry_row(s);
    if (logo.SHOW_MENU) {
        w.SELECTION = 0;
        logo.COLOUR = true;
        s.pg.pgslct(w.MENU_DEVICE);
        w.SELECTION = menu(s, w.LAST_SELECTION, w.PAGE, w.N_PAGES, NBOX);
        out << " " << std::string(74, '-') << "\n";
        if (w.SELECTION > 0) out << " " << echo_text(s, w.SELECTION) << "\n";
        if (w.SELECTION == 0) {
            // The device gives no cursor: nothing more can be chosen.
            out << "     No cursor in the menu window: the session ends\n";
            return PassEnd::exit;
        }
    }
    logo.SHOW_MENU = true;

    if (logo.OVERVIEW && w.SELECTION == 1) {
        s.pg.pgslct(w.FILE_DEVICE);
        c_pgsubp(s, 3, 3);
    } else if (!logo.TO_FILE) {
        logo.COLOUR = true;
        s.pg.pgslct(w.PLOT_DEVICE);
        c_pgsubp(s, 1, 1);
    } else {
        s.pg.pgslct(w.FILE_DEVICE);
    }

    s.pg.pgsave();
    s.pg.pgbbuf();
    if (w.SELECTION == -1) {
        w.LAST_SELECTION = 0;
        w.PAGE = w.PAGE >= w.N_PAGES ? 1 : w.PAGE + 1;
        s.pg.pgebuf();
        s.pg.pgunsa();
        page_fill(s);
        return PassEnd::next;
    }

    dispatch(s);

    const int code = w.SELECTION;
    if (w.PAGE == 3 && code == 15) {
        if (s.fexist.Error_EXISTS) {
            change_bins(s);
            redraw(s);
        }
    } else if (w.PAGE == 3 && code == 16) {
        change_title(s);
        redraw(s);
    } else if (code == 18) {
        if (w.PAGE != 3) {
            logo.WITH_GEOMETRY = !logo.WITH_GEOMETRY;
            redraw(s);
        }
    } else if (code == 19) {
        sub_zoom(s);
        redraw(s);
    } else if (code == 20) {
        logo.FIT_REQUESTED = true;
        redraw(s);
    } else if (code == 21 || code == 22) {
        hardcopy(s, code == 22);
        return PassEnd::next;
    } else if (code == 23 || code == 24) {
        step_run(s, code == 23);
        s.pg.pgebuf();
        s.pg.pgunsa();
        load_with_dialogue(s);
        return PassEnd::next;
    } else if (code == 25) {
        return PassEnd::exit;
    }

    close_bracket(s);

    if (logo.OVERVIEW) {
        ++w.SELECTION;
        logo.SHOW_MENU = false;
        if (w.SELECTION >= 10) {
            logo.OVERVIEW = false;
            logo.SHOW_MENU = true;
            title(s);
            w.LAST_SELECTION = s.ID_START;
            finish_file(s);
        }
    } else if (logo.TO_FILE) {
        finish_file(s);
    }
    return PassEnd::next;
}

}  // namespace

int run_viewer(Session& s, int argc, const char* const* argv, const std::tm& now) {
    bool pgplot_open = false;
    try {
        start_prog(s, argc, argv, now);
        open_window(s);
        pgplot_open = true;
        if (s.LIARG) parse_arguments(s);
        print_identity(s);
        load_with_dialogue(s);
        while (pass(s) == PassEnd::next) {
        }
        end_session(s);
        return 0;
    } catch (const ProgramStop& stop) {
        return stop.status;
    } catch (const EndOfInput&) {
        s.con.out << "\n     End of input: the session ends\n";
        s.con.out.flush();
        if (pgplot_open) {
            try {
                end_session(s);
            } catch (const ProgramStop& stop) {
                return stop.status;
            }
        }
        return 0;
    } catch (const RecordError& e) {
        s.con.out << "\n          Error reading ";
        for (std::size_t u = 0; u < s.units.size(); ++u)
            if (s.units[u].is_open() && s.units[u].name() == e.file) s.con.out << "unit " << u << ", ";
        s.con.out << "file: " << e.file << ", line " << e.line;
        if (e.column > 0) s.con.out << ", column " << e.column;
        s.con.out << ": " << e.what() << "\n          Program stops\n\n";
        s.con.out.flush();
        return 0;
    }
}

}  // namespace viewer
