// The residual cutting method.

#include "solver/rcm.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "solver/plain_solvers.hpp"
#include "solver/residual_sum.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

RcmWork work_for(const Field3& phi) {
    RcmWork work;
    work.allocate(phi.ni(), phi.nj(), phi.nk());
    return work;
}

double residual_in_double(const CellRange& cells, const LinearSystem& eq, const Field3& phi) {
    double sum = 0;
    for_cells(cells,
              [&](int i, int j, int k) { sum += std::abs(exact_residual(eq, phi, i, j, k)); });
    return sum;
}

// 0 inside, the exact values at the boundary indices.
Field3 cleared_inside(const Field3& exact) {
    Field3 phi = exact;
    for_cells(interior(phi.ni(), phi.nj(), phi.nk()),
              [&](int i, int j, int k) { phi(i, j, k) = 0; });
    return phi;
}

TEST(Rcm, NoCycleLeavesPhi) {
    const LinearSystem eq = random_system(8, 7, 6, 1.1F, 51);
    const Field3 start = random_field(8, 7, 6, 52);
    RcmWork work = work_for(start);
    for (const int ncycle : {0, -3}) {
        Field3 phi = start;
        const SolveRecord result = RCM(interior(8, 7, 6), phi, 4, ncycle, 5.0F, work, eq);
        EXPECT_EQ(result.n, 1);
        EXPECT_EQ(result.r1, 0.0F);
        EXPECT_EQ(result.a, 0.0F);
        EXPECT_TRUE(same_bits(phi, start));
    }
}

// r0 so small that no cycle is enough.
TEST(Rcm, EqualsThePlainMethodToRounding) {
    const Field3 exact = smooth_field(15, 12, 10);
    const CellRange cells = interior(15, 12, 10);
    LinearSystem eq = transport_system(exact, 2.0F, 0.0F, 1.0F);
    RcmWork work = work_for(exact);
    for (int L = 1; L <= 4; ++L) {
        for (int ncycle = 1; ncycle <= 3; ++ncycle) {
            Field3 phi = cleared_inside(exact);
            Field3 plain = phi;
            const SolveRecord result = RCM(cells, phi, L, ncycle, 1e-3F, work, eq);
            const SolveRecord expected = plain_rcm(cells, eq, plain, L, ncycle, 1e-3F);
            EXPECT_EQ(result.n, expected.n);
            EXPECT_LE(largest_difference(cells, phi, plain), 2e-5);
            const double r1 = residual_in_double(cells, eq, phi);
            // Rounding of 1040 residuals that are differences of products of order 10.
            EXPECT_NEAR(result.r1, r1, 1e-5 * r1 + 1040 * 2e-6);
            EXPECT_FLOAT_EQ(result.a, result.r1 / 1e-3F);
        }
    }
}

// In the first cycle one correction is weighted by the line search beta = sum(image
// r)/sum(image^2): with the residual after it orthogonal to the image.
TEST(Rcm, FirstCycleIsALineSearch) {
    const LinearSystem eq = random_system(12, 11, 9, 1.05F, 53);
    const CellRange cells = interior(12, 11, 9);
    Field3 phi = random_field(12, 11, 9, 54);
    RcmWork work = work_for(phi);
    RCM(cells, phi, 4, 1, 1.0F, work, eq);
    double product = 0;
    double image2 = 0;
    for_cells(cells, [&](int i, int j, int k) {
        const auto image = double(work.image[0](i, j, k));
        product += image * exact_residual(eq, phi, i, j, k);
        image2 += image * image;
    });
    EXPECT_LE(std::abs(product), 1e-5 * image2);
}

// A start so rough and a system so slow that every stored correction gets a share.
struct Hard {
    Hard() {
        for_cells(cells, [&](int i, int j, int k) { phi(i, j, k) *= 100; });
    }
    CellRange cells = interior(26, 24, 22);
    LinearSystem eq = neumann_system(smooth_field(26, 24, 22));
    Field3 phi = random_field(26, 24, 22, 55);
    RcmWork work = work_for(phi);
};

