#include "roughness/alpha2z0.hpp"

#include <cmath>

#include "base/shear_exponent.hpp"

namespace torvex {

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
        const float alpha = shear_exponent(mid);
        const float e = alpha - target;
        rounds.push_back({.it = it,
                          .lo = lo,
                          .hi = hi,
                          .mid = mid,
                          .alpha = alpha,
                          .target = target,
                          .error = std::abs(e),
                          .eps = search.eps,
                          .alpha_lo = shear_exponent(lo),
                          .alpha_hi = shear_exponent(hi)});
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
