// RCM: the residual cutting method. Each cycle finds a correction by SIP and then takes the best
// combination of the last four by least squares:
//
//   phi = phi + sum beta_a d_a,   beta minimises | r - sum beta_a A d_a |
//
// reads   ae..ab, ap, su; phi beside the range
// writes  phi in the range
// order   every sum runs over the cells of a plane k in the order j, i, then over the planes; in
//         single precision, the same for any number of threads
// ref     Tamura, Kikuchi and Takahashi (1997); Stone (1968)

#include "solver/rcm.hpp"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "solver/residual_sum.hpp"
#include "solver/seven_point.hpp"

namespace torvex {

namespace {

constexpr int sip_sweeps = 7;
constexpr float sip_alpha = 0.9F;
constexpr float stop_ratio = 0.1F;

void residual_field(const CellRange& range, const LinearSystem& eq, const Field3& phi, Field3& r) {
#pragma omp parallel for schedule(static)
    for (int k = range.k1; k <= range.k2; ++k) {
        for (int j = range.j1; j <= range.j2; ++j) {
#pragma omp simd
            for (int i = range.i1; i <= range.i2; ++i) {
                r(i, j, k) = cell_residual(eq, phi, i, j, k);
            }
        }
    }
}

void image_of(const CellRange& range, const LinearSystem& eq, const Field3& d, Field3& image) {
#pragma omp parallel for schedule(static)
    for (int k = range.k1; k <= range.k2; ++k) {
        for (int j = range.j1; j <= range.j2; ++j) {
#pragma omp simd
            for (int i = range.i1; i <= range.i2; ++i) {
                image(i, j, k) = -seven_point(eq, d, i, j, k);
            }
        }
    }
}

float scalar_product(const CellRange& range, const Field3& a, const Field3& b) {
    std::vector<float> planes(static_cast<std::size_t>(std::max(0, range.k2 - range.k1 + 1)));
#pragma omp parallel for schedule(static)
    for (int k = range.k1; k <= range.k2; ++k) {
        float sum = 0.0F;
        for (int j = range.j1; j <= range.j2; ++j) {
            for (int i = range.i1; i <= range.i2; ++i) {
                sum += a(i, j, k) * b(i, j, k);
            }
        }
        planes[static_cast<std::size_t>(k - range.k1)] = sum;
    }
    float total = 0.0F;
    for (const float plane : planes) {
        total += plane;
    }
    return total;
}

void add_corrections(const CellRange& range, const LeastSquares& weights, int m,
                     const RcmWork& work, Field3& phi) {
#pragma omp parallel for schedule(static)
    for (int k = range.k1; k <= range.k2; ++k) {
        for (int a = 0; a < m; ++a) {
            const auto n = static_cast<std::size_t>(a);
            const float beta = weights.beta[n];
            const Field3& d = work.correction[n];
            for (int j = range.j1; j <= range.j2; ++j) {
#pragma omp simd
                for (int i = range.i1; i <= range.i2; ++i) {
                    phi(i, j, k) += beta * d(i, j, k);
                }
            }
        }
    }
}

// The newest correction comes first; the oldest gives its place.
void shift(RcmWork& work) {
    std::ranges::rotate(work.correction, work.correction.end() - 1);
    std::ranges::rotate(work.image, work.image.end() - 1);
}

}  // namespace

void RcmWork::fit(int ni, int nj, int nk) {
    if (rhs.ni() == ni && rhs.nj() == nj && rhs.nk() == nk) {
        return;
    }
    rhs.allocate(ni, nj, nk);
    for (int n = 0; n < stored_corrections; ++n) {
        correction[static_cast<std::size_t>(n)].allocate(ni, nj, nk);
        image[static_cast<std::size_t>(n)].allocate(ni, nj, nk);
    }
}

RcmResult RCM(const CellRange& range, const LinearSystem& eq, Field3& phi, int ncycle, float r0,
              RcmWork& work) {
    constexpr float omega = 1.0F;
    RcmResult result;
    if (ncycle < 1) {
        return result;
    }
    work.fit(phi.ni(), phi.nj(), phi.nk());
    sip_factors(range, eq, sip_alpha, work.sip);
    LeastSquares least_squares;
    for (result.n = 1; result.n <= ncycle; ++result.n) {
        const int m = std::min(stored_corrections, result.n);
        shift(work);
        Field3& d = work.correction.front();
        d.fill(0.0F);
        residual_field(range, eq, phi, work.rhs);
        SIP(range, eq, work.rhs, d, sip_sweeps, work.sip);
        image_of(range, eq, d, work.image.front());
        for (int a = 0; a < m; ++a) {
            const auto row = static_cast<std::size_t>(a);
            least_squares.rhsL[row] = scalar_product(range, work.image[row], work.rhs);
            for (int b = 0; b <= a; ++b) {
                const auto column = static_cast<std::size_t>(b);
                const float product = scalar_product(range, work.image[row], work.image[column]);
                least_squares.gram[row][column] = product;
                least_squares.gram[column][row] = product;
            }
        }
        lsq_weights(least_squares, m, omega);
        add_corrections(range, least_squares, m, work, phi);
        result.r1 = residual_sum(range, eq, phi);
        result.a = result.r1 / r0;
        if (stop_ratio > result.a) {
            break;
        }
    }
    return result;
}

}  // namespace torvex
