#include "solver/pressure_equation.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

#include "solver/constants.hpp"
#include "solver/pressure_boundary.hpp"
#include "solver/pressure_cases.hpp"
#include "solver/pressure_faces.hpp"
#include "solver/reference/plain_pressure.hpp"
#include "solver/symmetry.hpp"

namespace torvex {
namespace {

using plain::Face;

float source_of_fluxes(PressureCase& c) {
    return mass_source(c.g, {c.s.flxU, c.s.flxV, c.s.flxW}, c.s);
}

PressureCase random_fluxes(Planes n, unsigned seed) {
    PressureCase c = random_case(shaken_hill(n, seed), seed);
    for (Field3* x : {&c.s.flxU, &c.s.flxV, &c.s.flxW}) {
        fill_random(*x, -1.0, 1.0, ++seed);
    }
    return c;
}

TEST(PressureEquation, source_is_minus_the_mass_that_leaves_the_cell) {
    for (const Planes n : {Planes{9, 7, 6}, Planes{2, 5, 4}, Planes{2, 2, 2}}) {
        PressureCase c = random_fluxes(n, 1U);
        c.s.eq.sp.fill(-BIG);
        const float sum = source_of_fluxes(c);
        const plain::Fluxes flux{c.s.flxU, c.s.flxV, c.s.flxW};
        double expected_sum = 0;
        for_interior(c.g, [&](int i, int j, int k) {
            const double m = plain::imbalance(c.g, c.s.den, flux, {i, j, k});
            EXPECT_NEAR(c.s.eq.su(i, j, k), -m, 2e-6);
            EXPECT_EQ(c.s.eq.sp(i, j, k), 0.0);
            expected_sum += std::abs(m);
        });
        EXPECT_NEAR(sum, expected_sum, 1e-5 * expected_sum);
    }
}

// Plane by plane, in each every eighth cell of its rows by itself: to the last bit.
TEST(PressureEquation, sum_keeps_its_order) {
    PressureCase c = random_fluxes({40, 31, 9}, 2U);
    const float sum = source_of_fluxes(c);
    float expected = 0.0F;
    for (int k = 2; k <= c.g.nz; ++k) {
        std::array<float, 8> part{};
        for_cells({2, 2, k}, {c.g.nx, c.g.ny, k}, [&](int i, int j, int level) {
            part.at(static_cast<std::size_t>(i - 2) % 8) +=
                static_cast<float>(std::abs(c.s.eq.su(i, j, level)));
        });
        expected += std::accumulate(part.begin(), part.end(), 0.0F);
    }
    EXPECT_EQ(sum, expected);
}

// The faces of a cell close it, whatever its shape.
TEST(PressureEquation, uniform_flow_has_no_imbalance_on_a_shaken_mesh) {
    PressureCase c = resting_case(shaken_hill({12, 10, 8}, 3U), 1.2F);
    set_velocity(c.s, 8.0F, -3.0F, 1.5F);
    face_fluxes(c.g, c.s);
    boundary_fluxes(c.g, c.s);
    // The top is open here: the uniform flow passes its shaken faces.
    for_cells({2, 2, c.g.nz}, {c.g.nx, c.g.ny, c.g.nz}, [&](int i, int j, int k) {
        c.s.flxW(i, j, k) = static_cast<float>(
            plain::boundary_flux(c.g, c.s, {i, j, k}, Face::top, {i, j, c.g.nk}));
    });
    source_of_fluxes(c);
    const plain::Fluxes flux{c.s.flxU, c.s.flxV, c.s.flxW};
    for_interior(c.g, [&](int i, int j, int k) {
        const double through = plain::throughput(c.g, c.s.den, flux, {i, j, k});
        EXPECT_NEAR(c.s.eq.su(i, j, k), 0.0, 2e-6 * through) << i << ' ' << j << ' ' << k;
    });
}

TEST(PressureEquation, mass_is_volume_times_density) {
    PressureCase c = random_fluxes({7, 6, 5}, 4U);
    c.s.den.fill(1.0F);
    const float sum = source_of_fluxes(c);
    const double one = c.s.eq.su(4, 3, 3);
    c.s.den.fill(1.2F);
    const float heavier = source_of_fluxes(c);
    EXPECT_NEAR(c.s.eq.su(4, 3, 3), 1.2 * one, 2e-6);
    EXPECT_NEAR(heavier, 1.2F * sum, 1e-5F * sum);
}

TEST(PressureEquation, a_bad_flux_shows_in_the_sum) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        PressureCase c = random_fluxes({7, 6, 5}, 5U);
        c.s.flxV(7, 5, 4) = bad;
        EXPECT_FALSE(std::isfinite(source_of_fluxes(c)));
    }
}

