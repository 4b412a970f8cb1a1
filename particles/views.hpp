// Views of one particle file: a phase-space plane with its projections,
// the bunch cut into slices, and a sheet of nine panels. The first pass
// finds the extremes and the moments; a plane whose two coordinates it was
// asked to keep is then drawn from them, any other view streams the file a
// second time, so memory grows with the bunch only by the floats kept, and
// those within a bound. Both passes read on the threads the file is worth.
//
//   ParticleReader f("gun.0360.001");
//   const Plane xxp{Coord::x, Coord::xp};
//   ParticleScan scan = scan_particles(f, {&xxp, 1});   // first pass, keeps x and px
//   ViewData d = draw_plane(s, f, scan, xxp, {});       // from the kept coordinates
//
// Coordinates are in the views' units: x, y, z [mm] (z from the reference
// particle), xp, yp [mrad], px, py, pz [MeV/c], E [MeV], dE [keV] (from
// <E>), t [ps] (clock from the reference particle).
#pragma once

#include <array>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/particles.hpp"
#include "core/session.hpp"

namespace viewer {

enum class Coord { x, y, z, xp, yp, px, py, pz, E, dE, t };
constexpr int kCoords = 11;

struct CoordSpec {
    Coord c;
    const char* name;   // as the command line names it
    const char* label;  // axis label
    const char* unit;   // for CSV and JSON
};
const CoordSpec& spec_of(Coord c);
std::optional<Coord> coord_named(std::string_view name);
std::string coord_names();  // "x, y, z, xp, ..."

struct Plane {
    Coord a = Coord::x, b = Coord::xp;  // abscissa, ordinate
};
// "x:xp"; nullopt when either name is unknown.
std::optional<Plane> parse_plane(std::string_view text);

namespace particle_views {
class KeptParticles;
}

// The first pass: moments of the active particles, and the extremes of
// every coordinate of the active and of the others.
struct ParticleScan {
    BunchStats stats;
    std::array<std::pair<double, double>, kCoords> active{}, others{};  // (min, max), view units
    bool cut_short = false;
    double value(Coord c, const Particle& p) const;  // in view units
    Particle reference;
    double ref_e = 0, ref_z = 0, ref_clock = 0;  // of the reference particle: eV, m, ns
    // The coordinates of the planes `keep` named, of every particle; null
    // when none were asked for or they would take too much memory.
    std::shared_ptr<const particle_views::KeptParticles> kept;
};
ParticleScan scan_particles(ParticleReader& f, std::span<const Plane> keep = {});

struct ViewOptions {
    bool colour = true;
    int bins = 0;                                       // 0: 100 a side for images and histograms
    bool lost = false;                                  // draw the particles that are not active, in grey
    std::optional<std::pair<float, float>> xwin, ywin;  // window of the axes
    long dots_up_to = 10000;                            // more active particles: a density image
    int slices = 20;
    bool slice_z = false;  // slices along z instead of t
};

// What a view drew, as columns of numbers (the CSV) and its name.
struct ViewData {
    std::string view;  // "x:xp", "slices", "sheet"
    bool density = false;
    std::vector<std::string> header;
    std::vector<std::vector<double>> columns;
};

// One slice of the bunch.
struct SliceStats {
    double at = 0;       // centre, ps or mm
    double charge = 0;   // nC
    double current = 0;  // A
    long particles = 0;
    double emit_x = 0, emit_y = 0;  // pi mm mrad
    double e_kin = 0;               // MeV
    double de_rms = 0;              // keV
};
std::vector<SliceStats> slice_bunch(ParticleReader& f, const ParticleScan& scan, int n, bool along_z);

// Each draws one page (or one panel inside a sheet) on the session's
// device and answers what it drew.
ViewData draw_plane(Session& s, ParticleReader& f, const ParticleScan& scan, Plane p, const ViewOptions& o);
ViewData draw_slices(Session& s, ParticleReader& f, const ParticleScan& scan, const ViewOptions& o);
ViewData draw_sheet(Session& s, ParticleReader& f, const ParticleScan& scan, const ViewOptions& o);

// The statistics block of a file, as the console shows it.
void print_particle_stats(std::ostream& out, const std::string& name, const ParticleScan& scan);

}  // namespace viewer
