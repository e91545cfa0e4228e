// One sweep of the four-colour Gauss-Seidel solver.

#include "solver/sweep_phi.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <limits>
#include <string>

#include "solver/plain_solvers.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

struct Extents {
    int ni, nj, nk;
};

void expect_like_plain(const CellRange& cells, const LinearSystem& given, const Field3& start,
                       float relax) {
    LinearSystem fast = given;
    LinearSystem plain = given;
    Field3 fast_phi = start;
    Field3 plain_phi = start;
    for (int sweep = 0; sweep < 4; ++sweep) {
        sweep_phi(cells, fast, fast_phi, relax);
        plain_sweep_phi(cells, plain, plain_phi, relax);
    }
    EXPECT_LE(largest_difference(cells, fast_phi, plain_phi), 1e-5 * largest(cells, plain_phi));
    // A residual is a difference of products of the size ap phi.
    EXPECT_LE(largest_difference(cells, fast.res, plain.res),
              1e-5 * largest(cells, given.ap) * largest(cells, plain_phi));
    EXPECT_TRUE(same_outside(cells, fast_phi, start));
    EXPECT_TRUE(same_outside(cells, fast.res, given.res));
}

TEST(SweepPhi, EqualsThePlainSweepToRounding) {
    for (const auto& [ni, nj, nk] :
         {Extents{19, 12, 9}, {10, 11, 8}, {3, 3, 3}, {7, 30, 4}, {34, 5, 14}, {1100, 6, 5}}) {
        SCOPED_TRACE(std::to_string(ni) + " " + std::to_string(nj) + " " + std::to_string(nk));
        const LinearSystem eq = random_system(ni, nj, nk, 1.05F, 3);
        const Field3 phi = random_field(ni, nj, nk, 4);
        expect_like_plain(interior(ni, nj, nk), eq, phi, 1.0F);
        expect_like_plain(interior(ni, nj, nk), eq, phi, 1.1F);
    }
}

TEST(SweepPhi, TakesAnyRange) {
    const LinearSystem eq = random_system(20, 15, 12, 1.05F, 5);
    const Field3 phi = random_field(20, 15, 12, 6);
    for (const CellRange& cells : {CellRange{4, 5, 3, 17, 11, 8},
                                   {3, 3, 3, 18, 13, 10},
                                   {2, 7, 2, 19, 7, 11},
                                   {2, 2, 6, 19, 14, 6},
                                   {9, 2, 2, 9, 14, 11},
                                   {5, 6, 7, 5, 6, 7},
                                   {2, 2, 2, 12, 3, 3}}) {
        SCOPED_TRACE(std::to_string(cells.i1) + " " + std::to_string(cells.j1) + " " +
                     std::to_string(cells.k1));
        expect_like_plain(cells, eq, phi, 1.0F);
    }
}

TEST(SweepPhi, EmptyRangeDoesNothing) {
    LinearSystem eq = random_system(6, 6, 6, 1.1F, 7);
    const Field3 start = random_field(6, 6, 6, 8);
    Field3 phi = start;
    sweep_phi({2, 2, 2, 1, 5, 5}, eq, phi, 1.0F);
    sweep_phi({2, 2, 2, 5, 5, 1}, eq, phi, 1.0F);
    EXPECT_TRUE(same_bits(phi, start));
}

// phi(i) = phi(i-1) + 1 along a row: the sweep carries the boundary value through the whole row.
TEST(SweepPhi, SeesTheNewWestValueAtOnce) {
    const int ni = 40;
    LinearSystem eq = empty_system(ni, 3, 3);
    eq.aw.fill(1);
    eq.su.fill(1);
    Field3 phi(ni, 3, 3);
    phi(1, 2, 2) = 5;
    sweep_phi(interior(ni, 3, 3), eq, phi, 1.0F);
    for (int i = 2; i < ni; ++i) {
        EXPECT_EQ(phi(i, 2, 2), 5.0F + float(i - 1)) << i;
    }
}

// With ap = 1 and a north, south, top or bottom coefficient alone, a cell takes its neighbour's
// value plus 1, and the order of the colours decides which neighbours are new already.
TEST(SweepPhi, RunsTheColoursInOrder) {
    const int n = 9;
    const auto swept = [&](Field3 LinearSystem::*coefficient) {
        LinearSystem eq = empty_system(n, n, n);
        (eq.*coefficient).fill(1);
        eq.su.fill(1);
        Field3 phi(n, n, n);
        sweep_phi(interior(n, n, n), eq, phi, 1.0F);
        return phi;
    };
    const auto second = [](int index) { return index % 2 == 1; };  // the ranges begin at 2
    const Field3 north = swept(&LinearSystem::an);
    const Field3 south = swept(&LinearSystem::as);
    const Field3 top = swept(&LinearSystem::at);
    const Field3 bottom = swept(&LinearSystem::ab);
    for_cells(interior(n, n, n), [&](int i, int j, int k) {
        EXPECT_EQ(north(i, j, k), second(j) && j < n - 1 ? 2.0F : 1.0F);
        EXPECT_EQ(south(i, j, k), second(j) ? 2.0F : 1.0F);
        EXPECT_EQ(top(i, j, k), second(k) && k < n - 1 ? 2.0F : 1.0F);
        EXPECT_EQ(bottom(i, j, k), second(k) ? 2.0F : 1.0F);
    });
}

