// The columns of every row that states its own, and plain axis labels.
#include "app/columns.hpp"

#include <array>
#include <cctype>

namespace viewer {
namespace {

struct RowColumns {
    int page, code;
    const char* columns;  // panels apart by ';', abscissa then ordinates apart by '|'
};

// clang-format off
constexpr RowColumns kRows[] = {
    {1, 1, "z [m]|emit_x [pi mrad mm]|emit_y [pi mrad mm]"},
    {1, 2, "z [m]|sigma_x [mm]|sigma_y [mm]"},
    {1, 3, "z [m]|divergence_x [mrad]|divergence_y [mrad]"},
    {1, 4, "z [m]|emit_z [pi keV mm]"},
    {1, 5, "z [m]|sigma_z [mm]"},
    {1, 6, "z [m]|sigma_E [keV]"},
    {1, 7, "z [m]|correlated_sigma_E [keV]"},
    {1, 8, "z [m]|E [MeV]"},
    {1, 9, "z [m]|beta"},
    {1, 10, "z [m]|pz [MeV/c]"},
    {1, 11, "z [m]|dpz/dz [MeV/c/m]"},
    {1, 12, "z [m]|x [mm];z [m]|y [mm]"},
    {1, 13, "z [m]|larmor_angle [rad]"},
    {1, 14, "z [m]|x [mm];z [m]|y [mm]"},
    {1, 15, "z [m]|r [mm];x [mm]|y [mm]"},
    {2, 1, "phase [deg]|E_kin [MeV]"},
    {2, 2, "phase [deg]|dE/dz [MeV/deg]"},
    {2, 3, "phase [deg]|compression"},
    {2, 4, "phase [deg]|time_compression"},
    {2, 5, "z [m]|lost_particles [1/m]"},
    {2, 6, "z [m]|energy_deposition [J/m]"},
    {2, 7, "z [m]|beam_loading [J/m]"},
    {2, 9, "z [m]|NR_R|NR_Z|NR_GAM|NZ_R|NZ_GAM"},
    {2, 10, "z [m]|scaling_counter"},
    {2, 11, "z [m]|time_step [ns]"},
    {2, 12, "z [m]|beta_x [m]|beta_y [m]"},
    {2, 13, "z [m]|alpha_x|alpha_y"},
    {2, 14, "z [m]|phase_advance_x [deg]|phase_advance_y [deg]"},
    {2, 15, "z [m]|coherence_length_x [nm]|coherence_length_y [nm]"},
    {4, 1, "z [m]|emit_x [pi mrad mm]|emit_y [pi mrad mm]|reduced_emit_x [pi mrad mm]|reduced_emit_y [pi mrad mm]"},
    {4, 2, "z [m]|emit_x [pi mrad mm]|emit_y [pi mrad mm]|reduced_emit_x [pi mrad mm]|reduced_emit_y [pi mrad mm]"},
    {4, 3, "z [m]|difference_x_Z [pi mrad mm]|difference_y_Z [pi mrad mm]|difference_x_E [pi mrad mm]"
           "|difference_y_E [pi mrad mm]"},
    {4, 4, "z [m]|K2Z_x [pi mrad mm]|K3Z_x [pi mrad mm]|K2E_x [pi mrad mm]|K3E_x [pi mrad mm]|sum_x [pi mrad mm]"},
    {4, 5, "z [m]|K2Z_y [pi mrad mm]|K3Z_y [pi mrad mm]|K2E_y [pi mrad mm]|K3E_y [pi mrad mm]|sum_y [pi mrad mm]"},
    {4, 6, "z [m]|emit_z [pi keV mm]|reduced_emit_z_2 [pi keV mm]|reduced_emit_z_23 [pi keV mm]"},
    {4, 7, "z [m]|emit_x [pi mrad mm]|emit_y [pi mrad mm]|trace_emit_x [pi mrad mm]|trace_emit_y [pi mrad mm]"},
    {4, 8, "z [m]|emit_z [pi um]|trace_emit_z [pi um]"},
    {4, 9, "z [m]|emit_x [pi mrad mm]|core_1_x [pi mrad mm]|core_2_x [pi mrad mm]|core_3_x [pi mrad mm]"},
    {4, 10, "z [m]|emit_y [pi mrad mm]|core_1_y [pi mrad mm]|core_2_y [pi mrad mm]|core_3_y [pi mrad mm]"},
    {4, 11, "z [m]|emit_z [pi keV mm]|core_1_z [pi keV mm]|core_2_z [pi keV mm]|core_3_z [pi keV mm]"},
    {4, 12, "z [m]|part_emit_x [pi mrad mm]|part_emit_y [pi mrad mm]|emit_x [pi mrad mm]|emit_y [pi mrad mm]"},
    {4, 13, "z [m]|part_sigma_x [mm]|part_sigma_y [mm]|sigma_x [mm]|sigma_y [mm]"},
    {4, 14, "z [m]|charge_share [%]"},
    {4, 15, "t [ns]|Ez [V/m]|-Eacc [V/m]"},
    {4, 16, "t [ns]|Q [nC]"},
    {4, 17, "t [ns]|z [m]|z_tail [m]|z_head [m]"},
    {5, 1, "z [m]|emit_4d [pi mrad^2 mm^2]"},
    {5, 2, "z [m]|coupling_emit [pi mrad mm]"},
    {5, 3, "z [m]|angular_momentum [m/rad]|coupling_angle [m/rad]"},
    {5, 4, "z [m]|trace_xy"},
};
// clang-format on

std::vector<std::string> split(std::string_view text, char at) {
    std::vector<std::string> out;
    for (;;) {
        const auto p = text.find(at);
        out.emplace_back(text.substr(0, p));
        if (p == std::string_view::npos) return out;
        text.remove_prefix(p + 1);
    }
}

// The greek letters of the label escapes \\ga to \\gz, by the latin letter.
constexpr std::array<const char*, 26> kGreek = {
    "alpha", "beta",  "xi",      "delta", "epsilon", "phi",     "gamma", "theta", "iota",
    "j",     "kappa", "lambda",  "mu",    "nu",      "omicron", "pi",    "psi",   "rho",
    "sigma", "tau",   "upsilon", "v",     "omega",   "chi",     "eta",   "zeta"};

}  // namespace

std::string plain_label(std::string_view label) {
    std::string out;
    int level = 0;  // below 0 in a subscript, above in a superscript
    for (std::size_t i = 0; i < label.size(); ++i) {
        const char c = label[i];
        if (c != '\\' || i + 1 >= label.size()) {
            out += c;
            continue;
        }
        const char e = label[++i];
        if (e == 'f' && i + 1 < label.size()) {
            ++i;  // a font change
        } else if (e == 'd') {
            if (level == 0) out += '_';
            --level;
        } else if (e == 'u') {
            if (level == 0) out += '^';
            ++level;
        } else if (e == 'g' && i + 1 < label.size()) {
            const char g = label[++i];
            const char l = static_cast<char>(std::tolower(static_cast<unsigned char>(g)));
            if (l >= 'a' && l <= 'z') {
                std::string name = kGreek[static_cast<std::size_t>(l - 'a')];
                if (g != l) name[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[0])));
                out += name;
            }
        } else if (e == '\\') {
            out += '\\';
        }
    }
    // Blanks folded to one, none at either end.
    std::string folded;
    for (char c : out) {
        if (c == ' ' && (folded.empty() || folded.back() == ' ')) continue;
        folded += c;
    }
    while (!folded.empty() && folded.back() == ' ') folded.pop_back();
    return folded;
}

