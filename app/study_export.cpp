// A study in the headless export.
#include "app/study_export.hpp"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <numeric>
#include <ostream>

#include "app/export_files.hpp"

namespace viewer {

namespace {

std::string number(double v) {
    char b[32];
    std::snprintf(b, sizeof b, "%.9g", v);
    return b;
}

// A text field of CSV, quoted where it holds a comma or a quote.
std::string field(const std::string& s) {
    if (s.find_first_of(",\"\n") == std::string::npos) return s;
    std::string q = "\"";
    for (char c : s) q += c == '"' ? std::string("\"\"") : std::string(1, c);
    return q + "\"";
}

std::string with_unit(const FigureSpec& f) {
    return f.unit.empty() ? f.name : f.name + " [" + f.unit + "]";
}

std::optional<double> value_of(const StudyRun& run, const std::string& figure) {
    const int k = figure_index(figure.starts_with("-") ? figure.substr(1) : figure);
    return run.values[static_cast<std::size_t>(k)];
}

// The front of the scatter: the one asked for, else that of its two figures.
std::vector<bool> scatter_front(const StudyTable& t, const ExportRequest& r) {
    if (!t.front.empty()) return t.front;
    return pareto_front(t.study, {r.scatter_x, r.scatter_y});
}

}  // namespace

StudyTable make_study(const ExportRequest& r, StudyCache& cache, std::ostream& err) {
    StudyTable t;
    try {
        t.study = run_study(r.study_dirs, cache, err);
    } catch (const std::runtime_error& e) {
        throw ExportFailure(e.what());
    }
    if (t.study.runs.empty()) {
        std::string dirs;
        for (const std::string& d : r.study_dirs) dirs += (dirs.empty() ? "" : ", ") + d;
        throw ExportFailure("no run with .Xemit, .Yemit or .Zemit tables under " + dirs);
    }
    if (!r.sort.empty()) {
        // runs lacking the figure go last, in their order
        const bool down = r.sort.starts_with("-");
        std::stable_sort(t.study.runs.begin(), t.study.runs.end(), [&](const StudyRun& a, const StudyRun& b) {
            const auto x = value_of(a, r.sort), y = value_of(b, r.sort);
            if (!x || !y) return x.has_value() && !y.has_value();
            return down ? *x > *y : *x < *y;
        });
    }
    t.shown = r.figures.empty() ? default_figures() : r.figures;
    if (!r.front.empty()) t.front = pareto_front(t.study, r.front);
    t.names = shortest_names(t.study.runs);
    return t;
}

void print_study(std::ostream& out, const StudyTable& t, const ExportRequest& r) {
    std::size_t wf = 6, wp = 7;
    for (const StudyRun& run : t.study.runs) {
        wf = std::max(wf, run.folder.size());
        wp = std::max(wp, run.project.size());
    }
    auto padded = [](const std::string& s, std::size_t w) {
        return s + std::string(w > s.size() ? w - s.size() : 0, ' ');
    };
    out << padded("folder", wf) << "  " << padded("project", wp) << "  run  state   ";
    for (const std::string& f : t.shown)
        out << " " << std::string(f.size() < 12 ? 12 - f.size() : 0, ' ') << f;
    if (!t.front.empty()) out << "  front";
    out << "\n";
    for (std::size_t i = 0; i < t.study.runs.size(); ++i) {
        const StudyRun& run = t.study.runs[i];
        char digits[8];
        std::snprintf(digits, sizeof digits, "%03d", run.run);
        out << padded(run.folder, wf) << "  " << padded(run.project, wp) << "  " << digits << "  "
            << padded(state_name(run.state), 8);
        for (const std::string& f : t.shown) {
            const auto v = value_of(run, f);
            char b[40];
            if (v)
                std::snprintf(b, sizeof b, " %*.5g", static_cast<int>(std::max<std::size_t>(12, f.size())),
                              *v);
            else
                std::snprintf(b, sizeof b, " %*s", static_cast<int>(std::max<std::size_t>(12, f.size())),
                              "-");
            out << b;
        }
        if (!t.front.empty()) out << "      " << (t.front[i] ? 1 : 0);
        out << "\n";
    }
    out << t.study.runs.size() << " runs";
    if (!t.front.empty()) {
        std::string figures;
        for (const std::string& f : r.front) figures += (figures.empty() ? "" : ", ") + f;
        out << ", " << std::count(t.front.begin(), t.front.end(), true) << " on the front of " << figures;
    }
    out << "\n";
}

void write_study_csv(std::ostream& out, const StudyTable& t) {
    out << "folder,project,run,state,records";
    for (const FigureSpec& f : study_figures()) out << "," << with_unit(f);
    if (!t.front.empty()) out << ",front";
    out << "\n";
    for (std::size_t i = 0; i < t.study.runs.size(); ++i) {
        const StudyRun& run = t.study.runs[i];
        out << field(run.folder) << "," << field(run.project) << "," << run.run << ","
            << state_name(run.state) << "," << run.records;
        for (const auto& v : run.values) out << "," << (v ? number(*v) : "");
        if (!t.front.empty()) out << "," << (t.front[i] ? 1 : 0);
        out << "\n";
    }
}

std::string study_json(const StudyTable& t, const ExportRequest& r) {
    using nlohmann::json;
    json runs = json::array();
    for (std::size_t i = 0; i < t.study.runs.size(); ++i) {
        const StudyRun& run = t.study.runs[i];
        json figures = json::object();
        for (std::size_t k = 0; k < run.values.size(); ++k)
            figures[with_unit(study_figures()[k])] = run.values[k] ? json(*run.values[k]) : json(nullptr);
        json j = {{"folder", run.folder},           {"project", run.project}, {"run", run.run},
                  {"state", state_name(run.state)}, {"records", run.records}, {"figures", figures}};
        if (!t.front.empty()) j["front"] = static_cast<bool>(t.front[i]);
        runs.push_back(j);
    }
    json out = {{"roots", r.study_dirs}, {"runs", runs}};
    if (!t.front.empty())
        out["front"] = {{"figures", r.front}, {"runs", std::count(t.front.begin(), t.front.end(), true)}};
    return out.dump(2) + "\n";
}

std::vector<ScatterPoint> scatter_points(const StudyTable& t, const ExportRequest& r) {
    const std::vector<bool> front = scatter_front(t, r);
    std::vector<ScatterPoint> points;
    for (std::size_t i = 0; i < t.study.runs.size(); ++i) {
        const auto x = value_of(t.study.runs[i], r.scatter_x), y = value_of(t.study.runs[i], r.scatter_y);
        if (!x || !y) continue;
        ScatterPoint p{static_cast<float>(*x), static_cast<float>(*y), std::nullopt, front[i], t.names[i]};
        if (!r.colour_by.empty())
            if (const auto c = value_of(t.study.runs[i], r.colour_by)) p.colour = static_cast<float>(*c);
        points.push_back(p);
    }
    return points;
}

ScatterLabels scatter_labels(const ExportRequest& r) {
    auto label = [](const std::string& f) {
        return f.empty() ? f : with_unit(study_figures()[static_cast<std::size_t>(figure_index(f))]);
    };
    return {label(r.scatter_x), label(r.scatter_y), r.scatter_y + " against " + r.scatter_x,
            label(r.colour_by)};
}

void write_scatter_csv(std::ostream& out, const StudyTable& t, const ExportRequest& r) {
    const ScatterLabels l = scatter_labels(r);
    out << "run," << l.x << "," << l.y << (r.colour_by.empty() ? "" : "," + l.colour) << ",front\n";
    for (const ScatterPoint& p : scatter_points(t, r)) {
        out << field(p.label) << "," << number(p.x) << "," << number(p.y);
        if (!r.colour_by.empty()) out << "," << (p.colour ? number(*p.colour) : "");
        out << "," << (p.front ? 1 : 0) << "\n";
    }
}

}  // namespace viewer
