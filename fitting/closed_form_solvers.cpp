// The solvers of the closed-form fits. Five reduce to a straight line on
// transformed data, two to one three-term elimination, and the cubic is
// solved on centred data. Sums and coefficients are 64-bit.
#include <cmath>

#include "fitting/closed_form_fits.hpp"

namespace viewer {
namespace {

// Which points a model can take: the transforms divide by or take logs of them.
enum class Validity { all, y_nonzero, y_positive, xy_positive };

bool is_valid(Validity v, float x, float y) {
    switch (v) {
        case Validity::all:
            return true;
        case Validity::y_nonzero:
            return y != 0.0f;
        case Validity::y_positive:
            return y > 0.0f;
        case Validity::xy_positive:
            return x > 0.0f && y > 0.0f;
    }
    return true;
}

// Least-squares sums of v = a + b*u + c*w over the valid points.
struct Sums {
    int n = 0, ZCOUNT = 0;
    double Su = 0, Sv = 0, Sw = 0, Suu = 0, Suv = 0, Suw = 0, Sww = 0, Swv = 0;
    double ZMIN = 1.0e15, ZMAX = 0.0;
};

struct UVW {
    double u, v, w;
};

template <class Transform>
Sums gather(std::span<const float> X, std::span<const float> Y, Validity validity, Transform t) {
    Sums s;
    for (std::size_t i = 0; i < X.size(); ++i) {
        if (!is_valid(validity, X[i], Y[i])) {
            ++s.ZCOUNT;
            continue;
        }
        const double x = X[i], y = Y[i];
        const UVW p = t(x, y);
        ++s.n;
        s.Su += p.u;
        s.Sv += p.v;
        s.Sw += p.w;
        s.Suu += p.u * p.u;
        s.Suv += p.u * p.v;
        s.Suw += p.u * p.w;
        s.Sww += p.w * p.w;
        s.Swv += p.w * p.v;
        if (x < s.ZMIN) s.ZMIN = x;
        if (x > s.ZMAX) s.ZMAX = x;
    }
    return s;
}

ClosedFit start(const Sums& s) {
    ClosedFit r;
    r.ZCOUNT = s.ZCOUNT;
    r.n = s.n;
    r.ZMIN = s.ZMIN;
    r.ZMAX = s.ZMAX;
    if (s.n == 0) r.status = FitStatus::no_valid_points;
    return r;
}

struct Line {
    double slope, intercept;
};

// No guard on the denominator: too few or equal abscissae print non-finite
// coefficients, which tells the user as much.
Line regress(const Sums& s) {
    const double n = s.n;
    const double slope = (s.Suv - s.Sv * s.Su / n) / (s.Suu - s.Su * s.Su / n);
    return {slope, (s.Sv - slope * s.Su) / n};
}

// {a, b, c} of v = a + b*u + c*w, eliminating a and b first.
std::array<double, 3> eliminate(const Sums& s) {
    const double n = s.n;
    const double T1 = s.Suv - s.Sv * s.Su / n;
    const double T2 = s.Suw - s.Sw * s.Su / n;
    const double D = 1.0 / (s.Suu - s.Su * s.Su / n);
    const double c = ((T1 * T2 * D + s.Sv * s.Sw / n) - s.Swv) / (T2 * T2 * D + (s.Sw * s.Sw / n - s.Sww));
    const double b = (T1 - T2 * c) * D;
    const double a = (s.Sv - (b * s.Su + c * s.Sw)) / n;
    return {a, b, c};
}

}  // namespace

ClosedFit solve_aoverr(std::span<const float> X, std::span<const float> Y) {
    // 1/Y = (r - r0)/A is a straight line in r.
    const Sums s = gather(X, Y, Validity::y_nonzero, [](double x, double y) { return UVW{x, 1.0 / y, 0}; });
    ClosedFit r = start(s);
    if (r.status != FitStatus::ok) return r;
    const Line l = regress(s);
    const double A = 1.0 / l.slope;
    r.coef = {A, (l.slope * s.Su - s.Sv) / s.n * A};
    return r;
}

ClosedFit solve_square_root(std::span<const float> X, std::span<const float> Y) {
    const Sums s = gather(X, Y, Validity::y_positive, [](double x, double y) { return UVW{x, y * y, 0}; });
    ClosedFit r = start(s);
    if (r.status != FitStatus::ok) return r;
    const Line l = regress(s);
    r.coef = {l.intercept, l.slope};
    return r;
}

ClosedFit solve_straight(std::span<const float> X, std::span<const float> Y) {
    const Sums s = gather(X, Y, Validity::all, [](double x, double y) { return UVW{x, y, 0}; });
    ClosedFit r = start(s);
    if (r.status != FitStatus::ok) return r;
    const Line l = regress(s);
    r.coef = {l.intercept, l.slope};
    return r;
}

ClosedFit solve_parabolic(std::span<const float> X, std::span<const float> Y) {
    const Sums s = gather(X, Y, Validity::all, [](double x, double y) { return UVW{x, y, x * x}; });
    ClosedFit r = start(s);
    if (r.status != FitStatus::ok) return r;
    const auto abc = eliminate(s);
    r.coef = {abc[0], abc[1], abc[2]};
    return r;
}

ClosedFit solve_power(std::span<const float> X, std::span<const float> Y) {
    const Sums s = gather(X, Y, Validity::xy_positive, [](double x, double y) {
        return UVW{std::log(x), std::log(y), 0};
    });
    ClosedFit r = start(s);
    if (r.status != FitStatus::ok) return r;
    const Line l = regress(s);
    r.coef = {std::exp(l.intercept), l.slope};
    return r;
}

ClosedFit solve_exponential(std::span<const float> X, std::span<const float> Y) {
    const Sums s = gather(X, Y, Validity::y_positive, [](double x, double y) {
        return UVW{x, std::log(y), 0};
    });
    ClosedFit r = start(s);
    if (r.status != FitStatus::ok) return r;
    if (s.Suu - s.Su * s.Su / s.n == 0.0) {
        r.status = FitStatus::no_solution;
        return r;
    }
    const Line l = regress(s);
    r.coef = {l.intercept, l.slope};
    return r;
}

ClosedFit solve_mod_exponential(std::span<const float> X, std::span<const float> Y) {
    // ln Y = ln a + b*ln x + c*x
    const Sums s = gather(X, Y, Validity::xy_positive, [](double x, double y) {
        return UVW{std::log(x), std::log(y), x};
    });
    ClosedFit r = start(s);
    if (r.status != FitStatus::ok) return r;
    const auto abc = eliminate(s);
    // exp of more than 200 is no amplitude a plot can show.
    if (abc[0] > 200.0) {
        r.status = FitStatus::no_solution;
        return r;
    }
    r.coef = {abc[0], abc[1], abc[2]};
    return r;
}

ClosedFit solve_pol_3rd(std::span<const float> X, std::span<const float> Y) {
    ClosedFit r;
    r.n = static_cast<int>(X.size());
    if (X.empty()) {
        r.status = FitStatus::no_valid_points;
        return r;
    }
    // Centring keeps the normal equations well conditioned far from the origin.
    const double n = static_cast<double>(X.size());
    double ZAV = 0, PAV = 0;
    for (std::size_t i = 0; i < X.size(); ++i) {
        ZAV += X[i];
        PAV += Y[i];
    }
    ZAV /= n;
    PAV /= n;
    double SUZ2 = 0, SUZ3 = 0, SUZ4 = 0, SUZ5 = 0, SUZ6 = 0, SUPZ = 0, SUPZ2 = 0, SUPZ3 = 0;
    for (std::size_t i = 0; i < X.size(); ++i) {
        const double z = X[i] - ZAV, p = Y[i] - PAV;
        const double z2 = z * z, z3 = z2 * z;
        SUZ2 += z2;
        SUZ3 += z3;
        SUZ4 += z2 * z2;
        SUZ5 += z2 * z3;
        SUZ6 += z3 * z3;
        SUPZ += z * p;
        SUPZ2 += z2 * p;
        SUPZ3 += z3 * p;
    }
    if (SUZ2 <= 0.0) {
        r.status = FitStatus::no_solution;
        return r;
    }
    // With the sums of z and p zero, the first two normal equations give a'
    // and b' in terms of c' and d', leaving a 2x2 system.
    const double B_CR = SUPZ2 - SUPZ * SUZ3 / SUZ2;
    const double Z43 = SUZ4 - SUZ2 * SUZ2 / n - SUZ3 * SUZ3 / SUZ2;
    const double Z54 = SUZ5 - SUZ3 * SUZ2 / n - SUZ3 * SUZ4 / SUZ2;
    const double Z65 = SUZ3 / n * (SUZ2 * Z54 / Z43 - SUZ3) + (SUZ6 - SUZ5 * Z54 / Z43) +
                       SUZ4 / SUZ2 * (Z54 * SUZ3 / Z43 - SUZ4);
    const double d = (B_CR * SUZ3 * SUZ2 / (Z43 * n) + SUPZ3 + SUZ4 / SUZ2 * (B_CR * SUZ3 / Z43 - SUPZ) -
                      SUZ5 * B_CR / Z43) /
                     Z65;
    const double c = (B_CR - Z54 * d) / Z43;
    const double b = (SUPZ - (c * SUZ3 + SUZ4 * d)) / SUZ2;
    // Expand p(x - ZAV) + PAV back into powers of x.
    const double q = ZAV;
    r.coef[3] = d;
    r.coef[2] = c - 3.0 * d * q;
    r.coef[1] = 3.0 * q * q * d - 2.0 * q * c + b;
    r.coef[0] = c * q * q + PAV + (-SUZ2 * c - SUZ3 * d) / n - (b * q + q * q * q * d);
    return r;
}

Extremum parabola_extremum(const ClosedFit& r) {
    const double a = r.coef[0], b = r.coef[1], c = r.coef[2];
    const double x0 = -b / (2.0 * c);
    return {x0, (c * x0 + b) * x0 + a};
}

std::vector<Extremum> cubic_extrema(const ClosedFit& r) {
    const double a = r.coef[0], b = r.coef[1], c = r.coef[2], d = r.coef[3];
    // Roots of b + 2c*x + 3d*x^2.
    const double P = -c / (3.0 * d);
    const double Q = P * P - b / (3.0 * d);
    auto value = [&](double x0) { return d * (x0 * x0 * x0) + a + (c * x0 + b) * x0; };
    if (Q > 0.0) {
        const double root = std::sqrt(Q);
        return {{P + root, value(P + root)}, {P - root, value(P - root)}};
    }
    if (Q == 0.0) return {{P, P * b + P * P * c + P * P * P * d + a}};
    return {};
}

}  // namespace viewer
