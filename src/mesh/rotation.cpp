#include "mesh/rotation.hpp"

#include <cmath>

namespace torvex {

MeshRotation roughness_rotation(float wind_direction) {
    constexpr float pi = 3.1415927F;
    const float a = (90.0F + wind_direction) * pi / 180.0F;
    return {std::sin(a), std::cos(a)};
}

MeshRotation mesh_rotation(float wind_direction) {
    const float degrees = 90.0F + wind_direction;
    MeshRotation rotation = roughness_rotation(wind_direction);
    if (degrees == 90.0F || degrees == 270.0F) {
        rotation.c = 0.0F;
    }
    return rotation;
}

}  // namespace torvex
