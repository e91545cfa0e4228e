#pragma once

#include "base/shear_exponent.hpp"

namespace torvex {

inline constexpr float reference_speed = 10.0F;  // speed at and above the gradient height [m/s]

// The inflow over ground of one roughness: exponent of the profile and height above which the wind
// is uniform.
struct PowerLaw {
    float alpha = 0;  // shear exponent [-]
    float Zg = 0;     // gradient height [m]
};

float gradient_height(float z0);  // [m], of the roughness length z0 [m], above 0

// At height h above ground [m], which must be above 0: the speed [m/s], and the energy of the
// turbulence [m2/s2], which grows without bound towards the ground.
float speed_at(const PowerLaw& law, float h);
float energy_at(const PowerLaw& law, float h);

}  // namespace torvex
