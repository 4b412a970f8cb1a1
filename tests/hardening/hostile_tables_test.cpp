// Whole sessions on tables as other programs leave them: written by a
// Fortran runtime, cut short while the tracker still runs, changed under the
// viewer, odd in size or name. Each case has one outcome: it stops naming
// the table, or it draws (perhaps an empty frame) in finite windows; never a
// crash. How single records read is with the reader tests.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <regex>

#include "core/run_catalogue.hpp"
#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::beam_tables;
using viewer::testing::emit_table;
using viewer::testing::Harness;
using viewer::testing::has;
using viewer::testing::TempDir;
namespace fs = std::filesystem;

namespace {

// Every window handed to the device is finite.
::testing::AssertionResult finite_windows(const RecordingGraphics& g) {
    for (const auto& c : g.calls)
        for (std::size_t i = 0; i < 4 && (c.name == "pgenv" || c.name == "pgswin"); ++i)
            if (!std::isfinite(c.args.at(i)))
                return ::testing::AssertionFailure()
                       << c.name << " argument " << i + 1 << " is " << c.args[i];
    return ::testing::AssertionSuccess();
}

// Every row of every page, with page turns between; then exit.
void every_row(Harness& h, int pages) {
    for (int p = 0; p < pages; ++p) {
        for (int r = 1; r <= 17; ++r) h.row(r);
        for (int r = 31; r <= 41; ++r) h.right_row(r - 30);
        h.turn_page();
    }
    h.row(25);
}

}  // namespace

// A 0-byte table of any kind (an aborted run) loads, and every plot of
// every page leaves an empty frame or nothing.
TEST(HostileTables, EmptyTableOfEveryKindDrawsNothingBroken) {
    for (const RunKind& k : run_catalogue()) {
        Harness h("10\nT\nX\nY\n");  // bins and labels, asked on page 3
        beam_tables(h.dir, 5);
        h.dir.write(run_file_name(k, "p", ".001"), "");
        every_row(h, 5);
        EXPECT_EQ(h.run({"p"}), 0) << k.suffix;
        EXPECT_EQ(h.p.next, h.p.clicks.size()) << k.suffix << "\n" << h.console();
        EXPECT_TRUE(finite_windows(h.g)) << k.suffix;
    }
}

// NaN and infinities, as a Fortran runtime spells them, in every table of
// the bundled run and in the outline: every plot draws in finite windows.
TEST(HostileTables, NonFiniteValuesNeverReachAWindow) {
    Harness h("10\nT\nX\nY\n");
    const std::regex number("[-+]?[0-9.]+[EDed][-+][0-9]+");
    for (const auto& e : fs::directory_iterator(VIEWER_SOURCE_DIR "/examples")) {
        if (e.path().extension() != ".001") continue;
        std::ifstream in(e.path(), std::ios::binary);
        std::string out, l;
        // Every number of the third line becomes -Infinity, of the fourth NaN, in the same columns.
        for (int n = 0; std::getline(in, l); ++n, out += l + "\n")
            for (std::smatch m; (n == 2 || n == 3) && std::regex_search(l, m, number);)
                l.replace(m[0].first, m[0].second, right_in(n == 2 ? "-Infinity" : "NaN", m.str().size()));
        h.dir.write(e.path().filename().string(), out);
    }
    h.dir.write("Geometry.dat", "0 NaN\n0.5 Infinity\n1 0.01\n");
    h.row(18);  // geometry on
    every_row(h, 5);
    EXPECT_EQ(h.run({"rfgun"}), 0);
    EXPECT_TRUE(finite_windows(h.g)) << h.console();
}

