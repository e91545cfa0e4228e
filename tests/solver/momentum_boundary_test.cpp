// bc_u, bc_v, bc_w by hand, by their effect on each array, and against the plain form.

#include "solver/momentum_boundary.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "solver/momentum_case.hpp"
#include "solver/reference/plain_momentum.hpp"

namespace torvex {
namespace {

using test::deviation;
using test::MomentumCase;

void bc(MomentumCase& c, int component) {
    switch (component) {
        case 0:
            return bc_u(c.context(), sources_of(c.s.eq));
        case 1:
            return bc_v(c.context(), sources_of(c.s.eq));
        default:
            return bc_w(c.context(), sources_of(c.s.eq));
    }
}

Field3& phi(MomentumCase& c, int component) {
    return component == 0 ? c.s.u : (component == 1 ? c.s.v : c.s.w);
}

void fill_coefficients(MomentumCase& c) {
    float value = 1.0F;
    for (Field3* x : {&c.s.eq.ae, &c.s.eq.aw, &c.s.eq.an, &c.s.eq.as, &c.s.eq.at, &c.s.eq.ab}) {
        x->fill(value);
        value += 1.0F;
    }
    c.s.eq.su.fill(0.0);
}

GridGeometry shaken(Planes n) {
    GridGeometry g = sheared_mesh(n);
    shake(g, {0.1, 0.1, 0.1}, 9);
    return g;
}

// A box of cells 4 by 5 by 2 m: the first centre lies 1 m above the ground, the half cell holds
// 20 m3. z0 = 1/e makes the logarithm 1, CMU = 0.3^4 its fourth root 0.3.
void make_unit_wall(MomentumCase& c) {
    c.settings.CMU = 0.0081F;
    c.s.z0.fill(std::exp(-1.0F));
    c.settings.WIND_TUNNEL_Z0 = std::exp(-2.0F);
    c.set_density(1.5F);
    c.s.tke.fill(0.25F);
    fill_coefficients(c);
}
constexpr double unit_shear = 1.5 * 0.3 * 0.5 * 0.41 * 20.0;  // [kg/s]

TEST(MomentumBoundary, ShearOfAFlatGround) {
    MomentumCase c(uniform_mesh({4, 4, 4}, 4.0F, 5.0F, 2.0F));
    make_unit_wall(c);
    c.s.u.fill(3.0F);
    c.s.v.fill(-1.0F);
    c.s.w.fill(0.5F);
    for (int j = 1; j <= c.g.nj; ++j) {
        for (int i = 1; i <= c.g.ni; ++i) {
            c.s.u(i, j, 1) = c.s.v(i, j, 1) = c.s.w(i, j, 1) = 0.0F;
        }
    }
    const std::array tangential{3.0, -1.0, 0.0};
    for (int component = 0; component < 3; ++component) {
        c.s.eq.su.fill(0.0);
        bc(c, component);
        const double expected = -unit_shear * tangential.at(static_cast<std::size_t>(component));
        EXPECT_NEAR(c.s.eq.su(3, 3, 2), expected, 2e-5);
        EXPECT_EQ(c.s.eq.su(3, 3, 3), 0.0);
    }
    EXPECT_EQ(c.s.eq.ab(3, 3, 2), 0.0F);
    EXPECT_EQ(c.s.eq.ab(3, 3, 3), 6.0F);
}

// Of a difference normal to the wall nothing is left, of a tangential one everything.
TEST(MomentumBoundary, ShearOfASlopeIsTangential) {
    GridGeometry g = uniform_mesh({4, 4, 4}, 1.0F, 1.0F, 1.0F);
    for (std::size_t n = 0; n < g.zn.size(); ++n) {
        g.zn.data()[n] += g.xn.data()[n];
    }
    MomentumCase c(std::move(g));
    make_unit_wall(c);
    // Wall distance of the centre 0.5/sqrt(2), wall area sqrt(2).
    const double d = 0.5 / std::sqrt(2.0);
    const double factor = 1.5 * 0.3 * 0.5 * 0.41 / (std::log(d) + 1.0) * std::sqrt(2.0);
    const auto expect = [&](Position D, Position T) {
        const std::array fields{&c.s.u, &c.s.v, &c.s.w};
        for (std::size_t n = 0; n < 3; ++n) {
            fields.at(n)->fill(0.0F);
            (*fields.at(n))(3, 3, 2) = static_cast<float>(D.at(n));
        }
        for (int component = 0; component < 3; ++component) {
            c.s.eq.su.fill(0.0);
            bc(c, component);
            EXPECT_NEAR(c.s.eq.su(3, 3, 2), -factor * T.at(static_cast<std::size_t>(component)),
                        2e-5);
        }
    };
    expect({2.0, 0.0, 2.0}, {2.0, 0.0, 2.0});
    expect({0.0, 3.0, 0.0}, {0.0, 3.0, 0.0});
    expect({-2.0, 0.0, 2.0}, {0.0, 0.0, 0.0});
    expect({4.0, 1.0, 0.0}, {2.0, 1.0, 2.0});
}

// In a log profile over its own energy the shear is den u*^2 on the area of the wall.
TEST(MomentumBoundary, LogProfileGivesItsFrictionVelocity) {
    MomentumCase c(uniform_mesh({4, 4, 5}, 40.0F, 30.0F, 6.0F));
    const double friction = 0.4;
    c.s.tke.fill(static_cast<float>(friction * friction / std::sqrt(0.09)));
    c.s.z0.fill(0.03F);
    c.fill(c.s.u,
           [&](Position r) { return r[2] > 0 ? friction / 0.41 * std::log(r[2] / 0.03) : 0.0; });
    bc_u(c.context(), sources_of(c.s.eq));
    EXPECT_NEAR(c.s.eq.su(3, 2, 2), -friction * friction * 40.0 * 30.0, 1e-3);
}

// Nothing guards a mesh below its roughness: the shear changes sign.
TEST(MomentumBoundary, CentreBelowTheRoughnessIsNotGuarded) {
    MomentumCase c(uniform_mesh({4, 4, 4}, 4.0F, 5.0F, 2.0F));
    make_unit_wall(c);
    c.s.z0.fill(std::exp(1.0F));
    c.fill(c.s.u, [](Position r) { return r[2] > 0 ? 3.0 : 0.0; });
    bc_u(c.context(), sources_of(c.s.eq));
    EXPECT_NEAR(c.s.eq.su(3, 3, 2), unit_shear * 3.0, 2e-5);
}

TEST(MomentumBoundary, NegativeEnergyCountsByItsAmount) {
    MomentumCase c(uniform_mesh({4, 4, 4}, 4.0F, 5.0F, 2.0F));
    make_unit_wall(c);
    c.s.tke.fill(-0.25F);
    c.fill(c.s.u, [](Position r) { return r[2] > 0 ? 3.0 : 0.0; });
    bc_u(c.context(), sources_of(c.s.eq));
    EXPECT_NEAR(c.s.eq.su(3, 3, 2), -unit_shear * 3.0, 2e-5);
}

// The ceiling is rougher by its own length: ln(1/z0w) = 2. Its shear is formed with the value that
// stood there before the wall sets u to rest.
TEST(MomentumBoundary, ShearOfTheCeilingComesBeforeItsValue) {
    MomentumCase c(uniform_mesh({4, 4, 5}, 4.0F, 5.0F, 2.0F));
    make_unit_wall(c);
    c.settings.WIND_TUNNEL_MODE = 1;
    c.s.u.fill(3.0F);
    c.s.v.fill(1.0F);
    for (int j = 2; j <= c.g.ny; ++j) {
        for (int i = 2; i <= c.g.nx; ++i) {
            c.s.u(i, j, c.g.nk) = 1.0F;
            c.s.v(i, j, c.g.nk) = 0.25F;
        }
    }
    bc_u(c.context(), sources_of(c.s.eq));
    EXPECT_NEAR(c.s.eq.su(3, 3, c.g.nz), -unit_shear / 2.0 * 2.0, 2e-5);
    EXPECT_EQ(c.s.u(3, 3, c.g.nk), 0.0F);
    EXPECT_EQ(c.s.eq.at(3, 3, c.g.nz), 0.0F);
    c.s.eq.su.fill(0.0);
    bc_v(c.context(), sources_of(c.s.eq));
    EXPECT_NEAR(c.s.eq.su(3, 3, c.g.nz), -unit_shear / 2.0 * 0.75, 2e-5);
    EXPECT_EQ(c.s.v(3, 3, c.g.nk), 0.25F);
}

// Which boundary values and coefficients each equation changes, by mode.
struct Expectation {
    int component;
    int mode;
    bool top_is_shut;  // at(nz) = 0
    bool sides_shut;   // as(2), an(ny) = 0
    char top_value;    // k: kept, c: that of the cell, 0: at rest
    char side_value;
};

TEST(MomentumBoundary, ValuesAndCoefficientsByMode) {
    const std::array table{
        Expectation{0, 0, true, true, 'c', 'c'},  Expectation{1, 0, false, false, 'k', 'k'},
        Expectation{2, 0, false, true, 'k', 'c'}, Expectation{0, 1, true, true, '0', 'c'},
        Expectation{1, 1, true, false, 'k', 'k'}, Expectation{2, 1, true, true, 'k', 'c'},
        Expectation{0, 2, true, true, '0', '0'},  Expectation{1, 2, true, true, 'k', 'k'},
        Expectation{2, 2, true, true, 'k', '0'},  Expectation{0, 5, true, true, '0', '0'},
        Expectation{1, 5, true, true, 'k', 'k'},  Expectation{2, 5, true, true, 'k', '0'},
        Expectation{0, -1, true, true, 'c', 'c'}, Expectation{1, -1, false, false, 'k', 'k'}};
    for (const Expectation& e : table) {
        SCOPED_TRACE(testing::Message() << "component " << e.component << ", mode " << e.mode);
        MomentumCase c(shaken({5, 6, 5}));
        c.fill_at_random(1);
        fill_coefficients(c);
        c.settings.WIND_TUNNEL_MODE = e.mode;
        Field3& x = phi(c, e.component);
        const Field3 before = x;
        bc(c, e.component);
        const auto value = [](char kind, float kept, float cell) {
            return kind == 'k' ? kept : (kind == 'c' ? cell : 0.0F);
        };
        const GridGeometry& g = c.g;
        EXPECT_EQ(c.s.eq.at(3, 3, g.nz), e.top_is_shut ? 0.0F : 5.0F);
        EXPECT_EQ(x(3, 3, g.nk), value(e.top_value, before(3, 3, g.nk), before(3, 3, g.nz)));
        EXPECT_EQ(c.s.eq.ab(3, 3, 2), 0.0F);
        EXPECT_EQ(x(3, 3, 1), before(3, 3, 1));
        EXPECT_EQ(c.s.eq.as(3, 2, 3), e.sides_shut ? 0.0F : 4.0F);
        EXPECT_EQ(c.s.eq.an(3, g.ny, 3), e.sides_shut ? 0.0F : 3.0F);
        EXPECT_EQ(x(3, 1, 3), value(e.side_value, before(3, 1, 3), before(3, 2, 3)));
        EXPECT_EQ(x(3, g.nj, 3), value(e.side_value, before(3, g.nj, 3), before(3, g.ny, 3)));
        // In the shear of the walls, and nowhere else, su changes.
        EXPECT_NE(c.s.eq.su(3, 3, 2), 0.0);
        EXPECT_EQ(c.s.eq.su(3, 3, g.nz) != 0.0, e.mode > 0);
        EXPECT_EQ(c.s.eq.su(3, 2, 3) != 0.0, e.mode > 1);
        EXPECT_EQ(c.s.eq.su(3, g.ny, 3) != 0.0, e.mode > 1);
        EXPECT_EQ(c.s.eq.su(3, 3, 3), 0.0);
        // Inflow and outflow coefficients stay; the inflow and the interior are not written.
        EXPECT_EQ(c.s.eq.aw(2, 3, 3), 2.0F);
        EXPECT_EQ(c.s.eq.ae(g.nx, 3, 3), 1.0F);
        for (int k = 1; k <= g.nk; ++k) {
            for (int j = 1; j <= g.nj; ++j) {
                EXPECT_EQ(x(1, j, k), before(1, j, k));
            }
        }
        test::for_interior(g, [&](int i, int j, int k) { EXPECT_EQ(x(i, j, k), before(i, j, k)); });
        // The edges along i keep what they have, and so do the ends of ground and top.
        EXPECT_EQ(x(3, 1, 1), before(3, 1, 1));
        EXPECT_EQ(x(3, g.nj, g.nk), before(3, g.nj, g.nk));
        EXPECT_EQ(x(g.ni, 3, 1), before(g.ni, 3, 1));
        EXPECT_EQ(x(g.ni, 3, g.nk), before(g.ni, 3, g.nk));
        // Rows on the sides of the outflow plane.
        EXPECT_EQ(x(g.ni, 1, 3), x(g.ni, 2, 3));
        EXPECT_EQ(x(g.ni, g.nj, 3), x(g.ni, g.ny, 3));
        if (e.component != 0) {
            EXPECT_EQ(x(g.ni, 3, 3), before(g.nx, 3, 3));
        }
    }
}

TEST(MomentumBoundary, NestedRunsKeepSidesAndOutflow) {
    for (int component = 0; component < 3; ++component) {
        for (int mode = 0; mode <= 2; ++mode) {
            MomentumCase c(shaken({5, 6, 5}));
            c.fill_at_random(1);
            fill_coefficients(c);
            c.settings.WIND_TUNNEL_MODE = mode;
            c.skip_sides = 1;
            Field3& x = phi(c, component);
            const Field3 before = x;
            bc(c, component);
            for (int k = 1; k <= c.g.nz; ++k) {
                for (int j = 1; j <= c.g.nj; ++j) {
                    EXPECT_EQ(x(c.g.ni, j, k), before(c.g.ni, j, k));
                }
                for (int i = 1; i <= c.g.ni; ++i) {
                    EXPECT_EQ(x(i, 1, k), before(i, 1, k));
                    EXPECT_EQ(x(i, c.g.nj, k), before(i, c.g.nj, k));
                }
            }
            EXPECT_EQ(c.s.eq.as(3, 2, 3), 4.0F);
            EXPECT_EQ(c.s.eq.an(3, c.g.ny, 3), 3.0F);
            EXPECT_EQ(c.s.eq.su(3, 2, 3), 0.0);
            EXPECT_EQ(c.s.eq.ab(3, 3, 2), 0.0F);
        }
    }
}

// The velocity on the outflow plane, with v and w of the last column, carries the mass that entered
// at the start, through the true areas of the faces; flow_in plays no part.
TEST(MomentumBoundary, OutflowCarriesTheMassInflow) {
    MomentumCase c(shaken({6, 9, 8}));
    c.fill_at_random(3);
    c.set_density(1.2F);
    c.s.outflow_mass = 345.0F;
    c.s.flow_in = 1.0F;
    bc_u(c.context(), sources_of(c.s.eq));
    const GridGeometry& g = c.g;
    double mass = 0;
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            const auto node = [&](int b, int n) {
                return Position{double(g.xn(g.nx, b, n)), double(g.yn(g.nx, b, n)),
                                double(g.zn(g.nx, b, n))};
            };
            // Two triangles of the face.
            const auto triangle = [](Position p, Position q, Position r) {
                const Position a{q[0] - p[0], q[1] - p[1], q[2] - p[2]};
                const Position b{r[0] - p[0], r[1] - p[1], r[2] - p[2]};
                return Position{0.5 * (a[1] * b[2] - a[2] * b[1]),
                                0.5 * (a[2] * b[0] - a[0] * b[2]),
                                0.5 * (a[0] * b[1] - a[1] * b[0])};
            };
            const Position s1 = triangle(node(j - 1, k - 1), node(j, k - 1), node(j, k));
            const Position s2 = triangle(node(j - 1, k - 1), node(j, k), node(j - 1, k));
            const auto u = double(c.s.u(g.ni, j, k));
            const auto v = double(c.s.v(g.nx, j, k));
            const auto w = double(c.s.w(g.nx, j, k));
            mass += 1.2 * ((s1[0] + s2[0]) * u + (s1[1] + s2[1]) * v + (s1[2] + s2[2]) * w);
            EXPECT_NEAR(double(c.s.u(g.ni, j, k)) - double(c.s.u(g.nx, j, k)),
                        double(c.s.u(g.ni, 2, 2)) - double(c.s.u(g.nx, 2, 2)), 2e-6);
        }
    }
    EXPECT_NEAR(mass, 345.0, 345.0 * 2e-6);
}

