#pragma once

#include <cstddef>
#include <vector>

#include "base/field.hpp"
#include "solver/row_recurrence.hpp"

namespace torvex {

// One mesh of the multigrid solver, ni*nj*nk cells. Its arrays hold slab after slab of constant j,
// since the lines along k that are solved together belong to one j: i fastest, then k, then j. A
// row (j,k) is `pitch` floats long, the cell i = 1 first; behind the last cell it holds zeros, as
// does the row k = 0 of every slab and the slabs j = 0 and nj+1, so that no loop asks for a
// boundary.
struct MultigridLevel {
    int ni = 0, nj = 0, nk = 0;
    int pitch = 0;

    Field3 ae, an, at;  // coefficients of the east, north and top faces, 0 on the boundary
    Field3 inv;         // inverse pivots of the lines along k
    Field3 r;           // right side
    Field3 z;           // approximate solution

    void allocate(int cells_i, int cells_j, int cells_k);
    // An array of this mesh, zeros.
    void allocate(Field3& x) const { x.allocate(pitch, nk + 1, nj + 2); }
    // Whether a pass over the mesh is worth more than one thread.
    bool shared_out() const;
};

// The first cell of row (j,k); the rows k-1 and k+1 stand `pitch` before and behind it.
inline float* line_row(Field3& x, int j, int k) {
    return &x(1, k + 1, j + 1);
}
inline const float* line_row(const Field3& x, int j, int k) {
    return &x(1, k + 1, j + 1);
}

// Room for the sweeps of one thread over a mesh and the coarser ones behind it: a slab whose row 1
// stands behind zeros, and a row with room at both ends.
class LineScratch {
 public:
    void allocate(const MultigridLevel& finest);
    float* slab() { return slab_.data() + before_; }
    float* row() { return row_.data() + block_cells; }

 private:
    std::vector<float> slab_, row_;
    std::ptrdiff_t before_ = 0;
};

// action(m) for the first cells m = 0, 8, .. of the blocks of a row.
template <class Action>
[[gnu::always_inline]] inline void for_blocks(int cells, Action action) {
    for (int m = 0; m < cells; m += block_cells) {
        action(m);
    }
}

}  // namespace torvex
