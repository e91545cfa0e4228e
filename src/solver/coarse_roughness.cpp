// The warning of a mesh that reaches into the roughness.
//
// reads   the wall cells; xc, yc

#include "solver/coarse_roughness.hpp"

#include <limits>
#include <string>

#include "base/edit.hpp"

namespace torvex {

namespace {

// The wall cell with the smallest d/z0 so far; the first one of equals.
struct WorstCell {
    float ratio = std::numeric_limits<float>::infinity();
    float d = 0, z0 = 0;
    int i = 0, j = 0, k = 0;
    const char* wall = "";

    void meet(const WallCell& cell, const char* name, int ii, int jj, int kk) {
        const float r = cell.d / cell.z0;
        if (r < ratio) {
            *this = {r, cell.d, cell.z0, ii, jj, kk, name};
        }
    }
};

WorstCell worst_cell(const GridGeometry& g, const Walls& walls) {
    WorstCell worst;
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            worst.meet(walls.ground(i, j), "ground", i, j, 2);
        }
    }
    if (walls.top.size() > 0) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                worst.meet(walls.top(i, j), "top", i, j, g.nz);
            }
        }
    }
    if (walls.south.size() > 0) {
        for (int k = 2; k <= g.nz; ++k) {
            for (int i = 2; i <= g.nx; ++i) {
                worst.meet(walls.south(i, k), "south wall", i, 2, k);
                worst.meet(walls.north(i, k), "north wall", i, g.ny, k);
            }
        }
    }
    return worst;
}

}  // namespace

void warn_of_coarse_roughness(const GridGeometry& g, const Walls& walls, float wd_angle,
                              RunLog& log) {
    const WorstCell worst = worst_cell(g, walls);
    if (!(worst.ratio < least_distance_over_z0)) {
        return;
    }
    log.warn_line(" WD " + edit::F(wd_angle, 5, 1) +
                  ": (Warning) Cells are too low for the roughness; smallest d/z0 is" +
                  edit::E(worst.ratio, 11, 4) + " with d=" + edit::E(worst.d, 11, 4) +
                  " (m), z0=" + edit::E(worst.z0, 11, 4) + " (m), " + worst.wall +
                  " cell i=" + std::to_string(worst.i) + " j=" + std::to_string(worst.j) +
                  " k=" + std::to_string(worst.k) +
                  ", x=" + edit::F(g.xc(worst.i, worst.j, worst.k), 10, 1) +
                  ", y=" + edit::F(g.yc(worst.i, worst.j, worst.k), 10, 1));
}

}  // namespace torvex
