#pragma once

#include <cmath>

namespace torvex {

// The exponent of the power-law wind profile over level ground of the roughness length z0 [m],
// above 0, in single precision:
//
//   alpha = 0.27 + 0.09 L + 0.018 L^2 + 0.0016 L^3,   L = log10(z0)
//
// a fit in powers of L, the form that Counihan (1975) gave it. It rises with z0 everywhere. The
// inflow takes it, and the search for the roughness of a given exponent inverts it.
inline float shear_exponent(float z0) {
    const float L = std::log10(z0);
    return 0.27F + 0.09F * L + 0.018F * (L * L) + 0.0016F * (L * (L * L));
}

}  // namespace torvex
