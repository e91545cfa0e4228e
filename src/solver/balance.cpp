// BALANCE: the mass imbalance of each cell by direction.
//
//   balXi = den_e flxU(i,j,k) - den_w flxU(i-1,j,k), balEt and balZe alike
//
// reads   fx, fy, fz, den, flxU, flxV, flxW
// writes  balXi, balEt, balZe in 2..nx-1, 2..ny-1, 2..nz-1, 0 elsewhere: the layer of cells along
//         the high boundaries is left out on purpose, the flux correction does not reach it
//
// The sum of the three is the mass imbalance that the pressure correction removes.

#include "solver/balance.hpp"

#include "solver/interpolation.hpp"

namespace torvex {

void BALANCE(const GridGeometry& g, const FlowState& s, Imbalance& balance) {
    for (Field3* field : {&balance.balXi, &balance.balEt, &balance.balZe}) {
        field->allocate(g.ni, g.nj, g.nk);
    }
    const Field3& den = s.den;
#pragma omp parallel for schedule(static)
    for (int k = 2; k <= g.nz - 1; ++k) {
        for (int j = 2; j <= g.ny - 1; ++j) {
#pragma omp simd
            for (int i = 2; i <= g.nx - 1; ++i) {
                balance.balZe(i, j, k) = top(den, g, i, j, k) * s.flxW(i, j, k) -
                                         bottom(den, g, i, j, k) * s.flxW(i, j, k - 1);
                balance.balEt(i, j, k) = north(den, g, i, j, k) * s.flxV(i, j, k) -
                                         south(den, g, i, j, k) * s.flxV(i, j - 1, k);
                balance.balXi(i, j, k) = east(den, g, i, j, k) * s.flxU(i, j, k) -
                                         west(den, g, i, j, k) * s.flxU(i - 1, j, k);
            }
        }
    }
}

}  // namespace torvex
