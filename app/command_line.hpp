// The options of the headless export: which rows or overview sheet to draw,
// into which file, with which zoom, outline, bins, fit and look.
//
//   viewer [ARG] --plot PAGE:ROW [--plot PAGE:ROW ...] --out FILE [options]
//   viewer [ARG] --overview PAGE --out FILE [options]
//   viewer [ARG] --list
//   viewer [ARG] --serve [[HOST:]PORT]
//   viewer --projects
//   viewer --version
//   viewer --help
// --runs LIST lays several runs on one plot; --csv and --stats write the
// numbers behind the plots.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace viewer {

// A command line that cannot be carried out as written: exit status 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The file kinds an export writes, by the extension of --out.
enum class OutFormat { ps, eps, png, pdf };

struct RowRef {
    int page = 0;
    int code = 0;  // 1..17 left column, 31..41 right column
};

// The runs of --runs: in the order given, or every run of the project
// found in the directory.
struct RunList {
    bool all = false;
    std::vector<int> runs;  // 0..999, each once
};

// "1,3,5", "1-5", "2-4,7", "5-3" (downwards) or "all"; throws UsageError.
RunList parse_run_list(std::string_view text);

struct ExportRequest {
    std::string arg;  // the usual first argument; empty: rfgun, run 001
    bool has_arg = false;
    bool help = false;
    bool version = false;
    bool list = false;
    bool projects = false;      // --projects: the projects and runs of the directory
    std::vector<RowRef> plots;  // in the order given, one page each
    int overview = 0;           // page of the sheet; 0: none
    std::string out;            // --out
    OutFormat format = OutFormat::ps;
    bool zoom = false;
    float zoom_low = 0, zoom_high = 0;  // in the abscissa unit of each plot's family
    bool geometry = false;
    std::string geometry_file = "Geometry.dat";
    int bins = 0;  // 0: as configured
    int fit = 0;   // fit-menu pick 1..11; 0: none
    bool mono = false;
    int width = 0, height = 0;    // PNG pixels; 0: the device's own
    std::optional<RunList> runs;  // --runs
    std::string csv;              // --csv FILE: the points of each plot
    std::string stats;            // --stats FILE: statistics and fits as JSON
    bool window_config = true;    // the look from win_config.dat; false: the defaults
    bool serve = false;           // --serve: the browser view
    std::string host = "127.0.0.1";
    int port = 8765;
};

// True when the command line asks for the headless export (any argument
// starting with "--"); otherwise the interactive viewer runs as always.
bool wants_export(int argc, const char* const* argv);

// Reads the options; throws UsageError with a message that names what is wrong.
ExportRequest parse_export(int argc, const char* const* argv);

// The text of --help.
std::string export_usage();

// "viewer 1.0.0", as --version prints it.
std::string version_line();

}  // namespace viewer
