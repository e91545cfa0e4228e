// The strongly implicit procedure.

#include "solver/sip.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "solver/plain_solvers.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

constexpr float alpha = 0.9F;

RcmWork work_for(const Field3& rhs) {
    RcmWork work;
    work.allocate(rhs.ni(), rhs.nj(), rhs.nk());
    work.rhs = rhs;
    return work;
}

Field3 solved(const CellRange& cells, const LinearSystem& eq, const Field3& rhs, int nsweep) {
    RcmWork work = work_for(rhs);
    Field3 phi(rhs.ni(), rhs.nj(), rhs.nk(), 77);
    SIP(cells, phi, nsweep, alpha, 1, work, eq);
    return phi;
}

void expect_like_plain(const CellRange& cells, const LinearSystem& eq, const Field3& rhs,
                       int nsweep) {
    Field3 plain;
    plain_sip(cells, eq, rhs, plain, nsweep, alpha);
    const Field3 phi = solved(cells, eq, rhs, nsweep);
    EXPECT_LE(largest_difference(cells, phi, plain), 1e-5 * largest(cells, plain));
}

TEST(Sip, EqualsThePlainProcedureToRounding) {
    for (const std::array n : {std::array{19, 12, 9},
                               {10, 11, 8},
                               {3, 3, 3},
                               {7, 30, 4},
                               {34, 5, 14},
                               {1100, 6, 5},
                               {12, 21, 3}}) {
        SCOPED_TRACE(std::to_string(n[0]) + " " + std::to_string(n[1]) + " " +
                     std::to_string(n[2]));
        const LinearSystem eq = random_system(n[0], n[1], n[2], 1.1F, 21);
        const Field3 rhs = random_field(n[0], n[1], n[2], 22);
        for (const int nsweep : {1, 2, 7}) {
            expect_like_plain(interior(n[0], n[1], n[2]), eq, rhs, nsweep);
        }
    }
}

// The coefficients of cells at the edge of the range point outside, where factors and values are
// zero, and stay so after a call with a larger range.
TEST(Sip, TakesAnyRange) {
    const LinearSystem eq = random_system(20, 15, 12, 1.1F, 23);
    const Field3 rhs = random_field(20, 15, 12, 24);
    RcmWork work = work_for(rhs);
    Field3 phi(20, 15, 12);
    SIP(interior(20, 15, 12), phi, 3, alpha, 1, work, eq);
    for (const CellRange& cells : {CellRange{4, 5, 3, 17, 11, 8},
                                   {3, 3, 3, 18, 13, 10},
                                   {2, 7, 2, 19, 7, 11},
                                   {2, 2, 6, 19, 14, 6},
                                   {9, 2, 2, 9, 14, 11},
                                   {5, 6, 7, 5, 6, 7}}) {
        Field3 plain;
        plain_sip(cells, eq, rhs, plain, 7, alpha);
        SIP(cells, phi, 7, alpha, 1, work, eq);
        EXPECT_LE(largest_difference(cells, phi, plain), 1e-5 * largest(cells, plain));
    }
}

TEST(Sip, EmptyRangeDoesNothing) {
    const LinearSystem eq = random_system(6, 6, 6, 1.1F, 25);
    RcmWork work = work_for(random_field(6, 6, 6, 26));
    const Field3 start = random_field(6, 6, 6, 27);
    Field3 phi = start;
    SIP({2, 2, 2, 5, 1, 5}, phi, 7, alpha, 1, work, eq);
    EXPECT_TRUE(same_bits(phi, start));
}

// With neighbours in one direction only nothing is left out of the factors: lpr and the one upper
// factor are those of the elimination of a tridiagonal system, and one sweep solves it.
TEST(Sip, SolvesATridiagonalSystemInOneSweep) {
    using Pair = std::array<Field3 LinearSystem::*, 2>;
    for (const Pair& pair :
         {Pair{&LinearSystem::ae, &LinearSystem::aw}, Pair{&LinearSystem::an, &LinearSystem::as},
          Pair{&LinearSystem::at, &LinearSystem::ab}}) {
        LinearSystem eq = random_system(9, 8, 7, 0.7F, 28);
        for (Field3 LinearSystem::*other :
             {&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an, &LinearSystem::as,
              &LinearSystem::at, &LinearSystem::ab}) {
            if (other != pair[0] && other != pair[1]) {
                (eq.*other).fill(0);
            }
        }
        const CellRange cells = interior(9, 8, 7);
        const Field3 rhs = random_field(9, 8, 7, 29);
        for_cells(cells, [&](int i, int j, int k) { eq.su(i, j, k) = double(rhs(i, j, k)); });
        const Field3 direct = direct_solution(cells, eq, Field3(9, 8, 7));
        EXPECT_LE(largest_difference(cells, solved(cells, eq, rhs, 1), direct),
                  1e-5 * largest(cells, direct));
    }
}

