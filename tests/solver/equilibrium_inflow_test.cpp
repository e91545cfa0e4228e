// Start fields in equilibrium with the roughness.

#include "solver/equilibrium_inflow.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "solver/fields.hpp"

namespace torvex {
namespace {

CaseSettings settings_of(int model) {
    CaseSettings s;
    s.TURBULENCE_MODEL = model;
    s.CMU = 0.09F;
    s.VISCOS = 0.0015F;
    s.DENSIT = 1.2F;
    return s;
}

// Layers of 20 m up to 600 m: centres 10, 30, ... m above the ground.
GridGeometry tower() {
    return with_metrics(uniform_mesh({3, 4, 31}, 100, 100, 20));
}

FlowState equilibrium(const GridGeometry& g, int model, float z0) {
    FlowState s;
    s.z0.allocate(g.ni, g.nj, z0);
    fill_equilibrium_inflow(settings_of(model), g, s);
    return s;
}

// u* = 4.1 / ln((Zg + z0)/z0): Zg = 387.324 and ln 12911.8 = 9.465897 for 0.03 m, 550 and
// ln 551 = 6.311735 for 1 m.
TEST(EquilibriumInflow, FrictionVelocityGivesTenMetresPerSecondAtTheGradientHeight) {
    EXPECT_NEAR(friction_velocity(0.03F), 0.433134, 2e-6);
    EXPECT_NEAR(friction_velocity(1.0F), 0.649583, 2e-6);
}

TEST(EquilibriumInflow, HasTheValuesOfTheLogLayer) {
    const GridGeometry g = tower();
    const FlowState s = equilibrium(g, 1, 0.03F);
    for (const auto& [i, j] : {std::pair(1, 1), std::pair(2, 3), std::pair(g.ni, g.nj)}) {
        // 10 m: (0.433134/0.41) ln(10.03/0.03), 0.433134^2/0.3, 0.433134^3/(0.41 * 10.03).
        EXPECT_NEAR(s.u(i, j, 2), 6.14008, 2e-5);
        EXPECT_NEAR(s.tke(i, j, 2), 0.625350, 3e-6);
        EXPECT_NEAR(s.ted(i, j, 2), 0.0197598, 2e-7);
        // The eddy viscosity is den KAPPA u* (h + z0), linear in height.
        EXPECT_NEAR(s.vis(i, j, 2), 1.2 * 0.41 * 0.433134 * 10.03 + 0.0015, 2e-5);
        EXPECT_NEAR(s.vis(i, j, 11), 1.2 * 0.41 * 0.433134 * 190.03 + 0.0015, 4e-4);
        EXPECT_EQ(s.tke(i, j, 11), s.tke(i, j, 2));
    }
}

TEST(EquilibriumInflow, KeepsItsValuesAboveTheGradientHeight) {
    const GridGeometry g = tower();
    const FlowState s = equilibrium(g, 1, 0.03F);
    for (int k = 1; k <= g.nk; ++k) {
        if (g.zc(2, 2, k) < 387.0F) {
            EXPECT_LT(s.u(2, 2, k), 10.0F) << k;
        } else {
            EXPECT_NEAR(s.u(2, 2, k), 10.0F, 2e-6) << k;
            EXPECT_NEAR(s.ted(2, 2, k), 0.0812583 / (0.41 * 387.354), 5e-9) << k;
        }
    }
}

TEST(EquilibriumInflow, TakesTheRoughnessOfEachColumn) {
    const GridGeometry g = tower();
    FlowState s;
    s.z0 = Field2(4, 5, 0.03F);
    s.z0(2, 2) = 1.0F;
    fill_equilibrium_inflow(settings_of(1), g, s);
    EXPECT_NEAR(s.u(2, 2, 2), 0.649583 / 0.41 * std::log(11.0), 2e-5);
    EXPECT_NEAR(s.tke(2, 2, 2), 0.649583 * 0.649583 / 0.3, 4e-6);
    EXPECT_NEAR(s.u(3, 2, 2), 6.14008, 2e-5);
}

TEST(EquilibriumInflow, GroundLayerAndOtherFieldsAreThoseOfAStart) {
    const GridGeometry g = tower();
    const FlowState s = equilibrium(g, 1, 0.03F);
    EXPECT_EQ(s.u(2, 2, 1), 0.0F);
    EXPECT_EQ(s.tke(2, 2, 1), s.tke(2, 2, 2));
    EXPECT_EQ(s.ted(2, 2, 1), s.ted(2, 2, 2));
    EXPECT_EQ(s.vis(2, 2, 1), 0.0015F);
    for (const auto field : {&FlowState::v, &FlowState::w, &FlowState::p, &FlowState::pp,
                             &FlowState::flxU, &FlowState::flxV, &FlowState::flxW}) {
        EXPECT_TRUE(test::all_equal(s.*field, 0.0F));
    }
    EXPECT_EQ(s.lm.size(), 0U);
}

TEST(EquilibriumInflow, ModelsWithALengthGetThatOfTheStart) {
    const GridGeometry g = tower();
    for (const int model : {2, 4}) {
        const FlowState s = equilibrium(g, model, 0.03F);
        EXPECT_FLOAT_EQ(s.lm(2, 2, 2), 4.0F);
        EXPECT_FLOAT_EQ(s.lm(2, 2, 1), 4.0F);
        EXPECT_NEAR(s.lm(2, 2, 30), 0.4 * 387.324, 1e-3);
        EXPECT_TRUE(test::same_bits(s.tkl, s.tke));
        EXPECT_EQ(s.viskl(2, 2, 5), s.vis(2, 2, 5));
        EXPECT_NEAR(s.ted(2, 2, 2), 0.0197598, 2e-7);
    }
}

TEST(EquilibriumInflow, IsTheSameForAnyNumberOfThreads) {
    const GridGeometry g = test::shaken_mesh();
    FlowState one;
    {
        const test::Threads single(1);
        one = equilibrium(g, 4, 0.1F);
    }
    const test::Threads three(3);
    const FlowState many = equilibrium(g, 4, 0.1F);
    for (const auto field : {&FlowState::u, &FlowState::tke, &FlowState::ted, &FlowState::vis}) {
        EXPECT_TRUE(test::same_bits(one.*field, many.*field));
    }
}

}  // namespace
}  // namespace torvex
