// Particle files in the headless export.
#include "app/particle_export.hpp"

#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>

#include "app/export_files.hpp"
#include "core/fortran_format.hpp"

namespace viewer {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

std::unique_ptr<ParticleReader> open_reader(const std::string& path) {
    try {
        return std::make_unique<ParticleReader>(path);
    } catch (const ParticleError& e) {
        throw ExportFailure(e.what());
    }
}

std::string run_of(const Session& s) {
    return s.chara.RUN.substr(1, 3);
}

json plane_json(const PlaneStats& p) {
    return {{"avg [mm]", p.avg},
            {"rms [mm]", p.rms},
            {"rms divergence [mrad]", p.xp_rms},
            {"norm. emittance [pi mrad mm]", p.emit_n},
            {"correlation [mrad]", p.corr},
            {"alpha", p.alpha},
            {"beta [m]", p.beta},
            {"gamma [1/m]", p.gamma}};
}

}  // namespace

std::string particle_file_path(const Session& s, const std::string& which) {
    const bool position = which.size() == 4 && which.find_first_not_of("0123456789") == std::string::npos;
    const std::string path =
        position ? s.path(std::string(up_to_blank(s.chara.PROJECT)) + "." + which + "." + run_of(s))
                 : s.path(which);
    std::error_code ec;
    if (!fs::is_regular_file(path, ec))
        throw ExportFailure("no particle file " + path +
                            (position ? " (--list names the run's particle files)" : ""));
    return path;
}

void list_particle_files(Session& s) {
    const auto files = particle_files(s.dir, std::string(up_to_blank(s.chara.PROJECT)), run_of(s));
    if (files.empty()) return;
    std::ostream& out = s.con.out;
    out << "particle files\n";
    for (const ParticleFileName& f : files) {
        out << "  " << pad(f.name, 28);
        try {
            const ParticleSummary sum = summarise_particles(s.path(f.name));
            out << " z = " << fmt_d(sum.stats.z_ref) << " m  " << fmt_i(sum.stats.counts.total, 9)
                << " particles" << fmt_i(sum.stats.counts.active, 9) << " active\n";
        } catch (const ParticleError& e) {
            out << " cannot be read: " << e.what() << "\n";
        }
    }
}

ParticleJob::ParticleJob(Session& s, const ExportRequest& r, std::ostream& err)
    : s_(s), r_(r), path_(particle_file_path(s, r.particles)), reader_(open_reader(path_)) {
    name_ = fs::path(path_).filename().string();
    // The first pass keeps the coordinates of the planes asked for, which
    // then need no second.
    std::vector<Plane> planes;
    for (const ParticleView& v : views())
        if (v.kind == ParticleView::plane) planes.push_back(v.p);
    try {
        scan_ = scan_particles(*reader_, planes);
    } catch (const ParticleError& e) {
        throw ExportFailure(e.what());
    }
    if (scan_.cut_short)
        err << "viewer: " << path_ << ": the last line is cut short; the particles before it are shown\n";
    options_.colour = !r.mono;
    options_.bins = r.bins;
    options_.lost = r.lost;
    if (r.density) options_.dots_up_to = 0;
    options_.slices = r.slices > 0 ? r.slices : 20;
    // A bunch taken at one time (every clock the same) has no extent in t.
    options_.slice_z = r.along ? r.slice_z : scan_.stats.t_rms == 0;
    if (r.zoom) options_.xwin = std::pair{r.zoom_low, r.zoom_high};
    if (r.window) {
        options_.xwin = std::pair{r.window_x1, r.window_x2};
        options_.ywin = std::pair{r.window_y1, r.window_y2};
    }
    print_particle_stats(s.con.out, name_, scan_);
}

std::vector<ParticleView> ParticleJob::views() const {
    std::vector<ParticleView> v;
    if (r_.sheet) return {{ParticleView::sheet, {}}};
    for (const std::string& p : r_.planes) v.push_back({ParticleView::plane, *parse_plane(p)});
    if (r_.slices) v.push_back({ParticleView::slices, {}});
    if (v.empty()) v.push_back({ParticleView::plane, {Coord::x, Coord::xp}});
    return v;
}

ViewData ParticleJob::draw(const ParticleView& v) {
    try {
        switch (v.kind) {
            case ParticleView::plane:
                return draw_plane(s_, *reader_, scan_, v.p, options_);
            case ParticleView::slices:
                return draw_slices(s_, *reader_, scan_, options_);
            case ParticleView::sheet:
                return draw_sheet(s_, *reader_, scan_, options_);
        }
    } catch (const ParticleError& e) {
        throw ExportFailure(e.what());
    }
    return {};
}

std::string ParticleJob::json(const std::vector<ViewData>& drawn) const {
    const BunchStats& s = scan_.stats;
    const ParticleCounts& c = s.counts;
    nlohmann::json views = nlohmann::json::array();
    for (const ViewData& d : drawn) {
        nlohmann::json v = {{"view", d.view}, {"density", d.density}, {"columns", d.header}};
        v["rows"] = d.columns.empty() ? 0 : d.columns.front().size();
        views.push_back(v);
    }
    const nlohmann::json j = {{"file", name_},
                              {"z reference [m]", s.z_ref},
                              {"z average [m]", s.z_avg},
                              {"clock average [ns]", s.clock_avg},
                              {"particles",
                               {{"total", c.total},
                                {"active", c.active},
                                {"probes", c.probes},
                                {"not yet emitted", c.not_emitted},
                                {"lost", c.lost}}},
                              {"charge [nC]", c.charge},
                              {"cut short", scan_.cut_short},
                              {"x", plane_json(s.x)},
                              {"y", plane_json(s.y)},
                              {"longitudinal",
                               {{"E kin [MeV]", s.e_kin},
                                {"z rms [mm]", s.z_rms},
                                {"t rms [ps]", s.t_rms},
                                {"dE rms [keV]", s.de_rms},
                                {"emittance [pi keV mm]", s.emit_z},
                                {"correlation [keV]", s.corr_z}}},
                              {"views", views}};
    return j.dump(2) + "\n";
}

void write_view_csv(std::ostream& out, const ViewData& d) {
    for (std::size_t c = 0; c < d.header.size(); ++c) out << (c ? "," : "") << d.header[c];
    out << "\n";
    const std::size_t rows = d.columns.empty() ? 0 : d.columns.front().size();
    char b[32];
    for (std::size_t i = 0; i < rows; ++i) {
        for (std::size_t c = 0; c < d.columns.size(); ++c) {
            std::snprintf(b, sizeof b, "%.9g", d.columns[c][i]);
            out << (c ? "," : "") << b;
        }
        out << "\n";
    }
}

}  // namespace viewer
