// The options of the headless export.
#include "app/command_line.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "core/run_catalogue.hpp"
#include "core/study.hpp"

namespace viewer {
namespace {

bool whole_int(std::string_view t, int& out) {
    const auto r = std::from_chars(t.data(), t.data() + t.size(), out);
    return r.ec == std::errc{} && r.ptr == t.data() + t.size() && !t.empty();
}

// The coordinates of the particle views, as the command line names them.
constexpr const char* kCoordNames = "x, y, z, xp, yp, px, py, pz, E, dE, t";

// Figures of a study, comma-separated; a leading '-' where `signed_ok`.
std::vector<std::string> figure_list(std::string_view text, const char* opt, bool signed_ok) {
    std::vector<std::string> out;
    while (!text.empty()) {
        const auto comma = text.find(',');
        std::string_view f = text.substr(0, comma);
        text = comma == std::string_view::npos ? std::string_view{} : text.substr(comma + 1);
        const std::string_view bare = signed_ok && f.starts_with("-") ? f.substr(1) : f;
        if (figure_index(bare) < 0) {
            std::string known;
            for (const FigureSpec& s : study_figures()) known += (known.empty() ? "" : " ") + s.name;
            throw UsageError(std::string(opt) + ": unknown figure \"" + std::string(f) +
                             "\" (figures: " + known + (signed_ok ? "; -NAME: larger is better" : "") + ")");
        }
        out.emplace_back(f);
    }
    return out;
}

bool valid_plane(std::string_view v) {
    const auto colon = v.find(':');
    if (colon == std::string_view::npos) return false;
    auto known = [](std::string_view c) {
        for (const char* n : {"x", "y", "z", "xp", "yp", "px", "py", "pz", "E", "dE", "t"})
            if (c == n) return true;
        return false;
    };
    return known(v.substr(0, colon)) && known(v.substr(colon + 1));
}

bool whole_real(std::string_view t, float& out) {
    if (!t.empty() && t[0] == '+') t.remove_prefix(1);
    const auto r = std::from_chars(t.data(), t.data() + t.size(), out);
    return r.ec == std::errc{} && r.ptr == t.data() + t.size() && !t.empty() && std::isfinite(out);
}

// "A:B" cut at the colon (or at `sep`).
bool split(std::string_view t, char sep, std::string_view& a, std::string_view& b) {
    const auto p = t.find(sep);
    if (p == std::string_view::npos) return false;
    a = t.substr(0, p);
    b = t.substr(p + 1);
    return true;
}

RowRef row_ref(std::string_view t) {
    std::string_view a, b;
    RowRef r;
    if (!split(t, ':', a, b) || !whole_int(a, r.page) || !whole_int(b, r.code))
        throw UsageError("--plot takes PAGE:ROW, such as 1:2, not \"" + std::string(t) + "\"");
    if (r.page < 1 || r.page > 5)
        throw UsageError("there is no page " + std::to_string(r.page) + " (pages 1 to 5)");
    const bool left = r.code >= 1 && r.code <= 17, right = r.page == 3 && r.code >= 31 && r.code <= 41;
    if (!left && !right)
        throw UsageError("page " + std::to_string(r.page) + " has no row " + std::to_string(r.code) +
                         " (rows 1 to 17, and 31 to 41 on page 3)");
    return r;
}

OutFormat format_of(const std::string& out) {
    const auto dot = out.rfind('.');
    const auto slash = out.rfind('/');
    const std::string ext =
        dot == std::string::npos || (slash != std::string::npos && dot < slash) ? "" : out.substr(dot);
    if (ext == ".ps") return OutFormat::ps;
    if (ext == ".eps") return OutFormat::eps;
    if (ext == ".png") return OutFormat::png;
    if (ext == ".pdf") return OutFormat::pdf;
    throw UsageError("--out " + out + ": the name must end in .ps, .eps, .png or .pdf");
}

// A run number of a list: digits only, 0 to 999.
int run_number(std::string_view t, std::string_view list) {
    int n = -1;
    if (t.empty() || t.find_first_not_of("0123456789") != std::string_view::npos || t.size() > 3 ||
        !whole_int(t, n))
        throw UsageError("--runs takes run numbers 0 to 999 such as 1,3,5 or 2-4,7 or all, not \"" +
                         std::string(list) + "\"");
    return n;
}

// "[DIR/]PROJECT,RUN".
RunList::Item run_item(std::string_view t) {
    const auto comma = t.rfind(',');
    const std::string_view digits = comma == std::string_view::npos ? "" : t.substr(comma + 1);
    RunList::Item item;
    if (!is_run_item(t) || digits.empty() || digits.size() > 3 ||
        digits.find_first_not_of("0123456789") != std::string_view::npos || !whole_int(digits, item.run))
        throw UsageError(
            "--runs takes run numbers (1,3,5 or 2-4,7 or all) or [DIR/]PROJECT,RUN items such as "
            "mesh/gun,1, not \"" +
            std::string(t) + "\"");
    item.project = t.substr(0, comma);
    if (item.project.size() > 80)
        throw UsageError("--runs: \"" + item.project + "\" is longer than 80 characters");
    return item;
}

}  // namespace

RunList parse_run_list(std::string_view text) {
    RunList l;
    if (text == "all") {
        l.all = true;
        return l;
    }
    auto add = [&](int n) {
        if (std::find(l.runs.begin(), l.runs.end(), n) == l.runs.end()) l.runs.push_back(n);
    };
    std::string_view rest = text;
    do {
        const auto comma = rest.find(',');
        const std::string_view item = rest.substr(0, comma);
        rest = comma == std::string_view::npos ? std::string_view{} : rest.substr(comma + 1);
        std::string_view a, b;
        if (split(item, '-', a, b)) {
            const int from = run_number(a, text), to = run_number(b, text);
            for (int n = from;; n += from <= to ? 1 : -1) {
                add(n);
                if (n == to) break;
            }
        } else {
            add(run_number(item, text));
        }
        if (comma != std::string_view::npos && rest.empty()) run_number(rest, text);  // a trailing comma
    } while (!rest.empty());
    return l;
}

bool is_run_item(std::string_view text) {
    const auto comma = text.rfind(',');
    return comma != std::string_view::npos && comma > 0 &&
           text.substr(0, comma).find_first_not_of("0123456789,-") != std::string_view::npos;
}

bool wants_export(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i)
        if (argv[i] && std::string_view(argv[i]).starts_with("--")) return true;
    return false;
}

