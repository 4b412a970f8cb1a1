#include "python/calls.hpp"

#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <thread>

#include "app/command_line.hpp"
#include "app/data_files.hpp"
#include "app/export.hpp"
#include "app/export_files.hpp"
#include "app/startup.hpp"
#include "particles/views.hpp"
#include "plot/capture.hpp"

namespace viewer::python {

namespace fs = std::filesystem;

namespace {

std::string trimmed(std::string why) {
    if (why.starts_with("viewer: ")) why.erase(0, 8);
    while (!why.empty() && (why.back() == '\n' || why.back() == ' ')) why.pop_back();
    return why;
}

std::string run_arg(const std::string& project, int run) {
    if (run < 0 || run > 999) throw Refusal("a run is a number from 0 to 999, not " + std::to_string(run));
    return project + "," + std::to_string(run);
}

}  // namespace

Library::Library() : graphics_(make_pgplot_graphics()) {
    std::string t = (fs::temp_directory_path() / "viewer-python-XXXXXX").string();
    if (!::mkdtemp(t.data())) throw std::runtime_error("cannot make a private directory like " + t);
    scratch_ = t;
}

Library::~Library() {
    std::error_code ec;
    fs::remove_all(scratch_, ec);
}

Outcome Library::run(const Command& c) {
    std::vector<std::string> args = c.args;
    std::string picture;
    if (!c.save.empty()) {
        args.insert(args.end(), {"--out", fs::absolute(c.save).string()});
    } else if (!c.picture.empty()) {
        picture = scratch_ + "/answer" + c.picture;
        args.insert(args.end(), {"--out", picture});
    }
    if (c.numbers)
        args.insert(args.end(), {"--csv", scratch_ + "/answer.csv", "--stats", scratch_ + "/answer.json"});
    std::vector<const char*> argv{"viewer"};
    for (const std::string& a : args) argv.push_back(a.c_str());

    ExportRequest r;
    try {
        r = parse_export(static_cast<int>(argv.size()), argv.data());
    } catch (const UsageError& e) {
        throw Refusal(e.what());
    }
    if (r.serve || r.help || r.version || r.projects)
        throw Refusal("the module draws and lists; it does not serve");

    std::lock_guard hold(draw_);
    const std::tm now = clock_now();
    Outcome o;
    std::ostringstream out, err;
    int status = 0;
    {
        OwnStderr quiet;  // the library's notes stay off the notebook
        Capture capture(graphics_.get());
        NoPointer pointer;
        std::istringstream in;
        Session s(capture, pointer, in, out, c.dir);
        status = run_export(s, capture, r, now, err);
    }
    o.text = out.str();
    if (status == 0 && !picture.empty()) o.picture = read_file(picture);
    if (status == 0 && c.numbers) {
        for (int n = 1; fs::exists(numbered(scratch_ + "/answer.csv", n)); ++n)
            o.csv.push_back(read_file(numbered(scratch_ + "/answer.csv", n)));
        o.json = read_file(scratch_ + "/answer.json");
    }
    std::error_code ec;
    for (const auto& e : fs::directory_iterator(scratch_, ec)) fs::remove(e.path(), ec);
    if (status != 0) throw Refusal(trimmed(err.str()));
    o.notes = err.str();
    return o;
}

std::size_t column_size(const TableColumn& c) {
    switch (c.type) {
        case TableColumn::real32:
        case TableColumn::integer:
            return 4;
        case TableColumn::real64:
            return 8;
        case TableColumn::truth:
            return 1;
        case TableColumn::text:
            return 80;
    }
    return 0;
}

std::vector<std::string> table_kinds(const std::string& dir, const std::string& project, int run) {
    run_arg(project, run);
    std::vector<std::string> kinds;
    const std::string digits = "." + run_digits(run);
    for (const RunKind& k : run_catalogue())
        if (fs::is_regular_file(fs::path(dir) / run_file_name(k, project, digits)))
            kinds.push_back(k.suffix + 1);
    return kinds;
}

namespace {

// The records of one piece of a table appended to `t`; true when the piece
// ended where a record ended, so that the next piece starts with a record.
bool read_piece(TableFile& f, const RunKind& k, PackedTable& t) {
    RunRecord r(k);
    long lines = 0;
    while (r.read(f)) {
        lines = f.line_number();
        const std::size_t at = t.bytes.size();
        t.bytes.resize(at + t.itemsize);
        char* row = t.bytes.data() + at;
        for (std::size_t c = 0; c < t.columns.size(); ++c) {
            char* p = row + t.offsets[c];
            const int field = static_cast<int>(c);
            switch (t.columns[c].type) {
                case TableColumn::real32:
                    std::memcpy(p, &r.real(field), 4);
                    break;
                case TableColumn::integer: {
                    const std::int32_t v = r.integer(field);
                    std::memcpy(p, &v, 4);
                    break;
                }
                case TableColumn::real64: {
                    const double v = r.real64(field);
                    std::memcpy(p, &v, 8);
                    break;
                }
                case TableColumn::truth:
                    *p = r.logical() ? 1 : 0;
                    break;
                case TableColumn::text:
                    std::memcpy(p, r.text().data(), std::min<std::size_t>(80, r.text().size()));
                    break;
            }
        }
        ++t.rows;
    }
    return f.line_number() == lines;
}

constexpr std::uint64_t kSplitAbove = 4u << 20;  // smaller tables are read at once

// Bytes of packed rows for `bytes` of a file whose first line takes `line`
// bytes (records are one line of much the same length), so that the rows
// grow without copies: growing a vector of 10^6 rows copies it a dozen times.
std::size_t packed_guess(std::uint64_t bytes, std::uint64_t line, std::size_t itemsize) {
    return static_cast<std::size_t>(std::min<std::uint64_t>(bytes / std::max<std::uint64_t>(line, 1) + 16,
                                                            std::uint64_t{1} << 28)) *
           itemsize;
}

}  // namespace

PackedTable read_table(const std::string& dir, const std::string& project, int run, const std::string& kind) {
    const RunKind* k = kind_named(kind);
    if (!k) throw Refusal("no table kind \"" + kind + "\": the kinds are " + kind_names());
    run_arg(project, run);
    const std::string name = run_file_name(*k, project, "." + run_digits(run));
    const std::string path = (fs::path(dir) / name).string();
    if (!fs::is_regular_file(path))
        throw Refusal("no table " + name + " in " + fs::absolute(dir).lexically_normal().string());
    PackedTable t;
    t.columns = table_columns(*k);
    for (const TableColumn& c : t.columns) {
        t.offsets.push_back(t.itemsize);
        t.itemsize += column_size(c);
    }
    std::error_code ec;
    const std::uint64_t size = fs::file_size(path, ec);
    try {
        // A large table in two pieces, one a core; the second joins the
        // first when the first ended on a record's end, else all is read again.
        const std::uint64_t cut = !ec && size > kSplitAbove ? line_after(path, size / 2) : 0;
        const std::uint64_t line = ec ? 0 : line_after(path, 0);
        if (!ec) t.bytes.reserve(packed_guess(size, line, t.itemsize));
        if (cut > 0 && cut < size) {
            PackedTable second = t;
            second.bytes.reserve(packed_guess(size - cut, line, t.itemsize));
            std::exception_ptr failed;
            long first_lines = 0;
            std::thread other([&] {
                try {
                    TableFile f;
                    if (!f.open(path, cut, size)) throw Refusal("cannot read " + path);
                    read_piece(f, *k, second);
                } catch (...) {
                    failed = std::current_exception();
                }
            });
            bool clean = false;
            try {
                TableFile f;
                if (!f.open(path, 0, cut)) throw Refusal("cannot read " + path);
                clean = read_piece(f, *k, t);
                first_lines = f.line_number();
            } catch (...) {
                other.join();
                throw;
            }
            other.join();
            if (clean) {
                if (failed) {
                    try {
                        std::rethrow_exception(failed);
                    } catch (RecordError& e) {
                        e.line += first_lines;  // counted from the second piece's start
                        throw;
                    }
                }
                t.bytes.insert(t.bytes.end(), second.bytes.begin(), second.bytes.end());
                t.rows += second.rows;
                return t;
            }
            t.bytes.clear();
            t.rows = 0;
        }
        TableFile f;
        if (!f.open(path)) throw Refusal("cannot read " + path);
        read_piece(f, *k, t);
    } catch (const RecordError& e) {
        throw Refusal(e.message());
    }
    return t;
}

std::vector<ParticleFileInfo> list_particles(const std::string& dir, const std::string& project, int run) {
    run_arg(project, run);
    std::vector<ParticleFileInfo> list;
    for (const ParticleFileName& f : particle_files(dir, project, run_digits(run))) {
        ParticleFileInfo i;
        i.name = f.name;
        i.path = (fs::path(dir) / f.name).string();
        i.position = f.position;
        try {
            const ParticleSummary s = summarise_particles(i.path);
            i.z = s.stats.z_ref;
            i.particles = s.stats.counts.total;
            i.active = s.stats.counts.active;
        } catch (const std::exception&) {
            i.particles = i.active = -1;  // listed, as --list does, but it cannot be read
        }
        list.push_back(i);
    }
    return list;
}

ParticleArray read_particles(const std::string& path) {
    ParticleArray a;
    for (int c = 0; c < kCoords; ++c) {
        a.names.emplace_back(spec_of(static_cast<Coord>(c)).name);
        a.units.emplace_back(spec_of(static_cast<Coord>(c)).unit);
    }
    a.names.emplace_back("q");
    a.units.emplace_back("nC");
    try {
        if (!fs::is_regular_file(path)) throw Refusal("no particle file " + path);
        ParticleReader f(path);
        const ParticleScan scan = scan_particles(f);
        f.rewind();
        a.values.reserve(static_cast<std::size_t>(scan.stats.counts.active) * a.names.size());
        Particle p;
        while (f.next(p)) {
            if (!p.active()) continue;
            for (int c = 0; c < kCoords; ++c) a.values.push_back(scan.value(static_cast<Coord>(c), p));
            a.values.push_back(p.charge);
            ++a.rows;
        }
    } catch (const ParticleError& e) {
        throw Refusal(e.what());
    } catch (const RecordError& e) {
        throw Refusal(e.message());
    }
    return a;
}

}  // namespace viewer::python
