// The aperture outline: reading the file (limits, half records, the prompt
// for another name, the stop on a bad number) and the three ways of laying
// it over a plot.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "control/fortran_format.hpp"
#include "control/session.hpp"
#include "evolution/geometry.hpp"
#include "evolution/plots.hpp"

using namespace viewer;
namespace fs = std::filesystem;

namespace {

struct TempDir {
    TempDir() {
        char t[] = "/tmp/geom_test_XXXXXX";
        path = ::mkdtemp(t);
    }
    ~TempDir() {
        std::error_code ec;
        fs::remove_all(path, ec);
    }
    std::string path;
};

struct GeometryTest : ::testing::Test {
    TempDir tmp;
    RecordingGraphics rec;
    ScriptedPointer ptr;
    std::istringstream in;
    std::ostringstream out;
    Session s{rec, ptr, in, out, tmp.path};

    void file(const std::string& name, const std::string& text) { std::ofstream(s.path(name)) << text; }
    void answers(const std::string& text) { in.str(text); }

    // Call names from the first pgswin on, with the sign of each outline.
    std::vector<std::string> overlay_trace() const {
        std::vector<std::string> t;
        for (const auto& c : rec.calls) {
            std::string e = c.name;
            if (c.name == "pgsls" || c.name == "pgsci") e += std::to_string(static_cast<int>(c.args[0]));
            if (c.name == "pgline") e += (c.ys.empty() || c.ys[0] >= 0) ? "+" : "-";
            t.push_back(e);
        }
        return t;
    }
};

}  // namespace

TEST_F(GeometryTest, ReadsTheDefaultFileWithStepsAndNegativeRadii) {
    file("Geometry.dat", "0.0 10.0\n0.5, 10.0\n0.5 -20.0\n  \n1.5\n 5.0\n-0.2 4.0 99\n");
    load_geom(s);
    const Geometry& g = s.geometry;
    EXPECT_EQ(out.str(), "");
    EXPECT_EQ(g.GEOM_N, 5);
    EXPECT_EQ(g.GEOM_Z, (std::vector<float>{0.0f, 0.5f, 0.5f, 1.5f, -0.2f}));
    EXPECT_EQ(g.GEOM_R, (std::vector<float>{10.0f, 10.0f, -20.0f, 5.0f, 4.0f}));
    EXPECT_FLOAT_EQ(g.GEOM_ZMIN, -0.2f);
    EXPECT_FLOAT_EQ(g.GEOM_ZMAX, 1.5f);
    EXPECT_FLOAT_EQ(g.GEOM_RMAX, 10.0f);
}

TEST_F(GeometryTest, EdgesOfTheFile) {
    struct Case {
        const char* text;
        int n;
        float rmax, zmin, zmax;
    };
    const Case cases[] = {
        {"", 0, 0.1f, 0, 0},                        // empty: nothing to draw
        {"1.0 0.0\n2.0 0\n", 2, 0.1f, 1, 2},        // all radii zero
        {"3.0 2.0\n", 1, 2.0f, 3, 3},               // one point
        {"1.0 2.0\n2.0 3.0\n1.5\n", 2, 3.0f, 1, 2}, // a half record at the end is dropped
        {"1.0 -2.0\n2.0 -3.0\n", 2, -2.0f, 1, 2},   // only negative radii: the largest counts
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        s.geometry = {};
        file("Geometry.dat", c.text);
        load_geom(s);
        EXPECT_EQ(s.geometry.GEOM_N, c.n);
        EXPECT_FLOAT_EQ(s.geometry.GEOM_RMAX, c.rmax);
        EXPECT_FLOAT_EQ(s.geometry.GEOM_ZMIN, c.zmin);
        EXPECT_FLOAT_EQ(s.geometry.GEOM_ZMAX, c.zmax);
    }
}

TEST_F(GeometryTest, StopsAtFiveThousandPointsWithoutAWord) {
    std::ostringstream t;
    for (int i = 1; i <= GEOM_MAX + 1; ++i) t << i << " " << (i == GEOM_MAX + 1 ? 1000 : 1) << "\n";
    file("Geometry.dat", t.str());
    load_geom(s);
    EXPECT_EQ(s.geometry.GEOM_N, GEOM_MAX);
    EXPECT_FLOAT_EQ(s.geometry.GEOM_Z.back(), 5000.0f);
    EXPECT_FLOAT_EQ(s.geometry.GEOM_RMAX, 1.0f);  // the point behind the limit is not read
    EXPECT_EQ(out.str(), "");
}

TEST_F(GeometryTest, AsksForAnotherNameUntilOneExists) {
    file("my outline.dat", "0 1\n1 2\n");
    answers("nothere.dat\n\n  ,\n'my outline.dat' ignored\n");
    load_geom(s);
    EXPECT_EQ(out.str(),
              "     Enter aperture file name:      File doesn't exist\n"
              "     Enter aperture file name:      File doesn't exist\n"
              "     Enter aperture file name: ");
    EXPECT_EQ(s.geometry.GEOM_N, 2);
}

