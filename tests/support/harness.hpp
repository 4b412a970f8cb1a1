// A whole viewer session in one process: a temporary working directory,
// recorded graphics, scripted clicks and console streams.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "app/export.hpp"
#include "app/main_loop.hpp"
#include "app/menu.hpp"
#include "core/fortran_format.hpp"
#include "core/records.hpp"
#include "core/session.hpp"
#include "plot/capture.hpp"
#include "tests/support/recording_graphics.hpp"
#include "tests/support/temp_dir.hpp"

namespace viewer::testing {

// A fixed record of 12-column fields.
inline std::string fixed_record(std::initializer_list<double> values) {
    std::string line;
    for (double v : values) line += fmt_e12_4(v);
    return line + "\n";
}

// `n` records of an emittance table along z (7 fields), z from 0 by 0.1 m.
inline std::string emit_table(int n, double scale = 1.0) {
    std::string t;
    for (int i = 0; i < n; ++i) {
        double z = 0.1 * i;
        t += fixed_record({z, 1e-9 * i, 0.0, scale * (1.0 + 0.1 * i), scale * (0.5 + 0.01 * i),
                           scale * (2.0 + 0.2 * i), 0.1 * i});
    }
    return t;
}

// Beam tables .Xemit, .Yemit (twice as large) and .Zemit of `n` records for
// each of `runs` of the project `project`.
inline void beam_tables(const TempDir& d, int n, std::initializer_list<const char*> runs = {"001"},
                        const std::string& project = "p") {
    for (const char* run : runs)
        for (const char* kind : {".Xemit.", ".Yemit.", ".Zemit."})
            d.write(project + kind + run, emit_table(n, kind[1] == 'Y' ? 2.0 : 1.0));
}

// The record of a table of seven fields, read as text, whose z lies nearest `z`.
inline std::vector<double> nearest_record(const std::filesystem::path& table, double z) {
    std::ifstream in(table);
    std::vector<double> best, r(7);
    while (in >> r[0] >> r[1] >> r[2] >> r[3] >> r[4] >> r[5] >> r[6])
        if (best.empty() || std::abs(r[0] - z) < std::abs(best[0] - z)) best = r;
    return best;
}

// `needle` found in `hay`; the failure shows the whole text.
inline ::testing::AssertionResult has(const std::string& hay, const std::string& needle) {
    if (hay.find(needle) != std::string::npos) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "\"" << needle << "\" not in:\n" << hay;
}

inline std::tm fixed_time() {
    std::tm t{};
    t.tm_year = 126;
    t.tm_mon = 10;
    t.tm_mday = 22;
    t.tm_hour = 9;
    t.tm_min = 5;
    return t;
}

// The export's request for `line`, the arguments after the program name
// split at blanks; throws UsageError as the command line would.
inline ExportRequest request_of(const std::string& line) {
    std::istringstream words("viewer " + line);
    const std::vector<std::string> args{std::istream_iterator<std::string>(words), {}};
    std::vector<const char*> argv;
    for (const auto& a : args) argv.push_back(a.c_str());
    return parse_export(static_cast<int>(argv.size()), argv.data());
}

struct Harness {
    explicit Harness(std::string input = "") : in(std::move(input)) {}

    TempDir dir;
    RecordingGraphics g;
    ScriptedPointer p;
    std::istringstream in;
    std::ostringstream out;
    std::unique_ptr<Session> s;

    Session& session() {
        if (!s) s = std::make_unique<Session>(g, p, in, out, dir.path);
        return *s;
    }
    // A session as the export has it: its graphics keep what the plots
    // draw and pass every call on to `g`.
    std::unique_ptr<Capture> cap;
    Session& export_session() {
        if (!s) {
            cap = std::make_unique<Capture>(&g);
            s = std::make_unique<Session>(*cap, p, in, out, dir.path);
        }
        return *s;
    }
    void input(const std::string& text) {
        in.str(text);
        in.clear();
    }

    // Runs a whole session with `args` (without the program name).
    int run(const std::vector<std::string>& args) {
        std::vector<const char*> argv{"viewer"};
        for (const auto& a : args) argv.push_back(a.c_str());
        return run_viewer(session(), static_cast<int>(argv.size()), argv.data(), fixed_time());
    }

