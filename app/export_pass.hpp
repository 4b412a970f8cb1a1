// The pass of the headless export over one request: the class behind
// `run_export`, shared by the files that carry out its kinds of request.
// Internal to app/.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <string>

#include "app/data_files.hpp"
#include "app/dialogues.hpp"
#include "app/export.hpp"
#include "app/export_files.hpp"
#include "app/pages.hpp"
#include "app/particle_export.hpp"
#include "app/projects.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "app/windows.hpp"
#include "core/fortran_format.hpp"
#include "core/study.hpp"
#include "plot/aperture.hpp"
#include "plot/runs.hpp"

namespace viewer::export_pass {

namespace fs = std::filesystem;

inline std::string row_name(int page, int code) {
    return std::to_string(page) + ":" + std::to_string(code);
}

// The row of a --plot: one that draws.
inline const MenuRow& drawing_row(const RowRef& r) {
    const MenuRow* row = find_row(r.page, r.code);
    if (!row || !row->plot || !row->shown)
        throw UsageError("row " + row_name(r.page, r.code) + " is blank: it draws nothing");
    return *row;
}

// The tables the loaded run lacks for a row, as a user is told them; empty
// when the row can be drawn.
inline std::string lacking(const Session& s, const MenuRow& row, int page) {
    if (page > s.window.N_PAGES) return ".Sigma";
    return available(row, s.fexist) ? "" : row.shown->needs;
}

// Ends PGPLOT on every way out once a device was opened.
struct PgplotEnd {
    Graphics* pg;
    bool open = false;
    ~PgplotEnd() {
        if (open && pg) pg->pgend();
    }
};

// What one run drew of a row, and the numbers of its statistics and fits.
struct RunDraw {
    int run;
    std::vector<DrawCall> calls;
    Reports numbers;
};

class Export {
public:
    Export(Session& s, Capture& cap, const ExportRequest& r, std::ostream& err)
        : s_(s), cap_(cap), r_(r), end_{cap.device()}, device_(cap.device()), err_(err) {}

    int run(const std::tm& now) {
        set_up(now);
        if (!r_.particles.empty()) return particles();
        if (!r_.table.empty()) return table();
        if (r_.study) return study();
        if (r_.runs) {
            runs_ = r_.runs->all ? runs_in_directory(s_, up_to_blank(s_.chara.PROJECT)) : r_.runs->runs;
            if (!r_.runs->items.empty()) item_names();
            if (runs_.empty()) throw ExportFailure("no runs of project " + project() + " in " + where());
            base_ = -1;
            for (int n : runs_)
                if (load(n)) {
                    base_ = n;
                    break;
                }
            if (base_ < 0)
                throw ExportFailure("no data files of project " + project() + " for the runs listed");
        } else if (!load_run(s_)) {
            throw ExportFailure("no data files of project " + project() + ", run " +
                                s_.chara.RUN.substr(1, 3) + " in " + where());
        }
        if (r_.list) {
            list_rows(s_);
            list_particle_files(s_);
            return 0;
        }
        check_rows();
        prepare_files();
        if (r_.overview) {
            sheet();
        } else {
            for (std::size_t k = 0; k < r_.plots.size(); ++k) plot(r_.plots[k], static_cast<int>(k) + 1);
        }
        finish();
        return status_;
    }

private:
    std::string project() const { return std::string(up_to_blank(s_.chara.PROJECT)); }
    std::string where() const { return fs::absolute(s_.dir).lexically_normal().string(); }
    bool drawing() const { return !r_.out.empty(); }
    bool keeping() const { return !r_.csv.empty() || !r_.stats.empty(); }

    void set_up(const std::tm& now) {
        set_date(s_, now);
        if (r_.window_config) set_win_config(s_);  // the look only: this mode never writes the file
        if (r_.has_arg) {
            s_.FNAME = r_.arg.substr(0, 80);
            parse_arguments(s_);
        } else {
            s_.chara.PROJECT = "rfgun";
            s_.chara.RUN = ".001";
            s_.RUN_NUMBER = 1;
        }
        build_page_title(s_);
    }

