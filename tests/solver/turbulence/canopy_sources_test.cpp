// Canopy sources of tke and ted.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "canopy/canopy_sources_turbulence.hpp"
#include "mesh/test_meshes.hpp"
#include "solver/canopy_cells_of.hpp"
#include "solver/fields.hpp"
#include "solver/turbulence/turbulence.hpp"
#include "solver/turbulence/turbulence_case.hpp"

namespace torvex::test {
namespace {

// A wind of 13 m/s in cells of 24 m3.
struct CanopyCase : TurbulenceCase {
    CanopyCase() : TurbulenceCase(with_metrics(uniform_mesh({5, 5, 6}, 2, 3, 4)), 1) {
        settings.canopy.canopy_mode = 1;
        settings.canopy.beta_p = 0.8F;
        settings.canopy.cpe1 = 0.9F;
        flow.canopy_source_factor = 1.0F;
        flow.u.fill(3.0F);
        flow.v.fill(-4.0F);
        flow.w.fill(12.0F);
        flow.den.fill(1.2F);
        flow.tke.fill(2.0F);
        flow.ted.fill(0.5F);
        flow.gp_d.allocate(grid.ni, grid.nj, grid.nk, 0.1F);
        flow.gp_k.allocate(grid.ni, grid.nj, grid.nk, 5.0F);
        flow.gp_e.allocate(grid.ni, grid.nj, grid.nk, 4.0F);
        flow.eq.su.fill(1000.0);
        flow.eq.sp.fill(-50.0);
    }

