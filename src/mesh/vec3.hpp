#pragma once

#include <cmath>

namespace torvex {

// A position or an area vector in the axes of the mesh, in single precision.
struct Vec3 {
    float x, y, z;
};

inline Vec3 operator-(const Vec3& p, const Vec3& q) {
    return {p.x - q.x, p.y - q.y, p.z - q.z};
}

// Sums run from x to z: other orders would change last bits.
inline float dot(const Vec3& p, const Vec3& q) {
    return p.x * q.x + p.y * q.y + p.z * q.z;
}

inline Vec3 cross(const Vec3& p, const Vec3& q) {
    return {p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x};
}

inline float length(const Vec3& p) {
    return std::sqrt(dot(p, p));
}

}  // namespace torvex
