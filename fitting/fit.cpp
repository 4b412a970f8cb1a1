// The dispatcher from a fit pick to its routine, and the hook by which a
// plot offers the fit and draws what it leaves in `fit_variables`.
#include "fitting/fit.hpp"

#include "fitting/closed_form_fits.hpp"
#include "fitting/iterative_fits.hpp"
#include "fitting/reference_curves.hpp"

namespace viewer {

void fit(Session& s, int ID_F, int CURVE, int N_CURVES, int NP, const float* X, const float* Y) {
    FitCall c{CURVE, N_CURVES, NP, X, Y};
    if (s.reports && ID_F >= 1 && ID_F <= 11) {
        FitReport& r = s.reports->fits.emplace_back();
        r.curve = CURVE;
        r.pick = ID_F;
        r.model = fit_menu_label(ID_F);  // the formula takes its place once printed
        c.record = &r;
    }
    switch (ID_F) {
        case 1:
            aoverr(s, c);
            break;
        case 2:
            square_root(s, c);
            break;
        case 3:
            straight(s, c);
            break;
        case 4:
            parabolic(s, c);
            break;
        case 5:
            power(s, c);
            break;
        case 6:
            exponential(s, c);
            break;
        case 7:
            mod_exponential(s, c);
            break;
        case 8:
            pol_3rd(s, c);
            break;
        case 9:
            odd_pol(s, c);
            break;
        case 10:
            gauss_fit(s, c);
            break;
        case 11:
            dgauss_fit(s, c);
            break;
        case 16:
            get_ref(s, CURVE, N_CURVES);
            break;
        case 17:
            store(s, c);
            break;
        case 18:
            s.logo.FIT_REQUESTED = false;
            s.fit_variables.N_FIT = 0;
            break;
        default:
            break;  // 0 (no cursor) and the blank slots 12..15
    }
}

namespace {

// Nothing of a fit outlives the hook, also when a prompt ends the session
// in the middle of it.
struct ReleaseAtEnd {
    Session& s;
    ~ReleaseAtEnd() {
        s.fit_variables.release();
        s.ref.store_file.reset();
    }
};

// True when X_FIT and `y` both hold the N_FIT points to draw: after a failed
// first curve only the second one's ordinates exist.
bool drawable(const FitVariables& fv, const std::vector<float>& y) {
    const auto n = static_cast<std::size_t>(fv.N_FIT);
    return fv.N_FIT > 0 && fv.X_FIT.size() >= n && y.size() >= n;
}

}  // namespace

void fit_hook(Session& s, int& ID_F, int NP, const float* X, std::initializer_list<const float*> Y,
              FitStyle style) {
    if (!s.logo.FIT_REQUESTED) return;
    ReleaseAtEnd release{s};
    FitVariables& fv = s.fit_variables;
    fv.release();  // a curve is only ever the one of this pass
    // A hardcopy repeats the saved pick without showing the menu.
    if (s.FIT_PICK > 0) ID_F = s.FIT_PICK;
    if (!s.logo.TO_FILE) fit_menu(s, ID_F);
    const int n_curves = Y.size() >= 2 ? 2 : 1;
    fit(s, ID_F, 1, n_curves, NP, X, Y.size() ? *Y.begin() : nullptr);
    if (n_curves == 2) fit(s, ID_F, 2, 2, NP, X, *(Y.begin() + 1));

    Graphics& pg = s.pg;
    LayerScope layer(pg, Layer::fit);
    DrawBracket bracket(pg);
    pg.pgsci(style.first_colour);
    if (style.dashed) pg.pgsls(2);
    if (drawable(fv, fv.Y1_FIT)) pg.pgline(fv.N_FIT, fv.X_FIT.data(), fv.Y1_FIT.data());
    if (n_curves == 2) {
        pg.pgsci(2);
        if (drawable(fv, fv.Y2_FIT)) pg.pgline(fv.N_FIT, fv.X_FIT.data(), fv.Y2_FIT.data());
    }
    pg.pgsls(1);
}

}  // namespace viewer
