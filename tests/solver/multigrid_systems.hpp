#pragma once

#include <functional>

#include "base/field.hpp"
#include "solver/multigrid.hpp"
#include "solver/multigrid_cycle.hpp"
#include "solver/reference/plain_multigrid.hpp"

namespace torvex {

// Face coefficients and source of a pressure correction over ni*nj*nk cells, in arrays with their
// boundary indices: cell (i,j,k) of the mesh stands at (i+1,j+1,k+1).
struct FaceCase {
    FaceCase(int ni_, int nj_, int nk_);

    FaceSystem system() const { return {a_e, a_n, a_t, su}; }
    // su = A x, and the residual su - A x summed in absolute value, in double precision.
    void manufacture(const Field3& x);
    double residual(const Field3& x) const;
    double source() const;  // sum of |su|

    int ni, nj, nk;
    Field3 a_e, a_n, a_t, su;
};

// Coefficients in i, j and k times numbers spread evenly in their logarithm from 1 to `contrast`;
// sources of both signs that add up to 0, or nearly.
struct Along {
    float i = 1, j = 1, k = 1;
};
FaceCase random_faces(int ni, int nj, int nk, const Along& along, float contrast, unsigned seed);

// The cell numbers of a field that a formula gives.
Field3 field_of(const FaceCase& c, const std::function<double(int i, int j, int k)>& x);

// The same system as slabs and plainly, r = su.
MultigridMeshes slabs_of(const FaceCase& c);
plain::Mesh plain_of(const FaceCase& c);

}  // namespace torvex
