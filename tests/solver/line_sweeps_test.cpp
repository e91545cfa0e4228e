// Gauss-Seidel by lines along k, and the residual sums of unknowns that share a matrix.

#include "solver/line_sweeps.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string>

#include "solver/constants.hpp"
#include "solver/line_residuals.hpp"
#include "solver/plain_solvers.hpp"
#include "solver/reference/plain_line_sweeps.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

struct Extents {
    int ni, nj, nk;
};

// Three unknowns with a matrix in common.
struct Three {
    explicit Three(const Extents& e, std::uint32_t seed = 1, float dominance = 1.05F)
        : eq(random_system(e.ni, e.nj, e.nk, dominance, seed)) {
        for (std::uint32_t n = 0; n < 3; ++n) {
            su[n] = random_field(e.ni, e.nj, e.nk, seed + 1 + n);
            phi[n] = random_field(e.ni, e.nj, e.nk, seed + 4 + n);
        }
    }
    LineUnknowns<3> unknowns() { return {{{su[0], phi[0]}, {su[1], phi[1]}, {su[2], phi[2]}}}; }
    LineUnknowns<1> unknown(std::size_t n) { return {{{su[n], phi[n]}}}; }
    CellRange cells() const { return interior(eq.ap.ni(), eq.ap.nj(), eq.ap.nk()); }

    LinearSystem eq;
    std::array<Field3, 3> su, phi;
    LineWork work;
};

Array3<double> widened(const Field3& x) {
    Array3<double> wide(x.ni(), x.nj(), x.nk());
    std::copy_n(x.data(), x.size(), wide.data());
    return wide;
}
Field3 narrowed(const Array3<double>& x) {
    Field3 narrow(x.ni(), x.nj(), x.nk());
    std::transform(x.data(), x.data() + x.size(), narrow.data(),
                   [](double value) { return static_cast<float>(value); });
    return narrow;
}

void sweep_one(const LinearSystem& eq, const Field3& su, Field3& phi, int sweeps) {
    LineWork work;
    line_sweeps<1>(eq, {{{su, phi}}}, sweeps, work);
}

TEST(LineSweeps, EqualThePlainFormToRounding) {
    for (const Extents& e : {Extents{19, 12, 9}, {10, 11, 8}, {34, 25, 14}, {70, 41, 5}}) {
        for (const int sweeps : {1, 2, 3}) {
            SCOPED_TRACE(std::to_string(e.ni) + " " + std::to_string(sweeps));
            Three fast(e);
            const Three start = fast;
            line_sweeps<3>(fast.eq, fast.unknowns(), sweeps, fast.work);
            for (std::size_t n = 0; n < 3; ++n) {
                Array3<double> plain = widened(start.phi[n]);
                plain_line_sweeps(start.eq, start.su[n], plain, sweeps);
                const Field3 expected = narrowed(plain);
                EXPECT_LE(largest_difference(fast.cells(), fast.phi[n], expected),
                          2e-6 * largest(fast.cells(), expected));
                EXPECT_TRUE(same_outside(fast.cells(), fast.phi[n], start.phi[n]));
            }
        }
    }
}

TEST(LineSweeps, TakeThinMeshes) {
    for (const Extents& e : {Extents{3, 3, 3},
                             {3, 30, 8},
                             {30, 3, 8},
                             {30, 30, 3},
                             {3, 3, 20},
                             {20, 3, 3},
                             {9, 4, 4},
                             {10, 4, 4},
                             {17, 5, 4},
                             {18, 5, 4},
                             {19, 5, 4}}) {
        SCOPED_TRACE(std::to_string(e.ni) + " " + std::to_string(e.nj) + " " +
                     std::to_string(e.nk));
        Three fast(e, 21);
        Array3<double> plain = widened(fast.phi[0]);
        plain_line_sweeps(fast.eq, fast.su[0], plain, 2);
        line_sweeps<3>(fast.eq, fast.unknowns(), 2, fast.work);
        EXPECT_LE(largest_difference(fast.cells(), fast.phi[0], narrowed(plain)), 2e-6);
    }
}

// Each unknown alone has the bits that it has among three, and the scratch of one call serves
// another of any extents.
TEST(LineSweeps, UnknownsDoNotMix) {
    LineWork work;
    for (const Extents& e : {Extents{21, 24, 9}, {40, 12, 17}, {12, 30, 6}}) {
        Three together(e, 31);
        Three alone = together;
        line_sweeps<3>(together.eq, together.unknowns(), 2, work);
        for (std::size_t n = 0; n < 3; ++n) {
            line_sweeps<1>(alone.eq, alone.unknown(n), 2, work);
            EXPECT_TRUE(same_bits(together.phi[n], alone.phi[n])) << n;
        }
    }
}

