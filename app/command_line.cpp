// The options of the headless export.
#include "app/command_line.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace viewer {
namespace {

bool whole_int(std::string_view t, int& out) {
    const auto r = std::from_chars(t.data(), t.data() + t.size(), out);
    return r.ec == std::errc{} && r.ptr == t.data() + t.size() && !t.empty();
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
            r.runs = parse_run_list(value("--runs"));
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

std::string export_usage() {
    return version_line() + R"(
usage: viewer [ARG] --plot PAGE:ROW [--plot PAGE:ROW ...] --out FILE [options]
       viewer [ARG] --overview PAGE --out FILE [options]
       viewer [ARG] --list
       viewer [ARG] --serve [[HOST:]PORT]
       viewer --projects
       viewer --help | --version

Draws menu rows or the nine-panel overview sheet of a page into a file,
without a window. ARG names project and run as for the interactive viewer
(name, name., name,nnn, name.,nnn; default rfgun, run 001).

  --plot PAGE:ROW      a menu row: page 1 to 5, row 1 to 17, or 31 to 41 for
                       the right column of page 3; one page per --plot
  --overview PAGE      the overview sheet of the page (rows 1 to 9)
  --out FILE           .ps colour PostScript, .eps one encapsulated page,
                       .png (several plots: NAME.png, NAME_2.png, ...), .pdf
  --list               the rows this run offers, with their PAGE:ROW
  --projects           the projects with run tables in this directory, their
                       runs and the tables of each run
  --zoom LOW:HIGH      the abscissa window of each plot's family
  --geometry[=FILE]    lay the aperture outline over the plots (Geometry.dat)
  --bins N             bins of the histograms, 1 to 3200
  --fit PICK           fit of the fit menu on every plot that offers one:
                       1 A/r, 2 square root, 3 straight line, 4 parabolic,
                       5 power, 6 exponential, 7 mod. exponential,
                       8 3rd order polynom, 9 odd polynom, 10 gauss,
                       11 double gauss
  --mono               curves told apart by line style
  --size WxH           pixels of a .png page
  --runs LIST          several runs of the project on one plot: 1,3,5 or 1-5
                       or 2-4,7 or all (every run in the directory); each run
                       in its own colour with a key, for the rows drawn against z
  --csv FILE           the points of each plot as drawn, one CSV file a plot
                       (FILE, then NAME_2.csv, NAME_3.csv, ...); without --out
                       nothing is drawn
  --stats FILE         the statistics blocks and fit reports as JSON
  --serve [[HOST:]PORT]  the run in a browser, redrawn while the tracker
                       writes (default 127.0.0.1:8765; port 0: a free one);
                       prints the URL with its token, runs until interrupted

Statistics and fit reports go to standard output as in an interactive pass,
one block a run with --runs.
Exit status: 0 done, 1 no data, a file that cannot be read or written,
2 a command line that cannot be carried out.
)";
}

}  // namespace viewer
