// The bundled example as the tool writes it, and what it shows a user: on
// every row a run offers, curves that change; x apart from y; the runs of
// the solenoid series apart; the series' scan agreeing with its runs.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "app/startup.hpp"
#include "core/fortran_format.hpp"
#include "core/particles.hpp"
#include "core/run_catalogue.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

const fs::path kExamples = fs::path(VIEWER_SOURCE_DIR) / "examples";

std::string bytes(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Equal texts, but for the last bits of 17-digit numbers, which an
// unoptimised build of the tool may round otherwise.
bool same_text(const std::string& a, const std::string& b) {
    std::istringstream x(a), y(b);
    std::string p, q;
    while (true) {
        const bool more = static_cast<bool>(x >> p);
        if (more != static_cast<bool>(y >> q)) return false;
        if (!more) return a.size() == b.size();
        if (p == q) continue;
        char* end = nullptr;
        const double u = std::strtod(p.c_str(), &end), v = std::strtod(q.c_str(), nullptr);
        if (*end != '\0' || std::fabs(u - v) > 1e-12 * std::fabs(v)) return false;
    }
}

// The numeric columns of a CSV file, by header (cells of other runs and curves together).
std::map<std::string, std::vector<double>> columns(const std::string& path) {
    std::ifstream in(path);
    std::string line;
    std::getline(in, line);
    std::vector<std::string> header;
    for (std::stringstream h(line); std::getline(h, line, ',');) header.push_back(line);
    std::map<std::string, std::vector<double>> out;
    while (std::getline(in, line)) {
        std::stringstream row(line);
        std::string cell;
        for (std::size_t c = 0; std::getline(row, cell, ','); ++c)
            if (!cell.empty() && c < header.size()) out[header[c]].push_back(std::stod(cell));
    }
    return out;
}

double largest(const std::vector<double>& v) {
    return v.empty() ? 0 : *std::max_element(v.begin(), v.end());
}

}  // namespace

TEST(Example, TheToolWritesTheBundledRun) {
    TempDir made{"example"};
    ASSERT_EQ(std::system((std::string(MAKE_EXAMPLE_BINARY) + " " + made.path).c_str()), 0);
    std::set<std::string> ours, bundled;
    for (const auto& e : fs::directory_iterator(made.path)) ours.insert(e.path().filename().string());
    for (const auto& e : fs::directory_iterator(kExamples))
        if (e.path().extension() != ".ipynb")
            bundled.insert(e.path().filename().string());  // the tour, not data
    EXPECT_EQ(ours, bundled);
    std::uintmax_t size = 0;
    for (const std::string& f : ours) {
        EXPECT_TRUE(same_text(bytes(fs::path(made.path) / f), bytes(kExamples / f)))
            << f << " is not the tool's";
        size += fs::file_size(kExamples / f);
    }
    EXPECT_LT(size, 3u << 20);
}

// A particle file of the bundle and the run's tables at its z print the
// same digits: what the particle views show beside the tables agrees.
TEST(Example, ParticleFilesHaveTheMomentsOfTheTables) {
    const auto files = particle_files(kExamples.string(), "rfgun", "001");
    ASSERT_EQ(files.size(), 3u);
    for (const auto& f : files) {
        SCOPED_TRACE(f.name);
        const BunchStats s = summarise_particles((kExamples / f.name).string()).stats;
        EXPECT_EQ(f.position, std::lround(100 * s.z_avg));
        EXPECT_TRUE(s.counts.probes > 0 && s.counts.lost > 0) << "the states of particles";
        const auto x = nearest_record(kExamples / "rfgun.Xemit.001", s.z_avg);
        const auto y = nearest_record(kExamples / "rfgun.Yemit.001", s.z_avg);
        const auto z = nearest_record(kExamples / "rfgun.Zemit.001", s.z_avg);
        const struct {
            const char* what;
            double got, record;
        } fields[] = {
            {"z", s.z_avg, x[0]},         {"t", s.clock_avg, x[1]},     {"x avg", s.x.avg, x[2]},
            {"x rms", s.x.rms, x[3]},     {"x' rms", s.x.xp_rms, x[4]}, {"emit x", s.x.emit_n, x[5]},
            {"corr x", s.x.corr, x[6]},   {"y avg", s.y.avg, y[2]},     {"y rms", s.y.rms, y[3]},
            {"y' rms", s.y.xp_rms, y[4]}, {"emit y", s.y.emit_n, y[5]}, {"corr y", s.y.corr, y[6]},
            {"E kin", s.e_kin, z[2]},     {"z rms", s.z_rms, z[3]},     {"dE rms", s.de_rms, z[4]},
            {"emit z", s.emit_z, z[5]},   {"corr z", s.corr_z, z[6]},
        };
        for (const auto& c : fields) EXPECT_EQ(fmt_e12_4(c.got), fmt_e12_4(c.record)) << c.what;
    }
}

