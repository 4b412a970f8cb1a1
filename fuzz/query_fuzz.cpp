// The parameters of a plot, particle or study request of the browser view, over any text:
// a path up to the first '?', then key=value pairs apart by '&'.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "core/study.hpp"
#include "web/query.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace viewer::web;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const auto mark = text.find('?');
    const std::string path = text.substr(0, mark);
    Params params;
    for (std::size_t at = mark == std::string::npos ? text.size() : mark + 1; at < text.size();) {
        const auto end = std::min(text.find('&', at), text.size());
        const std::string pair = text.substr(at, end - at);
        const auto eq = pair.find('=');
        params.emplace_back(pair.substr(0, eq), eq == std::string::npos ? "" : pair.substr(eq + 1));
        at = end + 1;
    }
    try {
        const PlotQuery q = parse_plot_query(path, params);
        const bool sane = q.page >= 1 && q.page <= 5 && (q.overview || (q.row >= 1 && q.row <= 41)) &&
                          q.run >= -1 && q.run <= 999 && q.fit >= 0 && q.fit <= 11 && q.bins >= 0 &&
                          q.bins <= 3200 && (q.width == 0 || (q.width >= 200 && q.width <= 4000)) &&
                          q.study >= -1 &&
                          std::all_of(q.studies.begin(), q.studies.end(), [](int id) { return id >= 0; });
        if (!sane || q.key().empty()) std::abort();
    } catch (const QueryError& e) {
        if (e.status != 400 && e.status != 404) std::abort();
    }
    try {
        const ParticleQuery q = parse_particle_query(path, params);
        const int views = !q.plane.empty() + (q.slices > 0) + q.sheet;
        if (q.id < 0 || views != 1 || q.key().empty()) std::abort();
    } catch (const QueryError& e) {
        if (e.status != 400 && e.status != 404) std::abort();
    }
    try {
        // Only figures the study has: a name never reaches the export unchecked.
        const StudyQuery q = parse_study_query(path, params);
        for (const std::string& f : {q.x, q.y})
            if (viewer::figure_index(f) < 0) std::abort();
        if (!q.colour.empty() && viewer::figure_index(q.colour) < 0) std::abort();
        for (const std::string& f : q.front)
            if (viewer::figure_index(f.starts_with('-') ? f.substr(1) : f) < 0) std::abort();
    } catch (const QueryError& e) {
        if (e.status != 400 && e.status != 404) std::abort();
    }
    return 0;
}
