// Particle files of the example run: bunches drawn at random, then made to
// have exactly the moments that the run's tables print at the file's z, so
// that the statistics of a file and the tables agree in every printed digit.
// Used only by make_example.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "core/fortran_format.hpp"
#include "core/particles.hpp"
#include "tools/example_model.hpp"

namespace example {

// One record of .Xemit, .Yemit or .Zemit: z, t and five fields.
using Record = std::array<double, 7>;
struct Records {
    Record x, y, z;
};

// Where particles hit the wall: they stay in the file, flagged lost.
struct Loss {
    double z, r;  // m
    int count;
    std::uint64_t seed;  // the same particles are lost in every file
};

namespace detail {

inline std::string e12(double v) {
    return viewer::fmt_e12_4(v);
}
// The value a field prints as, and one unit of its last digit.
inline double printed(double v) {
    return std::stod(e12(v));
}
inline double last_unit(double v) {
    return v == 0 ? 1e-4 : std::pow(10.0, std::floor(std::log10(std::abs(v))) - 4);
}

// A number as a particle file holds it, and as it reads back.
inline std::string text(double v) {
    char b[24];
    std::snprintf(b, sizeof b, "%16.8E", v);
    return b;
}
inline double as_written(double v) {
    return std::stod(text(v));
}

inline double momentum(double e_kin) {  // eV/c, of an electron of e_kin eV
    const double mc = viewer::rest_energy_ev(1);
    return std::sqrt(e_kin * (e_kin + 2 * mc));
}

// Makes the pairs (u, v) have mean zero and, as a population, exactly the
// covariance (a, c; c, b): centred, whitened with the Cholesky factor of
// their own covariance, coloured with that of the target.
inline void shape(std::vector<double>& u, std::vector<double>& v, double a, double b, double c) {
    const double n = static_cast<double>(u.size());
    double mu = 0, mv = 0;
    for (std::size_t i = 0; i < u.size(); ++i) mu += u[i], mv += v[i];
    mu /= n, mv /= n;
    double uu = 0, vv = 0, uv = 0;
    for (std::size_t i = 0; i < u.size(); ++i) {
        u[i] -= mu, v[i] -= mv;
        uu += u[i] * u[i], vv += v[i] * v[i], uv += u[i] * v[i];
    }
    const double l11 = std::sqrt(uu / n), l21 = uv / n / l11, l22 = std::sqrt(vv / n - l21 * l21);
    const double t11 = std::sqrt(a), t21 = c / t11, t22 = std::sqrt(b - t21 * t21);
    for (std::size_t i = 0; i < u.size(); ++i) {
        const double w1 = u[i] / l11, w2 = (v[i] - l21 * w1) / l22;
        u[i] = t11 * w1;
        v[i] = t21 * w1 + t22 * w2;
    }
}

// Fields `at` of `r`, each moved by at most 0.4 of its last printed digit,
// and the field `derived` that `derive` forms from them, all four printing
// as the record's: of those, the one whose derived field lies nearest the
// middle of its printed digit (it moves least with the others). The
// printed digits of a record need not agree among themselves, so the search
// is needed; where nothing prints right the tool stops, naming `what`.
template <class Derive>
std::array<double, 4> printable(const Record& r, std::array<int, 3> at, int derived, Derive derive,
                                const char* what) {
    const auto f = [&](int k) { return r[static_cast<std::size_t>(k)]; };
    const double a0 = printed(f(at[0])), b0 = printed(f(at[1])), c0 = printed(f(at[2])),
                 d0 = printed(f(derived));
    double best = 0.5;
    std::array<double, 4> out{};
    for (int i = -4; i <= 4; ++i)
        for (int j = -4; j <= 4; ++j)
            for (int k = -4; k <= 4; ++k) {
                const double a = a0 + 0.1 * i * last_unit(a0), b = b0 + 0.1 * j * last_unit(b0),
                             c = c0 + 0.1 * k * last_unit(c0);
                const double d = derive(a, b, c);
                if (e12(a) != e12(f(at[0])) || e12(b) != e12(f(at[1])) || e12(c) != e12(f(at[2])) ||
                    e12(d) != e12(f(derived)))
                    continue;
                const double score = std::max({std::abs(d - d0) / last_unit(d0), 0.1 * std::abs(i),
                                               0.1 * std::abs(j), 0.1 * std::abs(k)});
                if (score >= best) continue;
                best = score;
                out = {a, b, c, d};
            }
    if (best >= 0.5) {
        std::cerr << "make_example: no bunch prints the " << what << " at z = " << r[0] << "\n";
        std::exit(1);
    }
    return out;
}

// The moments xx [m²], pp [(eV/c)²] and xp [m eV/c] of one plane whose rms,
// emittance, correlation and the x' rms they imply print as the record's.
inline std::array<double, 3> plane_moments(const Record& r, double pz, double mc) {
    const auto [s, e, c, d] = printable(
        r, {3, 5, 6}, 4, [&](double s_, double e_, double c_) { return std::hypot(c_, e_ * mc / (s_ * pz)); },
        "record");
    return {s * s * 1e-6, d * d * 1e-6 * pz * pz, c * s * 1e-6 * pz};
}

// Length [m], spread [eV] and emittance [m eV] whose rms, spread, emittance
// and the correlation they imply print as the .Zemit record's.
inline std::array<double, 3> long_moments(const Record& r) {
    const auto [s, e, m, c] = printable(
        r, {3, 4, 5}, 6,
        [](double s_, double e_, double m_) {
            return std::sqrt(std::max(0.0, e_ * e_ - (m_ / s_) * (m_ / s_)));
        },
        ".Zemit record");
    (void)c;
    return {s * 1e-3, e * 1e3, m};
}

// The particles lost at `l`, in absolute values.
inline std::vector<viewer::Particle> lost_at(const Loss& l, const Model& m, double charge) {
    Rng rng{l.seed};
    std::vector<viewer::Particle> out;
    for (int i = 0; i < l.count; ++i) {
        viewer::Particle p;
        const double phi = 2 * kPi * rng.uniform(), r = l.r * (1 + 0.05 * rng.uniform());
        p.z = l.z + 2e-3 * (rng.uniform() - 0.5);
        const double pt = 0.03 * momentum(m.energy(p.z) * 1e6), pz = momentum(m.energy(p.z) * 1e6);
        p.x = r * std::cos(phi), p.y = r * std::sin(phi);
        p.px = pt * std::cos(phi), p.py = pt * std::sin(phi), p.pz = std::sqrt(pz * pz - pt * pt);
        p.clock = m.time(p.z);
        p.charge = charge;
        p.flag = -15;
        out.push_back(p);
    }
    return out;
}

}  // namespace detail

// Writes `lines` particles at the z of `rec` to `path`: the reference
// particle at the bunch centre, the active bunch with the moments of the
// records (a few of it probes), and the particles lost at `losses`.
inline void write_particles(const std::string& path, const Records& rec, const Model& m, int lines,
                            const std::vector<Loss>& losses, std::uint64_t seed) {
    using detail::printed;
    using viewer::Particle;
    const double mc = viewer::rest_energy_ev(1);
    const Beam b = m.at(rec.x[0]);
    std::vector<Particle> lost;
    int lost_count = 0;
    for (const Loss& l : losses) lost_count += l.count;
    const int n = lines - lost_count, others = n - 1;  // active; without the reference
    const double charge = -b.q / n;
    for (const Loss& l : losses)
        for (const Particle& p : detail::lost_at(l, m, charge)) lost.push_back(p);

    // The reference sits at the mean, so the others carry the whole spread.
    const double spread = static_cast<double>(n) / others;
    Particle ref;
    ref.x = printed(rec.x[2]) * 1e-3, ref.y = printed(rec.y[2]) * 1e-3;
    ref.z = printed(rec.x[0]), ref.clock = printed(rec.x[1]);
    const double e0 = printed(rec.z[2]) * 1e6;  // eV
    ref.pz = detail::momentum(e0);
    ref.charge = charge;

    Rng rng{seed};
    std::vector<double> g[6];
    for (auto& v : g) v.resize(static_cast<std::size_t>(others));
    for (int i = 0; i < others; ++i)
        for (auto& v : g) v[static_cast<std::size_t>(i)] = rng.normal();
    std::vector<double> z = g[4], e = g[5];
    const auto [sz, se, ez] = detail::long_moments(rec.z);
    detail::shape(z, e, sz * sz * spread, se * se * spread, std::sqrt(sz * sz * se * se - ez * ez) * spread);

    // x' is px over <pz>, and <pz> follows from px and py: a few rounds agree.
    std::vector<double> x, px, y, py, pz(static_cast<std::size_t>(others));
    double pz_avg = ref.pz;
    for (int round = 0; round < 5; ++round) {
        const auto mx = detail::plane_moments(rec.x, pz_avg, mc),
                   my = detail::plane_moments(rec.y, pz_avg, mc);
        x = g[0], px = g[1], y = g[2], py = g[3];
        detail::shape(x, px, mx[0] * spread, mx[1] * spread, mx[2] * spread);
        detail::shape(y, py, my[0] * spread, my[1] * spread, my[2] * spread);
        double sum = ref.pz;
        for (std::size_t i = 0; i < pz.size(); ++i) {
            const double p = detail::momentum(e0 + e[i]);
            pz[i] = std::sqrt(p * p - px[i] * px[i] - py[i] * py[i]);
            sum += pz[i];
        }
        pz_avg = sum / n;
    }

    // Lines after the first hold z, pz and clock from the reference as read.
    std::ofstream f(path, std::ios::binary);
    const double rz = detail::as_written(ref.z), rpz = detail::as_written(ref.pz),
                 rt = detail::as_written(ref.clock);
    auto put = [&](const Particle& p, bool first) {
        f << detail::text(p.x) << detail::text(p.y) << detail::text(first ? p.z : p.z - rz)
          << detail::text(p.px) << detail::text(p.py) << detail::text(first ? p.pz : p.pz - rpz)
          << detail::text(first ? p.clock : p.clock - rt) << detail::text(p.charge);
        char tail[16];
        std::snprintf(tail, sizeof tail, "%4d%4d\n", p.species, p.flag);
        f << tail;
    };
    put(ref, true);
    std::size_t next_lost = 0, next = 0;
    for (int line = 1; line < lines; ++line) {
        // the lost spread evenly among the others
        if (next_lost < lost.size() &&
            line ==
                static_cast<int>((2 * next_lost + 1) * static_cast<std::size_t>(lines) / (2 * lost.size()))) {
            put(lost[next_lost++], false);
            continue;
        }
        Particle p = ref;
        p.x += x[next], p.y += y[next], p.z += z[next];
        p.px = px[next], p.py = py[next], p.pz = pz[next];
        p.flag = next % 400 == 199 ? 3 : 5;  // a few probes
        put(p, false);
        ++next;
    }
    if (!f) {
        std::cerr << "make_example: cannot write " << path << "\n";
        std::exit(1);
    }
}

}  // namespace example
