// Wall formulas and boundary steps of tke, ted and tkl.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"
#include "solver/turbulence/energy_wall.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

// Cells 5 m high, so that the centre beside the ground is 2.5 m above it; 4 m wide across.
struct WallCase : TurbulenceCase {
    explicit WallCase(int model = 1, int mode = 0)
        : TurbulenceCase(with_metrics(uniform_mesh({5, 6, 7}, 3, 4, 5)), model) {
        settings.WIND_TUNNEL_MODE = mode;
        flow.u.fill(3.0F);
        flow.v.fill(4.0F);
        flow.w.fill(0.0F);
        flow.tke.fill(1.0F);
        flow.ted.fill(0.25F);
        flow.eq.su.fill(0.0);
        flow.eq.sp.fill(-7.0);
        for (Field3* a :
             {&flow.eq.ae, &flow.eq.aw, &flow.eq.an, &flow.eq.as, &flow.eq.at, &flow.eq.ab}) {
            a->fill(9.0F);
        }
    }
    double su(int i, int j, int k) const { return flow.eq.su(i, j, k); }
    double sp(int i, int j, int k) const { return flow.eq.sp(i, j, k); }
    static constexpr double vol = 60;
};

// The formulas in double precision.
double production(double Vt, double d, double z0, double tke, double c_mu) {
    const double L1 = std::log(d / z0);
    const double L2 = std::log(2 * d / z0);
    return std::pow(c_mu, 0.25) * std::sqrt(tke) * 0.41 / L1 * Vt * Vt / (2 * d * L1) * L2;
}
double sink(double d, double z0, double tke, double c_mu) {
    return std::pow(c_mu, 0.75) * std::sqrt(tke) / 0.41 * std::log(2 * d / z0) / (2 * d);
}

TEST(WallFormula, WorkedValues) {
    // d = 2.5, z0 = 0.03, tke = 1, speed along the wall 5: L1 = 4.42285, L2 = 5.11600.
    WallCase c;
    c.flow.w.fill(8.0F);  // straight at the ground: does not count
    SolverContext ctx = c.context();
    bc_tke(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.su(3, 3, 2) / c.vol, 0.293657, 2e-6);
    EXPECT_NEAR(c.sp(3, 3, 2) / c.vol, -0.410070, 2e-6);
    EXPECT_EQ(c.flow.eq.ab(3, 3, 2), 0.0F);
    EXPECT_EQ(c.flow.eq.at(3, 3, 2), 9.0F);
    EXPECT_NEAR(production(5, 2.5, 0.03, 1, 0.09), 0.293657, 1e-6);
    EXPECT_NEAR(sink(2.5, 0.03, 1, 0.09), 0.410070, 1e-6);

    bc_ted(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.su(3, 3, 2) / 1e25, 0.410070, 1e-6);
    EXPECT_EQ(c.sp(3, 3, 2), -1.0e25);
    EXPECT_EQ(c.flow.eq.ab(3, 3, 2), 0.0F);
}

TEST(WallFormula, ProductionAddsAndTheSinkReplaces) {
    WallCase c;
    c.flow.eq.su.fill(100.0);
    c.flow.den.fill(1.2F);
    c.flow.tke.fill(-4.0F);
    c.flow.z0(3, 3) = 0.5F;
    SolverContext ctx = c.context();
    bc_tke(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.su(3, 3, 2), 100 + 1.2 * production(5, 2.5, 0.5, 4, 0.09) * c.vol, 1e-3);
    EXPECT_NEAR(c.sp(3, 3, 2), -1.2 * sink(2.5, 0.5, 4, 0.09) * c.vol, 1e-3);
    EXPECT_NEAR(c.su(4, 3, 2), 100 + 1.2 * production(5, 2.5, 0.03, 4, 0.09) * c.vol, 1e-3);
}

TEST(WallFormula, DissipationTakesTheSizeOfTke) {
    WallCase c;
    c.flow.tke.fill(-4.0F);
    SolverContext ctx = c.context();
    bc_ted(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.su(3, 3, 2) / 1e25, 8 * 0.410070, 1e-5);
}