    // Makes run `n` the current one; false when it has no data.
    bool load(int n) {
        close_all(s_);
        if (!items_.empty()) {
            // an item: the project with its folder, as the file names are formed
            s_.chara.PROJECT = items_[static_cast<std::size_t>(n)].project;
            n = items_[static_cast<std::size_t>(n)].run;
        }
        s_.RUN_NUMBER = n;
        s_.chara.RUN = "." + run_digits(n);
        build_page_title(s_);
        return load_run(s_);
    }

    void check_rows() {
        for (const RowRef& ref : r_.plots) {
            const MenuRow& row = drawing_row(ref);
            if (r_.runs && !along_z(ref.page, ref.code))
                throw UsageError("row " + row_name(ref.page, ref.code) + " (\"" + row.text +
                                 "\") shows one run: --runs lays runs over each other on the rows drawn "
                                 "against z only");
            if (!r_.runs && !lacking(s_, row, ref.page).empty())
                throw UsageError("row " + row_name(ref.page, ref.code) + " (\"" + row.text +
                                 "\") is not available for this run: it needs " + lacking(s_, row, ref.page));
        }
        if (!r_.runs && r_.overview > s_.window.N_PAGES)
            throw UsageError("page " + std::to_string(r_.overview) +
                             " is not available for this run: it needs .Sigma");
    }

    void prepare_files() {
        if (drawing() && r_.format == OutFormat::pdf && !on_path("gs"))
            throw ExportFailure("writing " + r_.out + " needs ghostscript (gs), which is not installed");
        if (r_.geometry) {
            const std::string g = s_.path(r_.geometry_file);
            if (!fs::is_regular_file(g)) throw ExportFailure("no aperture file " + g);
            load_geom_file(s_, g);
            s_.logo.GEOMETRY_LOADED = true;
            s_.logo.WITH_GEOMETRY = true;
        }
        if (r_.bins) s_.graph.N_BINS = r_.bins;
        for (const std::string* f : {&r_.out, &r_.csv, &r_.stats})
            if (!f->empty()) check_writable(s_.path(*f));
        if (!r_.stats.empty()) s_.reports = &numbers_;

        s_.logo.COLOUR = !r_.mono;
        s_.logo.TO_FILE = true;
        s_.logo.SHOW_MENU = false;
        s_.FIT_PICK = r_.fit;
        cap_.target(nullptr);  // nothing drawn until a device is open
        if (drawing() && (r_.format != OutFormat::png || r_.overview)) open_device(s_.path(r_.out));
    }

    // The file device for `target`, through the capture.
    void open_device(const std::string& target) {
        file_ = target;
        if (r_.format == OutFormat::pdf) file_ = target + ".ps";  // converted at the end, then removed
        if (r_.format == OutFormat::png && r_.width) {
            ::setenv("PGPLOT_PNG_WIDTH", std::to_string(r_.width).c_str(), 1);
            ::setenv("PGPLOT_PNG_HEIGHT", std::to_string(r_.height).c_str(), 1);
        }
        const char* type = r_.format == OutFormat::png ? "/PNG" : r_.mono ? "/PS" : "/CPS";
        s_.chara.FILE_SPEC = file_ + type;
        cap_.target(device_);
        s_.window.FILE_DEVICE = cap_.pgopen(s_.chara.FILE_SPEC);
        end_.open = true;
        if (s_.window.FILE_DEVICE <= 0)
            throw ExportFailure("cannot write " + file_ + ": the graphics library refused it");
        set_hardcopy_look(s_);
        s_.raster_foot = r_.format == OutFormat::png;
        if (r_.format == OutFormat::png && r_.width)
            cap_.pgpap(0.0f, static_cast<float>(r_.height) / static_cast<float>(r_.width));
    }

    void close_device() {
        if (!cap_.device()) return;
        cap_.pgclos();
        cap_.target(nullptr);
    }

    void prepare(int page, int code) {
        s_.window.PAGE = page;
        page_fill(s_);
        if (r_.zoom) {
            const ZoomWindow w = zoom_family(s_, page, code);
            *w.lower = r_.zoom_low;
            *w.upper = r_.zoom_high;
            *w.zoomed = true;
        }
        s_.logo.FIT_REQUESTED = r_.fit > 0;
    }