TEST(LineSweeps, NothingToDoChangesNothing) {
    Three x({9, 8, 7});
    const Three start = x;
    line_sweeps<3>(x.eq, x.unknowns(), 0, x.work);
    EXPECT_TRUE(same_bits(x.phi[0], start.phi[0]));
    for (const Extents& e : {Extents{2, 8, 7}, {9, 2, 7}, {9, 8, 2}}) {
        Three empty(e);
        const Three before = empty;
        line_sweeps<3>(empty.eq, empty.unknowns(), 2, empty.work);
        EXPECT_TRUE(same_bits(empty.phi[0], before.phi[0]));
    }
}

// Without neighbours beside the lines one sweep is the solution.
TEST(LineSweeps, OneSweepSolvesLinesThatStandAlone) {
    LinearSystem eq = random_system(12, 9, 30, 1.0F, 41);
    for (Field3* a : {&eq.ae, &eq.aw, &eq.an, &eq.as}) {
        a->fill(0);
    }
    for_cells(interior(12, 9, 30), [&](int i, int j, int k) {
        eq.ap(i, j, k) = 1.001F * (eq.at(i, j, k) + eq.ab(i, j, k));
    });
    const Field3 su = random_field(12, 9, 30, 42);
    Field3 phi = random_field(12, 9, 30, 43);
    for_cells(interior(12, 9, 30),
              [&](int i, int j, int k) { eq.su(i, j, k) = double(su(i, j, k)); });
    const CellRange column{5, 4, 2, 5, 4, 29};
    const Field3 direct = direct_solution(column, eq, phi);
    sweep_one(eq, su, phi, 1);
    EXPECT_LE(largest_difference(column, phi, direct), 1e-4 * largest(column, direct));
}

// Diffusion along k alone between values held at the ground and at the top is linear in k.
TEST(LineSweeps, ValuesAtGroundAndTopAreHeld) {
    const int nk = 12;
    LinearSystem eq = empty_system(20, 5, nk);
    eq.at.fill(1);
    eq.ab.fill(1);
    eq.ap.fill(2);
    const Field3 su(20, 5, nk);
    Field3 phi(20, 5, nk, 7.0F);
    for_cells({1, 1, 1, 20, 5, 1}, [&](int i, int j, int k) { phi(i, j, k) = 3; });
    for_cells({1, 1, nk, 20, 5, nk}, [&](int i, int j, int k) { phi(i, j, k) = 25; });
    sweep_one(eq, su, phi, 1);
    for_cells(interior(20, 5, nk), [&](int i, int j, int k) {
        EXPECT_NEAR(phi(i, j, k), 3 + 2 * (k - 1), 1e-5) << i << ' ' << j << ' ' << k;
    });
    EXPECT_EQ(phi(4, 3, 1), 3.0F);
    EXPECT_EQ(phi(4, 3, nk), 25.0F);
    EXPECT_EQ(phi(1, 3, 5), 7.0F);
    EXPECT_EQ(phi(20, 3, 5), 7.0F);
    EXPECT_EQ(phi(4, 1, 5), 7.0F);
    EXPECT_EQ(phi(4, 5, 5), 7.0F);
}

// With ap = 1 and one coefficient beside the lines a cell takes its neighbour's value plus 1: lines
// of even i + j find the old values, the others those of this sweep.
TEST(LineSweeps, EvenLinesComeFirst) {
    const int n = 8;
    const auto swept = [&](Field3 LinearSystem::*coefficient) {
        LinearSystem eq = empty_system(n, n, n);
        (eq.*coefficient).fill(1);
        Field3 phi(n, n, n);
        sweep_one(eq, Field3(n, n, n, 1.0F), phi, 1);
        return phi;
    };
    const Field3 east = swept(&LinearSystem::ae);
    const Field3 west = swept(&LinearSystem::aw);
    const Field3 north = swept(&LinearSystem::an);
    const Field3 south = swept(&LinearSystem::as);
    for_cells(interior(n, n, n), [&](int i, int j, int k) {
        const bool second = (i + j) % 2 == 1;
        EXPECT_EQ(east(i, j, k), second && i < n - 1 ? 2.0F : 1.0F);
        EXPECT_EQ(west(i, j, k), second && i > 2 ? 2.0F : 1.0F);
        EXPECT_EQ(north(i, j, k), second && j < n - 1 ? 2.0F : 1.0F);
        EXPECT_EQ(south(i, j, k), second && j > 2 ? 2.0F : 1.0F);
    });
}

TEST(LineSweeps, PinnedCellsTakeTheirValue) {
    Three x({14, 10, 8}, 51);
    for (const int i : {2, 7, 13}) {
        x.su[0](i, 5, 4) = 3.25e25F;
        x.eq.ap(i, 5, 4) = 1.0e25F;
    }
    line_sweeps<1>(x.eq, x.unknown(0), 2, x.work);
    for (const int i : {2, 7, 13}) {
        EXPECT_FLOAT_EQ(x.phi[0](i, 5, 4), 3.25F);
    }
    EXPECT_LT(largest(x.cells(), x.phi[0]), 10.0);
}