// After m cycles the residual is orthogonal to the m images in use: no better combination exists.
TEST(Rcm, CutsAllImages) {
    for (int cycles = 1; cycles <= 5; ++cycles) {
        Hard h;
        RCM(h.cells, h.phi, 4, cycles, 1e-6F, h.work, h.eq);
        for (std::size_t a = 0; a < std::min<std::size_t>(4, std::size_t(cycles)); ++a) {
            double product = 0;
            double image2 = 0;
            double r2 = 0;
            for_cells(h.cells, [&](int i, int j, int k) {
                const auto image = double(h.work.image[a](i, j, k));
                const double r = exact_residual(h.eq, h.phi, i, j, k);
                product += image * r;
                image2 += image * image;
                r2 += r * r;
            });
            EXPECT_LE(std::abs(product), 0.02 * std::sqrt(image2 * r2)) << cycles << " " << a;
        }
    }
}

// A second look at the plain method where the older corrections matter.
TEST(Rcm, EqualsThePlainMethodOnAHardSystem) {
    Hard all;
    Hard one;
    const float start = residual_sum(all.cells, all.eq, all.phi, Pinned::count);
    Field3 plain = all.phi;
    const SolveRecord result = RCM(all.cells, all.phi, 4, 4, 1e-6F, all.work, all.eq);
    const SolveRecord expected = plain_rcm(all.cells, all.eq, plain, 4, 4, 1e-6F);
    const SolveRecord single = RCM(one.cells, one.phi, 1, 4, 1e-6F, one.work, one.eq);
    EXPECT_LE(largest_difference(all.cells, all.phi, plain), 1e-3);
    EXPECT_NEAR(result.r1, expected.r1, 0.02 * double(expected.r1));
    EXPECT_LT(result.r1, 0.8F * single.r1);
    EXPECT_LT(result.r1, start);
}

TEST(Rcm, ConvergesToTheDirectSolution) {
    const CellRange cells = interior(8, 7, 6);
    const Field3 exact = smooth_field(8, 7, 6);
    for (const float convection : {0.0F, 3.0F}) {
        const LinearSystem eq = transport_system(exact, convection, -convection, 0);
        Field3 phi = cleared_inside(exact);
        RcmWork work = work_for(phi);
        const Field3 direct = direct_solution(cells, eq, phi);
        const SolveRecord result = RCM(cells, phi, 4, 8, 1e-6F, work, eq);
        EXPECT_EQ(result.n, 9);
        // The weights are not sought below a residual of 0.01 in the Euclidean norm, and the
        // condition number is of order 10.
        EXPECT_LE(largest_difference(cells, phi, direct), 2e-3);
        EXPECT_LE(residual_in_double(cells, eq, phi), 0.1);
    }
}

TEST(Rcm, StopsOneCycleAfterTheResidualHasFallen) {
    const CellRange cells = interior(30, 26, 22);
    const Field3 exact = smooth_field(30, 26, 22);
    const LinearSystem eq = transport_system(exact, 0, 0, 0);
    Field3 phi = cleared_inside(exact);
    RcmWork work = work_for(phi);
    const float r0 = residual_sum(cells, eq, phi, Pinned::count);
    const SolveRecord result = RCM(cells, phi, 4, 10, r0, work, eq);
    EXPECT_LE(result.n, 10);
    EXPECT_LT(result.a, 0.1F);
    EXPECT_FLOAT_EQ(result.a, result.r1 / r0);
    EXPECT_NEAR(result.r1, residual_in_double(cells, eq, phi), 1e-3 * double(result.r1) + 0.05);
    // One cycle fewer had not been enough.
    if (result.n > 1) {
        phi = cleared_inside(exact);
        EXPECT_GE(RCM(cells, phi, 4, result.n - 1, r0, work, eq).a, 0.1F);
    }
}

