// One table kind of a run (FUZZ_KIND, its place in the catalogue): the input
// is written as that table beside small valid partner tables, the run is
// loaded, and every row that reads the kind is drawn through the recording
// graphics. A stop on a record that cannot be read is the viewer's answer,
// not a fault.
#include <cstdio>
#include <utility>
#include <vector>

#include "app/pages.hpp"
#include "app/run_load.hpp"
#include "core/run_catalogue.hpp"
#include "fuzz/fuzz_support.hpp"
#include "plot/page.hpp"

#ifndef FUZZ_KIND
#define FUZZ_KIND 0
#endif

namespace {

using viewer::Kind;

const viewer::RunKind& fuzzed() {
    return viewer::run_catalogue()[FUZZ_KIND];
}

// The tables every other kind is read beside.
constexpr Kind kBeam[] = {Kind::Xemit, Kind::Yemit, Kind::Zemit, Kind::Xemit2, Kind::Yemit2, Kind::Zemit2};

std::string repeat(const char* line, int n) {
    std::string t;
    for (int i = 0; i < n; ++i) t += line;
    return t;
}

// Short valid tables, so that rows reading the fuzzed kind with others have
// partners: the beam tables always, and the table a label file names.
std::vector<std::pair<Kind, std::string>> partners() {
    const std::string beam =
        repeat("  1.0000E-01  0.0000E+00  0.0000E+00  1.0000E+00  1.0000E+00  1.0000E+00  1.0000E+00\n", 4);
    std::vector<std::pair<Kind, std::string>> p;
    for (Kind k : kBeam) p.emplace_back(k, beam);
    const std::string twelve = repeat(
        "  2.0000E-01  2.8056E+00  1.0991E+00  1.1456E+00  5.3851E-01  5.4496E-01"
        "  6.1953E+00  2.9334E+01  1.0362E+00  7.6039E+00  9.9940E+01  5.4794E-01\n",
        3);
    if (fuzzed().kind == Kind::lab) p.emplace_back(Kind::Scan, twelve);
    if (fuzzed().kind == Kind::lab_E) p.emplace_back(Kind::Error, twelve);
    std::erase_if(p, [](const auto& e) { return e.first == fuzzed().kind; });
    return p;
}

struct Row {
    int page, code;
};

// The rows that read the kind: shown once it is there, not shown with the
// partners alone. A label file has no row of its own; it rides on its
// table's rows.
std::vector<Row> rows_of_kind(const std::vector<std::pair<Kind, std::string>>& tables) {
    viewer::Fexist without, with;
    for (const auto& [k, text] : tables) with.*viewer::run_kind(k).exists = true;
    for (Kind k : kBeam)
        if (k != fuzzed().kind) without.*viewer::run_kind(k).exists = true;
    with.*fuzzed().exists = true;
    std::vector<Row> rows;
    for (int page = 1; page <= 5; ++page)
        for (int code = 1; code <= 41; ++code) {
            const viewer::MenuRow* r = viewer::find_row(page, code);
            if (r && available(*r, with) && !available(*r, without)) rows.push_back({page, code});
        }
    return rows;
}

// Written once a process: the partners and the rows to draw.
const std::vector<Row>& prepare() {
    static const std::vector<Row> rows = [] {
        const auto tables = partners();
        for (const auto& [k, text] : tables)
            viewer::fuzz::write_file(viewer::run_file_name(viewer::run_kind(k), "f", ".001"),
                                     reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        auto r = rows_of_kind(tables);
        if (r.empty()) std::abort();  // a kind no row reads would fuzz nothing
        return r;
    }();
    return rows;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer;
    const std::vector<Row>& rows = prepare();
    fuzz::write_file(run_file_name(fuzzed(), "f", ".001"), data, size);

    fuzz::FuzzSession fs;
    Session& s = fs.s;
    s.chara.PROJECT = "f";
    s.chara.RUN = ".001";
    try {
        load_run(s);
        s.logo.TO_FILE = true;  // no fit menu, no question
        for (const Row& r : rows) {
            s.window.PAGE = r.page;
            page_fill(s);
            s.window.SELECTION = r.code;
            c_pgsubp(s, 1, 1);
            dispatch(s);
            fs.g.clear();  // what a row drew is not kept for the next
        }
    } catch (const RecordError&) {
    } catch (const ProgramStop&) {
    } catch (const EndOfInput&) {
    }
    close_all(s);
    return 0;
}
