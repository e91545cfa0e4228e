#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/reference/plain_turbulence.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

struct ViscosityCase : TurbulenceCase {
    explicit ViscosityCase(int model)
        : TurbulenceCase(with_metrics(uniform_mesh({4, 5, 6}, 1, 1, 1)), model) {
        flow.den.fill(1.2F);
        flow.tke.fill(2.0F);
        flow.ted.fill(0.5F);
        flow.vis.fill(4.0F);
        if (model == 2 || model == 4) {
            flow.lm.fill(3.0F);
            flow.tkl.fill(1.5F);
            flow.viskl.fill(6.0F);
        }
    }
    double vis_after() {
        SolverContext ctx = context();
        CALCVIS(ctx);
        return double(flow.vis(3, 3, 3));
    }
};

constexpr double viscos = 0.0015;
constexpr double from_ted = 0.09 * 1.2 * 4 / 0.5 + viscos;

double from_length(double c_mu, double energy) {
    const double dissipation = std::pow(c_mu, 0.75) * std::pow(energy, 1.5) / 3;
    return c_mu * 1.2 * energy * energy / dissipation + viscos;
}

TEST(Viscosity, OfTheFourModels) {
    EXPECT_NEAR(ViscosityCase(1).vis_after(), from_ted, 1e-6);
    EXPECT_NEAR(ViscosityCase(3).vis_after(), from_ted, 1e-6);
    EXPECT_NEAR(ViscosityCase(2).vis_after(), from_length(0.094, 2), 1e-6);
    ViscosityCase hybrid(4);
    hybrid.settings.RATIO_KL = 0.3F;
    EXPECT_NEAR(hybrid.vis_after(), 0.7 * from_ted + 0.3 * from_length(0.094, 1.5), 1e-6);
    EXPECT_NEAR(double(hybrid.flow.viskl(3, 3, 3)), from_length(0.094, 1.5), 1e-6);
}

TEST(Viscosity, IsUnderRelaxed) {
    ViscosityCase ke(1);
    ke.settings.URFVIS = 0.25F;
    EXPECT_NEAR(ke.vis_after(), 0.25 * from_ted + 0.75 * 4, 1e-6);
    ViscosityCase kl(2);
    kl.settings.URFVIS = 0.25F;
    EXPECT_NEAR(kl.vis_after(), 0.25 * from_length(0.094, 2) + 0.75 * 4, 1e-6);
    ViscosityCase hybrid(4);
    hybrid.settings.URFVIS = 0.25F;
    hybrid.settings.RATIO_KL = 0.3F;
    const double viskl = 0.25 * from_length(0.094, 1.5) + 0.75 * 6;
    EXPECT_NEAR(hybrid.vis_after(), 0.7 * (0.25 * from_ted + 0.75 * 4) + 0.3 * viskl, 1e-6);
    EXPECT_NEAR(double(hybrid.flow.viskl(3, 3, 3)), viskl, 1e-6);
}

TEST(Viscosity, WithoutRelaxationForgetsAndWithFullRelaxationFreezes) {
    ViscosityCase fresh(1);
    fresh.flow.vis.fill(1e6F);
    EXPECT_NEAR(fresh.vis_after(), from_ted, 1e-6);
    for (const int model : {1, 2, 3}) {
        ViscosityCase frozen(model);
        frozen.settings.URFVIS = 0.0F;
        EXPECT_EQ(frozen.vis_after(), 4.0);
    }
}

TEST(HybridViscosity, WithFullWeightIsTheKlViscosity) {
    TurbulenceCase c(shaken_block(), 4);
    make_random(c, 3);
    c.settings.RATIO_KL = 1.0F;
    c.settings.URFVIS = 0.4F;
    SolverContext ctx = c.context();
    CALCVIS(ctx);
    for (int k = 2; k <= c.grid.nz; ++k) {
        for (int j = 2; j <= c.grid.ny; ++j) {
            for (int i = 2; i <= c.grid.nx; ++i) {
                EXPECT_EQ(c.flow.vis(i, j, k), c.flow.viskl(i, j, k));
            }
        }
    }
}

TEST(HybridViscosity, WithoutWeightIsTheKEpsilonViscosityBitForBit) {
    TurbulenceCase hybrid(shaken_block(), 4);
    TurbulenceCase plain_model(shaken_block(), 1);
    make_random(hybrid, 3);
    make_random(plain_model, 3);
    hybrid.settings.URFVIS = plain_model.settings.URFVIS = 0.4F;
    hybrid.settings.RATIO_KL = 0.0F;
    SolverContext ctx4 = hybrid.context();
    SolverContext ctx1 = plain_model.context();
    CALCVIS(ctx4);
    CALCVIS(ctx1);
    EXPECT_TRUE(same_bits(hybrid.flow.vis, plain_model.flow.vis));
}

