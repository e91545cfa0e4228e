// The power-law profile of the atmospheric boundary layer over homogeneous ground:
//
//   alpha = shear_exponent(z0)
//   Zg    = 550 z0^0.1
//   U     = 10 (h/Zg)^alpha,                           10 above Zg
//   T     = (h/Zg)^-0.05 (1 - 0.7 h/Zg)^(1/4),         0.3^(1/4) above Zg
//   tke   = 0.83 T^2
//
// T is a velocity scale of the turbulence in m/s. All in single precision.

#include "solver/power_law.hpp"

#include <cmath>

namespace torvex {

float gradient_height(float z0) {
    return 550.0F * std::pow(z0, 0.1F);
}

float speed_at(const PowerLaw& law, float h) {
    if (h >= law.Zg) {
        return reference_speed;
    }
    return reference_speed * std::pow(h / law.Zg, law.alpha);
}

float energy_at(const PowerLaw& law, float h) {
    float T = 0.7400828F;
    if (h < law.Zg) {
        const float x = h / law.Zg;
        T = std::pow(x, -0.05F) * std::sqrt(std::sqrt(1.0F - 0.7F * x));
    }
    return 0.83F * (T * T);
}

}  // namespace torvex