TEST_F(GeometryTest, EndOfInputAtThePromptEndsTheSession) {
    answers("nothere.dat\n");
    EXPECT_THROW(load_geom(s), EndOfInput);
    EXPECT_EQ(out.str(),
              "     Enter aperture file name:      File doesn't exist\n"
              "     Enter aperture file name: ");
}

TEST_F(GeometryTest, BadNumberStopsTheViewerWithItsMessage) {
    file("Geometry.dat", "0 1\n1 x2\n");
    EXPECT_THROW(load_geom(s), ProgramStop);
    EXPECT_EQ(out.str(),
              "\n"
              "          Error reading aperture file\n"
              "          Program stops\n"
              "\n");
}

TEST_F(GeometryTest, OverlayForms) {
    s.geometry = {{0.0f, 1.0f}, {2.0f, 4.0f}, 0.0f, 1.0f, 4.0f, 2};
    const float RMAX = 1.05f * 4.0f;

    overlay_upper(s, 0, 1, -5, 5);
    EXPECT_EQ(overlay_trace(), (std::vector<std::string>{"pgbbuf", "pgsave", "pgswin", "pgsci1", "pgsls2", "pgline+",
                                                         "pgsls1", "pgswin", "pgunsa", "pgebuf", "pgupdt"}));
    auto win = rec.named("pgswin");
    EXPECT_EQ(win[0]->args, (std::vector<double>{0, 1, -RMAX, RMAX}));
    EXPECT_EQ(win[1]->args, (std::vector<double>{0, 1, -5, 5}));
    EXPECT_EQ(rec.named("pgline")[0]->ys, (std::vector<float>{2, 4}));

    rec.clear();
    overlay_mirrored(s, 0, 1, -5, 5);
    EXPECT_EQ(overlay_trace(), (std::vector<std::string>{"pgbbuf", "pgsave", "pgswin", "pgsci1", "pgsls2", "pgline+",
                                                         "pgline-", "pgsls1", "pgswin", "pgunsa", "pgebuf",
                                                         "pgupdt"}));
    EXPECT_EQ(rec.named("pgline")[1]->ys, (std::vector<float>{-2, -4}));
    EXPECT_EQ(s.geometry.GEOM_R, (std::vector<float>{2, 4}));  // the table is left as it was

    rec.clear();
    overlay_two_panels(s, 0, 1, -5, 5);
    EXPECT_EQ(overlay_trace(),
              (std::vector<std::string>{"pgbbuf", "pgsave", "pgswin", "pgsci1", "pgsls2", "pgpanl", "pgline+", "pgline-",
                                        "pgpanl", "pgline-", "pgline+", "pgsls1", "pgswin", "pgpanl", "pgunsa",
                                        "pgebuf", "pgupdt"}));
    EXPECT_EQ(s.geometry.GEOM_R, (std::vector<float>{2, 4}));
}

TEST_F(GeometryTest, PlotLoadsTheOutlineOnceForTheSession) {
    std::ofstream(s.path("p.Zemit.001")) << fmt_e12_4(1) << fmt_e12_4(0) << fmt_e12_4(0) << fmt_e12_4(3) << "\n"
                                         << fmt_e12_4(2) << fmt_e12_4(0) << fmt_e12_4(0) << fmt_e12_4(4) << "\n";
    ASSERT_TRUE(s.unit(12).open(s.path("p.Zemit.001")));
    s.fexist.Zemit_EXISTS = true;
    file("Geometry.dat", "0 1\n3 2\n");
    s.logo.WITH_GEOMETRY = true;

    pgex5(s, PKT);
    EXPECT_TRUE(s.logo.GEOMETRY_LOADED);
    EXPECT_EQ(s.geometry.GEOM_N, 2);
    ASSERT_EQ(rec.named("pgline").size(), 2u);
    // The outline window shares the plot's abscissa; the plot's window comes back.
    const auto env = rec.named("pgenv")[0]->args;
    const auto win = rec.named("pgswin");
    EXPECT_EQ(win[0]->args, (std::vector<double>{env[0], env[1], -1.05f * 2.0f, 1.05f * 2.0f}));
    EXPECT_EQ(win[1]->args, (std::vector<double>(env.begin(), env.begin() + 4)));

    // Without the file, and after the overlay was switched off and on, no prompt.
    fs::remove(s.path("Geometry.dat"));
    s.logo.WITH_GEOMETRY = false;
    rec.clear();
    pgex5(s, PKT);
    EXPECT_EQ(rec.named("pgline").size(), 1u);
    s.logo.WITH_GEOMETRY = true;
    rec.clear();
    pgex5(s, PKT);
    EXPECT_EQ(rec.named("pgline").size(), 2u);
    EXPECT_EQ(out.str().find("Enter aperture"), std::string::npos);
}
