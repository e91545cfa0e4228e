// Residual sums of an equation, the measure of its convergence:
//
//   r = ae phi(i+1) + aw phi(i-1) + an phi(j+1) + as phi(j-1) + at phi(k+1) + ab phi(k-1)
//       + su - ap phi
//
// The six products are summed in single precision, su and the product ap phi join in double
// precision. |r| and |ap phi| are summed in single precision in the order k, j, i, a plane at a
// time.
//
// reads   ae..ab, ap, su, sp, phi in and beside the range

#include "solver/residual_sum.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "solver/constants.hpp"
#include "solver/plane_sums.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

constexpr int stretch = 512;

// |r| and ap phi of n cells from (i,j,k) on.
template <bool skip_pinned>
void cell_terms(const LinearSystem& eq, const Field3& phi, int i, int j, int k, int n, float* r,
                float* scale) {
    const CoefficientRow c = coefficient_row(eq, i, j, k);
    const FieldRows x = field_rows(phi, i, j, k);
    const double* su = &eq.su(i, j, k);
    const double* sp = &eq.sp(i, j, k);
    constexpr float pin = -static_cast<float>(BIG);
#pragma omp simd
    for (int m = 0; m < n; ++m) {
        const float diagonal = c.ap[m] * x.c[m];
        const auto rest = static_cast<float>(static_cast<double>(c.neighbours(x, m)) + su[m] -
                                             static_cast<double>(diagonal));
        scale[m] = std::abs(diagonal);
        if constexpr (skip_pinned) {
            r[m] = static_cast<float>(sp[m]) == pin ? 0.0F : std::abs(rest);
        } else {
            r[m] = std::abs(rest);
        }
    }
}

template <bool skip_pinned, bool with_scale>
std::array<float, 2> sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    return plane_sums<2>(cells, [&](int k) {
        alignas(64) float r[stretch];
        alignas(64) float scale[stretch];
        std::array<float, 2> sum{};
        for (int j = cells.j1; j <= cells.j2; ++j) {
            for (int i = cells.i1; i <= cells.i2; i += stretch) {
                const int n = std::min(stretch, cells.i2 - i + 1);
                cell_terms<skip_pinned>(eq, phi, i, j, k, n, r, scale);
                for (int m = 0; m < n; ++m) {
                    sum[0] += r[m];
                    if constexpr (with_scale) {
                        sum[1] += scale[m];
                    }
                }
            }
        }
        return sum;
    });
}

}  // namespace

float residual_sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                   Pinned pinned) {
    return pinned == Pinned::skip ? sums<true, false>(cells, eq, phi)[0]
                                  : sums<false, false>(cells, eq, phi)[0];
}

EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    const auto [residual, scale] = sums<true, true>(cells, eq, phi);
    return {residual, scale};
}

}  // namespace torvex
