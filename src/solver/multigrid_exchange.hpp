#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"
#include "solver/multigrid_level.hpp"

namespace torvex {

// The coefficients of the faces between cells of a range.
struct FaceCoefficients {
    const Field3& a_e;
    const Field3& a_n;
    const Field3& a_t;
};

// Sums over cells of one slab, or of all.
struct SourceSums {
    double of_values = 0;
    double of_sizes = 0;  // |value|
};

// Slab j of the coefficients of a mesh from those of the range; 0 on its boundary.
void load_faces(const CellRange& cells, const FaceCoefficients& a, int j, MultigridLevel& level);

// Slab j of x, an array of the mesh, from the cells of the range, in single precision.
template <class T>
SourceSums load_cells(const CellRange& cells, const Array3<T>& from, int j,
                      const MultigridLevel& level, Field3& x);

// The cells of slab j of a field from sum = x + factor p; with `add` they are added to what is
// there.
struct Solution {
    const Field3* x;  // nullptr: 0
    const Field3* p;  // nullptr: 0
    float factor;
    bool add;
};
void store_cells(const CellRange& cells, const Solution& solution, int j,
                 const MultigridLevel& level, Field3& to);

}  // namespace torvex
