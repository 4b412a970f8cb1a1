// Whole sessions on tables as other programs leave them: empty from an
// aborted run, full of a Fortran runtime's NaN and Infinity, cut short or
// changed while the tracker still runs, odd in size or name, or no table at
// all. Each case stops naming the table, or draws (perhaps empty frames) in
// finite windows to its exit pick; never a crash. How single records read is
// with the reader tests.
//
// The soak: a long scripted session of random picks over the bundled run and
// the real sets (rows of every page, page turns, zooms with typed bounds,
// fits, outline, hardcopies, run steps) must end by its exit pick, hand every
// window finite to the device and keep its resident memory flat. 10^3 passes
// by default; VIEWER_SOAK=1 runs 10^4.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <random>
#include <regex>

#include "core/run_catalogue.hpp"
#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;
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

// Every run of the bundled project and of the real sets.
const std::vector<std::string> kRuns = {"rfgun,001",
                                        "rfgun,002",
                                        "rfgun,003",
                                        "injector400,001",
                                        "xfel,001",
                                        "injector,001",
                                        "parallelBeam,001",
                                        "photogun_H=0.00097656_nx=ny=8_nz=64,001",
                                        "photogun_H_max=1_H_min=1e-06_sc=0,001"};
void copy_runs(const TempDir& d) {
    for (const auto& e : fs::recursive_directory_iterator(VIEWER_SOURCE_DIR "/../shared/realdata"))
        if (e.is_regular_file()) fs::copy_file(e.path(), d.file(e.path().filename().string()));
    for (const auto& e : fs::directory_iterator(VIEWER_SOURCE_DIR "/examples"))
        fs::copy_file(e.path(), d.file(e.path().filename().string()), fs::copy_options::overwrite_existing);
}

long resident_kib() {
    std::ifstream statm("/proc/self/statm");
    long size = 0, resident = 0;
    statm >> size >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

// The soak's console: keeps only the tail of what is written, and answers the
// prompt on show as a user would; the same prompt fifty times running is a
// loop, answered by end of input.
struct SoakConsole : std::streambuf {
    explicit SoakConsole(std::mt19937& r) : rng(r) {}
    std::mt19937& rng;
    std::string tail, line, last;
    int repeats = 0, loads = 0;  // runs loaded, each announced by its project name
    long answers = 0;

    bool ends_with(std::string_view p) const { return std::string_view(tail).ends_with(p); }
    int overflow(int c) override {
        if (c == traits_type::eof()) return c;
        tail += static_cast<char>(c);
        if (c == ':' && ends_with("Project name is:")) ++loads;
        if (tail.size() > 4096) tail.erase(0, 2048);
        return c;
    }
    int underflow() override {
        if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
        const std::string prompt = tail.substr(tail.size() > 40 ? tail.size() - 40 : 0);
        repeats = prompt == last ? repeats + 1 : 0;
        last = prompt;
        if (repeats >= 50) return traits_type::eof();
        static const std::pair<const char*, std::vector<std::string>> choices[] = {
            // clang-format off
            {"boundary of abscissa: ", {"-1.0", "0.0", "0.3", "1.5", "4.9"}},
            {"Enter file name : ", {"soak.ps", "soak.cps", "soak.vps", "soak.txt"}}, {"(Y/N): ", {"Y", "N"}},
            {"Enter input arguments: ", kRuns},
            {"number of bins: ", {"0", "1", "17", "299"}}, {"reference file name: ", {"soak.ref"}},
            {"Enter file name: ", {"soak.ref"}}, {"aperture file name: ", {"Geometry.dat"}}};
        // clang-format on
        line = "soak\n";  // titles and labels
        for (const auto& [end, answer] : choices)
            if (ends_with(end)) line = answer[rng() % answer.size()] + "\n";
        ++answers;
        setg(line.data(), line.data(), line.data() + line.size());
        return traits_type::to_int_type(*gptr());
    }
};

// The soak's pointer: each wait checks the windows drawn since the last,
// drops the record, and notes the memory after `mark` clicks.
struct SoakPointer : ScriptedPointer {
    SoakPointer(RecordingGraphics& graphics, std::size_t m) : g(graphics), mark(m) {}
    RecordingGraphics& g;
    std::size_t mark;
    long rss_at_mark = 0;
    std::string bad_window;
    int pgband(int mode, int posn, float xr, float yr, float& x, float& y, char& ch) override {
        if (bad_window.empty() && !finite_windows(g)) bad_window = "at click " + std::to_string(next);
        g.calls.clear();
        g.calls.shrink_to_fit();
        starts.clear();
        if (next == mark) rss_at_mark = resident_kib();
        return ScriptedPointer::pgband(mode, posn, xr, yr, x, y, ch);
    }
};

}  // namespace

