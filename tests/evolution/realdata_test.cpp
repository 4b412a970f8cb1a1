// Tables of real tracker runs, and the example project of the repository,
// through the readers: each kind with its own record form gives as many
// records as the file has lines, and every field read by columns or as a
// free item equals the number written there.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "evolution/run_files.hpp"

namespace {

using namespace viewer;
namespace fs = std::filesystem;

enum class Form { fixed, free, a80 };

struct Kind {
    Form form;
    int reals = 0;               // fixed: fields of 12 columns
    bool logical = false;        // fixed: an L3 field follows
    std::vector<char> items{};   // free: 'i' integer, 'r' real, 'd' 64-bit real, in file order
};

// Longer suffixes first, so that ".Xemit2" is not taken for ".Xemit".
const std::vector<std::pair<std::string, Kind>>& kinds() {
    static const std::vector<std::pair<std::string, Kind>> k = {
        {".Xemit2", {Form::fixed, 7}},
        {".Yemit2", {Form::fixed, 7}},
        {".Zemit2", {Form::fixed, 7}},
        {".Xemit", {Form::fixed, 7}},
        {".Yemit", {Form::fixed, 7}},
        {".Zemit", {Form::fixed, 7}},
        {".TRemit", {Form::fixed, 5}},
        {".Cathode", {Form::fixed, 7, true}},
        {".LandF", {Form::fixed, 6}},
        {".Sub_emit", {Form::fixed, 8}},
        {".Cr_emit", {Form::fixed, 8}},
        {".PScan", {Form::fixed, 4}},
        {".C99emit", {Form::fixed, 13}},
        {".Cemit", {Form::fixed, 13}},
        {".ref", {Form::free, 0, false, std::vector<char>(7, 'r')}},
        {".track", {Form::free, 0, false, {'i', 'i', 'r', 'r', 'r', 'r', 'r', 'r'}}},
        {".tcheck", {Form::free, 0, false, {'r', 'r', 'r', 'r', 'r', 'r', 'r', 'i'}}},
        {".Scan", {Form::free, 0, false, std::vector<char>(12, 'r')}},
        {".Error", {Form::free, 0, false, std::vector<char>(12, 'r')}},
        {".Sigma", {Form::free, 0, false, std::vector<char>(23, 'd')}},
        {".lab-E", {Form::a80}},
        {".lab", {Form::a80}},
    };
    return k;
}

// The kind of `<project><suffix>.<nnn>`; the project may hold dots itself.
const std::pair<std::string, Kind>* kind_of(const std::string& name) {
    if (name.size() < 4 || name[name.size() - 4] != '.') return nullptr;
    std::string stem = name.substr(0, name.size() - 4);
    for (const auto& k : kinds())
        if (stem.size() >= k.first.size() && stem.compare(stem.size() - k.first.size(), k.first.size(), k.first) == 0)
            return &k;
    return nullptr;
}

std::vector<std::string> lines_of(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::vector<std::string> out;
    std::string l;
    while (std::getline(in, l)) out.push_back(l);
    return out;
}

long wc_l(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return static_cast<long>(std::count(all.begin(), all.end(), '\n'));
}

std::vector<std::string> blank_split(const std::string& line) {
    std::istringstream ss(line);
    std::vector<std::string> t;
    std::string w;
    while (ss >> w) t.push_back(w);
    return t;
}

template <class T>
T library_value(const std::string& tok) {
    T v{};
    const char* b = tok.data() + (tok[0] == '+');
    auto r = std::from_chars(b, tok.data() + tok.size(), v);
    EXPECT_TRUE(r.ec == std::errc{} && r.ptr == tok.data() + tok.size()) << tok;
    return v;
}

// Reads the whole file with the reader of its kind; every record is checked
// against the blank-separated items of its line. Returns the record count.
long read_and_check(const fs::path& p, const Kind& kind) {
    const std::vector<std::string> lines = lines_of(p);
    TableFile f;
    EXPECT_TRUE(f.open(p.string()));
    long n = 0;
    switch (kind.form) {
    case Form::fixed: {
        std::vector<float> r(static_cast<std::size_t>(kind.reals));
        bool l = false;
        while (read_fixed(f, r, kind.logical ? &l : nullptr)) {
            ++n;
            auto tok = blank_split(lines.at(static_cast<std::size_t>(f.line_number() - 1)));
            EXPECT_GE(tok.size(), r.size() + kind.logical) << "line " << f.line_number();
            for (std::size_t k = 0; k < r.size() && k < tok.size(); ++k)
                EXPECT_EQ(std::bit_cast<std::uint32_t>(r[k]), std::bit_cast<std::uint32_t>(library_value<float>(tok[k])))
                    << "line " << f.line_number() << " field " << k + 1 << ": " << tok[k];
            if (kind.logical && tok.size() > r.size()) {
                EXPECT_EQ(l, tok[r.size()] == "T") << "line " << f.line_number();
            }
        }
        break;
    }
    case Form::free: {
        std::vector<float> r(kind.items.size());
        std::vector<double> d(kind.items.size());
        std::vector<int> i(kind.items.size());
        std::vector<FreeField> fields;
        for (std::size_t k = 0; k < kind.items.size(); ++k)
            fields.push_back(kind.items[k] == 'i'   ? FreeField(&i[k])
                             : kind.items[k] == 'd' ? FreeField(&d[k])
                                                    : FreeField(&r[k]));
        while (read_free(f, fields)) {
            ++n;
            auto tok = blank_split(lines.at(static_cast<std::size_t>(f.line_number() - 1)));
            EXPECT_GE(tok.size(), fields.size()) << "one record a line, line " << f.line_number();
            for (std::size_t k = 0; k < fields.size() && k < tok.size(); ++k) {
                if (kind.items[k] == 'i') {
                    EXPECT_EQ(i[k], library_value<int>(tok[k])) << "line " << f.line_number();
                } else if (kind.items[k] == 'd') {
                    EXPECT_EQ(d[k], library_value<double>(tok[k])) << "line " << f.line_number();
                } else {
                    EXPECT_EQ(std::bit_cast<std::uint32_t>(r[k]),
                              std::bit_cast<std::uint32_t>(library_value<float>(tok[k])))
                        << "line " << f.line_number() << " item " << k + 1 << ": " << tok[k];
                }
            }
        }
        break;
    }
    case Form::a80: {
        std::string text;
        while (read_a80(f, text)) {
            ++n;
            std::string expect = lines.at(static_cast<std::size_t>(n - 1)).substr(0, 80);
            expect.resize(80, ' ');
            EXPECT_EQ(text, expect);
        }
        break;
    }
    }
    return n;
}

TEST(RealData, EveryKindReadsWithItsReaderAndGivesTheLineCount) {
    const fs::path root = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!fs::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;

    std::set<std::string> seen;
    std::map<std::string, long> counts;
    for (const auto& dir : fs::directory_iterator(root)) {
        if (!dir.is_directory()) continue;
        for (const auto& entry : fs::directory_iterator(dir.path())) {
            const std::string name = entry.path().filename().string();
            const auto* kind = kind_of(name);
            ASSERT_NE(kind, nullptr) << "no reader for " << entry.path();
            SCOPED_TRACE(entry.path().string());
            long n = 0;
            try {
                n = read_and_check(entry.path(), kind->second);
            } catch (const RecordError& e) {
                ADD_FAILURE() << e.message();
            }
            EXPECT_EQ(n, wc_l(entry.path()));
            seen.insert(kind->first);
            counts[dir.path().filename().string() + "/" + kind->first] = n;
        }
    }
    EXPECT_EQ(seen, (std::set<std::string>{".Xemit", ".Yemit", ".Zemit", ".Xemit2", ".Yemit2", ".Zemit2", ".TRemit",
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

// The example project: all twenty-two kinds in three runs, each readable
// with its record form, and the aperture outline beside them.
TEST(ExampleRun, EveryKindIsPresentAndReadsWithItsReader) {
    const fs::path dir = fs::path(VIEWER_SOURCE_DIR) / "examples";
    ASSERT_TRUE(fs::is_directory(dir)) << dir;
    std::set<std::string> seen;
    std::map<std::string, long> counts;
    for (const auto& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        if (name == "Geometry.dat") {
            TableFile f;
            ASSERT_TRUE(f.open(entry.path().string()));
            float z = 0, r = 0, zmax = 0;
            long n = 0;
            while (read_free(f, {&z, &r})) {
                ++n;
                EXPECT_GE(z, zmax) << "the outline runs along z, line " << f.line_number();
                EXPECT_GE(r, 0.0f);
                zmax = z;
            }
            EXPECT_EQ(n, wc_l(entry.path()));
            EXPECT_GT(n, 10);
            continue;
        }
        ASSERT_EQ(name.rfind("rfgun.", 0), 0u) << name;
        const auto* kind = kind_of(name);
        ASSERT_NE(kind, nullptr) << "no reader for " << entry.path();
        SCOPED_TRACE(name);
        long n = 0;
        try {
            n = read_and_check(entry.path(), kind->second);
        } catch (const RecordError& e) {
            ADD_FAILURE() << e.message();
        }
        EXPECT_EQ(n, wc_l(entry.path()));
        seen.insert(kind->first);
        counts[name] = n;
    }
    EXPECT_EQ(seen.size(), 22u);
    EXPECT_EQ(counts["rfgun.PScan.001"], 3 * 360);
    EXPECT_EQ(counts["rfgun.Error.001"], 40);
    EXPECT_EQ(counts["rfgun.lab.001"], 33);
    EXPECT_EQ(counts["rfgun.lab-E.001"], 33);
    EXPECT_GE(counts["rfgun.Xemit.001"], 200);
}

}  // namespace
