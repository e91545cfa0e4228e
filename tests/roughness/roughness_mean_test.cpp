#include "roughness/roughness_mean.hpp"

#include <gtest/gtest.h>

#include <cmath>

#include "roughness/roughness_cases.hpp"

namespace torvex {
namespace {

using test::R_of;

TEST(RoughnessMean, IsTheInverseSquareOfTheLogarithm) {
    // ln(10 / 0.03) = 5.8091430, ln(10 / 0.5) = 2.9957323.
    EXPECT_NEAR(R(0.03F), 1.0 / (5.8091430 * 5.8091430), 1.0e-8);
    EXPECT_NEAR(R(0.5F), 1.0 / (2.9957323 * 2.9957323), 1.0e-7);
}

TEST(RoughnessMean, InverseGivesTheRoughnessBack) {
    for (float z0 = 1.0e-5F; z0 < 9.99F; z0 *= 1.07F) {
        EXPECT_NEAR(R(z0) / R_of(static_cast<double>(z0)), 1.0, 3.0e-7 * (1.0 + std::sqrt(R(z0))));
        EXPECT_NEAR(Z(R(z0)) / z0, 1.0F, 1.0e-6F) << z0;
    }
}

TEST(RoughnessMean, GrassAndForestInEqualParts) {
    EXPECT_NEAR(Z(0.5 * (R(0.03F) + R(0.5F))), 0.231582F, 1.0e-6F);
}

TEST(RoughnessMean, OfZeroIsZero) {
    EXPECT_EQ(R(0.0F), 0.0);
    EXPECT_EQ(Z(0.0), 0.0F);
    EXPECT_NEAR(R(1.0e-36F), R_of(1.0e-36), 1.0e-9);
}

TEST(RoughnessMean, EndsJustBelowTenMetres) {
    for (const float z0 : {9.999F, 9.9995F, 10.0F, 10.1F, 20.0F, 1.0e30F}) {
        EXPECT_TRUE(std::isfinite(R(z0)));
        EXPECT_EQ(R(z0), R(9.999F));
        EXPECT_NEAR(Z(R(z0)), 9.999F, 2.0e-6F) << z0;
    }
    EXPECT_LT(R(9.99F), R(9.999F));
}

TEST(RoughnessMean, RisesAllTheWay) {
    double last = 0.0;
    for (float z0 = 1.0e-4F; z0 < 9.99F; z0 *= 1.01F) {
        EXPECT_GT(R(z0), last);
        last = R(z0);
    }
}

}  // namespace
}  // namespace torvex
