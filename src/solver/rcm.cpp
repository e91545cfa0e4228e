// RCM: the residual cutting method. Each cycle n, with r the residual of phi:
//
//   1  d_1 = an approximate solution of A d = r by seven sweeps of SIP; the corrections of the last
//      cycles are d_2..d_m, m = min(L, n)
//   2  image_a = A d_a, with A d = ap d - (ae d(i+1) + aw d(i-1) + ... + ab d(k-1))
//   3  gram(a,b) = sum image_a image_b, rhsL(a) = sum image_a r; beta from lsq_weights
//   4  phi = phi + sum beta_a d_a
//   5  r1 = sum |r|, a = r1 / r0; done when 0.1 > a
//
// reads   ae..ab, ap, su, phi beside the range
// writes  phi in the range; work
// plain   tests/solver/plain_solvers: plain_rcm
//
// All sums are in single precision, by planes. Sums that have not changed are kept: the images of
// the older corrections, their products, the factors of SIP and the residual, which is the right
// side of the next cycle. With r0 = 0, a is not a number and every cycle runs.

#include "solver/rcm.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

#include "base/assertion.hpp"
#include "solver/fetch_ahead.hpp"
#include "solver/lane_sum.hpp"
#include "solver/lsq_weights.hpp"
#include "solver/plane_sums.hpp"
#include "solver/sip.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

