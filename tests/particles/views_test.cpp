// The particle views through the export: what each view draws (dots or a
// density image, projections, the rms ellipse, grey particles, panels,
// windows), its numbers, the slices against the charge, and the answer to
// every damaged file and request.
#include "particles/views.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using namespace viewer::testing;

// A bunch of `n` active particles on a ring in x:x' and along t, `lost`
// lost ones after them, in the tracker's form (z, pz, clock relative).
std::string bunch(int n, int lost = 0, double charge = -1e-4) {
    std::string t;
    char b[256];
    for (int i = 0; i < n + lost; ++i) {
        const double a = 2 * M_PI * i / n, r = 1e-3 * (1 + i % 7) / 7;
        const double x = r * std::cos(a), px = 1e4 * r * std::sin(a) + 5e6 * x;
        std::snprintf(b, sizeof b, "%.9E %.9E %.9E %.9E %.9E %.9E %.9E %.9E 1 %d\n", x, 0.5 * x,
                      i ? 1e-5 * std::sin(3 * a) : 1.5, px, 0.5 * px, i ? 1e3 * std::cos(a) : 1e7,
                      i ? 1e-3 * (i % 50) / 50.0 : 5.0, charge, i < n ? (i % 11 == 5 ? 3 : 5) : -15);
        t += b;
    }
    return t;
}

std::size_t count_in(const RecordingGraphics& g, const char* name, double first_arg) {
    std::size_t k = 0;
    for (const auto* c : g.named(name)) k += !c->args.empty() && c->args[0] == first_arg;
    return k;
}

TEST(ParticleViews, EachViewDrawsWhatItShows) {
    struct Case {
        const char* what;
        int particles, lost;
        std::string options;
        std::size_t frames, dots, images, ellipses;  // pgenv; points of dots; pgimag; 121-point lines
        std::size_t csv_rows;
    } cases[] = {
        {"dots with the ellipse", 200, 0, "", 1, 200, 0, 1, 200},
        {"dots, no ellipse off the trace space", 200, 0, "--plane x:y", 1, 200, 0, 0, 200},
        {"lost ones in grey", 200, 30, "--lost", 1, 230, 0, 1, 200},
        {"a density image", 12000, 0, "--bins 40", 1, 0, 1, 1, 40 * 40},
        {"the slices", 200, 0, "--slices 8", 4, 0, 0, 0, 8},
        {"the sheet", 12000, 5, "--sheet --lost", 9, 5 * 4, 4, 2, 20},
        {"two planes", 200, 0, "--plane x:xp --plane t:dE", 2, 400, 0, 1, 200},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Harness h;
        h.dir.write("p.0150.001", bunch(c.particles, c.lost));
        std::ostringstream err;
        ASSERT_EQ(h.export_line("p,1 --particles 0150 --out v.ps --csv v.csv " + c.options, err), 0)
            << err.str();
        EXPECT_EQ(h.g.named("pgenv").size(), c.frames);
        std::size_t dots = 0;
        for (const auto* p : h.g.named("pgpt")) dots += static_cast<std::size_t>(p->args[0]);
        EXPECT_EQ(dots, c.dots);
        EXPECT_EQ(h.g.named("pgimag").size(), c.images);
        EXPECT_EQ(count_in(h.g, "pgline", 121), c.ellipses);
        const std::string csv = h.dir.read("v.csv");
        EXPECT_EQ(static_cast<std::size_t>(std::count(csv.begin(), csv.end(), '\n')), c.csv_rows + 1);
        // every image holds the charge of the active particles inside it
        for (const auto* im : h.g.named("pgimag"))
            EXPECT_NEAR(std::accumulate(im->xs.begin(), im->xs.end(), 0.0), c.particles * 1e-4, 1e-5);
        EXPECT_TRUE(has(h.out.str(), "particle file: p.0150.001"));
    }
}

TEST(ParticleViews, WindowsBinsAndTheGreyRamp) {
    Harness h;
    h.dir.write("p.0150.001", bunch(12000));
    std::ostringstream err;
    ASSERT_EQ(h.export_line("p,1 --particles 0150 --out v.ps --window -0.5:0.5,-2:3 --bins 7 --mono", err),
              0);
    const auto* env = h.g.named("pgenv").at(0);
    EXPECT_EQ(std::vector<double>(env->args.begin(), env->args.begin() + 4),
              (std::vector<double>{-0.5, 0.5, -2, 3}));
    const auto* im = h.g.named("pgimag").at(0);
    EXPECT_EQ(std::vector<double>(im->args.begin(), im->args.begin() + 2), (std::vector<double>{7, 7}));
    EXPECT_EQ(h.g.named("pgctab").at(0)->args[0], 3);  // white to black
}

// Within float rounding of the largest of the column.
::testing::AssertionResult same_columns(const ViewData& got, const ViewData& want) {
    if (got.header != want.header || got.density != want.density || got.columns.size() != want.columns.size())
        return ::testing::AssertionFailure() << "another view: " << got.view << " against " << want.view;
    for (std::size_t c = 0; c < want.columns.size(); ++c) {
        const std::vector<double>&a = got.columns[c], &b = want.columns[c];
        if (a.size() != b.size())
            return ::testing::AssertionFailure()
                   << "column " << c << ": " << a.size() << " rows, not " << b.size();
        double scale = 0;
        for (double v : b) scale = std::max(scale, std::abs(v));
        for (std::size_t i = 0; i < a.size(); ++i)
            if (std::abs(a[i] - b[i]) > 1e-5 * scale)
                return ::testing::AssertionFailure()
                       << "column " << c << ", row " << i << ": " << a[i] << ", not " << b[i];
    }
    return ::testing::AssertionSuccess();
}

