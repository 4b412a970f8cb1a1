// The frame of the plots along z and its stages.
#include "evolution/frame.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include "control/windows.hpp"
#include "evolution/geometry.hpp"
#include "evolution/statistics.hpp"

namespace viewer {

namespace {

// One table of a lock-step read, with the record it last delivered.
struct Source {
    TableFile* file = nullptr;
    TableKind kind{};
    std::array<float, kMaxRecordReals> rec{};
    std::vector<FreeField> free;  // targets of a free record, into `rec`

    bool next() {
        if (kind.free_form) return read_free(*file, std::span<const FreeField>(free));
        return read_fixed(*file, std::span<float>(rec.data(), static_cast<std::size_t>(kind.reals)));
    }
};

std::size_t position_of(std::span<const TableKind> tables, const TableKind& t) {
    for (std::size_t i = 0; i < tables.size(); ++i)
        if (tables[i].unit == t.unit) return i;
    throw std::logic_error("plot along z: a curve reads unit " + std::to_string(t.unit) +
                           ", which is not among the plot's tables; add it to .tables");
}

}  // namespace

Points read_along_z(Session& s, PlotState& st, int N, std::span<const TableKind> tables,
                    std::span<const Curve> curves) {
    if (curves.empty() || curves.size() > 2)
        throw std::logic_error("plot along z: one or two curves, not " + std::to_string(curves.size()));

    Points p;
    const bool all_exist =
        !tables.empty() && std::all_of(tables.begin(), tables.end(), [&](const TableKind& t) {
            return s.fexist.*(t.exists);
        });
    if (!all_exist || N < 1) return p;

    std::vector<Source> src(tables.size());
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (tables[i].reals < 1 || tables[i].reals > kMaxRecordReals)
            throw std::logic_error("plot along z: a record of unit " + std::to_string(tables[i].unit) +
                                   " must hold 1 to 16 numbers");
        src[i].file = &s.unit(tables[i].unit);
        src[i].kind = tables[i];
        if (tables[i].free_form)
            for (int k = 0; k < tables[i].reals; ++k)
                src[i].free.emplace_back(&src[i].rec[static_cast<std::size_t>(k)]);
    }
    struct Pick {
        const float* value;
        float (*convert)(float);
    };
    std::array<Pick, 2> pick{};
    for (std::size_t c = 0; c < curves.size(); ++c) {
        const std::size_t t = position_of(tables, curves[c].table);
        if (curves[c].field < 0 || curves[c].field >= tables[t].reals)
            throw std::logic_error("plot along z: field " + std::to_string(curves[c].field) +
                                   " is outside a record of unit " + std::to_string(tables[t].unit));
        pick[c] = {&src[t].rec[static_cast<std::size_t>(curves[c].field)], curves[c].convert};
    }
    const float& Z_MEAN = src.back().rec[0];  // the position is the last table's

    const std::size_t cap = static_cast<std::size_t>(std::min(N, PKT));
    p.Z.reserve(cap);
    p.Y1.reserve(cap);
    if (curves.size() == 2) p.Y2.reserve(cap);

    const bool zoom = s.logo.ZOOM_Z;
    const float lower = s.graph.Z_LOWER, upper = s.graph.Z_UPPER;
    int I = 1;
    for (;;) {
        bool got = true;
        for (Source& t : src)
            if (!t.next()) {
                got = false;  // the shorter table decides; the rest of the pass is dropped
                break;
            }
        if (!got) break;
        if (zoom && (lower > Z_MEAN || Z_MEAN > upper)) continue;

        p.Z.push_back(Z_MEAN);
        const float y1 = pick[0].convert ? pick[0].convert(*pick[0].value) : *pick[0].value;
        p.Y1.push_back(y1);
        mami(st, 1, I, Z_MEAN, y1);
        if (curves.size() == 2) {
            const float y2 = pick[1].convert ? pick[1].convert(*pick[1].value) : *pick[1].value;
            p.Y2.push_back(y2);
            mami(st, 2, I, Z_MEAN, y2);
        }
        if (I++ == N) break;
    }
    p.NP = I - 1;
    return p;
}

float upper_limit(float M) { return M + std::fabs(0.2f * M); }

float lower_limit(YminRule rule, float m) {
    switch (rule) {
    case YminRule::zero: return 0.0f;
    case YminRule::clamped:
        if (m > 0.0f) return 0.0f;
        [[fallthrough]];
    case YminRule::margin: return m - std::fabs(0.2f * m);
    }
    return 0.0f;
}

void draw_overlay(Session& s, Overlay form, float ZMIN, float ZMAX, float YMIN, float YMAX) {
    if (form == Overlay::none) return;
    ensure_geometry(s);
    if (form == Overlay::upper)
        overlay_upper(s, ZMIN, ZMAX, YMIN, YMAX);
    else
        overlay_mirrored(s, ZMIN, ZMAX, YMIN, YMAX);
}

void page_foot(Session& s, bool title_in_overview) {
    if (title_in_overview || !s.logo.OVERVIEW) title(s);
    s.pg.pgupdt();
}

void rewind_tables(Session& s, std::span<const TableKind> tables) {
    for (const TableKind& t : tables)
        if (s.fexist.*(t.exists)) s.unit(t.unit).rewind();
}

void plot_along_z(Session& s, int N, const AlongZ& row) {
    PlotState& st = s.plot(row.plot);
    const int curves = static_cast<int>(row.curves.size());

    RewindOnExit rewind(s, row.tables);

    Points p = read_along_z(s, st, N, row.tables, row.curves);
    st.NP = p.NP;
    out_mami(s.con.out, st, p.NP, curves, p.Y1.data(), p.Y2.data());

    float M = st.MAX_A[0], m = st.MIN_A[0];
    if (curves == 2) {
        M = std::max(M, st.MAX_A[1]);
        m = std::min(m, st.MIN_A[1]);
    }
    st.YMAX = upper_limit(M);
    st.YMIN = lower_limit(row.ymin, m);
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);

    Graphics& pg = s.pg;
    pg.pgbbuf();
    pg.pgsave();
    pg.pgsci(1);
    pg.pgenv(st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, 0, 1);
    pg.pglab(row.labels.x, row.labels.y, row.labels.top);
    pg.pgsci(1);
    pg.pgline(p.NP, p.Z.data(), p.Y1.data());
    if (curves == 2) {
        if (s.logo.COLOUR)
            pg.pgsci(2);
        else
            pg.pgsls(2);
        pg.pgline(p.NP, p.Z.data(), p.Y2.data());
        pg.pgsls(1);
    }
    pg.pgunsa();
    pg.pgebuf();
    pg.pgupdt();

    if (row.fit && s.logo.FIT_REQUESTED)
        fit_hook(s, st.ID_F, p.NP, p.Z.data(), p.Y1.data(), curves == 2 ? p.Y2.data() : nullptr,
                 row.fit_style);

    if (s.logo.WITH_GEOMETRY) draw_overlay(s, row.overlay, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX);

    page_foot(s, row.title_in_overview);
}

}  // namespace viewer