// No upper neighbours: the forward pass alone is the solution.
TEST(Sip, SolvesALowerTriangularSystemInOneSweep) {
    LinearSystem eq = random_system(20, 9, 8, 1.5F, 30);
    eq.ae.fill(0);
    eq.an.fill(0);
    eq.at.fill(0);
    const CellRange cells = interior(20, 9, 8);
    const Field3 rhs = random_field(20, 9, 8, 31);
    Field3 exact(20, 9, 8);
    for_cells(cells, [&](int i, int j, int k) {
        const double sum = double(rhs(i, j, k)) +
                           double(eq.aw(i, j, k)) * double(exact(i - 1, j, k)) +
                           double(eq.as(i, j, k)) * double(exact(i, j - 1, k)) +
                           double(eq.ab(i, j, k)) * double(exact(i, j, k - 1));
        exact(i, j, k) = float(sum / double(eq.ap(i, j, k)));
    });
    EXPECT_LE(largest_difference(cells, solved(cells, eq, rhs, 1), exact),
              1e-5 * largest(cells, exact));
}

TEST(Sip, ConvergesToTheDirectSolution) {
    const CellRange cells = interior(8, 7, 6);
    const Field3 rhs = random_field(8, 7, 6, 32);
    for (const float convection : {0.0F, 5.0F, -5.0F}) {
        LinearSystem eq = transport_system(rhs, convection, 1.0F, -convection);
        for_cells(cells, [&](int i, int j, int k) { eq.su(i, j, k) = double(rhs(i, j, k)); });
        const Field3 direct = direct_solution(cells, eq, Field3(8, 7, 6));
        EXPECT_LE(largest_difference(cells, solved(cells, eq, rhs, 40), direct),
                  1e-5 * largest(cells, direct));
    }
}

TEST(Sip, LaterCyclesUseTheFactorsAgain) {
    const LinearSystem eq = random_system(17, 9, 8, 1.1F, 33);
    const Field3 rhs = random_field(17, 9, 8, 34);
    const CellRange cells = interior(17, 9, 8);
    RcmWork work = work_for(random_field(17, 9, 8, 35));
    Field3 phi(17, 9, 8);
    SIP(cells, phi, 7, alpha, 1, work, eq);
    work.rhs = rhs;
    SIP(cells, phi, 7, alpha, 2, work, eq);
    Field3 fresh = solved(cells, eq, rhs, 7);
    EXPECT_EQ(largest_difference(cells, phi, fresh), 0);
}

TEST(Sip, GivesTheSameBitsForAnyNumberOfThreads) {
    const int processors = omp_get_max_threads();
    for (const int nj : {3, 5, 24}) {
        const LinearSystem eq = random_system(45, nj, 13, 1.02F, 36);
        const Field3 rhs = random_field(45, nj, 13, 37);
        Field3 first;
        for (const int threads : {1, 2, 3, 5, 8}) {
            omp_set_num_threads(threads);
            const Field3 phi = solved(interior(45, nj, 13), eq, rhs, 7);
            if (threads == 1) {
                first = phi;
            }
            EXPECT_TRUE(same_bits(phi, first)) << threads;
        }
    }
    omp_set_num_threads(processors);
}

TEST(Sip, NotANumberTravels) {
    for (Field3 LinearSystem::*coefficient :
         {&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an, &LinearSystem::as,
          &LinearSystem::at, &LinearSystem::ab, &LinearSystem::ap}) {
        LinearSystem eq = random_system(20, 8, 8, 1.1F, 38);
        (eq.*coefficient)(9, 4, 4) = std::numeric_limits<float>::quiet_NaN();
        const Field3 phi = solved(interior(20, 8, 8), eq, random_field(20, 8, 8, 39), 1);
        EXPECT_TRUE(std::isnan(phi(9, 4, 4)));
    }
}

}  // namespace
}  // namespace torvex
