#pragma once

#include <functional>
#include <string>
#include <vector>

#include "mesh/cell_geometry.hpp"
#include "mesh/grid.hpp"
#include "mesh/mesh_cases.hpp"
#include "nest/parent.hpp"
#include "nest/parent_column.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "solver/flow_fields.hpp"
#include "solver/flow_state.hpp"

namespace torvex::test {

inline Line1 line_of(const std::vector<float>& values) {
    Line1 line(static_cast<int>(values.size()));
    int n = 0;
    for (const float value : values) {
        line(++n) = value;
    }
    return line;
}

using GroundHeight = std::function<double(double x, double y)>;

inline double flat_ground(double, double) {
    return 0.0;
}

// Nodes and centres over a ground; levels z above it, drawn together towards a flat top.
inline GridGeometry grid_over(const Line1& x, const Line1& y, const Line1& z,
                              const GroundHeight& ground = flat_ground) {
    GridGeometry g;
    allocate_nodes(g, x.size(), y.size(), z.size());
    const float top = z(z.size());
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                const auto height = static_cast<float>(
                    ground(static_cast<double>(x(i)), static_cast<double>(y(j))));
                g.xn(i, j, k) = x(i);
                g.yn(i, j, k) = y(j);
                g.zn(i, j, k) = height + z(k) * (top - height) / top;
            }
        }
    }
    XYZ2XYZC(g);
    return g;
}

// A field by formula at the cell centres, h the height above the ground of the column.
using Formula = std::function<double(double x, double y, double h)>;

inline Field3 field_on(const GridGeometry& g, const Formula& formula) {
    Field3 q(g.ni, g.nj, g.nk);
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                q(i, j, k) = static_cast<float>(
                    formula(static_cast<double>(g.xc(i, j, k)), static_cast<double>(g.yc(i, j, k)),
                            static_cast<double>(g.zc(i, j, k) - g.zc(i, j, 1))));
            }
        }
    }
    return q;
}

// A parent of 12 x 10 cells of 100 m with the wind from the west, and a child over 4 x 4 of them,
// each divided into 2 x 3, over the same ground. A test gives the parent its fields.
struct NestCase {
    explicit NestCase(const GroundHeight& ground_given = flat_ground,
                      const std::vector<float>& child_levels = parent_levels())
        : ground(ground_given) {
        settings.MIN_DXY = 100.0F;
        settings.CONSTANT_DZ_HEIGHT = 100.0F;
        settings.TURBULENCE_MODEL = 1;
        settings.CMU = 0.09F;
        settings.DENSIT = 1.0F;
        settings.VISCOS = 0.0015F;
        settings.BASIC_H_FILE = "hill.map";
        settings.nest.nest_mode = 1;
        lines.x_line =
            line_of({-600, -500, -400, -300, -200, -100, 0, 100, 200, 300, 400, 500, 600});
        lines.y_line = line_of({-500, -400, -300, -200, -100, 0, 100, 200, 300, 400, 500});
        lines.unchanged_radius = 400.0F;
        // At 270 degrees x points east and y north.
        maps.basic_h = centred_map(31, 31, 100.0F, ground);
        const Line1 x = line_of({-200, -150, -100, -50, 0, 50, 100, 150, 200});
        Line1 y(13);
        for (int j = 1; j <= 13; ++j) {
            y(j) = -200.0F + 100.0F * static_cast<float>(j - 1) / 3.0F;
        }
        y(4) = -100.0F;
        y(7) = 0.0F;
        y(10) = 100.0F;
        y(13) = 200.0F;
        child = grid_over(x, y, line_of(child_levels), ground);
        parent.grid = grid_over(lines.x_line, lines.y_line, line_of(parent_levels()), ground);
        GRID(parent.grid);
        allocate(parent.flow, start_fields, parent.grid.ni, parent.grid.nj, parent.grid.nk);
        allocate_fields(flow, child, settings.TURBULENCE_MODEL);
        flow.z0.allocate(child.ni, child.nj, 0.1F);
    }

    static std::vector<float> parent_levels() {
        return {0, 10, 25, 50, 80, 120, 200, 350, 600, 1000};
    }

    NestPass pass() {
        return {.settings = settings,
                .lines = lines,
                .maps = maps,
                .angle = 270.0F,
                .grid = child,
                .log = log};
    }

    GroundHeight ground;
    CaseSettings settings;
    ParentLines lines;
    DirectionMaps maps;
    RunLog log;
    GridGeometry child;
    FlowState flow;
    Parent parent;
};

// Every boundary column of a mesh.
inline void for_boundary_columns(const GridGeometry& g, const std::function<void(int, int)>& act) {
    for (int j = 1; j <= g.nj; ++j) {
        for (int i = 1; i <= g.ni; ++i) {
            if (i == 1 || i == g.ni || j == 1 || j == g.nj) {
                act(i, j);
            }
        }
    }
}

}  // namespace torvex::test