    // The plot bracket of one pass of the main loop, on the file device.
    void begin_row(bool first_of_sheet) {
        cap_.pgslct(s_.window.FILE_DEVICE);
        if (!s_.logo.OVERVIEW) c_pgsubp(s_, 1, 1);
        if (s_.logo.OVERVIEW && first_of_sheet) c_pgsubp(s_, 3, 3);
        cap_.pgsave();
        cap_.pgbbuf();
    }
    void end_row() {
        cap_.pgebuf();
        cap_.pgupdt();
        cap_.pgunsa();
    }

    // The row as the loaded run draws it, kept when its numbers are asked for.
    RunDraw draw_row(int page, int code) {
        prepare(page, code);
        s_.window.SELECTION = code;
        cap_.record(keeping());
        dispatch(s_);
        cap_.record(false);
        RunDraw d{base_run(), cap_.take(), std::move(numbers_)};
        numbers_.clear();
        return d;
    }

    void plot(const RowRef& ref, int index) {
        if (drawing() && r_.format == OutFormat::png) open_device(numbered(s_.path(r_.out), index));
        s_.window.PAGE = ref.page;
        page_fill(s_);
        s_.con.out << " " << std::string(74, '-') << "\n"
                   << " " << echo_text(s_, ref.code) << "\n";
        if (r_.runs) {
            if (!over_runs(ref.page, ref.code, false))
                throw ExportFailure("no run of the list has the tables of row " +
                                    row_name(ref.page, ref.code));
        } else {
            begin_row(false);
            std::vector<RunDraw> one;
            one.push_back(draw_row(ref.page, ref.code));
            end_row();
            keep(ref.page, ref.code, one);
        }
        if (drawing() && r_.format == OutFormat::png) close_device();
    }

    void sheet() {
        s_.logo.OVERVIEW = true;
        for (int code = 1; code <= 9; ++code) {
            if (r_.runs && along_z(r_.overview, code) && over_runs(r_.overview, code, code == 1)) continue;
            if (r_.runs) load(base_);
            begin_row(code == 1);
            std::vector<RunDraw> one;
            one.push_back(draw_row(r_.overview, code));
            end_row();
            keep(r_.overview, code, one);
        }
        s_.logo.OVERVIEW = false;
        if (r_.runs) s_.chara.PAGE_TITLE = foot(runs_);
        title(s_);
    }

    // The other requests of the export, each a pass of its own.
    int study();
    int particles();
    int table();

    int base_run() const { return r_.runs ? run_of(base_) : s_.RUN_NUMBER; }

    // The runs of --runs items: their places in the list stand for them.
    void item_names() {
        items_ = r_.runs->items;
        std::vector<StudyRun> runs;
        runs_.clear();
        for (const RunList::Item& it : items_) {
            runs_.push_back(static_cast<int>(runs.size()));
            StudyRun r;
            const auto slash = it.project.rfind('/');
            r.root = ".";
            r.folder = slash == std::string::npos ? "." : it.project.substr(0, slash);
            r.project = slash == std::string::npos ? it.project : it.project.substr(slash + 1);
            r.run = it.run;
            runs.push_back(r);
        }
        names_ = shortest_names(runs);
    }
    int run_of(int n) const { return items_.empty() ? n : items_[static_cast<std::size_t>(n)].run; }
    std::string label_of(int n) const {
        return items_.empty() ? "run " + run_digits(n) : names_[static_cast<std::size_t>(n)];
    }

    // The row drawn for every run of the list that has its tables, laid on
    // one frame; false when none has them.
    bool over_runs(int page, int code, bool first_of_sheet) {
        const MenuRow& row = *find_row(page, code);
        std::vector<RunDraw> kept;
        std::vector<RunPage> pages;
        Graphics* device = cap_.device();
        const bool colour = s_.logo.COLOUR;
        for (int n : runs_) {
            const std::string label = label_of(n);
            std::string lacks = load(n) ? lacking(s_, row, page) : row.shown->needs;
            if (!lacks.empty()) {
                err_ << "viewer: " << label << " is left out of row " << row_name(page, code)
                     << ": it has no " << lacks << "\n";
                continue;
            }
            s_.con.out << "     " << label << "\n";
            cap_.target(nullptr);    // each run is kept, then all are drawn at once
            s_.logo.COLOUR = false;  // the curves of a run told apart by line style
            cap_.record(true);
            prepare(page, code);
            s_.window.SELECTION = code;
            dispatch(s_);
            cap_.record(false);
            s_.logo.COLOUR = colour;
            cap_.target(device);
            pages.push_back({label, cap_.take()});
            kept.push_back({run_of(n), pages.back().calls, std::move(numbers_)});
            numbers_.clear();
        }
        if (pages.empty()) return false;
        std::vector<int> numbers;
        for (const RunDraw& k : kept) numbers.push_back(k.run);
        if (!items_.empty()) numbers = runs_;
        begin_row(first_of_sheet);
        draw_runs(s_, pages, foot(numbers));
        end_row();
        keep(page, code, kept);
        return true;
    }

