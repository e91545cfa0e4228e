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

#include "solver/chained_sums.hpp"
#include "solver/constants.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/plane_sums.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

// |r| and, if asked for, |ap phi| of n cells from (i,j,k) on.
template <bool skip_pinned, bool with_scale>
void cell_terms(const LinearSystem& eq, const Field3& phi, int i, int j, int k, int n, float* r,
                float* scale) {
    const CoefficientRow c = coefficient_row(eq, i, j, k);
    const FieldRows x = field_rows(phi, i, j, k);
    const double* su = &eq.su(i, j, k);
    const double* sp = &eq.sp(i, j, k);
    fetch_rows_ahead(n, c.ae, c.aw, c.an, c.as, c.at, c.ab, c.ap, x.top, su);
    if constexpr (skip_pinned) {
        fetch_rows_ahead(n, sp);
    }
    constexpr float pin = -static_cast<float>(BIG);
#pragma omp simd
    for (int m = 0; m < n; ++m) {
        const float diagonal = c.ap[m] * x.c[m];
        const auto rest = static_cast<float>(static_cast<double>(c.neighbours(x, m)) + su[m] -
                                             static_cast<double>(diagonal));
        if constexpr (with_scale) {
            scale[m] = std::abs(diagonal);
        }
        if constexpr (skip_pinned) {
            r[m] = static_cast<float>(sp[m]) == pin ? 0.0F : std::abs(rest);
        } else {
            r[m] = std::abs(rest);
        }
    }
}

template <bool skip_pinned>
float sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    return chained_sum(cells, [&](int i, int j, int k, int n, float* r) {
        cell_terms<skip_pinned, false>(eq, phi, i, j, k, n, r, nullptr);
    });
}

}  // namespace

float residual_sum(const CellRange& cells, const LinearSystem& eq, const Field3& phi,
                   Pinned pinned) {
    return pinned == Pinned::skip ? sum<true>(cells, eq, phi) : sum<false>(cells, eq, phi);
}

std::optional<float> residual_sum_below(const CellRange& cells, const LinearSystem& eq,
                                        const Field3& phi, float ratio, float r0) {
    constexpr int stretch = 256;
    const auto is_below = [=](float r1) { return ratio > r1 / r0; };
    // The first plane in the order of the whole sum.
    float part = 0;
    for (int j = cells.j1; j <= cells.j2 && cells.k1 <= cells.k2; ++j) {
        for (int i = cells.i1; i <= cells.i2; i += stretch) {
            alignas(64) float r[stretch];
            const int n = std::min(stretch, cells.i2 - i + 1);
            cell_terms<true, false>(eq, phi, i, j, cells.k1, n, r, nullptr);
            for (int m = 0; m < n; ++m) {
                part += r[m];
            }
        }
        if (!is_below(part)) {
            return std::nullopt;
        }
    }
    const float r1 = residual_sum(cells, eq, phi, Pinned::skip);
    return is_below(r1) ? std::optional(r1) : std::nullopt;
}

EquationSums equation_sums(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    constexpr int stretch = 256;
    const auto [residual, scale] = plane_sums<2>(cells, [&](int k) {
        alignas(64) float r[stretch];
        alignas(64) float of_phi[stretch];
        std::array<float, 2> sums{};
        for (int j = cells.j1; j <= cells.j2; ++j) {
            for (int i = cells.i1; i <= cells.i2; i += stretch) {
                const int n = std::min(stretch, cells.i2 - i + 1);
                cell_terms<true, true>(eq, phi, i, j, k, n, r, of_phi);
                for (int m = 0; m < n; ++m) {
                    sums[0] += r[m];
                    sums[1] += of_phi[m];
                }
            }
        }
        return sums;
    });
    return {residual, scale};
}

}  // namespace torvex
