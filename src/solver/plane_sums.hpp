#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "solver/linear_system.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

// N sums over the planes of a range: plane(k) gives those of one plane, summed j, i ascending in
// single precision, and the planes are added from k1 to k2. Planes run in parallel; the result does
// not depend on the number of threads.
template <std::size_t N, class Plane>
std::array<float, N> plane_sums(const CellRange& cells, const Plane& plane) {
    std::array<float, N> total{};
    if (is_empty(cells)) {
        return total;
    }
    std::vector<std::array<float, N>> of_plane(static_cast<std::size_t>(cells_k(cells)));
#pragma omp parallel for schedule(static)
    for (int k = cells.k1; k <= cells.k2; ++k) {
        of_plane[static_cast<std::size_t>(k - cells.k1)] = plane(k);
    }
    for (const std::array<float, N>& sums : of_plane) {
        for (std::size_t n = 0; n < N; ++n) {
            total[n] += sums[n];
        }
    }
    return total;
}

}  // namespace torvex
