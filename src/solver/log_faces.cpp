// The faces between the first and the second cell from a wall, where a log law is steeper than what
// linear interpolation and a central difference make of it.
//
//   viscosity   den KAPPA u_k h/ln(d2/d1),   u_k = c_mu^(1/4) sqrt(tke) of the wall's cell,
//               so that the flux viscosity (u2 - u1)/h is that of the law u = (u_k/KAPPA) ln(d/z0)
//               through d1 and d2, den u_k^2
//   for ted     den KAPPA u_k h/(d2 - d1) d1 d2/df, with df the distance of the face, so that
//               viscosity (ted1 - ted2)/h is that of the law's ted = u_k^3/(KAPPA d), den u_k^4/df;
//               a central difference gives a third more where all layers are alike
//   value       u1 + (u2 - u1) ln(df/d1)/ln(d2/d1)
//
// h is the distance by which the equations divide, vol/|L| of the face; it is less than d2 - d1 in
// stretched layers, by 2 % where a layer is a third higher than the one below. The d are taken
// along the normal of the wall's face from its centre, as in wall_cells. The molecular viscosity is
// left out, as in the formulas of the wall itself.
//
// reads   xn, yn, zn, xc, yc, zc; the wall cells; tke, den
// ref     Launder and Spalding (1974); Richards and Norris (2011) on what near-wall gradients cost

#include "solver/log_faces.hpp"

#include <cmath>

#include "mesh/vec3.hpp"
#include "solver/constants.hpp"
#include "solver/interpolation.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

namespace {

template <Wall wall>
constexpr Axis axis_of = wall == Wall::ground || wall == Wall::top ? Axis::k : Axis::j;
template <Wall wall>
constexpr bool is_low = wall == Wall::ground || wall == Wall::south;

// The distance that the diffusion across the inner face of a wall's cell divides by, vol_f/|L|_f;
// it is less than that of the two centres where the layers differ in height.
template <Axis axis>
float spacing(const GridGeometry& g, int i, int j, int k, bool cell_is_low) {
    constexpr bool level = axis == Axis::k;
    const int jl = level || cell_is_low ? j : j - 1;
    const int kl = !level || cell_is_low ? k : k - 1;
    const int jh = level ? jl : jl + 1;
    const int kh = level ? kl + 1 : kl;
    const auto area2 = [&](int jc, int kc) {
        const Vec3 L = level ? Vec3{g.zex(i, jc, kc), g.zey(i, jc, kc), g.zez(i, jc, kc)}
                             : Vec3{g.etx(i, jc, kc), g.ety(i, jc, kc), g.etz(i, jc, kc)};
        return dot(L, L);
    };
    const float factor = level ? g.fz(i, jl, kl) : g.fy(i, jl, kl);
    return between(g.vol(i, jl, kl), g.vol(i, jh, kh), factor) /
           std::sqrt(between(area2(jl, kl), area2(jh, kh), factor));
}

template <Wall wall>
void fill(const GridGeometry& g, const Walls& walls, LogFacesOfWall& faces) {
    constexpr Axis axis = axis_of<wall>;
    const int last = axis == Axis::k ? g.ny : g.nz;
    faces.of_speed.allocate(g.ni, last + 1);
    faces.of_dissipation.allocate(g.ni, last + 1);
    faces.factor.allocate(g.ni, last + 1);
#pragma omp parallel for schedule(static)
    for (int b = 2; b <= last; ++b) {
        for (int a = 2; a <= g.nx; ++a) {
            const auto [i, j, k, ig, jg, kg] = wall_place<wall>(g, a, b);
            const WallCell& wall_cell = cell_at<wall>(walls, a, b);
            const Vec3 normal{wall_cell.n_x, wall_cell.n_y, wall_cell.n_z};
            const CellNodes cell{i, j, k, {i - 1, i}, {j - 1, j}, {k - 1, k}};
            const NodePair planes = cell.pair<axis>();
            const int first = axis == Axis::k ? k : j;
            const Vec3 on_wall = face_centre<axis>(g, is_low<wall> ? planes.lo : planes.hi, cell);
            const Vec3 on_face = face_centre<axis>(g, is_low<wall> ? planes.hi : planes.lo, cell);
            const Vec3 second = centre<axis>(g, is_low<wall> ? first + 1 : first - 1, cell);
            const float d1 = wall_cell.d;
            const float df = std::abs(dot(on_face - on_wall, normal));
            const float d2 = std::abs(dot(second - on_wall, normal));
            // A mesh of the user's own may bend so that distances do not rise from the wall.
            const bool rising = d1 < df && df < d2;
            const float log_ratio = std::log(d2 / d1);
            const float of_second = rising ? std::log(df / d1) / log_ratio : 0.5F;
            const float step = spacing<axis>(g, i, j, k, is_low<wall>);
            faces.of_speed(a, b) = rising ? step / log_ratio : d1;
            faces.of_dissipation(a, b) = rising ? step / (d2 - d1) * d1 * d2 / df : d1;
            faces.factor(a, b) = is_low<wall> ? of_second : 1.0F - of_second;
        }
    }
}

// The log faces between row (j,k) and its neighbour on the high side, and the row of cells beside
// the wall; nullptr where there are none.
struct Found {
    const LogFacesOfWall* faces = nullptr;
    int row = 0;       // of the faces
    int j = 0, k = 0;  // of the cells beside the wall
};

Found find(const LogFaces& faces, const GridGeometry& g, Axis axis, int j, int k) {
    if (axis == Axis::k) {
        if (k == 2 && faces.ground.factor.size() > 0) {
            return {&faces.ground, j, j, 2};
        }
        if (k == g.nz - 1 && faces.top.factor.size() > 0) {
            return {&faces.top, j, j, g.nz};
        }
    } else if (axis == Axis::j) {
        if (j == 2 && faces.south.factor.size() > 0) {
            return {&faces.south, k, 2, k};
        }
        if (j == g.ny - 1 && faces.north.factor.size() > 0) {
            return {&faces.north, k, g.ny, k};
        }
    }
    return {};
}

}  // namespace

