// CSV tables of the points drawn and the JSON report of a pass.
#include "app/data_files.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <ostream>

namespace viewer {
namespace {

std::string with_suffix(std::string_view column, std::string_view suffix) {
    const NameAndUnit n = split_unit(column);
    return n.name + std::string(suffix) + (n.unit.empty() ? "" : " [" + n.unit + "]");
}

const PanelColumns& panel_columns(const std::vector<PanelColumns>& columns, int panel) {
    return columns.at(std::min(static_cast<std::size_t>(std::max(panel, 0)), columns.size() - 1));
}

// The name of each data curve: the row's own for its panel; where a panel
// draws more curves than it names (one a phase scan, a probe, ...), its
// first name, numbered in a wide table (a long one has its curve column).
std::vector<std::string> curve_names(const Figure& f, const std::vector<PanelColumns>& columns, bool wide) {
    std::vector<int> count(columns.size() + f.panels.size() + 1, 0), seen(count.size(), 0);
    for (const Series& s : f.series)
        if (s.layer == Layer::data) ++count[static_cast<std::size_t>(std::max(s.panel, 0))];
    std::vector<std::string> out;
    for (const Series& s : f.series) {
        if (s.layer != Layer::data) continue;
        const auto k = static_cast<std::size_t>(std::max(s.panel, 0));
        const PanelColumns& p = panel_columns(columns, s.panel);
        const auto j = static_cast<std::size_t>(seen[k]++);
        out.push_back(count[k] <= static_cast<int>(p.y.size()) ? p.y[j]
                      : wide ? with_suffix(p.y.front(), "_" + std::to_string(j + 1))
                             : p.y.front());
    }
    return out;
}

std::vector<const Series*> of_layer(const Figure& f, Layer l) {
    std::vector<const Series*> out;
    for (const Series& s : f.series)
        if (s.layer == l) out.push_back(&s);
    return out;
}

bool same_abscissae(const std::vector<const Series*>& series) {
    return std::all_of(series.begin(), series.end(),
                       [&](const Series* s) { return s->form != Series::bars && s->x == series.front()->x; });
}

std::size_t column_of(PointTable& t, const std::string& name) {
    const auto at = std::find(t.header.begin(), t.header.end(), name);
    if (at != t.header.end()) return static_cast<std::size_t>(at - t.header.begin());
    t.header.push_back(name);
    return t.header.size() - 1;
}

void put_number(std::string& out, float v) {
    char buf[32];
    const auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, 9);
    out.append(buf, r.ptr);
}

// Lines gathered and written in blocks: a table of 10^6 points is no
// million small writes.
struct Lines {
    std::ostream& out;
    std::string text;
    void end_line() {
        text += '\n';
        if (text.size() > (1u << 16)) flush();
    }
    void flush() {
        out.write(text.data(), static_cast<std::streamsize>(text.size()));
        text.clear();
    }
};

// A header cell; one holding a comma or a quote goes in quotes.
void put_text(std::ostream& out, const std::string& t) {
    if (t.find_first_of(",\"\n") == std::string::npos) {
        out << t;
        return;
    }
    out << '"';
    for (char c : t) out << (c == '"' ? "\"\"" : std::string(1, c));
    out << '"';
}

// A 32-bit value as the shortest decimal that reads back as it, so that
// 0.1f is 0.1 in the report and not 0.10000000149011612.
double shortest(float v) {
    if (!std::isfinite(v)) return v;
    char buf[32];
    const auto r = std::to_chars(buf, buf + sizeof buf, v);
    double d = 0;
    std::from_chars(buf, r.ptr, d);
    return d;
}

}  // namespace

bool shares_abscissae(std::span<const Figure> figures) {
    for (const Figure& f : figures) {
        const auto data = of_layer(f, Layer::data);
        const bool bars = data.size() == 1 && data.front()->form == Series::bars;
        if (!data.empty() && !bars && !same_abscissae(data)) return false;
    }
    return true;
}

PointTable point_table(const Figure& f, const std::vector<PanelColumns>& columns, bool wide) {
    PointTable t;
    t.wide = wide;
    const auto data = of_layer(f, Layer::data), fits = of_layer(f, Layer::fit);
    const std::vector<std::string> names = curve_names(f, columns, wide);
    if (!wide) {
        t.header = {"curve"};
        int curve = 0;
        auto add = [&](const Series& s, const std::string& x, const std::string& y) {
            ++curve;
            const auto xc = static_cast<std::uint32_t>(column_of(t, x)),
                       yc = static_cast<std::uint32_t>(column_of(t, y));
            for (std::size_t i = 0; i < s.x.size(); ++i) t.points.push_back({curve, xc, yc, s.x[i], s.y[i]});
        };
        for (std::size_t j = 0; j < data.size(); ++j)
            add(*data[j], panel_columns(columns, data[j]->panel).x, names[j]);
        for (std::size_t j = 0; j < fits.size(); ++j)
            add(*fits[j], with_suffix(panel_columns(columns, fits[j]->panel).x, "_fit"),
                with_suffix(j < names.size() ? names[j] : panel_columns(columns, 0).y.front(), "_fit"));
        return t;
    }
    const PanelColumns& first = panel_columns(columns, data.empty() ? 0 : data.front()->panel);
    if (data.size() == 1 && data.front()->form == Series::bars) {
        t.header = {with_suffix(first.x, "_from"), with_suffix(first.x, "_to"), names.front()};
        t.columns = {data.front()->x, data.front()->x_to, data.front()->y};
    } else {
        t.header = {first.x};
        t.columns = {data.empty() ? std::vector<float>{} : data.front()->x};
        if (data.empty()) t.header.insert(t.header.end(), first.y.begin(), first.y.end());
        t.columns.resize(t.header.size());
        for (std::size_t j = 0; j < data.size(); ++j) {
            t.header.push_back(names[j]);
            t.columns.push_back(data[j]->y);
        }
    }
    // A fit's curve: its abscissae once where the fits share them.
    const bool shared = !fits.empty() && same_abscissae(fits);
    for (std::size_t j = 0; j < fits.size(); ++j) {
        const std::string x = with_suffix(first.x, "_fit"), y = j < names.size() ? names[j] : first.y.front();
        if (!shared || j == 0) {
            t.header.push_back(shared ? x : with_suffix(x, "_" + std::to_string(j + 1)));
            t.columns.push_back(fits[j]->x);
        }
        t.header.push_back(with_suffix(y, "_fit"));
        t.columns.push_back(fits[j]->y);
    }
    return t;
}

