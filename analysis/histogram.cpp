// Statistics of one figure of merit over a series of runs (.Error, one
// record a run): number of runs, mean and rms on the console, and the
// histogram of the values. Axis texts come from the run's .lab-E file,
// rewritten for a histogram.
#include "analysis/histogram.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <ostream>

#include "analysis/labels.hpp"
#include "analysis/plots.hpp"
#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"
#include "core/statistics.hpp"
#include "fitting/fit.hpp"
#include "plot/draw.hpp"
#include "plot/frame.hpp"
#include "plot/page.hpp"

namespace viewer {

RunStatistics run_statistics(std::span<const float> values) {
    RunStatistics st;
    if (values.empty()) return st;
    // Summed in 64 bits, so that runs that all agree have a mean equal to
    // their value and an rms of exactly zero.
    const double n = static_cast<double>(values.size());
    double SUX = 0;
    for (float v : values) SUX += v;
    const double mean = SUX / n;
    double SUX2 = 0;
    for (float v : values) SUX2 += (v - mean) * (v - mean);
    st.X_MEAN = static_cast<float>(mean);
    st.X_RMS = SUX2 / n > 0 ? static_cast<float>(std::sqrt(SUX2 / n)) : 0.0f;
    return st;
}

void print_run_statistics(std::ostream& out, int runs, const RunStatistics& st) {
    out << "\n     number of runs: " << fmt_i(runs, 6) << "\n"
        << "     average value:  " << fmt_exp(st.X_MEAN, 12, 4, 'E') << "\n"
        << "     rms value:      " << fmt_exp(st.X_RMS, 12, 4, 'E') << "\n";
}

BinOf bin(float X, float XMAX, float XMIN, float DELTAX, int NBIN, std::ostream& out) {
    const float R = (XMAX - XMIN) / DELTAX;
    // Rounded half away from zero; a width that gives no finite ratio matches nothing.
    const bool finite = std::isfinite(R) && std::fabs(R) < 2e9f;
    const long M = finite ? std::lround(R) : 0;
    if (!finite || M != NBIN)
        out << "     Mismatch of intervals in SUBROUTINE BIN\n"
            << "     " << fmt_float_exact(XMAX) << " " << fmt_float_exact(XMIN) << " "
            << fmt_float_exact(DELTAX) << " " << NBIN << " " << fmt_float_exact(R) << " " << M << "\n";

    if (X >= XMAX) return {NBIN + 1, 0};
    if (X < XMIN) return {0, 0};
    // The edges rise with K, so at most one interval holds X: start where the
    // width says and step to it, instead of walking all bins.
    auto lower = [&](int K) { return XMIN + static_cast<float>(K - 1) * DELTAX; };
    const double guess = std::floor((static_cast<double>(X) - XMIN) / DELTAX) + 1.0;
    int K = guess >= 1.0 ? (guess <= NBIN ? static_cast<int>(guess) : NBIN) : 1;
    while (K > 1 && X < lower(K)) --K;
    while (K < NBIN && X >= lower(K + 1)) ++K;
    if (lower(K) <= X && X < lower(K + 1)) return {K, 1};
    return {1, 1};
}

Histogram histogram(std::span<const float> values, int N_BINS, std::ostream& out) {
    Histogram h;
    float XMAX = 0, XMIN = 0;
    if (!values.empty()) {
        XMAX = XMIN = values[0];
        for (float v : values) {
            XMAX = std::max(XMAX, v);
            XMIN = std::min(XMIN, v);
        }
    }
    if (XMAX == XMIN) {
        XMAX = XMAX + 1e-6f * std::fabs(XMAX);
        XMIN = XMIN - 1e-6f * std::fabs(XMIN);
        h.NBIN = 1;
    } else {
        XMAX = XMAX + 1e-7f * std::fabs(XMAX);  // the largest value falls inside the last bin
        h.NBIN = std::clamp(N_BINS, 1, kBinTable);
    }
    check(XMAX, XMIN);
    h.XMAX = XMAX;
    h.XMIN = XMIN;
    h.DELTAX = (XMAX - XMIN) / static_cast<float>(h.NBIN);

    h.ARRAYX.assign(static_cast<std::size_t>(h.NBIN), 0.0f);
    for (float v : values) {
        const BinOf b = bin(v, XMAX, XMIN, h.DELTAX, h.NBIN, out);
        if (b.J == 1) h.ARRAYX[static_cast<std::size_t>(b.I - 1)] += 1.0f;
    }
    float YMAX = 0;
    h.X_AXIS.resize(h.ARRAYX.size());
    for (int I = 1; I <= h.NBIN; ++I) {
        h.X_AXIS[static_cast<std::size_t>(I - 1)] = XMIN + (static_cast<float>(I) - 0.5f) * h.DELTAX;
        YMAX = std::max(YMAX, h.ARRAYX[static_cast<std::size_t>(I - 1)]);
    }
    h.AXIS_MIN = XMIN - 0.5f * h.DELTAX;
    h.AXIS_MAX = XMAX + 0.5f * h.DELTAX;
    if (h.NBIN == 1) {  // a single narrow bar in the middle of a wide axis
        h.AXIS_MAX = h.AXIS_MAX + 10.0f * h.DELTAX;
        h.AXIS_MIN = h.AXIS_MIN - 10.0f * h.DELTAX;
    }
    h.YMAX = YMAX * 1.1f;
    if (h.YMAX == 0) h.YMAX = 1.0f;
    return h;
}

namespace {

constexpr int kPositionCode = 41;  // the row that shows the position D(2)

// The field of an .Error record shown for a menu code: D(3) to D(12) for
// 31 to 40, D(2) for 41 (0-based positions).
int error_field(int code) {
    return code == kPositionCode ? 1 : code - 29;
}

void draw_bars(Graphics& pg, const Histogram& h) {
    for (int I = 0; I < h.NBIN; ++I) {
        const float x = h.X_AXIS[static_cast<std::size_t>(I)];
        pg.pgrect(x - 0.5f * h.DELTAX, x + 0.5f * h.DELTAX, 0.0f, h.ARRAYX[static_cast<std::size_t>(I)]);
    }
}

}  // namespace

void pgex331(Session& s, int N, int N_BINS) {
    const int SELECTION = s.window.SELECTION;
    if (SELECTION < 31 || SELECTION > kPositionCode) return;  // not a row of this plot
    PlotState& st = s.plot(331);
    RewindOnExit rewind(s, {Kind::Error, Kind::lab_E});

    std::vector<float> values;
    if (s.fexist.Error_EXISTS && N >= 1) {
        const RunKind& kind = run_kind(Kind::Error);
        RunRecord r(kind);
        const int field = error_field(SELECTION);
        while (static_cast<int>(values.size()) < N && r.read(s.unit(kind.unit)))
            values.push_back(r.real(field));
        // A record over more lines than were counted leaves the file short:
        // show what was read, and say so.
        if (static_cast<int>(values.size()) < N)
            s.con.out << "     " << std::filesystem::path(s.unit(kind.unit).name()).filename().string()
                      << ": " << values.size() << " of " << N << " counted records read\n";
        if (!values.empty())
            print_run_statistics(s.con.out, static_cast<int>(values.size()), run_statistics(values));
    }
    st.NP = static_cast<int>(values.size());

    if (s.fexist.lab_E_EXISTS && !read_label_groups(s.unit(run_kind(Kind::lab_E).unit), s.labels, 41,
                                                    s.fexist.lab_E_EXISTS, as_histogram_labels)) {
        report_label_error(s.con.out);
        return;
    }

    const Histogram h = histogram(values, N_BINS, s.con.out);
    st.ZMIN = h.AXIS_MIN;
    st.ZMAX = h.AXIS_MAX;
    st.YMIN = 0;
    st.YMAX = h.YMAX;
    {
        DrawBracket bracket(s.pg);
        s.pg.pgsci(1);
        s.pg.pgsfs(2);
        s.pg.pgenv(h.AXIS_MIN, h.AXIS_MAX, 0.0f, h.YMAX, 0, 1);
        const LabelRecord& lab = s.labels.rec[static_cast<std::size_t>(SELECTION + 10)];
        s.pg.pglab(pad(lab.ABSCISSA_LABEL, 80), pad(lab.ORDINATE_LABEL, 80), pad(lab.PLOT_TITLE, 80));
        draw_bars(s.pg, h);  // outlines
        s.pg.pgsfs(3);
        draw_bars(s.pg, h);  // hatched
    }

    fit_hook(s, st.ID_F, h.NBIN, h.X_AXIS.data(), {h.ARRAYX.data()},
             FitStyle{.first_colour = 2, .dashed = false});
    page_foot(s, false);
}

}  // namespace viewer
