#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "solver/linear_system.hpp"
#include "solver/system_rows.hpp"

namespace torvex {

// The sum of one term per cell over a range, each plane in single precision in the order j, i, and
// the planes from k1 to k2, as plane_sums gives it. terms(i, j, k, n, out) fills out[0..n-1] with
// the terms of the cells from (i,j,k) on.
//
// An addition waits for the one before it, which leaves a core idle most of the time. So a thread
// takes four planes together, whose sums do not wait for each other.
template <class Terms>
float chained_sum(const CellRange& cells, const Terms& terms) {
    constexpr int chains = 4;
    constexpr int stretch = 256;
    if (is_empty(cells)) {
        return 0;
    }
    const int groups = (cells_k(cells) + chains - 1) / chains;
    std::vector<std::array<float, chains>> of_group(static_cast<std::size_t>(groups));
#pragma omp parallel for schedule(static)
    for (int group = 0; group < groups; ++group) {
        alignas(64) float term[chains][stretch] = {};
        float sum[chains] = {};
        const int first = cells.k1 + group * chains;
        const int planes = std::min(chains, cells.k2 - first + 1);
        for (int j = cells.j1; j <= cells.j2; ++j) {
            for (int i = cells.i1; i <= cells.i2; i += stretch) {
                const int n = std::min(stretch, cells.i2 - i + 1);
                for (int plane = 0; plane < planes; ++plane) {
                    terms(i, j, first + plane, n, term[plane]);
                }
                for (int m = 0; m < n; ++m) {
                    for (int chain = 0; chain < chains; ++chain) {
                        sum[chain] += term[chain][m];
                    }
                }
            }
        }
        std::copy_n(sum, chains, of_group[static_cast<std::size_t>(group)].begin());
    }
    // Chains beyond the last plane have added zeros.
    float total = 0;
    for (const std::array<float, chains>& sums : of_group) {
        for (const float sum : sums) {
            total += sum;
        }
    }
    return total;
}

}  // namespace torvex
