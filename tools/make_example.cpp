// make_example: writes the example project "rfgun" into a directory, for
// trying the viewer without a tracker at hand.
//
//   make_example [DIR]        (DIR defaults to the current directory)
//
// The beam line is an L-band RF gun (1.6 cells, z 0 to 0.2 m, kinetic
// energy rising to about 6 MeV), a solenoid at z = 0.3 m, a collimator at
// 3.2 m and a drift to 5 m. A simple smooth model of the beam gives the
// numbers: energy, rms sizes with the solenoid focus and a waist, emittance
// growth in the gun and its compensation downstream, bunch length, energy
// spread, the Larmor rotation, the time of flight, losses at the gun exit
// iris and at the collimator. The beam is not round (an elliptic laser
// spot, the vertical waist further down the line), and it is coupled: it
// leaves the cathode with angular momentum and the solenoid turns it.
//
// The three runs are a solenoid scan, 0.200 T (.001), 0.215 T (.002) and
// 0.190 T (.003), all else equal; the .Scan of the series holds these
// fields among its points, with the figures of merit at the end of the line.
//
// Files (run number .001 to .003; "-" = not in that run):
//
//   kind        .001 .002 .003  records
//   .Xemit       x    x    x    300 along z, fixed 7E12.4 (also .Yemit, .Zemit)
//   .Xemit2      x    x    -    300, fixed 7E12.4 (also .Yemit2, .Zemit2)
//   .TRemit      x    x    -    300, fixed 5E12.4
//   .Cemit       x    x    x    300, fixed 13E12.4
//   .C99emit     -    x    -    300, fixed 13E12.4 (.002: takes the place of .Cemit)
//   .Sub_emit    x    -    x    300, fixed 8E12.4
//   .Cr_emit     -    x    x    300, fixed 8E12.4 (.003: .Sub_emit takes its place)
//   .LandF       x    x    x    301, fixed 6E12.4, the first record is the start state
//   .Sigma       x    x    -    200, free, 23 reals of 17 digits
//   .ref         x    x    x    800 at equal time steps, free, 7 reals of 20 columns
//   .tcheck      x    x    -    20 during the emission, then 480 at equal time steps,
//                               free, 7 reals and an integer
//   .track       x    x    -    10 probes interleaved, 250 moments, free, 2 integers
//                               and 6 reals; probe 9 is lost at the gun exit; the
//                               last field is 0 in .001 (axially symmetric) and
//                               the vertical field in .002
//   .Cathode     x    x    -    400 time steps of the emission, fixed 7E12.4 + L3
//   .PScan       x    x    -    3 phase scans of 360 records (PHASE 1 to 360)
//   .Scan        x    x    -    solenoid scan, free, 12 reals, appended out of
//                               order; .002 holds the records of .001 and more
//   .lab         x    x    -    11 label groups of three A80 lines
//   .Error       x    x    -    40 runs of a run series, free, 12 reals
//   .lab-E       x    x    -    11 label groups of three A80 lines
//   .NNNN.       x    -    -    particles at z = 0.2, 0.3 and 5 m (NNNN: z in cm,
//                               rfgun.0020.001), 2000 a file, free, 8 reals and
//                               2 integers; the active ones have the moments the
//                               .Xemit, .Yemit and .Zemit records print at that z
//                               (but the longitudinal correlation, which follows
//                               from the others), a few are probes, a few lost
//                               at the gun exit iris and the collimator
//   Geometry.dat                aperture outline, "z r" a line, m and mm
//
// The output is the same on every run of the program: the only random
// numbers come from a fixed-seed generator of its own.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"
#include "tools/example_model.hpp"
#include "tools/example_particles.hpp"

// The correlation of length and energy that goes with a longitudinal
// emittance of a quarter of length times spread: sqrt(1 - 1/16).
constexpr double kCorrelation = 0.96824583655185;