TEST(WallFormula, KlEnergyHasItsOwnConstantAndEnergy) {
    WallCase c(4);
    c.flow.tkl.fill(2.0F);
    SolverContext ctx = c.context();
    bc_tkl(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.su(3, 3, 2), production(5, 2.5, 0.03, 2, 0.094) * c.vol, 1e-3);
    EXPECT_NEAR(c.sp(3, 3, 2), -sink(2.5, 0.03, 2, 0.094) * c.vol, 1e-3);
    EXPECT_EQ(c.flow.tkl(3, 3, 1), 2.0F);
    EXPECT_EQ(c.flow.tke(3, 3, 1), 1.0F);
}

TEST(WallFormula, SlopingGroundTurnsTheNormal) {
    // Ground rising by 0.75 along x: the normal is (-0.6, 0, 0.8), and a flow along it has no
    // speed along the wall. The vertical half height 2.5 is 2.5*0.8 from the ground.
    GridGeometry g = uniform_mesh({5, 5, 5}, 4, 4, 5);
    for (int k = 1; k <= g.nz; ++k) {
        for (int j = 1; j <= g.ny; ++j) {
            for (int i = 1; i <= g.nx; ++i) {
                g.zn(i, j, k) += 0.75F * g.xn(i, j, k);
            }
        }
    }
    TurbulenceCase c(with_metrics(std::move(g)), 1);
    c.flow.tke.fill(1.0F);
    c.flow.u.fill(-0.6F * 5);
    c.flow.w.fill(0.8F * 5);
    SolverContext ctx = c.context();
    bc_tke(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.flow.eq.su(3, 3, 2), 0.0, 1e-3);
    EXPECT_NEAR(c.flow.eq.sp(3, 3, 2), -sink(2.0, 0.03, 1, 0.09) * 80, 1e-3);
    c.flow.eq.su.fill(0.0);
    c.flow.u.fill(0.8F * 5);
    c.flow.w.fill(0.6F * 5);
    bc_tke(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.flow.eq.su(3, 3, 2), production(5, 2.0, 0.03, 1, 0.09) * 80, 1e-3);
}

TEST(WallFormula, TunnelWallsHaveTheirOwnRoughness) {
    WallCase c(1, 2);
    const int k = 4;
    const int j = 3;
    SolverContext ctx = c.context();
    bc_tke(ctx, sources_of(ctx.flow.eq));
    const auto z0 = double(c.settings.WIND_TUNNEL_Z0);
    EXPECT_NEAR(c.su(3, j, c.grid.nz), production(5, 2.5, z0, 1, 0.09) * c.vol, 1e-3);
    EXPECT_EQ(c.flow.eq.at(3, j, c.grid.nz), 0.0F);
    // Beside the sides the speed along the wall is u alone, and the centre is 2 m away.
    for (const int side : {2, c.grid.ny}) {
        EXPECT_NEAR(c.su(3, side, k), production(3, 2, z0, 1, 0.09) * c.vol, 1e-3);
        EXPECT_NEAR(c.sp(3, side, k), -sink(2, z0, 1, 0.09) * c.vol, 1e-3);
    }
    EXPECT_EQ(c.flow.eq.as(3, 2, k), 0.0F);
    EXPECT_EQ(c.flow.eq.an(3, c.grid.ny, k), 0.0F);
    // Elsewhere nothing.
    EXPECT_EQ(c.su(3, j, k), 0.0);
    EXPECT_EQ(c.sp(3, j, k), -7.0);
}

TEST(WallFormula, CellOnTwoWallsAddsSourcesAndKeepsTheLaterSink) {
    WallCase c(1, 2);
    SolverContext ctx = c.context();
    bc_tke(ctx, sources_of(ctx.flow.eq));
    const auto z0 = double(c.settings.WIND_TUNNEL_Z0);
    EXPECT_NEAR(c.su(3, 2, 2),
                (production(5, 2.5, 0.03, 1, 0.09) + production(3, 2, z0, 1, 0.09)) * c.vol, 2e-3);
    EXPECT_NEAR(c.sp(3, 2, 2), -sink(2, z0, 1, 0.09) * c.vol, 1e-3);
    EXPECT_EQ(c.flow.eq.ab(3, 2, 2), 0.0F);
    EXPECT_EQ(c.flow.eq.as(3, 2, 2), 0.0F);
    bc_ted(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.su(3, 2, 2) / 1e25, sink(2, z0, 1, 0.09), 1e-5);
}