    // "rfgun 001,002,003  24.11  09:05"
    std::string foot(const std::vector<int>& runs) const {
        if (!items_.empty()) return std::to_string(items_.size()) + " runs  " + s_.DATE.substr(4, 12);
        std::string list;
        if (runs.size() <= 6) {
            for (int n : runs) list += (list.empty() ? "" : ",") + run_digits(n);
        } else {
            list = run_digits(runs.front()) + "..." + run_digits(runs.back());
        }
        return project() + " " + list + "  " + s_.DATE.substr(4, 12);
    }

    // The points and numbers of one plot, a run at a time.
    void keep(int page, int code, const std::vector<RunDraw>& runs) {
        const MenuRow* row = find_row(page, code);
        if (!keeping() || !row || !row->plot) return;  // a blank row of a sheet draws nothing
        std::vector<Figure> figures;
        for (const RunDraw& r : runs) figures.push_back(figure_of(r.calls));
        const Figure none;
        const auto columns = columns_of(page, code, figures.empty() ? none : figures.front());
        if (!r_.csv.empty()) {
            const bool wide = shares_abscissae(figures);
            std::vector<PointTable> tables;
            std::vector<int> numbers;
            for (std::size_t k = 0; k < figures.size(); ++k) {
                tables.push_back(point_table(figures[k], columns, wide));
                numbers.push_back(runs[k].run);
            }
            const std::string name = numbered(s_.path(r_.csv), ++csv_files_);
            std::ofstream file(name, std::ios::binary | std::ios::trunc);
            write_csv(file, tables, r_.runs ? std::span<const int>(numbers) : std::span<const int>());
            file.close();
            if (!file) throw ExportFailure("cannot write " + name + ": " + std::strerror(errno));
        }
        if (r_.stats.empty()) return;
        s_.window.PAGE = page;
        page_fill(s_);
        for (std::size_t k = 0; k < figures.size(); ++k)
            reports_.push_back({row_name(page, code), echo_text(s_, code),
                                figures[k].panels.empty() ? "" : plain_label(figures[k].panels.front().top),
                                runs[k].run, columns, runs[k].numbers});
    }

    void finish() {
        finish_files();
        if (!r_.stats.empty()) write_file(s_.path(r_.stats), stats_json(project(), reports_));
        s_.con.out.flush();
    }

    // The device closed, and the PostScript turned into PDF where asked.
    void finish_files() {
        close_device();
        s_.logo.TO_FILE = false;
        s_.reports = nullptr;
        if (drawing() && r_.format == OutFormat::pdf) {
            const std::string target = s_.path(r_.out);
            const bool ok = to_pdf(file_, target);
            std::error_code ec;
            fs::remove(file_, ec);
            if (!ok) throw ExportFailure("ghostscript could not turn the plots into " + target);
        }
        s_.con.out.flush();
    }

    Session& s_;
    Capture& cap_;
    const ExportRequest& r_;
    PgplotEnd end_;
    Graphics* device_;  // the file device the capture passes drawing on to
    std::ostream& err_;
    std::string file_;
    std::vector<int> runs_;  // run numbers, or places in `items_`
    std::vector<RunList::Item> items_;
    std::vector<std::string> names_;  // of the items, as short as tells them apart
    int base_ = 0;
    int status_ = 0;
    int csv_files_ = 0;
    Reports numbers_;
    std::vector<PlotReport> reports_;
};

}  // namespace viewer::export_pass
