// The rows of the five menu pages.
#include "app/pages.hpp"

#include <span>

#include "analysis/plots.hpp"
#include "core/fortran_format.hpp"
#include "evolution/plots.hpp"
#include "plot/page.hpp"

namespace viewer {
namespace {

// Each condition with the tables it asks for, as a user is told them.
constexpr Condition xy{[](const Fexist& f) { return f.Xemit_EXISTS && f.Yemit_EXISTS; }, ".Xemit and .Yemit"};
constexpr Condition z{[](const Fexist& f) { return f.Zemit_EXISTS; }, ".Zemit"};
constexpr Condition ref{[](const Fexist& f) { return f.ref_EXISTS; }, ".ref"};
constexpr Condition track{[](const Fexist& f) { return f.track_EXISTS; }, ".track"};
constexpr Condition pscan{[](const Fexist& f) { return f.PScan_EXISTS; }, ".PScan"};
constexpr Condition landf{[](const Fexist& f) { return f.LandF_EXISTS; }, ".LandF"};
constexpr Condition tcheck{[](const Fexist& f) { return f.tcheck_EXISTS; }, ".tcheck"};
constexpr Condition xyz{[](const Fexist& f) { return f.Xemit_EXISTS && f.Yemit_EXISTS && f.Zemit_EXISTS; },
                        ".Xemit, .Yemit and .Zemit"};
constexpr Condition scan{[](const Fexist& f) { return f.Scan_EXISTS; }, ".Scan"};
constexpr Condition error{[](const Fexist& f) { return f.Error_EXISTS; }, ".Error"};
constexpr Condition always{[](const Fexist&) { return true; }, "nothing"};
constexpr Condition xy2{[](const Fexist& f) { return f.Xemit2_EXISTS && f.Yemit2_EXISTS; },
                        ".Xemit2 and .Yemit2"};
constexpr Condition xyz2{
    [](const Fexist& f) { return f.Xemit2_EXISTS && f.Yemit2_EXISTS && f.Zemit2_EXISTS; },
    ".Xemit2, .Yemit2 and .Zemit2"};
constexpr Condition tr{[](const Fexist& f) { return f.TRemit_EXISTS; }, ".TRemit"};
constexpr Condition core{[](const Fexist& f) { return f.Cemit_EXISTS || f.C99emit_EXISTS; },
                         ".Cemit or .C99emit"};
constexpr Condition cross{[](const Fexist& f) { return f.Cr_emit_EXISTS || f.Sub_emit_EXISTS; },
                          ".Cr_emit or .Sub_emit"};
constexpr Condition cathode{[](const Fexist& f) { return f.Cathode_EXISTS; }, ".Cathode"};
constexpr Condition sigma{[](const Fexist& f) { return f.Sigma_EXISTS; }, ".Sigma"};

const MenuRow kPage1[] = {
    {1, "Trans. Emittance", &xy, [](Session& s) { pgex1(s, PKT); }},
    {2, "rms Beam Size", &xy, [](Session& s) { pgex2(s, PKT); }},
    {3, "rms Beam Divergence", &xy, [](Session& s) { pgex3(s, PKT); }},
    {4, "Long. Emittance", &z, [](Session& s) { pgex4(s, PKT); }},
    {5, "rms Bunch Length", &z, [](Session& s) { pgex5(s, PKT); }},
    {6, "rms Energy Spread", &z, [](Session& s) { pgex6(s, PKT); }},
    {7, "cor. Energy Spread", &z, [](Session& s) { pgex7(s, PKT); }},
    {8, "average Energy", &z, [](Session& s) { pgex8(s, PKT); }},
    {9, "Particle velocity", &z, [](Session& s) { pgex9(s, PKT); }},
    {10, "Reference particle momentum", &ref, [](Session& s) { pgex10(s, s.R_PKT); }},
    {11, "dpz/dz", &ref, [](Session& s) { pgex11(s, s.R_PKT); }},
    {12, "Ref. particle trajectory", &ref, [](Session& s) { pgex12(s, s.R_PKT); }, 1, 2},
    {13, "Larmor angle", &ref, [](Session& s) { pgex13(s, s.R_PKT); }},
    {14, "Trajectories x vs. z; y vs. z", &track, [](Session& s) { pgex14(s); }, 1, 2},
    {15, "Trajectories r vs. z; y vs. x", &track, [](Session& s) { pgex15(s); }, 1, 2},
    {16, "Space charge fields", &track, [](Session& s) { pgex16(s); }, 1, 2},
};

const MenuRow kPage2[] = {
    {1, "Energy vs. Phase", &pscan, [](Session& s) { pgex201(s, 500, 360); }},
    {2, "dE/dz vs. Phase", &pscan, [](Session& s) { pgex202(s, 500, 360); }},
    {3, "Compression factor (z)", &pscan, [](Session& s) { pgex203(s, 500, 360); }},
    {4, "Compression factor (time)", &pscan, [](Session& s) { pgex204(s, 500, 360); }},
    {5, "Particle loss", &landf, [](Session& s) { pgex205(s, PKT); }},
    {6, "Energy deposition", &landf, [](Session& s) { pgex206(s, PKT); }},
    {7, "Beam loading", &landf, [](Session& s) { pgex207(s, PKT); }},
    {8, "", nullptr, nullptr},
    {9, "Sp. ch. scaling factors", &tcheck, [](Session& s) { pgex209(s, s.T_PKT); }},
    {10, "Sp. ch. scaling counter", &tcheck, [](Session& s) { pgex210(s, s.T_PKT); }},
    {11, "Average time step", &tcheck, [](Session& s) { pgex211(s, s.T_PKT); }},
    {12, "\\gb-function", &xyz, [](Session& s) { pgex212(s, PKT); }},
    {13, "\\ga-function", &xyz, [](Session& s) { pgex212(s, PKT); }},
    {14, "phase advance", &xyz, [](Session& s) { pgex212(s, PKT); }},
    {15, "coherence length", &xyz, [](Session& s) { pgex215(s, PKT); }},
};

void scan_plot(Session& s) {
    pgex301(s, s.S_PKT);
}
void error_plot(Session& s) {
    pgex331(s, s.E_PKT, s.graph.N_BINS);
}

const MenuRow kPage3[] = {
    {1, "FOM(1)", &scan, scan_plot},          {2, "FOM(2)", &scan, scan_plot},
    {3, "FOM(3)", &scan, scan_plot},          {4, "FOM(4)", &scan, scan_plot},
    {5, "FOM(5)", &scan, scan_plot},          {6, "FOM(6)", &scan, scan_plot},
    {7, "FOM(7)", &scan, scan_plot},          {8, "FOM(8)", &scan, scan_plot},
    {9, "FOM(9)", &scan, scan_plot},          {10, "FOM(10)", &scan, scan_plot},
    {11, "position", &scan, scan_plot},       {31, "Err. FOM(1)", &error, error_plot},
    {32, "Err. FOM(2)", &error, error_plot},  {33, "Err. FOM(3)", &error, error_plot},
    {34, "Err. FOM(4)", &error, error_plot},  {35, "Err. FOM(5)", &error, error_plot},
    {36, "Err. FOM(6)", &error, error_plot},  {37, "Err. FOM(7)", &error, error_plot},
    {38, "Err. FOM(8)", &error, error_plot},  {39, "Err. FOM(9)", &error, error_plot},
    {40, "Err. FOM(10)", &error, error_plot}, {41, "Err. position", &error, error_plot},
};

// Shown on page 3, acted on by the main loop rather than drawn.
const MenuRow kPage3Actions[] = {
    {15, "change number of bins", &error, nullptr},
    {16, "change title", &always, nullptr},
};

const MenuRow kPage4[] = {
    {1, "reduced trans. emittance z", &xy2, [](Session& s) { pgex401(s, PKT); }},
    {2, "reduced trans. emittance z & E", &xy2, [](Session& s) { pgex401(s, PKT); }},
    {3, "trans. emittance differnce", &xy2, [](Session& s) { pgex401(s, PKT); }},
    {4, "trans. cor. emitt. contributions x", &xy2, [](Session& s) { pgex404(s, PKT); }},
    {5, "trans. cor. emitt. contributions y", &xy2, [](Session& s) { pgex404(s, PKT); }},
    {6, "reduced long. emittance", &xyz2, [](Session& s) { pgex406(s, PKT); }},
    {7, "trans. Trace Space emittance", &tr, [](Session& s) { pgex407(s, PKT); }},
    {8, "long. Trace Space emittance", &tr, [](Session& s) { pgex408(s, PKT); }},
    {9, "horizontal core emittance", &core, [](Session& s) { pgex409(s, PKT); }},
    {10, "vertical core emittance", &core, [](Session& s) { pgex409(s, PKT); }},
    {11, "long. core emittance", &core, [](Session& s) { pgex409(s, PKT); }},
    {12, "Emittance w.o. cross over part.", &cross, [](Session& s) { pgex411(s, PKT); }, 1, 1,
     "Sub-ensemble emittance"},
    {13, "beam size w.o. cross over part.", &cross, [](Session& s) { pgex411(s, PKT); }, 1, 1,
     "beam size of sub-ensemble"},
    {14, "Charge of cross over particles", &cross, [](Session& s) { pgex411(s, PKT); }, 1, 1,
     "Charge of sub-ensemble"},
    {15, "Ez on cathode", &cathode, [](Session& s) { pgex414(s); }},
    {16, "Charge vs. time", &cathode, [](Session& s) { pgex415(s); }},
    {17, "Position vs. time", &cathode, [](Session& s) { pgex416(s); }},
};

void coupling_plot(Session& s) {
    pgex501(s, PKT, s.window.SELECTION);
}

const MenuRow kPage5[] = {
    {1, "4D Emittance x-y", &sigma, coupling_plot},
    {2, "Coupling Emittance x-y", &sigma, coupling_plot},
    {3, "Angular Momentum & Coupling Angle", &sigma, coupling_plot},
    {4, "Trace x-y", &sigma, coupling_plot},
    {5, "", nullptr, coupling_plot},
};

const char* const kCommon[] = {"ZOOM",     "fit, save & read", "to file", "overview to file",
                               "next run", "previous run",     "EXIT"};  // rows 19 to 25

std::span<const MenuRow> page_rows(int page) {
    switch (page) {
        case 1:
            return kPage1;
        case 2:
            return kPage2;
        case 3:
            return kPage3;
        case 4:
            return kPage4;
        case 5:
            return kPage5;
        default:
            return {};
    }
}

std::string row_text(const MenuRow& r, const Fexist& f) {
    if (!r.shown || !r.shown->holds(f)) return std::string(33, ' ');
    return pad(menu_text(r, f), 33);
}

}  // namespace

bool available(const MenuRow& r, const Fexist& f) {
    return r.plot && r.shown && r.shown->holds(f);
}

void dispatch(Session& s) {
    const int code = s.window.SELECTION;
    if (code <= 0 || (code >= 18 && code <= 25)) return;
    if (s.window.PAGE == 3 && (code == 15 || code == 16)) return;  // actions of the main loop
    const MenuRow* row = find_row(s.window.PAGE, code);
    if (!row) return;
    s.window.LAST_SELECTION = code;
    if (row->nx != 1 || row->ny != 1) c_pgsubp(s, row->nx, row->ny);
    if (row->plot) row->plot(s);
}

const MenuRow* find_row(int page, int code) {
    for (const MenuRow& r : page_rows(page))
        if (r.code == code) return &r;
    return nullptr;
}

void write_geometry_row(Session& s) {
    s.menue.LEFT_TEXT[18] = pad(s.logo.WITH_GEOMETRY ? "remove geometry" : "include geometry", 33);
}

void page_fill(Session& s) {
    Menue& m = s.menue;
    for (int i = 1; i <= NBOX; ++i) m.LEFT_TEXT[static_cast<std::size_t>(i)] = std::string(33, ' ');
    for (auto& t : m.RIGHT_TEXT) t = std::string(33, ' ');
    m.N_RIGHT = 0;
    auto put = [&](const MenuRow& r) {
        auto& slot = r.code > 30 ? m.RIGHT_TEXT[static_cast<std::size_t>(r.code - 30)]
                                 : m.LEFT_TEXT[static_cast<std::size_t>(r.code)];
        slot = row_text(r, s.fexist);
    };
    for (const MenuRow& r : page_rows(s.window.PAGE)) put(r);
    if (s.window.PAGE == 3) {
        for (const MenuRow& r : kPage3Actions) put(r);
        if (s.fexist.Error_EXISTS) m.N_RIGHT = 11;
    }
    write_geometry_row(s);
    for (int i = 19; i <= 25; ++i) m.LEFT_TEXT[static_cast<std::size_t>(i)] = pad(kCommon[i - 19], 33);
}

std::string menu_text(const MenuRow& r, const Fexist& f) {
    return r.sub_text && f.Sub_emit_EXISTS ? r.sub_text : r.text;
}

bool along_z(int page, int code) {
    const MenuRow* row = find_row(page, code);
    if (!row || !row->plot) return false;
    switch (page) {
        case 1:
            return code <= 13;
        case 2:
            return code >= 5;
        case 4:
            return code <= 14;
        case 5:
            return code <= 4;
        default:
            return false;
    }
}

std::string echo_text(const Session& s, int code) {
    const std::string& t = code > 30 ? s.menue.RIGHT_TEXT.at(static_cast<std::size_t>(code - 30))
                                     : s.menue.LEFT_TEXT.at(static_cast<std::size_t>(code));
    return spoken(pad(t, 33));
}

std::string spoken(std::string_view t) {
    if (t.starts_with("\\gb-function")) return "beta function";
    if (t.starts_with("\\ga-function")) return "alpha function";
    return std::string(trim_right(t));
}

}  // namespace viewer
