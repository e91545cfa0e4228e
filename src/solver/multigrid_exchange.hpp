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

// Slab j of x, an array of the mesh, becomes the cells of the range in single precision; their
// sums.
template <class T>
SourceSums load_cells(const CellRange& cells, const Array3<T>& from, int j,
                      const MultigridLevel& level, Field3& x);

// x + factor p, arrays of the mesh; nullptr stands for 0.
struct Solution {
    const Field3* x;
    const Field3* p;
    float factor;
};

// The cells of the range in slab j become the solution, or gain it.
enum class Storing { assign, add };
void store_cells(const CellRange& cells, const Solution& solution, Storing storing, int j,
                 const MultigridLevel& level, Field3& to);

}  // namespace torvex