ExportRequest parse_export(int argc, const char* const* argv) {
    ExportRequest r;
    bool have_out = false;
    for (int i = 1; i < argc; ++i) {
        const std::string a = argv[i] ? argv[i] : "";
        auto value = [&](const char* opt) -> std::string {
            if (i + 1 >= argc || !argv[i + 1]) throw UsageError(std::string(opt) + " needs a value");
            return argv[++i];
        };
        if (!a.starts_with("--")) {
            if (i != 1) throw UsageError("\"" + a + "\": the run argument comes first, before the options");
            r.arg = a;
            r.has_arg = true;
        } else if (a == "--help") {
            r.help = true;
        } else if (a == "--version") {
            r.version = true;
        } else if (a == "--projects") {
            r.projects = true;
        } else if (a == "--list") {
            r.list = true;
        } else if (a == "--plot") {
            r.plots.push_back(row_ref(value("--plot")));
        } else if (a == "--overview") {
            const std::string v = value("--overview");
            if (!whole_int(v, r.overview) || r.overview < 1 || r.overview > 5)
                throw UsageError("--overview takes a page from 1 to 5, not \"" + v + "\"");
        } else if (a == "--out") {
            r.out = value("--out");
            if (r.out.empty()) throw UsageError("--out needs a file name");
            r.format = format_of(r.out);
            have_out = true;
        } else if (a == "--zoom") {
            const std::string v = value("--zoom");
            std::string_view lo, hi;
            if (!split(v, ':', lo, hi) || !whole_real(lo, r.zoom_low) || !whole_real(hi, r.zoom_high))
                throw UsageError("--zoom takes LOW:HIGH, such as 0.5:2, not \"" + v + "\"");
            r.zoom = true;
        } else if (a == "--geometry" || a.starts_with("--geometry=")) {
            r.geometry = true;
            if (a.size() > 11) r.geometry_file = a.substr(11);
            if (r.geometry_file.empty()) throw UsageError("--geometry= needs a file name");
        } else if (a == "--bins") {
            const std::string v = value("--bins");
            if (!whole_int(v, r.bins) || r.bins < 1 || r.bins > 3200)
                throw UsageError("--bins takes a number from 1 to 3200, not \"" + v + "\"");
        } else if (a == "--fit") {
            const std::string v = value("--fit");
            if (!whole_int(v, r.fit) || r.fit < 1 || r.fit > 11)
                throw UsageError("--fit takes a fit of the fit menu, 1 to 11, not \"" + v + "\"");
        } else if (a == "--runs") {
            const std::string v = value("--runs");
            if (!is_run_item(v)) {
                r.runs = parse_run_list(v);
            } else {
                r.runs = RunList{};
                r.runs->items.push_back(run_item(v));
                while (i + 1 < argc && argv[i + 1] && !std::string_view(argv[i + 1]).starts_with("--"))
                    r.runs->items.push_back(run_item(argv[++i]));
            }
        } else if (a == "--csv") {
            r.csv = value("--csv");
            if (r.csv.empty()) throw UsageError("--csv needs a file name");
        } else if (a == "--stats") {
            r.stats = value("--stats");
            if (r.stats.empty()) throw UsageError("--stats needs a file name");
        } else if (a == "--serve") {
            r.serve = true;
            if (i + 1 < argc && argv[i + 1] && !std::string_view(argv[i + 1]).starts_with("--")) {
                const std::string v = argv[++i];
                const auto colon = v.rfind(':');
                const std::string port = colon == std::string::npos ? v : v.substr(colon + 1);
                if (colon != std::string::npos) r.host = v.substr(0, colon);
                if (!whole_int(port, r.port) || r.port < 0 || r.port > 65535 || r.host.empty())
                    throw UsageError(
                        "--serve takes [HOST:]PORT, such as 8765 or 0.0.0.0:8765 (port 0: a free one), "
                        "not \"" +
                        v + "\"");
            }
        } else if (a == "--study") {
            r.study = true;
            while (i + 1 < argc && argv[i + 1] && !std::string_view(argv[i + 1]).starts_with("--"))
                r.study_dirs.push_back(argv[++i]);
        } else if (a == "--figures") {
            r.figures = figure_list(value("--figures"), "--figures", false);
            if (r.figures.empty()) throw UsageError("--figures needs at least one figure");
        } else if (a == "--sort") {
            r.sort = value("--sort");
            figure_list(r.sort, "--sort", true);
        } else if (a == "--front") {
            r.front = figure_list(value("--front"), "--front", true);
            if (r.front.size() < 2 || r.front.size() > 3)
                throw UsageError("--front takes two or three figures, such as NX_EMIT,Z_RMS, not " +
                                 std::to_string(r.front.size()));
        } else if (a == "--scatter") {
            const std::string v = value("--scatter");
            std::string_view x, y;
            if (!split(v, ':', x, y)) throw UsageError("--scatter takes A:B, two figures, not \"" + v + "\"");
            r.scatter_x = x;
            r.scatter_y = y;
            figure_list(r.scatter_x, "--scatter", false);
            figure_list(r.scatter_y, "--scatter", false);
        } else if (a == "--colour") {
            r.colour_by = value("--colour");
            figure_list(r.colour_by, "--colour", false);
        } else if (a == "--table") {
            r.table = value("--table");
            if (!kind_named(r.table))
                throw UsageError("--table takes a table kind, one of " + kind_names() + ", not \"" + r.table +
                                 "\"");
        } else if (a == "--particles") {
            r.particles = value("--particles");
            if (r.particles.empty()) throw UsageError("--particles needs a file's position NNNN or a path");
        } else if (a == "--plane") {
            const std::string v = value("--plane");
            if (!valid_plane(v))
                throw UsageError("--plane takes A:B, two of " + std::string(kCoordNames) + ", not \"" + v +
                                 "\"");
            r.planes.push_back(v);
        } else if (a == "--slices") {
            const std::string v = value("--slices");
            if (!whole_int(v, r.slices) || r.slices < 1 || r.slices > 1000)
                throw UsageError("--slices takes a number of slices from 1 to 1000, not \"" + v + "\"");
        } else if (a == "--along") {
            const std::string v = value("--along");
            if (v != "t" && v != "z") throw UsageError("--along takes t or z, not \"" + v + "\"");
            r.slice_z = v == "z";
            r.along = true;
        } else if (a == "--sheet") {
            r.sheet = true;
        } else if (a == "--lost") {
            r.lost = true;
        } else if (a == "--density") {
            r.density = true;
        } else if (a == "--window") {
            const std::string v = value("--window");
            std::string_view x, y, x1, x2, y1, y2;
            if (!split(v, ',', x, y) || !split(x, ':', x1, x2) || !split(y, ':', y1, y2) ||
                !whole_real(x1, r.window_x1) || !whole_real(x2, r.window_x2) ||
                !whole_real(y1, r.window_y1) || !whole_real(y2, r.window_y2) ||
                !(r.window_x1 < r.window_x2) || !(r.window_y1 < r.window_y2))
                throw UsageError(
                    "--window takes X1:X2,Y1:Y2 with X1 < X2 and Y1 < Y2, such as -2:2,-1:1, not \"" + v +
                    "\"");
            r.window = true;
        } else if (a == "--mono") {
            r.mono = true;
        } else if (a == "--size") {
            const std::string v = value("--size");
            std::string_view w, h;
            if (!split(v, 'x', w, h) || !whole_int(w, r.width) || !whole_int(h, r.height) || r.width < 16 ||
                r.height < 16 || r.width > 20000 || r.height > 20000)
                throw UsageError(
                    "--size takes WIDTHxHEIGHT in pixels (16 to 20000), such as 800x600, not \"" + v + "\"");
        } else {
            throw UsageError("unknown option " + a + " (see --help)");
        }
    }
    if (r.help || r.version) return r;
    if (r.projects) {
        if (r.has_arg || argc > 2)
            throw UsageError("--projects goes alone: it lists what the directory holds");
        return r;
    }
    if (r.serve) {
        if (r.list || !r.plots.empty() || r.overview || have_out || r.runs || !r.csv.empty() ||
            !r.stats.empty())
            throw UsageError("--serve goes alone, after the run argument: the page chooses the plots");
        return r;
    }
    const bool study_options = !r.figures.empty() || !r.sort.empty() || !r.front.empty() ||
                               !r.scatter_x.empty() || !r.colour_by.empty();
    if (r.study) {
        if (r.has_arg || r.list || !r.plots.empty() || r.overview || r.runs || !r.particles.empty() ||
            r.fit || !r.table.empty())
            throw UsageError(
                "--study goes without a run argument, --list, --plot, --overview, --runs, --particles, "
                "--table and --fit");
        if (r.study_dirs.empty()) r.study_dirs.push_back(".");
        if (have_out && r.scatter_x.empty()) throw UsageError("--out draws a --scatter A:B of the study");
        if (!r.colour_by.empty() && r.scatter_x.empty()) throw UsageError("--colour is for --scatter");
        if ((r.width || r.height) && (!have_out || r.format != OutFormat::png))
            throw UsageError("--size is for .png files only");
        return r;
    }
    if (study_options) throw UsageError("--figures, --sort, --front, --scatter and --colour are for --study");
    const bool particle_options =
        !r.planes.empty() || r.slices || r.along || r.sheet || r.lost || r.window || r.density;
    if (!r.particles.empty()) {
        if (r.list || !r.plots.empty() || r.overview || r.runs || r.fit || r.geometry || !r.table.empty())
            throw UsageError(
                "--particles goes without --list, --plot, --overview, --runs, --table, --fit and --geometry");
        if (r.sheet && (!r.planes.empty() || r.slices))
            throw UsageError("--sheet is a page of its own: give it without --plane and --slices");
        if (r.format == OutFormat::eps && r.planes.size() + (r.slices > 0) > 1)
            throw UsageError("an .eps file holds one page: give one view, or write .ps or .pdf");
        if ((r.width || r.height) && (!have_out || r.format != OutFormat::png))
            throw UsageError("--size is for .png files only");
        return r;
    }
    if (particle_options)
        throw UsageError(
            "--plane, --slices, --along, --sheet, --lost, --density and --window are for --particles");
    if (!r.table.empty()) {
        if (r.list || !r.plots.empty() || r.overview || r.runs || have_out || !r.stats.empty() || r.fit)
            throw UsageError("--table goes alone, after the run argument, with --csv FILE at most");
        return r;
    }
    if (r.list) {
        if (!r.plots.empty() || r.overview || r.runs || !r.csv.empty() || !r.stats.empty())
            throw UsageError("--list goes alone, without --plot, --overview, --runs, --csv or --stats");
        return r;
    }
    if (!r.plots.empty() && r.overview) throw UsageError("--plot and --overview go one at a time");
    if (r.plots.empty() && !r.overview)
        throw UsageError("nothing to draw: give --plot PAGE:ROW or --overview PAGE");
    if (!have_out && r.csv.empty() && r.stats.empty()) throw UsageError("no --out FILE given");
    if (r.format == OutFormat::eps && r.plots.size() > 1)
        throw UsageError("an .eps file holds one page: give one --plot, or write .ps or .pdf");
    if ((r.width || r.height) && (!have_out || r.format != OutFormat::png))
        throw UsageError("--size is for .png files only");
    return r;
}

std::string version_line() {
    return std::string("viewer ") + VIEWER_VERSION;
}

}  // namespace viewer