NameAndUnit split_unit(std::string_view column) {
    const auto open = column.rfind(" [");
    if (open == std::string_view::npos || !column.ends_with(']')) return {std::string(column), ""};
    return {std::string(column.substr(0, open)),
            std::string(column.substr(open + 2, column.size() - open - 3))};
}

std::vector<PanelColumns> columns_of(int page, int code, const Figure& f) {
    std::vector<PanelColumns> out;
    for (const RowColumns& r : kRows)
        if (r.page == page && r.code == code)
            for (const std::string& panel : split(r.columns, ';')) {
                std::vector<std::string> names = split(panel, '|');
                out.push_back({names.front(), {names.begin() + 1, names.end()}});
            }
    // Panels the row does not name: the frame's own labels; a row that drew
    // nothing has one all the same.
    if (f.panels.empty() && out.empty()) out.push_back({"x", {"y"}});
    for (std::size_t k = out.size(); k < f.panels.size(); ++k) {
        const Panel& p = f.panels[k];
        out.push_back({plain_label(p.x), {plain_label(p.y)}});
    }
    for (PanelColumns& p : out) {
        if (p.x.empty()) p.x.assign(1, 'x');
        if (p.y.empty()) p.y.emplace_back();
        if (p.y.front().empty()) p.y.front().assign(1, 'y');
    }
    return out;
}

}  // namespace viewer
