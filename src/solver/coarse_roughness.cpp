// The warning of a mesh that reaches into the roughness.
//
// reads   xc, yc, zc and the metric vectors at the ghost planes of the walls; z0; WIND_TUNNEL_MODE,
//         WIND_TUNNEL_Z0
// walls   the ground; from WIND_TUNNEL_MODE 1 on the top; from 2 on the sides j = 1 and j = nj

#include "solver/coarse_roughness.hpp"

#include <limits>
#include <string>

#include "base/edit.hpp"
#include "solver/wall.hpp"

namespace torvex {

namespace {

// The wall cell with the smallest d/z0 so far; the first one of equals.
struct WorstCell {
    float ratio = std::numeric_limits<float>::infinity();
    float d = 0, z0 = 0;
    int i = 0, j = 0, k = 0;
    const char* wall = "";

    void meet(float distance, float roughness, const char* name, int ii, int jj, int kk) {
        const float r = distance / roughness;
        if (r < ratio) {
            *this = {r, distance, roughness, ii, jj, kk, name};
        }
    }
};

WorstCell worst_cell(const CaseSettings& settings, const GridGeometry& g, const Field2& z0) {
    WorstCell worst;
    for (int j = 2; j <= g.ny; ++j) {
        for (int i = 2; i <= g.nx; ++i) {
            worst.meet(wall_cell<Wall::ground>(g, i, j).d, z0(i, j), "ground", i, j, 2);
        }
    }
    const float tunnel_z0 = settings.WIND_TUNNEL_Z0;
    if (settings.wall_on_top()) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                worst.meet(wall_cell<Wall::top>(g, i, j).d, tunnel_z0, "top", i, j, g.nz);
            }
        }
    }
    if (settings.walls_on_sides()) {
        for (int k = 2; k <= g.nz; ++k) {
            for (int i = 2; i <= g.nx; ++i) {
                worst.meet(wall_cell<Wall::south>(g, i, k).d, tunnel_z0, "south wall", i, 2, k);
                worst.meet(wall_cell<Wall::north>(g, i, k).d, tunnel_z0, "north wall", i, g.ny, k);
            }
        }
    }
    return worst;
}

}  // namespace

void warn_of_coarse_roughness(const CaseSettings& settings, const GridGeometry& g,
                              const FlowState& s, float wd_angle, RunLog& log) {
    const WorstCell worst = worst_cell(settings, g, s.z0);
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
