#include "canopy/canopy_factors.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace torvex {
namespace {

constexpr float just_above(float x) {
    return std::nextafter(x, 2.0F);
}

TEST(DragDensity, HalfTheDragCoefficientTimesDensityOverLength) {
    EXPECT_FLOAT_EQ(drag_density(0.4F, 0.25F, 2.0F), 0.025F);
    EXPECT_FLOAT_EQ(drag_density(1.2F, 1.0F, 0.5F), 1.2F);
}

TEST(DragDensity, EmptyCellHasNone) {
    EXPECT_EQ(drag_density(0.2F, 0.0F, 0.0F), 0.0F);
    EXPECT_EQ(drag_density(0.2F, 0.0F, 3.0F), 0.0F);
    EXPECT_EQ(drag_density(0.0F, 0.5F, 0.0F), 0.0F);
}

TEST(DragDensity, LengthZeroStaysFinite) {
    // 0.5 * 0.2 * 0.5 / 1e-10
    EXPECT_NEAR(drag_density(0.2F, 0.5F, 0.0F) / 5.0e8F, 1.0F, 1.0e-6F);
}

CanopyParameters density_form(float alphak2, float alphak1 = 0) {
    CanopyParameters p;
    p.src_included_model = true;
    p.beta_d = 5.1F;
    p.alphak1 = alphak1;
    p.alphak2 = alphak2;
    return p;
}

TEST(TkeDissipationFactor, IsBetaDWithoutTheDensityForm) {
    CanopyParameters p = density_form(0.001F);
    p.src_included_model = false;
    for (const float density : {0.0F, 0.05F, 0.1F, 0.11F, 0.5F, 1.0F}) {
        EXPECT_EQ(tke_dissipation_factor(p, density), 5.1F) << density;
    }
}

TEST(TkeDissipationFactor, DensityFormBeginsAboveATenth) {
    const CanopyParameters p = density_form(0.0005F);
    EXPECT_EQ(tke_dissipation_factor(p, 0.0F), 5.1F);
    EXPECT_EQ(tke_dissipation_factor(p, 0.1F), 5.1F);
    // exp(9) = 8103.084
    EXPECT_NEAR(tke_dissipation_factor(p, just_above(0.1F)), 4.051542F, 1.0e-4F);
}

TEST(TkeDissipationFactor, FallsWithDensityBelowItsCeiling) {
    // exp(0.89/0.11) = 3264.65, exp(1) = 2.718282, exp(0) = 1
    EXPECT_NEAR(tke_dissipation_factor(density_form(0.001F), 0.11F), 3.265F, 1.0e-3F);
    EXPECT_EQ(tke_dissipation_factor(density_form(1.0F), 0.11F), 5.1F);
    EXPECT_NEAR(tke_dissipation_factor(density_form(1.0F, 0.5F), 0.5F), 3.218282F, 1.0e-5F);
    EXPECT_FLOAT_EQ(tke_dissipation_factor(density_form(1.0F, 0.5F), 1.0F), 1.5F);
}

// The ratio f of gp_e to gp_k = 1.
float f(CanopyParameters p, float density) {
    p.src_included_model = false;
    p.beta_d = 1.0F;
    return ted_dissipation_factor(p, density);
}

CanopyParameters three_ranges() {
    CanopyParameters p;
    p.alphae1 = 1.0F;
    p.alphae2 = 0.5F;
    p.alphae3 = 0.4F;
    p.alphae4 = 0.6F;
    p.r1max = 0.1F;
    p.r2max = 0.3F;
    p.cpe1 = 0.9F;
    return p;
}

TEST(TedDissipationFactor, IsLinearInTheDensityUpToItsFirstLimit) {
    EXPECT_EQ(f(three_ranges(), 0.0F), 0.5F);
    EXPECT_FLOAT_EQ(f(three_ranges(), 0.04F), 0.54F);
    EXPECT_FLOAT_EQ(f(three_ranges(), 0.1F), 0.6F);
}

TEST(TedDissipationFactor, FollowsTheRootOfASineUpToItsSecondLimit) {
    // sin(10 deg) = 0.1736482 at 0.2, sin(20 deg) = 0.3420201 at 0.3
    EXPECT_NEAR(f(three_ranges(), 0.2F), 0.766684F, 1.0e-6F);
    EXPECT_NEAR(f(three_ranges(), 0.3F), 0.833930F, 1.0e-6F);
    // At a whole cell the quarter turn is complete, whatever the first limit.
    CanopyParameters p = three_ranges();
    p.r2max = 1.0F;
    EXPECT_NEAR(f(p, 1.0F), 1.0F, 1.0e-6F);
}

TEST(TedDissipationFactor, IsCpe1BeyondTheLimits) {
    EXPECT_EQ(f(three_ranges(), just_above(0.3F)), 0.9F);
    EXPECT_EQ(f(three_ranges(), 0.31F), 0.9F);
    EXPECT_EQ(f(three_ranges(), 1.0F), 0.9F);
    EXPECT_EQ(f(three_ranges(), -0.01F), 0.9F);
}

TEST(TedDissipationFactor, TakesTheFactorOfTke) {
    CanopyParameters p = three_ranges();
    p.beta_d = 4.0F;
    EXPECT_FLOAT_EQ(ted_dissipation_factor(p, 0.1F), 2.4F);
    p.src_included_model = true;
    p.beta_d = 5.1F;
    p.alphak1 = 0.0F;
    p.alphak2 = 1.0F;
    // f = cpe1, gp_k = exp(1)
    EXPECT_NEAR(ted_dissipation_factor(p, 0.5F), 0.9F * 2.718282F, 1.0e-5F);
}

// With the constants as they come, every cell has 5.1 and 0.9 * 5.1.
TEST(CanopyFactors, DefaultsDoNotDependOnTheDensity) {
    const CanopyParameters p;
    for (const float density : {0.0F, 0.1F, 0.3F, 1.0F}) {
        EXPECT_EQ(tke_dissipation_factor(p, density), 5.1F);
        EXPECT_FLOAT_EQ(ted_dissipation_factor(p, density), 4.59F);
    }
}

}  // namespace
}  // namespace torvex
