// A session for the fitting tests, with the menu and the plot on devices of
// their own, and the checks the fitting tests share.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "fitting/fit.hpp"
#include "tests/support/harness.hpp"

namespace viewer::fit_testing {

struct FitBench : viewer::testing::Harness {
    explicit FitBench(std::string input = "") : Harness(std::move(input)) {
        session().window.MENU_DEVICE = 2;
        session().window.PLOT_DEVICE = 1;
    }
    void clear_console() { out.str(""); }
};

// A fresh bench after one fit of one curve.
inline std::unique_ptr<FitBench> fitted(int pick, const std::vector<float>& x, const std::vector<float>& y) {
    auto b = std::make_unique<FitBench>();
    fit(*b->s, pick, 1, 1, static_cast<int>(x.size()), x.data(), y.data());
    return b;
}

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

// |actual - expected| within `rel` of |expected|, for each coefficient given.
inline ::testing::AssertionResult near_rel(std::span<const double> actual,
                                           const std::vector<double>& expected, double rel) {
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const double a = i < actual.size() ? actual[i] : NAN;
        if (!(std::fabs(a - expected[i]) <= rel * std::fabs(expected[i])))
            return ::testing::AssertionFailure() << "coefficient " << i << ": " << a << " differs from "
                                                 << expected[i] << " by more than " << rel << " relative";
    }
    return ::testing::AssertionSuccess();
}

// `n` points of y = f(x), x from `from` by `step`, rounded to 32 bits.
struct Data {
    std::vector<float> x, y;
};
template <class F>
Data sample(double from, double step, int n, F f) {
    Data d;
    for (int i = 0; i < n; ++i) {
        d.x.push_back(static_cast<float>(from + step * i));
        d.y.push_back(static_cast<float>(f(static_cast<double>(d.x.back()))));
    }
    return d;
}

}  // namespace viewer::fit_testing