void write_csv(std::ostream& out, std::span<const PointTable> tables, std::span<const int> runs) {
    if (tables.empty()) return;
    const bool with_run = !runs.empty();
    if (with_run) out << "run,";
    for (std::size_t c = 0; c < tables.front().header.size(); ++c) {
        if (c) out << ',';
        put_text(out, tables.front().header[c]);
    }
    out << '\n';
    Lines lines{out, {}};
    std::string& line = lines.text;
    for (std::size_t k = 0; k < tables.size(); ++k) {
        const PointTable& t = tables[k];
        const std::string run = with_run ? std::to_string(runs[k]) + "," : "";
        if (!t.wide) {
            for (const PointTable::Point& p : t.points) {
                line += run;
                line += std::to_string(p.curve);
                for (std::uint32_t c = 1; c < t.header.size(); ++c) {
                    line += ',';
                    if (c == p.x_column) put_number(line, p.x);
                    if (c == p.y_column && c != p.x_column) put_number(line, p.y);
                }
                lines.end_line();
            }
            continue;
        }
        std::size_t rows = 0;
        for (const auto& col : t.columns) rows = std::max(rows, col.size());
        for (std::size_t i = 0; i < rows; ++i) {
            line += run;
            for (std::size_t c = 0; c < t.columns.size(); ++c) {
                if (c) line += ',';
                if (i < t.columns[c].size()) put_number(line, t.columns[c][i]);
            }
            lines.end_line();
        }
    }
    lines.flush();
}

std::string numbered(const std::string& path, int n) {
    if (n <= 1) return path;
    const auto slash = path.rfind('/');
    const auto dot = path.rfind('.');
    const bool ext = dot != std::string::npos && dot > 0 && (slash == std::string::npos || dot > slash + 1);
    const std::string stem = ext ? path.substr(0, dot) : path, tail = ext ? path.substr(dot) : "";
    return stem + "_" + std::to_string(n) + tail;
}

std::string stats_json(const std::string& project, std::span<const PlotReport> plots) {
    using json = nlohmann::ordered_json;  // keys in the order written
    json doc = {{"project", project}, {"plots", json::array()}};
    for (const PlotReport& p : plots) {
        const PanelColumns& c = p.columns.empty() ? PanelColumns{"x", {"y"}} : p.columns.front();
        const NameAndUnit x = split_unit(c.x);
        json curves = json::array(), fits = json::array();
        for (const CurveReport& r : p.numbers.curves) {
            const auto k = static_cast<std::size_t>(r.curve - 1);
            const NameAndUnit y = split_unit(k < c.y.size() ? c.y[k] : c.y.front());
            curves.push_back({{"curve", r.curve},
                              {"name", y.name},
                              {"unit", y.unit},
                              {"abscissa", x.name},
                              {"abscissa_unit", x.unit},
                              {"points", r.points},
                              {"beginning", shortest(r.beginning)},
                              {"end", shortest(r.end)},
                              {"minimum", shortest(r.minimum)},
                              {"minimum_at", shortest(r.minimum_at)},
                              {"maximum", shortest(r.maximum)},
                              {"maximum_at", shortest(r.maximum_at)},
                              {"average", shortest(r.average)}});
        }
        for (const FitReport& f : p.numbers.fits) {
            json fit = {{"curve", f.curve}, {"pick", f.pick}, {"model", f.model}};
            json values = json::object();
            for (const auto& [name, v] : f.values) values[name] = v;
            fit["coefficients"] = values;
            fit["residual"] = f.residual ? json(*f.residual) : json(nullptr);
            if (f.neglected) fit["neglected"] = f.neglected;
            if (!f.message.empty()) fit["message"] = f.message;
            fits.push_back(fit);
        }
        char run[8];
        std::snprintf(run, sizeof run, "%03d", p.run);
        doc["plots"].push_back({{"row", p.row},
                                {"name", p.name},
                                {"title", p.title},
                                {"run", run},
                                {"curves", curves},
                                {"fits", fits}});
    }
    return doc.dump(2) + "\n";
}

}  // namespace viewer
