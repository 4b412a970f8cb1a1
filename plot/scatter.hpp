// A scatter of labelled points: one dot a point, the points of a front
// joined by a line and named, and optionally the dots coloured by a third
// value with a colour bar. The page foot and the bracket as every plot.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/session.hpp"

namespace viewer {

struct ScatterPoint {
    float x = 0, y = 0;
    std::optional<float> colour;  // the third value, when the dots are coloured by one
    bool front = false;
    std::string label;  // written beside a point of the front
};

struct ScatterLabels {
    std::string x, y, top, colour;  // colour: the bar's label; empty: no colouring
};

// Draws one page on the session's device.
void draw_scatter(Session& s, const std::vector<ScatterPoint>& points, const ScatterLabels& labels);

}  // namespace viewer
