// sweep_phi: one point Gauss-Seidel sweep in four colours.
//
//   r   = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1)
//         - ap phi + su
//   res = r,   phi = phi + relax r / ap
//
// reads   ae..ab, ap, su; phi in and beside the range
// writes  phi and res in the range
// order   the colours are the parities of k and j counted from k1 and j1, that of k outermost; i
//         rises within a row. Rows of one colour do not touch each other, so threads change
//         nothing.

#include "solver/sweep_phi.hpp"

#include "solver/seven_point.hpp"

namespace torvex {

void sweep_phi(const CellRange& range, LinearSystem& eq, Field3& phi, float relax) {
    for (int ck = 0; ck <= 1; ++ck) {
        for (int cj = 0; cj <= 1; ++cj) {
#pragma omp parallel for schedule(static)
            for (int k = range.k1 + ck; k <= range.k2; k += 2) {
                for (int j = range.j1 + cj; j <= range.j2; j += 2) {
                    for (int i = range.i1; i <= range.i2; ++i) {
                        const float r = cell_residual(eq, phi, i, j, k);
                        eq.res(i, j, k) = r;
                        phi(i, j, k) += relax * r / eq.ap(i, j, k);
                    }
                }
            }
        }
    }
}

}  // namespace torvex
