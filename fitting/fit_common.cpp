// Report lines and curve grids shared by all fit routines.
#include "fitting/fit_common.hpp"

#include <cmath>
#include <ostream>
#include <string>

#include "core/fortran_format.hpp"

namespace viewer {

void print_rule(std::ostream& out) {
    out << ' ' << std::string(74, '-') << '\n';
}

void print_header(ReportOut& r, const FitCall& c, std::string_view formula) {
    std::ostream& out = r.os;
    if (r.record) r.record->model = formula;
    if (c.CURVE == 1) {
        print_rule(out);
        out << "     " << formula << '\n';
    }
    // The words follow the hook's colours: curve 1 black, curve 2 red.
    if (c.CURVE + c.N_CURVES == 3) out << "\n     black line: \n";
    if (c.CURVE + c.N_CURVES == 4) out << "\n     red line: \n";
}

void print_count(ReportOut& r, int ZCOUNT, bool many_form) {
    std::ostream& out = r.os;
    if (r.record) r.record->neglected = ZCOUNT;
    if (ZCOUNT == 1 && !many_form)
        out << "     1 value lower or equal zero is neglected\n";
    else if (ZCOUNT > 1 || many_form)
        out << "     " << fmt_i(ZCOUNT, 5) << " values lower or equal zero are neglected\n";
}

void print_value(ReportOut& r, std::string_view label, double v) {
    r.os << "     " << label << fmt_d(v) << '\n';
    if (!r.record) return;
    // "a   =  " names the value "a".
    std::string_view name = label.substr(0, label.find('='));
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    if (name == "chi squared") r.record->residual = v;
    r.record->values.emplace_back(std::string(name), v);
}

void print_short(ReportOut& r, std::string_view message) {
    r.os << "\n     " << message << '\n';
    if (r.record) r.record->message = message;
}

CurveSlots allocate_curve(FitVariables& fv, int CURVE, int N_FIT) {
    const auto n = static_cast<std::size_t>(N_FIT);
    fv.N_FIT = N_FIT;
    // Curve 2 normally finds X_FIT sized by curve 1, but curve 1 may have
    // failed: size it here so that the abscissae are always our own.
    fv.X_FIT.assign(n, 0.0f);
    std::vector<float>& y = CURVE == 2 ? fv.Y2_FIT : fv.Y1_FIT;
    y.assign(n, 0.0f);
    return {fv.X_FIT, y};
}

void grid_first_to_last(std::span<float> x, std::span<const float> X) {
    const float first = X.front();
    const float D = X.back() - first;
    const float step = 1.0f / static_cast<float>(x.size() - 1);
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<float>(i) * D * step + first;
}

void grid_between(std::span<float> x, double ZMIN, double ZMAX) {
    const double step = 1.0 / static_cast<double>(x.size() - 1);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<float>(static_cast<double>(i) * (ZMAX - ZMIN) * step + ZMIN);
}

void grid_with_margin(std::span<float> x, std::span<const float> X, bool single) {
    const float D = X.back() - X.front();
    const float E = std::fabs(D) * 0.05f;
    if (single) {
        const float S = X.front() - E;
        const float W = 2.0f * E + D;
        const float step = 1.0f / static_cast<float>(x.size() - 1);
        for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<float>(i) * W * step + S;
        return;
    }
    const double S = static_cast<double>(X.front()) - static_cast<double>(E);
    const double W = 2.0 * static_cast<double>(E) + static_cast<double>(D);
    const double step = 1.0 / static_cast<double>(x.size() - 1);
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] = static_cast<float>(static_cast<double>(i) * W * step + S);
}

}  // namespace viewer
