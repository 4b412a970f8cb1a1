// Tables of real tracker runs, and the example project of the repository,
// through the readers: each kind with its own record form gives as many
// records as the file has lines, and every field read by columns or as a
// free item equals the number written there. Every plot along z that has its
// tables draws each real run.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "evolution/plots.hpp"
#include "evolution/run_files.hpp"
#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
namespace fs = std::filesystem;

enum class Form { fixed, free, a80 };

struct Kind {
    Form form;
    int reals = 0;              // fixed: fields of 12 columns
    bool logical = false;       // fixed: an L3 field follows
    std::vector<char> items{};  // free: 'i' integer, 'r' real, 'd' 64-bit real, in file order
};

// Longer suffixes first, so that ".Xemit2" is not taken for ".Xemit".
const std::vector<std::pair<std::string, Kind>>& kinds() {
    const Kind e7{Form::fixed, 7}, e8{Form::fixed, 8}, e13{Form::fixed, 13}, a80{Form::a80};
    const Kind r12{Form::free, 0, false, std::vector<char>(12, 'r')};
    // clang-format off
    static const std::vector<std::pair<std::string, Kind>> k = {
        {".Xemit2", e7}, {".Yemit2", e7}, {".Zemit2", e7}, {".Xemit", e7}, {".Yemit", e7}, {".Zemit", e7},
        {".TRemit", {Form::fixed, 5}}, {".Cathode", {Form::fixed, 7, true}}, {".LandF", {Form::fixed, 6}},
        {".Sub_emit", e8}, {".Cr_emit", e8}, {".PScan", {Form::fixed, 4}}, {".C99emit", e13}, {".Cemit", e13},
        {".ref", {Form::free, 0, false, std::vector<char>(7, 'r')}},
        {".track", {Form::free, 0, false, {'i', 'i', 'r', 'r', 'r', 'r', 'r', 'r'}}},
        {".tcheck", {Form::free, 0, false, {'r', 'r', 'r', 'r', 'r', 'r', 'r', 'i'}}},
        {".Scan", r12}, {".Error", r12}, {".Sigma", {Form::free, 0, false, std::vector<char>(23, 'd')}},
        {".lab-E", a80}, {".lab", a80},
        {"Geometry.dat", {Form::free, 0, false, {'r', 'r'}}},  // the aperture outline
    };
    // clang-format on
    return k;
}

// The kind of `<project><suffix>.<nnn>`; the project may hold dots itself.
const std::pair<std::string, Kind>* kind_of(const std::string& name) {
    if (name == "Geometry.dat") return &kinds().back();
    if (name.size() < 4 || name[name.size() - 4] != '.') return nullptr;
    const std::string stem = name.substr(0, name.size() - 4);
    for (const auto& k : kinds())
        if (stem.size() >= k.first.size() &&
            stem.compare(stem.size() - k.first.size(), k.first.size(), k.first) == 0)
            return &k;
    return nullptr;
}

long wc_l(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return static_cast<long>(
        std::count(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>(), '\n'));
}

template <class T>
T library_value(const std::string& tok) {
    T v{};
    auto r = std::from_chars(tok.data() + (tok[0] == '+'), tok.data() + tok.size(), v);
    EXPECT_TRUE(r.ec == std::errc{} && r.ptr == tok.data() + tok.size()) << tok;
    return v;
}
bool same_float(float got, const std::string& tok) {
    return std::bit_cast<std::uint32_t>(got) == std::bit_cast<std::uint32_t>(library_value<float>(tok));
}

