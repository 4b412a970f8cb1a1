// A session for the fitting tests: recorded graphics, scripted clicks,
// console streams and a working directory of its own.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "control/graphics.hpp"
#include "control/session.hpp"

namespace viewer::fit_testing {

struct FitBench {
    explicit FitBench(std::string input = "") : in(std::move(input)) {
        std::string tmpl = (std::filesystem::temp_directory_path() / "fit-test-XXXXXX").string();
        dir = mkdtemp(tmpl.data());
        s = std::make_unique<Session>(g, p, in, out, dir);
        s->window.MENU_DEVICE = 2;
        s->window.PLOT_DEVICE = 1;
    }
    ~FitBench() {
        std::error_code ec;
        std::filesystem::remove_all(dir, ec);
    }
    FitBench(const FitBench&) = delete;
    FitBench& operator=(const FitBench&) = delete;

    std::string file(const std::string& name) const { return dir + "/" + name; }
    std::string console() const { return out.str(); }
    void clear_console() { out.str(""); }

    std::string dir;
    RecordingGraphics g;
    ScriptedPointer p;
    std::istringstream in;
    std::ostringstream out;
    std::unique_ptr<Session> s;
};

// The rule of 74 dashes that opens a report.
inline std::string rule() {
    return " " + std::string(74, '-') + "\n";
}

// True when a fit left nothing behind: nothing to draw, nothing allocated.
inline ::testing::AssertionResult no_curve(const FitVariables& fv) {
    if (fv.N_FIT == 0 && fv.X_FIT.empty() && fv.Y1_FIT.empty() && fv.Y2_FIT.empty())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "N_FIT " << fv.N_FIT << ", sizes " << fv.X_FIT.size() << " "
                                         << fv.Y1_FIT.size() << " " << fv.Y2_FIT.size();
}

// |actual - expected| within `rel` of |expected|.
inline ::testing::AssertionResult near_rel(double actual, double expected, double rel) {
    if (std::fabs(actual - expected) <= rel * std::fabs(expected)) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << actual << " differs from " << expected << " by more than " << rel << " relative";
}

}  // namespace viewer::fit_testing
