#include "solver/turbulence/turbulence_case.hpp"

#include <utility>

#include "mesh/test_meshes.hpp"
#include "solver/fields.hpp"

namespace torvex::test {

TurbulenceCase::TurbulenceCase(GridGeometry mesh, int model) : grid(std::move(mesh)) {
    settings.TURBULENCE_MODEL = model;
    settings.VISCOS = 0.0015F;
    settings.DENSIT = 1.0F;
    settings.CMU = model == 2 ? 0.094F : 0.09F;
    settings.SIGK = model == 2 ? 1.86F : 1.0F;
    settings.CE1 = 1.44F;
    settings.CE2 = 1.92F;
    settings.SIGE = 1.3F;
    settings.KL_CMU = 0.094F;
    settings.KL_SIGMA_K = 1.86F;
    settings.KL_ALPHA = 0.1F;
    settings.URFK = settings.URFE = settings.URFVIS = 1.0F;
    settings.NSWPK = settings.NSWPE = 1;
    settings.WIND_TUNNEL_Z0 = 0.001F;
    allocate_fields(flow, grid, model);
    flow.den.fill(1.0F);
    flow.z0.allocate(grid.ni, grid.nj, 0.03F);
}

void make_random(TurbulenceCase& c, unsigned seed) {
    FlowState& s = c.flow;
    const auto random = [&](float low, float high) {
        return random_field(c.grid, low, high, seed++);
    };
    s.u = random(-3, 12);
    s.v = random(-5, 5);
    s.w = random(-4, 4);
    s.tke = random(0.1F, 3);
    s.ted = random(0.01F, 0.5F);
    s.vis = random(0.5F, 8);
    s.den = random(0.9F, 1.3F);
    s.flxU = random(-40, 80);
    s.flxV = random(-40, 40);
    s.flxW = random(-40, 40);
    s.gp_d = random(0, 0.3F);
    s.gp_k = random(0.5F, 5);
    s.gp_e = random(0.5F, 5);
    if (s.tkl.size() > 0) {
        s.tkl = random(0.1F, 3);
        s.viskl = random(0.5F, 8);
        s.lm = random(0.5F, 20);
    }
    const Field3 z0 = random(0.005F, 0.05F);
    for (int j = 1; j <= c.grid.nj; ++j) {
        for (int i = 1; i <= c.grid.ni; ++i) {
            s.z0(i, j) = z0(i, j, 1);
        }
    }
}

GridGeometry shaken_block() {
    GridGeometry g = uniform_mesh({23, 10, 12}, 3, 2.5F, 2);
    shake(g, {0.4, 0.4, 0.3}, 5);
    return with_metrics(std::move(g));
}

}  // namespace torvex::test