LogFaces log_faces(const CaseSettings& settings, const GridGeometry& g, const Walls& walls) {
    LogFaces faces;
    if (!settings.WALL_DISSIPATION_AT_CENTRE) {
        return faces;
    }
    faces.scale = KAPPA * std::sqrt(std::sqrt(settings.CMU));
    // Planes of cells: 2..nz. The second one from a wall must not be the first one from the other.
    if (g.nz >= (settings.wall_on_top() ? 4 : 3)) {
        fill<Wall::ground>(g, walls, faces.ground);
        if (settings.wall_on_top()) {
            fill<Wall::top>(g, walls, faces.top);
        }
    }
    if (settings.walls_on_sides() && g.ny >= 4) {
        fill<Wall::south>(g, walls, faces.south);
        fill<Wall::north>(g, walls, faces.north);
    }
    return faces;
}

bool log_face_viscosity(const LogFaces& faces, const GridGeometry& g, const FlowState& s,
                        LogFlux flux, Axis axis, int j, int k, Row<float> out) {
    const Found found = find(faces, g, axis, j, k);
    if (found.faces == nullptr) {
        return false;
    }
    const auto length = row(
        flux == LogFlux::of_speed ? found.faces->of_speed : found.faces->of_dissipation, found.row);
    const auto tke = row(s.tke, found.j, found.k);
    const auto den = row(s.den, found.j, found.k);
    const float scale = faces.scale;
#pragma omp simd
    for (int i = 2; i <= g.nx; ++i) {
        out[i] = den[i] * scale * std::sqrt(std::abs(tke[i])) * length[i];
    }
    return true;
}

Row<const float> log_face_factor(const LogFaces& faces, const GridGeometry& g, Axis axis, int j,
                                 int k, Row<const float> otherwise) {
    const Found found = find(faces, g, axis, j, k);
    return found.faces == nullptr ? otherwise : row(found.faces->factor, found.row);
}

}  // namespace torvex
