// The parent's flow at the boundary cells of a child: fields that the interpolation must reproduce,
// the wall laws below the parent's first cell, and what the levels k = 1 and nk get.

#include "nest/boundary_values.hpp"

#include <gmock/gmock.h>

#include <cmath>

#include "nest/nest_case.hpp"

namespace torvex {
namespace {

using test::field_on;
using test::for_boundary_columns;
using test::NestCase;

double height_of(const GridGeometry& g, int i, int j, int k) {
    return static_cast<double>(g.zc(i, j, k) - g.zc(i, j, 1));
}

void fill(NestCase& c, double u, double v, double w, double p, double tke, double ted) {
    const auto constant = [&c](Field3& q, double value) {
        q = field_on(c.parent.grid, [value](double, double, double) { return value; });
    };
    constant(c.parent.flow.u, u);
    constant(c.parent.flow.v, v);
    constant(c.parent.flow.w, w);
    constant(c.parent.flow.p, p);
    constant(c.parent.flow.tke, tke);
    constant(c.parent.flow.ted, ted);
}

TEST(BoundaryValues, UniformFlowOverLevelGroundIsCarriedAsItIs) {
    NestCase c;
    fill(c, 8.0, -1.5, 0.25, 30.0, 0.5, 0.02);
    set_boundary_values(c.pass(), c.parent, c.flow);
    const GridGeometry& g = c.child;
    for_boundary_columns(g, [&](int i, int j) {
        for (int k = 2; k <= g.nk; ++k) {
            EXPECT_NEAR(c.flow.u(i, j, k), 8.0F, 8.0e-6F);
            EXPECT_NEAR(c.flow.v(i, j, k), -1.5F, 1.5e-6F);
            EXPECT_NEAR(c.flow.w(i, j, k), k == g.nk ? 0.0F : 0.25F, 1.0e-6F);
            EXPECT_NEAR(c.flow.p(i, j, k), 30.0F, 3.0e-5F);
            EXPECT_NEAR(c.flow.tke(i, j, k), 0.5F, 1.0e-6F);
            EXPECT_NEAR(c.flow.ted(i, j, k), 0.02F, 1.0e-7F);
            EXPECT_NEAR(c.flow.vis(i, j, k), 0.09 * 0.25 / 0.02 + 0.0015, 1.0e-5);
        }
        EXPECT_EQ(c.flow.u(i, j, 1), 0.0F);
        EXPECT_EQ(c.flow.v(i, j, 1), 0.0F);
        EXPECT_EQ(c.flow.w(i, j, 1), 0.0F);
        EXPECT_EQ(c.flow.tke(i, j, 1), c.flow.tke(i, j, 2));
        EXPECT_EQ(c.flow.ted(i, j, 1), c.flow.ted(i, j, 2));
    });
}

TEST(BoundaryValues, InteriorAndTheGroundsViscosityAreLeftAlone) {
    NestCase c;
    fill(c, 8.0, 0.0, 0.0, 1.0, 0.5, 0.02);
    for (Field3* q : {&c.flow.u, &c.flow.p, &c.flow.pp, &c.flow.tke, &c.flow.vis}) {
        q->fill(-7.0F);
    }
    set_boundary_values(c.pass(), c.parent, c.flow);
    const GridGeometry& g = c.child;
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                for (const Field3* q :
                     {&c.flow.u, &c.flow.p, &c.flow.pp, &c.flow.tke, &c.flow.vis}) {
                    ASSERT_EQ((*q)(i, j, k), -7.0F);
                }
            }
        }
    }
    for_boundary_columns(g, [&](int i, int j) {
        EXPECT_EQ(c.flow.vis(i, j, 1), -7.0F);
        EXPECT_EQ(c.flow.pp(i, j, 3), 0.0F);
    });
}

// Between four columns and two levels a field linear in x, y and h comes out exactly, whatever the
// levels of the child.
TEST(BoundaryValues, LinearFieldsAreReproduced) {
    NestCase c(test::flat_ground, {0, 14, 30, 90, 240, 500, 1000});
    fill(c, 0, 0, 0, 0, 0.5, 0.02);
    const auto linear = [](double x, double y, double h) {
        return 5.0 + 0.004 * x - 0.006 * y + 0.003 * h;
    };
    c.parent.flow.u = field_on(c.parent.grid, linear);
    set_boundary_values(c.pass(), c.parent, c.flow);
    const GridGeometry& g = c.child;
    for_boundary_columns(g, [&](int i, int j) {
        for (int k = 2; k <= g.nk; ++k) {
            const double expected =
                linear(static_cast<double>(g.xc(i, j, k)), static_cast<double>(g.yc(i, j, k)),
                       height_of(g, i, j, k));
            EXPECT_NEAR(c.flow.u(i, j, k), expected, 1.0e-5) << i << ' ' << j << ' ' << k;
        }
    });
}

// With the parent's own levels the inflow plane, which is a node plane of the parent, takes the
// mean of the cells on either side.
TEST(BoundaryValues, InflowPlaneHasTheMeanOfTheCellsBesideIt) {
    NestCase c;
    fill(c, 0, 0, 0, 0, 0.5, 0.02);
    // Uneven from column to column and level to level.
    c.parent.flow.u = field_on(c.parent.grid, [](double x, double, double h) {
        return 3.0 + std::sin(0.013 * x) + 0.7 * std::sin(0.11 * h);
    });
    set_boundary_values(c.pass(), c.parent, c.flow);
    const GridGeometry& g = c.child;
    // x = -200 is plane 5 of the parent, between its cells 5 and 6.
    for (int k = 2; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            const float mean = 0.5F * (c.parent.flow.u(5, 6, k) + c.parent.flow.u(6, 6, k));
            EXPECT_NEAR(c.flow.u(1, j, k), mean, 1.0e-5F) << j << ' ' << k;
        }
    }
}

