// The tracker's particle files: one particle a line, read as a stream, and
// the moments of the bunch in the tracker's own definitions.
//
//   ParticleReader f("gun.0360.001");          // throws ParticleError
//   BunchMoments m(f.reference());
//   for (Particle p; f.next(p);) m.add(p);
//   const BunchStats s = m.stats();              // what the .Xemit record says
//
// A large file reads faster in parts, a thread each, merged in file order:
//   std::vector<BunchMoments> m(f.threads(), BunchMoments(f.reference()));
//   f.read_in_parts(m.size(), [&](int k, ParticleBatch b) { for (auto& p : b) m[k].add(p); });
//   then m[0].merge(m[k]) for k = 1, 2, ...
//
// Line 1 is the reference particle with absolute z, pz and clock; on every
// other line they are relative to it. The reader hands out absolute values.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/run_files.hpp"

namespace viewer {

// A particle file that cannot be used: the message names the file and,
// where it applies, the line.
struct ParticleError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Rest energy [eV] of the tracker's species index (1 electron, 2 positron,
// 3 proton, 4 hydrogen ion); 0 for any other index.
double rest_energy_ev(int species);

struct Particle {
    double x = 0, y = 0, z = 0;     // m
    double px = 0, py = 0, pz = 0;  // eV/c
    double clock = 0;               // ns
    double charge = 0;              // nC (macro charge)
    int species = 1;
    int flag = 5;  // > 0 active (3 a probe), -1/-3 not yet emitted, other < 0 lost
    bool active() const { return flag > 0; }
    bool probe() const { return flag == 3; }
    bool not_emitted() const { return flag == -1 || flag == -3; }
    double rest() const { return rest_energy_ev(species); }
    double kinetic_ev() const;  // E kin [eV]
};

// Reads one line of a particle file into its ten numbers. Throws
// ParticleError naming `file` and `line_no` when the line is not ten finite
// numbers. Exposed for the fuzz target and the benchmark.
void parse_particle_line(std::string_view line, std::array<double, 10>& v, const std::string& file,
                         long line_no);

// Particles of one part of a file, in file order.
using ParticleBatch = std::span<const Particle>;
using PartSink = std::function<void(int part, ParticleBatch batch)>;

// A particle file open for streaming, with rewind. Only the current line is
// held in memory, whatever the size of the file (a block a thread when read
// in parts).
class ParticleReader {
public:
    explicit ParticleReader(const std::string& path);
    const Particle& reference() const { return ref_; }
    // Next particle, the reference first; false at the end. A last line cut
    // short (no line end, fewer than ten numbers) ends the file: `cut_short`.
    bool next(Particle& p);
    void rewind();
    bool cut_short() const { return cut_short_; }
    long line_number() const { return f_.line_number(); }
    const std::string& name() const { return f_.name(); }

    // Every particle from the top, as next() hands them out, read on `parts`
    // threads at once, each a stretch of whole lines: `take(k, batch)` runs
    // on the thread of part k and gets its particles in file order, the
    // reference first in part 0; part k + 1 follows part k in the file. The
    // first bad line in file order throws, after every thread has stopped,
    // with the message next() gives. A last line cut short ends the file and
    // sets cut_short() and cut_line(). Leaves next()'s place in the file as
    // it was.
    void read_in_parts(int parts, const PartSink& take);
    // Parts worth reading this file in: one a quarter MiB, at most one a
    // core; or what use_threads() set.
    int threads() const;
    void use_threads(int n) { threads_ = n; }    // 0: as the file is worth
    long cut_line() const { return cut_line_; }  // the line cut short, by read_in_parts

private:
    struct PartEnd;
    Particle from(const std::array<double, 10>& v, bool reference, long line_no) const;
    void read_part(int k, std::uint64_t begin, std::uint64_t end, const PartSink& take, PartEnd& out,
                   std::atomic<int>& first_bad) const;
    TableFile f_;
    Particle ref_;
    long ref_line_ = 0;  // the line of the reference particle
    long cut_line_ = 0;
    int threads_ = 0;
    bool cut_short_ = false;
    bool first_ = true;  // the next line is the reference particle
};

// How many particles of each state a file holds.
struct ParticleCounts {
    long total = 0;
    long active = 0;       // flag > 0, probes included
    long probes = 0;       // flag 3
    long not_emitted = 0;  // flag -1 or -3
    long lost = 0;         // every other flag <= 0
    double charge = 0;     // nC, active particles
    void add(const Particle& p);
};

// Transverse moments of one plane.
struct PlaneStats {
    double avg = 0;       // mm
    double avg_xp = 0;    // mrad, <px> / <pz>
    double rms = 0;       // mm
    double xp_rms = 0;    // mrad, rms(px) / <pz>
    double emit_n = 0;    // pi mm mrad, normalised
    double corr = 0;      // mrad, <x x'> / x_rms
    double alpha = 0;     // Twiss, of the trace space
    double beta = 0;      // m
    double gamma = 0;     // 1/m
    double emit_geo = 0;  // pi mm mrad, trace space
    double cov_xxp = 0;   // mm mrad, <x x'>
};

struct BunchStats {
    ParticleCounts counts;
    double z_ref = 0;      // m, of the reference particle
    double z_avg = 0;      // m
    double clock_avg = 0;  // ns
    PlaneStats x, y;
    double e_kin = 0;     // MeV, mean kinetic energy
    double z_rms = 0;     // mm
    double t_rms = 0;     // ps
    double de_rms = 0;    // keV
    double emit_z = 0;    // pi keV mm
    double corr_z = 0;    // keV, <z dE> / z_rms
    double pz_avg = 0;    // MeV/c
    double beta_avg = 0;  // v/c of the mean momentum
};

// Weighted sums of the active particles, shifted by the reference particle
// so that the central moments lose no digits.
class BunchMoments {
public:
    explicit BunchMoments(const Particle& reference);
    void add(const Particle& p);                // any particle: only the active are summed
    void add(const Particle& p, double e_kin);  // the same, its kinetic energy [eV] known
    void merge(const BunchMoments& other);
    BunchStats stats() const;  // counts of all, moments of the active
    double weight() const { return w_; }

private:
    enum { X, Y, Z, PX, PY, PZ, E, T, N };
    Particle ref_;
    double ref_e_ = 0;  // E kin of the reference [eV]
    ParticleCounts counts_;
    double w_ = 0;
    std::array<double, N> s_{};
    // second moments: xx, pxpx, xpx, yy, pypy, ypy, zz, EE, zE, tt
    std::array<double, 10> q_{};
};

// Everything a view or listing needs to know of a file in one pass, read
// in the parts the file is worth.
struct ParticleSummary {
    std::string path;
    BunchStats stats;
    bool cut_short = false;
    long cut_line = 0;
};
ParticleSummary summarise_particles(const std::string& path);

// Particle files of a run in `dir`: PROJECT.NNNN.RUN (four digits) and
// every *.ini, sorted by name.
struct ParticleFileName {
    std::string name;
    int position = -1;  // NNNN, or -1 for an .ini
};
std::vector<ParticleFileName> particle_files(const std::string& dir, const std::string& project,
                                             const std::string& run_digits);

}  // namespace viewer
