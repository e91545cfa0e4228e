#pragma once

#include <cstddef>
#include <cstdint>

#include "base/field.hpp"

namespace torvex {

// Asks for the cells of rows that a loop will come to soon. The processor looks ahead on its own,
// but not along a dozen arrays at once; loops that stream so many are a third faster with these
// hints (docs/performance.md). Rows of a plane lie behind each other in memory, so that the cells
// ahead of a row's end are those of the next row. Behind the last row there is nothing to fetch and
// no harm in asking.
inline constexpr int cells_ahead = 128;
inline constexpr int line_cells = 16;  // single precision cells of a cache line

enum class Heading { rising, falling };

// Inlined always: g++ 12 takes a function that only asks for cache lines for one without effect and
// leaves out the calls.
template <class T>
[[gnu::always_inline]] inline void fetch_cell(const T* row, std::ptrdiff_t m) {
    constexpr std::size_t line_bytes = 64;
    constexpr std::size_t lines = line_cells * sizeof(T) / line_bytes;
    // The address may lie outside the array, where a pointer may not point.
    const auto at = reinterpret_cast<std::uintptr_t>(row) +
                    static_cast<std::uintptr_t>(m) * static_cast<std::uintptr_t>(sizeof(T));
    for (std::size_t line = 0; line < lines; ++line) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        __builtin_prefetch(reinterpret_cast<const void*>(at + line_bytes * line));
    }
}

// For cell m of a loop over blocks of cells: once a cache line, for every row named.
template <Heading heading = Heading::rising, class... T>
[[gnu::always_inline]] inline void fetch_ahead(int m, const T*... row) {
    if (m % line_cells == 0) {
        constexpr int ahead = heading == Heading::rising ? cells_ahead : -cells_ahead;
        (fetch_cell(row, m + ahead), ...);
    }
}

// The n cells from `first` on, asked for ahead of the loop that needs them: hints inside would keep
// it from being vectorised.
template <class... T>
[[gnu::always_inline]] inline void fetch_cells(std::ptrdiff_t first, int n, const T*... x) {
    for (int m = 0; m < n; m += line_cells) {
        (fetch_cell(x, first + m), ...);
    }
}

// Row (j,k) of every field; it may lie outside.
template <class... T>
[[gnu::always_inline]] inline void fetch_row(int j, int k, const Array3<T>&... x) {
    const auto first = [=](const auto& field) {
        return field.ni() * (j - 1 + static_cast<std::ptrdiff_t>(field.nj()) * (k - 1));
    };
    (fetch_cells(first(x), x.ni(), x.data()), ...);
}

}  // namespace torvex