// --- which cells lose their production

void expect_cleared(int mode, const std::function<bool(int, int, int)>& beside_wall) {
    WallCase c(1, mode);
    c.flow.den.fill(1.5F);
    c.flow.gen.fill(2.0F);
    c.flow.eq.su.fill(1000.0);
    SolverContext ctx = c.context();
    clear_wall_planes(ctx, sources_of(ctx.flow.eq));
    const GridGeometry& g = c.grid;
    for (int k = 1; k <= g.nk; ++k) {
        for (int j = 1; j <= g.nj; ++j) {
            for (int i = 1; i <= g.ni; ++i) {
                const bool inside = i >= 2 && i <= g.nx && j >= 2 && j <= g.ny && k >= 2 &&
                                    k <= g.nz && beside_wall(i, j, k);
                EXPECT_EQ(c.su(i, j, k), inside ? 1000.0 - 1.5 * 2.0 * 60 : 1000.0)
                    << i << " " << j << " " << k;
                EXPECT_EQ(c.sp(i, j, k), inside ? 0.0 : -7.0);
            }
        }
    }
}

TEST(WallPlanes, OpenDomainClearsTheGround) {
    expect_cleared(0, [](int, int, int k) { return k == 2; });
}
TEST(WallPlanes, ModeOneClearsTheTopToo) {
    expect_cleared(1, [](int, int, int k) { return k == 2 || k == 7; });
}
TEST(WallPlanes, ModeTwoClearsTheSidesToo) {
    const auto walls = [](int, int j, int k) { return k == 2 || k == 7 || j == 2 || j == 6; };
    expect_cleared(2, walls);
    expect_cleared(3, walls);
}

TEST(WallPlanes, CellBetweenTwoWallsIsClearedOnce) {
    TurbulenceCase c(with_metrics(uniform_mesh({4, 4, 2}, 1, 1, 1)), 1);
    c.settings.WIND_TUNNEL_MODE = 1;
    c.flow.gen.fill(2.0F);
    SolverContext ctx = c.context();
    clear_wall_planes(ctx, sources_of(ctx.flow.eq));
    EXPECT_NEAR(c.flow.eq.su(3, 3, 2), -2.0, 1e-6);
}

// --- values on the boundary and coefficients towards it

// The code of a place, as its value.
float place(int i, int j, int k) {
    return static_cast<float>(i + 10 * j + 100 * k);
}

void number_places(Field3& x) {
    for (int k = 1; k <= x.nk(); ++k) {
        for (int j = 1; j <= x.nj(); ++j) {
            for (int i = 1; i <= x.ni(); ++i) {
                x(i, j, k) = place(i, j, k);
            }
        }
    }
}

struct Source {
    int i, j, k;
};

// Compares all of x with the values that `from` says were copied where.
void expect_copies(const Field3& x, const std::function<Source(int, int, int)>& from) {
    for (int k = 1; k <= x.nk(); ++k) {
        for (int j = 1; j <= x.nj(); ++j) {
            for (int i = 1; i <= x.ni(); ++i) {
                const Source s = from(i, j, k);
                EXPECT_EQ(x(i, j, k), place(s.i, s.j, s.k)) << i << " " << j << " " << k;
            }
        }
    }
}

// 5, 6, 7 node planes: interior 2..5, 2..6, 2..7, beyond it 6, 7, 8.
bool inner_i(int i) {
    return i >= 2 && i <= 5;
}
bool inner_j(int j) {
    return j >= 2 && j <= 6;
}
bool inner_k(int k) {
    return k >= 2 && k <= 7;
}

Source level_copies(int i, int j, int k, bool top) {
    if (inner_i(i) && inner_j(j)) {
        if (k == 1) {
            return {i, j, 2};
        }
        if (k == 8 && top) {
            return {i, j, 7};
        }
    }
    return {i, j, k};
}

