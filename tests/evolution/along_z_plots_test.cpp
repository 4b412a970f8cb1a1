// The beam and reference-particle plots along z as rows of one table: the
// columns each draws (the velocity made of the energy), its rule for the
// ordinate, labels, overlay form (the outline once, mirrored, or in both
// panels: outline and mirror above, mirror and outline below), page foot and
// saved values.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "core/run_catalogue.hpp"
#include "evolution/plots.hpp"
#include "tests/support/harness.hpp"

using namespace viewer;
using namespace viewer::testing;

namespace {

// Field k of row r: z = r + 1, else base + 10 k + r + 1; the mean energy of
// .Zemit (base 200) is 0.511, 1 and 10 MeV.
float cell(float base, int k, int r) {
    return base == 200 && k == zemit::E_MEAN ? std::array{0.511f, 1.0f, 10.0f}[static_cast<std::size_t>(r)]
           : k == 0                          ? r + 1.0f
                                             : base + 10.0f * k + r + 1.0f;
}
std::vector<float> column(float base, int k) {
    return {cell(base, k, 0), cell(base, k, 1), cell(base, k, 2)};
}

}  // namespace

TEST(AlongZPlots, EachMemberDrawsItsColumnsRuleLabelsOverlayAndFoot) {
    Harness h;
    Session& s = h.session();
    // clang-format off
    const std::pair<bool Fexist::*, const char*> tables[] = {  // on units 10 to 13, base 0 to 300; .ref free
        {&Fexist::Xemit_EXISTS, "p.Xemit.001"}, {&Fexist::Yemit_EXISTS, "p.Yemit.001"}, {&Fexist::Zemit_EXISTS, "p.Zemit.001"}, {&Fexist::ref_EXISTS, "p.ref.001"}};
    // clang-format on
    for (int u = 0; u < 4; ++u) {
        std::string t;
        for (int r = 0; r < 3; ++r, t += "\n")
            for (int k = 0; k < 7; ++k)
                t += u == 3 ? " " + std::to_string(cell(300, k, r)) : fmt_e12_4(cell(100.0f * u, k, r));
        open_table(s, 10 + u, tables[u].first, tables[u].second, t);
    }
    s.geometry = {{1.0f, 3.0f}, {2.0f, 4.0f}, 1.0f, 3.0f, 4.0f, 2};
    s.logo.GEOMETRY_LOADED = s.logo.WITH_GEOMETRY = s.logo.COLOUR = s.logo.OVERVIEW = true;
    const std::string upper = "swin sci1 sls2 line+ sls1 swin ",
                      mirrored = "swin sci1 sls2 line+ line- sls1 swin ",
                      both = "swin sci1 sls2 panl1 line+ line- panl2 line- line+ sls1 swin panl2 ";
    // A member draws its curves; with a margin the lower end is a fifth below the smallest value, else 0;
    // the overlay is the calls from the outline's window to the end of the drawing; the foot is written in
    // an overview too; the labels are the ordinate of each panel, then the title.
    // clang-format off
    const struct { void (*plot)(Session&, int); std::vector<std::vector<float>> curves; bool margin; const std::string& overlay;
                   bool foot; std::vector<std::string> labels; } members[] = {
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
    };
    // clang-format on
    auto draw = [&](void (*plot)(Session&, int)) {
        h.g.clear();
        plot(s, PKT);
        return h.g.named("pgenv");
    };
    for (const auto& m : members) {
        SCOPED_TRACE(m.labels.back());
        const auto envs = draw(m.plot), labs = h.g.named("pglab"), lines = h.g.named("pgline");
        const std::size_t panels = m.labels.size() - 1, n = m.curves.size();
        ASSERT_TRUE(envs.size() == panels && labs.size() == panels && lines.size() >= n);
        for (std::size_t c = 0; c < n; ++c)
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(lines[c]->ys.at(i), m.curves[c][i], 1e-6 * m.curves[c][i]);
        for (std::size_t p = 0; p < panels; ++p) {  // stacked panels: each its own curve and range
            std::vector<float> ys;
            for (std::size_t c = panels == 1 ? 0 : p; c < (panels == 1 ? n : p + 1); ++c)
                ys.insert(ys.end(), lines[c]->ys.begin(), lines[c]->ys.end());
            const auto [lo, hi] = std::ranges::minmax(ys);
            EXPECT_TRUE(window_is(*envs[p], 1, 3, m.margin ? 0.8f * lo : 0, 1.2f * hi));
            EXPECT_EQ(labs[p]->texts,
                      (std::vector<std::string>{"\\fiz m", m.labels[p], p ? "" : m.labels.back()}));
        }
        EXPECT_EQ(h.g.named("pgptxt").size(), m.foot ? 1u : 0u);
        EXPECT_EQ(s.plot(static_cast<int>(&m - members) + 1).NP, 3);
        std::string t;
        for (const std::string& e : trace(h.g)) t += e.substr(2) + " ";
        const std::size_t at = t.find("swin");
        EXPECT_EQ(t.substr(at, t.find("unsa", at) - at), m.overlay);
    }
    // The momentum is clamped at zero only while it is positive.
    open_table(s, 13, &Fexist::ref_EXISTS, "p.ref.001", "1 0 -5 0 0 0 0\n3 0 10 0 0 0 0\n");
    EXPECT_TRUE(window_is(*draw(pgex10).at(0), 1, 3, -6, 12));
    // With no point in the zoom window both panels of the trajectory open on a huge falling range.
    s.logo.ZOOM_Z = true;
    std::tie(s.graph.Z_LOWER, s.graph.Z_UPPER) = std::pair(5.0f, 6.0f);
    const auto envs = draw(pgex12);
    EXPECT_TRUE(window_is(*envs.at(0), 1e10f, -1e10f, -0.1f, 0.1f) &&
                window_is(*envs.at(1), 1e10f, -1e10f, -0.1f, 0.1f));
}
