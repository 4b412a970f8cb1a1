// The particle files of a run in the headless export: which file an
// argument names, its statistics block, the views asked for, and their
// numbers as CSV and JSON.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "app/command_line.hpp"
#include "particles/views.hpp"

namespace viewer {

// The file `which` names for the loaded project and run: four digits pick
// PROJECT.NNNN.RUN in the session's directory, anything else is a path.
// Throws ExportFailure when there is no such file.
std::string particle_file_path(const Session& s, const std::string& which);

// The run's particle files as --list shows them: name, z [m], particles,
// active; a file that cannot be read says why on its line.
void list_particle_files(Session& s);

// One view of a request, in the order asked.
struct ParticleView {
    enum Kind { plane, slices, sheet } kind = plane;
    Plane p;
};

class ParticleJob {
public:
    // Opens and scans the file, prints its statistics block; a file cut
    // short is said on `err`. Throws ExportFailure for a file it cannot use.
    ParticleJob(Session& s, const ExportRequest& r, std::ostream& err);
    std::vector<ParticleView> views() const;
    ViewData draw(const ParticleView& v);  // on the session's graphics
    const ParticleScan& scan() const { return scan_; }
    const std::string& name() const { return name_; }
    // The --stats text: the file's statistics and what each view drew.
    std::string json(const std::vector<ViewData>& drawn) const;

private:
    Session& s_;
    const ExportRequest& r_;
    std::string path_, name_;
    std::unique_ptr<ParticleReader> reader_;
    ParticleScan scan_;
    ViewOptions options_;
};

// A view's columns as CSV: a header of names with units, then the rows.
void write_view_csv(std::ostream& out, const ViewData& d);

}  // namespace viewer
