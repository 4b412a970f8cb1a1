// The frame of a plot along z, written once: read the tables in lock step
// keeping what lies in the zoom window, track the extremes, print the
// statistics block, set the ranges by rule, draw frame and curves, run the
// fit hook, lay the aperture outline over it, write the page foot, rewind.
// A plot of the family states only what differs from the next one:
//
//   void pgex2(Session& s, int N) {
//       plot_along_z(s, N, {
//           .plot    = 2,                                   // saved values: s.plot(2)
//           .tables  = {table::Xemit, table::Yemit},        // lock step, in this order
//           .curves  = {col(table::Xemit, xemit::X_RMS),    // mm
//                       col(table::Yemit, yemit::Y_RMS)},
//           .ymin    = YminRule::zero,
//           .labels  = {"\\fiz m", "\\gs\\fix \\gs\\fiy \\fimm", "Beam Size"},
//           .overlay = Overlay::upper,
//       });
//   }
//
// The stages are public too, for plots that leave the common path in one
// place only (two panels, their own ranges).
#pragma once

#include <span>
#include <string>
#include <vector>

#include "control/session.hpp"
#include "fitting/fit.hpp"

namespace viewer {

// A run-file kind as a plot reads it.
struct TableKind {
    int unit;                // where the run load keeps it open
    bool Fexist::*exists;    // its existence flag
    int reals;               // numbers in one record
    bool free_form = false;  // free record; otherwise fixed fields of 12 columns
};

constexpr int kMaxRecordReals = 16;  // the widest record of a table along z

namespace table {
inline constexpr TableKind Xemit{10, &Fexist::Xemit_EXISTS, 7};
inline constexpr TableKind Yemit{11, &Fexist::Yemit_EXISTS, 7};
inline constexpr TableKind Zemit{12, &Fexist::Zemit_EXISTS, 7};
inline constexpr TableKind ref{13, &Fexist::ref_EXISTS, 7, true};
}  // namespace table

// Field positions (0-based) in the records, by the tracker's names. Units:
// positions m, sizes mm, divergences mrad, transverse emittances pi mrad mm,
// energies MeV, energy spreads keV, longitudinal emittance pi keV mm,
// momentum MeV/c, its change MeV/c/m, the Larmor angle rad.
namespace xemit {
enum : int { Z_MEAN, CLOCK, X_MEAN, X_RMS, XP_RMS, NX_EMIT, CO_XPX };
}
namespace yemit {
enum : int { Z_MEAN, CLOCK, Y_MEAN, Y_RMS, YP_RMS, NY_EMIT, CO_YPY };
}
namespace zemit {
enum : int { Z_MEAN, CLOCK, E_MEAN, Z_RMS, E_RMS, NZ_EMIT, CO_EZ };
}
namespace reference {
enum : int { Z_MEAN, CLOCK, ENE, GRAD, LARMOR, XX, YY };
}

// One ordinate: a field of one of the plot's tables, optionally converted
// while reading (so that statistics, ranges and fits see the converted value).
struct Curve {
    TableKind table;
    int field;
    float (*convert)(float) = nullptr;
};
inline Curve col(TableKind t, int field, float (*convert)(float) = nullptr) { return {t, field, convert}; }

// Where the lower end of the ordinate range comes from; the upper end is
// always the largest value plus a fifth of itself.
enum class YminRule {
    zero,     // 0
    margin,   // smallest value less a fifth of itself
    clamped,  // 0 while everything is positive, else as margin
};

// How the aperture outline is laid over the frame.
enum class Overlay { none, upper, mirrored };

struct AxisLabels {
    std::string x, y, top;
};

// One member of the family: a row of the plot table.
struct AlongZ {
    int plot = 0;                    // plot number; its saved values are s.plot(plot)
    std::vector<TableKind> tables{}; // read in lock step, in this order
    std::vector<Curve> curves{};     // one or two
    YminRule ymin = YminRule::zero;
    AxisLabels labels{};
    Overlay overlay = Overlay::upper;
    bool title_in_overview = false;  // false: no page foot while an overview is drawn
    bool fit = true;                 // offers the fit hook
    FitStyle fit_style{};
};

// Draws one plot of the family with at most N points.
void plot_along_z(Session& s, int N, const AlongZ& row);

// --- stages -----------------------------------------------------------------

// The point arrays of one call; they live only for the call.
struct Points {
    std::vector<float> Z;       // m
    std::vector<float> Y1, Y2;  // in the unit of the curve; Y2 empty on a one-curve plot
    int NP = 0;                 // points stored
};

// Reads the tables in lock step from where they stand, keeping records whose
// Z_MEAN (of the last table of a pass) lies in the zoom window, bounds
// included, up to N points, and folds each point into `st` with `mami`.
// Nothing is read unless every table exists and N is at least 1.
Points read_along_z(Session& s, PlotState& st, int N, std::span<const TableKind> tables,
                    std::span<const Curve> curves);

// Upper end of a range: the value plus a fifth of its size.
float upper_limit(float M);
// Lower end of a range under `rule`, from the smallest value m.
float lower_limit(YminRule rule, float m);

// The overlay in its form, loading the outline the first time; the plot's
// window is restored afterwards.
void draw_overlay(Session& s, Overlay form, float ZMIN, float ZMAX, float YMIN, float YMAX);

// The page foot (unless left out during an overview), then the update.
void page_foot(Session& s, bool title_in_overview);

// Puts each table that exists back at its first record.
void rewind_tables(Session& s, std::span<const TableKind> tables);

// Rewinds the tables when the plot leaves, also through a failure or the end
// of input at one of its prompts.
class RewindOnExit {
public:
    RewindOnExit(Session& s, std::span<const TableKind> tables) : s_(s), tables_(tables) {}
    ~RewindOnExit() { rewind_tables(s_, tables_); }
    RewindOnExit(const RewindOnExit&) = delete;
    RewindOnExit& operator=(const RewindOnExit&) = delete;

private:
    Session& s_;
    std::span<const TableKind> tables_;
};

}  // namespace viewer
