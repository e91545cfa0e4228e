#pragma once

#include "base/field.hpp"
#include "base/line1.hpp"

namespace torvex {

// Heights above ground between which the layers of the columns lie: layer k, 1..nz-1, from level k
// to level k + 1. It is cell k + 1 of the mesh.
//
//   k <= k_c    z_line(k)
//   k >  k_c    the levels are pressed together over high ground: the mean height of the four nodes
//               of the column above their ground
class LayerLevels {
 public:
    explicit LayerLevels(const Line1& z_line) : z_line_(z_line), k_c_(z_line.size()) {}
    LayerLevels(const Line1& z_line, int k_c, const Field3& zn)
        : z_line_(z_line), k_c_(k_c), zn_(&zn) {}

    int layers() const { return z_line_.size() - 1; }

    double level(int i, int j, int k) const {
        if (k <= k_c_ || zn_ == nullptr) {
            return static_cast<double>(z_line_(k));
        }
        return 0.25 * (above_ground(i - 1, j - 1, k) + above_ground(i, j - 1, k) +
                       above_ground(i - 1, j, k) + above_ground(i, j, k));
    }

 private:
    double above_ground(int i, int j, int k) const {
        return static_cast<double>((*zn_)(i, j, k)) - static_cast<double>((*zn_)(i, j, 1));
    }

    const Line1& z_line_;
    int k_c_;
    const Field3* zn_ = nullptr;
};

}  // namespace torvex