// Reads the whole file with the reader of its kind; every record is checked
// against the blank-separated items of its line. Returns the record count.
long read_and_check(const fs::path& p, const Kind& kind) {
    std::vector<std::string> lines;
    std::ifstream in(p, std::ios::binary);
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    TableFile f;
    EXPECT_TRUE(f.open(p.string()));
    auto items = [&](std::size_t need) {  // of the line that ended the record
        std::istringstream ss(lines.at(static_cast<std::size_t>(f.line_number() - 1)));
        std::vector<std::string> t;
        for (std::string w; ss >> w;) t.push_back(w);
        EXPECT_GE(t.size(), need) << "one record a line, line " << f.line_number();
        t.resize(std::max(t.size(), need), "0");
        return t;
    };
    long n = 0;
    const std::size_t m = kind.form == Form::fixed ? static_cast<std::size_t>(kind.reals) : kind.items.size();
    std::vector<float> r(m);
    std::vector<double> d(m);
    std::vector<int> i(m);
    std::vector<FreeField> fields;
    for (std::size_t k = 0; k < kind.items.size(); ++k)
        fields.push_back(kind.items[k] == 'i'   ? FreeField(&i[k])
                         : kind.items[k] == 'd' ? FreeField(&d[k])
                                                : FreeField(&r[k]));
    try {
        bool l = false;
        if (kind.form == Form::fixed)
            for (; read_fixed(f, r, kind.logical ? &l : nullptr); ++n) {
                const auto tok = items(m + kind.logical);
                for (std::size_t k = 0; k < m; ++k)
                    EXPECT_TRUE(same_float(r[k], tok[k])) << "line " << f.line_number() << ": " << tok[k];
                EXPECT_TRUE(!kind.logical || l == (tok[m] == "T")) << "line " << f.line_number();
            }
        else if (kind.form == Form::free)
            for (; read_free(f, fields); ++n) {
                const auto tok = items(m);
                for (std::size_t k = 0; k < m; ++k)
                    EXPECT_TRUE(kind.items[k] == 'i'   ? i[k] == library_value<int>(tok[k])
                                : kind.items[k] == 'd' ? d[k] == library_value<double>(tok[k])
                                                       : same_float(r[k], tok[k]))
                        << "line " << f.line_number() << ": " << tok[k];
            }
        else
            for (std::string text; read_a80(f, text); ++n) {
                std::string expect = lines.at(static_cast<std::size_t>(n)).substr(0, 80);
                expect.resize(80, ' ');
                EXPECT_EQ(text, expect);
            }
    } catch (const RecordError& e) {
        ADD_FAILURE() << e.message();
    }
    return n;
}

using Plot = void (*)(Session&, int);

// The tables a plot along z reads, on their units.
struct Plotted {
    const char* suffix;
    int unit;
    bool Fexist::*present;
};
const Plotted kPlotted[] = {{".Xemit", 10, &Fexist::Xemit_EXISTS},
                            {".Yemit", 11, &Fexist::Yemit_EXISTS},
                            {".Zemit", 12, &Fexist::Zemit_EXISTS},
                            {".ref", 13, &Fexist::ref_EXISTS}};

// Draws every plot that has its tables: no failure, every record inside the
// limit drawn, finite ranges. `lines` holds the line count of each unit.
void draw_all(Session& s, RecordingGraphics& rec, const std::map<int, long>& lines) {
    auto run = [&](Plot plot, int N, long expect_np, int plot_no) {
        SCOPED_TRACE(plot_no);
        rec.clear();
        ASSERT_NO_THROW(plot(s, N));
        EXPECT_EQ(s.plot(plot_no).NP, expect_np);
        for (const GraphicsCall* e : rec.named("pgenv"))
            for (std::size_t i = 0; i < 4; ++i) EXPECT_TRUE(std::isfinite(e->args[i]));
        for (const GraphicsCall* l : rec.named("pgline")) EXPECT_EQ(l->args[0], expect_np);
    };
    const Plot beam[] = {pgex1, pgex2, pgex3, pgex4, pgex5, pgex6, pgex7, pgex8, pgex9};
    const Plot ref[] = {pgex10, pgex11, pgex12, pgex13};
    if (s.fexist.Xemit_EXISTS && s.fexist.Yemit_EXISTS)
        for (int i = 0; i < 3; ++i)
            run(beam[i], PKT, std::min({lines.at(10), lines.at(11), long{PKT}}), i + 1);
    if (s.fexist.Zemit_EXISTS)
        for (int i = 3; i < 9; ++i) run(beam[i], PKT, std::min(lines.at(12), long{PKT}), i + 1);
    if (s.fexist.ref_EXISTS) {
        s.R_PKT = static_cast<int>(lines.at(13));
        for (int i = 0; i < 4; ++i) run(ref[i], s.R_PKT, s.R_PKT, i + 10);
    }
}

