// Particle files: the statistics against the tracker's own tables of the
// same run, bunches of known moments (every state, species and unequal
// charges), and every kind of damaged file.
#include "core/particles.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <vector>

#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

const fs::path kReal = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";

// Equal to a value printed as E12.4: within half a unit of its last digit
// and 2 parts in 10^4 more. The tables' own emittances scatter that much:
// their trace spaces are over 99 % correlated, which magnifies the
// tracker's rounding a hundredfold (seen up to 1.3 parts in 10^4).
void same_printed(double got, double printed, const char* what) {
    const double unit = printed == 0 ? 1e-4 : std::pow(10.0, std::floor(std::log10(std::abs(printed))) - 4);
    EXPECT_LE(std::abs(got - printed), 0.5 * unit + 2e-4 * std::abs(printed))
        << what << ": " << got << " against " << printed;
}

TEST(Particles, StatisticsEqualTheTrackersTablesAtTheFilesZ) {
    const fs::path dir = kReal / "simframe-injector400";
    if (!fs::is_directory(dir)) GTEST_SKIP() << "no real runs at " << dir;
    const auto files = particle_files(dir.string(), "injector400", "001");
    ASSERT_EQ(files.size(), 3u);
    for (const auto& f : files) {
        SCOPED_TRACE(f.name);
        const BunchStats s = summarise_particles((dir / f.name).string()).stats;
        EXPECT_EQ(s.counts.active, 512);
        const auto x = nearest_record(dir / "injector400.Xemit.001", s.z_avg);
        const auto y = nearest_record(dir / "injector400.Yemit.001", s.z_avg);
        const auto z = nearest_record(dir / "injector400.Zemit.001", s.z_avg);
        same_printed(s.z_avg, x[0], "z");
        same_printed(s.clock_avg, x[1], "t");
        for (const auto& [p, r] : {std::pair{&s.x, x}, std::pair{&s.y, y}}) {
            same_printed(p->avg, r[2], "avg");
            same_printed(p->rms, r[3], "rms");
            same_printed(p->xp_rms, r[4], "x' rms");
            same_printed(p->emit_n, r[5], "emittance");
            same_printed(p->corr, r[6], "correlation");
        }
        same_printed(s.e_kin, z[2], "E kin");
        same_printed(s.z_rms, z[3], "z rms");
        same_printed(s.de_rms, z[4], "dE rms");
        same_printed(s.emit_z, z[5], "long. emittance");
        same_printed(s.corr_z, z[6], "long. correlation");
    }
}

TEST(Particles, CountsOfAFileWithMostParticlesLost) {
    const fs::path f = kReal / "pareto-target-losses" / "Target_SC000001.0175.001";
    if (!fs::exists(f)) GTEST_SKIP() << "no real file " << f;
    const ParticleCounts c = summarise_particles(f.string()).stats.counts;
    EXPECT_EQ(std::vector<long>({c.total, c.active, c.probes, c.not_emitted, c.lost}),
              std::vector<long>({20000, 5994, 3, 0, 14006}));
}

// Lines of a file: x, y, z [m], px, py, pz [eV/c], clock, charge, species, flag.
std::string line(double x, double px, double z, double pz, double q = -1e-3, int species = 1, int flag = 5,
                 double y = 0, double py = 0) {
    char b[256];
    std::snprintf(b, sizeof b, "%.12E %.12E %.12E %.12E %.12E %.12E %.12E %.12E %d %d\n", x, y, z, px, py, pz,
                  0.0, q, species, flag);
    return b;
}

