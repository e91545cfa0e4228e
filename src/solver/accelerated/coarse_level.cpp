// A coarse mesh and its fields. Every second node line in i and j is kept, all planes k: the layers
// carry the profile that the wall formulas live on. So do the cells beside the side walls of a wind
// tunnel. Velocity and pressure are means over the fine cells, tke and ted means of the logarithm,
// fluxes sums over the fine faces, so that no coarse cell loses what its fine cells do not lose.
// Roughness is the mean of its logarithm, gp_d and gp_e are volume means, gp_k one weighted by the
// drag density.

#include "solver/accelerated/coarse_level.hpp"

#include <cmath>

#include "solver/accelerated/flux_transfers.hpp"
#include "solver/accelerated/plain_fields.hpp"
#include "solver/accelerated/transfers.hpp"
#include "solver/clearing_pass.hpp"
#include "solver/inflow_sums.hpp"

namespace torvex {

namespace {

CellRange interior(const GridGeometry& g) {
    return {2, 2, 2, g.nx, g.ny, g.nz};
}

void roughness(const Coarsening& by, const Field2& fine, const GridGeometry& g, Field2& z0) {
    z0.allocate(g.ni, g.nj);
    for (int J = 1; J <= g.nj; ++J) {
        for (int I = 1; I <= g.ni; ++I) {
            float sum = 0;
            int cells = 0;
            for (int j = by.j.first(J); j <= by.j.last(J); ++j) {
                for (int i = by.i.first(I); i <= by.i.last(I); ++i) {
                    sum += std::log(fine(i, j));
                    ++cells;
                }
            }
            z0(I, J) = std::exp(sum / static_cast<float>(cells));
        }
    }
}

// Mean of `value` weighted by `weight`, both told of fine cells; 0 where the weight is.
template <class Weight>
void weighted_mean(const Coarsening& by, const GridGeometry& g, const Weight& weight,
                   const Field3& value, Field3& to) {
    Field3 all(g.ni, g.nj, g.nk);
    restrict_cells(by, interior(g), weight,
                   [&](int I, int J, int k, float sum, int /*cells*/) { all(I, J, k) = sum; });
    restrict_cells(
        by, interior(g), [&](int i, int j, int k) { return weight(i, j, k) * value(i, j, k); },
        [&](int I, int J, int k, float sum, int /*cells*/) {
            to(I, J, k) = all(I, J, k) > 0.0F ? sum / all(I, J, k) : 0.0F;
        });
}

void canopy(const SolverContext& fine, CoarseLevel& level) {
    const FlowState& f = fine.flow;
    if (f.gp_d.size() == 0) {
        return;
    }
    const GridGeometry& g = level.grid;
    FlowState& s = level.flow;
    for (Field3* field : {&s.gp_d, &s.gp_k, &s.gp_e}) {
        field->allocate(g.ni, g.nj, g.nk);
    }
    const Field3& vol = fine.grid.vol;
    const auto volume = [&](int i, int j, int k) { return vol(i, j, k); };
    const auto drag = [&](int i, int j, int k) { return vol(i, j, k) * f.gp_d(i, j, k); };
    weighted_mean(level.by, g, volume, f.gp_d, s.gp_d);
    weighted_mean(level.by, g, volume, f.gp_e, s.gp_e);
    weighted_mean(level.by, g, drag, f.gp_k, s.gp_k);
}

bool has_volume(const GridGeometry& g) {
    for (int k = 2; k <= g.nz; ++k) {
        for (int j = 2; j <= g.ny; ++j) {
            for (int i = 2; i <= g.nx; ++i) {
                if (!(g.vol(i, j, k) > 0.0F)) {
                    return false;
                }
            }
        }
    }
    return true;
}

}  // namespace

std::unique_ptr<CoarseLevel> make_coarse_level(const SolverContext& fine) {
    auto level = std::make_unique<CoarseLevel>();
    const Ends sides = fine.settings.walls_on_sides() ? Ends::kept : Ends::joined;
    level->by = {coarse_line(fine.grid.nx), coarse_line(fine.grid.ny, sides)};
    if (level->by.i.nodes <= least_coarse_cells || level->by.j.nodes <= least_coarse_cells) {
        return nullptr;
    }
    GridGeometry& g = level->grid;
    make_coarse_mesh(fine.grid, level->by, g);
    if (!has_volume(g)) {
        return nullptr;
    }
    FlowState& s = level->flow;
    const int model = fine.settings.TURBULENCE_MODEL;
    allocate_fields(s, g, model);
    clearing_pass(fine.settings, s);
    release_plain_fields(s);
    roughness(level->by, fine.flow.z0, g, s.z0);
    canopy(fine, *level);
    level->walls = wall_cells(fine.settings, g, s.z0);
    Tau& tau = level->tau;
    for (Field3* field :
         {&tau.u, &tau.v, &tau.w, &tau.tke, &tau.ted, &tau.flxU, &tau.flxV, &tau.flxW}) {
        field->allocate(g.ni, g.nj, g.nk);
    }
    if (model == 4) {
        tau.tkl.allocate(g.ni, g.nj, g.nk);
    }
    level->controls = fine.controls;
    restrict_fields(fine, *level, false);
    inflow_sums(g, s);
    return level;
}

SolverContext context_of(const SolverContext& fine, CoarseLevel& level) {
    return {.settings = fine.settings,
            .controls = level.controls,
            .grid = level.grid,
            .walls = level.walls,
            .flow = level.flow,
            .work = level.solver,
            .skip_sides = fine.skip_sides};
}

void restrict_fields(const SolverContext& fine, CoarseLevel& level, bool inner) {
    const FlowState& f = fine.flow;
    const GridGeometry& g = level.grid;
    FlowState& s = level.flow;
    const CellRange cells = inner ? interior(g) : CellRange{1, 1, 1, g.ni, g.nj, g.nk};
    const auto mean = [&](Field3 FlowState::*field) {
        restrict_mean(level.by, cells, f.*field, s.*field);
    };
    const auto log_mean = [&](Field3 FlowState::*field) {
        if ((f.*field).size() > 0) {
            restrict_log_mean(level.by, cells, f.*field, s.*field);
        }
    };
    mean(&FlowState::u);
    mean(&FlowState::v);
    mean(&FlowState::w);
    mean(&FlowState::p);
    log_mean(&FlowState::tke);
    log_mean(&FlowState::ted);
    log_mean(&FlowState::tkl);
    if (!inner) {
        log_mean(&FlowState::vis);
        log_mean(&FlowState::viskl);
        log_mean(&FlowState::lm);
    }
    restrict_fluxes(level.by, g, f, fluxes_of(s));
    s.canopy_source_factor = f.canopy_source_factor;
}

}  // namespace torvex
