// What a browser or a script asks of a plot, read from the request's path
// and parameters: the row or the sheet, the form of the answer, the run or
// runs and the options of the export. One function reads it all, so that
// one fuzz target can try it.
//
//   /api/plot/1:2.png?run=2&zoom=0:1.5&fit=3&size=800x600
//   /api/overview/1.pdf?runs=1-3&mono=1
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/command_line.hpp"

namespace viewer::web {

// A request that cannot be served as written: 400 (malformed) or 404 (no
// such path, row or page), with one line that says why.
struct QueryError : std::runtime_error {
    QueryError(int s, const std::string& what) : std::runtime_error(what), status(s) {}
    int status;
};

enum class Answer { png, txt, csv, json, ps, pdf };

struct PlotQuery {
    bool overview = false;
    int page = 0;
    int row = 0;  // 0 for an overview
    Answer answer = Answer::png;
    int run = -1;  // -1: the run being served
    std::optional<RunList> runs;
    bool zoom = false;
    float zoom_low = 0, zoom_high = 0;
    int fit = 0;
    bool geometry = false;
    int bins = 0;
    bool mono = false;
    int width = 0, height = 0;  // 0: the device's own

    // The same plot in another form of answer, for the cache's key.
    std::string key() const;
};

using Params = std::vector<std::pair<std::string, std::string>>;

// Reads a plot path ("/api/plot/PAGE:ROW.EXT", "/api/overview/PAGE.EXT")
// and its parameters; throws QueryError.
PlotQuery parse_plot_query(std::string_view path, const Params& params);

// A run number parameter, 0 to 999; throws QueryError (400).
int parse_run(std::string_view text);

// The content type of an answer.
const char* content_type(Answer a);

}  // namespace viewer::web