namespace {

using viewer::fmt_e12_4;
using viewer::fmt_exp;
using viewer::fmt_i;
using viewer::Kind;
using viewer::run_file_name;
using viewer::run_kind;

using namespace example;

// ---------------------------------------------------------------------------
// Writing

class Out {
public:
    Out(const std::string& dir, const std::string& name)
        : path_(dir + "/" + name), f_(path_, std::ios::binary) {
        if (!f_) {
            std::cerr << "make_example: cannot write " << path_ << "\n";
            std::exit(1);
        }
    }
    // A fixed record of 12-column fields.
    void fixed(std::initializer_list<double> v, const char* tail = "") {
        for (double x : v) f_ << fmt_e12_4(x);
        f_ << tail << '\n';
    }
    void fixed(const Record& v) {
        for (double x : v) f_ << fmt_e12_4(x);
        f_ << '\n';
    }
    void text(const std::string& s) { f_ << s << '\n'; }
    std::ofstream& stream() { return f_; }

private:
    std::string path_;
    std::ofstream f_;
};

std::string name(Kind kind, int run) {
    char r[8];
    std::snprintf(r, sizeof r, ".%03d", run);
    return run_file_name(run_kind(kind), "rfgun", r);
}

std::vector<double> z_positions() {
    std::vector<double> z;
    for (int i = 1; i <= kZRecords; ++i) z.push_back(kZEnd * i / kZRecords);
    return z;
}

// The records of .Xemit, .Yemit and .Zemit at zz.
Records emittance_records(const Model& m, double zz) {
    Beam b = m.at(zz);
    double offset = 2e-3 * std::sin(2 * kPi * zz / 3);  // mm, a small misalignment
    return {{zz, b.t, offset, b.sx, b.dx, b.ex, b.cx},
            {zz, b.t, -0.5 * offset, b.sy, b.dy, b.ey, b.cy},
            {zz, b.t, b.e, b.sz, b.se, b.ez, kCorrelation * b.se}};
}

void write_emittance_tables(const std::string& dir, int run, const Model& m, bool with_correlations) {
    Out x(dir, name(Kind::Xemit, run)), y(dir, name(Kind::Yemit, run)), z(dir, name(Kind::Zemit, run));
    for (double zz : z_positions()) {
        const Records r = emittance_records(m, zz);
        x.fixed(r.x);
        y.fixed(r.y);
        z.fixed(r.z);
    }
    if (!with_correlations) return;
    Out x2(dir, name(Kind::Xemit2, run)), y2(dir, name(Kind::Yemit2, run)), z2(dir, name(Kind::Zemit2, run));
    Out tr(dir, name(Kind::TRemit, run));
    for (double zz : z_positions()) {
        Beam b = m.at(zz);
        double k = 1 - std::exp(-zz / 0.3);  // correlations build up behind the gun
        x2.fixed({zz, 1.5e-7 * k, -4.0e-8 * k, 0.97 * b.ex, 2.2e-7 * k, 6.0e-8 * k, 0.93 * b.ex});
        y2.fixed({zz, 1.6e-7 * k, -4.2e-8 * k, 0.97 * b.ey, 2.3e-7 * k, 6.3e-8 * k, 0.93 * b.ey});
        z2.fixed({zz, 1e-3 * b.e, 0.12 * k, -0.03 * k, 0.62 * b.ez, 0.004 * k, 0.47 * b.ez});
        tr.fixed({zz, b.t, b.ex / b.bg, b.ey / b.bg, 0.8 * b.ez});
    }
}

// Core emittances: `frac` are the ratios of the three cores to the full beam.
void write_core(const std::string& dir, Kind suffix, int run, const Model& m, std::array<double, 3> frac) {
    Out c(dir, name(suffix, run));
    for (double zz : z_positions()) {
        Beam b = m.at(zz);
        double d = 0.03 * std::tanh(zz - 1);  // the halo grows a little along the line
        c.fixed({zz, b.ex, (frac[0] - d) * b.ex, (frac[1] - d) * b.ex, (frac[2] - d) * b.ex, b.ey,
                 (frac[0] - d) * b.ey, (frac[1] - d) * b.ey, (frac[2] - d) * b.ey, b.ez, frac[0] * b.ez,
                 frac[1] * b.ez, frac[2] * b.ez});
    }
}

// A part of the beam: `kept` is its share of the charge.
void write_part(const std::string& dir, Kind suffix, int run, const Model& m, double kept) {
    Out c(dir, name(suffix, run));
    for (double zz : z_positions()) {
        Beam b = m.at(zz);
        double k = kept * (1 - 0.02 * std::tanh(zz));
        c.fixed({zz, b.t, std::sqrt(k) * b.sx, std::sqrt(k) * b.sy, (0.55 + 0.3 * k) * b.ex,
                 (0.55 + 0.3 * k) * b.ey, k * b.q, (1 - k) * b.q});
    }
}

void write_losses(const std::string& dir, int run, const Model& m) {
    Out f(dir, name(Kind::LandF, run));
    Beam prev = m.at(0);
    f.fixed({0.0, prev.n, prev.q, 0.0, 0.0, 0.0});
    for (double zz : z_positions()) {
        Beam b = m.at(zz);
        double lost = std::round(prev.n - b.n);
        double per_particle = m.settings().charge * 1e-9 / kParticles * 1e6;  // J per MeV
        f.fixed(
            {zz, std::round(b.n), b.q, lost, lost * b.e * per_particle, (b.e - prev.e) * 1e6 * b.q * 1e-9});
        prev = b;
    }
}

void write_sigma(const std::string& dir, int run, const Model& m) {
    Out f(dir, name(Kind::Sigma, run));
    for (int i = 1; i <= 200; ++i) {
        double zz = kZEnd * i / 200;
        Beam b = m.at(zz);
        // Uncoupled x, x', y, y' in m and rad in the frame of the beam's
        // ellipse, then coupled: the field on the cathode leaves the beam an
        // angular momentum it keeps along the line, and the solenoid turns
        // the ellipse (it is not round) by the Larmor angle.
        double s[6][6] = {};
        s[0][0] = std::pow(b.sx * 1e-3, 2);
        s[0][1] = b.sx * b.cx * 1e-6;
        s[1][1] = std::pow(b.dx * 1e-3, 2);
        s[2][2] = std::pow(b.sy * 1e-3, 2);
        s[2][3] = b.sy * b.cy * 1e-6;
        s[3][3] = std::pow(b.dy * 1e-3, 2);
        s[4][4] = std::pow(b.sz * 1e-3, 2);
        s[5][5] = std::pow(b.se * 1e-3 / b.e, 2);
        s[4][5] = -0.9 * std::sqrt(s[4][4] * s[5][5]);
        for (int r = 0; r < 6; ++r)
            for (int c = 0; c < r; ++c) s[r][c] = s[c][r];
        double k = 0.5 * b.b / m.settings().b_sol + 0.08 * std::tanh(zz / 0.05);  // 1/m
        double psi = 0.35 * b.larmor;
        double T[4][4] = {{1, 0, 0, 0}, {0, 1, k, 0}, {0, 0, 1, 0}, {-k, 0, 0, 1}};
        double cs = std::cos(psi), sn = std::sin(psi);
        double R[4][4] = {{cs, 0, sn, 0}, {0, cs, 0, sn}, {-sn, 0, cs, 0}, {0, -sn, 0, cs}};
        double A[4][4] = {};
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                for (int j = 0; j < 4; ++j) A[r][c] += R[r][j] * T[j][c];
        double out[4][4] = {};
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c)
                for (int j = 0; j < 4; ++j)
                    for (int l = 0; l < 4; ++l) out[r][c] += A[r][j] * s[j][l] * A[c][l];
        for (int r = 0; r < 4; ++r)
            for (int c = 0; c < 4; ++c) s[r][c] = out[r][c];
        std::string line = fmt_exp(zz, 24, 16, 'E') + fmt_exp(b.e, 24, 16, 'E');
        for (int r = 0; r < 6; ++r)
            for (int c = r; c < 6; ++c) line += fmt_exp(s[r][c], 24, 16, 'E');
        f.text(line);
    }
}

