#include "prep/trial_iterations.hpp"

#include <chrono>

#include "run/runtime_settings.hpp"
#include "solver/linear_solvers.hpp"
#include "solver/solve_controls.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"

namespace torvex {

std::optional<double> trial_iterations(const Trial& trial, const OuterStep& step, double seconds) {
    using Clock = std::chrono::steady_clock;
    const CaseSettings& settings = trial.settings;
    FlowState& flow = trial.flow;
    cap_threads(trial.grid.nk);  // as a run does
    const SolveControls controls = solve_controls(settings);
    SolverWork work;
    work.solvers = linear_solvers(settings);
    const SolverContext context{.settings = settings,
                                .controls = controls,
                                .grid = trial.grid,
                                .walls = trial.walls,
                                .flow = flow,
                                .work = work,
                                .skip_sides = settings.nested() ? 1 : 0};
    flow.canopy_source_factor = settings.canopy_on() ? 1.0F : 0.0F;
    const auto iterate = [&](int iter) {
        const bool finite = step(context, iter, settings.MONITOR_STEP).finite;
        normalise_residuals(flow, settings.TURBULENCE_MODEL);
        return finite;
    };
    int iter = 1;
    if (!iterate(iter)) {
        return std::nullopt;
    }
    const Clock::time_point begin = Clock::now();
    double elapsed = 0.0;
    bool finite = true;
    while (finite && elapsed < seconds) {
        ++iter;
        finite = iterate(iter);
        elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
    }
    return elapsed / (iter - 1);
}

}  // namespace torvex
