// OUTER_ITERATION: the pressure-correction loop of one direction (SIMPLE, Patankar and Spalding
// 1972). One iteration solves u, v, w, the pressure correction and the turbulence in turn, then
// normalises the residuals, tests them at monitor steps, and keeps account of the flow through the
// domain.
//
// reads   the case, the mesh and the start fields of the direction
// writes  everything of the direction's flow; converged, diverged, stop_requested, outer_count,
//         the tested residuals; convergence log, monitor tables, intermediate results
// stop    161: the monitor point is not inside the mesh

#include "run/outer_iteration.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/iteration_report.hpp"
#include "base/text_log.hpp"
#include "mesh/grid.hpp"
#include "results/finite_fields.hpp"
#include "run/control_files.hpp"
#include "run/iteration_table.hpp"
#include "run/progress.hpp"
#include "run/result_writers.hpp"
#include "run/runtime_settings.hpp"
#include "run/sample_monitor.hpp"
#include "run/settled_sites.hpp"
#include "solver/accelerated/acceleration.hpp"
#include "solver/clearing_pass.hpp"
#include "solver/coarse_roughness.hpp"
#include "solver/inflow_sums.hpp"
#include "solver/outer_step.hpp"
#include "solver/solve_controls.hpp"
#include "solver/solve_record.hpp"
#include "solver/solver_context.hpp"
#include "solver/solver_work.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

