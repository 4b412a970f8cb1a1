// The numbers behind the console's statistics blocks and fit reports, for a
// front end that writes them out for scripts (JSON). A session keeps them
// only when it is given a `Reports`; the console text stays as it is.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace viewer {

// One curve of a statistics block, in the units of the curve; the places
// of the extremes in those of the abscissa.
struct CurveReport {
    int curve = 1;  // 1 or 2
    int points = 0;
    float beginning = 0, end = 0;
    float minimum = 0, minimum_at = 0;
    float maximum = 0, maximum_at = 0;
    float average = 0;
};

// One fit of one curve: the model's formula, the values the report names,
// and the residual (sum of squared deviations at the points fitted), or
// the message that took the place of a result.
struct FitReport {
    int curve = 1;
    int pick = 0;  // of the fit menu
    std::string model;
    std::vector<std::pair<std::string, double>> values;  // "a", "b", "zero crossing", ...
    std::optional<double> residual;
    int neglected = 0;    // points at or below zero left out
    std::string message;  // "no valid data points", "no solution", ...
};

struct Reports {
    std::vector<CurveReport> curves;
    std::vector<FitReport> fits;
    void clear() {
        curves.clear();
        fits.clear();
    }
};

}  // namespace viewer
