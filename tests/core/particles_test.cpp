// Particle files: the statistics against the tracker's own tables of the
// same run, bunches of known moments (every state, species and unequal
// charges), and every kind of damaged file.
#include "core/particles.hpp"

#include <gtest/gtest.h>

#include <array>
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

// What a file gives, read as one stream or in parts joined in file order.
struct Reading {
    std::vector<std::array<double, 10>> particles;  // x y z px py pz clock charge species flag
    BunchStats stats;
    bool cut = false;
    long cut_line = 0;
    std::string error;
};

std::array<double, 10> numbers(const Particle& p) {
    return {p.x, p.y, p.z, p.px, p.py, p.pz, p.clock, p.charge, double(p.species), double(p.flag)};
}

// parts 0: next() to the end.
Reading read_file(const std::string& path, int parts) {
    Reading r;
    try {
        ParticleReader f(path);
        if (parts == 0) {
            BunchMoments m(f.reference());
            for (Particle p; f.next(p);) {
                r.particles.push_back(numbers(p));
                m.add(p);
            }
            r.stats = m.stats();
            r.cut_line = f.cut_short() ? f.line_number() : 0;
        } else {
            std::vector<std::vector<std::array<double, 10>>> got(static_cast<std::size_t>(parts));
            std::vector<BunchMoments> m(got.size(), BunchMoments(f.reference()));
            f.read_in_parts(parts, [&](int k, ParticleBatch b) {
                for (const Particle& p : b) {
                    got[static_cast<std::size_t>(k)].push_back(numbers(p));
                    m[static_cast<std::size_t>(k)].add(p);
                }
            });
            for (std::size_t k = 0; k < got.size(); ++k) {
                r.particles.insert(r.particles.end(), got[k].begin(), got[k].end());
                if (k > 0) m[0].merge(m[k]);
            }
            r.stats = m[0].stats();
            r.cut_line = f.cut_line();
        }
        r.cut = f.cut_short();
    } catch (const ParticleError& e) {
        r = Reading{};  // what came before the error is not the file's
        r.error = e.what();
    }
    return r;
}

// Read in parts, a file gives what the single stream gives: the same
// particles in the same order, the same end, the same first bad line.
TEST(Particles, ReadInPartsAsInOneStream) {
    std::string bunch = line(1e-3, 0, 2.5, 5e6);
    for (int i = 1; i < 400; ++i)
        bunch += line(1e-4 * std::sin(i), 1e3 * std::cos(i), 1e-4 * (i % 13), 1e4 * (i % 7),
                      -1e-3 * (1 + i % 3), 1, i % 17 == 0 ? -15 : 5, 2e-4 * std::cos(i), 50.0 * i);
    // `text` with its line `at` (from 1) replaced by `by`
    auto replaced = [](const std::string& text, int at, const std::string& by) {
        std::size_t b = 0;
        for (int k = 1; k < at; ++k) b = text.find('\n', b) + 1;
        return text.substr(0, b) + by + text.substr(text.find('\n', b));
    };
    const std::string alone = line(0, 0, 1, 1e6);
    std::string crlf;
    for (char c : bunch) crlf += c == '\n' ? std::string("\r\n\n  \n") : std::string(1, c);
    const struct Case {
        const char* what;
        std::string text;
        std::size_t particles;  // read by the single stream
        std::string error;      // where the single stream stops: "line N"
    } cases[] = {
        {"a bunch", bunch, 400, ""},
        {"a byte order mark and blank lines before the reference", "\xEF\xBB\xBF\n \n" + bunch, 400, ""},
        {"CRLF and blank lines between", crlf, 400, ""},
        {"a line longer than a read", replaced(bunch, 200, std::string(300000, ' ') + "0 0 0 0 0 0 0 1 1 5"),
         400, ""},
        {"cut short", bunch + "1 2 3", 400, ""},
        {"the reference alone, without its end", alone.substr(0, alone.size() - 1), 1, ""},
        {"a bad line near the end", replaced(bunch, 390, "1 2 3 4 5 6 7 8 1"), 0, "line 390:"},
        {"a bad line near the top", replaced(bunch, 3, "1 2 3 4 5 6 7 8 x 5"), 0, "line 3,"},
        {"an unknown species in the middle", replaced(bunch, 201, "0 0 0 0 0 0 0 1 7 5"), 0, "line 201:"},
        {"bad lines in two parts: the first counts", replaced(replaced(bunch, 390, "1 2"), 150, "1 2 3"), 0,
         "line 150:"},
        {"a bad last line with its end", bunch + "1 2 3\n", 0, "line 401:"},
    };
    for (const Case& c : cases) {
        TempDir d;
        d.write("f.0001.001", c.text);
        const Reading one = read_file(d.file("f.0001.001"), 0);
        EXPECT_EQ(one.particles.size(), c.particles) << c.what;
        if (c.error.empty())
            EXPECT_EQ(one.error, "") << c.what;
        else
            EXPECT_TRUE(has(one.error, c.error)) << c.what;
        EXPECT_EQ(one.cut_line, c.text.ends_with("1 2 3") ? 401 : 0) << c.what;
        for (int parts : {1, 2, 3, 7}) {
            SCOPED_TRACE(std::string(c.what) + ", parts " + std::to_string(parts));
            const Reading r = read_file(d.file("f.0001.001"), parts);
            EXPECT_EQ(r.error, one.error);
            EXPECT_EQ(r.particles, one.particles);
            EXPECT_EQ(std::pair(r.cut, r.cut_line), std::pair(one.cut, one.cut_line));
            EXPECT_EQ(r.stats.counts.total, one.stats.counts.total);
            EXPECT_NEAR(r.stats.x.emit_n, one.stats.x.emit_n, 1e-9 * std::abs(one.stats.x.emit_n));
            EXPECT_NEAR(r.stats.de_rms, one.stats.de_rms, 1e-9 * std::abs(one.stats.de_rms));
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
