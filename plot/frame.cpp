// The frame of the plots along z and its stages.
#include "plot/frame.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "core/statistics.hpp"
#include "plot/aperture.hpp"

namespace viewer {

namespace {

std::size_t position_of(const AlongZ& row, Kind k) {
    for (std::size_t i = 0; i < row.tables.size(); ++i)
        if (row.tables[i] == k) return i;
    throw std::logic_error(std::string("plot along z: a curve reads ") + run_kind(k).suffix +
                           ", which is not among the plot's tables; add it to .tables");
}

bool all_exist(const Session& s, std::span<const Kind> kinds) {
    return std::all_of(kinds.begin(), kinds.end(), [&](Kind k) { return s.fexist.*(run_kind(k).exists); });
}

// The tables a row leaves rewound: those it reads and those it names besides.
std::vector<Kind> rewound_by(const AlongZ& row) {
    std::vector<Kind> t = row.tables;
    t.insert(t.end(), row.rewound.begin(), row.rewound.end());
    return t;
}

}  // namespace

float Pass::operator()(Kind k, int field) const {
    for (const RunRecord& r : records_)
        if (r.kind().kind == k) return r.real(field);
    throw std::logic_error(std::string("plot along z: no table ") + run_kind(k).suffix + " in this pass");
}

Points read_along_z(Session& s, PlotState& st, int N, const AlongZ& row) {
    const int NC = static_cast<int>(row.curves.size());
    if (NC < 1) throw std::logic_error("plot along z: a plot needs at least one curve");
    const bool own = row.ranges == Ranges::own;
    if (own) {
        st.ZMAX = st.YMAX = -1e10f;
        st.ZMIN = 1e10f;
    }

    Points p;
    p.curves = NC;
    if (row.tables.empty() || !all_exist(s, row.tables) || !all_exist(s, row.required) || N < 1) return p;

    std::vector<RunRecord> rec;
    rec.reserve(row.tables.size());  // the picks below point into the records
    for (Kind k : row.tables) {
        const RunKind& kind = run_kind(k);
        if (kind.form == RecordForm::a80 || kind.reals() < 1)
            throw std::logic_error(std::string("plot along z: ") + kind.suffix + " holds no numbers");
        rec.emplace_back(kind);
    }
    const Pass pass(rec);
    // What a curve takes from a pass; its conversion waits for the whole curve.
    struct Pick {
        const float* value;
        float (*derive)(const Pass&);
        float of(const Pass& ps) const { return derive ? derive(ps) : *value; }
    };
    std::vector<Pick> pick;
    for (const Curve& c : row.curves) {
        if (c.derive) {
            pick.push_back({nullptr, c.derive});
            continue;
        }
        const std::size_t t = position_of(row, c.table);
        if (c.field < 0 || c.field >= rec[t].kind().reals())
            throw std::logic_error("plot along z: field " + std::to_string(c.field) +
                                   " is outside a record of " + rec[t].kind().suffix);
        pick.push_back({&rec[t].real(c.field), nullptr});
    }
    const float& Z_MEAN = rec.back().real(0);  // the position is the last table's

    // Curve by curve while reading; packed to NP a curve at the end.
    const std::size_t cap = static_cast<std::size_t>(std::min(N, PKT));
    std::vector<std::vector<float>> ys(static_cast<std::size_t>(NC));
    for (auto& y : ys) y.reserve(cap);
    p.Z.reserve(cap);

    const bool zoom = s.logo.ZOOM_Z;
    const float lower = s.graph.Z_LOWER, upper = s.graph.Z_UPPER;
    for (;;) {
        bool got = true;
        for (RunRecord& r : rec)
            if (!r.read(s.unit(r.kind().unit))) {
                got = false;  // the shorter table decides; the rest of the pass is dropped
                break;
            }
        if (!got) break;
        if (zoom && (lower > Z_MEAN || Z_MEAN > upper)) continue;

        p.Z.push_back(Z_MEAN);
        for (int c = 0; c < NC; ++c)
            ys[static_cast<std::size_t>(c)].push_back(pick[static_cast<std::size_t>(c)].of(pass));
        if (static_cast<int>(p.Z.size()) == N) break;
    }
    p.NP = static_cast<int>(p.Z.size());

    // Conversions and extremes run over whole curves after the read: the
    // steps of one point do not wait for the next record, and the order of
    // each curve's points, which places its extremes, is the order read.
    for (int c = 0; c < NC; ++c) {
        std::vector<float>& y = ys[static_cast<std::size_t>(c)];
        if (const auto convert = row.curves[static_cast<std::size_t>(c)].convert)
            for (float& v : y) v = convert(v);
        if (own) {
            for (float v : y) take_max(st.YMAX, v);
        } else if (c < 2) {
            for (int i = 0; i < p.NP; ++i)
                mami(st, c + 1, i + 1, p.Z[static_cast<std::size_t>(i)], y[static_cast<std::size_t>(i)]);
        }
    }
    if (own)
        for (float z : p.Z) {
            take_max(st.ZMAX, z);
            take_min(st.ZMIN, z);
        }
    p.Y.reserve(static_cast<std::size_t>(NC) * static_cast<std::size_t>(p.NP));
    for (const auto& y : ys) p.Y.insert(p.Y.end(), y.begin(), y.end());
    return p;
}

void open_frame(Session& s, float ZMIN, float ZMAX, float YMIN, float YMAX, const AxisLabels& labels) {
    s.pg.pgsci(1);
    s.pg.pgenv(ZMIN, ZMAX, YMIN, YMAX, 0, 1);
    s.pg.pglab(labels.x, labels.y, labels.top);
}

float upper_limit(float M) {
    return M + std::fabs(0.2f * M);
}

float lower_limit(YminRule rule, float m) {
    switch (rule) {
        case YminRule::zero:
            return 0.0f;
        case YminRule::clamped:
            if (m > 0.0f) return 0.0f;
            [[fallthrough]];
        case YminRule::margin:
            return m - std::fabs(0.2f * m);
    }
    return 0.0f;
}

void draw_overlay(Session& s, Overlay form, float ZMIN, float ZMAX, float YMIN, float YMAX) {
    if (form == Overlay::none) return;
    ensure_geometry(s);
    switch (form) {
        case Overlay::upper:
            overlay_upper(s, ZMIN, ZMAX, YMIN, YMAX);
            break;
        case Overlay::mirrored:
            overlay_mirrored(s, ZMIN, ZMAX, YMIN, YMAX);
            break;
        case Overlay::two_panels:
            overlay_two_panels(s, ZMIN, ZMAX, YMIN, YMAX);
            break;
        case Overlay::none:
            break;
    }
}

void rewind_tables(Session& s, std::span<const Kind> tables) {
    for (Kind k : tables) {
        const RunKind& kind = run_kind(k);
        if (s.fexist.*(kind.exists)) s.unit(kind.unit).rewind();
    }
}

namespace {

void draw_keys(Session& s, const Keys& keys) {
    std::vector<int> num(keys.text.size());
    for (std::size_t i = 0; i < num.size(); ++i) num[i] = static_cast<int>(i) + 1;
    legend(s, keys.text, num, keys.x, keys.pos);
}

// Ranges of the statistics: the first two curves decide.
void running_ranges(Session& s, PlotState& st, const AlongZ& row, const Points& p) {
    const int ID = std::min(p.curves, 2);
    out_mami(s, st, p.NP, ID, p.curve(0), ID == 2 ? p.curve(1) : nullptr);
    if (row.panels == Panels::stacked) {
        st.XMAX = upper_limit(st.MAX_A[0]);
        st.XMIN = lower_limit(row.ymin, st.MIN_A[0]);
        st.YMAX = upper_limit(st.MAX_A[1]);
        st.YMIN = lower_limit(row.ymin, st.MIN_A[1]);
        check(st.ZMAX, st.ZMIN);
        check(st.XMAX, st.XMIN);
        check(st.YMAX, st.YMIN);
        return;
    }
    float M = st.MAX_A[0], m = st.MIN_A[0];
    if (ID == 2) {
        M = std::max(M, st.MAX_A[1]);
        m = std::min(m, st.MIN_A[1]);
    }
    st.YMAX = upper_limit(M);
    st.YMIN = lower_limit(row.ymin, m);
    check(st.ZMAX, st.ZMIN);
    check(st.YMAX, st.YMIN);
}

void draw_curves(Session& s, const PlotState& st, const AlongZ& row, const Points& p) {
    Graphics& pg = s.pg;
    if (row.panels == Panels::stacked) {
        const float lo[] = {st.XMIN, st.YMIN}, hi[] = {st.XMAX, st.YMAX};
        for (int c = 0; c < 2; ++c) {
            pg.pgenv(st.ZMIN, st.ZMAX, lo[c], hi[c], 0, 1);
            if (c == 0)
                pg.pglab(row.labels.x, row.labels.y, row.labels.top);
            else
                pg.pglab(row.labels.x, row.lower_y.empty() ? "" : row.lower_y[0], "");
            pg.pgsci(1);
            pg.pgline(p.NP, p.Z.data(), p.curve(c));
        }
        return;
    }
    pg.pgenv(st.ZMIN, st.ZMAX, st.YMIN, st.YMAX, 0, 1);
    pg.pglab(row.labels.x, row.labels.y, row.labels.top);
    if (row.ranges == Ranges::own) {
        poly_line(s, p.NP, p.NP, p.Z.data(), p.Y.data(), 1, p.curves);
        return;
    }
    pg.pgsci(1);
    pg.pgline(p.NP, p.Z.data(), p.curve(0));
    for (int c = 2; c <= p.curves; ++c) {
        set_curve_style(s, c);
        pg.pgline(p.NP, p.Z.data(), p.curve(c - 1));
    }
    if (p.curves >= 2) pg.pgsls(1);
}

}  // namespace

void plot_along_z(Session& s, int N, const AlongZ& row) {
    if (row.panels == Panels::stacked && row.curves.size() != 2)
        throw std::logic_error("plot along z: stacked panels take two curves");
    PlotState& st = s.plot(row.plot);
    RewindOnExit rewind(s, rewound_by(row));

    if (row.panels == Panels::stacked) {
        // Without a point the frames open on this huge falling range, which
        // says plainly that there was nothing to show.
        st.ZMAX = st.XMAX = st.YMAX = -1e10f;
        st.ZMIN = st.XMIN = st.YMIN = 1e10f;
    }
    const Points p = read_along_z(s, st, N, row);
    st.NP = p.NP;
    if (row.ranges == Ranges::own) {
        st.YMAX = upper_limit(st.YMAX);
        st.YMIN = 0.0f;
        check(st.ZMAX, st.ZMIN);
        check(st.YMAX, st.YMIN);
    } else {
        running_ranges(s, st, row, p);
    }

    const bool keys = !row.keys.text.empty();
    {
        DrawBracket bracket(s.pg);
        s.pg.pgsci(1);
        draw_curves(s, st, row, p);
        if (keys && !row.keys.after_overlay) draw_keys(s, row.keys);
    }

    if (row.fit && row.ranges == Ranges::running && s.logo.FIT_REQUESTED) {
        if (p.curves >= 2)
            fit_hook(s, st.ID_F, p.NP, p.Z.data(), {p.curve(0), p.curve(1)}, row.fit_style);
        else
            fit_hook(s, st.ID_F, p.NP, p.Z.data(), {p.curve(0)}, row.fit_style);
    }

    if (s.logo.WITH_GEOMETRY) draw_overlay(s, row.overlay, st.ZMIN, st.ZMAX, st.YMIN, st.YMAX);
    if (keys && row.keys.after_overlay) draw_keys(s, row.keys);

    page_foot(s, row.title_in_overview);
}

}  // namespace viewer