TEST(Soak, RandomSessionEndsNormallyWithFlatMemory) {
    const char* env = std::getenv("VIEWER_SOAK");
    const int passes = env && std::string(env) == "1" ? 10000 : 1000;
    std::mt19937 rng(20240611);
    Harness h;
    copy_runs(h.dir);
    h.dir.write("soak.ref", "0 1 2\n0.5 1.5 2.5\n1 2 3\n");  // a reference curve to read back
    SoakConsole console(rng);
    static_cast<std::ios&>(h.out).rdbuf(&console);
    static_cast<std::ios&>(h.in).rdbuf(&console);
    SoakPointer p(h.g, 100);
    h.s = std::make_unique<Session>(h.g, p, h.in, h.out, h.dir.path);
    using Click = ScriptedPointer::Click;
    for (int i = 0; i < passes; ++i) {
        // Half rows of the left column, then the right column, page turns, a
        // pick of the fit menu where one is on show, outline to run steps.
        const unsigned r = rng() % 100;
        const int row = static_cast<int>(r < 50 ? 1 + rng() % 17 : r < 65 ? 1 + rng() % 11 : 18 + rng() % 7);
        p.clicks.push_back(r < 50 || r >= 80 ? Click{0.03f, menu_row_y(row, NBOX)}
                           : r < 65          ? Click{0.21f, menu_row_y(row, NBOX)}
                           : r < 75          ? Click{0.2f, 0.99f}
                                             : Click{0.03f, 0.90f - 0.05f * static_cast<float>(rng() % 18)});
    }
    p.clicks.push_back({0.03f, menu_row_y(25, NBOX)});
    EXPECT_EQ(h.run({"rfgun"}), 0);
    const long rss_end = resident_kib();
    EXPECT_EQ(p.next, p.clicks.size()) << console.tail;  // ended by the exit pick
    EXPECT_EQ(p.bad_window, "");
    EXPECT_GT(console.answers, passes / 100);  // the dialogues were reached
    EXPECT_GT(console.loads, passes / 500);    // and runs of several sets loaded
#ifndef __SANITIZE_ADDRESS__                   // whose quarantine holds freed memory on purpose
    // The larger real sets, met later, raise the high-water mark once.
    EXPECT_LT(rss_end - p.rss_at_mark, 6 * 1024) << "KiB";
#endif
}

