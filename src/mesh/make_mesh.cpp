#include "mesh/make_mesh.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "mesh/buffer_zones.hpp"
#include "mesh/ground_height.hpp"
#include "mesh/map_cover.hpp"
#include "mesh/rotation.hpp"
#include "mesh/vertical_levels.hpp"

namespace torvex {

namespace {

// Ground height at every node of the plan. Columns i are independent of each other; a point outside
// the basic map is remembered and reported behind the loop.
Field2 sampled_ground(const CaseSettings& settings, const MeshLines& lines,
                      const DirectionMaps& maps, int iwd, RunLog& log) {
    const MeshRotation rotation = mesh_rotation(settings.WIND_DIRECTION_ANGLE(iwd));
    const int nx = lines.nx;
    const int ny = lines.ny;
    Field2 ground(nx, ny);
    std::vector<int> outside(static_cast<std::size_t>(ny) + 1);  // first i outside in row j, or 0
#pragma omp parallel for schedule(static)
    for (int j = 1; j <= ny; ++j) {
        const float y = lines.y_line(j);
        for (int i = 1; i <= nx; ++i) {
            const std::optional<float> height =
                ground_height(settings.canopy, maps, rotation, lines.x_line(i), y);
            if (!height) {
                outside[static_cast<std::size_t>(j)] = i;
                break;
            }
            ground(i, j) = *height;
        }
    }
    for (int j = 1; j <= ny; ++j) {
        const int i = outside[static_cast<std::size_t>(j)];
        if (i > 0) {
            stop_outside_map(settings, lines, maps, false,
                             rotation.on_map(lines.x_line(i), lines.y_line(j)), log);
        }
    }
    return ground;
}

void check_top(const CaseSettings& settings, const MeshLines& lines, int k_c,
               const Field2& ground) {
    const float top = lines.z_line(lines.nz);
    for (int j = 1; j <= lines.ny; ++j) {
        for (int i = 1; i <= lines.nx; ++i) {
            const float z = ground(i, j) + lines.z_line(k_c);
            if (!(z <= top)) {
                stop(152,
                     "the ground of" + edit::F(ground(i, j), 9, 1) +
                         " m and the layers of constant height reach through the domain top of" +
                         edit::F(top, 9, 1) + " m",
                     settings.USE_DEFAULT_MAX_Z ? "key CONSTANT_DZ_HEIGHT"
                                                : "keys MAX_Z, CONSTANT_DZ_HEIGHT",
                     "MAX_Z counts from the map datum: raise it, or lower CONSTANT_DZ_HEIGHT");
            }
        }
    }
}

void fill_plan(const MeshLines& lines, GridGeometry& grid) {
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= grid.nz; ++k) {
        for (int j = 1; j <= grid.ny; ++j) {
            for (int i = 1; i <= grid.nx; ++i) {
                grid.xn(i, j, k) = lines.x_line(i);
                grid.yn(i, j, k) = lines.y_line(j);
            }
        }
    }
}

void stack_levels(const MeshLines& lines, int k_c, const Field2& ground, GridGeometry& grid) {
    const Line1& z = lines.z_line;
    const float top = z(lines.nz);
    const float base = z(k_c);
#pragma omp parallel for schedule(static)
    for (int k = 1; k <= grid.nz; ++k) {
        const float height = z(k);
        const float r = k > k_c ? (height - base) / (top - base) : 0.0F;
        for (int j = 1; j <= grid.ny; ++j) {
            for (int i = 1; i <= grid.nx; ++i) {
                if (k <= k_c) {
                    grid.zn(i, j, k) = ground(i, j) + height;
                } else {
                    const float z_c = ground(i, j) + base;
                    grid.zn(i, j, k) = z_c + r * (top - z_c);
                }
            }
        }
    }
}

}  // namespace

void MAKE_MESH(const CaseSettings& settings, const MeshLines& lines, const DirectionMaps& maps,
               int iwd, RunLog& log, GridGeometry& grid) {
    if (settings.canopy.modify_terrain && !(settings.canopy.modify_circle_range > 0.0F)) {
        stop(1, "modify_circle_range must be above 0 m", "block canopy_parameters",
             "give the radius outside of which modify_terrain sets the ground to 0");
    }
    const bool flat = settings.TERRAIN_MODE.starts_with("flat");
    Field2 ground =
        flat ? Field2(lines.nx, lines.ny) : sampled_ground(settings, lines, maps, iwd, log);
    if (!settings.nested()) {
        flatten_buffer_zones(settings, lines, iwd, log, ground);
    }
    int k_c = top_constant_level(lines.z_line, settings.CONSTANT_DZ_HEIGHT);
    if (settings.USE_TFTB) {
        k_c = lines.nz;
    } else {
        check_top(settings, lines, k_c, ground);
    }
    allocate_nodes(grid, lines.nx, lines.ny, lines.nz);
    fill_plan(lines, grid);
    stack_levels(lines, k_c, ground, grid);
}

}  // namespace torvex