Source all_copies(int i, int j, int k, bool top) {
    if (inner_k(k) && i >= 2 && (j == 1 || j == 7 || i == 6)) {
        return {i == 6 ? 5 : i, j == 1 ? 2 : (j == 7 ? 6 : j), k};
    }
    return level_copies(i, j, k, top);
}

TEST(BoundarySteps, TkeFollowsOnEverySideButTheInflow) {
    for (const int mode : {0, 1}) {
        WallCase c(1, mode);
        number_places(c.flow.tke);
        SolverContext ctx = c.context();
        bc_tke(ctx, sources_of(ctx.flow.eq));
        expect_copies(c.flow.tke, [](int i, int j, int k) { return all_copies(i, j, k, true); });
    }
}

TEST(BoundarySteps, TedKeepsItsOpenTop) {
    WallCase c;
    number_places(c.flow.ted);
    SolverContext ctx = c.context();
    bc_ted(ctx, sources_of(ctx.flow.eq));
    expect_copies(c.flow.ted, [](int i, int j, int k) { return all_copies(i, j, k, false); });
    EXPECT_EQ(c.flow.eq.at(3, 3, 7), 9.0F);
    bc_tke(ctx, sources_of(ctx.flow.eq));
    EXPECT_EQ(c.flow.eq.at(3, 3, 7), 0.0F);
}

TEST(BoundarySteps, TedFollowsAWallOnTop) {
    WallCase c(1, 1);
    number_places(c.flow.ted);
    SolverContext ctx = c.context();
    bc_ted(ctx, sources_of(ctx.flow.eq));
    expect_copies(c.flow.ted, [](int i, int j, int k) { return all_copies(i, j, k, true); });
    EXPECT_EQ(c.flow.eq.at(3, 3, 7), 0.0F);
    EXPECT_EQ(c.sp(3, 3, 7), -1.0e25);
}

TEST(BoundarySteps, SideWallsCopyTheirCellsToo) {
    WallCase c(1, 2);
    number_places(c.flow.tke);
    SolverContext ctx = c.context();
    bc_tke(ctx, sources_of(ctx.flow.eq));
    expect_copies(c.flow.tke, [](int i, int j, int k) { return all_copies(i, j, k, true); });
}

TEST(BoundarySteps, ANestedRunKeepsSidesAndOutflow) {
    for (const int mode : {0, 2}) {
        WallCase c(4, mode);
        number_places(c.flow.tke);
        number_places(c.flow.tkl);
        number_places(c.flow.ted);
        SolverContext ctx = c.context(1);
        bc_tke(ctx, sources_of(ctx.flow.eq));
        bc_tkl(ctx, sources_of(ctx.flow.eq));
        bc_ted(ctx, sources_of(ctx.flow.eq));
        const auto energy = [](int i, int j, int k) { return level_copies(i, j, k, true); };
        expect_copies(c.flow.tke, energy);
        expect_copies(c.flow.tkl, energy);
        expect_copies(c.flow.ted,
                      [mode](int i, int j, int k) { return level_copies(i, j, k, mode > 0); });
        EXPECT_EQ(c.flow.eq.an(3, 6, 4), 9.0F);
        EXPECT_EQ(c.flow.eq.as(3, 2, 4), 9.0F);
        EXPECT_EQ(c.sp(3, 2, 4), -7.0);
    }
}

TEST(BoundarySteps, OpenSidesPassNothingAndTheOutflowKeepsItsCoefficient) {
    WallCase c;
    SolverContext ctx = c.context();
    bc_ted(ctx, sources_of(ctx.flow.eq));
    EXPECT_EQ(c.flow.eq.an(3, 6, 4), 0.0F);
    EXPECT_EQ(c.flow.eq.as(3, 2, 4), 0.0F);
    EXPECT_EQ(c.flow.eq.an(3, 5, 4), 9.0F);
    EXPECT_EQ(c.flow.eq.as(3, 3, 4), 9.0F);
    EXPECT_EQ(c.flow.eq.ae(5, 3, 4), 9.0F);
    EXPECT_EQ(c.flow.eq.aw(2, 3, 4), 9.0F);
}

}  // namespace
}  // namespace torvex::test