// A plane drawn from the coordinates the first pass kept, or from a second
// pass read in parts, is the one a second pass in one stream draws.
TEST(ParticleViews, APlaneIsTheSameHoweverTheFileIsRead) {
    const struct Case {
        const char* what;
        int particles, lost;
        Plane p;
    } cases[] = {
        {"dots of x:x' with the lost", 300, 40, {Coord::x, Coord::xp}},
        {"dots of y':E", 500, 0, {Coord::yp, Coord::E}},
        {"a density of t:dE", 12000, 0, {Coord::t, Coord::dE}},
        {"a density of z:pz with the lost", 12000, 300, {Coord::z, Coord::pz}},
    };
    ViewOptions o;
    o.lost = true;
    for (const Case& c : cases) {
        Harness h;
        h.dir.write("b.0001.001", bunch(c.particles, c.lost));
        ParticleReader one(h.dir.file("b.0001.001"));
        one.use_threads(1);
        const ParticleScan streamed = scan_particles(one);
        const ViewData want = draw_plane(h.session(), one, streamed, c.p, o);
        EXPECT_EQ(want.density, c.particles > 10000) << c.what;
        for (const int threads : {1, 3})
            for (const bool keep : {false, true}) {
                SCOPED_TRACE(std::string(c.what) + ", threads " + std::to_string(threads) +
                             (keep ? ", kept" : ", read again"));
                ParticleReader f(h.dir.file("b.0001.001"));
                f.use_threads(threads);
                const ParticleScan scan =
                    scan_particles(f, keep ? std::span(&c.p, 1) : std::span<const Plane>());
                EXPECT_EQ(scan.kept != nullptr, keep);
                for (std::size_t k = 0; k < kCoords; ++k)
                    for (const auto& [a, b] : {std::pair{scan.active[k].first, streamed.active[k].first},
                                               std::pair{scan.active[k].second, streamed.active[k].second}})
                        EXPECT_NEAR(a, b, 1e-12 * std::abs(b)) << spec_of(static_cast<Coord>(k)).name;
                EXPECT_TRUE(same_columns(draw_plane(h.session(), f, scan, c.p, o), want));
            }
    }
}

TEST(ParticleViews, SlicesAddUpToTheBunch) {
    for (const auto& [along_z, threads] : {std::pair{false, 1}, std::pair{true, 1}, std::pair{false, 3}}) {
        TempDir d;
        d.write("b.0001.001", bunch(997, 13, -3e-4));
        ParticleReader f(d.file("b.0001.001"));
        f.use_threads(threads);
        const ParticleScan scan = scan_particles(f);
        const auto sl = slice_bunch(f, scan, 17, along_z);
        double q = 0, current_time = 0;
        long n = 0;
        for (const SliceStats& s : sl) {
            q += s.charge;
            n += s.particles;
            current_time += s.current;
        }
        EXPECT_EQ(sl.size(), 17u);
        EXPECT_EQ(n, scan.stats.counts.active);
        EXPECT_NEAR(q, scan.stats.counts.charge, 1e-12);
        EXPECT_GT(current_time, 0);
    }
}

TEST(ParticleViews, DamagedFilesAndRequestsAreRefused) {
    const std::string good = bunch(3);
    struct Case {
        const char* what;
        std::string file;  // p.0150.001
        std::string options;
        int status;
        std::string message;  // in standard error
    } cases[] = {
        {"empty", "", "", 1, "p.0150.001: the file is empty"},
        {"a word", good + "1 2 3 4 5 6 7 8 1 x\n", "", 1,
         "line 4, column 19: cannot read a number from \"x\""},
        {"species", good + "1 2 3 4 5 6 7 8 9 5\n", "", 1, "line 4: unknown species index 9"},
        {"nothing active", bunch(1, 4).substr(bunch(1, 4).find('\n') + 1), "", 1, "no active particle"},
        {"cut short", good + "1 2 3 4", "--out v.png", 0, "the last line is cut short"},
        {"the reference alone", bunch(1), "--out v.png", 0, ""},
        {"no such position", good, "--particles 0999", 1, "no particle file"},
        {"a bad plane", good, "--plane x:w", 2, "--plane takes A:B"},
        {"a sheet and a plane", good, "--sheet --plane x:y", 2, "--sheet is a page of its own"},
        {"a plot too", good, "--plot 1:2", 2, "--particles goes without"},
        {"a bad window", good, "--window 1:0,0:1", 2, "--window takes X1:X2,Y1:Y2"},
        {"views without a file", good, "--plane-only", 2, "unknown option"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        Harness h;
        h.dir.write("p.0150.001", c.file);
        std::ostringstream err;
        std::string line = "p,1 " + c.options;
        if (c.options.find("--particles") == std::string::npos) line += " --particles 0150";
        int status = 2;
        try {
            status = h.export_line(line, err);
        } catch (const UsageError& e) {
            err << e.what();
        }
        EXPECT_EQ(status, c.status) << err.str();
        EXPECT_TRUE(has(err.str(), c.message));
    }
}

}  // namespace
