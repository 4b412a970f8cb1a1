// The numbers behind the plots: the CSV of each plot read back equals, bit
// for bit, what the graphics were given to draw (curves, marks, bars and
// fits; zoomed; several runs), and the JSON report holds the console's
// numbers.
#include "app/data_files.hpp"

#include <gtest/gtest.h>

#include <charconv>
#include <filesystem>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "app/export.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;
namespace fs = std::filesystem;

namespace {

struct Drawn {
    bool bars = false;
    Layer layer = Layer::data;
    std::vector<float> x, y, x_to;
};

// What the file device was given to draw, curve by curve, as the plot
// marked it; bars drawn twice over (filled, outlined) count once.
std::vector<Drawn> drawn(const RecordingGraphics& g, int device) {
    std::vector<Drawn> out;
    bool bars = false;
    for (const GraphicsCall& c : g.calls) {
        const bool rect = c.name == "pgrect" && c.layer == Layer::data;
        if (c.device != device) continue;
        if (!rect) bars = false;
        if ((c.name == "pgline" || c.name == "pgpt") && (c.layer == Layer::data || c.layer == Layer::fit))
            out.push_back({false, c.layer, c.xs, c.ys, {}});
        if (!rect) continue;
        if (!bars) out.push_back({true, Layer::data, {}, {}, {}});
        bars = true;
        out.back().x.push_back(float(c.args[0]));
        out.back().x_to.push_back(float(c.args[1]));
        out.back().y.push_back(float(c.args[3] == 0 ? c.args[2] : c.args[3]));
    }
    for (std::size_t i = 1; i < out.size(); ++i)
        if (out[i].bars && out[i - 1].bars && out[i].x == out[i - 1].x && out[i].y == out[i - 1].y)
            out.erase(out.begin() + static_cast<std::ptrdiff_t>(i--));
    return out;
}

// The cells of a CSV line; a quoted cell may hold commas.
std::vector<std::string> cells(const std::string& line) {
    std::vector<std::string> out(1);
    bool quoted = false;
    for (char c : line) {
        if (c == '"')
            quoted = !quoted;
        else if (c == ',' && !quoted)
            out.emplace_back();
        else
            out.back() += c;
    }
    return out;
}

::testing::AssertionResult same(const std::vector<float>& want, const std::vector<std::string>& column) {
    std::size_t n = 0;
    for (const std::string& cell : column) {
        if (cell.empty()) break;
        float v = 0;
        std::from_chars(cell.data(), cell.data() + cell.size(), v);
        if (n >= want.size() || !same_bits(v, want[n]))
            return ::testing::AssertionFailure() << "value " << n << " reads back as " << cell;
        ++n;
    }
    if (n != want.size()) return ::testing::AssertionFailure() << n << " values, not " << want.size();
    return ::testing::AssertionSuccess();
}

// Checks the rows of one run against what it drew: `data` curves, then fits.
void check_table(const std::vector<std::string>& header, const std::vector<std::vector<std::string>>& rows,
                 const std::vector<Drawn>& data, const std::vector<Drawn>& fits) {
    auto column = [&](std::size_t c) {
        std::vector<std::string> col;
        for (const auto& r : rows) col.push_back(c < r.size() ? r[c] : "");
        return col;
    };
    if (header[0] == "curve") {  // a row a point: curve, then its two cells
        std::vector<Drawn> all = data;
        all.insert(all.end(), fits.begin(), fits.end());
        std::vector<std::vector<std::string>> xs(all.size()), ys(all.size());
        for (const auto& r : rows) {
            std::vector<std::string> filled;
            for (std::size_t c = 1; c < r.size(); ++c)
                if (!r[c].empty()) filled.push_back(r[c]);
            const auto k = static_cast<std::size_t>(std::stoi(r[0]) - 1);
            ASSERT_TRUE(k < all.size() && filled.size() == 2);
            xs[k].push_back(filled[0]);
            ys[k].push_back(filled[1]);
        }
        for (std::size_t k = 0; k < all.size(); ++k)
            EXPECT_TRUE(same(all[k].x, xs[k]) && same(all[k].y, ys[k]));
        return;
    }
    std::size_t c = 0;
    if (data.size() == 1 && data[0].bars) {
        EXPECT_TRUE(same(data[0].x, column(0)) && same(data[0].x_to, column(1)) &&
                    same(data[0].y, column(2)));
        c = 3;
    } else {
        EXPECT_TRUE(data.empty() || same(data[0].x, column(0)));
        for (const Drawn& d : data) EXPECT_TRUE(same(d.y, column(++c)));
        ++c;
    }
    const bool shared =
        std::all_of(fits.begin(), fits.end(), [&](const Drawn& f) { return f.x == fits[0].x; });
    for (std::size_t j = 0; j < fits.size(); ++j) {
        if (!shared || j == 0) {
            EXPECT_TRUE(same(fits[j].x, column(c++)));
        }
        EXPECT_TRUE(same(fits[j].y, column(c++)));
    }
    EXPECT_EQ(c, header.size());
}

struct Pass {
    Harness h;
    std::ostringstream err;
    Pass() {
        for (const auto& e : fs::directory_iterator(fs::path(VIEWER_SOURCE_DIR) / "examples"))
            fs::copy_file(e.path(), h.dir.file(e.path().filename().string()));
    }
    int run(const std::string& line) { return h.export_line(line, err); }
};

}  // namespace

