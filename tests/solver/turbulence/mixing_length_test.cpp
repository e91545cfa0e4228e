#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/reference/plain_turbulence.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

// One column of two cells between levels whose corners stand at different heights.
GridGeometry uneven_column(float ground) {
    GridGeometry g = uniform_mesh({2, 2, 3}, 10, 10, 1);
    // South-west, south-east, north-west, north-east.
    constexpr float heights[3][4] = {{0, 0, 0, 0}, {1, 2, 5, 3}, {10, 11, 20, 13}};
    for (int k = 1; k <= 3; ++k) {
        for (int n = 0; n < 4; ++n) {
            g.zn(1 + n % 2, 1 + n / 2, k) = ground + heights[k - 1][n];
        }
    }
    return with_metrics(std::move(g));
}

TEST(MixingLength, HandNumbersOfAnUnevenColumn) {
    // The upper level counts its south-west corner twice and its north-west one not at all:
    //   dz of the lower cell ((1+2+1+3) - 0)/4 = 1.75, of the upper ((10+11+10+13) - 11)/4 = 8.25.
    // Centres stand 11/8 = 1.375 and (11 + 54)/8 = 8.125 above the ground; q is 2 and 4.
    const double S1 = 2 * 1.375 * 1.75 + 4 * 8.125 * 8.25;
    const double S2 = 2 * 1.75 + 4 * 8.25;
    const double L0 = 0.1 * S1 / S2;
    EXPECT_NEAR(L0, 0.747774, 1e-6);
    for (const float ground : {0.0F, 64.0F}) {
        TurbulenceCase c(uneven_column(ground), 4);
        c.flow.tke(2, 2, 2) = 2.0F;
        c.flow.tke(2, 2, 3) = 8.0F;
        c.flow.tkl(2, 2, 2) = 8.0F;
        c.flow.tkl(2, 2, 3) = 2.0F;
        SolverContext ctx = c.context();
        CALCLM(ctx);
        EXPECT_NEAR(double(c.flow.lm(2, 2, 2)), 0.55 / (0.55 / L0 + 1), 1e-5);
        EXPECT_NEAR(double(c.flow.lm(2, 2, 3)), 3.25 / (3.25 / L0 + 1), 1e-5);
        CALCLM_(ctx);
        const double L0_kl = 0.1 * (4 * 1.375 * 1.75 + 2 * 8.125 * 8.25) / (4 * 1.75 + 2 * 8.25);
        EXPECT_NEAR(double(c.flow.lm(2, 2, 3)), 3.25 / (3.25 / L0_kl + 1), 1e-5);
    }
}

struct TallColumn : TurbulenceCase {
    TallColumn() : TurbulenceCase(with_metrics(uniform_mesh({3, 3, 41}, 10, 10, 5)), 2) {
        flow.tke.fill(0.7F);
    }
};

TEST(MixingLength, TendsToTheAsymptoticLengthFarFromTheGround) {
    TallColumn c;
    c.settings.KL_ALPHA = 1e-5F;
    SolverContext ctx = c.context();
    CALCLM(ctx);
    // Energy the same everywhere: L0 is KL_ALPHA times half the height of 200 m.
    const double L0 = 1e-5 * 100;
    EXPECT_NEAR(double(c.flow.lm(2, 3, 41)) / L0, 1.0, 1e-4);
}

TEST(MixingLength, TendsToTwoFifthsOfTheHeightNearTheGround) {
    TallColumn c;
    c.settings.KL_ALPHA = 1e5F;
    SolverContext ctx = c.context();
    CALCLM(ctx);
    // 0.4 and not the 0.41 of the walls.
    EXPECT_NEAR(double(c.flow.lm(3, 2, 2)) / 2.5, 0.4, 1e-5);
    EXPECT_NEAR(double(c.flow.lm(3, 2, 3)) / 7.5, 0.4, 1e-5);
}

TEST(MixingLength, IsNotANumberInAColumnWithoutEnergy) {
    TallColumn c;
    for (int k = 1; k <= c.grid.nk; ++k) {
        c.flow.tke(2, 3, k) = 0.0F;
    }
    SolverContext ctx = c.context();
    CALCLM(ctx);
    EXPECT_TRUE(std::isnan(c.flow.lm(2, 3, 10)));
    EXPECT_TRUE(std::isfinite(c.flow.lm(2, 2, 10)));
    EXPECT_TRUE(std::isfinite(c.flow.lm(3, 3, 10)));
    // The floor of tke is enough.
    c.flow.tke.fill(1.0e-15F);
    CALCLM(ctx);
    EXPECT_GT(c.flow.lm(2, 3, 10), 1.0F);
}

TEST(MixingLength, StaysInsideTheBlock) {
    TallColumn c;
    c.flow.lm.fill(-1.0F);
    SolverContext ctx = c.context();
    CALCLM(ctx);
    EXPECT_EQ(c.flow.lm(1, 2, 5), -1.0F);
    EXPECT_EQ(c.flow.lm(4, 2, 5), -1.0F);
    EXPECT_EQ(c.flow.lm(2, 1, 5), -1.0F);
    EXPECT_EQ(c.flow.lm(2, 4, 5), -1.0F);
    EXPECT_EQ(c.flow.lm(2, 2, 1), -1.0F);
    EXPECT_EQ(c.flow.lm(2, 2, 42), -1.0F);
}

TEST(MixingLength, AgreesWithThePlainFormAndWithAnyNumberOfThreads) {
    TurbulenceCase c(shaken_block(), 4);
    make_random(c, 31);
    plain::State s = plain::copy_of(c.flow);
    plain::mixing_length(c.settings, c.grid, s, s.tkl);
    SolverContext ctx = c.context();
    {
        const Threads threads(1);
        CALCLM_(ctx);
    }
    for (int k = 2; k <= c.grid.nz; ++k) {
        for (int j = 2; j <= c.grid.ny; ++j) {
            for (int i = 2; i <= c.grid.nx; ++i) {
                EXPECT_NEAR(double(c.flow.lm(i, j, k)) / s.lm(i, j, k), 1.0, 1e-5);
            }
        }
    }
    const Field3 one = c.flow.lm;
    for (const int n : {2, 3, 5, 20}) {
        const Threads threads(n);
        CALCLM_(ctx);
        EXPECT_TRUE(same_bits(c.flow.lm, one)) << n;
    }
}

}  // namespace
}  // namespace torvex::test
