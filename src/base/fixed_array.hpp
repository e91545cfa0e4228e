#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "base/assertion.hpp"

namespace torvex {

// A list with the bounds 1..N.
template <class T, int N>
class FixedArray {
 public:
    FixedArray() = default;
    FixedArray(std::initializer_list<T> values) {
        require(values.size() <= static_cast<std::size_t>(N), "too many values for a fixed list");
        std::size_t n = 0;
        for (const T& value : values) {
            values_[n++] = value;
        }
    }

    T& operator()(int i) { return values_[checked(i)]; }
    const T& operator()(int i) const { return values_[checked(i)]; }

    static constexpr int size() { return N; }
    void fill(const T& value) { values_.fill(value); }
    std::span<T> span() { return values_; }
    std::span<const T> span() const { return values_; }

    friend bool operator==(const FixedArray&, const FixedArray&) = default;

 private:
    static std::size_t checked(int i) {
        require(i >= 1 && i <= N, "index outside a fixed list");
        return static_cast<std::size_t>(i - 1);
    }

    std::array<T, static_cast<std::size_t>(N)> values_{};
};

// Degrees, minutes, seconds of an angle.
using Triple = FixedArray<float, 3>;

}  // namespace torvex
