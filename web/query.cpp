// Reading a plot or particle request.
#include "web/query.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "app/pages.hpp"
#include "core/study.hpp"
#include "particles/views.hpp"

namespace viewer::web {
namespace {

bool whole(std::string_view t, int& v) {
    const auto r = std::from_chars(t.data(), t.data() + t.size(), v);
    return !t.empty() && r.ec == std::errc{} && r.ptr == t.data() + t.size();
}

bool real(std::string_view t, float& v) {
    const auto r = std::from_chars(t.data(), t.data() + t.size(), v);
    return !t.empty() && r.ec == std::errc{} && r.ptr == t.data() + t.size() && std::isfinite(v);
}

bool flag(std::string_view t, bool& v) {
    if (t != "0" && t != "1") return false;
    v = t == "1";
    return true;
}

// The shortest text that reads back as `v`: two zooms are one only when equal.
std::string exact(float v) {
    char buf[32];
    return std::string(buf, std::to_chars(buf, buf + sizeof buf, v).ptr);
}

[[noreturn]] void bad(const std::string& why) {
    throw QueryError(400, why);
}

struct Form {
    std::string_view ext;
    Answer answer;
};
constexpr Form kForms[] = {{"png", Answer::png},   {"txt", Answer::txt}, {"csv", Answer::csv},
                           {"json", Answer::json}, {"ps", Answer::ps},   {"pdf", Answer::pdf}};

// The form an extension names; null for none.
const Form* form_of(std::string_view ext) {
    for (const Form& f : kForms)
        if (f.ext == ext) return &f;
    return nullptr;
}

bool pair_of(std::string_view t, char mark, float& a, float& b) {
    const auto at = t.find(mark);
    return at != std::string_view::npos && real(t.substr(0, at), a) && real(t.substr(at + 1), b);
}

// Reads a parameter both kinds of request take; false when `key` is none of them.
bool shared_param(const std::string& key, const std::string& value, SharedOptions& o) {
    if (key == "run") {
        o.run = parse_run(value);
    } else if (key == "zoom") {
        if (!pair_of(value, ':', o.zoom_low, o.zoom_high))
            bad("zoom takes LOW:HIGH, such as 0.5:2, not \"" + value + "\"");
        o.zoom = true;
    } else if (key == "bins") {
        if (!whole(value, o.bins) || o.bins < 1 || o.bins > 3200)
            bad("bins takes a number from 1 to 3200, not \"" + value + "\"");
    } else if (key == "mono") {
        if (!flag(value, o.mono)) bad("mono takes 0 or 1, not \"" + value + "\"");
    } else if (key == "size") {
        const auto x = value.find('x');
        if (x == std::string::npos || !whole(std::string_view(value).substr(0, x), o.width) ||
            !whole(std::string_view(value).substr(x + 1), o.height) || o.width < 200 || o.width > 4000 ||
            o.height < 200 || o.height > 4000)
            bad("size takes WIDTHxHEIGHT, 200 to 4000 pixels a side, not \"" + value + "\"");
    } else if (key == "study") {
        o.study = study_id(value);
    } else {
        return key == "token" || key == "t";  // the door's, and a page's way to ask again
    }
    return true;
}

std::string shared_key(const SharedOptions& o) {
    std::string k = "|" + std::to_string(static_cast<int>(o.answer)) + "|r" + std::to_string(o.run);
    if (o.zoom) k += "|z" + exact(o.zoom_low) + ":" + exact(o.zoom_high);
    return k + "|b" + std::to_string(o.bins) + "|m" + std::to_string(o.mono) + "|s" +
           std::to_string(o.width) + "x" + std::to_string(o.height);
}

// A figure of the study, with a leading '-' where `signed_` allows it.
std::string figure(const std::string& key, const std::string& value, bool signed_ = false) {
    const std::string_view name =
        signed_ && value.starts_with('-') ? std::string_view(value).substr(1) : value;
    if (figure_index(name) < 0) {
        std::string names;
        for (const FigureSpec& f : study_figures()) names += (names.empty() ? "" : ", ") + f.name;
        bad(key + " takes a figure (" + names + "), not \"" + value + "\"");
    }
    return value;
}

}  // namespace

int parse_run(std::string_view text) {
    int n = -1;
    if (text.size() > 3 || text.find_first_not_of("0123456789") != std::string_view::npos || !whole(text, n))
        bad("run takes a number from 0 to 999, not \"" + std::string(text) + "\"");
    return n;
}

int study_id(std::string_view t) {
    int id = -1;
    if (t.size() > 6 || t.find_first_not_of("0123456789") != std::string_view::npos || !whole(t, id))
        bad("a run of the study is named by its id in /api/study, not \"" + std::string(t) + "\"");
    return id;
}

PlotQuery parse_plot_query(std::string_view path, const Params& params) {
    PlotQuery q;
    std::string_view rest;
    if (path.starts_with("/api/plot/")) {
        rest = path.substr(10);
    } else if (path.starts_with("/api/overview/")) {
        rest = path.substr(14);
        q.overview = true;
    } else {
        throw QueryError(404, "no such path: " + std::string(path));
    }
    const auto dot = rest.rfind('.');
    if (dot == std::string_view::npos) throw QueryError(404, "no such path: " + std::string(path));
    const std::string_view name = rest.substr(0, dot), ext = rest.substr(dot + 1);
    const Form* form = form_of(ext);
    if (!form || (q.overview && form->answer != Answer::png && form->answer != Answer::pdf))
        throw QueryError(404, "no such path: " + std::string(path) +
                                  (q.overview ? " (a sheet comes as .png or .pdf)"
                                              : " (a plot comes as .png, .txt, .csv, .json, .ps or .pdf)"));
    q.answer = form->answer;

    if (q.overview) {
        if (!whole(name, q.page) || q.page < 1 || q.page > 5)
            bad("a sheet is a page from 1 to 5, not \"" + std::string(name) + "\"");
    } else {
        const auto colon = name.find(':');
        if (colon == std::string_view::npos || !whole(name.substr(0, colon), q.page) ||
            !whole(name.substr(colon + 1), q.row) || q.page < 1 || q.page > 5 || q.row < 1 || q.row > 41)
            bad("a row is PAGE:ROW, page 1 to 5 and row 1 to 41, not \"" + std::string(name) + "\"");
        const MenuRow* row = find_row(q.page, q.row);
        if (!row || !row->plot || !row->shown)
            throw QueryError(404, "row " + std::string(name) + " is blank: it draws nothing");
    }

    for (const auto& [key, value] : params) {
        if (shared_param(key, value, q)) continue;
        if (key == "runs") {
            try {
                q.runs = parse_run_list(value);
            } catch (const UsageError& e) {
                bad(e.what());
            }
        } else if (key == "fit") {
            if (!whole(value, q.fit) || q.fit < 0 || q.fit > 11)
                bad("fit takes a fit of the fit menu, 1 to 11 (0: none), not \"" + value + "\"");
        } else if (key == "geometry") {
            if (!flag(value, q.geometry)) bad("geometry takes 0 or 1, not \"" + value + "\"");
        } else if (key == "studies") {
            q.studies.clear();
            for (std::string_view ids = value;;) {
                const auto comma = ids.find(',');
                const int id = study_id(ids.substr(0, comma));
                if (std::find(q.studies.begin(), q.studies.end(), id) != q.studies.end())
                    bad("studies names each run once, not \"" + value + "\"");
                q.studies.push_back(id);
                if (comma == std::string_view::npos) break;
                ids = ids.substr(comma + 1);
            }
        } else {
            bad("unknown parameter \"" + key + "\"");
        }
    }
    if ((q.study >= 0 && (q.run >= 0 || q.runs)) ||
        (!q.studies.empty() && (q.runs || q.run >= 0 || q.study >= 0)))
        bad("run, runs, study and studies each name the runs: ask with one");
    if ((q.runs || q.studies.size() > 1) && !q.overview && !along_z(q.page, q.row))
        bad("row " + std::to_string(q.page) + ":" + std::to_string(q.row) +
            " shows one run: runs are laid over each other on the rows drawn against z only");
    return q;
}

std::string PlotQuery::key() const {
    std::string k =
        (overview ? "o" : "p") + std::to_string(page) + ":" + std::to_string(row) + shared_key(*this) + "|";
    if (runs) {
        k += runs->all ? "all" : "";
        for (int n : runs->runs) k += std::to_string(n) + ",";
    }
    if (runs)
        for (const RunList::Item& i : runs->items) k += i.project + "," + std::to_string(i.run) + ";";
    return k + "|f" + std::to_string(fit) + "|g" + std::to_string(geometry) + "|a" + arg;
}

StudyQuery parse_study_query(std::string_view path, const Params& params) {
    if (path != "/api/study/scatter.png") throw QueryError(404, "no such path: " + std::string(path));
    StudyQuery q;
    SharedOptions size;
    for (const auto& [key, value] : params) {
        if (key == "x" || key == "y") {
            (key == "x" ? q.x : q.y) = figure(key, value);
        } else if (key == "colour") {
            q.colour = figure(key, value);
        } else if (key == "front") {
            q.front.clear();
            for (std::string_view rest = value;;) {
                const auto comma = rest.find(',');
                q.front.push_back(figure(key, std::string(rest.substr(0, comma)), true));
                if (comma == std::string_view::npos) break;
                rest = rest.substr(comma + 1);
            }
            if (q.front.size() < 2 || q.front.size() > 3) bad("front takes two or three figures A,B[,C]");
        } else if (key == "size" || key == "token" || key == "t") {
            shared_param(key, value, size);
        } else {
            bad("unknown parameter \"" + key + "\"");
        }
    }
    if (q.x.empty() || q.y.empty()) bad("a scatter takes two figures: x=A&y=B");
    q.width = size.width;
    q.height = size.height;
    return q;
}

std::string StudyQuery::key() const {
    std::string k = "s" + x + ":" + y + "|c" + colour + "|";
    for (const std::string& f : front) k += f + ",";
    return k + "|" + std::to_string(width) + "x" + std::to_string(height);
}

ParticleQuery parse_particle_query(std::string_view path, const Params& params) {
    if (!path.starts_with("/api/particles/")) throw QueryError(404, "no such path: " + std::string(path));
    const std::string_view rest = path.substr(15);
    const auto dot = rest.rfind('.');
    const Form* form = dot == std::string_view::npos ? nullptr : form_of(rest.substr(dot + 1));
    if (!form)
        throw QueryError(404, "no such path: " + std::string(path) +
                                  " (a particle file comes as .png, .txt, .csv, .json, .ps or .pdf)");
    ParticleQuery q;
    q.answer = form->answer;
    const std::string_view id = rest.substr(0, dot);
    if (id.size() > 6 || id.find_first_not_of("0123456789") != std::string_view::npos || !whole(id, q.id))
        bad("a particle file is named by its number in /api/particles, not \"" + std::string(id) + "\"");
    std::string along;
    for (const auto& [key, value] : params) {
        if (shared_param(key, value, q)) continue;
        if (key == "plane") {
            if (!parse_plane(value))
                bad("plane takes A:B, two of " + coord_names() + ", not \"" + value + "\"");
            q.plane = value;
        } else if (key == "slices") {
            if (!whole(value, q.slices) || q.slices < 1 || q.slices > 1000)
                bad("slices takes a number of slices from 1 to 1000, not \"" + value + "\"");
        } else if (key == "along") {
            if (value != "t" && value != "z") bad("along takes t or z, not \"" + value + "\"");
            q.slice_z = value == "z";
            q.along = true;
        } else if (key == "sheet") {
            if (!flag(value, q.sheet)) bad("sheet takes 0 or 1, not \"" + value + "\"");
        } else if (key == "lost") {
            if (!flag(value, q.lost)) bad("lost takes 0 or 1, not \"" + value + "\"");
        } else if (key == "window") {
            const auto comma = value.find(',');
            if (comma == std::string::npos ||
                !pair_of(std::string_view(value).substr(0, comma), ':', q.window_x1, q.window_x2) ||
                !pair_of(std::string_view(value).substr(comma + 1), ':', q.window_y1, q.window_y2) ||
                !(q.window_x1 < q.window_x2) || !(q.window_y1 < q.window_y2))
                bad("window takes X1:X2,Y1:Y2 with X1 < X2 and Y1 < Y2, not \"" + value + "\"");
            q.window = true;
        } else {
            bad("unknown parameter \"" + key + "\"");
        }
    }
    if (q.study >= 0 && q.run >= 0) bad("run and study each name the run: ask with one");
    if (q.sheet + (q.slices > 0) + !q.plane.empty() > 1)
        bad("plane, slices and sheet are a view each: ask for one");
    if (!q.sheet && !q.slices && q.plane.empty()) q.plane = "x:xp";
    return q;
}

std::string ParticleQuery::key() const {
    std::string k = "v" + file + "|a" + arg + shared_key(*this) + "|" + plane + "|" + std::to_string(slices) +
                    (along ? slice_z ? "z" : "t" : "-") + "|" + std::to_string(sheet) + std::to_string(lost);
    if (window)
        k += "|w" + exact(window_x1) + ":" + exact(window_x2) + "," + exact(window_y1) + ":" +
             exact(window_y2);
    return k;
}

const char* content_type(Answer a) {
    switch (a) {
        case Answer::png:
            return "image/png";
        case Answer::txt:
            return "text/plain; charset=utf-8";
        case Answer::csv:
            return "text/csv; charset=utf-8";
        case Answer::json:
            return "application/json";
        case Answer::ps:
            return "application/postscript";
        case Answer::pdf:
            return "application/pdf";
    }
    return "application/octet-stream";
}

}  // namespace viewer::web
