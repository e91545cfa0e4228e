#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "solver/pressure_boundary.hpp"
#include "solver/pressure_cases.hpp"
#include "solver/pressure_faces.hpp"
#include "solver/reference/plain_pressure.hpp"
#include "solver/second_corrector.hpp"

namespace torvex {
namespace {

using plain::Face;

PressureCase with_correction(GridGeometry mesh, unsigned seed) {
    PressureCase c = random_case(std::move(mesh), seed);
    face_fluxes(c.g, c.s);
    fill_random(c.s.pp, -1.0, 1.0, seed + 100U);
    bc_pp(c.g, c.s.pp);
    return c;
}

void expect_plain(const PressureCase& c, double limit) {
    PressureCase x = c;
    non_orthogonal_fluxes(x.g, x.s);
    const auto check = [&](const Field3& extra, Face face, Planes last) {
        for_interior(x.g, [&](int i, int j, int k) {
            const bool inner = i <= last.nx && j <= last.ny && k <= last.nz;
            const double expected =
                inner ? plain::extra_flux(c.g, c.s, c.s.pp, {i, j, k}, face) : 0.0;
            EXPECT_NEAR(extra(i, j, k), expected, inner ? limit : 0.0)
                << i << ' ' << j << ' ' << k << " face " << static_cast<int>(face);
        });
    };
    const auto [nx, ny, nz] = Planes{c.g.nx, c.g.ny, c.g.nz};
    check(x.s.coefXi, Face::east, {nx - 1, ny, nz});
    check(x.s.coefEt, Face::north, {nx, ny - 1, nz});
    check(x.s.coefZe, Face::top, {nx, ny, nz - 1});
}

TEST(SecondCorrector, agrees_with_the_plain_formula) {
    expect_plain(with_correction(shaken_hill({9, 7, 6}, 1U), 1U), 1e-5);
    expect_plain(with_correction(sheared_mesh({6, 5, 7}), 2U), 1e-5);
    expect_plain(with_correction(shaken_hill({2, 5, 4}, 3U), 3U), 1e-5);
    expect_plain(with_correction(shaken_hill({5, 2, 2}, 4U), 4U), 1e-5);
}

TEST(SecondCorrector, is_nothing_on_an_orthogonal_mesh) {
    PressureCase c =
        with_correction(stretched_mesh({9, 7, 6}, {1.0, 0.5, 0.2}, {1.2, 0.9, 1.3}), 5U);
    const PressureCase before = c;
    non_orthogonal_fluxes(c.g, c.s);
    for_interior(c.g, [&](int i, int j, int k) {
        EXPECT_NEAR(c.s.coefXi(i, j, k), 0.0F, 2e-6F * std::abs(before.s.coefXi(i, j, k)) + 1e-7F);
        EXPECT_NEAR(c.s.coefEt(i, j, k), 0.0F, 2e-6F * std::abs(before.s.coefEt(i, j, k)) + 1e-7F);
        EXPECT_NEAR(c.s.coefZe(i, j, k), 0.0F, 2e-6F * std::abs(before.s.coefZe(i, j, k)) + 1e-7F);
    });
}

// A linear pp has the same gradient a everywhere. With X the coefficient is driven by the drop
// between the feet, whose distance runs along the normal: -a.e times that distance.
TEST(SecondCorrector, completes_the_flux_of_a_linear_correction_on_a_sheared_mesh) {
    PressureCase c = resting_case(sheared_mesh({8, 8, 8}));
    face_coefficients(c.g, c.s);
    const plain::Vector a{0.7, -0.4, 1.1};
    for_all(c.g, [&](int i, int j, int k) {
        c.s.pp(i, j, k) =
            static_cast<float>(a.x * double(c.g.xc(i, j, k)) + a.y * double(c.g.yc(i, j, k)) +
                               a.z * double(c.g.zc(i, j, k)));
    });
    const PressureCase before = c;
    non_orthogonal_fluxes(c.g, c.s);
    // Shear: a step of i is (1, 0, 0.4), of j (0.3, 1, 0), of k (0, 0.2, 1).
    const auto check = [&](const Field3& X, const Field3& coef, Face face, plain::Vector step) {
        for_cells({2, 2, 2}, {c.g.nx - 1, c.g.ny - 1, c.g.nz - 1}, [&](int i, int j, int k) {
            const plain::Vector s = plain::twice_area(c.g, {i, j, k}, face);
            const double size2 = s.x * s.x + s.y * s.y + s.z * s.z;
            const double along = (step.x * s.x + step.y * s.y + step.z * s.z) / size2;
            const double drop = -(a.x * s.x + a.y * s.y + a.z * s.z) * along;
            const plain::Cell next = plain::next({i, j, k}, face);
            const double direct =
                double(before.s.pp(i, j, k)) - double(before.s.pp(next.i, next.j, next.k));
            EXPECT_NEAR(double(X(i, j, k)) + double(coef(i, j, k)) * direct,
                        double(coef(i, j, k)) * drop, 2e-5);
            EXPECT_GT(std::abs(X(i, j, k)), 1e-3F);  // the mesh is oblique indeed
        });
    };
    check(c.s.coefXi, before.s.coefXi, Face::east, {1, 0, 0.4});
    check(c.s.coefEt, before.s.coefEt, Face::north, {0.3, 1, 0});
    check(c.s.coefZe, before.s.coefZe, Face::top, {0, 0.2, 1});
}

TEST(SecondCorrector, adds_its_fluxes_to_all_faces_between_cells) {
    PressureCase c = with_correction(shaken_hill({7, 6, 5}, 6U), 6U);
    boundary_fluxes(c.g, c.s);
    bc_flux(c.g, c.s);
    non_orthogonal_fluxes(c.g, c.s);
    const PressureCase before = c;
    add_non_orthogonal_fluxes(c.g, c.s);
    const auto check = [&](const Field3& flux, const Field3& old, const Field3& X) {
        for_all(c.g, [&](int i, int j, int k) {
            EXPECT_FLOAT_EQ(flux(i, j, k), old(i, j, k) + X(i, j, k));
        });
    };
    check(c.s.flxU, before.s.flxU, before.s.coefXi);
    check(c.s.flxV, before.s.flxV, before.s.coefEt);
    check(c.s.flxW, before.s.flxW, before.s.coefZe);
}

TEST(SecondCorrector, a_face_without_area_adds_nothing) {
    PressureCase c = with_correction(uniform_mesh({5, 5, 5}, 1.0F, 1.0F, 1.0F), 7U);
    for (int j = 2; j <= 3; ++j) {  // the east face of (3,3,3) drawn together to a line
        c.g.zn(3, j, 3) = c.g.zn(3, j, 2);
    }
    face_coefficients(c.g, c.s);
    non_orthogonal_fluxes(c.g, c.s);
    EXPECT_EQ(c.s.coefXi(3, 3, 3), 0.0F);
}

TEST(SecondCorrector, has_the_same_bits_for_any_number_of_threads) {
    PressureCase one = with_correction(shaken_hill({21, 9, 12}, 8U), 8U);
    const PressureCase start = one;
    const auto run = [](PressureCase& c) {
        non_orthogonal_fluxes(c.g, c.s);
        add_non_orthogonal_fluxes(c.g, c.s);
    };
    with_threads(1, [&] { run(one); });
    for (const int threads : {2, 3, 5}) {
        PressureCase many = start;
        with_threads(threads, [&] { run(many); });
        EXPECT_EQ(bits(many.s.coefXi), bits(one.s.coefXi));
        EXPECT_EQ(bits(many.s.coefEt), bits(one.s.coefEt));
        EXPECT_EQ(bits(many.s.coefZe), bits(one.s.coefZe));
        EXPECT_EQ(bits(many.s.flxU), bits(one.s.flxU));
        EXPECT_EQ(bits(many.s.flxV), bits(one.s.flxV));
        EXPECT_EQ(bits(many.s.flxW), bits(one.s.flxW));
    }
}

}  // namespace
}  // namespace torvex
