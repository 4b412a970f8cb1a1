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
    // Runs of other projects and folders: "[DIR/]PROJECT,RUN" items, the
    // project with its folder as the file names are formed from it.
    struct Item {
        std::string project;  // "mesh/gun_n=16"
        int run = 0;
    };
    std::vector<Item> items;  // when given, `runs` is empty
};

// True when `text` is a "[DIR/]PROJECT,RUN" item rather than a list of runs.
bool is_run_item(std::string_view text);

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
    // Studies: --study [DIR ...] and what it shows.
    bool study = false;
    std::vector<std::string> study_dirs;  // default "."
    std::vector<std::string> figures;     // --figures A,B,...; empty: the default ones
    std::string sort;                     // --sort FIGURE (-FIGURE: largest first)
    std::vector<std::string> front;       // --front A,B[,C] (-A: larger is better)
    std::string scatter_x, scatter_y;     // --scatter A:B
    std::string colour_by;                // --colour C
    // Particle files: --particles NNNN|PATH and its views.
    std::string particles;            // the file's position (NNNN) or a path; empty: none
    std::vector<std::string> planes;  // --plane A:B, one page each (default x:xp)
    int slices = 0;                   // --slices N: the bunch in N slices
    bool slice_z = false;             // --along z: slices along z instead of t
    bool along = false;               // --along given; else t, or z for a bunch at one time
    bool sheet = false;               // --sheet: the nine panels of the file
    bool lost = false;                // --lost: particles that are not active, in grey
    bool density = false;             // --density: the image whatever the count
    bool window = false;              // --window X1:X2,Y1:Y2
    float window_x1 = 0, window_x2 = 0, window_y1 = 0, window_y2 = 0;
    std::string table;   // --table KIND: the run's table of that kind as CSV
    bool serve = false;  // --serve: the browser view
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
