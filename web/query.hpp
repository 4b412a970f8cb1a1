// What a browser or a script asks of a plot or a particle file, read from
// the request's path and parameters: the row, the sheet or the file, the
// form of the answer, the run or runs and the options of the export. One
// function reads each kind, so that a fuzz target can try it.
//
//   /api/plot/1:2.png?run=2&zoom=0:1.5&fit=3&size=800x600
//   /api/overview/1.pdf?runs=1-3&mono=1
//   /api/particles/2.png?plane=z:dE&lost=1
//   /api/particles/0.png?study=3    (a file of a run of the study)
//   /api/plot/1:2.png?studies=0,4   (runs of the study by their ids)
//   /api/study/scatter.png?x=NX_EMIT&y=E_MEAN&front=NX_EMIT,-E_MEAN
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

// The options a plot and a particle view share.
struct SharedOptions {
    Answer answer = Answer::png;
    int run = -1;  // -1: the run being served
    bool zoom = false;
    float zoom_low = 0, zoom_high = 0;
    int bins = 0;
    bool mono = false;
    int width = 0, height = 0;  // 0: the device's own
    // A run of the study by its id in /api/study (-1: none); the server
    // turns it into `arg`, "[DIR/]PROJECT,RUN" (empty: the served project).
    int study = -1;
    std::string arg;
};

struct PlotQuery : SharedOptions {
    bool overview = false;
    int page = 0;
    int row = 0;  // 0 for an overview
    std::optional<RunList> runs;
    int fit = 0;
    bool geometry = false;
    // Runs of the study by their ids laid over each other (`study` one
    // shown); the server turns them into `arg` and `runs` items.
    std::vector<int> studies;

    // The same plot in another form of answer, for the cache's key.
    std::string key() const;
};

// One view of a particle file: a plane, the slices or the sheet.
struct ParticleQuery : SharedOptions {
    int id = -1;        // the file's place in the run's list (/api/particles)
    std::string file;   // its name (in the served directory), found from the id by the server
    std::string plane;  // "x:xp"; empty for the slices and the sheet
    int slices = 0;
    bool slice_z = false;
    bool along = false;  // t or z asked for; else the export picks
    bool sheet = false;
    bool lost = false;
    bool window = false;
    float window_x1 = 0, window_x2 = 0, window_y1 = 0, window_y2 = 0;

    std::string key() const;  // with the file's name: an id may name another file later
};

// The scatter page of the study: two figures, the front, a colour.
struct StudyQuery {
    std::string x, y;
    std::vector<std::string> front;  // empty: that of x and y
    std::string colour;
    int width = 0, height = 0;

    std::string key() const;
};

using Params = std::vector<std::pair<std::string, std::string>>;

// Reads a plot path ("/api/plot/PAGE:ROW.EXT", "/api/overview/PAGE.EXT")
// and its parameters; throws QueryError.
PlotQuery parse_plot_query(std::string_view path, const Params& params);

// Reads "/api/particles/ID.EXT" and its parameters; throws QueryError.
// A request shows one view: the plane (x:xp unless named), the slices or
// the sheet.
ParticleQuery parse_particle_query(std::string_view path, const Params& params);

// Reads "/api/study/scatter.png" and its parameters; throws QueryError
// (400 for a figure the study does not have).
StudyQuery parse_study_query(std::string_view path, const Params& params);

// A run number parameter, 0 to 999; throws QueryError (400).
int parse_run(std::string_view text);
// A run of the study by its id in /api/study; throws QueryError (400).
int study_id(std::string_view t);

// The content type of an answer.
const char* content_type(Answer a);

}  // namespace viewer::web
