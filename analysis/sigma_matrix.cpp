// Coupling measures of the sigma matrix, in 64 bits up to the plotted value.
#include "analysis/sigma_matrix.hpp"

#include <cmath>

namespace viewer {

SigmaMatrix sigma_of_upper(std::span<const double, 21> upper) {
    SigmaMatrix S{};
    std::size_t k = 0;
    for (std::size_t i = 0; i < 6; ++i)
        for (std::size_t j = i; j < 6; ++j) S[i][j] = S[j][i] = upper[k++];
    return S;
}

double cross_determinant(const SigmaMatrix& S) {
    return S[0][2] * S[1][3] - S[0][3] * S[1][2];
}

double determinant4(const SigmaMatrix& S) {
    const double S11 = S[0][0], S12 = S[0][1], S13 = S[0][2], S14 = S[0][3];
    const double S22 = S[1][1], S23 = S[1][2], S24 = S[1][3];
    const double S33 = S[2][2], S34 = S[2][3], S44 = S[3][3];
    const double C = cross_determinant(S);
    return C * C + (S11 * S22 - S12 * S12) * (S33 * S44 - S34 * S34) +
           (S11 * S24 - S14 * S12) * (S34 * S23 - S33 * S24) +
           (S22 * S14 - S24 * S12) * (S34 * S13 - S33 * S14) +
           (S22 * S13 - S23 * S12) * (S14 * S34 - S44 * S13) +
           (S11 * S23 - S13 * S12) * (S34 * S24 - S44 * S23);
}

CouplingPoint coupling_point(const SigmaMatrix& S, int SELECTION) {
    switch (SELECTION) {
        case 1: {
            const double DET = determinant4(S);
            if (!(DET > 0.0)) return {};
            return {1e12f * static_cast<float>(std::sqrt(DET)), 0.0f};
        }
        case 2: {
            const float C = static_cast<float>(cross_determinant(S));
            return {1e6f * std::sqrt(std::fabs(C)), 0.0f};
        }
        case 3:
            return {static_cast<float>((S[0][3] - S[1][2]) / 2.0),
                    static_cast<float>((S[0][2] - S[1][3]) / 2.0)};
        case 4:
            return {static_cast<float>(S[0][0] + S[1][1] + S[2][2] + S[3][3]), 0.0f};
        default:
            return {};
    }
}

const CouplingLabels* coupling_labels(int SELECTION) {
    static constexpr CouplingLabels kLabels[] = {
        {false, "\\ge \\gp \\fimrad\\u2\\d mm\\u2 ", "4D Emittance x-y"},
        {false, "\\ge \\gp \\fimrad mm ", "Coupling Emittance x-y"},
        {true, " m / rad", "Angular Momentum & Coupling Angle x-y"},
        {false, "", "Trace x-y"},
    };
    if (SELECTION < 1 || SELECTION > 4) return nullptr;
    return &kLabels[SELECTION - 1];
}

}  // namespace viewer
