// Tables as other programs leave them: written by a Fortran runtime, copied
// between machines, cut short while the tracker still runs, changed under
// the viewer. Each case has one outcome: it reads, it stops with file, line
// and column, or it draws an empty frame; never a crash.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <functional>

#include "core/run_catalogue.hpp"
#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using viewer::testing::beam_tables;
using viewer::testing::count_of;
using viewer::testing::emit_table;
using viewer::testing::fixed_record;
using viewer::testing::Harness;
using viewer::testing::has;
using viewer::testing::same_bits;
using viewer::testing::TempDir;

namespace {

const float kInf = INFINITY, kNaN = NAN;

// Field `field` of every record of `text` read as `kind`, or "line L, column C"
// of the record that could not be read.
std::string read_all(Kind kind, const std::string& text, int field, std::vector<float>& out) {
    TempDir d;
    d.write("t", text);
    TableFile f;
    if (!f.open(d.file("t"))) return "cannot open";
    RunRecord r(run_kind(kind));
    try {
        while (r.read(f)) out.push_back(r.real(field));
    } catch (const RecordError& e) {
        return "line " + std::to_string(e.line) + ", column " + std::to_string(e.column);
    }
    return "";
}

std::string fx(std::initializer_list<std::string> fields) {  // a fixed line of 12-column fields
    std::string l;
    for (const auto& f : fields) l += std::string(12 - std::min<std::size_t>(12, f.size()), ' ') + f;
    return l;
}

// Every window handed to the device is finite.
::testing::AssertionResult finite_windows(const RecordingGraphics& g) {
    for (const auto& c : g.calls)
        if (c.name == "pgenv" || c.name == "pgswin")
            for (int i = 0; i < 4; ++i)
                if (!std::isfinite(c.args.at(static_cast<std::size_t>(i))))
                    return ::testing::AssertionFailure() << c.name << " argument " << i + 1 << " is "
                                                         << c.args[static_cast<std::size_t>(i)];
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

TEST(HostileTables, RecordsReadOrStopAtTheirPlace) {
    const std::string ok = fx({"1.0", "2.0", "3.0", "4.0", "5.0", "6.0", "7.0"});
    struct Case {
        const char* why;
        Kind kind;
        std::string text;
        int field;
        std::vector<float> values;  // field `field` of each record read
        std::string error;          // or where the reading stopped
    } cases[] = {
        // Fortran writes asterisks where a value overflows its field: not a number, stop there.
        {"overflow, fixed",
         Kind::Xemit,
         ok + "\n" + fx({"1", "2", "************"}) + "\n",
         2,
         {},
         "line 2, column 25"},
        {"overflow, free",
         Kind::ref,
         "0.1 2 3 4 5 6 7\n0.2 2 ************ 4 5 6 7\n",
         2,
         {},
         "line 2, column 7"},
        // NaN and infinities as a Fortran runtime spells them are read as such.
        {"non-finite, fixed",
         Kind::Xemit,
         fx({"NaN", "Infinity", "-Infinity", "+Inf", "nan", "1", "2"}) + "\n",
         2,
         {-kInf},
         ""},
        {"non-finite, free", Kind::ref, "NaN Infinity -Infinity +Inf 1 2 3\n", 1, {kInf}, ""},
        {"NaN kept, free", Kind::ref, "NaN Infinity -Infinity +Inf 1 2 3\n", 0, {kNaN}, ""},
        // D exponents are the double-precision writes.
        {"D exponent", Kind::Xemit, fx({"1.5D+02", "0.5d-1"}) + "\n", 0, {150.0f}, ""},
        {"D exponent, free", Kind::ref, "1 2 2.5D-01 4 5 6 7\n", 2, {0.25f}, ""},
        // A table copied from another system: CRLF line ends.
        {"CRLF", Kind::Xemit, ok + "\r\n" + ok + "\r\n", 6, {7.0f, 7.0f}, ""},
        {"CRLF, free", Kind::ref, "1 2 3 4 5 6 7\r\n8 9 10 11 12 13 14\r\n", 6, {7.0f, 14.0f}, ""},
        // A tab is one column read as a blank in a fixed table, a separator in a free one.
        {"tab, fixed", Kind::Xemit, "\t 1.0000E+00" + ok.substr(12) + "\n", 0, {1.0f}, ""},
        {"tab, free", Kind::ref, "1\t2\t3\t4\t5\t6\t7\n", 6, {7.0f}, ""},
        // A last line without its newline is read when it is whole.
        {"no final newline", Kind::Xemit, ok + "\n" + ok, 0, {1.0f, 1.0f}, ""},
        {"no final newline, free", Kind::ref, "1 2 3 4 5 6 7\n8 9 10 11 12 13 14", 0, {1.0f, 8.0f}, ""},
        // An editor's byte order mark is not part of the first field.
        {"BOM, fixed", Kind::Xemit, "\xEF\xBB\xBF" + ok + "\n", 0, {1.0f}, ""},
        {"BOM, free",
         Kind::ref,
         "\xEF\xBB\xBF"
         "1 2 3 4 5 6 7\n",
         0,
         {1.0f},
         ""},
        // Cut in the middle of the last record by a writer still at work: the record is dropped.
        {"cut, fixed", Kind::Xemit, ok + "\n" + ok.substr(0, 30), 0, {1.0f}, ""},
        {"cut in a number, free", Kind::ref, "1 2 3 4 5 6 7\n8 9 10 11 12 1.3E", 0, {1.0f}, ""},
        {"cut between items, free", Kind::ref, "1 2 3 4 5 6 7\n8 9 10", 0, {1.0f}, ""},
        // ...but the same cut inside the file is a bad record.
        {"cut inside, free", Kind::ref, "1 2 3 4 5 6 1.3E\n8 9 10 11 12 13 14\n", 0, {}, "line 1, column 13"},
    };
    for (const Case& c : cases) {
        std::vector<float> got;
        EXPECT_EQ(read_all(c.kind, c.text, c.field, got), c.error) << c.why;
        if (!c.error.empty()) continue;
        ASSERT_EQ(got.size(), c.values.size()) << c.why;
        for (std::size_t i = 0; i < got.size(); ++i)
            EXPECT_TRUE(same_bits(got[i], c.values[i])) << c.why << " " << got[i];
    }
}

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

// NaN and infinities in every table of the bundled run: every plot draws in
// finite windows.
TEST(HostileTables, NonFiniteValuesNeverReachAWindow) {
    Harness h("10\nT\nX\nY\n");
    for (const auto& e : std::filesystem::directory_iterator(VIEWER_SOURCE_DIR "/examples")) {
        const std::string name = e.path().filename().string();
        if (name.find(".001") == std::string::npos) continue;
        std::ifstream in(e.path(), std::ios::binary);
        std::string text((std::istreambuf_iterator<char>(in)), {}), out;
        // the third and fourth lines: every number non-finite
        std::size_t line = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\n') ++line;
            const bool hit = (line == 2 || line == 3) && (text[i] == 'E' || text[i] == 'D') && i > 0 &&
                             std::isdigit(static_cast<unsigned char>(text[i - 1]));
            if (!hit) {
                out += text[i];
                continue;
            }
            // "d.ddddE+dd" becomes "  Infinity" or "       NaN", in the same columns
            std::size_t b = out.size();
            while (b > 0 && out[b - 1] != ' ' && out[b - 1] != '\n') --b;
            std::size_t width = out.size() - b + 4;
            out.resize(b);
            std::string word = line == 2 ? "-Infinity" : "NaN";
            out += std::string(width > word.size() ? width - word.size() : 0, ' ') + word;
            i += 3;
        }
        h.dir.write(name, out);
    }
    h.dir.write("Geometry.dat", "0 NaN\n0.5 Infinity\n1 0.01\n");  // and in the outline
    h.row(18);                                                     // geometry on
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
        std::function<void(const TempDir&)> make;
        std::string arg;
        std::string console;  // found in the console
        bool plots;           // the emittance plot was drawn
    } cases[] = {
        // Overflow asterisks in a fixed table stop the session with unit, file, line and column.
        {"overflow in .Xemit",
         [](const TempDir& d) {
             beam_tables(d, 4);
             d.write("p.Xemit.001", emit_table(2) + fx({"1", "2", "3", "************"}) + "\n");
         },
         "p", "unit 10, file: %/p.Xemit.001, line 3, column 37: cannot read a number", false},
        // A directory in place of a table: the load stops, naming it.
        {"directory",
         [](const TempDir& d) {
             beam_tables(d, 4);
             std::filesystem::remove(d.file("p.Zemit.001"));
             std::filesystem::create_directory(d.file("p.Zemit.001"));
         },
         "p", "Error while opening file: p.Zemit.001\n          Program stops", false},
        // A geometry of a million lines keeps its first GEOM_MAX points.
        {"huge geometry",
         [](const TempDir& d) {
             beam_tables(d, 4);
             std::ofstream g(d.file("Geometry.dat"));
             for (int i = 0; i < 1000000; ++i) g << i * 1e-3 << " 0.02\n";
         },
         "p", "", true},
        // A project name of 80 characters is used whole; the argument holds
        // no more, so one of 200 is cut there: not found, said, and asked again.
        {"name of 80", [&](const TempDir& d) { beam_tables(d, 4, {"001"}, long80); }, long80, "", true},
        {"name of 200", [&](const TempDir& d) { beam_tables(d, 4, {"001"}, long200); }, long200,
         "No data files found for: " + long200.substr(0, 80) + "\n     Enter input arguments: ", false},
    };
    for (const Case& c : cases) {
        Harness h;
        h.dir.write("Geometry.dat", "0 0.01\n1 0.02\n");
        c.make(h.dir);
        h.picks({18, 2, 25});  // geometry on, rms beam size, exit
        EXPECT_EQ(h.run({c.arg}), 0) << c.why;
        std::string want = c.console;
        if (auto at = want.find('%'); at != std::string::npos) want.replace(at, 1, h.dir.path);
        EXPECT_TRUE(has(h.console(), want)) << c.why;
        EXPECT_EQ(!h.g.named("pgenv").empty(), c.plots) << c.why << "\n" << h.console();
        EXPECT_TRUE(finite_windows(h.g)) << c.why;
        if (c.why == std::string("huge geometry")) {
            EXPECT_EQ(h.session().geometry.GEOM_N, GEOM_MAX);
            EXPECT_LE(h.session().geometry.GEOM_Z.capacity(), 2u * GEOM_MAX);
        }
    }
}

TEST(HostileTables, UnreadableTableStopsNamingIt) {
    if (geteuid() == 0) GTEST_SKIP() << "permission checks do not bind root";
    Harness h;
    beam_tables(h.dir, 4);
    std::filesystem::permissions(h.dir.file("p.Yemit.001"), std::filesystem::perms::none);
    h.picks({2, 25});
    EXPECT_EQ(h.run({"p"}), 0);
    EXPECT_TRUE(has(h.console(), "Error while opening file: p.Yemit.001"));
    EXPECT_TRUE(h.g.named("pgenv").empty());
}
