#pragma once

#include <algorithm>

#include "base/assertion.hpp"
#include "base/field.hpp"

namespace torvex {

// One row of a field, i = 1..n, as the kernels along i read it. Indices are checked where those of
// fields are.
template <class T>
class Row {
 public:
    Row(T* first, int n, int offset = 0) : first_(first), n_(n), offset_(offset) {}
    // NOLINTNEXTLINE(google-explicit-constructor): a row that is written may be read
    operator Row<const T>() const { return {first_, n_, offset_}; }

    T& operator[](int i) const {
        require(i + offset_ >= 1 && i + offset_ <= n_, "index outside a row");
        return first_[i - 1 + offset_];
    }
    // The row whose element i is element i + steps of this one.
    Row shifted(int steps) const { return {first_, n_, offset_ + steps}; }

 private:
    T* first_;
    int n_;
    int offset_;
};

// Row (j,k), or row j of a field in plan, from i = 1 on.
template <class T>
Row<const T> row(const Array3<T>& x, int j, int k) {
    return {&x(1, j, k), x.ni()};
}
template <class T>
Row<T> row(Array3<T>& x, int j, int k) {
    return {&x(1, j, k), x.ni()};
}
template <class T>
Row<const T> row(const Array2<T>& x, int j) {
    return {&x(1, j), x.ni()};
}
template <class T>
Row<T> row(Array2<T>& x, int j) {
    return {&x(1, j), x.ni()};
}

// cell(i) for i = first..last in blocks of full vectors. The last block is drawn back to end at
// last, so that some cells are done twice: cell() must not read what it writes. Short rows gain
// most, for no cell is done alone.
template <class Cell>
[[gnu::always_inline]] inline void along_row(int first, int last, Cell cell) {
    constexpr int width = 16;
    if (last - first + 1 < width) {
        for (int i = first; i <= last; ++i) {
            cell(i);
        }
        return;
    }
    for (int block = first;; block = std::min(block + width, last - width + 1)) {
#pragma omp simd
        for (int i = block; i < block + width; ++i) {
            cell(i);
        }
        if (block == last - width + 1) {
            return;
        }
    }
}

}  // namespace torvex
