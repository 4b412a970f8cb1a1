// One viewer session: the shared records, the open run files, the saved
// values of every plot, and the three seams (graphics, pointer, console).
// A test makes a fresh one; nothing lives in globals or function statics.
#pragma once

#include <array>
#include <fstream>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>

#include "core/console.hpp"
#include "core/fit_variables.hpp"
#include "core/graphics.hpp"
#include "core/records.hpp"
#include "core/reports.hpp"
#include "core/run_files.hpp"

namespace viewer {

// Values a plot keeps from one call to the next.
struct PlotState {
    int ID_F = 0;                           // the fit pick of this plot
    int NP = 0;                             // points of the last draw
    float ZMAX = 0, ZMIN = 0;               // abscissa range
    float YMAX = 0, YMIN = 0;               // ordinate range
    float XMAX = 0, XMIN = 0;               // second ordinate range (two-panel plots)
    float RMAX = 0;                         // half height of the overlay window
    std::array<float, 4> MAX_A{}, MIN_A{};  // extremes of curves 1, 2 and where met
    std::array<float, 2> AVR{};             // sums, then averages
};

// Saved locals of the reference-curve routines.
struct RefCurveState {
    std::string store_name;                     // REFNAME of `store`
    std::string get_name;                       // REFNAME of `get_ref`, kept for hardcopies
    std::unique_ptr<std::ofstream> store_file;  // open between the two calls of a pair
    PlotState stats;                            // MAX_A, MIN_A, AVR, ZMAX, ZMIN of `get_ref`
};

// Values of the page-2 plots that outlive a call.
struct Page2State {
    float GAMBET = 0;  // beta times gamma of the beam, from the latest positive energy
};

struct Session {
    Session(Graphics& g, Pointer& p, std::istream& in, std::ostream& out, std::string work_dir = ".")
        : pg(g), pointer(p), con(in, out), dir(std::move(work_dir)) {}

    Graphics& pg;
    Pointer& pointer;
    Console con;
    std::string dir;  // working directory of run files and configuration

    Logo logo;
    Graph graph;
    Window window;
    Menue menue;
    Fexist fexist;
    Chara chara;
    Labels labels;
    WinConfig win_config;
    Geometry geometry;
    FitVariables fit_variables;

    // Run identity and start-up.
    std::string FNAME;         // input arguments, raw
    std::string DATE;          // "    DD.MM  HH:MM"
    bool raster_foot = false;  // the picture is of pixels: the page foot keeps clear of its edges
    bool LIARG = false;
    int RUN_NUMBER = 1;
    bool STEP_FOR = false, STEP_BACK = false;
    bool NO_FOUND = true;

    // Line counts taken at run load; kept when a later run lacks the table.
    int R_PKT = 0, T_PKT = 0, S_PKT = 0, C_PKT = 0, E_PKT = 0;

    // Open run files by unit number.
    std::array<TableFile, 40> units;
    TableFile& unit(int u) { return units.at(static_cast<std::size_t>(u)); }

    // Cursor positions kept between calls of the two menus.
    float menu_XX = 0.03f, menu_YY = 0.5f;
    float fit_XX = 0.03f, fit_YY = 0.5f;

    std::map<int, PlotState> plots;  // by plot number (1 for pgex1, 201 for pgex201, ...)
    PlotState& plot(int n) { return plots[n]; }

    // The sigma-matrix plot: curve count and texts of the last record it took.
    bool TWICE = false;
    std::string STRG1 = std::string(40, ' '), STRG2 = std::string(40, ' ');

    RefCurveState ref;
    Page2State page2;

    int ID_START = 0;            // LAST_SELECTION saved during an overview
    int FIT_PICK = 0;            // a front end without a menu: the pick every fit hook applies
    Reports* reports = nullptr;  // set: the numbers of statistics and fits are kept there too

    // A file name in the working directory.
    std::string path(const std::string& name) const {
        return (dir.empty() || dir == "." || (!name.empty() && name[0] == '/')) ? name : dir + "/" + name;
    }
};

}  // namespace viewer
