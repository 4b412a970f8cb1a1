// The result block of a fit: what the fit hook draws dashed over a plot.
#pragma once

#include <vector>

namespace viewer {

struct FitVariables {
    std::vector<float> Y1_FIT;  // ordinates of curve 1
    std::vector<float> Y2_FIT;  // ordinates of curve 2; inside `store` the copy of curve 1
    std::vector<float> X_FIT;   // abscissae of both curves
    int N_FIT = 0;              // points to draw; 0 or less: nothing

    // Releases every array and leaves nothing to draw; nothing outlives one
    // pass of the hook.
    void release() {
        N_FIT = 0;
        Y1_FIT = {};
        Y2_FIT = {};
        X_FIT = {};
    }
};

}  // namespace viewer
