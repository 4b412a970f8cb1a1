// Reading a plot request.
#include "web/query.hpp"

#include <charconv>
#include <cmath>

#include "app/pages.hpp"

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

}  // namespace

int parse_run(std::string_view text) {
    int n = -1;
    if (text.size() > 3 || text.find_first_not_of("0123456789") != std::string_view::npos || !whole(text, n))
        bad("run takes a number from 0 to 999, not \"" + std::string(text) + "\"");
    return n;
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
    const Form* form = nullptr;
    for (const Form& f : kForms)
        if (f.ext == ext) form = &f;
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
        if (key == "token" || key == "t") continue;  // the door's, and a page's way to ask again
        if (key == "run") {
            q.run = parse_run(value);
        } else if (key == "runs") {
            try {
                q.runs = parse_run_list(value);
            } catch (const UsageError& e) {
                bad(e.what());
            }
        } else if (key == "zoom") {
            const auto colon = value.find(':');
            if (colon == std::string::npos || !real(std::string_view(value).substr(0, colon), q.zoom_low) ||
                !real(std::string_view(value).substr(colon + 1), q.zoom_high))
                bad("zoom takes LOW:HIGH, such as 0.5:2, not \"" + value + "\"");
            q.zoom = true;
        } else if (key == "fit") {
            if (!whole(value, q.fit) || q.fit < 0 || q.fit > 11)
                bad("fit takes a fit of the fit menu, 1 to 11 (0: none), not \"" + value + "\"");
        } else if (key == "bins") {
            if (!whole(value, q.bins) || q.bins < 1 || q.bins > 3200)
                bad("bins takes a number from 1 to 3200, not \"" + value + "\"");
        } else if (key == "geometry") {
            if (!flag(value, q.geometry)) bad("geometry takes 0 or 1, not \"" + value + "\"");
        } else if (key == "mono") {
            if (!flag(value, q.mono)) bad("mono takes 0 or 1, not \"" + value + "\"");
        } else if (key == "size") {
            const auto x = value.find('x');
            if (x == std::string::npos || !whole(std::string_view(value).substr(0, x), q.width) ||
                !whole(std::string_view(value).substr(x + 1), q.height) || q.width < 200 || q.width > 4000 ||
                q.height < 200 || q.height > 4000)
                bad("size takes WIDTHxHEIGHT, 200 to 4000 pixels a side, not \"" + value + "\"");
        } else {
            bad("unknown parameter \"" + key + "\"");
        }
    }
    if (q.runs && !q.overview && !along_z(q.page, q.row))
        bad("row " + std::to_string(q.page) + ":" + std::to_string(q.row) +
            " shows one run: runs are laid over each other on the rows drawn against z only");
    return q;
}

std::string PlotQuery::key() const {
    std::string k = (overview ? "o" : "p") + std::to_string(page) + ":" + std::to_string(row) + "|" +
                    std::to_string(static_cast<int>(answer)) + "|r" + std::to_string(run) + "|";
    if (runs) {
        k += runs->all ? "all" : "";
        for (int n : runs->runs) k += std::to_string(n) + ",";
    }
    if (zoom) k += "|z" + exact(zoom_low) + ":" + exact(zoom_high);
    k += "|f" + std::to_string(fit) + "|g" + std::to_string(geometry) + "|b" + std::to_string(bins) + "|m" +
         std::to_string(mono) + "|s" + std::to_string(width) + "x" + std::to_string(height);
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
