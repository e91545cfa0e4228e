#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

// How a vector is passed between functions differs between machines without and with wide
// registers; these vectors never leave the file that uses them.
#pragma GCC diagnostic ignored "-Wpsabi"

namespace torvex {

// The recurrence x(m) = a(m) + b(m) x(m-1) along a row, or x(m+1) when it runs down, eight cells at
// a time. Within a block the pairs (a, b) are combined by doubling, so that a block waits for the
// one before only once: the wait of each cell for its neighbour would bound the solvers otherwise.
// The order of the arithmetic is fixed here and does not depend on the machine.
inline constexpr int block_cells = 8;
using Block [[gnu::vector_size(block_cells * sizeof(float))]] = float;
using WideBlock [[gnu::vector_size(block_cells * sizeof(double))]] = double;

// Kernels are written once for a block V = Block and for a single cell V = float at a row's end.
template <class V>
struct WideOf;
template <>
struct WideOf<float> {
    using Type = double;
};
template <>
struct WideOf<Block> {
    using Type = WideBlock;
};
template <class V>
using Wide = typename WideOf<V>::Type;

template <class V>
V load(const float* p) {
    V v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <class V>
Wide<V> load_wide(const double* p) {
    Wide<V> v;
    std::memcpy(&v, p, sizeof v);
    return v;
}
template <class T, class V>
void store(T* p, V v) {
    std::memcpy(p, &v, sizeof v);
}

// To double precision and back, cell by cell.
template <class V>
Wide<V> widen(V x) {
    if constexpr (std::is_same_v<V, float>) {
        return static_cast<double>(x);
    } else {
        return __builtin_convertvector(x, Wide<V>);
    }
}
template <class V>
V narrow(Wide<V> x) {
    if constexpr (std::is_same_v<V, float>) {
        return static_cast<float>(x);
    } else {
        return __builtin_convertvector(x, V);
    }
}
// sum + su, added in double precision and narrowed.
template <class V>
V add_wide(V sum, Wide<V> su) {
    return narrow<V>(widen(sum) + su);
}

// A block with x in every cell.
inline Block filled_block(float x) {
    return Block{} + x;
}

template <class V>
struct Solved {
    V x;
    V west;  // x of the cell before each cell
};

// One block of the rising recurrence. `before` holds the last value so far in all its cells.
inline Solved<Block> solve_rising(Block a, Block b, Block& before) {
    constexpr Block zero{};
    constexpr Block one = {1, 1, 1, 1, 1, 1, 1, 1};
    a += b * __builtin_shufflevector(zero, a, 0, 8, 9, 10, 11, 12, 13, 14);
    b *= __builtin_shufflevector(one, b, 0, 8, 9, 10, 11, 12, 13, 14);
    a += b * __builtin_shufflevector(zero, a, 0, 1, 8, 9, 10, 11, 12, 13);
    b *= __builtin_shufflevector(one, b, 0, 1, 8, 9, 10, 11, 12, 13);
    a += b * __builtin_shufflevector(zero, a, 0, 1, 2, 3, 8, 9, 10, 11);
    b *= __builtin_shufflevector(one, b, 0, 1, 2, 3, 8, 9, 10, 11);
    const Block x = a + b * before;
    const Block west = __builtin_shufflevector(before, x, 0, 8, 9, 10, 11, 12, 13, 14);
    before = __builtin_shufflevector(a, a, 7, 7, 7, 7, 7, 7, 7, 7) +
             __builtin_shufflevector(b, b, 7, 7, 7, 7, 7, 7, 7, 7) * before;
    return {x, west};
}
inline Solved<float> solve_rising(float a, float b, Block& before) {
    const float west = before[0];
    const float x = a + b * west;
    before = filled_block(x);
    return {x, west};
}

// The mirror image: x(m) = a(m) + b(m) x(m+1).
inline Block solve_falling(Block a, Block b, Block& before) {
    constexpr Block zero{};
    constexpr Block one = {1, 1, 1, 1, 1, 1, 1, 1};
    a += b * __builtin_shufflevector(a, zero, 1, 2, 3, 4, 5, 6, 7, 8);
    b *= __builtin_shufflevector(b, one, 1, 2, 3, 4, 5, 6, 7, 8);
    a += b * __builtin_shufflevector(a, zero, 2, 3, 4, 5, 6, 7, 8, 9);
    b *= __builtin_shufflevector(b, one, 2, 3, 4, 5, 6, 7, 8, 9);
    a += b * __builtin_shufflevector(a, zero, 4, 5, 6, 7, 8, 9, 10, 11);
    b *= __builtin_shufflevector(b, one, 4, 5, 6, 7, 8, 9, 10, 11);
    const Block x = a + b * before;
    before = __builtin_shufflevector(a, a, 0, 0, 0, 0, 0, 0, 0, 0) +
             __builtin_shufflevector(b, b, 0, 0, 0, 0, 0, 0, 0, 0) * before;
    return x;
}
inline float solve_falling(float a, float b, Block& before) {
    const float x = a + b * before[0];
    before = filled_block(x);
    return x;
}

// Where the first of N values of cell m stands in a row that keeps its values block by block, those
// of a block side by side; the others follow block_cells apart.
template <int N>
std::size_t block_offset(std::ptrdiff_t m) {
    const auto cell = static_cast<std::size_t>(m);
    return cell / block_cells * block_cells * N + cell % block_cells;
}

// kernel(V{}, m) for the cells m = 0..n-1: whole blocks first, then the cells that are left.
template <class Kernel>
void rising_cells(int n, Kernel&& kernel) {
    int m = 0;
    for (; m + block_cells <= n; m += block_cells) {
        kernel(Block{}, m);
    }
    for (; m < n; ++m) {
        kernel(float{}, m);
    }
}

// The same of a kernel that does not read what it writes: the last block is drawn back to end at
// n-1, so that some cells are done twice and none alone.
template <class Kernel>
[[gnu::always_inline]] inline void overlapping_cells(int n, Kernel&& kernel) {
    if (n < block_cells) {
        for (int m = 0; m < n; ++m) {
            kernel(float{}, m);
        }
        return;
    }
    for (int m = 0; m < n - block_cells; m += block_cells) {
        kernel(Block{}, m);
    }
    kernel(Block{}, n - block_cells);
}

// The cells of rising_cells from n-1 down to 0, over the same blocks.
template <class Kernel>
void falling_cells(int n, Kernel&& kernel) {
    int m = n;
    while (m % block_cells != 0) {
        --m;
        kernel(float{}, m);
    }
    while (m > 0) {
        m -= block_cells;
        kernel(Block{}, m);
    }
}

}  // namespace torvex
