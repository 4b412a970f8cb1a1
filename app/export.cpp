// The headless front end beside the main loop, on the same page rows.
#include "app/export.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>

#include "app/dialogues.hpp"
#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "app/windows.hpp"
#include "core/fortran_format.hpp"
#include "plot/aperture.hpp"

namespace viewer {
namespace {

namespace fs = std::filesystem;

// A failure of the export that is not the command line's: exit status 1.
struct ExportFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string row_name(const RowRef& r) {
    return std::to_string(r.page) + ":" + std::to_string(r.code);
}

// The row of a --plot, checked against the pages and the tables of the run.
const MenuRow& plot_row(Session& s, const RowRef& r) {
    const MenuRow* row = find_row(r.page, r.code);
    if (!row || !row->plot || !row->shown)
        throw UsageError("row " + row_name(r) + " is blank: it draws nothing");
    if (!available(*row, s.fexist) || r.page > s.window.N_PAGES)
        throw UsageError("row " + row_name(r) + " (\"" + row->text +
                         "\") is not available for this run: it needs " +
                         (r.page > s.window.N_PAGES ? ".Sigma" : row->shown->needs));
    return *row;
}

bool on_path(const char* program) {
    const char* path = std::getenv("PATH");
    std::string_view rest = path ? path : "/usr/bin:/bin";
    while (!rest.empty()) {
        const auto colon = rest.find(':');
        const fs::path dir(std::string(rest.substr(0, colon)));
        if (::access((dir / program).c_str(), X_OK) == 0) return true;
        rest = colon == std::string_view::npos ? std::string_view{} : rest.substr(colon + 1);
    }
    return false;
}

// Fails unless `path` can be written, with the system's reason.
void check_writable(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "a");
    if (!f) throw ExportFailure("cannot write " + path + ": " + std::strerror(errno));
    std::fclose(f);
}

void list_rows(Session& s) {
    std::ostream& out = s.con.out;
    for (int page = 1; page <= s.window.N_PAGES; ++page) {
        s.window.PAGE = page;
        page_fill(s);
        out << "page " << page << "\n";
        for (int code = 1; code <= 41; ++code) {
            const MenuRow* row = find_row(page, code);
            if (!row || !available(*row, s.fexist)) continue;
            const std::string ref = row_name({page, code});
            out << "  " << ref << std::string(ref.size() < 7 ? 7 - ref.size() : 1, ' ') << echo_text(s, code)
                << "\n";
        }
    }
}

// PostScript to PDF through ghostscript, without a shell between.
bool to_pdf(const std::string& ps, const std::string& pdf) {
    const std::string out = "-sOutputFile=" + pdf;
    const char* argv[] = {"gs",        "-q",       "-dSAFER", "-dBATCH", "-dNOPAUSE", "-sDEVICE=pdfwrite",
                          out.c_str(), ps.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int rc = posix_spawnp(&pid, "gs", &quiet, nullptr, const_cast<char* const*>(argv), environ);
    posix_spawn_file_actions_destroy(&quiet);
    if (rc != 0) return false;
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Ends PGPLOT on every way out once a device was opened.
struct PgplotEnd {
    Graphics& pg;
    bool open = false;
    ~PgplotEnd() {
        if (open) pg.pgend();
    }
};

// One pass of the main loop onto the file device: the plot bracket around
// the dispatch of one row.
void draw_row(Session& s, int code, bool first_of_sheet) {
    Graphics& pg = s.pg;
    s.window.SELECTION = code;
    pg.pgslct(s.window.FILE_DEVICE);
    if (!s.logo.OVERVIEW) c_pgsubp(s, 1, 1);
    if (s.logo.OVERVIEW && first_of_sheet) c_pgsubp(s, 3, 3);
    pg.pgsave();
    pg.pgbbuf();
    dispatch(s);
    pg.pgebuf();
    pg.pgupdt();
    pg.pgunsa();
}

int export_run(Session& s, const ExportRequest& r, const std::tm& now) {
    set_date(s, now);
    set_win_config(s);  // the look only: this mode never writes the file
    if (r.has_arg) {
        s.FNAME = r.arg.substr(0, 80);
        parse_arguments(s);
    } else {
        s.chara.PROJECT = "rfgun";
        s.chara.RUN = ".001";
        s.RUN_NUMBER = 1;
    }
    build_page_title(s);
    if (!load_run(s))
        throw ExportFailure("no data files of project " + std::string(up_to_blank(s.chara.PROJECT)) +
                            ", run " + s.chara.RUN.substr(1, 3) + " in " +
                            fs::absolute(s.dir).lexically_normal().string());
    if (r.list) {
        list_rows(s);
        return 0;
    }

    for (const RowRef& ref : r.plots) plot_row(s, ref);
    if (r.overview > s.window.N_PAGES)
        throw UsageError("page " + std::to_string(r.overview) +
                         " is not available for this run: it needs .Sigma");
    if (r.format == OutFormat::pdf && !on_path("gs"))
        throw ExportFailure("writing " + r.out + " needs ghostscript (gs), which is not installed");
    if (r.geometry) {
        const std::string g = s.path(r.geometry_file);
        if (!fs::is_regular_file(g)) throw ExportFailure("no aperture file " + g);
        load_geom_file(s, g);
        s.logo.GEOMETRY_LOADED = true;
        s.logo.WITH_GEOMETRY = true;
    }
    if (r.bins) s.graph.N_BINS = r.bins;

    const std::string target = s.path(r.out);
    check_writable(target);
    std::string file = target;
    if (r.format == OutFormat::pdf) file = target + ".ps";  // converted below, then removed
    if (r.format == OutFormat::png && r.width) {
        ::setenv("PGPLOT_PNG_WIDTH", std::to_string(r.width).c_str(), 1);
        ::setenv("PGPLOT_PNG_HEIGHT", std::to_string(r.height).c_str(), 1);
    }
    const char* type = r.format == OutFormat::png ? "/PNG" : r.mono ? "/PS" : "/CPS";
    s.chara.FILE_SPEC = file + type;

    PgplotEnd end{s.pg};
    s.window.FILE_DEVICE = s.pg.pgopen(s.chara.FILE_SPEC);
    end.open = true;
    if (s.window.FILE_DEVICE <= 0)
        throw ExportFailure("cannot write " + file + ": the graphics library refused it");
    s.logo.COLOUR = !r.mono;
    s.logo.TO_FILE = true;
    s.logo.SHOW_MENU = false;
    set_hardcopy_look(s);
    if (r.format == OutFormat::png && r.width)
        s.pg.pgpap(0.0f, static_cast<float>(r.height) / static_cast<float>(r.width));

    s.FIT_PICK = r.fit;
    auto prepare = [&](int page, int code) {
        s.window.PAGE = page;
        page_fill(s);
        if (r.zoom) {
            const ZoomWindow w = zoom_family(s, page, code);
            *w.lower = r.zoom_low;
            *w.upper = r.zoom_high;
            *w.zoomed = true;
        }
        s.logo.FIT_REQUESTED = r.fit > 0;
    };
    if (r.overview) {
        s.logo.OVERVIEW = true;
        for (int code = 1; code <= 9; ++code) {
            prepare(r.overview, code);
            draw_row(s, code, code == 1);
        }
        s.logo.OVERVIEW = false;
        title(s);
    } else {
        for (const RowRef& ref : r.plots) {
            prepare(ref.page, ref.code);
            s.con.out << " " << std::string(74, '-') << "\n"
                      << " " << echo_text(s, ref.code) << "\n";
            draw_row(s, ref.code, false);
        }
    }
    s.pg.pgclos();
    s.logo.TO_FILE = false;

    if (r.format == OutFormat::pdf) {
        const bool ok = to_pdf(file, target);
        std::error_code ec;
        fs::remove(file, ec);
        if (!ok) throw ExportFailure("ghostscript could not turn the plots into " + target);
    }
    s.con.out.flush();
    return 0;
}

}  // namespace

int run_export(Session& s, const ExportRequest& r, const std::tm& now, std::ostream& err) {
    if (r.help) {
        s.con.out << export_usage();
        return 0;
    }
    try {
        return export_run(s, r, now);
    } catch (const UsageError& e) {
        err << "viewer: " << e.what() << "\n";
        return 2;
    } catch (const ExportFailure& e) {
        err << "viewer: " << e.what() << "\n";
        return 1;
    } catch (const RecordError& e) {
        err << "viewer: cannot read " << e.message() << "\n";
        return 1;
    } catch (const ProgramStop&) {
        s.con.out.flush();
        err << "viewer: stopped; the reason is on standard output\n";
        return 1;
    } catch (const EndOfInput&) {
        err << "viewer: a plot asked a question, which this mode cannot answer\n";
        return 1;
    }
}

}  // namespace viewer
