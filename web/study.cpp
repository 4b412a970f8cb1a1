// The study's listing and signature.
#include "web/study.hpp"

#include <nlohmann/json.hpp>
#include <sstream>

namespace viewer::web {

std::string study_listing(const Study& s) {
    using json = nlohmann::ordered_json;
    const std::vector<std::string> names = shortest_names(s.runs);
    json figures = json::array();
    for (const FigureSpec& f : study_figures()) figures.push_back({{"name", f.name}, {"unit", f.unit}});
    json runs = json::array();
    for (std::size_t i = 0; i < s.runs.size(); ++i) {
        const StudyRun& r = s.runs[i];
        json values = json::object();
        for (std::size_t k = 0; k < r.values.size(); ++k) {
            const FigureSpec& f = study_figures()[k];
            values[f.unit.empty() ? f.name : f.name + " [" + f.unit + "]"] =
                r.values[k] ? json(*r.values[k]) : json(nullptr);
        }
        runs.push_back({{"id", i},
                        {"folder", r.folder},
                        {"project", r.project},
                        {"run", r.run},
                        {"state", state_name(r.state)},
                        {"records", r.records},
                        {"figures", values},
                        {"name", names[i]}});
    }
    return json({{"figures", figures}, {"runs", runs}}).dump();
}

std::string study_signature(const std::vector<StudyRun>& runs) {
    std::ostringstream k;
    k.precision(17);
    for (const StudyRun& r : runs) {
        k << r.name() << '|' << state_name(r.state) << '|' << r.records;
        for (const auto& v : r.values) k << '|' << (v ? *v : 0.0) << (v ? "" : "-");
        k << '\n';
    }
    return k.str();
}

std::string item_of(const StudyRun& r) {
    return r.folder == "." ? r.project : r.folder + "/" + r.project;
}

}  // namespace viewer::web
