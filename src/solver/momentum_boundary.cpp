// Boundary conditions of momentum: wall shear at the ground and at the walls of a wind tunnel, open
// top and sides, outflow. The inflow column i = 1 is never written: aw(2,j,k) brings in its
// profile.
//
// A wall takes tau A = den cmu^(1/4) sqrt(tke) KAPPA/ln(d/z0w) (vol_g/d) T from su, with T the
// component of the tangential velocity difference between cell and wall and vol_g the half cell at
// the wall, so that vol_g/d is the wall's area (Launder and Spalding, 1974). The shear is wholly
// explicit, the coefficient towards the wall is 0, and nothing guards d <= z0w.
//
// reads   u, v, w, den, tke; the wall cells; xn, yn, zn
// writes  su of the target, and at, ab, an, as of the cells beside a boundary; phi on j = 1, j =
// plain   tests/solver/reference/plain_momentum: boundaries
// nj, k = nk, i = ni
//
// The open top of an equilibrium inflow carries the stress of that layer in u.
//
// A wall's shear is formed before its boundary value changes. Ground values (k = 1) stay as they
// are, and so do those of v and w at an open top and of v on the sides. With skip_sides the sides
// and the outflow belong to the parent run.

#include "solver/momentum_boundary.hpp"

#include <cmath>

#include "solver/constants.hpp"
#include "solver/equilibrium_layer.hpp"
#include "solver/face_area.hpp"
#include "solver/momentum_component.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

namespace {

// Component of the velocity difference D along the wall with the normal n.
template <Component A>
float tangential(const Vec3& n, const Vec3& D) {
    if constexpr (A == Component::u) {
        return (1.0F - n.x * n.x) * D.x - n.x * n.y * D.y - n.x * n.z * D.z;
    } else if constexpr (A == Component::v) {
        return -n.x * n.y * D.x + (1.0F - n.y * n.y) * D.y - n.y * n.z * D.z;
    } else {
        return -n.x * n.z * D.x - n.y * n.z * D.y + (1.0F - n.z * n.z) * D.z;
    }
}

// Number is what the sources are kept in.
template <Component A, class Number>
class MomentumBoundary {
 public:
    MomentumBoundary(const SolverContext& c, Array3<Number>& su)
        : g_(c.grid),
          walls_(c.walls),
          s_(c.flow),
          eq_(c.flow.eq),
          su_(su),
          settings_(c.settings),
          phi_(momentum_equation(c, A).phi),
          cmu4_(std::sqrt(std::sqrt(c.settings.CMU))) {}

    void top() {
        const bool wall = settings_.wall_on_top();
        if (!wall && A != Component::u) {
            return;
        }
#pragma omp parallel for schedule(static)
        for (int j = 2; j <= g_.ny; ++j) {
            for (int i = 2; i <= g_.nx; ++i) {
                eq_.at(i, j, g_.nz) = 0.0F;
                if (wall) {
                    wall_shear<Wall::top>(i, j);
                }
                if constexpr (A == Component::u) {
                    phi_(i, j, g_.nk) = wall ? 0.0F : phi_(i, j, g_.nz);
                }
            }
        }
        if (A == Component::u && !wall && settings_.equilibrium_inflow()) {
            add_top_stress(g_, s_, su_);
        }
    }

    void ground() {
#pragma omp parallel for schedule(static)
        for (int j = 2; j <= g_.ny; ++j) {
            for (int i = 2; i <= g_.nx; ++i) {
                eq_.ab(i, j, 2) = 0.0F;
                wall_shear<Wall::ground>(i, j);
            }
        }
    }

    void sides() {
        if (settings_.walls_on_sides()) {
            side_walls();
        } else if constexpr (A != Component::v) {
            open_sides();
        }
    }

    // The outflow plane takes the last column, u raised evenly by `increment`; its rows on the
    // sides copy their neighbours.
    void outflow(float increment) {
#pragma omp parallel for schedule(static)
        for (int k = 2; k <= g_.nz; ++k) {
            for (int j = 2; j <= g_.ny; ++j) {
                phi_(g_.ni, j, k) = phi_(g_.nx, j, k) + increment;
            }
            phi_(g_.ni, 1, k) = phi_(g_.ni, 2, k);
            phi_(g_.ni, g_.nj, k) = phi_(g_.ni, g_.ny, k);
        }
    }