// Reads every table of `dir` with the reader of its kind and checks the
// record count against the line count. Returns the records of each file by
// kind, for a run directory the kinds alone.
std::map<std::string, long> read_all(const fs::path& dir, bool by_kind, std::set<std::string>& seen) {
    std::map<std::string, long> counts;
    for (const auto& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        const auto* kind = kind_of(name);
        SCOPED_TRACE(entry.path().string());
        EXPECT_NE(kind, nullptr) << "no reader";
        if (!kind) continue;
        const long n = read_and_check(entry.path(), kind->second);
        EXPECT_EQ(n, wc_l(entry.path()));
        seen.insert(kind->first);
        counts[by_kind ? kind->first : name] = n;
    }
    return counts;
}

TEST(RealData, EveryKindReadsWithItsReaderAndEveryPlotDraws) {
    const fs::path root = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!fs::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;

    std::set<std::string> seen;
    std::map<std::string, long> counts;
    int drawn = 0;
    for (const auto& dir : fs::directory_iterator(root)) {
        if (!dir.is_directory()) continue;
        const std::string run = dir.path().filename().string();
        SCOPED_TRACE(run);
        const auto in_run = read_all(dir.path(), true, seen);
        for (const auto& [kind, n] : in_run) counts[run + "/" + kind] = n;

        viewer::testing::Harness h;
        Session s(h.g, h.p, h.in, h.out, dir.path().string());
        std::map<int, long> lines;
        for (const Plotted& p : kPlotted)
            for (const auto& entry : fs::directory_iterator(dir.path()))
                if (const auto* k = kind_of(entry.path().filename().string()); k && k->first == p.suffix) {
                    ASSERT_TRUE(s.unit(p.unit).open(entry.path().string()));
                    s.fexist.*(p.present) = true;
                    lines[p.unit] = in_run.at(p.suffix);
                }
        draw_all(s, h.g, lines);
        drawn += static_cast<int>(lines.size());
    }
    EXPECT_GT(drawn, 0);
    EXPECT_EQ(seen,
              (std::set<std::string>{".Xemit", ".Yemit", ".Zemit", ".Xemit2", ".Yemit2", ".Zemit2", ".TRemit",
                                     ".Cathode", ".ref", ".track", ".tcheck", ".Error", ".lab-E"}));
    // Counts written down from the tables, so that a reader and a line
    // count that fail alike do not pass.
    EXPECT_EQ(counts["webservice-xfel/.ref"], 10742);
    EXPECT_EQ(counts["webservice-xfel/.Cathode"], 1441);
    EXPECT_EQ(counts["webservice-xfel/.tcheck"], 1489);
    EXPECT_EQ(counts["hiwi-photogun-3d/.track"], 5460);
    EXPECT_EQ(counts["hiwi-photogun-emptytrack/.track"], 0);
    EXPECT_EQ(counts["simframe-injector400/.Error"], 1);
    EXPECT_EQ(counts["simframe-injector400/.lab-E"], 33);
    EXPECT_EQ(counts["liso-injector/.TRemit"], 99);
}

// The example project: all twenty-two kinds in three runs, and the aperture
// outline beside them, each readable with its record form.
TEST(ExampleRun, EveryKindIsPresentAndReadsWithItsReader) {
    std::set<std::string> seen;
    auto counts = read_all(fs::path(VIEWER_SOURCE_DIR) / "examples", false, seen);
    EXPECT_EQ(seen.size(), 23u);
    EXPECT_EQ(counts["rfgun.PScan.001"], 3 * 360);
    EXPECT_EQ(counts["rfgun.Error.001"], 40);
    EXPECT_EQ(counts["rfgun.lab.001"], 33);
    EXPECT_EQ(counts["rfgun.lab-E.001"], 33);
    EXPECT_GE(counts["rfgun.Xemit.001"], 200);
    EXPECT_GT(counts["Geometry.dat"], 10);
}

}  // namespace