namespace {

// work.rhs = r; the sum of |r|.
float residual(const CellRange& cells, const Field3& phi, const LinearSystem& eq, RcmWork& work) {
    return plane_sums<1>(cells, [&](int k) {
        std::array<LaneSum, 1> sum;
        for (int j = cells.j1; j <= cells.j2; ++j) {
            const CoefficientRow c = coefficient_row(eq, cells.i1, j, k, work.matrix);
            const FieldRows x = field_rows(phi, cells.i1, j, k);
            const double* su = &eq.su(cells.i1, j, k);
            float* r = &work.rhs(cells.i1, j, k);
            rising_cells(cells_i(cells), [&]<class V>(V, int m) {
                fetch_ahead(m, c, x.top, su, r);
                const V rest = add_wide(c.products<V>(x, m), load_wide<V>(su + m));
                store(r + m, rest);
                sum[0].add(magnitude(rest), m);
            });
        }
        return totals(sum);
    })[0];
}

// The image of the newest correction, and its products with the M images and with the residual:
// gram(1,a), then rhsL(a), for a = 1..M.
template <std::size_t M>
std::array<float, 2 * M> image_and_products(const CellRange& cells, const LinearSystem& eq,
                                            RcmWork& work) {
    return plane_sums<2 * M>(cells, [&](int k) {
        std::array<LaneSum, 2 * M> sum;
        for (int j = cells.j1; j <= cells.j2; ++j) {
            const CoefficientRow c = coefficient_row(eq, cells.i1, j, k, work.matrix);
            const FieldRows d = field_rows(work.correction[0], cells.i1, j, k);
            const float* r = &work.rhs(cells.i1, j, k);
            std::array<float*, M> image;
            for (std::size_t a = 0; a < M; ++a) {
                image[a] = &work.image[a](cells.i1, j, k);
            }
            rising_cells(cells_i(cells), [&]<class V>(V, int m) {
                fetch_ahead(m, c, d.top, r);
                const V newest = load<V>(c.ap + m) * load<V>(d.c + m) - c.neighbours<V>(d, m);
                store(image[0] + m, newest);
                for (std::size_t a = 0; a < M; ++a) {
                    fetch_ahead(m, image[a]);
                    const V of_image = a == 0 ? newest : load<V>(image[a] + m);
                    sum[a].add(of_image * newest, m);
                    sum[M + a].add(of_image * load<V>(r + m), m);
                }
            });
        }
        return totals(sum);
    });
}

template <std::size_t M>
void least_squares(const CellRange& cells, const LinearSystem& eq, RcmWork& work,
                   LeastSquares& system) {
    const std::array<float, 2 * M> products = image_and_products<M>(cells, eq, work);
    constexpr int m = M;
    for (int a = m; a > 1; --a) {
        for (int b = m; b > 1; --b) {
            system.gram(a, b) = system.gram(a - 1, b - 1);
        }
    }
    for (int a = 1; a <= m; ++a) {
        const auto at = static_cast<std::size_t>(a - 1);
        system.gram(1, a) = products[at];
        system.gram(a, 1) = products[at];
        system.rhsL(a) = products[M + at];
    }
}

void least_squares(int m, const CellRange& cells, const LinearSystem& eq, RcmWork& work,
                   LeastSquares& system) {
    switch (m) {
        case 1:
            return least_squares<1>(cells, eq, work, system);
        case 2:
            return least_squares<2>(cells, eq, work, system);
        case 3:
            return least_squares<3>(cells, eq, work, system);
        default:
            return least_squares<4>(cells, eq, work, system);
    }
}

void add_corrections(int m, const CellRange& cells, const LeastSquares& system, const RcmWork& work,
                     Field3& phi) {
    const int n = cells_i(cells);
    // A weight of 0 for the corrections that are not there yet, whose fields are read all the same.
    std::array<float, stored_corrections> beta{};
    std::array<const Field3*, stored_corrections> d{};
    for (int a = 1; a <= stored_corrections; ++a) {
        const auto at = static_cast<std::size_t>(a - 1);
        beta[at] = a <= m ? system.beta(a) : 0.0F;
        d[at] = &work.correction[a <= m ? at : 0];
    }
#pragma omp parallel for schedule(static)
    for (int k = cells.k1; k <= cells.k2; ++k) {
        for (int j = cells.j1; j <= cells.j2; ++j) {
            float* x = &phi(cells.i1, j, k);
            const float* d1 = &(*d[0])(cells.i1, j, k);
            const float* d2 = &(*d[1])(cells.i1, j, k);
            const float* d3 = &(*d[2])(cells.i1, j, k);
            const float* d4 = &(*d[3])(cells.i1, j, k);
            fetch_cells(cells_ahead, n, x, d1, d2, d3, d4);
#pragma omp simd
            for (int c = 0; c < n; ++c) {
                x[c] += beta[0] * d1[c] + beta[1] * d2[c] + beta[2] * d3[c] + beta[3] * d4[c];
            }
        }
    }
}

// The oldest of L corrections makes room at the front for the next.
void shift(int L, std::array<Field3, stored_corrections>& fields) {
    for (auto a = static_cast<std::size_t>(L - 1); a > 0; --a) {
        std::swap(fields[a], fields[a - 1]);
    }
}

}  // namespace

SolveRecord RCM(const CellRange& cells, Field3& phi, int L, int ncycle, float r0, RcmWork& work,
                const LinearSystem& eq) {
    static_assert(stored_corrections == 4, "the loops over the corrections are written for four");
    require(L >= 1 && L <= stored_corrections, "RCM: wrong number of stored corrections");
    constexpr float alpha = 0.9F;
    constexpr float omega = 1.0F;
    constexpr float stop_ratio = 0.1F;
    constexpr int nsweep = 7;
    LeastSquares system;
    SolveRecord result{.r0 = r0};
    if (ncycle < 1) {
        return result;
    }
    work.matrix = Matrix::general;  // until SIP has looked
    residual(cells, phi, eq, work);
    for (; result.n <= ncycle; ++result.n) {
        const int m = std::min(L, result.n);
        shift(L, work.correction);
        shift(L, work.image);
        SIP(cells, work.correction[0], nsweep, alpha, result.n, work, eq);
        least_squares(m, cells, eq, work, system);
        lsq_weights(m, omega, system);
        add_corrections(m, cells, system, work, phi);
        result.r1 = residual(cells, phi, eq, work);
        result.a = result.r1 / r0;
        if (stop_ratio > result.a) {
            break;
        }
    }
    return result;
}

}  // namespace torvex