void write_reference(const std::string& dir, int run, const Model& m) {
    Out f(dir, name(Kind::ref, run));
    const double t_end = m.time(kZEnd);
    for (int i = 1; i <= 800; ++i) {
        double t = t_end * i / 800;
        double zz = m.z_at(t);
        double p = Model::momentum(m.energy(zz));
        double grad = (Model::momentum(m.energy(zz + 1e-4)) - Model::momentum(m.energy(zz - 1e-4))) / 2e-4;
        double xx = 0.05 * std::sin(m.larmor(zz)) * (1 + zz);  // mm, from a tilted solenoid
        double yy = 0.05 * (1 - std::cos(m.larmor(zz))) * (1 + zz);
        std::string line;
        for (double v : {zz, t, p, grad, m.larmor(zz), xx, yy}) line += fmt_exp(v, 20, 12, 'E');
        f.text(line);
    }
}

void write_tcheck(const std::string& dir, int run, const Model& m) {
    Out f(dir, name(Kind::tcheck, run));
    const double t_end = m.time(kZEnd);
    for (int i = 0; i < 20; ++i)  // emission: no scaling yet
        f.fixed({0.0, -0.012 + 0.0012 * i, 0, 0, 0, 0, 0}, fmt_i(0, 10).c_str());
    for (int i = 1; i <= 480; ++i) {
        double t = t_end * i / 480;
        double zz = m.z_at(t);
        Beam b = m.at(zz), b0 = m.at(1e-3);
        double nr = 1.0 + 0.01 * std::tanh(zz);
        double r_term = std::pow(b0.sx / b.sx, 0.02);
        double z_term = std::pow(b0.sz / b.sz, 0.01 * nr);
        double g_term = std::pow((1 + b.e / kMe) / (1 + b0.e / kMe), -0.005);
        int count = std::min(50, static_cast<int>(zz * 12));
        f.fixed({zz, t, r_term, z_term, g_term, std::pow(b0.sx / b.sx, 0.015), std::pow(b0.sz / b.sz, 0.012)},
                fmt_i(count, 10).c_str());
    }
}

