// Running statistics of the plots along z.
#include "core/statistics.hpp"

#include <cmath>
#include <ostream>

#include "core/fortran_format.hpp"

namespace viewer {

void mami(PlotState& st, int ID, int I, float Z, float Y) {
    const int c = ID - 1;
    if (I == 1) {
        st.ZMAX = st.ZMIN = Z;
        st.MAX_A[c] = st.MIN_A[c] = Y;
        st.MAX_A[c + 2] = st.MIN_A[c + 2] = Z;
        st.AVR[c] = Y;
        return;
    }
    take_max(st.ZMAX, Z);
    take_min(st.ZMIN, Z);
    if (take_max(st.MAX_A[c], Y)) st.MAX_A[c + 2] = Z;
    if (take_min(st.MIN_A[c], Y)) st.MIN_A[c + 2] = Z;
    st.AVR[c] = st.AVR[c] + Y;  // 32-bit sum
}

namespace {

void block(std::ostream& out, float first, float last, float mn, float mn_at, float mx, float mx_at,
           float avr) {
    out << "     beginning:                 " << fmt_d(first) << "\n";
    out << "     end:                       " << fmt_d(last) << "\n";
    out << "     minimum:                   " << fmt_d(mn) << "  at z = " << fmt_d(mn_at) << "\n";
    out << "     maximum:                   " << fmt_d(mx) << "  at z = " << fmt_d(mx_at) << "\n";
    out << "     average:                   " << fmt_d(avr) << "\n";
    out << "\n";
}

}  // namespace

void out_mami(std::ostream& out, PlotState& st, int NP, int ID, const float* Y1, const float* Y2) {
    if (NP < 1) {
        st.MAX_A = {0, 0, 0, 0};
        st.MIN_A = {0, 0, 0, 0};
        return;
    }
    const float f = 1.0f / static_cast<float>(NP);
    st.AVR[0] *= f;
    st.AVR[1] *= f;
    if (ID == 2)
        out << "\n     1: black (horizontal): \n";
    else
        out << "\n       \n";
    block(out, Y1[0], Y1[NP - 1], st.MIN_A[0], st.MIN_A[2], st.MAX_A[0], st.MAX_A[2], st.AVR[0]);
    if (ID == 2) {
        out << "     2: red (vertical): \n";
        block(out, Y2[0], Y2[NP - 1], st.MIN_A[1], st.MIN_A[3], st.MAX_A[1], st.MAX_A[3], st.AVR[1]);
    }
}

void out_mami(Session& s, PlotState& st, int NP, int ID, const float* Y1, const float* Y2) {
    out_mami(s.con.out, st, NP, ID, Y1, Y2);
    if (!s.reports || NP < 1) return;
    const float* y[] = {Y1, Y2};
    for (int c = 0; c < ID; ++c) {
        const auto k = static_cast<std::size_t>(c);
        s.reports->curves.push_back({c + 1, NP, y[k][0], y[k][NP - 1], st.MIN_A[k], st.MIN_A[k + 2],
                                     st.MAX_A[k], st.MAX_A[k + 2], st.AVR[k]});
    }
}

void check(float& UPPER, float& LOWER) {
    // A bound that is not finite takes the other one, or zero, and the
    // range then opens as an empty one.
    if (!std::isfinite(UPPER)) UPPER = std::isfinite(LOWER) ? LOWER : 0.0f;
    if (!std::isfinite(LOWER)) LOWER = UPPER;
    if (UPPER != LOWER) return;
    if (UPPER == 0.0f) {
        UPPER = 0.1f;
        LOWER = -0.1f;
    } else {
        const float v = UPPER;
        UPPER = 1.1f * v;
        LOWER = 0.9f * v;
    }
}

}  // namespace viewer
