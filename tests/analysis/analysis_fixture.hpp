// Set-up shared by the tests of the plots of pages 2 to 5: a session with
// recorded graphics, a drawing summed up in one line, and tables of
// drawings with what each shows.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "core/fortran_format.hpp"
#include "tests/support/harness.hpp"

namespace viewer::testing {

// A plot as a row of a table calls it; the others are wrapped in a lambda.
using Plot = void (*)(Session&, int);

// One drawing: the plot, its menu selection, the summary of what it draws,
// the console text, and a zoom window along z (none when the bounds agree).
struct Drawing {
    Plot plot;
    int selection;
    std::string summary, console = "";
    float lower = 0, upper = 0;
};

struct PlotTest : ::testing::Test {
    Harness h;
    Session& s = h.session();
    RecordingGraphics& rec = h.g;

    // Draws anew with a clean record and console.
    void draw(Plot plot, int selection = 0, int N = PKT) {
        rec.clear();
        h.out.str("");
        if (selection) s.window.SELECTION = selection;
        plot(s, N);
    }
    void check(const std::vector<Drawing>& drawings) {
        for (const Drawing& d : drawings) {
            s.logo.ZOOM_Z = d.lower != d.upper;
            s.graph.Z_LOWER = d.lower;
            s.graph.Z_UPPER = d.upper;
            draw(d.plot, d.selection);
            EXPECT_EQ(summary(), d.summary);
            EXPECT_EQ(console(), d.console) << d.summary;
        }
    }
    void table(int unit, bool Fexist::*present, const std::string& name,
               const std::vector<std::vector<float>>& rows) {
        open_table(s, unit, present, name, fixed_records(rows));
    }
    std::string console() const { return h.console(); }
    const GraphicsCall& first(const char* name) const { return *rec.named(name).at(0); }
    std::vector<std::string> labels() const { return first("pglab").texts; }
    // A drawing in one line: the window, the first ordinate of every curve,
    // the ordinates of the marks and their symbol, the number of keys and the
    // left edge of their box, and the title.
    std::string summary() const {
        std::ostringstream o;
        const auto& w = first("pgenv").args;
        o << "[" << float(w[0]) << " " << float(w[1]) << " " << float(w[2]) << " " << float(w[3]) << "]";
        for (auto* l : rec.named("pgline")) o << " " << (l->ys.empty() ? NAN : l->ys[0]);
        for (auto* p : rec.named("pgpt")) {
            o << " marks";
            for (float y : p->ys) o << " " << y;
            o << " symbol " << p->args.back();
        }
        const auto keys = rec.named("pgtext");
        if (!keys.empty()) o << " keys " << keys.size() << " at " << float(first("pgrect").args[0]);
        o << " | " << trim_right(labels()[2]);
        return o.str();
    }
};

// The statistics of one curve as printed after a plot, under `head`.
inline std::string stats(const std::string& head, float first, float last, float mn, float mn_at, float mx,
                         float mx_at, float avr) {
    return head + "     beginning:                 " + fmt_d(first) +
           "\n     end:                       " + fmt_d(last) +
           "\n     minimum:                   " + fmt_d(mn) + "  at z = " + fmt_d(mn_at) +
           "\n     maximum:                   " + fmt_d(mx) + "  at z = " + fmt_d(mx_at) +
           "\n     average:                   " + fmt_d(avr) + "\n\n";
}
inline const std::string kOneCurve = "\n       \n", kBlack = "\n     1: black (horizontal): \n",
                         kRed = "     2: red (vertical): \n";

}  // namespace viewer::testing