TEST(DataFiles, EachPlotReadsBackAsDrawn) {
    // clang-format off
    const char* cases[] = {
        "rfgun,1 --plot 1:2 --fit 3",  "rfgun,1 --plot 1:12 --zoom 1:2",  "rfgun,2 --plot 1:15",
        "rfgun,1 --plot 2:1 --fit 10", "rfgun,1 --plot 2:5 --zoom 0:3.3", "rfgun,1 --plot 2:10",
        "rfgun,1 --plot 2:12 --fit 4", "rfgun,1 --plot 3:1",              "rfgun,1 --plot 3:31 --fit 10",
        "rfgun,1 --plot 4:4",          "rfgun,2 --plot 4:9",              "rfgun,1 --plot 4:17 --fit 3",
        "rfgun,1 --plot 5:3 --fit 3",  "rfgun,1 --plot 1:2 --zoom 7:8",
        "rfgun --plot 1:2 --runs 1-3 --fit 3 --zoom 1:4", "rfgun --plot 2:5 --runs 3,1",
        "rfgun --plot 4:1 --runs all",
    };
    // clang-format on
    for (const char* args : cases) {
        SCOPED_TRACE(args);
        Pass p;
        ASSERT_EQ(p.run(std::string(args) + " --csv data.csv --out plot.ps"), 0) << p.err.str();
        std::ifstream in(p.h.dir.file("data.csv"));
        std::string line;
        std::getline(in, line);
        std::vector<std::string> header = cells(line);
        std::vector<std::vector<std::string>> rows;
        while (std::getline(in, line)) rows.push_back(cells(line));
        const std::vector<Drawn> all = drawn(p.h.g, p.h.session().window.FILE_DEVICE);
        std::vector<Drawn> data, fits;
        for (const Drawn& d : all) (d.layer == Layer::fit ? fits : data).push_back(d);
        // With runs: the run first, the curves of each run in turn.
        std::vector<std::string> runs;
        std::vector<std::vector<std::vector<std::string>>> by_run(1);
        if (header[0] == "run") {
            header.erase(header.begin());
            by_run.clear();
            for (auto& r : rows) {
                if (runs.empty() || runs.back() != r[0]) runs.push_back(r[0]), by_run.emplace_back();
                by_run.back().push_back({r.begin() + 1, r.end()});
            }
        } else {
            by_run[0] = rows;
        }
        const std::size_t n = by_run.size(), k = data.size() / n, m = fits.size() / n;
        ASSERT_EQ(std::pair(k * n, m * n), std::pair(data.size(), fits.size()));
        for (std::size_t r = 0; r < n; ++r)
            check_table(header, by_run[r], {data.begin() + long(r * k), data.begin() + long((r + 1) * k)},
                        {fits.begin() + long(r * m), fits.begin() + long((r + 1) * m)});
        EXPECT_EQ(rows.empty(), std::string(args).find("7:8") != std::string::npos);
    }
}

TEST(DataFiles, TheReportHoldsTheConsolesNumbers) {
    Pass p;
    ASSERT_EQ(p.run("rfgun,1 --plot 1:2 --plot 2:12 --plot 1:8 --fit 10 --stats s.json --runs 1,2"), 0);
    std::ifstream in(p.h.dir.file("s.json"));
    const auto doc = nlohmann::json::parse(in);
    const std::string console = p.h.console();
    EXPECT_EQ(doc["project"], "rfgun");
    ASSERT_EQ(doc["plots"].size(), 6u);  // three rows, two runs each
    EXPECT_EQ(doc["plots"][1]["row"], "1:2");
    EXPECT_EQ(doc["plots"][1]["run"], "002");
    EXPECT_EQ(doc["plots"][1]["curves"][1]["name"], "sigma_y");
    std::size_t at = 0, blocks = 0;
    for (const auto& plot : doc["plots"]) {
        for (const auto& c : plot["curves"]) {
            const auto f = [&](const char* key) { return fmt_d(c[key].get<float>()); };
            const std::string block =
                "     beginning:                 " + f("beginning") +
                "\n     end:                       " + f("end") +
                "\n     minimum:                   " + f("minimum") + "  at z = " + f("minimum_at") +
                "\n     maximum:                   " + f("maximum") + "  at z = " + f("maximum_at") +
                "\n     average:                   " + f("average") + "\n";
            at = console.find(block, at);
            ASSERT_NE(at, std::string::npos) << block;
            ++blocks;
        }
        for (const auto& fit : plot["fits"]) {
            // a fit that failed before its formula is named as the menu names it
            const std::string model = fit["model"].get<std::string>();
            EXPECT_TRUE(fit.contains("message") ? !model.empty() : bool(has(console, "     " + model)))
                << model;
            for (const auto& [name, v] : fit["coefficients"].items())
                EXPECT_TRUE(has(console, fmt_d(v.get<double>()))) << name;
        }
    }
    EXPECT_EQ(blocks, 6u);  // two curves and one a run; the Twiss plot prints none when it fits

    // A sheet: a file a plot drawn; its blank row draws none.
    Pass sheet;
    ASSERT_EQ(sheet.run("rfgun,1 --overview 2 --csv o.csv --stats o.json"), 0) << sheet.err.str();
    EXPECT_TRUE(sheet.h.dir.exists("o_8.csv") && !sheet.h.dir.exists("o_9.csv"));
    std::ifstream o(sheet.h.dir.file("o.json"));
    EXPECT_EQ(nlohmann::json::parse(o)["plots"].size(), 8u);
}