    // The headless export of `line` in this harness's directory.
    int export_line(const std::string& line, std::ostream& err) {
        const ExportRequest r = request_of(line);
        Session& session = export_session();
        return run_export(session, *cap, r, fixed_time(), err);
    }

    void click(float x, float y) { p.clicks.push_back({x, y}); }
    void row(int i) { click(0.03f, menu_row_y(i, NBOX)); }
    void right_row(int i) { click(0.21f, menu_row_y(i, NBOX)); }
    void turn_page() { click(0.2f, 0.99f); }
    // Picks in order: a row of the left column, 30 + i row i of the right, 0 a page turn.
    void picks(std::initializer_list<int> codes) {
        for (int c : codes) c == 0 ? turn_page() : c > 30 ? right_row(c - 30) : row(c);
    }

    std::string console() const { return out.str(); }
};

// Occurrences of `needle` in `hay`.
inline std::size_t count_of(const std::string& hay, const std::string& needle) {
    std::size_t n = 0;
    for (auto p = hay.find(needle); p != std::string::npos; p = hay.find(needle, p + 1)) ++n;
    return n;
}

// Fixed records of 12-column fields, one a row.
inline std::string fixed_records(const std::vector<std::vector<float>>& rows) {
    std::string t;
    for (const auto& r : rows) {
        for (float v : r) t += fmt_e12_4(v);
        t += "\n";
    }
    return t;
}

// Writes `text` as the table `name`, opens it on `unit` and marks its kind present.
inline void open_table(Session& s, int unit, bool Fexist::*present, const std::string& name,
                       const std::string& text) {
    s.unit(unit).close();
    std::ofstream(s.path(name), std::ios::binary) << text;
    if (!s.unit(unit).open(s.path(name))) throw std::runtime_error("cannot open " + name);
    s.fexist.*present = true;
}

// The recorded calls from index `from` on, by name; pgsci, pgsls and pgpanl
// carry their number, pgline the sign of its first ordinate: "pgsls2", "pgline-".
inline std::vector<std::string> trace(const RecordingGraphics& g, std::size_t from = 0) {
    std::vector<std::string> t;
    for (std::size_t i = from; i < g.calls.size(); ++i) {
        const GraphicsCall& c = g.calls[i];
        std::string e = c.name;
        if (c.name == "pgsci" || c.name == "pgsls") e += std::to_string(static_cast<int>(c.args[0]));
        if (c.name == "pgpanl") e += std::to_string(static_cast<int>(c.args[1]));
        if (c.name == "pgline" && !c.ys.empty()) e += c.ys[0] < 0 ? "-" : "+";
        t.push_back(e);
    }
    return t;
}

// The first four arguments of a call (pgenv, pgswin) equal the given window
// to float precision.
inline ::testing::AssertionResult window_is(const GraphicsCall& c, float x1, float x2, float y1, float y2) {
    const float want[] = {x1, x2, y1, y2};
    for (std::size_t i = 0; i < 4; ++i) {
        const float got = static_cast<float>(c.args.at(i));
        if (got != want[i] && std::fabs(got - want[i]) > 1e-6f * std::fabs(want[i]))
            return ::testing::AssertionFailure()
                   << c.name << " argument " << i + 1 << " is " << got << ", not " << want[i];
    }
    return ::testing::AssertionSuccess();
}

}  // namespace viewer::testing

// Generic checks of numbers read from tables.
#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>

namespace viewer::testing {

// The library's correctly rounded reading of a whole number text (a leading
// "+" allowed); past the range of a float, 0 or infinity as a formatted read
// gives it.
template <class T>
T library_value(std::string_view t) {
    if (!t.empty() && t[0] == '+') t.remove_prefix(1);
    T v{};
    const auto r = std::from_chars(t.data(), t.data() + t.size(), v);
    if constexpr (std::is_floating_point_v<T>)
        if (r.ec == std::errc::result_out_of_range) {
            const double w = library_value<double>(t);
            v = std::fabs(w) > 1 ? std::numeric_limits<T>::infinity() : T(0);
            return std::signbit(w) ? -v : v;
        }
    EXPECT_TRUE(r.ec == std::errc{} && r.ptr == t.data() + t.size()) << t;
    return v;
}

// Equal bit for bit: tells -0 from 0 and compares NaNs.
template <class T>
bool same_bits(T a, T b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace viewer::testing