void write_tracks(const std::string& dir, int run, const Model& m, bool three_d) {
    Out f(dir, name(Kind::track, run));
    const double t_end = m.time(kZEnd);
    struct Probe {
        double r0, phi, dz;  // mm, rad, mm
        bool lost = false;
    };
    std::vector<Probe> probes;
    for (int k = 0; k < 10; ++k)
        probes.push_back({0.15 + 0.12 * k, 2 * kPi * k / 10 + 0.3, (k - 4.5) * 0.12});
    probes[8].r0 = 1.6;  // far out: lost at the gun exit iris
    for (int i = 0; i < 250; ++i) {
        double t = t_end * i / 249;
        for (std::size_t k = 0; k < probes.size(); ++k) {
            Probe& pr = probes[k];
            if (pr.lost) continue;
            double zz = m.z_at(t) + pr.dz * 1e-3 * std::min(1.0, t / 0.05);
            Beam b = m.at(zz);
            double r = pr.r0 * b.sx / m.size(0, kX);
            double a = pr.phi - b.larmor;
            double x = r * std::cos(a), y = r * std::sin(a);
            int stat = 0;
            if (k == 8 && zz > 0.185) pr.lost = true, stat = -1;
            double ez = 4e5 * m.settings().charge * (pr.dz / 0.6) * std::exp(-zz) / (1 + b.bg * b.bg / 20);
            double er = 2e5 * m.settings().charge * r / (b.sx * b.sx + 0.3) / (1 + b.bg * b.bg);
            double ex = three_d ? er * std::cos(a) : er;
            double ey = three_d ? er * std::sin(a) : 0.0;
            std::string line = fmt_i(static_cast<long long>(k + 1), 5) + fmt_i(stat, 5);
            for (double v : {zz, x, y, ez, ex, ey}) line += fmt_e12_4(v);
            f.text(line);
        }
    }
}

void write_cathode(const std::string& dir, int run, const Model& m) {
    Out f(dir, name(Kind::Cathode, run));
    const double sigma_t = 0.004;                              // ns, laser pulse
    const double e0 = 60e6 * m.settings().e_gun / 6.2;         // V/m, gun gradient
    const double a = e0 * 1.75882001e11;                       // m/s^2
    const double c = kC * 1e9;                                 // m/s
    const double radius = 1.2e-3 * m.settings().sigma0 / 0.4;  // m, emitting area
    auto flight = [&](double tau) {                            // m, after tau ns from rest
        double s = a * tau * 1e-9 / c;
        return tau > 0 ? c * c / a * (std::sqrt(1 + s * s) - 1) : 0.0;
    };
    for (int i = 0; i < 400; ++i) {
        double t = -0.012 + 0.042 * i / 399;  // ns
        double q = m.settings().charge * 0.5 * std::erfc(-t / (sigma_t * std::sqrt(2.0)));
        double zsum = 0, w = 0;
        double first = -1e9, last = 1e9;
        for (double s = -0.012; s <= t; s += 0.0002) {
            double g = gauss(s, 0, sigma_t);
            zsum += g * flight(t - s);
            w += g;
            first = std::max(first, flight(t - s));
            last = std::min(last, flight(t - s));
        }
        double zm = w > 0 ? zsum / w : 0.0;
        double ez = q * 1e-9 / (2 * kEps0 * kPi * radius * radius) * (1 - zm / std::hypot(zm, radius));
        double eacc = -e0 * std::sin(2 * kPi * 1.3 * t + 0.7);
        bool emitting = t < 3 * sigma_t;
        f.fixed({zm, t, ez, eacc, q, w > 0 ? last - zm : 0.0, w > 0 ? first - zm : 0.0},
                emitting ? "  T" : "  F");
    }
}

