// The cells beside walls: normal, distance, roughness and logarithms, in single precision.
//
// reads   xn, yn, zn, xc, yc, zc, vol and the area vectors at the ghost positions of the walls

#include "solver/wall_cells.hpp"

#include <cmath>

namespace torvex {

namespace {

template <Wall wall>
constexpr bool is_level = wall == Wall::ground || wall == Wall::top;

// The mean of the four nodes of the wall face of cell (i,j,k).
template <Wall wall>
float face_mean(const GridGeometry& g, const Field3& r, int i, int j, int k) {
    if constexpr (is_level<wall>) {
        const int n = wall == Wall::ground ? 1 : g.nz;
        return 0.25F * (r(i, j, n) + r(i - 1, j, n) + r(i - 1, j - 1, n) + r(i, j - 1, n));
    } else {
        const int n = wall == Wall::south ? 1 : g.ny;
        return 0.25F * (r(i, n, k) + r(i, n, k - 1) + r(i - 1, n, k) + r(i - 1, n, k - 1));
    }
}

template <Wall wall>
WallCell wall_cell(const GridGeometry& g, float z0, int a, int b) {
    const auto [i, j, k, ig, jg, kg] = wall_place<wall>(g, a, b);
    const Field3& mx = is_level<wall> ? g.zex : g.etx;
    const Field3& my = is_level<wall> ? g.zey : g.ety;
    const Field3& mz = is_level<wall> ? g.zez : g.etz;
    const float x = mx(ig, jg, kg);
    const float y = my(ig, jg, kg);
    const float z = mz(ig, jg, kg);
    const float length = std::sqrt(x * x + y * y + z * z);
    WallCell cell;
    cell.n_x = x / length;
    cell.n_y = y / length;
    cell.n_z = z / length;
    cell.d = std::abs((g.xc(i, j, k) - face_mean<wall>(g, g.xn, i, j, k)) * cell.n_x +
                      (g.yc(i, j, k) - face_mean<wall>(g, g.yn, i, j, k)) * cell.n_y +
                      (g.zc(i, j, k) - face_mean<wall>(g, g.zn, i, j, k)) * cell.n_z);
    cell.z0 = z0;
    cell.L1 = std::log(cell.d / z0);
    cell.L2 = std::log(2.0F * cell.d / z0);
    cell.area = g.vol(ig, jg, kg) / cell.d;
    return cell;
}

// z0_of(a, b) is the roughness length.
template <Wall wall, class RoughnessOf>
void fill(const GridGeometry& g, const RoughnessOf& z0_of, Array2<WallCell>& cells) {
    const int last = is_level<wall> ? g.ny : g.nz;
    cells.allocate(g.ni, last + 1);
#pragma omp parallel for schedule(static)
    for (int b = 2; b <= last; ++b) {
        for (int a = 2; a <= g.nx; ++a) {
            cells(a, b) = wall_cell<wall>(g, z0_of(a, b), a, b);
        }
    }
}

}  // namespace

Walls wall_cells(const CaseSettings& settings, const GridGeometry& g, const Field2& z0) {
    Walls walls;
    fill<Wall::ground>(
        g, [&](int i, int j) { return z0(i, j); }, walls.ground);
    const auto tunnel = [z0w = settings.WIND_TUNNEL_Z0](int /*a*/, int /*b*/) { return z0w; };
    if (settings.wall_on_top()) {
        fill<Wall::top>(g, tunnel, walls.top);
    }
    if (settings.walls_on_sides()) {
        fill<Wall::south>(g, tunnel, walls.south);
        fill<Wall::north>(g, tunnel, walls.north);
    }
    walls.log_faces = log_faces(settings, g, walls);
    return walls;
}

}  // namespace torvex
