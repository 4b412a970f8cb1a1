// The smooth beam model behind the example run: an L-band RF gun, a
// solenoid, a collimator and a drift, and a fixed-seed random generator.
// Used only by make_example.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace example {

constexpr double kPi = 3.14159265358979323846;
constexpr double kMe = 0.51099895;          // MeV, electron rest energy
constexpr double kC = 0.299792458;          // m/ns
constexpr double kEps0 = 8.8541878128e-12;  // F/m
constexpr double kZEnd = 5.0;               // m, end of the beam line
constexpr double kZSol = 0.30;              // m, solenoid centre
constexpr double kGunEnd = 0.20;            // m
constexpr int kZRecords = 300;              // records of the tables along z
constexpr int kParticles = 200000;          // macro particles at the start

// splitmix64: a fixed-seed generator whose sequence does not depend on the
// standard library, so the files are the same everywhere.
struct Rng {
    std::uint64_t s;
    std::uint64_t next() {
        std::uint64_t z = (s += 0x9e3779b97f4a7c15ULL);
        z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
        z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
        return z ^ (z >> 31);
    }
    double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }
    double normal() {
        double u = uniform(), v = uniform();
        return std::sqrt(-2.0 * std::log(u + 1e-300)) * std::cos(2 * kPi * v);
    }
};

inline double gauss(double x, double mu, double s) {
    return std::exp(-0.5 * (x - mu) * (x - mu) / (s * s));
}

// What makes the two transverse planes differ: the laser spot on the
// cathode is an ellipse, and a weak quadrupole component of the solenoid
// puts the vertical waist further down the line.
struct Plane {
    double spot;   // times the spot size sigma0
    double waist;  // m, added to the waist the solenoid makes
    double emit;   // times the emittance of the run
    double comp;   // m, added to where the emittance is compensated best
};
constexpr Plane kX{1.0, 0.0, 1.0, 0.0};
constexpr Plane kY{1.35, 0.45, 1.3, 0.5};

// The settings that make one run differ from another.
struct Settings {
    double e_gun;      // MeV, kinetic energy at the gun exit
    double b_sol;      // T, peak field of the solenoid
    double charge;     // nC
    double eps_scale;  // scale of all emittances
    double sigma0;     // mm, rms spot size on the cathode
};

// One point of the beam along z.
struct Beam {
    double z;       // m
    double t;       // ns, time of flight of the bunch centre
    double e;       // MeV, kinetic energy
    double p;       // MeV/c
    double bg;      // beta gamma
    double sx, sy;  // mm, rms sizes
    double cx, cy;  // mrad, correlated divergences
    double dx, dy;  // mrad, rms divergences
    double ex, ey;  // pi mrad mm, normalised emittances
    double sz;      // mm, rms bunch length
    double se;      // keV, rms energy spread
    double ez;      // pi keV mm, longitudinal emittance
    double larmor;  // rad
    double b;       // T, solenoid field on axis
    double q;       // nC, charge left
    double n;       // macro particles left
};

class Model {
public:
    explicit Model(const Settings& s) : s_(s) {
        // Time of flight and Larmor angle are integrals along z; a fine
        // table of both is taken once.
        table_z_.resize(kSteps + 1);
        table_t_.resize(kSteps + 1);
        table_l_.resize(kSteps + 1);
        double t = 0, l = 0;
        for (int i = 0; i <= kSteps; ++i) {
            double z = kDz * i;
            table_z_[i] = z;
            table_t_[i] = t;
            table_l_[i] = l;
            double zm = z + 0.5 * kDz;
            t += kDz / (beta(energy(zm)) * kC);
            l += kDz * 149.896229 * field(zm) / momentum(energy(zm));  // e B / 2p
        }
        waist_ = kZSol + 1.9 * std::pow(0.2 / s.b_sol, 3);
    }

    // MeV: the gun field, then a slow loss to space charge in the drift.
    double energy(double z) const {
        z = std::max(z, 0.0);
        return s_.e_gun * std::tanh(z / 0.07) - 0.004 * z * std::tanh(z / 0.3) + 1e-6;
    }
    static double momentum(double e) { return std::sqrt(e * (e + 2 * kMe)); }
    static double beta(double e) {
        double g = 1 + e / kMe;
        return std::sqrt(1 - 1 / (g * g));
    }
    double field(double z) const { return s_.b_sol / (1 + std::pow((z - kZSol) / 0.08, 2)); }

