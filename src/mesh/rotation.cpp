#include "mesh/rotation.hpp"

#include <cmath>

namespace torvex {

MeshRotation mesh_rotation(float wind_direction) {
    constexpr float pi = 3.1415927F;
    const float degrees = 90.0F + wind_direction;
    const float a = degrees * pi / 180.0F;
    MeshRotation rotation{std::sin(a), std::cos(a)};
    if (degrees == 90.0F || degrees == 270.0F) {
        rotation.c = 0.0F;
    }
    return rotation;
}

}  // namespace torvex
