#pragma once

#include <cstdint>
#include <vector>

#include "canopy/shape/shape_file.hpp"
#include "canopy/shape/shape_table.hpp"

namespace torvex {

// What the table says of an entity's height.
enum class HeightState : std::uint8_t {
    unasked,  // nothing: the set names no column
    missing,  // the row has none
    given
};

// A polygon with its attributes: rings of points, one behind the other.
struct ShapeEntity {
    int number = 0;  // in the file, from 0
    ShapeBox box;    // as the file has it, scaled
    std::vector<int> part_start;
    std::vector<double> x, y;  // scaled; in the file's axes until they are converted

    HeightState height_state = HeightState::unasked;
    double height = 0;  // in metres, where given
    TableNumber pd;     // packing density [-]
    TableNumber rls;    // length [m]
    TableNumber cf;     // drag coefficient [-]
    TableNumber z0;     // roughness length [m]
    TableNumber z0org;  // [m]
    TableNumber luid;   // land-use id

    int parts() const { return static_cast<int>(part_start.size()); }
    // Points of ring n, from 0, are first(n) .. end(n) - 1.
    std::size_t first(int n) const {
        return static_cast<std::size_t>(part_start[static_cast<std::size_t>(n)]);
    }
    std::size_t end(int n) const { return n + 1 < parts() ? first(n + 1) : x.size(); }
};

}  // namespace torvex
