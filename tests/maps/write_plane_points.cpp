// Writes the table plane_points.txt anew, to standard output.

#include <proj.h>

#include <cstdio>

#include "maps/plane_by_proj.hpp"

int main() {
    std::printf("# Japan Plane Rectangular Coordinate System, Bessel ellipsoid, by PROJ %s\n",
                proj_info().version);
    std::printf("# zone  lon lat [deg]  x north, y east [m]  convergence [rad]  scale\n");
    for (const torvex::test::PlaneReference& p : torvex::test::plane_points_by_proj()) {
        std::printf("%2d %.15f %.15f %.6f %.6f %.12f %.12f\n", p.zone, p.lon, p.lat, p.x, p.y,
                    p.convergence, p.scale);
    }
    return 0;
}
