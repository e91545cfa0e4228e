#include "roughness/alpha2z0.hpp"

#include <cmath>

namespace torvex {

float alpha_of_z0(float z0) {
    const float L = std::log10(z0);
    return 0.09F * L + 0.27F + 0.018F * (L * L) + 0.0016F * (L * L * L);
}

AlphaStatus alpha2z0(float target, const AlphaSearch& search, float& z0_out,
                     std::vector<AlphaRound>& rounds) {
    const bool usable = search.z0_min <= search.z0_max && search.z0_max > 0.0F &&
                        std::isfinite(search.z0_min) && std::isfinite(search.z0_max);
    if (!usable) {
        return AlphaStatus::bad_bracket;
    }
    z0_out = 0.0F;
    float lo = search.z0_min;
    float hi = search.z0_max;
    for (int it = 1; it <= search.maxit; ++it) {
        const float mid = (hi + lo) * 0.5F;
        const float alpha = alpha_of_z0(mid);
        const float e = alpha - target;
        rounds.push_back({.it = it,
                          .lo = lo,
                          .hi = hi,
                          .mid = mid,
                          .alpha = alpha,
                          .target = target,
                          .error = std::abs(e),
                          .eps = search.eps,
                          .alpha_lo = alpha_of_z0(lo),
                          .alpha_hi = alpha_of_z0(hi)});
        z0_out = mid;
        if (search.eps >= std::abs(e)) {
            return AlphaStatus::converged;
        }
        float& end = e >= 0.0F ? hi : lo;
        if (end == mid) {
            break;
        }
        end = mid;
    }
    return AlphaStatus::not_converged;
}

}  // namespace torvex
