// Fields and emission at the cathode against time. The table has no count
// taken at load: each plot counts its records first and sizes its vectors.
#include <string>
#include <vector>

#include "analysis/plots.hpp"
#include "core/statistics.hpp"
#include "plot/frame.hpp"

namespace viewer {
namespace {

using Ordinate = float (*)(const RunRecord&);

// One of the three plots: the curves in drawing order, the first of them
// the one that sets the range and takes the fit.
struct CathodePlot {
    int plot;
    std::vector<Ordinate> curves;
    const char* y;
    const char* top;
    bool keys = false;  // the head, average and tail key
};

float field(const RunRecord& r, int f) {
    return r.real(f);
}

void cathode_plot(Session& s, const CathodePlot& c) {
    PlotState& st = s.plot(c.plot);
    const RunKind& kind = run_kind(Kind::Cathode);
    TableFile& file = s.unit(kind.unit);
    const bool present = s.fexist.Cathode_EXISTS;
    RewindOnExit rewind(s, {Kind::Cathode});

    RunRecord rec(kind);
    std::vector<float> Z;
    std::vector<std::vector<float>> Y(c.curves.size());

    int I = 1;
    if (present) {  // every record of the table, in one pass
        const bool zoom = s.logo.ZOOM_TIME;
        const float lower = s.graph.TIME_LOWER, upper = s.graph.TIME_UPPER;
        while (rec.read(file)) {
            const float CLOCK = rec.real(cathode::CLOCK);  // ns
            if (zoom && (CLOCK < lower || CLOCK > upper)) continue;
            Z.push_back(CLOCK);
            for (std::size_t k = 0; k < Y.size(); ++k) Y[k].push_back(c.curves[k](rec));
            mami(st, 1, I++, CLOCK, Y[0].back());
        }
    }
    const int NP = st.NP = I - 1;
    out_mami(s, st, NP, 1, Y[0].data(), Z.data());  // its "z" is the time here
    st.XMAX = upper_limit(st.MAX_A[0]);             // only the first curve sets the range
    st.XMIN = lower_limit(YminRule::margin, st.MIN_A[0]);
    // Without the table the time axis is mended around 0 rather than kept
    // from another run's table, and nothing is drawn in it.
    if (!present) st.ZMAX = st.ZMIN = 0.0f;
    check(st.ZMAX, st.ZMIN);
    check(st.XMAX, st.XMIN);
    {
        DrawBracket bracket(s.pg);
        Graphics& pg = s.pg;
        open_frame(s, st.ZMIN, st.ZMAX, st.XMIN, st.XMAX, {"\\fit ns", c.y, c.top});
        if (present) {
            // Colours 1, 2, 3 on any device: the curves are told apart by colour alone.
            for (std::size_t k = 0; k < Y.size(); ++k) {
                pg.pgsci(static_cast<int>(k) + 1);
                pg.pgline(NP, Z.data(), Y[k].data());
            }
            if (c.keys) {
                const std::string text[] = {" head", " average", " tail"};
                const int num[] = {3, 1, 2};  // head is the third curve, tail the second
                legend(s, text, num, 0.83f, LegendPos::TL);
            }
        }
    }
    if (s.logo.FIT_REQUESTED) fit_hook(s, st.ID_F, NP, Z.data(), {Y[0].data()}, {2, true});
    page_foot(s, false);
}

}  // namespace

void pgex414(Session& s) {
    cathode_plot(s, {414,
                     {[](const RunRecord& r) { return field(r, cathode::EZ); },  // V/m
                      [](const RunRecord& r) { return -field(r, cathode::EACC); }},
                     "\\fiEz V/m",
                     "Space Charge field at the Cathode"});
}

void pgex415(Session& s) {
    cathode_plot(s, {415,
                     {[](const RunRecord& r) { return field(r, cathode::QEMIT); }},  // nC
                     "\\fiQ nC",
                     "Charge emission vs. time"});
}

void pgex416(Session& s) {
    cathode_plot(s,
                 {416,
                  {[](const RunRecord& r) { return field(r, cathode::Z_MEAN); },  // m
                   [](const RunRecord& r) { return field(r, cathode::Z_MEAN) + field(r, cathode::GZ_MIN); },
                   [](const RunRecord& r) { return field(r, cathode::Z_MEAN) + field(r, cathode::GZ_MAX); }},
                  "\\fiz m",
                  "Bunch position vs.time",
                  true});
}

}  // namespace viewer
