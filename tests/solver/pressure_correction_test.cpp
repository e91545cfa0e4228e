#include "solver/pressure_correction.hpp"

#include <gtest/gtest.h>

#include "solver/pressure_boundary.hpp"
#include "solver/pressure_cases.hpp"
#include "solver/pressure_faces.hpp"
#include "solver/reference/plain_pressure.hpp"

namespace torvex {
namespace {

using plain::Face;

PressureCase with_correction(Planes n, unsigned seed) {
    PressureCase c = random_case(shaken_hill(n, seed), seed);
    face_fluxes(c.g, c.s);
    boundary_fluxes(c.g, c.s);
    bc_flux(c.g, c.s);
    fill_random(c.s.pp, -1.0, 1.0, seed + 100U);
    bc_pp(c.g, c.s.pp);
    return c;
}

// Only cells 2..last are corrected; everything else keeps its bits.
bool inside(int i, int j, int k, Planes last) {
    return i >= 2 && j >= 2 && k >= 2 && i <= last.nx && j <= last.ny && k <= last.nz;
}

TEST(PressureCorrection, velocities_follow_all_three_directions_unrelaxed) {
    for (const Planes n : {Planes{9, 7, 6}, Planes{2, 5, 4}, Planes{2, 2, 2}}) {
        PressureCase c = with_correction(n, 1U);
        const PressureCase before = c;
        correct_flow(c.g, c.s, 0.2F);
        for_all(c.g, [&](int i, int j, int k) {
            if (!inside(i, j, k, {c.g.nx, c.g.ny, c.g.nz})) {
                EXPECT_EQ(c.s.u(i, j, k), before.s.u(i, j, k));
                EXPECT_EQ(c.s.v(i, j, k), before.s.v(i, j, k));
                EXPECT_EQ(c.s.w(i, j, k), before.s.w(i, j, k));
                return;
            }
            const plain::Vector change =
                plain::velocity_change(before.g, before.s, before.s.pp, {i, j, k});
            EXPECT_NEAR(c.s.u(i, j, k), double(before.s.u(i, j, k)) + change.x, 3e-6);
            EXPECT_NEAR(c.s.v(i, j, k), double(before.s.v(i, j, k)) + change.y, 3e-6);
            EXPECT_NEAR(c.s.w(i, j, k), double(before.s.w(i, j, k)) + change.z, 3e-6);
        });
    }
}

TEST(PressureCorrection, fluxes_between_cells_are_corrected_but_not_among_the_last_ones) {
    for (const Planes n : {Planes{9, 7, 6}, Planes{3, 3, 3}, Planes{2, 5, 4}}) {
        PressureCase c = with_correction(n, 2U);
        const PressureCase before = c;
        correct_flow(c.g, c.s, 0.2F);
        const auto check = [&](const Field3& flux, const Field3& old, Face face) {
            for_all(c.g, [&](int i, int j, int k) {
                if (inside(i, j, k, {c.g.nx - 1, c.g.ny - 1, c.g.nz - 1})) {
                    EXPECT_NEAR(
                        flux(i, j, k),
                        double(old(i, j, k)) +
                            plain::flux_change(before.g, before.s, before.s.pp, {i, j, k}, face),
                        3e-6);
                    EXPECT_NE(flux(i, j, k), old(i, j, k));
                } else {
                    EXPECT_EQ(flux(i, j, k), old(i, j, k)) << i << ' ' << j << ' ' << k;
                }
            });
        };
        check(c.s.flxU, before.s.flxU, Face::east);
        check(c.s.flxV, before.s.flxV, Face::north);
        check(c.s.flxW, before.s.flxW, Face::top);
    }
}

TEST(PressureCorrection, pressure_moves_under_relaxed_about_the_reference_cell) {
    for (const float URFP : {0.2F, 0.6F, 1.0F, 0.0F}) {
        PressureCase c = with_correction({9, 7, 6}, 3U);
        const PressureCase before = c;
        correct_flow(c.g, c.s, URFP);
        const auto reference = double(before.s.pp(2, 2, 2));
        for_all(c.g, [&](int i, int j, int k) {
            if (inside(i, j, k, {c.g.nx, c.g.ny, c.g.nz})) {
                EXPECT_NEAR(c.s.p(i, j, k),
                            double(before.s.p(i, j, k)) +
                                double(URFP) * (double(before.s.pp(i, j, k)) - reference),
                            1e-6);
            } else {
                EXPECT_EQ(c.s.p(i, j, k), before.s.p(i, j, k));
            }
        });
        EXPECT_EQ(c.s.p(2, 2, 2), before.s.p(2, 2, 2));
    }
}

// pp = -p: in a cell with the drop Dp along i, u loses d*Dp.
TEST(PressureCorrection, acts_as_pressure_does) {
    PressureCase c = resting_case(uniform_mesh({6, 5, 4}, 1.0F, 2.0F, 3.0F), 1.0F, 4.0F);
    for_all(c.g, [&](int i, int j, int k) { c.s.pp(i, j, k) = 5.0F * c.g.xc(i, j, k); });
    face_coefficients(c.g, c.s);
    correct_flow(c.g, c.s, 0.2F);
    // d = 6/4; the drop of a cell and between two centres is -5; the face is 6 large
    for_interior(c.g, [&](int i, int j, int k) {
        EXPECT_FLOAT_EQ(c.s.u(i, j, k), -7.5F);
        EXPECT_EQ(c.s.v(i, j, k), 0.0F);
        EXPECT_EQ(c.s.w(i, j, k), 0.0F);
        const bool corrected = i < c.g.nx && j < c.g.ny && k < c.g.nz;
        EXPECT_FLOAT_EQ(c.s.flxU(i, j, k), corrected ? -45.0F : 0.0F);
    });
}

TEST(PressureCorrection, has_the_same_bits_for_any_number_of_threads) {
    PressureCase one = with_correction({21, 9, 12}, 4U);
    const PressureCase start = one;
    with_threads(1, [&] { correct_flow(one.g, one.s, 0.3F); });
    for (const int threads : {2, 3, 5}) {
        PressureCase many = start;
        with_threads(threads, [&] { correct_flow(many.g, many.s, 0.3F); });
        EXPECT_EQ(bits(many.s.u), bits(one.s.u));
        EXPECT_EQ(bits(many.s.v), bits(one.s.v));
        EXPECT_EQ(bits(many.s.w), bits(one.s.w));
        EXPECT_EQ(bits(many.s.p), bits(one.s.p));
        EXPECT_EQ(bits(many.s.flxU), bits(one.s.flxU));
        EXPECT_EQ(bits(many.s.flxV), bits(one.s.flxV));
        EXPECT_EQ(bits(many.s.flxW), bits(one.s.flxW));
    }
}

}  // namespace
}  // namespace torvex