namespace {

// What the loop carries from one iteration to the next, beyond the fields.
struct Loop {
    std::int64_t iter = 0;       // the running iteration
    std::int64_t last_iter = 0;  // the last one allowed
    int prev_iter = 0;
    Residuals prev_resid;
    SolveControls controls;  // what the equations go by now
};

enum class Verdict : std::uint8_t { go_on, leave };

void open_convergence_log(Run& run, const Direction& direction, TextLog& log) {
    using Existing = TextLog::Existing;
    // Once a direction has been resumed, all later ones of the run append to their logs.
    run.append_convergence_logs = run.append_convergence_logs || direction.outer_count > 0;
    log.open(direction.restart_stem + std::string(file_names::convergence_log),
             run.append_convergence_logs ? Existing::append : Existing::discard);
}

void tell(const StepReport& told, const Direction& direction, RunLog& log,
          const IterationReport& report) {
    for (const auto& [label, record] : told.solves) {
        report.line(solve_line(label, record));
    }
    for (const std::string& note : told.notes) {
        log.timed(" WD " + edit::F(direction.angle, 5, 1) + ": " + note);
    }
}

std::array<float, 6> residuals_of(const FlowState& flow) {
    return {flow.resid_m, flow.resid_u, flow.resid_v, flow.resid_w, flow.resid_k, flow.resid_e};
}

// Fast iterations come to rest before the sources of a canopy act, where these wait for long, and
// the residuals of momentum feel them some iterations later only.
bool sources_have_acted(const CaseSettings& settings, const AccelerationMemory& memory, int iter) {
    constexpr int late = 10;
    const int start = settings.canopy.start_cal_src;
    const int count = memory.stage == Stage::plain ? iter - memory.begun : iter;
    return !settings.canopy_on() || start <= 1 || count >= start + late;
}

bool meets_criteria(const CaseSettings& settings, const FlowState& flow) {
    return settings.CC_OUT_M >= flow.resid_m && settings.CC_OUT_U >= flow.resid_u &&
           settings.CC_OUT_V >= flow.resid_v && settings.CC_OUT_W >= flow.resid_w;
}

std::array<float, 6> monitor_values(const Run& run, const Direction& direction) {
    const CaseSettings& settings = run.settings;
    require_monitor_inside(settings, direction.grid, direction.flow, direction.angle);
    const MonitorSample at =
        sample_monitor(settings, direction.grid, direction.flow, direction.angle);
    float ref = 0.0F;
    reference_speed_at_monitor(settings, direction.grid, direction.flow, ref);
    return {at.u / ref, at.v / ref, at.w / ref, at.p / (0.5F * (ref * ref)), at.k, at.e};
}

void append_to(ViewTable& all, ViewTable& wd, const std::string& row) {
    all.append(row);
    wd.append(row);
}

void report_monitor_step(const Run& run, Direction& direction, const IterationReport& report,
                         int iter) {
    const std::array<float, 6> residuals = residuals_of(direction.flow);
    for (const std::string& line : iteration_block(iter, residuals)) {
        report.line(line);
    }
    MonitorLogs& logs = direction.logs;
    append_to(logs.conv_all, logs.conv_wd, monitor_row(iter, residuals));
    if (run.settings.TORVEX_MODE == 0) {
        append_to(logs.mon_all, logs.mon_wd, monitor_row(iter, monitor_values(run, direction)));
    }
}

// Flow through the inflow and the outflow plane, in single precision, k inside j.
void balance_flow(const GridGeometry& grid, FlowState& flow) {
    float flow_in = 0.0F;
    float flow_out = 0.0F;
    for (int j = 2; j <= grid.ny; ++j) {
        for (int k = 2; k <= grid.nz; ++k) {
            flow_in += flow.flxU(1, j, k);
            flow_out += flow.flxU(grid.nx, j, k);
        }
    }
    flow.flow_in = flow_in;
    console(edit::list("East flowin", flow_in));
    console(edit::list("flowin", flow_in, "flowout", flow_out, "total", flow_in - flow_out));
}

// Steps behind the tests; the loop is left after the iteration in which a stop was asked for.
Verdict end_iteration(Run& run, Direction& direction, Loop& loop) {
    const CaseSettings& settings = run.settings;
    const auto iter = static_cast<int>(loop.iter);
    if (settings.DEBUG_MODE > 0 && (iter - 1) % settings.DEBUG_MODE == 0 &&
        loop.iter != loop.last_iter) {
        direction.outer_count = iter - 1;
        write_final_result(run, direction);
    }
    if (settings.BOOSTCAL && iter % 50 == 0) {
        boost(loop.controls, settings);
    }
    if (stop_requested_by_file()) {
        direction.stop_requested = true;
        return Verdict::leave;
    }
    if (run.intermediate_interval > 0 && iter % run.intermediate_interval == 0) {
        write_intermediate_result(run, direction, iter);
    }
    balance_flow(direction.grid, direction.flow);
    return Verdict::go_on;
}

Verdict iterate(Run& run, Direction& direction, const OuterStep& step, const SolverContext& context,
                const IterationReport& report, const SettledSites& sites, Loop& loop) {
    const CaseSettings& settings = run.settings;
    FlowState& flow = direction.flow;
    const auto iter = static_cast<int>(loop.iter);
    read_intermediate_interval(run.intermediate_interval);
    loop.prev_iter = iter - 1;
    loop.prev_resid = direction.tested;
    if (iter >= settings.canopy.start_cal_src && settings.canopy_on()) {
        flow.canopy_source_factor = 1.0F;
    }
    if (iter == settings.canopy.start_cal_src && settings.canopy_on()) {
        direction.settling.speeds.clear();
    }
    const StepReport told = step(context, iter, settings.MONITOR_STEP);
    tell(told, direction, run.log, report);
    if (!told.finite) {
        direction.diverged = true;
        return Verdict::leave;
    }
    normalise_residuals(flow, settings.TURBULENCE_MODEL);
    const int window = settling_window(settings, direction.acceleration, is_accelerated(settings));
    sites.record(direction.grid, flow, window, direction.settling);
    direction.tested.m = flow.resid_m;
    if (has_diverged(flow)) {
        direction.diverged = true;
        return Verdict::leave;
    }
    if (told.tested) {
        direction.tested = {flow.resid_m, flow.resid_u, flow.resid_v,
                            flow.resid_w, flow.resid_k, flow.resid_e};
        report_monitor_step(run, direction, report, iter);
        const bool complete = sources_have_acted(settings, direction.acceleration, iter);
        if (meets_criteria(settings, flow) && (complete || !is_accelerated(settings))) {
            direction.converged = true;
            return Verdict::leave;
        }
        if (complete && sites.settled(window, direction.settling)) {
            direction.settling.fraction = settings.STOP_SITES;
            direction.converged = true;
            return Verdict::leave;
        }
    }
    return end_iteration(run, direction, loop);
}

// Fields that hold Inf or NaN have diverged, whatever ended the loop: residuals tell of the cells
// that an equation solves, and only where they are summed. The outcome is the one of a next
// iteration that finds it.
void scan_fields(Run& run, Direction& direction, Loop& loop) {
    const auto found = first_not_finite(direction.flow);
    if (!found) {
        return;
    }
    run.log.timed(" WD " + edit::F(direction.angle, 5, 1) + ": " + std::string(found->field) +
                  " is no finite number in cell (" + std::to_string(found->i) + ", " +
                  std::to_string(found->j) + ", " + std::to_string(found->k) + ").");
    direction.converged = false;
    direction.diverged = true;
    loop.prev_iter = static_cast<int>(std::min(loop.iter, loop.last_iter));
    loop.prev_resid = direction.tested;
    direction.outer_count = loop.prev_iter;
}

// Returns the cells beside walls.
Walls prepare(Run& run, Direction& direction) {
    clearing_pass(run.settings, direction.flow);
    GRID(direction.grid);
    Walls walls = wall_cells(run.settings, direction.grid, direction.flow.z0);
    warn_of_coarse_roughness(direction.grid, walls, direction.angle, run.log);
    inflow_sums(direction.grid, direction.flow);
    if (run.settings.TORVEX_MODE == 0) {
        // A monitor that is nowhere ends the run before the first iteration, not behind it.
        require_monitor_inside(run.settings, direction.grid, direction.flow, direction.angle);
    }
    if (run.settings.RESTART_FLAG == 0) {
        clear_monitor_logs(direction.logs);
    }
    return walls;
}

}  // namespace

