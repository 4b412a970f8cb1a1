// The reports of the closed-form fits: each model's formula, guard words,
// coefficient lines and the curve it leaves for the hook. Only the stored
// curve is 32-bit, and the places where it is evaluated in 32 bits are marked.
#include "fitting/closed_form_fits.hpp"

#include <cmath>
#include <ostream>
#include <string_view>

#include "core/fortran_format.hpp"

namespace viewer {
namespace {

void print_extremum(ReportOut& out, const Extremum& e) {
    out.os << "     Extremum at x0 =" << fmt_d(e.x0) << ",  Y(x0) =" << fmt_d(e.y0) << '\n';
}

enum class Grid { first_to_last, valid_range, with_margin };

// One row of the family: everything in which the eight routines differ.
struct ClosedModel {
    std::string_view header = {};   // formula line of the report
    bool counts = false;            // has a validity test, so reports what it left out
    std::string_view refusal = {};  // words of its guard, if it has one
    int N_FIT = 0;                  // curve points
    Grid grid = Grid::first_to_last;
    ClosedFit (*solve)(std::span<const float>, std::span<const float>) = nullptr;
    void (*print)(ReportOut&, const ClosedFit&) = nullptr;  // coefficient lines
    double (*curve)(float x, const ClosedFit&) = nullptr;   // y on the grid
};

void run(Session& s, const FitCall& c, const ClosedModel& m) {
    ReportOut out = report_out(s, c);
    FitVariables& fv = s.fit_variables;
    const ClosedFit r = m.solve(c.xs(), c.ys());
    if (r.status == FitStatus::no_valid_points) {
        if (m.counts) print_count(out, r.ZCOUNT, true);
        print_short(out, "no valid data points");
        fv.N_FIT = 0;
        return;
    }
    if (r.status == FitStatus::no_solution) {
        print_short(out, m.refusal);
        fv.N_FIT = 0;
        return;
    }
    print_header(out, c, m.header);
    if (m.counts) print_count(out, r.ZCOUNT);
    m.print(out, r);
    if (out.record) {
        // The curve's deviations at the points it was fitted to.
        double sum = 0;
        for (std::size_t i = 0; i < c.xs().size(); ++i) {
            const double y = c.ys()[i], d = y - m.curve(c.xs()[i], r);
            if ((!m.counts || y > 0) && std::isfinite(d)) sum += d * d;
        }
        out.record->residual = sum;
    }

    const CurveSlots slots = allocate_curve(fv, c.CURVE, m.N_FIT);
    switch (m.grid) {
        case Grid::first_to_last:
            grid_first_to_last(slots.x, c.xs());
            break;
        case Grid::valid_range:
            grid_between(slots.x, r.ZMIN, r.ZMAX);
            break;
        case Grid::with_margin:
            grid_with_margin(slots.x, c.xs());
            break;
    }
    for (std::size_t i = 0; i < slots.x.size(); ++i) slots.y[i] = static_cast<float>(m.curve(slots.x[i], r));
}

const ClosedModel aoverr_model{
    .header = "A/r fit: Y = A / ( r-r0 )",
    .counts = true,
    .N_FIT = 100,
    .grid = Grid::first_to_last,
    .solve = solve_aoverr,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "A  =  ", r.coef[0]);
            print_value(out, "r0 =  ", r.coef[1]);
        },
    .curve = [](float x, const ClosedFit& r) { return r.coef[0] / (x - r.coef[1]); },
};

const ClosedModel square_root_model{
    .header = "square root fit: Y = sqrt( a + b*x)",
    .counts = true,
    .N_FIT = 100,
    .grid = Grid::first_to_last,
    .solve = solve_square_root,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "a  =  ", r.coef[0]);
            print_value(out, "b  =  ", r.coef[1]);
        },
    .curve =
        [](float x, const ClosedFit& r) {
            const double v = r.coef[1] * x + r.coef[0];
            return v > 0.0 ? std::sqrt(v) : 0.0;
        },
};

const ClosedModel straight_model{
    .header = "straight line fit: Y = a + b*x",
    .counts = false,
    .N_FIT = 2,
    .grid = Grid::first_to_last,
    .solve = solve_straight,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "a  =  ", r.coef[0]);
            print_value(out, "b  =  ", r.coef[1]);
            if (r.coef[1] != 0.0) print_value(out, "zero crossing =  ", -r.coef[0] / r.coef[1]);
        },
    .curve = [](float x, const ClosedFit& r) { return r.coef[1] * x + r.coef[0]; },
};

