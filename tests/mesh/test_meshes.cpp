#include "mesh/test_meshes.hpp"

#include <cmath>
#include <numbers>
#include <random>
#include <utility>

#include "mesh/cell_geometry.hpp"
#include "mesh/grid.hpp"

namespace torvex {

namespace {

// Distance of node plane i from the first one when the cell widths grow by `ratio`.
double stretched(int i, double first, double ratio) {
    double x = 0;
    double width = first;
    for (int n = 1; n < i; ++n) {
        x += width;
        width *= ratio;
    }
    return x;
}

GridGeometry mesh_of(Planes n, const std::function<Position(int, int, int)>& node) {
    GridGeometry g;
    g.nx = n.nx;
    g.ny = n.ny;
    g.nz = n.nz;
    g.ni = n.nx + 1;
    g.nj = n.ny + 1;
    g.nk = n.nz + 1;
    for (Field3* field : {&g.xn, &g.yn, &g.zn}) {
        field->allocate(g.nx, g.ny, g.nz);
    }
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                const Position r = node(i, j, k);
                g.xn(i, j, k) = static_cast<float>(r[0]);
                g.yn(i, j, k) = static_cast<float>(r[1]);
                g.zn(i, j, k) = static_cast<float>(r[2]);
            }
        }
    }
    return g;
}

}  // namespace

GridGeometry mapped_mesh(Planes n, const std::function<Position(double, double, double)>& map) {
    return mesh_of(n, [&](int i, int j, int k) {
        return map((i - 1.0) / (n.nx - 1.0), (j - 1.0) / (n.ny - 1.0), (k - 1.0) / (n.nz - 1.0));
    });
}

GridGeometry uniform_mesh(Planes n, float dx, float dy, float dz) {
    return mesh_of(n, [&](int i, int j, int k) {
        return Position{double(dx) * (i - 1), double(dy) * (j - 1), double(dz) * (k - 1)};
    });
}

GridGeometry stretched_mesh(Planes n, Position first, Position ratio) {
    return mesh_of(n, [&](int i, int j, int k) {
        return Position{stretched(i, first[0], ratio[0]), stretched(j, first[1], ratio[1]),
                        stretched(k, first[2], ratio[2])};
    });
}

GridGeometry sheared_mesh(Planes n) {
    return mesh_of(n, [](int i, int j, int k) {
        const double x = i - 1.0;
        const double y = j - 1.0;
        const double z = k - 1.0;
        return Position{x + 0.3 * y, y + 0.2 * z, z + 0.4 * x};
    });
}

Position hill_map(double s, double t, double q) {
    const double pi = std::numbers::pi;
    const double top = 2.0;
    const double x = 4.0 * s - 0.2 * std::sin(2.0 * pi * s) * (1.0 + 0.3 * t);
    const double y = 3.0 * t + 0.1 * std::sin(pi * s) * std::sin(2.0 * pi * t);
    const double hill = std::sin(pi * x / 4.0) * std::sin(pi * y / 3.0);
    const double ground = 0.4 * hill * hill;
    const double level = q * (0.6 + 0.4 * q);
    return {x, y, ground + level * (top - ground)};
}

GridGeometry hill_mesh(Planes n) {
    return mapped_mesh(n, hill_map);
}

void shake(GridGeometry& g, Position amplitude, unsigned seed) {
    std::mt19937 random(seed);
    const auto step = [&random](double limit) {
        // The distributions of the standard library differ from one library to the next.
        return static_cast<float>(limit *
                                  (2.0 * (static_cast<double>(random()) / 4294967295.0) - 1.0));
    };
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                g.xn(i, j, k) += step(amplitude[0]);
                g.yn(i, j, k) += step(amplitude[1]);
                g.zn(i, j, k) += step(amplitude[2]);
            }
        }
    }
}

GridGeometry with_metrics(GridGeometry g) {
    XYZ2XYZC(g);
    GRID(g);
    return g;
}

}  // namespace torvex