// All-Neumann boundaries: the level of phi is free, the rest is not.
TEST(Rcm, SolvesASingularSystem) {
    const CellRange cells = interior(18, 15, 12);
    const Field3 exact = smooth_field(18, 15, 12);
    const LinearSystem eq = neumann_system(exact);
    Field3 phi(18, 15, 12);
    RcmWork work = work_for(phi);
    const float r0 = residual_sum(cells, eq, phi, Pinned::count);
    const SolveRecord result = RCM(cells, phi, 4, 30, 1e-3F * r0, work, eq);
    EXPECT_LT(result.a, 0.1F);
    const float level = phi(5, 5, 5) - exact(5, 5, 5);
    for_cells(cells, [&](int i, int j, int k) {
        EXPECT_NEAR(phi(i, j, k) - level, exact(i, j, k), 5e-3);
    });
}

TEST(Rcm, NoReferenceRunsAllCycles) {
    const CellRange cells = interior(8, 7, 6);
    LinearSystem eq = empty_system(8, 7, 6);
    Field3 phi(8, 7, 6);
    RcmWork work = work_for(phi);
    const SolveRecord result = RCM(cells, phi, 4, 3, 0.0F, work, eq);
    EXPECT_EQ(result.n, 4);
    EXPECT_EQ(result.r1, 0.0F);
    EXPECT_TRUE(std::isnan(result.a));
    EXPECT_TRUE(same_bits(phi, Field3(8, 7, 6)));
}

TEST(Rcm, UsesTheSameWorkForSystemAfterSystem) {
    const CellRange cells = interior(14, 11, 9);
    RcmWork work = work_for(Field3(14, 11, 9));
    const LinearSystem eq = random_system(14, 11, 9, 1.1F, 56);
    Field3 fresh = random_field(14, 11, 9, 57);
    RCM(cells, fresh, 4, 6, 1e-6F, work, eq);

    Field3 other = random_field(14, 11, 9, 58);
    RCM({3, 3, 3, 9, 9, 6}, other, 4, 6, 1e-6F, work, random_system(14, 11, 9, 1.3F, 59));
    Field3 again = random_field(14, 11, 9, 57);
    RCM(cells, again, 4, 6, 1e-6F, work, eq);
    EXPECT_TRUE(same_bits(again, fresh));
}

TEST(Rcm, WorksInsideARange) {
    const LinearSystem eq = random_system(20, 16, 12, 1.1F, 60);
    const Field3 start = random_field(20, 16, 12, 61);
    const CellRange cells{4, 5, 3, 17, 11, 8};
    Field3 phi = start;
    Field3 plain = start;
    RcmWork work = work_for(phi);
    RCM(cells, phi, 4, 2, 1e-3F, work, eq);
    plain_rcm(cells, eq, plain, 4, 2, 1e-3F);
    EXPECT_LE(largest_difference(cells, phi, plain), 1e-4);
    EXPECT_TRUE(same_outside(cells, phi, start));
}

TEST(Rcm, GivesTheSameBitsForAnyNumberOfThreads) {
    const int processors = omp_get_max_threads();
    const CellRange cells = interior(40, 23, 19);
    const Field3 exact = smooth_field(40, 23, 19);
    const LinearSystem eq = neumann_system(exact);
    Field3 first;
    SolveRecord first_result{};
    for (const int threads : {1, 2, 3, 5, 8}) {
        omp_set_num_threads(threads);
        Field3 phi(40, 23, 19);
        RcmWork work = work_for(phi);
        const SolveRecord result = RCM(cells, phi, 4, 6, 1.0F, work, eq);
        if (threads == 1) {
            first = phi;
            first_result = result;
        }
        EXPECT_TRUE(same_bits(phi, first)) << threads;
        EXPECT_EQ(result.r1, first_result.r1) << threads;
        EXPECT_EQ(result.n, first_result.n) << threads;
    }
    omp_set_num_threads(processors);
}

TEST(Rcm, NotANumberTravels) {
    LinearSystem eq = random_system(12, 8, 8, 1.1F, 62);
    eq.at(5, 4, 4) = std::numeric_limits<float>::quiet_NaN();
    Field3 phi = random_field(12, 8, 8, 63);
    RcmWork work = work_for(phi);
    const SolveRecord result = RCM(interior(12, 8, 8), phi, 4, 2, 1.0F, work, eq);
    EXPECT_TRUE(std::isnan(result.r1));
    EXPECT_EQ(result.n, 3);
}

}  // namespace
}  // namespace torvex
