#include "run/result_writers.hpp"

#include <optional>

#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/iteration_memory.hpp"
#include "run/write_sites.hpp"

namespace torvex {

namespace {

void write_result(const Run& run, const Direction& direction, int iteration, float residual) {
    write_vpkeout(direction.restart_stem, iteration, residual, run.settings.TURBULENCE_MODEL,
                  direction.flow);
}

RestartInfo info_of(const Run& run, const Direction& direction, int iteration,
                    const Residuals& residuals) {
    RestartInfo info{iteration, residuals.m, residuals.u, residuals.v, residuals.w};
    if (run.settings.nested()) {
        info.nest_extents = Extents{direction.grid.ni, direction.grid.nj, direction.grid.nk};
    }
    return info;
}

}  // namespace

void write_final_result(Run& run, Direction& direction) {
    write_result(run, direction, direction.outer_count, direction.max_resid_m);
    write_iteration_memory(run, direction);
    write_restart_file(restart_info_path(direction),
                       info_of(run, direction, direction.outer_count, direction.tested));
    write_sites(run, direction);
}

void write_intermediate_result(Run& run, Direction& direction, int iteration) {
    write_result(run, direction, iteration, direction.flow.resid_m);
    write_restart_info(direction.restart_name, direction.restart_stem,
                       info_of(run, direction, iteration, direction.tested), true);
    write_sites(run, direction);
}

void write_diverged_result(Run& run, Direction& direction, int prev_iter,
                           const Residuals& prev_resid) {
    write_result(run, direction, prev_iter, prev_resid.m);
    write_restart_info(direction.restart_name, direction.restart_stem,
                       info_of(run, direction, prev_iter, prev_resid), std::nullopt);
}

}  // namespace torvex
