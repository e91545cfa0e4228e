#include "mesh/next_spacing.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "mesh/integer_power.hpp"
#include "mesh_cases.hpp"

namespace torvex {
namespace {

using test::flat_case;
using test::stop_of;

// Widths of the first cells from differences of the running sum.
std::vector<double> widths(const CaseSettings& settings, int cells) {
    const SpacingLaw law = spacing_law(settings);
    SpacingWalk walk;
    std::vector<double> d{0.0};
    for (int m = 1; m <= cells; ++m) {
        const auto before = static_cast<double>(walk.acc);
        next_spacing(law, walk);
        EXPECT_EQ(walk.m, m);
        d.push_back(static_cast<double>(walk.acc) - before);
    }
    return d;
}

TEST(IntegerPower, IsExactForPowersOfTwo) {
    EXPECT_EQ(integer_power(2.0F, 0), 1.0F);
    EXPECT_EQ(integer_power(2.0F, 1), 2.0F);
    EXPECT_EQ(integer_power(2.0F, 13), 8192.0F);
    EXPECT_EQ(integer_power(2.0F, -3), 0.125F);
    EXPECT_EQ(integer_power(0.5F, 10), 1.0F / 1024.0F);
}

TEST(IntegerPower, SquaresRepeatedlyInSinglePrecision) {
    // 1.1^5 = 1.1 * (1.1^2)^2, each product rounded to single precision.
    const volatile float square = 1.1F * 1.1F;
    const volatile float fourth = square * square;
    EXPECT_EQ(integer_power(1.1F, 5), 1.1F * fourth);
    EXPECT_NEAR(integer_power(1.15F, 40), std::pow(1.15, 40.0), 1e-3);
}

TEST(SpacingLaw, CountsFineAndStretchedCells) {
    const SpacingLaw law = spacing_law(flat_case());
    EXPECT_EQ(law.n_fine, 10);     // 500 / 50
    EXPECT_EQ(law.n_stretch, 13);  // ln 4 / ln 1.1 - 1 = 13.54
}

// The walk compares with the sum of both counts.
TEST(SpacingLaw, CountsBeyondAllMeshesStillAddUp) {
    CaseSettings settings = flat_case();
    settings.MIN_DXY = 1.0e-30F;
    settings.MAX_DXY = 1.0e30F;
    settings.MIN_DXY_RAD = 1.0e30F;
    settings.MESH_HRATIO = std::nextafter(1.0F, 2.0F);
    const SpacingLaw law = spacing_law(settings);
    EXPECT_GT(law.n_fine, most_cells_outward);
    EXPECT_GT(law.n_stretch, most_cells_outward);
    EXPECT_LE(std::int64_t{law.n_fine} + law.n_stretch, std::numeric_limits<int>::max());
}

TEST(SpacingLaw, WidthsFollowTheThreeParts) {
    const std::vector<double> d = widths(flat_case(), 30);
    for (std::size_t m = 1; m <= 30; ++m) {
        const auto n = static_cast<double>(m) - 10.0;
        const double expected = m <= 10 ? 50.0 : m <= 23 ? 50.0 * std::pow(1.1, n) : 200.0;
        EXPECT_NEAR(d[m], expected, 1e-3) << "cell " << m;
    }
    EXPECT_LT(d[23], 200.0) << "the last stretched cell stays below the coarsest spacing";
}

TEST(SpacingLaw, RatioOfOneNeverReachesTheCoarsestSpacing) {
    CaseSettings settings = flat_case();
    settings.MESH_HRATIO = 1.0F;
    EXPECT_EQ(spacing_law(settings).n_stretch, 100000);
    for (const double d : widths(settings, 200)) {
        EXPECT_TRUE(d == 50.0 || d == 0.0);
    }
}

TEST(SpacingLaw, EqualSpacingsGiveEvenCells) {
    CaseSettings settings = flat_case();
    settings.MIN_DXY = 100.0F;
    settings.MAX_DXY = 100.0F;
    settings.MESH_HRATIO = 1.2F;
    EXPECT_EQ(spacing_law(settings).n_stretch, -1);
    for (const double d : widths(settings, 50)) {
        EXPECT_TRUE(d == 100.0 || d == 0.0);
    }
}

TEST(SpacingLaw, RadiusBelowOneCellKeepsOneFineCell) {
    CaseSettings settings = flat_case();
    settings.MIN_DXY_RAD = 10.0F;
    EXPECT_EQ(spacing_law(settings).n_fine, 1);
    const std::vector<double> d = widths(settings, 2);
    EXPECT_EQ(d[1], 50.0);
    EXPECT_NEAR(d[2], 55.0, 1e-4);
}

TEST(SpacingLaw, AbsurdRadiiStayWithinIntegers) {
    CaseSettings settings = flat_case();
    settings.MIN_DXY_RAD = 3.0e38F;
    EXPECT_EQ(widths(settings, 3)[3], 50.0);
    settings.MIN_DXY_RAD = -3.0e38F;
    EXPECT_EQ(widths(settings, 3)[3], 200.0);
}

TEST(NextSpacing, EndsTheRunBeyondTheLongestLine) {
    const SpacingLaw law = spacing_law(flat_case());
    SpacingWalk walk;
    const Stop stop = stop_of([&] {
        for (;;) {
            next_spacing(law, walk);
        }
    });
    EXPECT_EQ(stop.code(), 1);
    EXPECT_EQ(walk.m, 20000);
    EXPECT_NE(stop.reason().find("20000 cells"), std::string::npos);
}

}  // namespace
}  // namespace torvex
