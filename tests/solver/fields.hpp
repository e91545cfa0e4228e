#pragma once

#include <gtest/gtest.h>
#include <omp.h>

#include <cstring>
#include <random>
#include <utility>

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/test_meshes.hpp"

namespace torvex::test {

// Values between low and high, the same on every machine.
inline Field3 random_field(const GridGeometry& g, float low, float high, unsigned seed) {
    std::mt19937 random(seed);
    Field3 field(g.ni, g.nj, g.nk);
    for (std::size_t n = 0; n < field.size(); ++n) {
        field.data()[n] =
            low + (high - low) * static_cast<float>(static_cast<double>(random()) / 4294967295.0);
    }
    return field;
}

// A field given by a formula in the cell's index.
template <class Formula>
Field3 field_of(const GridGeometry& g, Formula formula) {
    Field3 field(g.ni, g.nj, g.nk);
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                field(i, j, k) = static_cast<float>(formula(i, j, k));
            }
        }
    }
    return field;
}

inline GridGeometry shaken_mesh() {
    GridGeometry g = uniform_mesh({9, 8, 7}, 1, 1, 1);
    shake(g, {0.2, 0.2, 0.2}, 11);
    return with_metrics(std::move(g));
}

inline bool same_bits(const Field3& a, const Field3& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(float)) == 0;
}

inline bool all_equal(const Field3& field, float value) {
    for (std::size_t n = 0; n < field.size(); ++n) {
        if (field.data()[n] != value) {
            return false;
        }
    }
    return field.size() > 0;
}

// While it lives, parallel loops run with so many threads.
class Threads {
 public:
    explicit Threads(int n) : before_(omp_get_max_threads()) { omp_set_num_threads(n); }
    ~Threads() { omp_set_num_threads(before_); }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;

 private:
    int before_;
};

}  // namespace torvex::test