void write_phase_scans(const std::string& dir, int run, const Model& m) {
    Out f(dir, name(Kind::PScan, run));
    const double beta0 = Model::beta(1e-6);  // start at 1 eV
    for (double gradient : {1.0, 0.95, 0.9}) {
        double emax = m.settings().e_gun * gradient;
        for (int ph = 1; ph <= 360; ++ph) {
            double e = 0, comp = 0, brat = 0;
            if (ph > 5 && ph < 175) {  // no particle leaves the cathode outside the window
                double window = std::pow(std::sin(kPi * (ph - 5) / 170.0), 0.4);
                e = emax * window * (1 - 0.25 * std::pow((ph - 60) / 115.0, 2));
                double time_comp =
                    0.6 + 0.5 * (1 - std::cos(kPi * (ph - 5) / 170.0)) * (1.1 - 0.1 * gradient);
                brat = beta0 / Model::beta(e);
                comp = time_comp / brat;
            }
            f.fixed({static_cast<double>(ph), e, comp, brat});
        }
    }
}

// The ten figures of merit at the end of the line, where the runs of the
// series end too, and the position of the horizontal waist.
std::array<double, 11> figures(const Model& m, double jitter, Rng& rng) {
    const double zz = kZEnd;
    Beam b = m.at(zz);
    auto j = [&](double v, double share = 1) { return v * (1 + share * jitter * rng.normal()); };
    return {j(m.waist()), j(b.ex), j(b.ey), j(b.sx), j(b.sy),
            j(b.e),       j(b.se), j(b.sz), j(b.ez), std::min(100.0, j(100 * b.n / kParticles, 0.05)),
            j(b.dx)};
}

const char* const kFigureLabels[11][2] = {
    {"\\fiz\\dwaist\\u m", "Waist position"},
    {"\\ge\\dn,x\\u \\gp mrad mm", "Emittance x"},
    {"\\ge\\dn,y\\u \\gp mrad mm", "Emittance y"},
    {"\\gs\\dx\\u mm", "Beam size x"},
    {"\\gs\\dy\\u mm", "Beam size y"},
    {"\\fiE\\dkin\\u MeV", "Kinetic energy"},
    {"\\gDE\\drms\\u keV", "Energy spread"},
    {"\\gs\\dz\\u mm", "Bunch length"},
    {"\\ge\\dz\\u \\gp keV mm", "Longitudinal emittance"},
    {"\\fitransmission %", "Transmission"},
    {"\\gs\\dx'\\u mrad", "Divergence x"},
};

std::string a80(const std::string& s) {
    return viewer::pad(s, 80);
}

// Label groups in the order of the scan columns: 10 figures, then position.
void write_labels(const std::string& dir, Kind suffix, int run, const std::string& xlabel,
                  const std::string& against) {
    Out f(dir, name(suffix, run));
    for (int g = 1; g <= 11; ++g) {
        int k = g == 11 ? 0 : g;
        f.text(a80(xlabel));
        f.text(a80(kFigureLabels[k][0]));
        f.text(a80(std::string(kFigureLabels[k][1]) + " vs. " + against));
    }
}

// A solenoid scan; the tracker appends each setting as it is run, so the
// records are not in the order of the field.
void write_scan(const std::string& dir, int run, const Settings& base, const std::vector<double>& fields) {
    Out f(dir, name(Kind::Scan, run));
    Rng rng{1000};
    for (double b : fields) {
        Settings s = base;
        s.b_sol = b;
        Model m(s);
        auto fig = figures(m, 0.001, rng);
        std::string line = fmt_e12_4(b) + fmt_e12_4(fig[0]);
        for (int k = 1; k <= 10; ++k) line += fmt_e12_4(fig[k]);
        f.text(line);
    }
}

void write_run_series(const std::string& dir, int run, const Model& m, std::uint64_t seed) {
    Out f(dir, name(Kind::Error, run));
    Rng rng{seed};
    for (int r = 1; r <= 40; ++r) {
        auto fig = figures(m, 0.02, rng);
        std::string line = fmt_exp(r, 14, 6, 'E') + fmt_exp(fig[0], 14, 6, 'E');
        for (int k = 1; k <= 10; ++k) line += fmt_exp(fig[k], 14, 6, 'E');
        f.text(line);
    }
}

