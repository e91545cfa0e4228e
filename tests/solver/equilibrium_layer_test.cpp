// The equilibrium surface layer as start, inflow and stress on top.

#include "solver/equilibrium_layer.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/log_layer.hpp"
#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/init.hpp"
#include "support/failures.hpp"

namespace torvex {
namespace {

CaseSettings settings_of(int model) {
    CaseSettings s;
    s.TURBULENCE_MODEL = model;
    s.CMU = 0.09F;
    s.VISCOS = 0.0015F;
    s.DENSIT = 1.2F;
    s.EQUILIBRIUM_INFLOW = true;
    return s;
}

// Layers of 20 m up to 600 m: centres 10, 30, ... m above the ground.
GridGeometry tower() {
    return with_metrics(uniform_mesh({3, 4, 31}, 100, 100, 20));
}

struct Started {
    FlowState flow;
    std::string log;
};

Started start(const CaseSettings& settings, const GridGeometry& g, float z0) {
    Started started;
    started.flow.z0.allocate(g.ni, g.nj, z0);
    RunLog log;
    INIT(settings, g, 270.0F, "270_0", log, started.flow);
    started.log = log.kept().substr(19);
    return started;
}

// u* = 4.1/ln(Zg/z0): Zg = 387.324, ln 12910.8 = 9.465820 for 0.03 m; 550 and ln 550 = 6.309918
// for 1 m.
TEST(EquilibriumLayer, HasTheReferenceSpeedAtTheGradientHeight) {
    const EquilibriumLayer grass = equilibrium_layer(0.03F);
    EXPECT_NEAR(grass.u_star, 0.433137, 2e-6);
    EXPECT_NEAR(grass.Zg, 387.324, 1e-3);
    EXPECT_NEAR(speed_at(grass, grass.Zg), 10.0, 1e-5);
    EXPECT_NEAR(equilibrium_layer(1.0F).u_star, 0.649771, 2e-6);
}

TEST(EquilibriumLayer, GoesOnAboveTheGradientHeight) {
    const EquilibriumLayer grass = equilibrium_layer(0.03F);
    EXPECT_NEAR(speed_at(grass, 1000), 0.433137 / 0.41 * std::log(1000 / 0.03), 1e-4);
    EXPECT_NEAR(dissipation_at(grass, 1000), std::pow(0.433137, 3) / 410, 1e-8);
}

TEST(EquilibriumLayer, RestsBelowItsRoughness) {
    const EquilibriumLayer town = equilibrium_layer(1.0F);
    for (const float h : {1.0F, 0.5F, 0.0F}) {
        EXPECT_EQ(speed_at(town, h), 0.0F) << h;
        EXPECT_EQ(dissipation_at(town, h), dissipation_at(town, 1.0F)) << h;
    }
    EXPECT_GT(speed_at(town, 1.001F), 0.0F);
}

// d(ln u)/d(ln h) of ln(h/z0) is 1/ln(h/z0).
TEST(EquilibriumLayer, TellsItsShearExponent) {
    EXPECT_NEAR(shear_exponent_at(equilibrium_layer(0.03F), 38.7324F), 1 / std::log(1291.08), 1e-6);
}

TEST(EquilibriumLayer, RefusesARoughnessAboveItsGradientHeight) {
    for (const float z0 : {1200.0F, 1e20F}) {
        const auto stop = test::stop_of([&] { equilibrium_layer(z0); });
        ASSERT_TRUE(stop) << z0;
        EXPECT_EQ(stop->code(), 1);
        EXPECT_THAT(stop->what(), testing::HasSubstr("gradient height"));
    }
    EXPECT_GT(equilibrium_layer(1000.0F).u_star, 0.0F);
}

// The balance of the dissipation equation, term by term: with k even and ted = u*^3/(KAPPA h) the
// diffusion KAPPA u*/sigma d/dh(h dted/dh) = u*^4/(sigma h^2) is (CE2 - CE1) ted^2/k.
TEST(BalancedSigmaE, BalancesTheDissipationOfTheLayer) {
    constexpr double u_star = 0.4;
    constexpr double h = 7;
    const auto sigma = double(balanced_sigma_e(0.05F, 1.3F, 1.9F));
    const double ted = u_star * u_star * u_star / (0.41 * h);
    const double k = u_star * u_star / std::sqrt(0.05);
    EXPECT_NEAR(std::pow(u_star, 4) / (sigma * h * h) / (0.6 * ted * ted / k), 1.0, 1e-5);
    EXPECT_NEAR(balanced_sigma_e(0.09F, 1.44F, 1.92F), 1.16736, 1e-5);
}

TEST(EquilibriumStart, FillsTheLayerAndTellsIt) {
    const GridGeometry g = tower();
    for (const int model : {1, 3, 4}) {
        SCOPED_TRACE(model);
        const Started started = start(settings_of(model), g, 0.03F);
        const FlowState& s = started.flow;
        EXPECT_EQ(started.log,
                  " WD 270.0: Inflow: equilibrium layer, u*=  0.4331, z0=  0.3000E-01, Zg=   "
                  "387.324, exponent at Zg/10=  0.1396\n");
        for (const int i : {1, 2, g.ni}) {
            // 10 m: (0.433137/0.41) ln(10/0.03), 0.433137^2/0.3, 0.433137^3/4.1.
            EXPECT_NEAR(s.u(i, 2, 2), 6.13695, 2e-5);
            EXPECT_NEAR(s.tke(i, 2, 2), 0.625359, 3e-6);
            EXPECT_NEAR(s.ted(i, 2, 2), 0.0198196, 2e-7);
            // The eddy viscosity is den KAPPA u* h.
            EXPECT_NEAR(s.vis(i, 2, 11), 1.2 * 0.41 * 0.433137 * 190 + 0.0015, 4e-4);
            EXPECT_EQ(s.tke(i, 2, 31), s.tke(i, 2, 2));
        }
        EXPECT_GT(s.u(2, 2, g.nk), 10.0F);
        EXPECT_EQ(s.u(2, 2, 1), 0.0F);
        EXPECT_EQ(s.ted(2, 2, 1), s.ted(2, 2, 2));
        EXPECT_EQ(s.vis(2, 2, 1), 0.0015F);
        EXPECT_EQ(s.lm.size() > 0, model == 4);
    }
}

TEST(EquilibriumStart, TakesTheRoughnessOfTheInflowColumnOfEachRow) {
    const GridGeometry g = tower();
    FlowState s;
    s.z0.allocate(g.ni, g.nj, 0.5F);
    s.z0(1, 2) = 0.03F;
    s.z0(1, 3) = 1.0F;
    RunLog log;
    INIT(settings_of(1), g, 270.0F, "270_0", log, s);
    for (int i = 1; i <= g.ni; ++i) {
        EXPECT_NEAR(s.u(i, 2, 2), 6.13695, 2e-5);
        EXPECT_NEAR(s.u(i, 3, 2), 0.649771 / 0.41 * std::log(10.0), 2e-5);
    }
}

TEST(EquilibriumStart, GivesWayToOthers) {
    const GridGeometry g = tower();
    CaseSettings settings = settings_of(1);
    EXPECT_TRUE(settings.equilibrium_inflow());
    settings.SPECIFY_INFLOW_PROFILE = true;
    EXPECT_FALSE(settings.equilibrium_inflow());
    settings = settings_of(1);
    settings.nest.nest_mode = 1;
    EXPECT_FALSE(settings.equilibrium_inflow());
    settings = settings_of(1);
    settings.user.inlet = 2;  // of a block that is not in use
    EXPECT_TRUE(settings.equilibrium_inflow());
    settings.TORVEX_MODE = 1;
    EXPECT_FALSE(settings.equilibrium_inflow());
    settings.user.inlet = 0;
    EXPECT_TRUE(settings.equilibrium_inflow());
    EXPECT_FALSE(settings_of(2).equilibrium_inflow());
    const Started power = start(settings_of(2), g, 0.03F);
    EXPECT_EQ(power.log, " WD 270.0: Inflow: alpha=  0.1690, Zg=   387.324\n");
}

// Ground and top that rise: the stress acts on the plan of the faces.
TEST(TopStress, IsThatOfTheInflowColumnOnTheHorizontalArea) {
    const GridGeometry g = with_metrics(mapped_mesh({4, 4, 5}, [](double s, double t, double q) {
        return Position{30 * s, 60 * t, 12 * s + 100 * q};
    }));
    FlowState s;
    allocate_fields(s, g, 1);
    s.den.fill(1.2F);
    s.z0.allocate(g.ni, g.nj, 0.03F);
    s.z0(1, 3) = 1.0F;
    Array3<double> su(g.ni, g.nj, g.nk, 5.0);
    add_top_stress(g, s, su);
    const double area = 10.0 * 20.0;
    EXPECT_NEAR(su(2, 2, g.nz), 5 + 1.2 * 0.433137 * 0.433137 * area, 1e-3);
    EXPECT_NEAR(su(4, 3, g.nz), 5 + 1.2 * 0.649771 * 0.649771 * area, 1e-3);
    EXPECT_EQ(su(2, 2, g.nz - 1), 5.0);
    EXPECT_EQ(su(1, 2, g.nz), 5.0);
    EXPECT_EQ(su(2, g.nj, g.nz), 5.0);
}

}  // namespace
}  // namespace torvex
