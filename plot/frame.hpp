// The frame of a plot along z, written once: read the tables in lock step
// keeping what lies in the zoom window, track the extremes, print the
// statistics block, set the ranges by rule, draw frame and curves, run the
// fit hook, lay the aperture outline over it, write the page foot, rewind.
// A plot of the family states only what differs from the next one:
//
//   void pgex2(Session& s, int N) {
//       plot_along_z(s, N, {
//           .plot    = 2,                                    // saved values: s.plot(2)
//           .tables  = {Kind::Xemit, Kind::Yemit},           // lock step, in this order
//           .curves  = {col(Kind::Xemit, xemit::X_RMS),      // mm
//                       col(Kind::Yemit, yemit::Y_RMS)},
//           .ymin    = YminRule::zero,
//           .labels  = {"\\fiz m", "\\gs\\fix \\gs\\fiy \\fimm", "Beam Size"},
//           .overlay = Overlay::upper,
//       });
//   }
//
// Any number of curves: the first two take part in the running statistics;
// a plot with its own ranges (`Ranges::own`) skips them, starts its ranges
// anew and draws its curves with `poly_line` and a legend of `keys`.
// The stages are public too, for plots that leave the common path.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "core/run_catalogue.hpp"
#include "core/session.hpp"
#include "fitting/fit.hpp"
#include "plot/draw.hpp"
#include "plot/page.hpp"

namespace viewer {

// The records of one lock-step pass, one a table of the plot.
class Pass {
public:
    explicit Pass(std::span<const RunRecord> records) : records_(records) {}
    // Field `field` of the record of kind `k` in this pass.
    float operator()(Kind k, int field) const;

private:
    std::span<const RunRecord> records_;
};

// One ordinate: a field of one of the plot's tables, optionally converted
// while reading (so that statistics, ranges and fits see the converted
// value), or a value formed from several fields of the pass.
struct Curve {
    Kind table = Kind::Xemit;
    int field = 0;
    float (*convert)(float) = nullptr;
    float (*derive)(const Pass&) = nullptr;  // set: the value, instead of table and field
};
inline Curve col(Kind t, int field, float (*convert)(float) = nullptr) {
    return {t, field, convert, nullptr};
}
inline Curve derived(float (*f)(const Pass&)) {
    return {Kind::Xemit, 0, nullptr, f};
}

// Where the lower end of the ordinate range comes from; the upper end is
// always the largest value plus a fifth of itself.
enum class YminRule {
    zero,     // 0
    margin,   // smallest value less a fifth of itself
    clamped,  // 0 while everything is positive, else as margin
};

// How the ranges come about.
enum class Ranges {
    running,  // `mami` over curves 1 and 2, the statistics block, YMIN by rule
    own,      // start at -1e10 / 1e10 each call, every curve raises YMAX, YMIN 0
};

// How the curves share the page.
enum class Panels {
    one,      // one frame
    stacked,  // one frame per curve, one above the other, each with its own range
};

// How the aperture outline is laid over the frame.
enum class Overlay { none, upper, mirrored, two_panels };

struct AxisLabels {
    std::string x, y, top;
};

// The boxed key of a multi-curve plot, one text per curve in curve order.
struct Keys {
    std::vector<std::string> text{};
    float x = 0.0f;  // normalised x of the box edge
    LegendPos pos = LegendPos::TR;
    bool after_overlay = false;  // drawn after the overlay, outside the drawing bracket
};

// One member of the family: a row of the plot table.
struct AlongZ {
    int plot = 0;                 // plot number; its saved values are s.plot(plot)
    std::vector<Kind> tables{};   // read in lock step, in this order
    std::vector<Curve> curves{};  // any number
    YminRule ymin = YminRule::zero;
    AxisLabels labels{};  // with stacked panels: of the upper panel
    Overlay overlay = Overlay::upper;
    bool title_in_overview = false;  // false: no page foot while an overview is drawn
    bool fit = true;                 // offers the fit hook (curves 1 and 2)
    FitStyle fit_style{};
    Ranges ranges = Ranges::running;
    Panels panels = Panels::one;
    std::vector<std::string> lower_y{};  // stacked panels: y labels of the panels below
    std::vector<Kind> required{};        // existence flags needed beyond those of `tables`
    std::vector<Kind> rewound{};         // tables rewound beyond those of `tables`
    Keys keys{};                         // drawn when it holds texts
};

// Draws one plot of the family with at most N points.
void plot_along_z(Session& s, int N, const AlongZ& row);

// --- stages -----------------------------------------------------------------

// The point arrays of one call; they live only for the call.
struct Points {
    std::vector<float> Z;  // m
    std::vector<float> Y;  // curve after curve, NP values each, in the unit of the curve
    int NP = 0;            // points stored
    int curves = 0;

    float* curve(int c) { return Y.data() + static_cast<std::ptrdiff_t>(c) * NP; }  // 0-based
    const float* curve(int c) const { return Y.data() + static_cast<std::ptrdiff_t>(c) * NP; }
};

// Reads the tables in lock step from where they stand, keeping records whose
// Z_MEAN (of the last table of a pass) lies in the zoom window, bounds
// included, up to N points. With running ranges each point of curves 1 and
// 2 is folded into `st` with `mami`; with own ranges ZMAX, ZMIN and YMAX
// follow every curve. Nothing is read unless every table (and every kind in
// `required`) exists and N is at least 1.
Points read_along_z(Session& s, PlotState& st, int N, const AlongZ& row);

// The frame with its labels, in colour index 1, inside the caller's bracket.
void open_frame(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX, const AxisLabels& labels);

// Upper end of a range: the value plus a fifth of its size.
float upper_limit(float M);
// Lower end of a range under `rule`, from the smallest value m.
float lower_limit(YminRule rule, float m);

// The overlay in its form, loading the outline the first time; the plot's
// window is restored afterwards.
void draw_overlay(Session& s, Overlay form, float ZMIN, float ZMAX, float YMIN, float YMAX);

// Puts each table that exists back at its first record.
void rewind_tables(Session& s, std::span<const Kind> tables);

// Rewinds the tables when the plot leaves, also through a failure or the end
// of input at one of its prompts.
class RewindOnExit {
public:
    RewindOnExit(Session& s, std::vector<Kind> tables) : s_(s), tables_(std::move(tables)) {}
    ~RewindOnExit() { rewind_tables(s_, tables_); }
    RewindOnExit(const RewindOnExit&) = delete;
    RewindOnExit& operator=(const RewindOnExit&) = delete;

private:
    Session& s_;
    std::vector<Kind> tables_;
};

}  // namespace viewer
