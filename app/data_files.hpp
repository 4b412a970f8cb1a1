// The numbers behind the plots of an export, for the user's own analysis:
// the points of each plot exactly as drawn, as CSV, and the statistics
// blocks and fit reports of the pass, as JSON.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

#include "app/columns.hpp"
#include "core/reports.hpp"
#include "plot/capture.hpp"

namespace viewer {

// The points of one plot of one run. Wide: the curves beside the abscissa
// they share, each column as long as it is (fits are shorter or longer).
// Long: one row a point, with its curve number, where the curves have
// abscissae of their own (phase scans, probe tracks).
struct PointTable {
    std::vector<std::string> header;
    std::vector<std::vector<float>> columns;  // wide
    struct Point {
        int curve;                         // 1-based, in drawing order
        std::uint32_t x_column, y_column;  // columns of the header it fills
        float x, y;
    };
    std::vector<Point> points;  // long
    bool wide = true;
};

// Whether every curve of these figures shares its abscissae, so that one
// table of columns holds them.
bool shares_abscissae(std::span<const Figure> figures);

// The table of a figure with the columns of its row.
PointTable point_table(const Figure& f, const std::vector<PanelColumns>& columns, bool wide);

// One plot as CSV: the header, then the points of each table; with runs, a
// first column `run` holds the run of each table. Numbers with 9
// significant digits, so that every 32-bit value reads back as it was.
void write_csv(std::ostream& out, std::span<const PointTable> tables, std::span<const int> runs);

// FILE for the first of a series, then NAME_2.EXT, NAME_3.EXT, ...
std::string numbered(const std::string& path, int n);

// One plot as the JSON report lists it.
struct PlotReport {
    std::string row;    // "1:2"
    std::string name;   // as the menu row says it
    std::string title;  // the top label of the plot
    int run = 0;
    std::vector<PanelColumns> columns;  // names and units of the curves
    Reports numbers;
};

// The JSON text of a pass: the project and, plot by plot, the numbers of
// the statistics blocks by name in their units and the fits.
std::string stats_json(const std::string& project, std::span<const PlotReport> plots);

}  // namespace viewer