// L-band gun of 1.6 cells with rounded cells and irises, then the pipe with
// a collimator and a diagnostics cross.
void write_geometry(const std::string& dir) {
    Out f(dir, "Geometry.dat");
    auto point = [&](double z, double r) {
        char buf[48];
        std::snprintf(buf, sizeof buf, "%10.5f %9.3f", z, r);
        f.text(buf);
    };
    const double r_cell = 90.0, r_iris = 20.0;  // mm
    auto cell = [&](double z0, double z1, bool wall_at_start) {
        if (wall_at_start)
            point(z0, r_cell);
        else
            point(z0, r_iris);
        for (int i = 1; i < 24; ++i) {
            double u = static_cast<double>(i) / 24;
            double shape =
                wall_at_start ? std::pow(std::cos(0.5 * kPi * u), 0.15) : std::pow(std::sin(kPi * u), 0.25);
            point(z0 + (z1 - z0) * u, r_iris + (r_cell - r_iris) * shape);
        }
        point(z1, r_iris);
    };
    point(0.0, 0.0);  // the cathode plane
    cell(0.0, 0.069, true);
    cell(0.081, 0.184, false);
    point(0.200, r_iris);
    point(0.200, 17.5);
    point(3.180, 17.5);
    point(3.180, 5.0);  // collimator
    point(3.220, 5.0);
    point(3.220, 17.5);
    point(3.900, 17.5);
    point(3.900, 30.0);  // diagnostics cross
    point(4.050, 30.0);
    point(4.050, 17.5);
    point(kZEnd, 17.5);
}

// Particle files at the gun exit, behind the solenoid and at the end of the
// line (after the collimator), named by z in cm, each at a record's z.
void write_particle_files(const std::string& dir, int run, const Model& m) {
    const Loss iris{0.19, 20e-3, 4, 71}, collimator{3.2, 5e-3, 6, 72};
    const std::vector<double> z = z_positions();
    for (int record : {12, 18, kZRecords}) {
        const double zz = z[static_cast<std::size_t>(record - 1)];
        char file[32];
        std::snprintf(file, sizeof file, "rfgun.%04ld.%03d", std::lround(100 * zz), run);
        std::vector<Loss> losses = {iris};
        if (zz > collimator.z) losses.push_back(collimator);
        write_particles(dir + "/" + file, emittance_records(m, zz), m, 2000, losses,
                        7000 + static_cast<std::uint64_t>(record));
    }
}

void write_run(const std::string& dir, int run, const Settings& s) {
    Model m(s);
    const bool full = run != 3;
    write_emittance_tables(dir, run, m, full);
    write_losses(dir, run, m);
    write_reference(dir, run, m);
    write_core(dir, Kind::Cemit, run, m, {0.86, 0.74, 0.55});
    if (run == 1 || run == 3) write_part(dir, Kind::Sub_emit, run, m, 0.6);
    if (run == 2 || run == 3) write_part(dir, Kind::Cr_emit, run, m, 0.97);
    if (!full) return;
    if (run == 2) write_core(dir, Kind::C99emit, run, m, {0.995, 0.97, 0.9});
    write_sigma(dir, run, m);
    write_tcheck(dir, run, m);
    write_tracks(dir, run, m, run == 2);
    write_cathode(dir, run, m);
    write_phase_scans(dir, run, m);
    write_run_series(dir, run, m, 4242 + static_cast<std::uint64_t>(run));
    write_labels(dir, Kind::lab_E, run, "\\fiseed", "seed");
    write_labels(dir, Kind::lab, run, "\\fiB\\dsol\\u T", "solenoid field");
    std::vector<double> fields = {0.200, 0.185, 0.215, 0.190, 0.230, 0.205, 0.175, 0.195,
                                  0.220, 0.210, 0.180, 0.225, 0.198, 0.202, 0.188, 0.212};
    if (run == 2)  // the scan went on in the next run
        for (double b : {0.240, 0.170, 0.235, 0.165, 0.245, 0.207, 0.193}) fields.push_back(b);
    write_scan(dir, run, s, fields);
    if (run == 1) write_particle_files(dir, run, m);
}

}  // namespace

int main(int argc, char** argv) {
    const std::string dir = argc > 1 ? argv[1] : ".";
    // A solenoid scan: the runs differ in the field alone, and the .Scan of
    // the series holds the same three settings among its points.
    const Settings runs[3] = {
        {6.2, 0.200, 1.0, 1.00, 0.40},
        {6.2, 0.215, 1.0, 1.00, 0.40},
        {6.2, 0.190, 1.0, 1.00, 0.40},
    };
    for (int r = 1; r <= 3; ++r) write_run(dir, r, runs[r - 1]);
    write_geometry(dir);
    return 0;
}
