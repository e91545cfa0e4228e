#pragma once

#include "base/field.hpp"

namespace torvex {

// The seven-point system of one variable phi:
//
//   ap phi = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1) + su
//
// All neighbour coefficients are positive. sp is the implicit source, added to ap with its sign
// reversed; -BIG in it pins a cell to su/BIG. Every equation rewrites the system.
struct LinearSystem {
    Field3 ae, aw, an, as, at, ab;  // towards i+1, i-1, j+1, j-1, k+1, k-1   ni*nj*nk
    Field3 ap;                      // central coefficient                    ni*nj*nk
    Array3<double> su, sp;          // explicit and implicit source           ni*nj*nk
    Field3 res;                     // residual of the last sweep             ni*nj*nk
};

// Where the sources of an equation go: those of a system, or others that share its matrix.
struct Sources {
    Array3<double>& su;
    Array3<double>& sp;
};
// The system's own.
inline Sources sources_of(LinearSystem& eq) {
    return {.su = eq.su, .sp = eq.sp};
}

// Inclusive ranges of cells; the interior is 2..nx, 2..ny, 2..nz.
struct CellRange {
    int i1 = 2, j1 = 2, k1 = 2;
    int i2 = 0, j2 = 0, k2 = 0;
};

}  // namespace torvex
