// Tables of real tracker runs, and the example project of the repository,
// through the catalogue: each file is read as a record of its kind and
// gives as many records as it has lines, and every field read by columns or
// as a free item equals the number written there.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "core/run_catalogue.hpp"
#include "tests/support/harness.hpp"

namespace {

using namespace viewer;
using viewer::testing::library_value;
using viewer::testing::same_bits;
namespace fs = std::filesystem;

// Reads the whole file as records of `kind`, each checked against the
// blank-separated items of its line: one record a line.
void read_and_check(const fs::path& p, const RunKind& kind) {
    std::vector<std::string> lines;
    std::ifstream in(p, std::ios::binary);
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    TableFile f;
    EXPECT_TRUE(f.open(p.string()));
    RunRecord r(kind);
    const std::size_t m = kind.fields.size();
    long n = 0;
    try {
        for (; r.read(f); ++n) {
            if (kind.form == RecordForm::a80) continue;  // text: the count is what matters
            std::istringstream ss(lines.at(static_cast<std::size_t>(f.line_number() - 1)));
            std::vector<std::string> tok{std::istream_iterator<std::string>(ss), {}};
            EXPECT_GE(tok.size(), m) << "one record a line, line " << f.line_number();
            tok.resize(std::max(tok.size(), m + 1), "0");
            for (int k = 0; k < static_cast<int>(m); ++k) {
                const std::string& t = tok[static_cast<std::size_t>(k)];
                const char type = kind.fields[static_cast<std::size_t>(k)].type;
                EXPECT_TRUE(type == 'i'   ? r.integer(k) == library_value<int>(t)
                            : type == 'd' ? r.real64(k) == library_value<double>(t)
                                          : same_bits(r.real(k), library_value<float>(t)))
                    << "line " << f.line_number() << ": " << t;
            }
            EXPECT_TRUE(!kind.logical || r.logical() == (tok[m] == "T")) << "line " << f.line_number();
        }
    } catch (const RecordError& e) {
        ADD_FAILURE() << e.message();
    }
    EXPECT_EQ(n, static_cast<long>(lines.size()));
}

// Reads every run table of `dir` as its kind; the kinds met go to `seen`.
void read_all(const fs::path& dir, std::set<Kind>& seen) {
    for (const auto& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        if (name == "Geometry.dat" || name == "README.md") continue;
        SCOPED_TRACE(entry.path().string());
        const bool run_name = name.size() > 4 && name[name.size() - 4] == '.';
        const RunKind* kind = run_name ? kind_of_stem(name.substr(0, name.size() - 4)) : nullptr;
        ASSERT_NE(kind, nullptr) << "no kind in the catalogue";
        read_and_check(entry.path(), *kind);
        seen.insert(kind->kind);
    }
}

TEST(RealData, EveryTableReadsAsItsKind) {
    const fs::path root = fs::path(VIEWER_SOURCE_DIR) / ".." / "shared" / "realdata";
    if (!fs::is_directory(root)) GTEST_SKIP() << "no real run tables at " << root;
    std::set<Kind> seen;
    for (const auto& dir : fs::directory_iterator(root))
        if (dir.is_directory()) read_all(dir.path(), seen);
    EXPECT_GE(seen.size(), 13u);  // the sets hold more than half of the kinds
}

// The example project: every kind of the catalogue, each readable as its kind.
TEST(ExampleRun, EveryKindIsPresentAndReadsAsItsKind) {
    std::set<Kind> seen;
    read_all(fs::path(VIEWER_SOURCE_DIR) / "examples", seen);
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kKindCount));
}

// Suffixes that end in another kind's suffix are told apart.
TEST(RunCatalogue, RowsInKindOrderAndLongestSuffixWins) {
    for (const RunKind& k : run_catalogue()) EXPECT_EQ(&run_kind(k.kind), &k);
    EXPECT_EQ(kind_of_stem("a.b=1.Xemit2")->kind, Kind::Xemit2);
    EXPECT_EQ(kind_of_stem("rfgun.Xemit")->kind, Kind::Xemit);
    EXPECT_EQ(kind_of_stem("rfgun.lab-E")->kind, Kind::lab_E);
    EXPECT_EQ(kind_of_stem("rfgun.Larmor"), nullptr);
    EXPECT_EQ(run_file_name(run_kind(Kind::Cathode), "rfgun", ".007  "), "rfgun.Cathode.007");
}

}  // namespace
