#include "solver/pressure_boundary.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "solver/pressure_cases.hpp"
#include "solver/reference/plain_pressure.hpp"

namespace torvex {
namespace {

using plain::Face;

constexpr float mark = -7654.0F;
constexpr double rounding = 2e-6;  // of areas below 1 and velocities below 1

TEST(PressureBoundary, fluxes_take_the_velocity_on_the_face) {
    PressureCase c = random_case(shaken_hill({9, 7, 6}, 1U), 1U);
    for (Field3* x : {&c.s.flxU, &c.s.flxV, &c.s.flxW}) {
        x->fill(mark);
    }
    boundary_fluxes(c.g, c.s);
    const GridGeometry& g = c.g;
    const FlowState& s = c.s;
    for_all(g, [&](int i, int j, int k) {
        const bool in_i = i >= 2 && i <= g.nx;
        const bool in_j = j >= 2 && j <= g.ny;
        const bool in_k = k >= 2 && k <= g.nz;
        if (in_j && in_k && (i == 1 || i == g.nx)) {
            const plain::Cell from{i == 1 ? 1 : g.ni, j, k};
            EXPECT_NEAR(s.flxU(i, j, k), plain::boundary_flux(g, s, {i, j, k}, Face::east, from),
                        rounding);
        } else {
            EXPECT_EQ(s.flxU(i, j, k), mark);
        }
        if (in_i && in_k && (j == 1 || j == g.ny)) {
            const plain::Cell from{i, j == 1 ? 1 : g.nj, k};
            EXPECT_NEAR(s.flxV(i, j, k), plain::boundary_flux(g, s, {i, j, k}, Face::north, from),
                        rounding);
        } else {
            EXPECT_EQ(s.flxV(i, j, k), mark);
        }
        if (in_i && in_j && k == 1) {
            EXPECT_NEAR(s.flxW(i, j, k),
                        plain::boundary_flux(g, s, {i, j, k}, Face::top, {i, j, 1}), rounding);
        } else {
            EXPECT_EQ(s.flxW(i, j, k), mark);
        }
    });
}

// Areas 1 * 0.5, 3 * 0.5, 3 * 1; a velocity of its own on each boundary.
TEST(PressureBoundary, fluxes_of_a_box_are_area_times_normal_velocity) {
    PressureCase c = resting_case(uniform_mesh({4, 5, 6}, 3.0F, 1.0F, 0.5F));
    for (int n = 2; n <= 4; ++n) {
        c.s.u(1, n, 3) = 10.0F;
        c.s.u(c.g.ni, n, 3) = 11.0F;
        c.s.v(n, 1, 3) = 12.0F;
        c.s.v(n, c.g.nj, 3) = 13.0F;
        c.s.w(n, 3, 1) = 14.0F;
    }
    boundary_fluxes(c.g, c.s);
    EXPECT_FLOAT_EQ(c.s.flxU(1, 3, 3), 5.0F);
    EXPECT_FLOAT_EQ(c.s.flxU(c.g.nx, 3, 3), 5.5F);
    EXPECT_FLOAT_EQ(c.s.flxV(3, 1, 3), 18.0F);
    EXPECT_FLOAT_EQ(c.s.flxV(3, c.g.ny, 3), 19.5F);
    EXPECT_FLOAT_EQ(c.s.flxW(3, 3, 1), 42.0F);
}

TEST(PressureBoundary, the_top_is_closed_whatever_w_holds) {
    PressureCase c = random_case(shaken_hill({6, 5, 4}, 2U), 2U);
    c.s.flxW.fill(mark);
    c.s.w(3, 3, c.g.nk) = std::numeric_limits<float>::quiet_NaN();
    bc_flux(c.g, c.s);
    for_all(c.g, [&](int i, int j, int k) {
        const bool top = k == c.g.nz && i >= 2 && i <= c.g.nx && j >= 2 && j <= c.g.ny;
        EXPECT_EQ(c.s.flxW(i, j, k), top ? 0.0F : mark) << i << ' ' << j << ' ' << k;
    });
}

// The number of a cell, so that a copy tells where it comes from.
Field3 numbered(const GridGeometry& g) {
    Field3 x(g.ni, g.nj, g.nk);
    for_all(g,
            [&](int i, int j, int k) { x(i, j, k) = static_cast<float>(10000 * i + 100 * j + k); });
    return x;
}

float number(int i, int j, int k) {
    return static_cast<float>(10000 * i + 100 * j + k);
}

TEST(PressureBoundary, the_correction_copies_the_cell_beside_each_boundary_face) {
    const GridGeometry g = with_metrics(uniform_mesh({5, 6, 7}, 1.0F, 1.0F, 1.0F));
    Field3 pp = numbered(g);
    bc_pp(g, pp);
    for_all(g, [&](int i, int j, int k) {
        const auto inside = [](int n, int last) { return std::clamp(n, 2, last); };
        const int a = inside(i, g.nx);
        const int b = inside(j, g.ny);
        const int c = inside(k, g.nz);
        const bool edge = (a != i) + (b != j) + (c != k) > 1;
        EXPECT_EQ(pp(i, j, k), edge ? number(i, j, k) : number(a, b, c));
    });
}

TEST(PressureBoundary, the_pressure_copies_cells_and_whole_side_rows) {
    const GridGeometry g = with_metrics(uniform_mesh({5, 6, 7}, 1.0F, 1.0F, 1.0F));
    Field3 p = numbered(g);
    bc_p(g, p);
    for_all(g, [&](int i, int j, int k) {
        const int a = std::clamp(i, 2, g.nx);
        const int b = std::clamp(j, 2, g.ny);
        const int c = std::clamp(k, 2, g.nz);
        const bool level = k == 1 || k == g.nk;
        const bool end = i == 1 || i == g.ni;
        const bool side = j == 1 || j == g.nj;
        float expected = number(a, b, c);
        if (level && (side || end)) {
            // On the ground and the top the side rows take what stood there before, and the edges
            // along j stay as they are.
            expected = number(i, b, k);
        }
        EXPECT_EQ(p(i, j, k), expected) << i << ' ' << j << ' ' << k;
    });
}

TEST(PressureBoundary, has_the_same_bits_for_any_number_of_threads) {
    PressureCase one = random_case(shaken_hill({21, 9, 12}, 3U), 3U);
    const PressureCase start = one;
    with_threads(1, [&] { boundary_fluxes(one.g, one.s); });
    for (const int threads : {2, 3, 5}) {
        PressureCase many = start;
        with_threads(threads, [&] { boundary_fluxes(many.g, many.s); });
        EXPECT_EQ(bits(many.s.flxU), bits(one.s.flxU));
        EXPECT_EQ(bits(many.s.flxV), bits(one.s.flxV));
        EXPECT_EQ(bits(many.s.flxW), bits(one.s.flxW));
    }
}

}  // namespace
}  // namespace torvex
