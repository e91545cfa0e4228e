#pragma once

#include <cstddef>

#include "base/field.hpp"

namespace torvex {

// to = from, by all threads and without a pass that clears the room first.
inline void copy_field(const Field3& from, Field3& to) {
    if (to.ni() != from.ni() || to.nj() != from.nj() || to.nk() != from.nk()) {
        to.allocate(from.ni(), from.nj(), from.nk());
    }
    const float* const source = from.data();
    float* const target = to.data();
    const auto size = static_cast<std::ptrdiff_t>(from.size());
#pragma omp parallel for simd schedule(static)
    for (std::ptrdiff_t n = 0; n < size; ++n) {
        target[n] = source[n];
    }
}

}  // namespace torvex
