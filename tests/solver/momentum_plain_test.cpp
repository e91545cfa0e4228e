// The plain form of the momentum sources against values worked out on paper, term by term.

#include <gtest/gtest.h>

#include <array>

#include "solver/momentum_case.hpp"
#include "solver/reference/plain_momentum.hpp"

namespace torvex {
namespace {

using test::MomentumCase;

// The sheared mesh has the edge vectors
constexpr Position edge_i{1.0, 0.0, 0.4};
constexpr Position edge_j{0.3, 1.0, 0.0};
constexpr Position edge_k{0.0, 0.2, 1.0};

double scalar_product(const Position& p, const Position& q) {
    return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
}
Position cross_product(const Position& p, const Position& q) {
    return {p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]};
}

// and the area vectors and volume
const Position xi = cross_product(edge_j, edge_k);
const Position et = cross_product(edge_k, edge_i);
const Position ze = cross_product(edge_i, edge_j);
const double volume = scalar_product(edge_i, xi);

// Number of steps along an edge: s = r.xi / vol for the edge along i.
double steps(const Position& r, const Position& area) {
    return scalar_product(r, area) / volume;
}

template <class Cell>
void for_cells_off_the_boundary(const GridGeometry& g, const Cell& cell) {
    for (int k = 3; k < g.nz; ++k) {
        for (int j = 3; j < g.ny; ++j) {
            for (int i = 3; i < g.nx; ++i) {
                cell(i, j, k);
            }
        }
    }
}

// The product of two mesh coordinates has no second difference along a mesh line: all of its
// diffusion vol mu div grad (s t) = 2 mu (L.M)/vol is cross diffusion.
TEST(PlainMomentum, CrossDiffusionOfEachPairOfDirections) {
    const std::array pairs{std::pair{xi, et}, std::pair{xi, ze}, std::pair{et, ze}};
    for (const auto& [l, m] : pairs) {
        MomentumCase c(sheared_mesh({6, 6, 6}));
        c.s.vis.fill(0.7F);
        c.fill(c.s.v, [l = l, m = m](Position r) { return steps(r, l) * steps(r, m); });
        const plain::Momentum p = plain::start(c.settings, c.g, c.s);
        const double expected = 2.0 * 0.7 * scalar_product(l, m) / volume;
        EXPECT_GT(std::abs(expected), 0.05);
        for_cells_off_the_boundary(c.g, [&](int i, int j, int k) {
            EXPECT_NEAR(plain::cross_diffusion(p, 1, i, j, k), expected, 2e-5);
            EXPECT_NEAR(plain::cross_diffusion(p, 0, i, j, k), 0.0, 1e-12);
        });
    }
}

// Off the boundary an affine mesh differentiates quadratic fields exactly.
double mu(Position r) {
    return 2.0 + 0.1 * r[0] - 0.2 * r[1] + 0.15 * r[2];
}
const Position mu_slope{0.1, -0.2, 0.15};

// u_c = r.Q_c r / 2 + b_c.r with symmetric Q_c.
constexpr std::array<std::array<Position, 3>, 3> Q{{
    {{{0.3, 0.1, -0.2}, {0.1, -0.4, 0.25}, {-0.2, 0.25, 0.5}}},
    {{{-0.1, 0.2, 0.3}, {0.2, 0.6, -0.15}, {0.3, -0.15, 0.2}}},
    {{{0.25, -0.3, 0.1}, {-0.3, 0.1, 0.35}, {0.1, 0.35, -0.5}}},
}};
constexpr std::array<Position, 3> b{{{0.5, -0.2, 0.1}, {0.3, 0.4, -0.6}, {-0.1, 0.2, 0.7}}};

double slope(std::size_t c, std::size_t axis, const Position& r) {
    return scalar_product(Q.at(c).at(axis), r) + b.at(c).at(axis);
}
double velocity(std::size_t c, const Position& r) {
    double sum = scalar_product(b.at(c), r);
    for (std::size_t n = 0; n < 3; ++n) {
        sum += 0.5 * r.at(n) * scalar_product(Q.at(c).at(n), r);
    }
    return sum;
}

void fill_quadratic(MomentumCase& c) {
    c.fill(c.s.vis, mu);
    c.fill(c.s.u, [](Position r) { return velocity(0, r); });
    c.fill(c.s.v, [](Position r) { return velocity(1, r); });
    c.fill(c.s.w, [](Position r) { return velocity(2, r); });
}

Position centre(const GridGeometry& g, int i, int j, int k) {
    return {double(g.xc(i, j, k)), double(g.yc(i, j, k)), double(g.zc(i, j, k))};
}

// sum over c of d/dc (mu d u_c/da)
TEST(PlainMomentum, TransposedStressOfQuadraticVelocity) {
    MomentumCase c(sheared_mesh({6, 7, 6}));
    fill_quadratic(c);
    const plain::Momentum p = plain::start(c.settings, c.g, c.s);
    for (std::size_t a = 0; a < 3; ++a) {
        for_cells_off_the_boundary(c.g, [&](int i, int j, int k) {
            const Position r = centre(c.g, i, j, k);
            double expected = 0;
            for (std::size_t n = 0; n < 3; ++n) {
                expected += mu_slope.at(n) * slope(n, a, r) + mu(r) * Q.at(n).at(n).at(a);
            }
            EXPECT_NEAR(plain::transposed_stress(p, static_cast<int>(a), i, j, k),
                        volume * expected, 1e-4);
        });
    }
}

// Coefficients and cross diffusion together: div (mu grad u_a).
TEST(PlainMomentum, DiffusionOfQuadraticVelocity) {
    MomentumCase c(sheared_mesh({6, 6, 7}));
    fill_quadratic(c);
    plain::Momentum p = plain::start(c.settings, c.g, c.s);
    plain::neighbour_coefficients(p);
    for (std::size_t a = 0; a < 3; ++a) {
        const plain::DoubleField& x = p.velocity.at(a);
        for_cells_off_the_boundary(c.g, [&](int i, int j, int k) {
            const Position r = centre(c.g, i, j, k);
            double expected = 0;
            for (std::size_t n = 0; n < 3; ++n) {
                expected += mu_slope.at(n) * slope(a, n, r) + mu(r) * Q.at(a).at(n).at(n);
            }
            const double here = x(i, j, k);
            const double coupled =
                p.ae(i, j, k) * (x(i + 1, j, k) - here) + p.aw(i, j, k) * (x(i - 1, j, k) - here) +
                p.an(i, j, k) * (x(i, j + 1, k) - here) + p.as(i, j, k) * (x(i, j - 1, k) - here) +
                p.at(i, j, k) * (x(i, j, k + 1) - here) + p.ab(i, j, k) * (x(i, j, k - 1) - here);
            EXPECT_NEAR(coupled + plain::cross_diffusion(p, static_cast<int>(a), i, j, k),
                        volume * expected, 2e-4);
        });
    }
}

TEST(PlainMomentum, PressureGradientOfQuadraticPressure) {
    MomentumCase c(sheared_mesh({6, 6, 6}));
    c.fill(c.s.p, [](Position r) { return velocity(1, r); });
    const plain::Momentum p = plain::start(c.settings, c.g, c.s);
    for (std::size_t a = 0; a < 3; ++a) {
        for_cells_off_the_boundary(c.g, [&](int i, int j, int k) {
            const double expected = -volume * slope(1, a, centre(c.g, i, j, k));
            EXPECT_NEAR(plain::pressure_gradient(p, static_cast<int>(a), i, j, k), expected, 2e-5);
        });
    }
}

// Density 1.5 and a volume flux of 2 through the west and east faces of one cell of the unit box:
// upwind takes 3 from the west, and the diffusion is 0.7 * 1 * 1.
TEST(PlainMomentum, CoefficientsOfAUnitCell) {
    MomentumCase c(uniform_mesh({5, 5, 5}, 1.0F, 1.0F, 1.0F));
    c.set_density(1.5F);
    c.s.vis.fill(0.7F);
    c.s.flxU(2, 3, 3) = c.s.flxU(3, 3, 3) = 2.0F;
    c.s.flxV(3, 2, 3) = c.s.flxV(3, 3, 3) = -4.0F;
    c.s.flxW(3, 3, 2) = 6.0F;
    c.s.flxW(3, 3, 3) = -6.0F;
    plain::Momentum p = plain::start(c.settings, c.g, c.s);
    plain::neighbour_coefficients(p);
    EXPECT_NEAR(p.ae(3, 3, 3), 0.7, 1e-6);
    EXPECT_NEAR(p.aw(3, 3, 3), 3.7, 1e-6);
    EXPECT_NEAR(p.an(3, 3, 3), 6.7, 1e-6);
    EXPECT_NEAR(p.as(3, 3, 3), 0.7, 1e-6);
    EXPECT_NEAR(p.at(3, 3, 3), 9.7, 1e-6);
    EXPECT_NEAR(p.ab(3, 3, 3), 9.7, 1e-6);
    // The first cell beside the inflow: the boundary centre is half a cell away, so that the
    // interpolated volume and area stand for twice the gradient.
    EXPECT_NEAR(p.aw(2, 3, 3), 1.4, 1e-6);
}

}  // namespace
}  // namespace torvex
