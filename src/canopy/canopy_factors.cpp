// What the canopy terms need to know of a cell, from its drag coefficient Cf, its packing density
// phi and its length measure L:
//
//   gp_d = 0.5 Cf phi/(L + 1e-10)
//
//   gp_k = min(beta_d, alphak1 + alphak2 exp((1 - phi)/(phi + 1e-10)))   src_included_model and
//                                                                        phi > 0.1
//   gp_k = beta_d                                                        otherwise
//
//   gp_e = f gp_k
//   f    = alphae2 + alphae1 phi                                         0 <= phi <= r1max
//   f    = alphae4 + alphae3 sqrt(sin(pi/2 (phi - r1max)/(1 - r1max)))   r1max < phi <= r2max
//   f    = cpe1                                                          otherwise
//
// All in single precision. The 1e-10 m keeps an empty cell, L = 0 and phi = 0, at a drag of 0.

#include "canopy/canopy_factors.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace torvex {

namespace {

constexpr float least_length = 1.0e-10F;
constexpr float least_density = 1.0e-10F;
constexpr float dense = 0.1F;  // where the density form of gp_k begins

float ratio_to_tke(const CanopyParameters& p, float density) {
    if (density >= 0.0F && density <= p.r1max) {
        return p.alphae2 + density * p.alphae1;
    }
    if (density > p.r1max && density <= p.r2max) {
        constexpr float quarter_turn = std::numbers::pi_v<float> * 0.5F;
        const float share = (density - p.r1max) * quarter_turn / (1.0F - p.r1max);
        return std::sqrt(std::sin(share)) * p.alphae3 + p.alphae4;
    }
    return p.cpe1;
}

}  // namespace

float drag_density(float cf, float density, float length) {
    return 0.5F * cf * density / (length + least_length);
}

float tke_dissipation_factor(const CanopyParameters& p, float density) {
    if (!p.src_included_model || !(density > dense)) {
        return p.beta_d;
    }
    const float open = std::exp((1.0F - density) / (density + least_density));
    return std::min(p.beta_d, open * p.alphak2 + p.alphak1);
}

float ted_dissipation_factor(const CanopyParameters& p, float density) {
    return ratio_to_tke(p, density) * tke_dissipation_factor(p, density);
}

}  // namespace torvex
