// Whether a matrix is the same from both sides of its faces, and what the solvers make of it.

#include "solver/symmetry.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "solver/plain_solvers.hpp"
#include "solver/rcm.hpp"
#include "solver/rcm_work.hpp"
#include "solver/sip.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

// A random matrix with the lower side of each face copied from the upper one.
LinearSystem mirrored_system(int ni, int nj, int nk, unsigned seed) {
    LinearSystem eq = random_system(ni, nj, nk, 1.1F, seed);
    for_cells(interior(ni, nj, nk), [&](int i, int j, int k) {
        eq.aw(i, j, k) = eq.ae(i - 1, j, k);
        eq.as(i, j, k) = eq.an(i, j - 1, k);
        eq.ab(i, j, k) = eq.at(i, j, k - 1);
    });
    for_cells(interior(ni, nj, nk), [&](int i, int j, int k) {
        eq.ap(i, j, k) = 1.1F * (eq.ae(i, j, k) + eq.aw(i, j, k) + eq.an(i, j, k) + eq.as(i, j, k) +
                                 eq.at(i, j, k) + eq.ab(i, j, k));
    });
    return eq;
}

TEST(Symmetry, IsSeenAndNoCellIsMissed) {
    const CellRange cells = interior(21, 7, 6);
    const LinearSystem eq = mirrored_system(21, 7, 6, 61);
    EXPECT_TRUE(is_symmetric(cells, eq));
    for (Field3 LinearSystem::*side : {&LinearSystem::aw, &LinearSystem::as, &LinearSystem::ab}) {
        for_cells(cells, [&](int i, int j, int k) {
            LinearSystem other = eq;
            float& a = (other.*side)(i, j, k);
            a = std::nextafter(a, 2.0F * a);
            EXPECT_FALSE(is_symmetric(cells, other)) << i << ' ' << j << ' ' << k;
        });
    }
}

TEST(Symmetry, IsNotSeenInValuesThatAreNotNumbers) {
    LinearSystem eq = mirrored_system(8, 7, 6, 62);
    eq.an(4, 4, 4) = eq.as(4, 5, 4) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(is_symmetric(interior(8, 7, 6), eq));
}

TEST(Symmetry, IsThereWithoutCells) {
    EXPECT_TRUE(is_symmetric({2, 2, 2, 5, 5, 1}, random_system(6, 6, 6, 1.1F, 63)));
}

// SIP finds the symmetry by itself, and forgets it with the next matrix.
TEST(Symmetry, ChangesNoSolution) {
    const CellRange cells = interior(37, 12, 9);
    const Field3 rhs = random_field(37, 12, 9, 64);
    RcmWork work;
    work.allocate(37, 12, 9);
    work.rhs = rhs;
    for (const bool symmetric : {false, true, false}) {
        const LinearSystem eq =
            symmetric ? mirrored_system(37, 12, 9, 65) : random_system(37, 12, 9, 1.1F, 65);
        Field3 phi(37, 12, 9);
        SIP(cells, phi, 7, 0.9F, 1, work, eq);
        EXPECT_EQ(work.matrix == Matrix::symmetric, symmetric);
        Field3 plain;
        plain_sip(cells, eq, rhs, plain, 7, 0.9F);
        EXPECT_LE(largest_difference(cells, phi, plain), 1e-5 * largest(cells, plain));
    }
}

// Cells beside the range take part in the residual of RCM and in no correction.
TEST(Symmetry, LeavesTheCutResidualAsItIs) {
    const CellRange cells = interior(21, 12, 9);
    const LinearSystem eq = mirrored_system(21, 12, 9, 66);
    RcmWork work;
    work.allocate(21, 12, 9);
    Field3 phi = random_field(21, 12, 9, 67);
    Field3 plain = phi;
    const SolveRecord done = RCM(cells, phi, 4, 5, 1e-6F, work, eq);
    const SolveRecord expected = plain_rcm(cells, eq, plain, 4, 5, 1e-6F);
    EXPECT_EQ(work.matrix, Matrix::symmetric);
    EXPECT_EQ(done.n, expected.n);
    EXPECT_LE(largest_difference(cells, phi, plain), 1e-4 * largest(cells, plain));
}

}  // namespace
}  // namespace torvex
