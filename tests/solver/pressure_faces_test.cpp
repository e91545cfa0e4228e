#include "solver/pressure_faces.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "solver/face_area.hpp"
#include "solver/pressure_cases.hpp"
#include "solver/reference/plain_pressure.hpp"

namespace torvex {
namespace {

using plain::Face;

constexpr Planes some_planes{9, 7, 6};
constexpr float mark = -7654.0F;

struct FaceFields {
    Face face;
    Field3& flux;
    Field3& coef;
    Planes last_inner;  // the last face between two cells
};

std::array<FaceFields, 3> directions(PressureCase& c) {
    const auto [nx, ny, nz] = Planes{c.g.nx, c.g.ny, c.g.nz};
    return {{{Face::east, c.s.flxU, c.s.coefXi, {nx - 1, ny, nz}},
             {Face::north, c.s.flxV, c.s.coefEt, {nx, ny - 1, nz}},
             {Face::top, c.s.flxW, c.s.coefZe, {nx, ny, nz - 1}}}};
}

double area(const GridGeometry& g, int i, int j, int k, Face face) {
    const plain::Vector a = plain::twice_area(g, {i, j, k}, face);
    return 0.5 * std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
}

// Velocities are of order 1, d*p is an area over 1 to 3: some ten roundings of terms that large.
double bound(const GridGeometry& g, int i, int j, int k, Face face) {
    const double a = area(g, i, j, k, face);
    return 2e-6 * a * (1.0 + 4.0 * a) + 1e-9;
}

void expect_plain(PressureCase& c) {
    face_fluxes(c.g, c.s);
    for (const auto& [face, flux, coef, last] : directions(c)) {
        for_cells({2, 2, 2}, last, [&, f = face, &x = flux, &a = coef](int i, int j, int k) {
            const double limit = bound(c.g, i, j, k, f);
            ASSERT_NEAR(x(i, j, k), plain::interpolated_flux(c.g, c.s, {i, j, k}, f), limit)
                << i << ' ' << j << ' ' << k << " face " << static_cast<int>(f);
            ASSERT_NEAR(a(i, j, k), plain::coefficient(c.g, c.s, {i, j, k}, f), limit)
                << i << ' ' << j << ' ' << k << " face " << static_cast<int>(f);
        });
    }
}

TEST(PressureFaces, agree_with_the_plain_formulas) {
    for (const unsigned seed : {1U, 20U, 300U}) {
        PressureCase c = random_case(shaken_hill(some_planes, seed), seed);
        expect_plain(c);
    }
    PressureCase sheared = random_case(sheared_mesh({6, 8, 20}), 4U);
    expect_plain(sheared);
}

TEST(PressureFaces, agree_with_the_plain_formulas_on_one_cell_across) {
    for (const Planes n : {Planes{2, 7, 6}, Planes{9, 2, 6}, Planes{9, 7, 2}, Planes{2, 2, 5},
                           Planes{2, 2, 2}, Planes{3, 3, 3}}) {
        PressureCase c = random_case(shaken_hill(n, 5U), 6U);
        expect_plain(c);
    }
}

TEST(PressureFaces, leave_boundary_fluxes_alone_and_close_the_coefficients) {
    PressureCase c = random_case(shaken_hill(some_planes, 7U), 7U);
    for (const auto& [face, flux, coef, last] : directions(c)) {
        flux.fill(mark);
        coef.fill(mark);
    }
    face_fluxes(c.g, c.s);
    for (const auto& [face, flux, coef, last] : directions(c)) {
        for_all(c.g, [&, f = face, &x = flux, &a = coef, end = last](int i, int j, int k) {
            const bool inner =
                i >= 2 && j >= 2 && k >= 2 && i <= end.nx && j <= end.ny && k <= end.nz;
            EXPECT_EQ(x(i, j, k) != mark, inner) << i << ' ' << j << ' ' << k;
            const int across = f == Face::east ? i : (f == Face::north ? j : k);
            const int n = f == Face::east ? c.g.nx : (f == Face::north ? c.g.ny : c.g.nz);
            const bool beside = (f == Face::east || (i >= 2 && i <= c.g.nx)) &&
                                (f == Face::north || (j >= 2 && j <= c.g.ny)) &&
                                (f == Face::top || (k >= 2 && k <= c.g.nz));
            if (beside && (across == 1 || across == n)) {
                EXPECT_EQ(a(i, j, k), 0.0F) << i << ' ' << j << ' ' << k;
            } else {
                EXPECT_EQ(a(i, j, k) != mark, inner) << i << ' ' << j << ' ' << k;
            }
        });
    }
}

TEST(PressureFaces, coefficients_alone_are_the_same) {
    PressureCase c = random_case(shaken_hill(some_planes, 8U), 8U);
    face_fluxes(c.g, c.s);
    PressureCase alone = c;
    for (Field3* x : {&alone.s.coefXi, &alone.s.coefEt, &alone.s.coefZe}) {
        x->fill(0.0F);
    }
    alone.s.flxU.fill(mark);
    face_coefficients(alone.g, alone.s);
    EXPECT_EQ(bits(alone.s.coefXi), bits(c.s.coefXi));
    EXPECT_EQ(bits(alone.s.coefEt), bits(c.s.coefEt));
    EXPECT_EQ(bits(alone.s.coefZe), bits(c.s.coefZe));
    EXPECT_EQ(alone.s.flxU(3, 3, 3), mark);
}

// The area vector is half the cross product of the diagonals, and the half enters once.
TEST(PressureFaces, carry_area_times_velocity_where_pressure_is_constant) {
    PressureCase c = resting_case(uniform_mesh({6, 5, 7}, 3.0F, 2.0F, 0.5F));
    c.s.p.fill(12.5F);
    set_velocity(c.s, 7.0F, -1.5F, 0.25F);
    face_fluxes(c.g, c.s);
    for (const auto& [face, flux, coef, last] : directions(c)) {
        const float expected = face == Face::east    ? 7.0F * 2.0F * 0.5F
                               : face == Face::north ? -1.5F * 3.0F * 0.5F
                                                     : 0.25F * 3.0F * 2.0F;
        for_cells({2, 2, 2}, last,
                  [&, &x = flux](int i, int j, int k) { EXPECT_FLOAT_EQ(x(i, j, k), expected); });
    }
    // d = area/ap, coef = area*d, with ap = 2
    EXPECT_FLOAT_EQ(c.s.coefXi(3, 3, 3), 1.0F * 1.0F / 2.0F);
    EXPECT_FLOAT_EQ(c.s.coefEt(3, 3, 3), 1.5F * 1.5F / 2.0F);
    EXPECT_FLOAT_EQ(c.s.coefZe(3, 3, 3), 6.0F * 6.0F / 2.0F);
}

// With the same pressure drop in every cell and between all centres the drops cancel, whatever d.
TEST(PressureFaces, interpolate_velocities_plainly_under_a_linear_pressure) {
    PressureCase c = random_case(uniform_mesh({8, 7, 6}, 1.0F, 2.0F, 0.5F), 9U);
    for_all(c.g, [&](int i, int j, int k) {
        c.s.p(i, j, k) =
            3.0F * c.g.xc(i, j, k) - 2.0F * c.g.yc(i, j, k) + 5.0F * c.g.zc(i, j, k) + 1.0F;
    });
    face_fluxes(c.g, c.s);
    const FlowState& s = c.s;
    for_interior(c.g, [&](int i, int j, int k) {
        if (i < c.g.nx) {
            EXPECT_NEAR(s.flxU(i, j, k), 1.0F * 0.5F * (s.u(i, j, k) + s.u(i + 1, j, k)), 2e-5);
        }
        if (j < c.g.ny) {
            EXPECT_NEAR(s.flxV(i, j, k), 0.5F * 0.5F * (s.v(i, j, k) + s.v(i, j + 1, k)), 2e-5);
        }
        if (k < c.g.nz) {
            EXPECT_NEAR(s.flxW(i, j, k), 2.0F * 0.5F * (s.w(i, j, k) + s.w(i, j, k + 1)), 2e-5);
        }
    });
}

// p = 1, -1, 1, ... has no drop across any inner cell, so that momentum does not feel it; between
// the centres it drops by 2.
TEST(PressureFaces, see_a_checkerboard_pressure) {
    PressureCase c = resting_case(uniform_mesh({8, 8, 8}, 1.0F, 1.0F, 1.0F));  // d = 1/2
    for_all(c.g,
            [&](int i, int j, int k) { c.s.p(i, j, k) = (i + j + k) % 2 == 0 ? 1.0F : -1.0F; });
    face_fluxes(c.g, c.s);
    for_cells({3, 3, 3}, {c.g.nx - 2, c.g.ny - 2, c.g.nz - 2}, [&](int i, int j, int k) {
        const float expected = 0.5F * 2.0F * c.s.p(i, j, k);
        EXPECT_EQ(c.s.flxU(i, j, k), expected);
        EXPECT_EQ(c.s.flxV(i, j, k), expected);
        EXPECT_EQ(c.s.flxW(i, j, k), expected);
    });
}

TEST(PressureFaces, take_the_drop_along_their_own_direction_alone) {
    PressureCase c = random_case(shaken_hill(some_planes, 10U), 10U);
    PressureCase other = c;
    face_fluxes(c.g, c.s);
    for (Field3* x : {&other.s.dUet, &other.s.dUze, &other.s.dVet, &other.s.dVze, &other.s.dWet,
                      &other.s.dWze}) {
        x->fill(1e6F);
    }
    face_fluxes(other.g, other.s);
    EXPECT_EQ(bits(other.s.flxU), bits(c.s.flxU));
    EXPECT_EQ(bits(other.s.coefXi), bits(c.s.coefXi));
    EXPECT_NE(bits(other.s.flxV), bits(c.s.flxV));
}

TEST(PressureFaces, have_the_same_bits_for_any_number_of_threads) {
    PressureCase one = random_case(shaken_hill({21, 9, 12}, 11U), 11U);
    const PressureCase start = one;
    with_threads(1, [&] { face_fluxes(one.g, one.s); });
    for (const int threads : {2, 3, 5}) {
        PressureCase many = start;
        with_threads(threads, [&] { face_fluxes(many.g, many.s); });
        for (int n = 0; n < 3; ++n) {
            const auto at = static_cast<std::size_t>(n);
            EXPECT_EQ(bits(directions(many)[at].flux), bits(directions(one)[at].flux));
            EXPECT_EQ(bits(directions(many)[at].coef), bits(directions(one)[at].coef));
        }
    }
}

}  // namespace
}  // namespace torvex