// Coefficients along k a million times those beside: the lines take them out, and a sweep gains as
// much as with coefficients of one size.
TEST(LineSweeps, ConvergeWhereCellsAreFlat) {
    const int ni = 9, nj = 8, nk = 10;
    for (const float flatness : {1.0F, 1.0e3F, 1.0e6F}) {
        LinearSystem eq = empty_system(ni, nj, nk);
        for (Field3* a : {&eq.ae, &eq.aw, &eq.an, &eq.as}) {
            a->fill(1);
        }
        eq.at.fill(flatness);
        eq.ab.fill(flatness);
        eq.ap.fill(4 + 2 * flatness);
        const Field3 su(ni, nj, nk);
        Field3 phi = random_field(ni, nj, nk, 61);
        for_cells({1, 1, 1, ni, nj, nk}, [&](int i, int j, int k) {
            if (i == 1 || j == 1 || k == 1 || i == ni || j == nj || k == nk) {
                phi(i, j, k) = 0;
            }
        });
        sweep_one(eq, su, phi, 40);
        EXPECT_LE(largest(interior(ni, nj, nk), phi), 1e-4) << flatness;
    }
}

TEST(LineSweeps, GiveTheSameBitsForAnyNumberOfThreads) {
    const int processors = omp_get_max_threads();
    for (int rows = 1; rows <= 40; ++rows) {
        const Three start({23, rows + 2, 6}, static_cast<std::uint32_t>(70 + rows));
        Three first = start;
        omp_set_num_threads(1);
        line_sweeps<3>(first.eq, first.unknowns(), 2, first.work);
        for (int threads = 2; threads <= 8; ++threads) {
            omp_set_num_threads(threads);
            Three again = start;
            line_sweeps<3>(again.eq, again.unknowns(), 2, again.work);
            for (std::size_t n = 0; n < 3; ++n) {
                EXPECT_TRUE(same_bits(again.phi[n], first.phi[n])) << rows << ' ' << threads;
            }
        }
    }
    omp_set_num_threads(processors);
}

TEST(LineSweeps, NotANumberTravels) {
    for (Field3 LinearSystem::*coefficient :
         {&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an, &LinearSystem::as,
          &LinearSystem::at, &LinearSystem::ab, &LinearSystem::ap}) {
        Three x({20, 8, 8}, 81);
        (x.eq.*coefficient)(9, 4, 4) = std::numeric_limits<float>::quiet_NaN();
        line_sweeps<1>(x.eq, x.unknown(0), 1, x.work);
        EXPECT_TRUE(std::isnan(x.phi[0](9, 4, 4)));
    }
}

TEST(LineResiduals, AreThoseOfThePlainForm) {
    for (const Extents& e : {Extents{19, 12, 9}, {3, 3, 3}, {10, 3, 40}, {11, 30, 3}}) {
        Three x(e, 91);
        const std::array<float, 3> sums = line_residuals<3>(x.eq, x.unknowns());
        for (std::size_t n = 0; n < 3; ++n) {
            const double expected = plain_line_residual(x.eq, x.su[n], x.phi[n]);
            EXPECT_NEAR(sums[n], expected, 1e-5 * expected);
            EXPECT_EQ(line_residuals<1>(x.eq, x.unknown(n))[0], sums[n]);
        }
    }
}

TEST(LineResiduals, VanishAtTheSolution) {
    Three x({12, 11, 10}, 101, 1.5F);
    const float before = line_residuals<1>(x.eq, x.unknown(0))[0];
    line_sweeps<1>(x.eq, x.unknown(0), 40, x.work);
    EXPECT_LE(line_residuals<1>(x.eq, x.unknown(0))[0], 1e-5F * before);
}

TEST(LineResiduals, LeavePinnedCellsOut) {
    Three x({12, 11, 10}, 111);
    const CellRange one{4, 5, 6, 4, 5, 6};
    const double all = plain_line_residual(x.eq, x.su[0], x.phi[0]);
    for_cells(one, [&](int i, int j, int k) { x.eq.su(i, j, k) = double(x.su[0](i, j, k)); });
    const double without = all - std::abs(exact_residual(x.eq, x.phi[0], 4, 5, 6));
    x.eq.ap(4, 5, 6) = static_cast<float>(BIG);
    x.su[0](4, 5, 6) = 3.0e25F;
    EXPECT_NEAR(line_residuals<1>(x.eq, x.unknown(0))[0], without, 1e-5 * without);
}

TEST(LineResiduals, AreTheSameBitsForAnyNumberOfThreads) {
    const int processors = omp_get_max_threads();
    Three x({45, 23, 21}, 121);
    omp_set_num_threads(1);
    const std::array<float, 3> first = line_residuals<3>(x.eq, x.unknowns());
    for (const int threads : {2, 3, 5, 8}) {
        omp_set_num_threads(threads);
        EXPECT_EQ((line_residuals<3>(x.eq, x.unknowns())), first) << threads;
    }
    omp_set_num_threads(processors);
}

}  // namespace
}  // namespace torvex
