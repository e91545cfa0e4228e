#pragma once

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

}  // namespace torvex