// A .track that changes between the range pass and the drawing pass of the
// probe trajectories: the drawing shows what it then reads, in the ranges
// of the first pass, and the table is rewound.
TEST(HostileTables, TrackChangedBetweenThePasses) {
    struct Changing : RecordingGraphics {
        std::function<void()> change;
        void pgenv(float a, float b, float c, float d, int e, int f) override {
            if (change) std::exchange(change, nullptr)();
            RecordingGraphics::pgenv(a, b, c, d, e, f);
        }
    };
    std::string track;
    for (int i = 0; i < 50; ++i)
        track += std::to_string(1 + i % 5) + " 0 " + std::to_string(0.01 * i) + " 1.5E-3 -2.5E-3 1 2 0\n";
    const struct {
        const char* why;
        std::string after;
        std::size_t segments;  // drawn in the upper panel
    } cases[] = {
        {"grown", track + track, 95},
        {"truncated in a record", track.substr(0, track.size() / 2 + 7), 20},
        {"emptied", "", 0},
    };
    for (const auto& c : cases) {
        TempDir d;
        Changing g;
        ScriptedPointer p;
        std::istringstream in;
        std::ostringstream out;
        Session s(g, p, in, out, d.path);
        viewer::testing::open_table(s, run_kind(Kind::track).unit, &Fexist::track_EXISTS, "p.track.001",
                                    track);
        g.change = [&] { d.write("p.track.001", c.after); };
        EXPECT_NO_THROW(pgex14(s)) << c.why;
        std::size_t points = 0;
        for (const auto* l : g.named("pgline")) points += l->xs.size() - 1;
        EXPECT_EQ(points, 2 * c.segments) << c.why;  // both panels
        EXPECT_TRUE(finite_windows(g)) << c.why;
        std::string_view first;
        EXPECT_EQ(s.unit(run_kind(Kind::track).unit).next_line(first), !c.after.empty()) << c.why;
    }
}

// Whole sessions on tables that cannot be read, or are odd in size and name.
TEST(HostileTables, SessionsStopWithThePlaceOrCarryOn) {
    const std::string long80(80, 'a'), long200(200, 'b');
    struct Case {
        const char* why;
        std::function<void(const TempDir&)> make;  // after the beam tables of "p"
        std::string arg;
        std::string console;  // found in the console, % standing for the folder
        bool plots;           // the emittance plot was drawn
    } cases[] = {
        // clang-format off
        // Overflow asterisks in a fixed table stop the session with unit, file, line and column.
        {"overflow in .Xemit", [](const TempDir& d) {
             d.write("p.Xemit.001", emit_table(2) + std::string(36, ' ') + std::string(12, '*') + "\n"); },
         "p", "unit 10, file: %/p.Xemit.001, line 3, column 37: cannot read a number", false},
        // A directory, or a file that cannot be read, in place of a table: the load stops, naming it.
        {"directory", [](const TempDir& d) {
             fs::remove(d.file("p.Zemit.001"));
             fs::create_directory(d.file("p.Zemit.001")); },
         "p", "Error while opening file: p.Zemit.001\n          Program stops", false},
        {"unreadable", [](const TempDir& d) { fs::permissions(d.file("p.Yemit.001"), fs::perms::none); },
         "p", "Error while opening file: p.Yemit.001", false},
        // A geometry of a million lines keeps its first GEOM_MAX points.
        {"huge geometry", [](const TempDir& d) {
             std::ofstream g(d.file("Geometry.dat"));
             for (int i = 0; i < 1000000; ++i) g << i * 1e-3 << " 0.02\n"; },
         "p", "", true},
        // A project name of 80 characters is used whole; the argument holds
        // no more, so one of 200 is cut there: not found, said, and asked again.
        {"name of 80", [&](const TempDir& d) { beam_tables(d, 4, {"001"}, long80); }, long80, "", true},
        {"name of 200", [&](const TempDir& d) { beam_tables(d, 4, {"001"}, long200); }, long200,
         "No data files found for: " + long200.substr(0, 80) + "\n     Enter input arguments: ", false},
        // clang-format on
    };
    for (const Case& c : cases) {
        const std::string why = c.why;
        if (why == "unreadable" && geteuid() == 0) continue;  // permissions do not bind root
        Harness h;
        h.dir.write("Geometry.dat", "0 0.01\n1 0.02\n");
        beam_tables(h.dir, 4);
        c.make(h.dir);
        h.picks({18, 2, 25});  // geometry on, rms beam size, exit
        EXPECT_EQ(h.run({c.arg}), 0) << why;
        std::string want = c.console;
        if (auto at = want.find('%'); at != std::string::npos) want.replace(at, 1, h.dir.path);
        EXPECT_TRUE(has(h.console(), want)) << why;
        EXPECT_EQ(!h.g.named("pgenv").empty(), c.plots) << why << "\n" << h.console();
        EXPECT_TRUE(finite_windows(h.g)) << why;
        if (why == "huge geometry") {
            EXPECT_EQ(h.session().geometry.GEOM_N, GEOM_MAX);
            EXPECT_LE(h.session().geometry.GEOM_Z.capacity(), 2u * GEOM_MAX);
        }
    }
}
