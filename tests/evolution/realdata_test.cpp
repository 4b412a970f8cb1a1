// Tables of real tracker runs, and the example project of the repository,
// through the readers: each kind with its own record form gives as many
// records as the file has lines, and every field read by columns or as a
// free item equals the number written there.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "evolution/run_files.hpp"
#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using viewer::testing::library_value;
using viewer::testing::same_bits;
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
    auto free = [](std::vector<char> items) { return Kind{Form::free, 0, false, std::move(items)}; };
    const Kind r12 = free(std::vector<char>(12, 'r'));
    // clang-format off
    static const std::vector<std::pair<std::string, Kind>> k = {
        {".Xemit2", e7}, {".Yemit2", e7}, {".Zemit2", e7}, {".Xemit", e7}, {".Yemit", e7}, {".Zemit", e7},
        {".TRemit", {Form::fixed, 5}}, {".Cathode", {Form::fixed, 7, true}}, {".LandF", {Form::fixed, 6}},
        {".Sub_emit", e8}, {".Cr_emit", e8}, {".PScan", {Form::fixed, 4}}, {".C99emit", e13}, {".Cemit", e13},
        {".ref", free(std::vector<char>(7, 'r'))}, {".track", free({'i', 'i', 'r', 'r', 'r', 'r', 'r', 'r'})},
        {".tcheck", free({'r', 'r', 'r', 'r', 'r', 'r', 'r', 'i'})}, {".Scan", r12}, {".Error", r12},
        {".Sigma", free(std::vector<char>(23, 'd'))}, {".lab-E", a80}, {".lab", a80},
        {"Geometry.dat", free({'r', 'r'})},  // the aperture outline
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
        if (stem.ends_with(k.first)) return &k;
    return nullptr;
}

long wc_l(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return static_cast<long>(
        std::count(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>(), '\n'));
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
        std::vector<std::string> t((std::istream_iterator<std::string>(ss)),
                                   std::istream_iterator<std::string>());
        EXPECT_GE(t.size(), need) << "one record a line, line " << f.line_number();
        t.resize(std::max(t.size(), need), "0");
        return t;
    };
    const std::size_t m = kind.form == Form::fixed ? static_cast<std::size_t>(kind.reals) : kind.items.size();
    std::vector<float> r(m);
    std::vector<double> d(m);
    std::vector<int> i(m);
    std::vector<FreeField> fields;
    for (std::size_t k = 0; k < m && kind.form == Form::free; ++k)
        fields.push_back(kind.items[k] == 'i'   ? FreeField(&i[k])
                         : kind.items[k] == 'd' ? FreeField(&d[k])
                                                : &r[k]);
    long n = 0;
    bool l = false;
    std::string text;
    try {
        for (; kind.form == Form::fixed && read_fixed(f, r, kind.logical ? &l : nullptr); ++n) {
            const auto tok = items(m + kind.logical);
            for (std::size_t k = 0; k < m; ++k)
                EXPECT_TRUE(same_bits(r[k], library_value<float>(tok[k])))
                    << "line " << n + 1 << ": " << tok[k];
            EXPECT_TRUE(!kind.logical || l == (tok[m] == "T")) << "line " << n + 1;
        }
        for (; kind.form == Form::free && read_free(f, fields); ++n) {
            const auto tok = items(m);
            for (std::size_t k = 0; k < m; ++k)
                EXPECT_TRUE(kind.items[k] == 'i'   ? i[k] == library_value<int>(tok[k])
                            : kind.items[k] == 'd' ? d[k] == library_value<double>(tok[k])
                                                   : same_bits(r[k], library_value<float>(tok[k])))
                    << "line " << f.line_number() << ": " << tok[k];
        }
        for (; kind.form == Form::a80 && read_a80(f, text); ++n)
            EXPECT_EQ(text, pad(lines.at(static_cast<std::size_t>(n)).substr(0, 80), 80));
    } catch (const RecordError& e) {
        ADD_FAILURE() << e.message();
    }
    return n;
}

// Reads every table of `dir` with the reader of its kind and checks the
// record count against the line count.
void read_all(const fs::path& dir, std::set<std::string>& seen) {
    for (const auto& entry : fs::directory_iterator(dir)) {
        const auto* kind = kind_of(entry.path().filename().string());
        SCOPED_TRACE(entry.path().string());
        EXPECT_NE(kind, nullptr) << "no reader";
        if (!kind) continue;
        EXPECT_EQ(read_and_check(entry.path(), kind->second), wc_l(entry.path()));
        seen.insert(kind->first);
    }
}

TEST(RealData, EveryKindReadsWithItsReader) {
    const fs::path root = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!fs::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;
    std::set<std::string> seen;
    for (const auto& dir : fs::directory_iterator(root))
        if (dir.is_directory()) read_all(dir.path(), seen);
    EXPECT_EQ(seen,
              (std::set<std::string>{".Xemit", ".Yemit", ".Zemit", ".Xemit2", ".Yemit2", ".Zemit2", ".TRemit",
                                     ".Cathode", ".ref", ".track", ".tcheck", ".Error", ".lab-E"}));
}

// The example project: every kind, and the aperture outline beside them,
// each readable with its record form.
TEST(ExampleRun, EveryKindIsPresentAndReadsWithItsReader) {
    std::set<std::string> seen;
    read_all(fs::path(VIEWER_SOURCE_DIR) / "examples", seen);
    EXPECT_EQ(seen.size(), kinds().size());
}

}  // namespace