bool is_accelerated(const CaseSettings& settings) {
    return settings.ACCEL == 1 && !settings.BOOSTCAL;
}

OuterStep outer_step_of(const CaseSettings& settings, Direction& direction) {
    if (!is_accelerated(settings)) {
        return step_through(flow_equations());
    }
    const auto acceleration =
        std::make_shared<Acceleration>(direction.acceleration, direction.outer_count == 0);
    return [acceleration](const SolverContext& c, int iter, int interval) {
        return (*acceleration)(c, iter, interval);
    };
}

void OUTER_ITERATION(Run& run, Direction& direction) {
    OUTER_ITERATION(run, direction, outer_step_of(run.settings, direction));
}

void OUTER_ITERATION(Run& run, Direction& direction, const Equations& equations) {
    OUTER_ITERATION(run, direction, step_through(equations));
}

void OUTER_ITERATION(Run& run, Direction& direction, const OuterStep& step) {
    const CaseSettings& settings = run.settings;
    TextLog convergence_log;
    open_convergence_log(run, direction, convergence_log);
    const IterationReport report(convergence_log);
    const Walls walls = prepare(run, direction);

    console(iteration_rule());
    if (direction.outer_count == 0) {
        report.log_only(iteration_rule());
    }
    direction.flow.canopy_source_factor = 0.0F;
    const std::int32_t interval_before = run.intermediate_interval;
    read_intermediate_interval(run.intermediate_interval);
    if (run.intermediate_interval > 0 || run.intermediate_interval != interval_before) {
        run.log.timed(" Intermediate results every " + std::to_string(run.intermediate_interval) +
                      " iterations.");
    }

    cap_threads(direction.grid.nk);  // the loops share out planes
    constexpr std::int64_t most = std::numeric_limits<int>::max() - 1;
    Loop loop{.iter = std::int64_t{direction.outer_count} + 1,
              .last_iter = std::min(most, std::int64_t{direction.outer_count} + settings.MAXIT),
              .prev_iter = 0,
              .prev_resid = {},
              .controls = solve_controls(settings)};
    SolverWork work;
    work.solvers = linear_solvers(settings);
    const SolverContext context{.settings = settings,
                                .controls = loop.controls,
                                .grid = direction.grid,
                                .walls = walls,
                                .flow = direction.flow,
                                .work = work,
                                .skip_sides = settings.nested() ? 1 : 0};
    const SettledSites sites(settings, direction);
    if (settings.STOP_SITES > 0.0F && !sites.on()) {
        run.log.timed(" WD " + edit::F(direction.angle, 5, 1) +
                      ": STOP_SITES is off, since no site lies in the mesh.");
    }
    if (is_accelerated(settings) && direction.outer_count > 0) {
        direction.flow.resid_m = direction.tested.m;  // which the next iteration is judged by
    }
    Progress progress(settings, direction, static_cast<int>(loop.last_iter));
    while (loop.iter <= loop.last_iter &&
           iterate(run, direction, step, context, report, sites, loop) == Verdict::go_on) {
        const auto iter = static_cast<int>(loop.iter);
        progress.iteration(iter, iter % settings.MONITOR_STEP == 0);
        ++loop.iter;
    }
    if (settings.MAXIT > 0) {
        direction.outer_count = static_cast<int>(loop.iter - 1);
    }
    convergence_log.close();
    if (settings.MAXIT > 0 && !direction.diverged) {
        scan_fields(run, direction, loop);
    }
    if (direction.diverged) {
        console("diverged !!");
        write_diverged_result(run, direction, loop.prev_iter, loop.prev_resid);
    }
}

}  // namespace torvex
