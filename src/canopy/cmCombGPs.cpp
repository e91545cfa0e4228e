#include "canopy/cmCombGPs.hpp"

#include <algorithm>

namespace torvex {

CanopyCell combined(const CanopyCell& one, const CanopyCell& other) {
    if (one.phi == 0) {
        return other.phi == 0 ? CanopyCell{} : other;
    }
    if (other.phi == 0) {
        return one;
    }
    const auto phi1 = static_cast<double>(one.phi);
    const auto phi2 = static_cast<double>(other.phi);
    const double drag1 = static_cast<double>(one.cf) * phi1;
    const double drag2 = static_cast<double>(other.cf) * phi2;
    const auto length1 = static_cast<double>(one.length);
    const auto length2 = static_cast<double>(other.length);
    const double phi = std::min(1.0, phi1 + phi2);
    const double cf = (drag1 + drag2) / (phi1 + phi2);
    const double per_length =
        (length1 > 0 ? drag1 / length1 : 0) + (length2 > 0 ? drag2 / length2 : 0);
    const double length =
        per_length > 0 ? cf * phi / per_length : (length1 * phi1 + length2 * phi2) / (phi1 + phi2);
    return {static_cast<float>(cf), static_cast<float>(phi), static_cast<float>(length)};
}

void cmCombGPs(const GridParameters& gp, CanopyRecords& records) {
    for (int k = 1; k <= gp.gp_density.nk(); ++k) {
        for (int j = 2; j <= gp.gp_density.nj(); ++j) {
            for (int i = 2; i <= gp.gp_density.ni(); ++i) {
                float& cf = records.gp_cf(i, j, k + 1);
                float& phi = records.gp_density(i, j, k + 1);
                float& length = records.gp_length(i, j, k + 1);
                const CanopyCell both =
                    combined({cf, phi, length},
                             {gp.gp_cf(i, j, k), gp.gp_density(i, j, k), gp.gp_length(i, j, k)});
                cf = both.cf;
                phi = both.phi;
                length = both.length;
            }
        }
    }
}

}  // namespace torvex
