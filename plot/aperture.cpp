// The aperture outline: read once per process, drawn over the plots along z
// in a window of its own, so that the beam axis lies at half height whatever
// the plot's ordinate is.
#include "plot/aperture.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <ostream>

#include "core/console.hpp"
#include "core/statistics.hpp"

namespace viewer {

namespace {

bool file_exists(const std::string& path) {
    std::error_code ec;
    return std::filesystem::exists(path, ec) && !std::filesystem::is_directory(path, ec);
}

// Whole name typed at the prompt; names are held in 80 characters.
std::string ask_name(Session& s) {
    s.con.prompt("     Enter aperture file name: ");
    std::string name = s.con.read_item();
    if (name.size() > 80) name.resize(80);
    return name;
}

void negate(std::vector<float>& r) {
    for (float& v : r) v = -v;
}

// The overlay window: the plot's abscissa, the widest aperture just below the top.
float overlay_half_height(const Geometry& g) {
    return 1.05f * g.GEOM_RMAX;
}

void outline(Session& s) {
    Geometry& g = s.geometry;
    s.pg.pgline(g.GEOM_N, g.GEOM_Z.data(), g.GEOM_R.data());
}

}  // namespace

void load_geom(Session& s) {
    std::string path = s.path("Geometry.dat");
    while (!file_exists(path)) {
        path = s.path(ask_name(s));
        if (!file_exists(path)) s.con.out << "     File doesn't exist\n";
    }
    load_geom_file(s, path);
}

void load_geom_file(Session& s, const std::string& path) {
    Geometry& g = s.geometry;
    g.GEOM_N = 0;
    g.GEOM_Z.clear();
    g.GEOM_R.clear();

    TableFile f;
    if (!f.open(path)) s.con.fail("Error reading aperture file");
    for (int I = 1; I <= GEOM_MAX; ++I) {
        float z = 0, r = 0;
        try {
            if (!read_free(f, {&z, &r})) break;  // a half record at the end is dropped
        } catch (const RecordError&) {
            s.con.fail("Error reading aperture file");
        }
        g.GEOM_Z.push_back(z);
        g.GEOM_R.push_back(r);
        g.GEOM_N = I;
        if (I == 1) {
            g.GEOM_RMAX = r;
            g.GEOM_ZMIN = g.GEOM_ZMAX = z;
        } else {
            take_max(g.GEOM_RMAX, r);
            take_min(g.GEOM_ZMIN, z);
            take_max(g.GEOM_ZMAX, z);
        }
    }
    if (!std::isfinite(g.GEOM_ZMIN) || !std::isfinite(g.GEOM_ZMAX)) g.GEOM_ZMIN = g.GEOM_ZMAX = 0.0f;
    if (g.GEOM_RMAX == 0.0f || !std::isfinite(g.GEOM_RMAX)) g.GEOM_RMAX = 0.1f;
}

void ensure_geometry(Session& s) {
    if (s.logo.GEOMETRY_LOADED) return;
    load_geom(s);
    s.logo.GEOMETRY_LOADED = true;
}

namespace {

// The outline in the overlay window, once or mirrored about the axis; the
// plot's own window comes back afterwards.
void overlay_window(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX, bool mirrored) {
    Graphics& pg = s.pg;
    const float RMAX = overlay_half_height(s.geometry);
    LayerScope layer(pg, Layer::outline);
    DrawBracket bracket(pg);
    pg.pgswin(ZMIN, ZMAX, -RMAX, RMAX);
    pg.pgsci(1);
    pg.pgsls(2);  // black and dashed on every device
    outline(s);
    if (mirrored) {
        negate(s.geometry.GEOM_R);
        outline(s);
        negate(s.geometry.GEOM_R);
    }
    pg.pgsls(1);
    pg.pgswin(ZMIN, ZMAX, YMIN, YMAX);
}

}  // namespace

void overlay_upper(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX) {
    overlay_window(s, ZMIN, ZMAX, YMIN, YMAX, false);
}

void overlay_mirrored(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX) {
    overlay_window(s, ZMIN, ZMAX, YMIN, YMAX, true);
}

void overlay_two_panels(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX) {
    Graphics& pg = s.pg;
    const float RMAX = overlay_half_height(s.geometry);
    LayerScope layer(pg, Layer::outline);
    DrawBracket bracket(pg);
    pg.pgswin(ZMIN, ZMAX, -RMAX, RMAX);  // one window serves both panels
    pg.pgsci(1);
    pg.pgsls(2);
    pg.pgpanl(1, 1);
    outline(s);
    negate(s.geometry.GEOM_R);
    outline(s);
    pg.pgpanl(1, 2);
    outline(s);
    negate(s.geometry.GEOM_R);
    outline(s);
    pg.pgsls(1);
    pg.pgswin(ZMIN, ZMAX, YMIN, YMAX);
    pg.pgpanl(1, 2);
}

}  // namespace viewer