 private:
    template <Wall wall>
    void wall_shear(int a, int b) {
        const auto [i, j, k, ig, jg, kg] = wall_place<wall>(g_, a, b);
        const WallCell& cell = cell_at<wall>(walls_, a, b);
        const Vec3 D{s_.u(i, j, k) - s_.u(ig, jg, kg), s_.v(i, j, k) - s_.v(ig, jg, kg),
                     s_.w(i, j, k) - s_.w(ig, jg, kg)};
        const float T = tangential<A>({cell.n_x, cell.n_y, cell.n_z}, D);
        const float shear = s_.den(i, j, k) * cmu4_ * std::sqrt(std::abs(s_.tke(i, j, k))) * KAPPA /
                            cell.L1 * cell.area * T;
        su_(i, j, k) -= static_cast<Number>(shear);
    }

    void side_walls() {
#pragma omp parallel for schedule(static)
        for (int k = 2; k <= g_.nz; ++k) {
            for (int i = 2; i <= g_.nx; ++i) {
                eq_.an(i, g_.ny, k) = 0.0F;
                wall_shear<Wall::north>(i, k);
                eq_.as(i, 2, k) = 0.0F;
                wall_shear<Wall::south>(i, k);
                if constexpr (A != Component::v) {
                    phi_(i, g_.nj, k) = 0.0F;
                    phi_(i, 1, k) = 0.0F;
                }
            }
        }
    }

    void open_sides() {
#pragma omp parallel for schedule(static)
        for (int k = 2; k <= g_.nz; ++k) {
            for (int i = 2; i <= g_.nx; ++i) {
                eq_.as(i, 2, k) = 0.0F;
                phi_(i, 1, k) = phi_(i, 2, k);
                eq_.an(i, g_.ny, k) = 0.0F;
                phi_(i, g_.nj, k) = phi_(i, g_.ny, k);
            }
        }
    }

    const GridGeometry& g_;
    const Walls& walls_;
    FlowState& s_;
    LinearSystem& eq_;
    Array3<Number>& su_;
    const CaseSettings& settings_;
    Field3& phi_;
    float cmu4_;
};

// The even increment of u at the outflow with which the plane carries the mass that enters. The
// sums run plane by plane of k.
float outflow_increment(const GridGeometry& g, const FlowState& s) {
    float carried = 0;
    float per_unit = 0;
    for (int k = 2; k <= g.nz; ++k) {
        float plane_carried = 0;
        float plane_per_unit = 0;
        for (int j = 2; j <= g.ny; ++j) {
            const Vec3 S = east_diagonals(g, g.nx, j, k);
            const float den = s.den(g.nx, j, k);
            const Vec3 velocity{s.u(g.nx, j, k), s.v(g.nx, j, k), s.w(g.nx, j, k)};
            plane_carried += den * (0.5F * dot(velocity, S));
            plane_per_unit += den * (0.5F * S.x);
        }
        carried += plane_carried;
        per_unit += plane_per_unit;
    }
    return (s.outflow_mass - carried) / per_unit;
}

template <Component A, class Number>
void momentum_boundary(const SolverContext& c, Array3<Number>& su) {
    MomentumBoundary<A, Number> boundary(c, su);
    boundary.top();
    boundary.ground();
    if (c.skip_sides != 0) {
        return;
    }
    boundary.sides();
    float increment = 0;
    if constexpr (A == Component::u) {
        increment = outflow_increment(c.grid, c.flow);
    }
    boundary.outflow(increment);
}

}  // namespace

void bc_u(const SolverContext& c, Sources target) {
    momentum_boundary<Component::u>(c, target.su);
}

void bc_v(const SolverContext& c, Sources target) {
    momentum_boundary<Component::v>(c, target.su);
}

void bc_w(const SolverContext& c, Sources target) {
    momentum_boundary<Component::w>(c, target.su);
}

void bc_flow(const SolverContext& c, Field3& su_u, Field3& su_v, Field3& su_w) {
    momentum_boundary<Component::u>(c, su_u);
    momentum_boundary<Component::v>(c, su_v);
    momentum_boundary<Component::w>(c, su_w);
}

}  // namespace torvex
