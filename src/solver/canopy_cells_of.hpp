#pragma once

#include "canopy/canopy_cells.hpp"
#include "solver/solver_context.hpp"

namespace torvex {

// The fields of a direction as the canopy terms take them, which add to `target`.
inline CanopyCells canopy_cells_of(const SolverContext& c, Sources target) {
    FlowState& s = c.flow;
    return {.vol = c.grid.vol,
            .u = s.u,
            .v = s.v,
            .w = s.w,
            .den = s.den,
            .tke = s.tke,
            .ted = s.ted,
            .gp_d = s.gp_d,
            .gp_k = s.gp_k,
            .gp_e = s.gp_e,
            .su = target.su,
            .sp = target.sp};
}

}  // namespace torvex
