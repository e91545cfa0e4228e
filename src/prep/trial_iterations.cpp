#include "prep/trial_iterations.hpp"

#include <chrono>
#include <cmath>

#include "run/runtime_settings.hpp"
#include "solver/equations.hpp"
#include "solver/solve_controls.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

namespace {

// One outer iteration; false if a residual of momentum is no finite number.
bool iterate(const Equations& equations, const SolverContext& context, int iter) {
    const int interval = context.settings.MONITOR_STEP;
    equations.CALCU(context, iter, interval);
    equations.CALCV(context, iter, interval);
    equations.CALCW(context, iter, interval);
    const FlowState& flow = context.flow;
    if (!std::isfinite(flow.resid_u + flow.resid_v + flow.resid_w)) {
        return false;
    }
    equations.CALCP(context, iter, interval);
    equations.CALCKE(context, iter, interval);
    const int model = context.settings.TURBULENCE_MODEL;
    if (model == 2) {
        equations.CALCLM(context);
    } else {
        equations.CALCED(context, iter, interval);
        if (model == 4) {
            equations.CALCKLM(context, iter, interval);
            equations.CALCLM_(context);
        }
    }
    equations.CALCVIS(context);
    return true;
}

}  // namespace

std::optional<double> trial_iterations(const CaseSettings& settings, const GridGeometry& grid,
                                       const Walls& walls, FlowState& flow, double seconds) {
    using Clock = std::chrono::steady_clock;
    cap_threads(grid.nk);  // as a run does
    const Equations equations = flow_equations();
    const SolveControls controls = solve_controls(settings);
    SolverWork work;
    const SolverContext context{.settings = settings,
                                .controls = controls,
                                .grid = grid,
                                .walls = walls,
                                .flow = flow,
                                .work = work,
                                .skip_sides = settings.nested() ? 1 : 0};
    flow.canopy_source_factor = settings.canopy_on() ? 1.0F : 0.0F;
    int iter = 1;
    if (!iterate(equations, context, iter)) {
        return std::nullopt;
    }
    const Clock::time_point begin = Clock::now();
    double elapsed = 0.0;
    bool finite = true;
    while (finite && elapsed < seconds) {
        ++iter;
        finite = iterate(equations, context, iter);
        elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
    }
    return elapsed / (iter - 1);
}

}  // namespace torvex
