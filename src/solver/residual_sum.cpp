#include "solver/residual_sum.hpp"

#include <cmath>
#include <cstddef>
#include <vector>

#include "solver/constants.hpp"
#include "solver/seven_point.hpp"

namespace torvex {

namespace {

template <bool with_scale>
ResidualSums plane_sums(const CellRange& range, const LinearSystem& eq, const Field3& phi, int k) {
    constexpr auto pinned = static_cast<float>(-BIG);
    ResidualSums sums;
    for (int j = range.j1; j <= range.j2; ++j) {
        for (int i = range.i1; i <= range.i2; ++i) {
            const float r = cell_residual(eq, phi, i, j, k);
            sums.residual += static_cast<float>(eq.sp(i, j, k)) == pinned ? 0.0F : std::abs(r);
            if constexpr (with_scale) {
                sums.scale += std::abs(eq.ap(i, j, k) * phi(i, j, k));
            }
        }
    }
    return sums;
}

template <bool with_scale>
ResidualSums all_sums(const CellRange& range, const LinearSystem& eq, const Field3& phi) {
    if (range.k2 < range.k1) {
        return {};
    }
    std::vector<ResidualSums> planes(static_cast<std::size_t>(range.k2 - range.k1 + 1));
#pragma omp parallel for schedule(static)
    for (int k = range.k1; k <= range.k2; ++k) {
        planes[static_cast<std::size_t>(k - range.k1)] = plane_sums<with_scale>(range, eq, phi, k);
    }
    ResidualSums total;
    for (const ResidualSums& plane : planes) {
        total.residual += plane.residual;
        total.scale += plane.scale;
    }
    return total;
}

}  // namespace

ResidualSums residual_sums(const CellRange& range, const LinearSystem& eq, const Field3& phi) {
    return all_sums<true>(range, eq, phi);
}

float residual_sum(const CellRange& range, const LinearSystem& eq, const Field3& phi) {
    return all_sums<false>(range, eq, phi).residual;
}

}  // namespace torvex
