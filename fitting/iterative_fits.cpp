// Levenberg-Marquardt least squares (curvature and gradient, Gauss-Jordan
// solve of the damped normal equations, accept-or-damp loop) and the three
// fits built on it. The method is Marquardt's (J. SIAM 11, 1963), with the
// damping applied as a factor 1 + lambda on the diagonal.
#include "fitting/iterative_fits.hpp"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <ostream>
#include <span>
#include <utility>

namespace viewer {

void odd_poly(double x, std::span<const double> A, double& y, std::span<double> DYDA) {
    const double x3 = x * x * x, x5 = x3 * x * x;
    y = A[0] + A[1] * x + A[2] * x3 + A[3] * x5;
    DYDA[0] = 1.0;
    DYDA[1] = x;
    DYDA[2] = x3;
    DYDA[3] = x5;
}

namespace {

// One Gaussian term on A[0..2] with its three derivatives.
double gauss_term(double x, const double* A, double* DYDA) {
    const double s = 1.0 / A[1];
    const double t = (x - A[2]) * s;
    const double g = std::exp(-t * t / 2.0) * K_GAUSS * s;
    const double y = A[0] * g;
    DYDA[0] = g;
    DYDA[1] = (t * t - 1.0) * s * y;
    DYDA[2] = t * s * y;
    return y;
}

}  // namespace

void gauss(double x, std::span<const double> A, double& y, std::span<double> DYDA) {
    y = gauss_term(x, A.data(), DYDA.data());
}

void dgauss(double x, std::span<const double> A, double& y, std::span<double> DYDA) {
    const double y1 = gauss_term(x, A.data(), DYDA.data());
    const double y2 = gauss_term(x, A.data() + 3, DYDA.data() + 3);
    y = y1 + y2;
}

LmWorkspace::LmWorkspace(int ma)
    : MA(ma),
      ALPHA(ma),
      COVAR(ma),
      BETA(static_cast<std::size_t>(ma)),
      DA(static_cast<std::size_t>(ma)),
      ATRY(static_cast<std::size_t>(ma)),
      DYDA(static_cast<std::size_t>(ma)),
      IPIV(static_cast<std::size_t>(ma)),
      INDXR(static_cast<std::size_t>(ma)),
      INDXC(static_cast<std::size_t>(ma)) {}

bool gaussj(Matrix& a, std::span<double> b, LmWorkspace& w) {
    const int n = a.n;
    assert(n == w.MA && b.size() == static_cast<std::size_t>(n) &&
           "gaussj: matrix, right side and workspace differ in size");
    auto u = [](int i) { return static_cast<std::size_t>(i); };
    std::fill(w.IPIV.begin(), w.IPIV.end(), 0);
    for (int i = 0; i < n; ++i) {
        // Largest element among rows and columns not yet pivoted; on a tie
        // the last one found wins.
        double big = 0.0;
        int irow = -1, icol = -1;
        for (int j = 0; j < n; ++j) {
            if (w.IPIV[u(j)] == 1) continue;
            for (int k = 0; k < n; ++k) {
                if (w.IPIV[u(k)] == 0 && std::fabs(a(j, k)) >= big) {
                    big = std::fabs(a(j, k));
                    irow = j;
                    icol = k;
                }
            }
        }
        // No candidate (only NaN left) would make a column the pivot twice.
        if (icol < 0 || ++w.IPIV[u(icol)] > 1) return false;
        if (irow != icol) {
            for (int l = 0; l < n; ++l) std::swap(a(irow, l), a(icol, l));
            std::swap(b[u(irow)], b[u(icol)]);
        }
        w.INDXR[u(i)] = irow;
        w.INDXC[u(i)] = icol;
        if (a(icol, icol) == 0.0) return false;
        const double pivinv = 1.0 / a(icol, icol);
        a(icol, icol) = 1.0;
        for (int l = 0; l < n; ++l) a(icol, l) *= pivinv;
        b[u(icol)] *= pivinv;
        for (int ll = 0; ll < n; ++ll) {
            if (ll == icol) continue;
            const double dum = a(ll, icol);
            a(ll, icol) = 0.0;
            for (int l = 0; l < n; ++l) a(ll, l) -= a(icol, l) * dum;
            b[u(ll)] -= b[u(icol)] * dum;
        }
    }
    // Undo the column interchanges, last first.
    for (int l = n - 1; l >= 0; --l) {
        if (w.INDXR[u(l)] == w.INDXC[u(l)]) continue;
        for (int k = 0; k < n; ++k) std::swap(a(k, w.INDXR[u(l)]), a(k, w.INDXC[u(l)]));
    }
    return true;
}

void mrqcof(std::span<const double> X, std::span<const double> Y, std::span<const double> SIG,
            std::span<const double> A, Matrix& ALPHA, std::span<double> BETA, double& CHISQ, ModelFunction f,
            LmWorkspace& w) {
    const int MA = w.MA;
    auto u = [](int i) { return static_cast<std::size_t>(i); };
    for (int j = 0; j < MA; ++j) {
        for (int k = 0; k <= j; ++k) ALPHA(j, k) = 0.0;
        BETA[u(j)] = 0.0;
    }
    CHISQ = 0.0;
    for (std::size_t i = 0; i < X.size(); ++i) {
        double YMOD = 0.0;
        f(X[i], A, YMOD, w.DYDA);
        const double sig2i = 1.0 / (SIG[i] * SIG[i]);
        const double dy = Y[i] - YMOD;
        for (int j = 0; j < MA; ++j) {
            const double wt = w.DYDA[u(j)] * sig2i;
            for (int k = 0; k <= j; ++k) ALPHA(j, k) += wt * w.DYDA[u(k)];
            BETA[u(j)] += dy * wt;
        }
        CHISQ += dy * dy * sig2i;
    }
    for (int j = 1; j < MA; ++j)
        for (int k = 0; k < j; ++k) ALPHA(k, j) = ALPHA(j, k);
}

LmStatus mrqmin(std::span<const double> X, std::span<const double> Y, std::span<double> SIG,
                std::span<double> A, double& CHISQ, ModelFunction f, LmWorkspace& w) {
    constexpr int max_passes = 50;
    // These three constants are the 32-bit values, widened.
    const double lambda_start = static_cast<double>(0.001f);
    const double lambda_down = static_cast<double>(0.1f);
    const double tolerance = static_cast<double>(0.001f);  // absolute change of chi-squared

    const int MA = w.MA;
    assert(A.size() == static_cast<std::size_t>(MA) &&
           "mrqmin: workspace sized for another number of parameters");
    assert(X.size() == Y.size() && Y.size() == SIG.size() && "mrqmin: X, Y and SIG differ in length");
    auto u = [](int i) { return static_cast<std::size_t>(i); };
    w.COUNT = 0;
    for (double& s : SIG)
        if (s == 0.0) s = 1.0;
    w.ALAMDA = lambda_start;
    mrqcof(X, Y, SIG, A, w.ALPHA, w.BETA, CHISQ, f, w);
    w.CHISQ_OLD = CHISQ;
    for (;;) {
        // Damped normal equations for the step.
        w.DA = w.BETA;
        w.COVAR = w.ALPHA;
        for (int j = 0; j < MA; ++j) w.COVAR(j, j) = w.ALPHA(j, j) * (1.0 + w.ALAMDA);
        if (!gaussj(w.COVAR, w.DA, w)) return LmStatus::singular;

        for (int j = 0; j < MA; ++j) w.ATRY[u(j)] = A[u(j)] + w.DA[u(j)];
        mrqcof(X, Y, SIG, w.ATRY, w.COVAR, w.DA, CHISQ, f, w);
        const double old_chisq = w.CHISQ_OLD, new_chisq = CHISQ;
        if (new_chisq < old_chisq) {
            w.ALAMDA *= lambda_down;
            w.CHISQ_OLD = new_chisq;
            w.ALPHA = w.COVAR;
            w.BETA = w.DA;
            std::copy(w.ATRY.begin(), w.ATRY.end(), A.begin());
        } else {
            w.ALAMDA *= 10.0;
            CHISQ = old_chisq;
        }
        // A rejected step with an unchanged chi-squared also ends here.
        const double change = old_chisq - new_chisq;
        if (change >= 0.0 && change < tolerance) return LmStatus::converged;
        if (++w.COUNT == max_passes) return LmStatus::no_convergence;
    }
}

namespace {

// The plot's points widened to 64 bits, with zero errors (unweighted).
struct Points {
    std::vector<double> x, y, sig;
    Points(std::span<const float> X, std::span<const float> Y)
        : x(X.begin(), X.end()), y(Y.begin(), Y.end()), sig(X.size(), 0.0) {}
};

IterativeFit minimise(std::span<const float> X, std::span<const float> Y, std::vector<double> A,
                      ModelFunction f) {
    IterativeFit r;
    Points p(X, Y);
    LmWorkspace w(static_cast<int>(A.size()));
    r.lm = mrqmin(p.x, p.y, p.sig, A, r.CHISQ, f, w);
    r.A = std::move(A);
    return r;
}

// Start values of a Gaussian from the moments of the data taken as a
// distribution; refused when the second moment is not positive.
struct Moments {
    bool ok;
    double a, sig, x0, YMAX;
};

Moments moments(std::span<const float> X, std::span<const float> Y) {
    double S0 = 0, S1 = 0, S2 = 0, YMAX = 0;
    for (std::size_t i = 0; i < X.size(); ++i) {
        const double x = X[i], y = Y[i];
        S0 += y;
        S1 += x * y;
        S2 += x * x * y;
        YMAX = std::max(YMAX, y);
    }
    if (S2 <= 0.0) return {false, 0, 0, 0, 0};
    const double x0 = S1 / S0;
    const double sig = std::sqrt(S2 / S0 - x0 * x0);
    return {true, YMAX * 2.5 * sig, sig, x0, YMAX};
}

}  // namespace

IterativeFit solve_odd_pol(std::span<const float> X, std::span<const float> Y) {
    if (X.empty()) return {FitStatus::no_valid_points, LmStatus::converged, {}, 0};
    double mean = 0;
    for (float y : Y) mean += y;
    mean /= static_cast<double>(Y.size());
    return minimise(X, Y, {mean, 1.0, 1.0, 1.0}, odd_poly);
}

IterativeFit solve_gauss_fit(std::span<const float> X, std::span<const float> Y) {
    if (X.empty()) return {FitStatus::no_valid_points, LmStatus::converged, {}, 0};
    const Moments m = moments(X, Y);
    if (!m.ok) return {FitStatus::no_solution, LmStatus::converged, {}, 0};
    return minimise(X, Y, {m.a, m.sig, m.x0}, gauss);
}

IterativeFit solve_dgauss_fit(std::span<const float> X, std::span<const float> Y) {
    if (X.empty()) return {FitStatus::no_valid_points, LmStatus::converged, {}, 0};
    const Moments m = moments(X, Y);
    if (!m.ok) return {FitStatus::no_solution, LmStatus::converged, {}, 0};
    // The second starts on the same centre, twice as wide, a fifth as high.
    const double sig2 = 2.0 * m.sig;
    return minimise(X, Y, {m.a, m.sig, m.x0, m.YMAX * 0.25 * sig2, sig2, m.x0}, dgauss);
}

namespace {

// The refusals before solving; true when the routine may go on.
bool admitted(Session& s, const FitCall& c, const IterativeFit& r) {
    if (r.status == FitStatus::ok) return true;
    ReportOut out = report_out(s, c);
    print_short(out, r.status == FitStatus::no_valid_points ? "no valid data points" : "no solution");
    s.fit_variables.N_FIT = 0;
    return false;
}

// The minimiser's own words, where they fall in the report.
void report(ReportOut& out, LmStatus st) {
    if (st == LmStatus::singular) out.os << "\n     Singluar matrix; no solution for fit\n\n";
    if (st == LmStatus::no_convergence) out.os << " No convergence after 50 iterations\n";
    if (out.record && st == LmStatus::singular) out.record->message = "Singluar matrix; no solution for fit";
    if (out.record && st == LmStatus::no_convergence)
        out.record->message = "No convergence after 50 iterations";
}

double gauss_curve(float x, const double* A) {
    const double t = (x - A[2]) / A[1];
    return std::exp(-t * t / 2.0) * A[0] * K_GAUSS / A[1];
}

}  // namespace

void odd_pol(Session& s, const FitCall& c) {
    const IterativeFit r = solve_odd_pol(c.xs(), c.ys());
    if (!admitted(s, c, r)) return;
    ReportOut out = report_out(s, c);
    print_header(out, c, "odd polynomial fit: Y = a + b*x + c*x^3 + d*x^5");
    report(out, r.lm);
    // Shown even after a singular matrix: they are then the last accepted parameters.
    print_value(out, "a   =  ", r.A[0]);
    print_value(out, "b   =  ", r.A[1]);
    print_value(out, "c   =  ", r.A[2]);
    print_value(out, "d   =  ", r.A[3]);
    print_value(out, "chi squared =  ", r.CHISQ);
    if (r.lm == LmStatus::singular) {
        s.fit_variables.N_FIT = 0;
        return;
    }
    const CurveSlots slots = allocate_curve(s.fit_variables, c.CURVE, 200);
    grid_with_margin(slots.x, c.xs(), true);
    for (std::size_t i = 0; i < slots.x.size(); ++i) {
        const float x = slots.x[i];
        const float x3 = x * x * x, x5 = x3 * x * x;  // 32-bit
        slots.y[i] = static_cast<float>(r.A[1] * x + r.A[2] * x3 + r.A[0] + r.A[3] * x5);
    }
}

namespace {

// The report and curve of a Gaussian fit of one or two terms: header,
// minimiser messages, the parameter lines, chi squared, the summed terms.
void report_gaussians(Session& s, const FitCall& c, const IterativeFit& r, const char* header,
                      std::span<const char* const> labels, int terms) {
    ReportOut out = report_out(s, c);
    print_header(out, c, header);
    report(out, r.lm);
    if (r.lm == LmStatus::singular) {
        s.fit_variables.N_FIT = 0;
        return;
    }
    for (std::size_t i = 0; i < labels.size(); ++i) print_value(out, labels[i], r.A[i]);
    print_value(out, "chi squared =  ", r.CHISQ);
    const CurveSlots slots = allocate_curve(s.fit_variables, c.CURVE, 200);
    grid_first_to_last(slots.x, c.xs());
    for (std::size_t i = 0; i < slots.x.size(); ++i) {
        double y = 0;
        for (int t = 0; t < terms; ++t) y += gauss_curve(slots.x[i], r.A.data() + 3 * t);
        slots.y[i] = static_cast<float>(y);
    }
}

}  // namespace

void gauss_fit(Session& s, const FitCall& c) {
    const IterativeFit r = solve_gauss_fit(c.xs(), c.ys());
    if (!admitted(s, c, r)) return;
    static constexpr const char* kLabels[] = {"a   =  ", "sig =  ", "x0  =  "};
    report_gaussians(s, c, r, "gauss fit: Y = a/(sqrt(2*Pi)*sig)*exp(-0.5*((x-x0)/sig)**2)", kLabels, 1);
}

void dgauss_fit(Session& s, const FitCall& c) {
    const IterativeFit r = solve_dgauss_fit(c.xs(), c.ys());
    if (!admitted(s, c, r)) return;
    static constexpr const char* kLabels[] = {
        "a_1   =  ", "sig_1 =  ", "x0_1  =  ", "a_2   =  ", "sig_2 =  ", "x0_2  =  "};
    report_gaussians(s, c, r,
                     "gauss fit: Y = a_1/(sqrt(2*Pi)*sig_1)*exp(-0.5*((x-x0_1)/sig_1)**2)+\n"
                     "                    a_2/(sqrt(2*Pi)*sig_2)*exp(-0.5*((x-x0_2)/sig_2)**2)",
                     kLabels, 2);
}

}  // namespace viewer
