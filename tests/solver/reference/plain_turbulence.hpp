#pragma once

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

// The turbulence equations in double precision, cell by cell, every face and every corner computed
// afresh: what the fast routines are compared with. Nothing is shared, nothing is clever.
namespace torvex::plain {

using Array = Array3<double>;

struct State {
    Array u, v, w, tke, ted, tkl, vis, viskl, den, lm;
    Array flxU, flxV, flxW;
    Array gen;
    Array2<double> z0;
    Array gp_d, gp_k, gp_e;
    Array ae, aw, an, as, at, ab, ap, su, sp;
    double canopy_source_factor = 0;
    double resid_k = 0, resid_e = 0, resid_klm = 0;
    double scale_k = 0, scale_e = 0, scale_klm = 0;
};

State copy_of(const FlowState& s);

enum class Variable { tke, ted, tkl };

// Where the plain routine stops.
enum class Until {
    assembled,  // sources
    bounded,    // canopy, wall planes, boundary steps
    relaxed,
    solved
};

// What a solution did.
struct Outcome {
    int n = 1;
    double r0 = 0, r1 = 0, a = 0;
};

struct Iteration {
    int iter = 1;
    int interval = 1;
    int skip_sides = 0;
};

Outcome solve(Variable variable, const CaseSettings& set, const GridGeometry& g, State& s,
              const Iteration& iteration, Until until = Until::solved);

void mixing_length(const CaseSettings& set, const GridGeometry& g, State& s, const Array& energy);
void viscosity(const CaseSettings& set, const GridGeometry& g, State& s);

}  // namespace torvex::plain
