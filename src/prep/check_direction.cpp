// One direction of a check: the steps of a run up to its first iteration.

#include <algorithm>
#include <limits>
#include <optional>

#include "base/text_file.hpp"
#include "maps/local_metric.hpp"
#include "mesh/grid.hpp"
#include "prep/case_check.hpp"
#include "prep/machine_limits.hpp"
#include "prep/trial_iterations.hpp"
#include "results/mesh_column.hpp"
#include "run/outer_iteration.hpp"
#include "run/prepare_direction.hpp"
#include "run/sample_monitor.hpp"
#include "run/write_sites.hpp"
#include "solver/clearing_pass.hpp"
#include "solver/coarse_roughness.hpp"
#include "solver/inflow_sums.hpp"
#include "solver/wall_cells.hpp"

namespace torvex {

namespace {

float least_d_over_z0(const GridGeometry& grid, const Walls& walls) {
    float least = std::numeric_limits<float>::infinity();
    for (int j = 2; j <= grid.ny; ++j) {
        for (int i = 2; i <= grid.nx; ++i) {
            least = std::min(least, walls.ground(i, j).d / walls.ground(i, j).z0);
        }
    }
    return least;
}

void check_sites(const CaseSettings& settings, const Direction& direction, CaseCheck& check) {
    const bool first = check.sites.empty();
    for (int n = 1; n <= settings.N_SITE; ++n) {
        const Site& site = settings.SITE[static_cast<std::size_t>(n - 1)];
        const ColumnPlace place = column_place(
            position_from_centre(minutes_of(site.LON), minutes_of(site.LAT), settings.cent_lon_min,
                                 settings.cent_lat_min, settings.GS, direction.angle),
            direction.grid);
        if (first) {
            SiteCheck& added = check.sites.emplace_back();
            added.label = trimmed(site.LABEL);
            added.inside = true;
            if (place.inside()) {
                added.ground = column(direction.grid.zc, place)(1);
            }
        }
        SiteCheck& found = check.sites[static_cast<std::size_t>(n - 1)];
        found.inside = found.inside && place.inside();
    }
}

}  // namespace

void check_direction(Run& run, int iwd, CaseCheck& check) {
    const CaseSettings& settings = run.settings;
    DirectionCheck& found = check.directions[static_cast<std::size_t>(iwd - 1)];
    Direction direction;
    begin_direction(run, iwd, direction);
    if (prepare_anew(run, direction) != Prepared::to_solve) {
        found.state = DirectionState::skipped;
        return;
    }
    warn_of_sites_outside(run, direction);
    GridGeometry& grid = direction.grid;
    clearing_pass(settings, direction.flow);
    GRID(grid);
    const Walls walls = wall_cells(settings, grid, direction.flow.z0);
    warn_of_coarse_roughness(grid, walls, direction.angle, run.log);
    inflow_sums(grid, direction.flow);
    if (settings.TORVEX_MODE == 0) {
        require_monitor_inside(settings, grid, direction.flow, direction.angle);
    }
    found.least_d_over_z0 = least_d_over_z0(grid, walls);
    found.slopes = ground_slopes(grid);
    check_sites(settings, direction, check);
    if (!check.s_per_iteration) {
        constexpr double seconds = 1.0;
        check.s_per_iteration = trial_iterations({settings, grid, walls, direction.flow},
                                                 outer_step_of(settings, direction), seconds);
        check.resources.memory = peak_memory();
        check.resources.memory_measured = true;
    }
    found.state = DirectionState::good;
}

}  // namespace torvex