TEST(MomentumBoundary, LikeThePlainForm) {
    for (int mode = 0; mode <= 3; ++mode) {
        for (const int skip : {0, 1}) {
            for (const Planes n : {Planes{6, 7, 5}, Planes{2, 2, 2}, Planes{4, 2, 3}}) {
                SCOPED_TRACE(testing::Message()
                             << "mode " << mode << ", skip_sides " << skip << ", nx " << n.nx);
                MomentumCase c(shaken(n));
                c.fill_at_random(7);
                c.set_density(1.2F);
                c.settings.WIND_TUNNEL_MODE = mode;
                c.skip_sides = skip;
                fill_coefficients(c);
                plain::Momentum p = plain::start(c.settings, c.g, c.s);
                p.ae.fill(1.0);
                p.aw.fill(2.0);
                p.an.fill(3.0);
                p.as.fill(4.0);
                p.at.fill(5.0);
                p.ab.fill(6.0);
                for (int component = 0; component < 3; ++component) {
                    c.s.eq.su.fill(0.0);
                    p.su.fill(0.0);
                    bc(c, component);
                    plain::boundaries(p, component, skip);
                    EXPECT_LT(deviation(c.s.eq.su, p.su), 1e-5);
                    EXPECT_LT(deviation(phi(c, component),
                                        p.velocity.at(static_cast<std::size_t>(component))),
                              1e-5);
                    EXPECT_EQ(deviation(c.s.eq.an, p.an), 0.0);
                    EXPECT_EQ(deviation(c.s.eq.as, p.as), 0.0);
                    EXPECT_EQ(deviation(c.s.eq.at, p.at), 0.0);
                    EXPECT_EQ(deviation(c.s.eq.ab, p.ab), 0.0);
                }
            }
        }
    }
}

}  // namespace
}  // namespace torvex
