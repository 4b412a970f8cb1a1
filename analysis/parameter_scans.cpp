// Parameter scans: one figure of merit of the .Scan records, or their output
// position, against the scanned parameter. The tracker appends records run by
// run in any order, so they are sorted by the parameter before drawing. The
// axis texts come from the run's .lab file.
#include <cmath>
#include <numeric>
#include <vector>

#include "analysis/index_sort.hpp"
#include "analysis/labels.hpp"
#include "analysis/plots.hpp"
#include "core/fortran_format.hpp"
#include "core/run_catalogue.hpp"
#include "core/statistics.hpp"
#include "fitting/fit.hpp"
#include "plot/draw.hpp"
#include "plot/frame.hpp"
#include "plot/page.hpp"

namespace viewer {

namespace {

// Fields of a .Scan record.
namespace scan {
enum : int { Z, ZPOS, DAT1 };
}
constexpr int kPositionRow = 11;  // the menu row that shows ZPOS

}  // namespace

void pgex301(Session& s, int N) {
    const int SELECTION = s.window.SELECTION;
    if (SELECTION < 1 || SELECTION > kPositionRow) return;  // not a row of this plot
    PlotState& st = s.plot(301);
    RewindOnExit rewind(s, {Kind::Scan, Kind::lab});

    // The records in file order, keeping those inside the zoom window.
    std::vector<float> Z, Y;
    int I = 1;
    if (s.fexist.Scan_EXISTS && N >= 1) {
        const RunKind& kind = run_kind(Kind::Scan);
        RunRecord r(kind);
        const int field = SELECTION == kPositionRow ? scan::ZPOS : scan::DAT1 + SELECTION - 1;
        const bool zoom = s.logo.ZOOM_SCAN;
        while (r.read(s.unit(kind.unit))) {
            const float z = r.real(scan::Z);
            if (zoom && (z < s.graph.SCAN_LOWER || z > s.graph.SCAN_UPPER)) continue;
            Z.push_back(z);
            Y.push_back(r.real(field));
            mami(st, 1, I, z, Y.back());
            if (I++ == N) break;
        }
    }
    const int NP = I - 1;
    st.NP = NP;

    if (s.fexist.lab_EXISTS &&
        !read_label_groups(s.unit(run_kind(Kind::lab).unit), s.labels, 1, s.fexist.lab_EXISTS)) {
        report_label_error(s.con.out);
        return;
    }

    // One ordered curve, whatever order the scan appended its records in.
    std::vector<int> I_ARRX(Z.size());
    std::iota(I_ARRX.begin(), I_ARRX.end(), 0);
    if (!index4(Z, I_ARRX).ok) s.con.fail("Error: NSTACK too small in Index4");
    {
        const std::vector<float> SWAP_Z = Z, SWAP_Y = Y;
        for (std::size_t k = 0; k < I_ARRX.size(); ++k) {
            Z[k] = SWAP_Z[static_cast<std::size_t>(I_ARRX[k])];
            Y[k] = SWAP_Y[static_cast<std::size_t>(I_ARRX[k])];
        }
    }

    if (!s.logo.FIT_REQUESTED) out_mami(s, st, NP, 1, Y.data(), Y.data());

    // A tenth of the span above, and a tenth of the raised span below.
    st.YMAX = st.MAX_A[0] + std::fabs(0.1f * (st.MAX_A[0] - st.MIN_A[0]));
    st.YMIN = st.MIN_A[0] - std::fabs(0.1f * (st.YMAX - st.MIN_A[0]));
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);

    {
        DrawBracket bracket(s.pg);
        s.pg.pgsci(1);
        s.pg.pgenv(st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, 0, 1);
        const LabelRecord& lab = s.labels.rec[static_cast<std::size_t>(SELECTION)];
        s.pg.pglab(pad(lab.ABSCISSA_LABEL, 80), pad(lab.ORDINATE_LABEL, 80), pad(lab.PLOT_TITLE, 80));
        s.pg.pgline(NP, Z.data(), Y.data());
        s.pg.pgpt(NP, Z.data(), Y.data(), 5);
    }

    fit_hook(s, st.ID_F, NP, Z.data(), {Y.data()}, FitStyle{.first_colour = 2, .dashed = true});
    page_foot(s, false);
}

}  // namespace viewer
