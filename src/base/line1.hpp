#pragma once

#include <cstddef>
#include <vector>

#include "base/assertion.hpp"

namespace torvex {

// A list of reals with the bounds 1..n, such as the node lines of the mesh.
class Line1 {
 public:
    Line1() = default;
    explicit Line1(int n, float value = 0.0F) : values_(static_cast<std::size_t>(n), value) {}

    float& operator()(int i) { return values_[checked(i)]; }
    float operator()(int i) const { return values_[checked(i)]; }

    int size() const { return static_cast<int>(values_.size()); }
    const std::vector<float>& values() const { return values_; }

 private:
    std::size_t checked(int i) const {
        require(i >= 1 && i <= size(), "index outside a line");
        return static_cast<std::size_t>(i - 1);
    }

    std::vector<float> values_;
};

}  // namespace torvex
