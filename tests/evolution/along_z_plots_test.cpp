// The beam and reference-particle plots along z as rows of one table: the
// columns each draws (the velocity made of the energy), its rule for the
// ordinate, labels, overlay form (the outline once, mirrored, or in both
// panels: outline and mirror above, mirror and outline below), page foot and
// saved values.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/run_catalogue.hpp"
#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

// Field k of row r: z = r + 1, else base + 10 k + r + 1; the mean energy of
// .Zemit (base 200) is 0.511, 1 and 10 MeV.
float cell(float base, int k, int r) {
    if (base == 200 && k == zemit::E_MEAN)
        return std::vector<float>{0.511f, 1, 10}[static_cast<std::size_t>(r)];
    return k == 0 ? r + 1.0f : base + 10.0f * k + r + 1.0f;
}
std::vector<float> column(float base, int k) {
    return {cell(base, k, 0), cell(base, k, 1), cell(base, k, 2)};
}

}  // namespace

TEST(AlongZPlots, EachMemberDrawsItsColumnsRuleLabelsOverlayAndFoot) {
    Harness h;
    Session& s = h.session();
    const std::tuple<int, bool Fexist::*, const char*, float> tables[] = {
        {10, &Fexist::Xemit_EXISTS, "p.Xemit.001", 0},
        {11, &Fexist::Yemit_EXISTS, "p.Yemit.001", 100},
        {12, &Fexist::Zemit_EXISTS, "p.Zemit.001", 200},
        {13, &Fexist::ref_EXISTS, "p.ref.001", 300}};  // free records
    for (const auto& [unit, present, name, base] : tables) {
        std::string t;
        for (int r = 0; r < 3; ++r, t += "\n")
            for (int k = 0; k < 7; ++k)
                t += unit == 13 ? " " + std::to_string(cell(base, k, r)) : fmt_e12_4(cell(base, k, r));
        open_table(s, unit, present, name, t);
    }
    s.geometry = {{1.0f, 3.0f}, {2.0f, 4.0f}, 1.0f, 3.0f, 4.0f, 2};
    s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = s.logo.COLOUR = s.logo.OVERVIEW = true;
    const std::string upper = "swin sci1 sls2 line+ sls1 swin",
                      mirrored = "swin sci1 sls2 line+ line- sls1 swin",
                      both = "swin sci1 sls2 panl1 line+ line- panl2 line- line+ sls1 swin panl2";
    const struct {
        void (*plot)(Session&, int);
        std::vector<std::vector<float>> curves;
        bool margin;                      // the lower end a fifth below the smallest value, else 0
        const std::string& overlay;       // the calls from the outline's window to the end of the drawing
        bool foot;                        // written in an overview too
        std::vector<std::string> labels;  // the ordinate of each panel, then the title
    } members[] = {
        // clang-format off
        {pgex1, {column(0, xemit::NX_EMIT), column(100, yemit::NY_EMIT)}, false, upper, false, {"\\ge \\gp \\fimrad mm ", "Transverse Emittance"}},
        {pgex2, {column(0, xemit::X_RMS), column(100, yemit::Y_RMS)}, false, upper, false, {"\\gs\\fix \\gs\\fiy \\fimm", "Beam Size"}},
        {pgex3, {column(0, xemit::XP_RMS), column(100, yemit::YP_RMS)}, false, upper, false, {"\\fipx/pz  py/pz mrad", "Beam Divergence"}},
        {pgex4, {column(200, zemit::NZ_EMIT)}, false, upper, false, {"\\ge\\fiz \\gp \\fikeV mm", "Longitudinal Emittance"}},
        {pgex5, {column(200, zemit::Z_RMS)}, false, upper, false, {"\\gs\\fiz mm", "Bunch Length"}},
        {pgex6, {column(200, zemit::E_RMS)}, false, upper, false, {"\\gD\\fiE keV", "rms Energy Spread"}},
        {pgex7, {column(200, zemit::CO_EZ)}, true, mirrored, false, {"\\gD\\fiE keV", "correlated Energy Spread"}},
        {pgex8, {column(200, zemit::E_MEAN)}, true, upper, false, {"\\fiE MeV", "average particle energy"}},
        {pgex9, {{0.8660254f, 0.9410791f, 0.9988176f}}, true, upper, false, {"\\gb", "Particle velocity"}},
        {pgex10, {column(300, reference::ENE)}, false, mirrored, true, {"\\fip\\dz  MeV/c", "longitudinal momentum of reference particle"}},
        {pgex11, {column(300, reference::GRAD)}, true, mirrored, true, {"\\fidp\\dz\\u/dz MeV/c/m", "momentum change of reference particle"}},
        {pgex12, {column(300, reference::XX), column(300, reference::YY)}, true, both, true,
         {"\\fix mm", "\\fiy mm", "off-axis trajectory of reference particle (w.o. space charge)"}},
        {pgex13, {column(300, reference::LARMOR)}, true, mirrored, true, {"\\fiLarmor angle  rad", "Larmor angle"}},
        // clang-format on
    };
    for (const auto& m : members) {
        SCOPED_TRACE(m.labels.back());
        h.g.clear();
        m.plot(s, PKT);
        const auto envs = h.g.named("pgenv"), labs = h.g.named("pglab"), lines = h.g.named("pgline");
        const std::size_t panels = m.labels.size() - 1, n = m.curves.size();
        ASSERT_TRUE(envs.size() == panels && labs.size() == panels && lines.size() >= n);
        for (std::size_t c = 0; c < n; ++c)
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(lines[c]->ys.at(i), m.curves[c][i], 1e-6 * m.curves[c][i]);
        for (std::size_t p = 0; p < panels; ++p) {  // stacked panels: each its own curve and range
            float lo = 1e30f, hi = -1e30f;
            for (std::size_t c = panels == 1 ? 0 : p; c < (panels == 1 ? n : p + 1); ++c)
                for (float y : lines[c]->ys) lo = std::min(lo, y), hi = std::max(hi, y);
            EXPECT_TRUE(window_is(*envs[p], 1, 3, m.margin ? 0.8f * lo : 0, 1.2f * hi));
            EXPECT_EQ(labs[p]->texts,
                      (std::vector<std::string>{"\\fiz m", m.labels[p], p ? "" : m.labels.back()}));
        }
        EXPECT_EQ(h.g.named("pgptxt").size(), m.foot ? 1u : 0u);
        EXPECT_EQ(s.plot(static_cast<int>(&m - members) + 1).NP, 3);
        const std::vector<std::string> t = trace(h.g);
        std::string overlay;
        for (auto e = std::find(t.begin(), t.end(), "pgswin"); e != t.end() && *e != "pgunsa"; ++e)
            overlay += (overlay.empty() ? "" : " ") + e->substr(2);
        EXPECT_EQ(overlay, m.overlay);
    }
    // The momentum is clamped at zero only while it is positive.
    open_table(s, 13, &Fexist::ref_EXISTS, "p.ref.001", "1 0 -5 0 0 0 0\n3 0 10 0 0 0 0\n");
    h.g.clear();
    pgex10(s, PKT);
    EXPECT_TRUE(window_is(*h.g.named("pgenv").at(0), 1, 3, -6, 12));
    // With no point in the zoom window both panels of the trajectory open on a huge falling range.
    s.logo.ZOOM_Z = true;
    s.graph.Z_LOWER = 5;
    s.graph.Z_UPPER = 6;
    h.g.clear();
    pgex12(s, PKT);
    for (const auto* e : h.g.named("pgenv")) EXPECT_TRUE(window_is(*e, 1e10f, -1e10f, -0.1f, 0.1f));
}