TEST(Viscosity, GuardsADissipationOfZeroAndNothingElse) {
    ViscosityCase zero(1);
    zero.flow.ted.fill(0.0F);
    EXPECT_NEAR(zero.vis_after() / (0.09 * 1.2 * 4 / 1e-15), 1.0, 1e-5);
    ViscosityCase negative(1);
    negative.flow.ted.fill(-0.5F);
    EXPECT_NEAR(negative.vis_after(), -0.09 * 1.2 * 4 / 0.5 + viscos, 1e-6);
    ViscosityCase broken(1);
    broken.flow.tke(3, 3, 3) = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(std::isnan(broken.vis_after()));
}

TEST(Viscosity, AgreesWithThePlainFormAndWithAnyNumberOfThreads) {
    for (const int model : {1, 2, 3, 4}) {
        TurbulenceCase c(shaken_block(), model);
        make_random(c, 17);
        c.settings.URFVIS = 0.6F;
        c.settings.RATIO_KL = 0.35F;
        plain::State s = plain::copy_of(c.flow);
        plain::viscosity(c.settings, c.grid, s);
        const Field3 before = c.flow.vis;
        Field3 before_kl = c.flow.viskl;
        SolverContext ctx = c.context();
        {
            const Threads threads(1);
            CALCVIS(ctx);
        }
        const Field3 one = c.flow.vis;
        for (std::size_t n = 0; n < one.size(); ++n) {
            EXPECT_NEAR(double(one.data()[n]), s.vis.data()[n], 1e-5 * std::abs(s.vis.data()[n]));
        }
        for (std::size_t n = 0; n < c.flow.viskl.size(); ++n) {
            EXPECT_NEAR(double(c.flow.viskl.data()[n]), s.viskl.data()[n],
                        1e-5 * std::abs(s.viskl.data()[n]));
        }
        for (const int n : {2, 3, 5, 20}) {
            c.flow.vis = before;
            c.flow.viskl = before_kl;
            const Threads threads(n);
            CALCVIS(ctx);
            EXPECT_TRUE(same_bits(c.flow.vis, one)) << n;
        }
    }
}

// --- bc_vis

float place(int i, int j, int k) {
    return static_cast<float>(i + 10 * j + 100 * k);
}

// 4, 5, 6 node planes: the boundary lies at 5, 6, 7.
float expected(int i, int j, int k) {
    if (k == 1) {
        return 0.0015F;
    }
    // The rows on the sides copy first: they take the outflow plane as it was.
    if (j == 1 || j == 6) {
        return place(i, j == 1 ? 2 : 5, k);
    }
    if (i == 5 && k <= 6) {
        return place(4, j, k);
    }
    return place(i, j, k);
}

void expect_boundary_values(int model, int mode, int skip_sides) {
    ViscosityCase c(model);
    c.settings.WIND_TUNNEL_MODE = mode;
    const auto number = [&](Field3& x) {
        for (int k = 1; k <= c.grid.nk; ++k) {
            for (int j = 1; j <= c.grid.nj; ++j) {
                for (int i = 1; i <= c.grid.ni; ++i) {
                    x(i, j, k) = place(i, j, k);
                }
            }
        }
    };
    number(c.flow.vis);
    if (model == 4 || model == 2) {
        number(c.flow.viskl);
    }
    SolverContext ctx = c.context(skip_sides);
    bc_vis(ctx);
    for (int k = 1; k <= c.grid.nk; ++k) {
        for (int j = 1; j <= c.grid.nj; ++j) {
            for (int i = 1; i <= c.grid.ni; ++i) {
                EXPECT_EQ(c.flow.vis(i, j, k), expected(i, j, k)) << i << " " << j << " " << k;
                if (model == 4) {
                    EXPECT_EQ(c.flow.viskl(i, j, k), expected(i, j, k));
                } else if (model == 2) {
                    EXPECT_EQ(c.flow.viskl(i, j, k), place(i, j, k));
                }
            }
        }
    }
}

TEST(ViscosityOnTheBoundary, EveryPlaceInEveryMode) {
    for (const int model : {1, 2, 3, 4}) {
        for (const int mode : {0, 1, 2}) {
            for (const int skip_sides : {0, 1}) {
                expect_boundary_values(model, mode, skip_sides);
            }
        }
    }
}

TEST(ViscosityOnTheBoundary, GroundIsMolecularAfterCALCVIS) {
    ViscosityCase c(1);
    c.vis_after();
    for (int j = 1; j <= c.grid.nj; ++j) {
        for (int i = 1; i <= c.grid.ni; ++i) {
            EXPECT_EQ(c.flow.vis(i, j, 1), 0.0015F);
        }
    }
}

}  // namespace
}  // namespace torvex::test
