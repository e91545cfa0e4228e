#pragma once

#include <cstdint>
#include <vector>

#include "base/field.hpp"
#include "canopy/ring_mod.hpp"

namespace torvex {

// How the pieces of a set become grid parameters.
enum class CanopyMethod : std::uint8_t { LU = 1, ZEN = 2 };

// What a polygon stands for as a canopy.
struct CanopyAttributes {
    float h = 0;      // height [m]
    float pd = 0;     // packing density inside the outline [-]
    float rls = 0;    // representative length scale [m]
    float cf = 0;     // drag coefficient [-]
    float z0 = 0;     // roughness length of the ground below [m]
    float z0org = 0;  // the same before any change [m]
    int luid = 0;     // land-use id
    int number = 0;   // of the entity in its file, from 0
    CanopyMethod method = CanopyMethod::LU;
};

// A polygon in the mesh frame of a wind direction: rings of points, one behind the other.
struct CanopyEntity {
    CanopyAttributes attributes;
    double outline_area = 0;      // inside the outer rings, holes and all [m2]
    std::vector<int> part_start;  // of the rings, from 0
    std::vector<double> x, y;     // [m]
};

// What of an entity lies in a column.
struct CanopyPiece {
    CanopyAttributes attributes;
    int entity = 0;       // its place in the list of entities, from 0
    double fraction = 0;  // of the column's area [-]
    double area = 0;      // [m2]
};

// The pieces of every column of the mesh. Cell (i,j), 2..nx and 2..ny, lies between the node lines
// i-1 and i, j-1 and j.
struct ColumnLists {
    int nx = 0, ny = 0;
    std::vector<Ring<CanopyPiece>> lists;
    Array2<double> sums;  // area of all pieces that a column was ever given [m2]

    ColumnLists() = default;
    ColumnLists(int nx_, int ny_)
        : nx(nx_),
          ny(ny_),
          lists(static_cast<std::size_t>(nx_) * static_cast<std::size_t>(ny_)),
          sums(nx_, ny_) {}

    Ring<CanopyPiece>& at(int i, int j) { return lists[index(i, j)]; }
    const Ring<CanopyPiece>& at(int i, int j) const { return lists[index(i, j)]; }

 private:
    std::size_t index(int i, int j) const {
        return static_cast<std::size_t>(i - 1) +
               static_cast<std::size_t>(nx) * static_cast<std::size_t>(j - 1);
    }
};

}  // namespace torvex