TEST(Example, EveryRowShowsSomething) {
    std::map<int, double> end_size;  // of run 1, 2, 3: sigma_x at the end of the line
    for (int run = 1; run <= 3; ++run) {
        const Fexist f = tables_present(kExamples, "rfgun", "." + run_digits(run));
        Harness h;
        fs::copy(kExamples, h.dir.path);
        int rows = 0;
        for (int page = 1; page <= 5; ++page)
            for (int code = 1; code <= 41; ++code) {
                const MenuRow* row = find_row(page, code);
                if (!row || !available(*row, f)) continue;
                const std::string ref = std::to_string(page) + ":" + std::to_string(code);
                SCOPED_TRACE("run " + std::to_string(run) + " row " + ref);
                std::ostringstream err;
                ASSERT_EQ(
                    h.export_line("rfgun," + std::to_string(run) + " --plot " + ref + " --csv d.csv", err),
                    0);
                const auto cols = columns(h.dir.file("d.csv"));
                ++rows;
                for (const auto& [name, values] : cols) {
                    if (name == "curve") continue;
                    EXPECT_GT(std::set<double>(values.begin(), values.end()).size(), 1u)
                        << name << " is flat";
                }
                // a beam that is not round
                if (page == 1 && (code <= 3 || code == 12)) {
                    // by name: x, y, then z; apart by a tenth of the largest somewhere
                    const auto& x = cols.begin()->second;
                    const auto& y = std::next(cols.begin())->second;
                    double apart = 0;
                    for (std::size_t i = 0; i < x.size() && i < y.size(); ++i)
                        apart = std::max(apart, std::fabs(x[i] - y[i]));
                    EXPECT_GT(apart, 0.1 * std::max(largest(x), largest(y))) << cols.begin()->first;
                }
                if (ref == "1:2") end_size[run] = cols.at("sigma_x [mm]").back();
            }
        EXPECT_GE(rows, run == 3 ? 20 : 70) << run;  // run 3 has fewer tables
    }
    // The runs of the series end apart, and the scan of the series found the
    // same sizes at their fields.
    EXPECT_GT(end_size[2] / end_size[1], 1.2);
    EXPECT_GT(end_size[1] / end_size[3], 1.2);
    std::ifstream scan(kExamples / "rfgun.Scan.002");
    std::map<double, double> sx_at;  // field T -> sigma_x mm
    for (double v[12]; scan >> v[0] >> v[1] >> v[2] >> v[3] >> v[4] >> v[5] >> v[6] >> v[7] >> v[8] >> v[9] >>
                       v[10] >> v[11];)
        sx_at[v[0]] = v[4];  // the field, then the waist, the emittances and the size in x
    for (const auto& [run, field] : std::map<int, double>{{1, 0.200}, {2, 0.215}, {3, 0.190}})
        EXPECT_NEAR(sx_at.at(field) / end_size[run], 1.0, 0.01) << run;
}