TEST(PressureEquation, coefficients_are_density_times_flux_per_correction) {
    for (const Planes n : {Planes{9, 7, 6}, Planes{2, 5, 4}, Planes{6, 2, 4}, Planes{6, 4, 2}}) {
        PressureCase c = random_case(shaken_hill(n, 6U), 6U);
        face_fluxes(c.g, c.s);
        fill_random(c.s.pp, -1.0, 1.0, 6U);
        pressure_equation(c.g, c.s);
        const LinearSystem& eq = c.s.eq;
        for_interior(c.g, [&](int i, int j, int k) {
            const auto expected = [&](plain::Cell cell, Face face, bool boundary) {
                return boundary ? 0.0
                                : plain::at_face(c.g, c.s.den, cell, face) *
                                      plain::coefficient(c.g, c.s, cell, face);
            };
            const plain::Cell here{i, j, k};
            const double ae = expected(here, Face::east, i == c.g.nx);
            const double aw = expected({i - 1, j, k}, Face::east, i == 2);
            const double an = expected(here, Face::north, j == c.g.ny);
            const double as = expected({i, j - 1, k}, Face::north, j == 2);
            const double at = expected(here, Face::top, k == c.g.nz);
            const double ab = expected({i, j, k - 1}, Face::top, k == 2);
            const double limit = 4e-6 * (1.0 + ae + aw + an + as + at + ab);
            EXPECT_NEAR(eq.ae(i, j, k), ae, limit);
            EXPECT_NEAR(eq.aw(i, j, k), aw, limit);
            EXPECT_NEAR(eq.an(i, j, k), an, limit);
            EXPECT_NEAR(eq.as(i, j, k), as, limit);
            EXPECT_NEAR(eq.at(i, j, k), at, limit);
            EXPECT_NEAR(eq.ab(i, j, k), ab, limit);
            EXPECT_NEAR(eq.ap(i, j, k), ae + aw + an + as + at + ab, limit);
        });
        for_all(c.g, [&](int i, int j, int k) { EXPECT_EQ(c.s.pp(i, j, k), 0.0F); });
    }
}

TEST(PressureEquation, boundary_coefficients_are_exactly_zero) {
    PressureCase c = random_case(shaken_hill({6, 7, 8}, 7U), 7U);
    for (Field3* x : {&c.s.coefXi, &c.s.coefEt, &c.s.coefZe}) {
        x->fill(1.0F);  // left by whoever used them before
    }
    face_fluxes(c.g, c.s);
    pressure_equation(c.g, c.s);
    const LinearSystem& eq = c.s.eq;
    for_interior(c.g, [&](int i, int j, int k) {
        EXPECT_EQ(eq.aw(i, j, k) == 0.0F, i == 2);
        EXPECT_EQ(eq.ae(i, j, k) == 0.0F, i == c.g.nx);
        EXPECT_EQ(eq.as(i, j, k) == 0.0F, j == 2);
        EXPECT_EQ(eq.an(i, j, k) == 0.0F, j == c.g.ny);
        EXPECT_EQ(eq.ab(i, j, k) == 0.0F, k == 2);
        EXPECT_EQ(eq.at(i, j, k) == 0.0F, k == c.g.nz);
    });
}

// Also beside the range, where another equation has left its coefficients: the solver may read them
// from either side of a face.
TEST(PressureEquation, is_symmetric_to_the_bit) {
    for (const Planes n : {Planes{9, 7, 6}, Planes{2, 5, 4}, Planes{6, 2, 4}, Planes{6, 4, 2}}) {
        PressureCase c = random_case(shaken_hill(n, 9U), 9U);
        for (Field3* x : {&c.s.eq.ae, &c.s.eq.an, &c.s.eq.at}) {
            x->fill(3.0F);
        }
        face_fluxes(c.g, c.s);
        pressure_equation(c.g, c.s);
        EXPECT_TRUE(is_symmetric({2, 2, 2, c.g.nx, c.g.ny, c.g.nz}, c.s.eq));
    }
}

TEST(PressureEquation, has_the_same_bits_for_any_number_of_threads) {
    PressureCase one = random_fluxes({21, 9, 12}, 8U);
    face_coefficients(one.g, one.s);
    const PressureCase start = one;
    float sum = 0;
    with_threads(1, [&] {
        sum = source_of_fluxes(one);
        pressure_equation(one.g, one.s);
    });
    for (const int threads : {2, 3, 5}) {
        PressureCase many = start;
        with_threads(threads, [&] {
            EXPECT_EQ(source_of_fluxes(many), sum);
            pressure_equation(many.g, many.s);
        });
        EXPECT_EQ(bits(many.s.eq.ap), bits(one.s.eq.ap));
        EXPECT_EQ(bits(many.s.eq.ab), bits(one.s.eq.ab));
        for_interior(one.g, [&](int i, int j, int k) {
            EXPECT_EQ(many.s.eq.su(i, j, k), one.s.eq.su(i, j, k));
        });
    }
}

}  // namespace
}  // namespace torvex
