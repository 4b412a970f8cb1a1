// The page of the browser view, its script and its style, built into the
// binary from the files under web/assets: nothing is loaded from elsewhere.
#pragma once

#include <span>
#include <string_view>

namespace viewer::web {

struct Asset {
    const char* path;  // as asked for: "/", "/app.js", "/app.css"
    const char* type;  // content type
    std::string_view body;
};

std::span<const Asset> assets();

}  // namespace viewer::web