    // mm: growth in the gun, focus by the solenoid, a waist, growth again.
    double size(double z, const Plane& p) const {
        const double scale = p.spot, waist = waist_ + p.waist;
        double pre = s_.sigma0 * scale + 1.1 * scale * (1 - std::exp(-z / 0.15));
        double at_sol = s_.sigma0 * scale + 1.1 * scale * (1 - std::exp(-kZSol / 0.15));
        double w = 0.35 * std::sqrt(s_.eps_scale * p.emit);
        double theta = std::sqrt(at_sol * at_sol - w * w) / (waist - kZSol);
        double post = std::sqrt(w * w + theta * theta * (z - waist) * (z - waist));
        double k = 1 / (1 + std::exp(-(z - kZSol) / 0.03));
        return (1 - k) * pre + k * post;
    }
    // pi mrad mm: thermal start, growth in the gun, compensation downstream.
    double emittance(double z, const Plane& p) const {
        double grow = 1.3 * (1 - std::exp(-std::pow(z / 0.15, 2)));
        double comp = 0.7 * gauss(z, waist_ + 0.6 + p.comp, 0.85) * (1 - std::exp(-std::pow(z / 0.5, 2)));
        return s_.eps_scale * p.emit * (0.5 + grow - comp);
    }
    // Macro particles lost per metre: at the gun exit iris and the collimator.
    // The collimator scrapes more of a wider beam: its share grows with the
    // beam's area there, which the solenoid sets.
    double loss_density(double z) const {
        const double area = size(3.2, kX) * size(3.2, kY);  // mm^2
        return kParticles * (0.04 * gauss(z, 0.19, 0.006) + 0.01 * area * gauss(z, 3.2, 0.01)) * s_.charge;
    }
    double lost_before(double z) const {
        double n = 0;
        for (double u = 0.0005; u < z; u += 0.001) n += loss_density(u) * 0.001;
        return n;
    }

    double time(double z) const { return interpolate(table_t_, z); }
    double larmor(double z) const { return interpolate(table_l_, z); }
    // z of the bunch centre at time t, by bisection of the time table.
    double z_at(double t) const {
        auto it = std::lower_bound(table_t_.begin(), table_t_.end(), t);
        if (it == table_t_.begin()) return 0;
        if (it == table_t_.end()) return table_z_.back();
        std::size_t i = static_cast<std::size_t>(it - table_t_.begin());
        double f = (t - table_t_[i - 1]) / (table_t_[i] - table_t_[i - 1]);
        return table_z_[i - 1] + f * kDz;
    }
    double waist() const { return waist_; }
    const Settings& settings() const { return s_; }

    Beam at(double z) const {
        Beam b{};
        b.z = z;
        b.t = time(z);
        b.e = energy(z);
        b.p = momentum(b.e);
        b.bg = b.p / kMe;
        b.sx = size(z, kX);
        b.sy = size(z, kY);
        const double h = 1e-4;
        b.cx = (size(z + h, kX) - size(z - h, kX)) / (2 * h);  // mm/m = mrad
        b.cy = (size(z + h, kY) - size(z - h, kY)) / (2 * h);
        b.ex = emittance(z, kX);
        b.ey = emittance(z, kY);
        b.dx = std::hypot(b.cx, b.ex / (b.bg * b.sx));
        b.dy = std::hypot(b.cy, b.ey / (b.bg * b.sy));
        b.sz = 0.15 + 0.75 * (1 - std::exp(-z / 0.05)) + 0.05 * z;
        b.se = 2 + 23 * std::tanh(z / 0.1) + 1.5 * z;
        b.ez = 0.25 * b.sz * b.se;
        b.larmor = larmor(z);
        b.b = field(z);
        b.n = kParticles - lost_before(z);
        b.q = s_.charge * b.n / kParticles;
        return b;
    }

private:
    static constexpr int kSteps = 52000;
    static constexpr double kDz = 1e-4;  // m
    double interpolate(const std::vector<double>& v, double z) const {
        double u = std::clamp(z / kDz, 0.0, static_cast<double>(kSteps) - 1e-9);
        std::size_t i = static_cast<std::size_t>(u);
        return v[i] + (u - static_cast<double>(i)) * (v[i + 1] - v[i]);
    }
    Settings s_;
    std::vector<double> table_z_, table_t_, table_l_;
    double waist_;
};

}  // namespace example
