#pragma once

namespace torvex {

// A point on the map, from the case centre.
struct MapPoint {
    float X = 0;  // metres east of the case centre
    float Y = 0;  // and north
};

// How the mesh of one wind direction lies on the map: x points where the wind blows to, y to the
// left of it. In single precision.
struct MeshRotation {
    float s = 0;  // sine and cosine of 90 degrees plus the wind direction
    float c = 0;

    MapPoint on_map(float x, float y) const { return {c * x + s * y, c * y - s * x}; }
};

// The rotation for a wind from `wind_direction` [deg]. The cosine is made exactly 0 for winds from
// 0 and 180 degrees; the small residues at the other quarter turns stand, so that meshes keep their
// bits from one version to the next. centre_rotation (maps/centre_rotation.hpp), in which a study
// area and its sites are laid out, turns by the wind less 270 degrees and is exact at 360 instead:
// in single precision the two differ in their last bits, and each file keeps those it always had.
MeshRotation mesh_rotation(float wind_direction);

// The rotation with which cell centres are laid on the roughness maps: the small residue of every
// cosine stands, as in the fields of earlier runs.
MeshRotation roughness_rotation(float wind_direction);

}  // namespace torvex