// First centres at 1 m and 5 m: u follows the logarithm through the parent's value, with the
// child's roughness.
TEST(BoundaryValues, LawsOfTheWallBelowTheParentsFirstCell) {
    NestCase c(test::flat_ground, {0, 2, 6, 25, 80, 200, 1000});
    c.flow.z0.fill(0.3F);
    fill(c, 6.0, -2.0, 0.5, 11.0, 0.8, 0.04);
    set_boundary_values(c.pass(), c.parent, c.flow);
    for_boundary_columns(c.child, [&](int i, int j) {
        for (const int k : {2, 3}) {
            const double h = k == 2 ? 1.0 : 4.0;
            const double log_ratio = std::log((h + 0.3) / 0.3) / std::log(5.3 / 0.3);
            EXPECT_NEAR(c.flow.u(i, j, k), 6.0 * log_ratio, 1.0e-5);
            EXPECT_NEAR(c.flow.v(i, j, k), -2.0 * log_ratio, 1.0e-5);
            EXPECT_NEAR(c.flow.w(i, j, k), 0.5 * log_ratio, 1.0e-5);
            EXPECT_NEAR(c.flow.tke(i, j, k), 0.8, 1.0e-6);
            EXPECT_NEAR(c.flow.ted(i, j, k), 0.04 * 5.0 / h, 1.0e-6);
            EXPECT_NEAR(c.flow.p(i, j, k), 11.0, 1.0e-5);
        }
    });
}

// A hill that only the child's finer ground shows: the flow keeps its height above ground near the
// ground and its place below the top above.
TEST(BoundaryValues, HeightsCountFromTheColumnsOwnGround) {
    NestCase c;
    fill(c, 0, 0, 0, 0, 0.5, 0.02);
    c.parent.flow.u = field_on(c.parent.grid, [](double, double, double h) { return 0.01 * h; });
    // The child stands on a plateau of 100 m, its top at 1000 m: columns of 900 m.
    c.child = test::grid_over(
        test::line_of({-200, -100, 0, 100, 200}), test::line_of({-200, -100, 0, 100, 200}),
        test::line_of({0, 20, 60, 100, 200, 500, 1000}), [](double, double) { return 100.0; });
    allocate_fields(c.flow, c.child, 1);
    c.flow.z0.allocate(c.child.ni, c.child.nj, 0.1F);
    set_boundary_values(c.pass(), c.parent, c.flow);
    for_boundary_columns(c.child, [&](int i, int j) {
        for (int k = 2; k <= c.child.nk; ++k) {
            const double h = height_of(c.child, i, j, k);
            const double there = h <= 100.0 ? h : 100.0 + (h - 100.0) * 900.0 / 800.0;
            EXPECT_NEAR(c.flow.u(i, j, k), 0.01 * there, 1.0e-5) << k;
        }
        EXPECT_NEAR(c.flow.u(i, j, c.child.nk), 10.0F, 1.0e-5F);
    });
}

TEST(BoundaryValues, EnergyStaysAboveZero) {
    NestCase c;
    fill(c, 1.0, 0, 0, 0, -0.5, 0.02);
    set_boundary_values(c.pass(), c.parent, c.flow);
    EXPECT_EQ(c.flow.tke(1, 3, 4), 1.0e-15F);
    EXPECT_EQ(c.flow.tke(3, 1, 1), 1.0e-15F);
}

TEST(BoundaryValues, LengthFieldsFollowWhereTheParentHasThem) {
    NestCase c(test::flat_ground, {0, 2, 10, 25, 80, 200, 1000});
    allocate_fields(c.flow, c.child, 4);
    for (Field3* q : {&c.flow.lm, &c.flow.tkl, &c.flow.viskl}) {
        q->fill(-3.0F);
    }
    fill(c, 1.0, 0, 0, 0, 0.5, 0.02);
    set_boundary_values(c.pass(), c.parent, c.flow);
    EXPECT_EQ(c.flow.lm(1, 3, 3), -3.0F);  // as the start left it

    c.parent.flow.lm = field_on(c.parent.grid, [](double, double, double h) { return 0.4 * h; });
    c.parent.flow.tkl = field_on(c.parent.grid, [](double, double, double) { return 0.75; });
    c.parent.flow.viskl = field_on(c.parent.grid, [](double, double, double) { return 2.5; });
    set_boundary_values(c.pass(), c.parent, c.flow);
    for_boundary_columns(c.child, [&](int i, int j) {
        for (int k = 2; k <= c.child.nk; ++k) {
            EXPECT_NEAR(c.flow.lm(i, j, k), 0.4 * height_of(c.child, i, j, k), 1.0e-4);
            EXPECT_NEAR(c.flow.tkl(i, j, k), 0.75F, 1.0e-6F);
            EXPECT_NEAR(c.flow.viskl(i, j, k), 2.5F, 1.0e-6F);
        }
        EXPECT_EQ(c.flow.lm(i, j, 1), c.flow.lm(i, j, 2));
    });
    EXPECT_EQ(c.flow.lm(3, 3, 3), -3.0F);
}

}  // namespace
}  // namespace torvex