    // Every place of su and sp: `su` and `sp` in the cells above the ground layer, else untouched.
    void expect_sources(double su, double sp) const {
        for (int k = 1; k <= grid.nk; ++k) {
            for (int j = 1; j <= grid.nj; ++j) {
                for (int i = 1; i <= grid.ni; ++i) {
                    const bool acts =
                        i >= 2 && i <= grid.nx && j >= 2 && j <= grid.ny && k >= 3 && k <= grid.nz;
                    EXPECT_NEAR(flow.eq.su(i, j, k), 1000.0 + (acts ? su : 0.0), 0.02)
                        << i << " " << j << " " << k;
                    EXPECT_NEAR(flow.eq.sp(i, j, k), -50.0 + (acts ? sp : 0.0), 2e-3);
                }
            }
        }
    }
};

void tke_sources(TurbulenceCase& c) {
    canopy_sources_tke(canopy_cells_of(c.context(), sources_of(c.flow.eq)), c.settings.canopy,
                       c.flow.canopy_source_factor);
}

void ted_sources(TurbulenceCase& c) {
    canopy_sources_ted(canopy_cells_of(c.context(), sources_of(c.flow.eq)), c.settings.canopy,
                       c.flow.canopy_source_factor);
}

constexpr double drag = 1.2 * 0.1 * 24;  // den gp_d vol
constexpr double V = 13;

TEST(CanopyTke, AddsProductionAndSinkAboveTheGroundLayer) {
    CanopyCase c;
    tke_sources(c);
    c.expect_sources(0.8 * drag * V * V * V, -5.0 * drag * V);
}

TEST(CanopyTed, AddsProductionAndSinkAboveTheGroundLayer) {
    CanopyCase c;
    ted_sources(c);
    c.expect_sources(0.9 * 0.8 * drag * V * V * V * 0.5 / 2.0, -4.0 * drag * V);
}

TEST(CanopySources, WaitForTheirFactor) {
    CanopyCase c;
    c.flow.canopy_source_factor = 0.0F;
    tke_sources(c);
    ted_sources(c);
    c.expect_sources(0, 0);
}

TEST(CanopySources, VanishWithoutDrag) {
    CanopyCase c;
    c.flow.gp_d.fill(0.0F);
    tke_sources(c);
    ted_sources(c);
    c.expect_sources(0, 0);
    // No canopy was read.
    c.flow.gp_d.release();
    tke_sources(c);
    ted_sources(c);
    c.expect_sources(0, 0);
}

TEST(CanopyTed, DividesByTkeWithoutAGuard) {
    CanopyCase c;
    c.flow.tke.fill(1.0e-15F);
    ted_sources(c);
    EXPECT_NEAR(c.flow.eq.su(3, 3, 3) / (0.9 * 0.8 * drag * V * V * V * 0.5 / 1e-15), 1.0, 1e-5);
    c.flow.tke.fill(0.0F);
    ted_sources(c);
    EXPECT_TRUE(std::isinf(c.flow.eq.su(3, 3, 3)));
}

TEST(CanopySources, AreTheSameBitsForAnyNumberOfThreads) {
    Array3<double> su;
    for (const int n : {1, 2, 3, 5}) {
        TurbulenceCase c(shaken_block(), 1);
        make_random(c, 41);
        c.flow.canopy_source_factor = 1.0F;
        const Threads threads(n);
        tke_sources(c);
        ted_sources(c);
        if (n == 1) {
            su = c.flow.eq.su;
        }
        for (std::size_t m = 0; m < su.size(); ++m) {
            ASSERT_EQ(c.flow.eq.su.data()[m], su.data()[m]) << n;
        }
    }
}

// What the equations make of them: sources before the wall planes are cleared.

// su and sp of a routine with the canopy less those without it.
struct Effect {
    Array3<double> su, sp;
};

Effect effect(int mode, int canopy_mode, const std::function<void(SolverContext&)>& routine) {
    Effect e;
    for (const bool with : {false, true}) {
        CanopyCase c;
        c.flow.vis.fill(0.5F);
        c.settings.WIND_TUNNEL_MODE = mode;
        c.settings.canopy.canopy_mode = with ? canopy_mode : 0;
        c.settings.NSWPK = c.settings.NSWPE = 0;
        SolverContext ctx = c.context();
        routine(ctx);
        if (with) {
            for (std::size_t m = 0; m < e.su.size(); ++m) {
                e.su.data()[m] = c.flow.eq.su.data()[m] - e.su.data()[m];
                e.sp.data()[m] = c.flow.eq.sp.data()[m] - e.sp.data()[m];
            }
        } else {
            e.su = c.flow.eq.su;
            e.sp = c.flow.eq.sp;
        }
    }
    return e;
}

void calcke(SolverContext& ctx) {
    CALCKE(ctx, 1, 2);
}
void calced(SolverContext& ctx) {
    CALCED(ctx, 1, 2);
}

TEST(CanopyInTheEquations, ActsWithCanopyModeOnly) {
    Effect e = effect(0, 1, calcke);
    EXPECT_NEAR(e.su(3, 3, 4), 0.8 * drag * V * V * V, 0.02);
    EXPECT_NEAR(e.sp(3, 3, 4), -5.0 * drag * V, 2e-3);
    EXPECT_EQ(e.su(3, 3, 2), 0.0);
    EXPECT_EQ(e.sp(3, 3, 2), 0.0);
    e = effect(0, 1, calced);
    EXPECT_NEAR(e.su(3, 3, 4), 0.9 * 0.8 * drag * V * V * V * 0.25, 0.02);
    EXPECT_NEAR(e.sp(3, 3, 4), -4.0 * drag * V, 2e-3);
    e = effect(0, 0, calcke);
    EXPECT_EQ(e.su(3, 3, 4), 0.0);
    e = effect(0, 0, calced);
    EXPECT_EQ(e.su(3, 3, 4), 0.0);
}

TEST(CanopyInTheEquations, WallPlanesClearItsSinkAndKeepItsProduction) {
    // Cells under a wall on top: the wall's sink replaces the canopy's, the production stays.
    const Effect e = effect(1, 1, calcke);
    EXPECT_NEAR(e.su(3, 3, 6), 0.8 * drag * V * V * V, 0.05);
    EXPECT_EQ(e.sp(3, 3, 6), 0.0);
    EXPECT_NEAR(e.sp(3, 3, 5), -5.0 * drag * V, 2e-3);
}

TEST(CanopyInTheEquations, LeavesTheKlEnergyAlone) {
    TurbulenceCase with(shaken_block(), 4);
    TurbulenceCase without(shaken_block(), 4);
    make_random(with, 41);
    make_random(without, 41);
    with.settings.canopy.canopy_mode = 1;
    with.flow.canopy_source_factor = 1.0F;
    SolverContext ctx1 = with.context();
    SolverContext ctx2 = without.context();
    CALCKLM(ctx1, 1, 1);
    CALCKLM(ctx2, 1, 1);
    EXPECT_TRUE(same_bits(with.flow.tkl, without.flow.tkl));
}

}  // namespace
}  // namespace torvex::test