// su = BIG * value and ap near BIG: the cell takes its value in one sweep, and its neighbours do
// not suffer.
TEST(SweepPhi, PinnedCellsTakeTheirValue) {
    LinearSystem eq = random_system(14, 10, 8, 1.05F, 9);
    Field3 phi = random_field(14, 10, 8, 10);
    for (const int i : {2, 7, 13}) {
        eq.su(i, 5, 4) = 1.0e25 * 3.25;
        eq.sp(i, 5, 4) = -1.0e25;
        eq.ap(i, 5, 4) = 1.0e25F;
    }
    expect_like_plain(interior(14, 10, 8), eq, phi, 1.0F);
    sweep_phi(interior(14, 10, 8), eq, phi, 1.0F);
    for (const int i : {2, 7, 13}) {
        EXPECT_FLOAT_EQ(phi(i, 5, 4), 3.25F);
    }
}

// A source that only double precision tells from its neighbours: (1 + 2^-40) - 1.
TEST(SweepPhi, AddsTheSourceInDoublePrecision) {
    LinearSystem eq = empty_system(12, 3, 3);
    eq.su.fill(1.0 + std::ldexp(1.0, -40));
    Field3 phi(12, 3, 3, 1.0F);
    sweep_phi(interior(12, 3, 3), eq, phi, 1.0F);
    for (int i = 2; i <= 11; ++i) {
        EXPECT_EQ(eq.res(i, 2, 2), std::ldexp(1.0F, -40)) << i;
    }
}

TEST(SweepPhi, ConvergesToTheDirectSolution) {
    const Field3 exact = smooth_field(8, 7, 6);
    for (const float convection : {0.0F, 4.0F, -4.0F}) {
        LinearSystem eq = transport_system(exact, convection, 0.5F * convection, 1.0F);
        Field3 phi = exact;
        for_cells(interior(8, 7, 6), [&](int i, int j, int k) { phi(i, j, k) = 0; });
        const Field3 direct = direct_solution(interior(8, 7, 6), eq, phi);
        EXPECT_LE(largest_difference(interior(8, 7, 6), direct, exact), 1e-6);
        for (int sweep = 0; sweep < 120; ++sweep) {
            sweep_phi(interior(8, 7, 6), eq, phi, 1.0F);
        }
        EXPECT_LE(largest_difference(interior(8, 7, 6), phi, direct), 1e-5) << convection;
    }
}

TEST(SweepPhi, GivesTheSameBitsForAnyNumberOfThreads) {
    const int processors = omp_get_max_threads();
    for (const int nk : {3, 8, 21}) {
        Field3 first, first_res;
        for (const int threads : {1, 2, 3, 5, 8}) {
            omp_set_num_threads(threads);
            LinearSystem eq = random_system(45, 23, nk, 1.02F, 11);
            Field3 phi = random_field(45, 23, nk, 12);
            for (int sweep = 0; sweep < 5; ++sweep) {
                sweep_phi(interior(45, 23, nk), eq, phi, 1.0F);
            }
            if (threads == 1) {
                first = phi;
                first_res = eq.res;
            }
            EXPECT_TRUE(same_bits(phi, first)) << threads;
            EXPECT_TRUE(same_bits(eq.res, first_res)) << threads;
        }
    }
    omp_set_num_threads(processors);
}

TEST(SweepPhi, AZeroDiagonalShows) {
    LinearSystem eq = random_system(20, 8, 8, 1.05F, 13);
    Field3 phi = random_field(20, 8, 8, 14);
    eq.ap(9, 4, 4) = 0;
    sweep_phi(interior(20, 8, 8), eq, phi, 1.0F);
    EXPECT_FALSE(std::isfinite(phi(9, 4, 4)));
    EXPECT_TRUE(std::isfinite(phi(8, 4, 4)));
}

TEST(SweepPhi, NotANumberTravels) {
    for (Field3 LinearSystem::*coefficient :
         {&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an, &LinearSystem::as,
          &LinearSystem::at, &LinearSystem::ab, &LinearSystem::ap}) {
        LinearSystem eq = random_system(20, 8, 8, 1.05F, 15);
        Field3 phi = random_field(20, 8, 8, 16);
        (eq.*coefficient)(9, 4, 4) = std::numeric_limits<float>::quiet_NaN();
        sweep_phi(interior(20, 8, 8), eq, phi, 1.0F);
        EXPECT_TRUE(std::isnan(phi(9, 4, 4)));
        EXPECT_TRUE(std::isnan(eq.res(9, 4, 4)));
    }
}

}  // namespace
}  // namespace torvex
