#pragma once

#include <cmath>

namespace torvex {

// How places round the case centre lie in the frame of a wind direction, in single precision:
// x = E c - N s downwind, y = E s + N c to the left of the wind; at 270 degrees exactly east and
// north.
struct CentreRotation {
    float s = 0;
    float c = 0;
};

// For the direction that the wind comes from [deg].
inline CentreRotation centre_rotation(float wind_direction) {
    constexpr float pi = 3.1415927F;
    const float theta = wind_direction - 270.0F;
    const float r = pi * theta / 180.0F;
    // Only these two angles are cleaned of the rounding of pi; the others keep what is left of it.
    return {std::sin(r), theta == 90.0F || theta == 270.0F ? 0.0F : std::cos(r)};
}

}  // namespace torvex