const ClosedModel parabolic_model{
    .header = "parabolic fit: Y = a + b*x + c*x^2",
    .counts = false,
    .N_FIT = 100,
    .grid = Grid::first_to_last,
    .solve = solve_parabolic,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "a  =  ", r.coef[0]);
            print_value(out, "b  =  ", r.coef[1]);
            print_value(out, "c  =  ", r.coef[2]);
            print_extremum(out, parabola_extremum(r));
        },
    .curve =
        [](float x, const ClosedFit& r) {
            const float x2 = x * x;  // 32-bit
            return r.coef[2] * x2 + r.coef[1] * x + r.coef[0];
        },
};

const ClosedModel power_model{
    .header = "power fit: Y = a * x^n",
    .counts = true,
    .N_FIT = 100,
    .grid = Grid::valid_range,
    .solve = solve_power,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "a  =  ", r.coef[0]);
            print_value(out, "n  =  ", r.coef[1]);
        },
    .curve = [](float x,
                const ClosedFit& r) { return std::pow(static_cast<double>(x), r.coef[1]) * r.coef[0]; },
};

const ClosedModel exponential_model{
    .header = "exponential fit: Y = exp (a + b*x)",
    .counts = true,
    .refusal = "no solution found",
    .N_FIT = 100,
    .grid = Grid::first_to_last,
    .solve = solve_exponential,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "a  =  ", r.coef[0]);
            print_value(out, "b  =  ", r.coef[1]);
        },
    .curve = [](float x, const ClosedFit& r) { return std::exp(r.coef[1] * x + r.coef[0]); },
};

const ClosedModel mod_exponential_model{
    .header = "modified exponential fit: Y = a * x^b * exp(c*x)",
    .counts = true,
    .refusal = "no solution found",
    .N_FIT = 100,
    .grid = Grid::valid_range,
    .solve = solve_mod_exponential,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "a  =  ", std::exp(r.coef[0]));
            print_value(out, "b  =  ", r.coef[1]);
            print_value(out, "c  =  ", r.coef[2]);
        },
    .curve =
        [](float x, const ClosedFit& r) {
            const float lx = std::log(x);  // 32-bit
            return std::exp(r.coef[2] * x + r.coef[0] + r.coef[1] * lx);
        },
};

const ClosedModel pol_3rd_model{
    .header = "polynomial fit: Y = a + b*x + c*x^2 + d*x^3",
    .counts = false,
    .refusal = "no solution",
    .N_FIT = 200,
    .grid = Grid::with_margin,
    .solve = solve_pol_3rd,
    .print =
        [](ReportOut& out, const ClosedFit& r) {
            print_value(out, "a   =  ", r.coef[0]);
            print_value(out, "b   =  ", r.coef[1]);
            print_value(out, "c   =  ", r.coef[2]);
            print_value(out, "d   =  ", r.coef[3]);
            for (const Extremum& e : cubic_extrema(r)) print_extremum(out, e);
        },
    .curve =
        [](float x, const ClosedFit& r) {
            const float x2 = x * x, x3 = x2 * x;  // 32-bit
            return r.coef[1] * x + r.coef[2] * x2 + r.coef[0] + r.coef[3] * x3;
        },
};

}  // namespace

void aoverr(Session& s, const FitCall& c) {
    run(s, c, aoverr_model);
}
void square_root(Session& s, const FitCall& c) {
    run(s, c, square_root_model);
}
void straight(Session& s, const FitCall& c) {
    run(s, c, straight_model);
}
void parabolic(Session& s, const FitCall& c) {
    run(s, c, parabolic_model);
}
void power(Session& s, const FitCall& c) {
    run(s, c, power_model);
}
void exponential(Session& s, const FitCall& c) {
    run(s, c, exponential_model);
}
void mod_exponential(Session& s, const FitCall& c) {
    run(s, c, mod_exponential_model);
}
void pol_3rd(Session& s, const FitCall& c) {
    run(s, c, pol_3rd_model);
}

}  // namespace viewer