TEST(HostileTables, SessionsStopNamingTheTableOrCarryOnInFiniteWindows) {
    const std::string long80(80, 'a'), long200(200, 'b');
    struct Case {
        std::string why;
        std::function<void(const TempDir&)> make;  // after the beam tables of "p" and an outline
        std::string arg = "p";
        std::string console = "";  // found in the console, % standing for the folder
        bool carries_on = true;    // to the exit pick, drawing; else stops before any frame
    };
    std::vector<Case> cases;
    for (const RunKind& k : run_catalogue())  // a 0-byte table of any kind
        cases.push_back({k.suffix, [&k](const TempDir& d) { d.write(run_file_name(k, "p", ".001"), ""); }});
    for (const std::string& run : kRuns)
        cases.push_back({run, copy_runs, run});  // real and bundled runs as they are
    cases.insert(
        cases.end(),
        {
            // clang-format off
        // NaN and infinities in every table of the bundled run and in the outline.
        {"non-finite", [](const TempDir& d) {
             const std::regex number("[-+]?[0-9.]+[EDed][-+][0-9]+");
             for (const auto& e : fs::directory_iterator(VIEWER_SOURCE_DIR "/examples")) {
                 if (e.path().extension() != ".001") continue;
                 std::ifstream in(e.path(), std::ios::binary);
                 std::string out, l;
                 // Every number of the third line becomes -Infinity, of the fourth NaN, in the same columns.
                 for (int n = 0; std::getline(in, l); ++n, out += l + "\n")
                     for (std::smatch m; (n == 2 || n == 3) && std::regex_search(l, m, number);)
                         l.replace(m[0].first, m[0].second, right_in(n == 2 ? "-Infinity" : "NaN", m.str().size()));
                 d.write(e.path().filename().string(), out);
             }
             d.write("Geometry.dat", "0 NaN\n0.5 Infinity\n1 0.01\n"); }, "rfgun"},
        {"overflow", [](const TempDir& d) { d.write("p.Xemit.001", emit_table(2) + std::string(36, ' ') + std::string(12, '*') + "\n"); },
         "p", "unit 10, file: %/p.Xemit.001, line 3, column 37: cannot read a number", false},
        {"directory", [](const TempDir& d) { fs::remove(d.file("p.Zemit.001")); fs::create_directory(d.file("p.Zemit.001")); },
         "p", "Error while opening file: p.Zemit.001\n          Program stops", false},
        {"unreadable", [](const TempDir& d) { fs::permissions(d.file("p.Yemit.001"), fs::perms::none); },
         "p", "Error while opening file: p.Yemit.001", false},
        {"huge outline", [](const TempDir& d) {  // keeps its first GEOM_MAX points
             std::ofstream g(d.file("Geometry.dat"));
             for (int i = 0; i < 1000000; ++i) g << i * 1e-3 << " 0.02\n"; }},
        // A project name of 80 characters is used whole; the argument holds no
        // more, so one of 200 is cut there: not found, said, and asked again.
        {"name of 80", [&](const TempDir& d) { beam_tables(d, 4, {"001"}, long80); }, long80},
        {"name of 200", [&](const TempDir& d) { beam_tables(d, 4, {"001"}, long200); }, long200,
         "No data files found for: " + long200.substr(0, 80) + "\n     Enter input arguments: ", false},
            // clang-format on
        });
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        if (c.why == "unreadable" && geteuid() == 0) continue;  // permissions do not bind root
        Harness h("10\nT\nX\nY\n");                             // bins and labels, asked on page 3
        h.dir.write("Geometry.dat", "0 0.01\n1 0.02\n");
        beam_tables(h.dir, 4);
        c.make(h.dir);
        h.row(18);                              // the outline on
        for (int page = 0; page < 5; ++page) {  // every row of every page
            for (int r = 1; r <= 17; ++r) h.row(r);
            for (int r = 1; r <= 11; ++r) h.right_row(r);
            h.turn_page();
        }
        h.row(25);
        EXPECT_EQ(h.run({c.arg}), 0);
        std::string want = c.console;
        if (auto at = want.find('%'); at != std::string::npos) want.replace(at, 1, h.dir.path);
        EXPECT_TRUE(has(h.console(), want));
        EXPECT_EQ(h.p.next == h.p.clicks.size(), c.carries_on);
        EXPECT_EQ(h.g.named("pgenv").empty(), !c.carries_on);
        EXPECT_TRUE(finite_windows(h.g));
        EXPECT_TRUE(c.why != "huge outline" || (h.session().geometry.GEOM_N == GEOM_MAX &&
                                                h.session().geometry.GEOM_Z.capacity() <= 2u * GEOM_MAX));
    }
}

// A .track that changes between the range pass and the drawing pass of the
// probe trajectories: the drawing shows what it then reads, in the ranges of
// the first pass, and the table is rewound.
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
    // grown, cut in a record, emptied; with the segments drawn in a panel
    const std::pair<std::string, std::size_t> cases[] = {
        {track + track, 95}, {track.substr(0, track.size() / 2 + 7), 20}, {"", 0}};
    for (const auto& [after, segments] : cases) {
        Harness h;
        Changing g;
        Session& s = *(h.s = std::make_unique<Session>(g, h.p, h.in, h.out, h.dir.path));
        open_table(s, 15, &Fexist::track_EXISTS, "p.track.001", track);
        g.change = [&] { h.dir.write("p.track.001", after); };
        EXPECT_NO_THROW(pgex14(s));
        std::size_t drawn = 0;
        for (const auto* l : g.named("pgline")) drawn += l->xs.size() - 1;
        std::string_view first;
        EXPECT_EQ(drawn, 2 * segments) << after.size();  // both panels
        EXPECT_TRUE(finite_windows(g) && s.unit(15).next_line(first) == !after.empty()) << after.size();
    }
}
