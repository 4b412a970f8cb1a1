// Every row of the five pages against its own read: the redraw of the row
// through PGPLOT's /NULL device (the library's clipping and transforms, no
// output), the same redraw into graphics that do nothing (the viewer's own
// share), and the plain read and parse of the tables it needs. The tables
// are the bundled run scaled up to the largest real ones: PKT records along
// z, 10^5 of .ref, 10^6 of .track. tools/bench.sh prints the ratios and the
// peak memory of each row in one table.
//
//   VIEWER_ROWS_DIR=DIR viewer_bench --benchmark_filter='^rows/'
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "bench/null_graphics.hpp"
#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"

namespace {

namespace fs = std::filesystem;
using namespace viewer;

// How many records a kind gets, and where its abscissa stands in a record
// (the field moved on with each copy of the bundled table).
struct Scale {
    Kind kind;
    long records;
    int field;     // the position or time
    double shift;  // what one copy adds to it
};
constexpr Scale kScales[] = {
    {Kind::Xemit, PKT, 0, 5},   {Kind::Yemit, PKT, 0, 5},       {Kind::Zemit, PKT, 0, 5},
    {Kind::Xemit2, PKT, 0, 5},  {Kind::Yemit2, PKT, 0, 5},      {Kind::Zemit2, PKT, 0, 5},
    {Kind::TRemit, PKT, 0, 5},  {Kind::Cemit, PKT, 0, 5},       {Kind::Sub_emit, PKT, 0, 5},
    {Kind::LandF, PKT, 0, 5},   {Kind::Sigma, PKT, 0, 5},       {Kind::tcheck, PKT, 0, 5},
    {Kind::ref, 100'000, 0, 5}, {Kind::track, 1'000'000, 2, 5}, {Kind::Cathode, 1500, 1, 0.042},
    {Kind::Scan, 100, 0, 0},
};

// The bundled run 001 (the kinds above copied over and over, each copy
// further along; the others as they are) in `dir`.
void write_tables(const fs::path& dir) {
    const fs::path from = fs::path(VIEWER_SOURCE_DIR) / "examples";
    for (const RunKind& k : run_catalogue()) {
        const std::string name = run_file_name(k, "rows", ".001");
        const fs::path source = from / run_file_name(k, "rfgun", ".001");
        if (!fs::exists(source) || fs::exists(dir / name)) continue;
        const Scale* scale = nullptr;
        for (const Scale& s : kScales)
            if (s.kind == k.kind) scale = &s;
        if (!scale) {
            fs::copy_file(source, dir / name);
            continue;
        }
        std::vector<std::string> lines;
        std::ifstream in(source);
        for (std::string l; std::getline(in, l);) lines.push_back(l);
        std::ofstream out(dir / name);
        for (long r = 0; r < scale->records; ++r) {
            const std::string& l = lines[static_cast<std::size_t>(r) % lines.size()];
            const double shift = scale->shift * static_cast<double>(r / static_cast<long>(lines.size()));
            if (k.form == RecordForm::fixed) {
                const std::size_t at = static_cast<std::size_t>(scale->field) * 12;
                out << l.substr(0, at) << fmt_e12_4(std::stod(l.substr(at, 12)) + shift) << l.substr(at + 12)
                    << '\n';
                continue;
            }
            std::istringstream words(l);
            std::string w;
            for (int f = 0; words >> w; ++f)
                out << ' ' << (f == scale->field ? fmt_exp(std::stod(w) + shift, 20, 12, 'E') : w);
            out << '\n';
        }
    }
}

// The directory VIEWER_ROWS_DIR names, filled on first use; without it the
// rows are not measured (the tables take a few hundred megabytes).
const std::string& tables_dir() {
    static const std::string dir = [] {
        const char* given = std::getenv("VIEWER_ROWS_DIR");
        if (!given || !*given) return std::string();
        fs::create_directories(given);
        write_tables(given);
        return std::string(given);
    }();
    return dir;
}

// A session on the scaled run, drawing into PGPLOT's /NULL device, or,
// for the viewer's own share of a redraw, into graphics that do nothing.
struct RowSession {
    std::unique_ptr<Graphics> pg;
    QuietSession q;
    explicit RowSession(std::unique_ptr<Graphics> g) : pg(std::move(g)), q(*pg, tables_dir()) {
        q.s.chara.PROJECT = "rows";
        q.s.chara.RUN = ".001";
        if (!load_run(q.s) || pg->pgopen("/NULL") <= 0) std::abort();
        q.s.logo.TO_FILE = true;
    }
};

RowSession& row_session() {
    static RowSession s(make_pgplot_graphics());
    return s;
}
RowSession& own_session() {
    static RowSession s(std::make_unique<NullGraphics>());
    return s;
}

void redraw_in(benchmark::State& state, Session& s, int page, int code) {
    for (auto _ : state) {
        s.window.PAGE = page;
        page_fill(s);
        s.window.SELECTION = code;
        s.pg.pgbbuf();
        dispatch(s);
        s.pg.pgebuf();
    }
}
void redraw(benchmark::State& state, int page, int code) {
    redraw_in(state, row_session().q.s, page, code);
}
void own(benchmark::State& state, int page, int code) {
    redraw_in(state, own_session().q.s, page, code);
}

// The tables a row reads, as one redraw shows them: those of which it
// read anything.
std::vector<const RunKind*> tables_read(int page, int code) {
    Session& s = row_session().q.s;
    std::vector<std::uint64_t> before;
    for (const RunKind& k : run_catalogue()) before.push_back(s.unit(k.unit).bytes_read());
    s.window.PAGE = page;
    page_fill(s);
    s.window.SELECTION = code;
    dispatch(s);
    std::vector<const RunKind*> kinds;
    std::size_t i = 0;
    for (const RunKind& k : run_catalogue()) {
        // Two kinds share a unit; the one the run load opened is the one read.
        const bool opened = s.fexist.*k.exists;
        if (opened && s.unit(k.unit).bytes_read() > before[i]) kinds.push_back(&k);
        ++i;
    }
    return kinds;
}

void read(benchmark::State& state, int page, int code) {
    const std::vector<const RunKind*> kinds = tables_read(page, code);
    for (auto _ : state) {
        long fields = 0;
        for (const RunKind* k : kinds) {
            TableFile f;
            f.open((fs::path(tables_dir()) / run_file_name(*k, "rows", ".001")).string());
            RunRecord r(*k);
            while (r.read(f)) fields += k->reals();
        }
        benchmark::DoNotOptimize(fields);
    }
}

// One pair of benchmarks a row the scaled run offers.
const bool kRegistered = [] {
    if (tables_dir().empty()) return false;
    const Fexist f = tables_present(tables_dir(), "rows", ".001");
    for (int page = 1; page <= 5; ++page)
        for (int code = 1; code <= 41; ++code) {
            const MenuRow* row = find_row(page, code);
            if (!row || !available(*row, f)) continue;
            const std::string name = "rows/" + std::to_string(page) + ":" + std::to_string(code);
            benchmark::RegisterBenchmark((name + "/redraw").c_str(), redraw, page, code)
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark((name + "/own").c_str(), own, page, code)
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark((name + "/read").c_str(), read, page, code)
                ->Unit(benchmark::kMillisecond);
        }
    return true;
}();

}  // namespace
