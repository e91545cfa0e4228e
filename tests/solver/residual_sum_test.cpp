// The residual sums of an equation.

#include "solver/residual_sum.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "solver/constants.hpp"
#include "solver/plain_solvers.hpp"
#include "solver/test_systems.hpp"

namespace torvex {
namespace {

TEST(ResidualSum, EqualsTheSumInDoublePrecision) {
    const LinearSystem eq = random_system(600, 9, 7, 1.1F, 41);
    const Field3 phi = random_field(600, 9, 7, 42);
    for (const CellRange& cells : {interior(600, 9, 7), CellRange{5, 3, 4, 9, 8, 4}}) {
        double residual = 0;
        double scale = 0;
        for_cells(cells, [&](int i, int j, int k) {
            residual += std::abs(exact_residual(eq, phi, i, j, k));
            scale += std::abs(double(eq.ap(i, j, k)) * double(phi(i, j, k)));
        });
        EXPECT_NEAR(residual_sum(cells, eq, phi, Pinned::skip), residual, 2e-5 * residual);
        EXPECT_NEAR(residual_sum(cells, eq, phi, Pinned::count), residual, 2e-5 * residual);
        const EquationSums sums = equation_sums(cells, eq, phi);
        EXPECT_EQ(sums.residual, residual_sum(cells, eq, phi, Pinned::skip));
        EXPECT_NEAR(sums.scale, scale, 2e-5 * scale);
    }
}

// Every eighth cell of the rows of a plane by itself, then these eight sums, then the planes, to
// the bit: the same for any number of threads.
TEST(ResidualSum, AddsEveryEighthCellByItselfPlaneByPlane) {
    const LinearSystem eq = random_system(70, 6, 10, 1.01F, 45);
    const Field3 phi = random_field(70, 6, 10, 46);
    for (const int i2 : {9, 12, 69}) {
        const CellRange cells{2, 2, 2, i2, 5, 9};
        float expected = 0;
        for (int k = cells.k1; k <= cells.k2; ++k) {
            std::array<float, 8> part{};
            for_cells({cells.i1, cells.j1, k, cells.i2, cells.j2, k}, [&](int i, int j, int kk) {
                part.at(std::size_t(i - cells.i1) % 8) +=
                    residual_sum({i, j, kk, i, j, kk}, eq, phi, Pinned::skip);
            });
            float of_plane = 0;
            for (const float sum : part) {
                of_plane += sum;
            }
            expected += of_plane;
        }
        EXPECT_EQ(residual_sum(cells, eq, phi, Pinned::skip), expected);
    }
}

TEST(ResidualSumBelow, IsTheSumWhereTheRatioIsMet) {
    const LinearSystem eq = random_system(600, 6, 10, 1.01F, 47);
    const Field3 phi = random_field(600, 6, 10, 48);
    const CellRange cells = interior(600, 6, 10);
    const float sum = residual_sum(cells, eq, phi, Pinned::skip);
    EXPECT_EQ(residual_sum_below(cells, eq, phi, 0.1F, 10.1F * sum), sum);
    EXPECT_EQ(residual_sum_below(cells, eq, phi, 0.1F, 9.9F * sum), std::nullopt);
    EXPECT_EQ(residual_sum_below(cells, eq, phi, 0.1F, 1e-3F * sum), std::nullopt);
    EXPECT_EQ(residual_sum_below(cells, eq, phi, 0.1F, 0.0F), std::nullopt);
}

// A ratio that is no number is not met, wherever the bad value stands.
TEST(ResidualSumBelow, IsNothingForAValueThatIsNotANumber) {
    const LinearSystem eq = random_system(20, 6, 10, 1.01F, 49);
    Field3 phi = random_field(20, 6, 10, 50);
    const CellRange cells = interior(20, 6, 10);
    phi(10, 4, 8) = std::nanf("");
    EXPECT_EQ(residual_sum_below(cells, eq, phi, 0.1F, 1e20F), std::nullopt);
    EXPECT_EQ(residual_sum_below(cells, eq, random_field(20, 6, 10, 51), 0.1F, std::nanf("")),
              std::nullopt);
}

TEST(ResidualSumBelow, IsZeroWithoutCells) {
    const LinearSystem eq = random_system(6, 6, 6, 1.1F, 52);
    EXPECT_EQ(residual_sum_below({2, 2, 2, 5, 5, 1}, eq, random_field(6, 6, 6, 53), 0.1F, 1.0F),
              0.0F);
}

TEST(ResidualSum, IsZeroWithoutCells) {
    const LinearSystem eq = random_system(6, 6, 6, 1.1F, 43);
    const Field3 phi = random_field(6, 6, 6, 44);
    EXPECT_EQ(residual_sum({2, 2, 2, 5, 5, 1}, eq, phi, Pinned::skip), 0.0F);
    EXPECT_EQ(equation_sums({2, 2, 2, 1, 5, 5}, eq, phi).scale, 0.0F);
}

// A pinned cell carries r near 1e25; it counts where it is asked for, and always in the scale. BIG
// in double precision and BIG rounded to single both pin, their neighbours do not.
TEST(ResidualSum, LeavesPinnedCellsOut) {
    for (const double sp : {-BIG, -double(float(BIG))}) {
        LinearSystem eq = empty_system(5, 5, 5);
        Field3 phi(5, 5, 5);
        eq.su.fill(0.5);
        eq.sp(3, 3, 3) = sp;
        eq.su(3, 3, 3) = 2.0 * BIG;
        eq.ap(3, 3, 3) = float(BIG);
        phi(3, 3, 3) = 1;
        const CellRange cells = interior(5, 5, 5);
        EXPECT_EQ(residual_sum(cells, eq, phi, Pinned::skip), 26 * 0.5F);
        EXPECT_FLOAT_EQ(residual_sum(cells, eq, phi, Pinned::count), float(BIG));
        EXPECT_EQ(equation_sums(cells, eq, phi).residual, 26 * 0.5F);
        EXPECT_FLOAT_EQ(equation_sums(cells, eq, phi).scale, float(BIG));
        eq.sp(3, 3, 3) = double(std::nextafter(-float(BIG), 0.0F));
        EXPECT_FLOAT_EQ(residual_sum(cells, eq, phi, Pinned::skip), float(BIG));
    }
}

// su and ap phi meet in double precision: 2^30 + 1 - 2^30.
TEST(ResidualSum, FormsTheResidualInDoublePrecision) {
    LinearSystem eq = empty_system(3, 3, 3);
    Field3 phi(3, 3, 3, 1.0F);
    eq.ap(2, 2, 2) = std::ldexp(1.0F, 30);
    eq.su(2, 2, 2) = std::ldexp(1.0, 30) + 1;
    EXPECT_EQ(residual_sum(interior(3, 3, 3), eq, phi, Pinned::skip), 1.0F);
}

// In single precision 2^24 + 1 is 2^24: the three ones that follow it in its part of the plane are
// lost one by one, the other parts and the next plane arrive together.
TEST(ResidualSum, LosesOnlyWhatItsOwnPartLoses) {
    LinearSystem eq = empty_system(6, 6, 4);
    const Field3 phi(6, 6, 4);
    eq.su.fill(1);
    eq.su(2, 2, 2) = -std::ldexp(1.0, 24);
    EXPECT_EQ(residual_sum(interior(6, 6, 4), eq, phi, Pinned::skip), std::ldexp(1.0F, 24) + 28);
    eq.su(2, 2, 2) = 1;
    eq.su(5, 5, 2) = -std::ldexp(1.0, 24);  // the last of its part: three ones stand before it,
                                            // and 2^24 + 3 rounds to even, 2^24 + 4
    EXPECT_EQ(residual_sum(interior(6, 6, 4), eq, phi, Pinned::skip), std::ldexp(1.0F, 24) + 32);
}

TEST(ResidualSum, GivesTheSameBitsForAnyNumberOfThreads) {
    const int processors = omp_get_max_threads();
    const LinearSystem eq = random_system(45, 23, 18, 1.02F, 45);
    const Field3 phi = random_field(45, 23, 18, 46);
    omp_set_num_threads(1);
    const EquationSums first = equation_sums(interior(45, 23, 18), eq, phi);
    for (const int threads : {2, 3, 5, 8}) {
        omp_set_num_threads(threads);
        const EquationSums sums = equation_sums(interior(45, 23, 18), eq, phi);
        EXPECT_EQ(sums.residual, first.residual) << threads;
        EXPECT_EQ(sums.scale, first.scale) << threads;
    }
    omp_set_num_threads(processors);
}

TEST(ResidualSum, NotANumberTravels) {
    for (Field3 LinearSystem::*coefficient :
         {&LinearSystem::ae, &LinearSystem::aw, &LinearSystem::an, &LinearSystem::as,
          &LinearSystem::at, &LinearSystem::ab, &LinearSystem::ap}) {
        LinearSystem eq = random_system(9, 8, 8, 1.1F, 47);
        const Field3 phi = random_field(9, 8, 8, 48);
        (eq.*coefficient)(4, 4, 4) = std::numeric_limits<float>::quiet_NaN();
        EXPECT_TRUE(std::isnan(residual_sum(interior(9, 8, 8), eq, phi, Pinned::skip)));
        EXPECT_TRUE(std::isnan(equation_sums(interior(9, 8, 8), eq, phi).residual));
    }
}

}  // namespace
}  // namespace torvex