TEST(Particles, MomentsOfKnownBunches) {
    const double pz = 1e8;  // eV/c
    struct Case {
        const char* what;
        std::string text;
        double x_avg, x_rms, e_kin, charge;  // mm, mm, MeV, nC
        std::vector<long> counts;            // total, active, probes, not emitted, lost
    } cases[] = {
        {"reference alone", line(1e-3, 0, 2.5, pz), 1, 0, 0, -1e-3, {1, 1, 0, 0, 0}},
        {"only the active count",
         line(0, 0, 2, pz) + line(2e-3, 0, 0, 0) + line(-2e-3, 0, 0, 0, -1e-3, 1, 3) +
             line(9, 0, 0, 0, -1e-3, 1, -1) + line(9, 0, 0, 0, -1e-3, 1, -3) +
             line(9, 0, 0, 0, -1e-3, 1, -15) + line(9, 0, 0, 0, -1e-3, 1, -17),
         0,
         std::sqrt(8.0 / 3),
         0,
         -3e-3,
         {7, 3, 1, 2, 2}},
        {"unequal charges",
         line(0, 0, 1, pz, 1) + line(4e-3, 0, 0, 0, 3),
         3,
         std::sqrt(3.0),
         0,
         4,
         {2, 2, 0, 0, 0}},
        {"protons",
         line(0, 0, 1, 1e9, -1, 3),
         0,
         0,
         1e-6 * (std::hypot(1e9, 938.27208816e6) - 938.27208816e6),
         -1,
         {1, 1, 0, 0, 0}},
        {"positrons as electrons",
         line(0, 0, 1, 1e6, -1, 2),
         0,
         0,
         1e-6 * (std::hypot(1e6, 0.51099895e6) - 0.51099895e6),
         -1,
         {1, 1, 0, 0, 0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir d;
        d.write("b.0001.001", c.text);
        const BunchStats s = summarise_particles(d.file("b.0001.001")).stats;
        EXPECT_EQ(std::vector<long>({s.counts.total, s.counts.active, s.counts.probes, s.counts.not_emitted,
                                     s.counts.lost}),
                  c.counts);
        EXPECT_NEAR(s.x.avg, c.x_avg, 1e-9);
        EXPECT_NEAR(s.x.rms, c.x_rms, 1e-9);
        EXPECT_NEAR(s.counts.charge, c.charge, 1e-12);
        if (c.e_kin > 0) {
            EXPECT_NEAR(s.e_kin, c.e_kin, 1e-9 * c.e_kin);
        }
    }
}

// An upright ellipse in trace space: x = a cos, x' = b sin gives beta = a/b,
// alpha 0; sheared by x' += k x, alpha = -k beta.
TEST(Particles, TwissOfASheardEllipse) {
    const double pz = 2e7, a = 2e-3, b = 1e-3, k = 0.5;
    std::string text = line(0, 0, 1, pz, -1e-3, 1, 5);
    const int n = 360;
    for (int i = 0; i < n; ++i) {
        const double t = 2 * M_PI * i / n, x = a * std::cos(t), xp = b * std::sin(t) + k * x;
        text += line(x, xp * pz, 0, 0, -1e-3, 1, 5, x, xp * pz);
    }
    TempDir d;
    d.write("e.0001.001", text);
    const BunchStats s = summarise_particles(d.file("e.0001.001")).stats;
    for (const PlaneStats* p : {&s.x, &s.y}) {
        const double eps = p->emit_geo * 1e-6;
        EXPECT_NEAR(p->beta, a / b, 0.02 * a / b);
        EXPECT_NEAR(p->alpha, -k * a / b, 0.02);
        EXPECT_NEAR(p->beta * p->gamma - p->alpha * p->alpha, 1.0, 1e-9);
        EXPECT_NEAR(eps, a * b / 2, 0.02 * a * b);
        EXPECT_NEAR(p->emit_n, p->emit_geo * pz / 0.51099895e6, 1e-6 * p->emit_n);
    }
}

TEST(Particles, DamagedFilesAreRefusedWithTheirLine) {
    const std::string good = line(0, 0, 1, 1e6);
    struct Case {
        const char* what;
        std::string text;
        std::string message;  // empty: read, and `cut` says whether the end was cut short
        bool cut = false;
    } cases[] = {
        {"empty", "", "f.0001.001: the file is empty"},
        {"blank lines only", "\n \n", "f.0001.001: the file is empty"},
        {"nine numbers", good + "1 2 3 4 5 6 7 8 9\n",
         "f.0001.001, line 2: 9 numbers where a particle has 10"},
        {"eleven numbers", good + "1 2 3 4 5 6 7 8 1 5 7\n",
         "f.0001.001, line 2: more than 10 numbers where a particle has 10"},
        {"text", good + "1 2 x 4 5 6 7 8 1 5\n",
         "f.0001.001, line 2, column 5: cannot read a number from \"x\""},
        {"not finite", good + "1 2 3 nan 5 6 7 8 1 5\n",
         "f.0001.001, line 2: the number \"nan\" is not finite"},
        {"infinite", good + "1 2 3 4 5 inf 7 8 1 5\n",
         "f.0001.001, line 2: the number \"inf\" is not finite"},
        {"unknown species", good + "0 0 0 0 0 0 0 1 7 5\n",
         "f.0001.001, line 2: unknown species index 7 (1 electron, 2 positron, 3 proton, 4 hydrogen ion)"},
        {"no active particle", line(0, 0, 1, 1e6, -1, 1, -15), "f.0001.001: no active particle"},
        {"cut short at the end", good + good + "1 2 3", "", true},
        {"cut short in the middle", good + "1 2 3\n" + good,
         "f.0001.001, line 2: 3 numbers where a particle has 10"},
        {"Fortran exponents", good + "1D-3 0 0 0 0 0 0 -1.0D-3 1 5\r\n", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        TempDir d;
        d.write("f.0001.001", c.text);
        try {
            const ParticleSummary s = summarise_particles(d.file("f.0001.001"));
            EXPECT_EQ(c.message, "");
            EXPECT_EQ(s.cut_short, c.cut);
        } catch (const ParticleError& e) {
            EXPECT_EQ(std::string(e.what()), d.path + "/" + c.message);
        }
    }
}

TEST(Particles, FilesOfARunAndTheStartDistributions) {
    TempDir d;
    for (const char* n : {"gun.0360.001", "gun.0074.001", "gun.0360.002", "gun.Xemit.001", "gun.36.001",
                          "beam.ini", "gun.03a0.001", "other.0360.001"})
        d.write(n, "");
    std::vector<std::string> names;
    for (const auto& f : particle_files(d.path, "gun", "001"))
        names.push_back(f.name + "@" + std::to_string(f.position));
    EXPECT_EQ(names, (std::vector<std::string>{"beam.ini@-1", "gun.0074.001@74", "gun.0360.001@360"}));
}

}  // namespace
