// Fields between a mesh of 5 x 4 cells and one of 2 x 2, by hand. Along i the coarse cells hold the
// fine cells 2, 3 and 4, 5, 6, along j 2, 3 and 4, 5.

#include "solver/accelerated/transfers.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "solver/fields.hpp"

namespace torvex::test {
namespace {

constexpr int nz = 4;

class Transfers : public ::testing::Test {
 protected:
    Coarsening by{coarse_line(6), coarse_line(5)};
    CellRange inside{2, 2, 2, 3, 3, nz};
    CellRange whole{1, 1, 1, 4, 4, nz + 1};
    Field3 fine{7, 6, nz + 1};
    Field3 coarse{4, 4, nz + 1, -1.0F};

    template <class Formula>
    void fill(Field3& x, const Formula& formula) {
        for (int k = 1; k <= x.nk(); ++k) {
            for (int j = 1; j <= x.nj(); ++j) {
                for (int i = 1; i <= x.ni(); ++i) {
                    x(i, j, k) = static_cast<float>(formula(i, j, k));
                }
            }
        }
    }
};

// Means of i over the cells of each coarse cell, the planes on the boundary first and last.
constexpr std::array mean_i{1.0, 2.5, 5.0, 7.0};
constexpr std::array mean_j{1.0, 2.5, 4.5, 6.0};

TEST_F(Transfers, MeanOfWhatIsLinearIsItsValueInTheMiddle) {
    fill(fine, [](int i, int j, int k) { return i + 10 * j + 100 * k; });
    restrict_mean(by, whole, fine, coarse);
    for (int k = 1; k <= nz + 1; ++k) {
        for (std::size_t J = 1; J <= 4; ++J) {
            for (std::size_t I = 1; I <= 4; ++I) {
                EXPECT_NEAR(
                    static_cast<double>(coarse(static_cast<int>(I), static_cast<int>(J), k)),
                    mean_i.at(I - 1) + 10 * mean_j.at(J - 1) + 100 * k, 1e-3);
            }
        }
    }
}

TEST_F(Transfers, RangeBoundsWhatIsWritten) {
    fill(fine, [](int, int, int) { return 3; });
    restrict_mean(by, inside, fine, coarse);
    for (int k = 1; k <= nz + 1; ++k) {
        for (int J = 1; J <= 4; ++J) {
            for (int I = 1; I <= 4; ++I) {
                const bool in = I > 1 && I < 4 && J > 1 && J < 4 && k > 1 && k <= nz;
                EXPECT_EQ(coarse(I, J, k), in ? 3.0F : -1.0F);
            }
        }
    }
}

TEST_F(Transfers, MeanOfLogarithmsIsTheGeometricMean) {
    fill(fine, [](int i, int j, int) { return std::pow(2.0, i) * std::pow(3.0, j); });
    restrict_log_mean(by, inside, fine, coarse);
    EXPECT_NEAR(static_cast<double>(coarse(2, 2, 2)), std::pow(2, 2.5) * std::pow(3, 2.5), 1e-3);
    EXPECT_NEAR(static_cast<double>(coarse(3, 3, 2)), 32 * std::pow(3, 4.5), 1e-2);
}

// An energy at or below 0 has no logarithm and must not become one that is not a number.
TEST_F(Transfers, MeanOfLogarithmsTakesWhatIsNotPositiveAsTiny) {
    fill(fine, [](int, int, int) { return 1; });
    fine(2, 2, 2) = 0;
    fine(2, 2, 3) = -5;
    restrict_log_mean(by, inside, fine, coarse);
    const double expected = std::pow(static_cast<double>(TINY), 0.25);
    for (int k : {2, 3}) {
        EXPECT_NEAR(static_cast<double>(coarse(2, 2, k)) / expected, 1, 1e-4);
    }
    EXPECT_EQ(coarse(2, 2, 4), 1.0F);
}

// Centres lie at 2.5 and 5 along i, at 2.5 and 4.5 along j. In front of the first and behind the
// last one the nearest value holds, and on a boundary plane that of the cell beside it.
TEST_F(Transfers, ChangeIsLinearBetweenTheCentres) {
    fill(coarse, [](int I, int J, int k) {
        return mean_i.at(static_cast<std::size_t>(I - 1)) +
               10 * mean_j.at(static_cast<std::size_t>(J - 1)) + 100 * k;
    });
    prolong(
        by, {1, 1, 1, 7, 6, nz + 1}, nz, [&](int I, int J, int k) { return coarse(I, J, k); },
        [&](int i, int j, int k, float change) { fine(i, j, k) += change; });
    constexpr std::array at_i{2.5, 2.5, 3.0, 4.0, 5.0, 5.0, 5.0};
    constexpr std::array at_j{2.5, 2.5, 3.0, 4.0, 4.5, 4.5};
    constexpr std::array at_k{2, 2, 3, 4, 4};
    for (int k = 1; k <= nz + 1; ++k) {
        for (int j = 1; j <= 6; ++j) {
            for (int i = 1; i <= 7; ++i) {
                EXPECT_NEAR(static_cast<double>(fine(i, j, k)),
                            at_i.at(static_cast<std::size_t>(i - 1)) +
                                10 * at_j.at(static_cast<std::size_t>(j - 1)) +
                                100 * at_k.at(static_cast<std::size_t>(k - 1)),
                            1e-3)
                    << i << ' ' << j << ' ' << k;
            }
        }
    }
}

TEST_F(Transfers, ConstantChangeStaysWhatItIs) {
    fill(coarse, [](int, int, int) { return 0.3; });
    prolong(
        by, {2, 2, 2, 6, 5, nz}, nz, [&](int I, int J, int k) { return coarse(I, J, k); },
        [&](int i, int j, int k, float change) { fine(i, j, k) = change; });
    for (int j = 2; j <= 5; ++j) {
        for (int i = 2; i <= 6; ++i) {
            EXPECT_FLOAT_EQ(fine(i, j, 2), 0.3F);
        }
    }
    EXPECT_EQ(fine(1, 2, 2), 0.0F);
}

// A line with a single coarse cell: nothing to interpolate between.
TEST_F(Transfers, SingleCoarseCellGivesItsValueToAll) {
    by = {coarse_line(3), coarse_line(4)};
    Field3 few(4, 5, nz + 1);
    Field3 one(3, 3, nz + 1, 7.0F);
    prolong(
        by, {1, 1, 2, 4, 5, nz}, nz, [&](int I, int J, int k) { return one(I, J, k); },
        [&](int i, int j, int k, float change) { few(i, j, k) = change; });
    for (int j = 1; j <= 5; ++j) {
        for (int i = 1; i <= 4; ++i) {
            EXPECT_EQ(few(i, j, 2), 7.0F);
        }
    }
}

TEST_F(Transfers, DoNotDependOnTheThreads) {
    fill(fine, [](int i, int j, int k) { return std::sin(i + 3 * j + 7 * k); });
    restrict_mean(by, whole, fine, coarse);
    const Field3 expected = coarse;
    for (const int n : {1, 2, 3, 5}) {
        const Threads threads(n);
        coarse.fill(0);
        restrict_mean(by, whole, fine, coarse);
        EXPECT_TRUE(same_bits(coarse, expected)) << n;
    }
}

}  // namespace
}  // namespace torvex::test
