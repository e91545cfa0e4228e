#pragma once

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "solver/row_recurrence.hpp"

namespace torvex {

// A sum in single precision that a loop over blocks of cells builds up: one part for each cell of a
// block, since an addition to a single sum would wait for the one before it. Cells behind the last
// whole block of a row go to the first parts. Terms that are not negative never lessen it.
class LaneSum {
 public:
    void add(Block terms, int /*m*/) { parts_ += terms; }
    void add(float term, int m) { parts_[m % block_cells] += term; }

    float total() const {
        float sum = 0;
        for (int lane = 0; lane < block_cells; ++lane) {
            sum += parts_[lane];
        }
        return sum;
    }

 private:
    Block parts_{};
};

template <std::size_t N>
std::array<float, N> totals(const std::array<LaneSum, N>& sums) {
    std::array<float, N> of_each{};
    for (std::size_t n = 0; n < N; ++n) {
        of_each[n] = sums[n].total();
    }
    return of_each;
}

// |x| and the root of x, of a block or of a cell.
template <class V>
V magnitude(V x) {
    using Bits =
        std::conditional_t<std::is_same_v<V, float>, std::uint32_t,
                           std::uint32_t
                           __attribute__((vector_size(block_cells * sizeof(std::uint32_t))))>;
    return std::bit_cast<V>(std::bit_cast<Bits>(x) & 0x7fffffffU);
}

template <class V>
V square_root(V x) {
    if constexpr (std::is_same_v<V, float>) {
        return std::sqrt(x);
    } else {
        for (int lane = 0; lane < block_cells; ++lane) {
            x[lane] = std::sqrt(x[lane]);
        }
        return x;
    }
}

}  // namespace torvex
