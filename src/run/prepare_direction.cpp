// The three ways to the start of a direction's solve: a saved state, the user's own domain, maps.

#include "run/prepare_direction.hpp"

#include <filesystem>
#include <optional>
#include <string>

#include "base/edit.hpp"
#include "base/file_names.hpp"
#include "base/stop.hpp"
#include "canopy/canopy_file.hpp"
#include "maps/load_maps.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/make_mesh.hpp"
#include "results/finite_fields.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "roughness/calc_roughness1.hpp"
#include "roughness/calc_sbz_roughness2.hpp"
#include "run/check_fields.hpp"
#include "run/direction_canopy.hpp"
#include "run/fingerprint.hpp"
#include "run/iteration_memory.hpp"
#include "run/nested_run.hpp"
#include "run/outcome.hpp"
#include "run/read_mesh_etc.hpp"
#include "run/read_restart.hpp"
#include "run/stored_start.hpp"
#include "run/write_sites.hpp"
#include "solver/init.hpp"

namespace torvex {

namespace {

void make_cell_geometry(const Run& run, Direction& direction) {
    GridGeometry& grid = direction.grid;
    XYZ2XYZC(grid);
    if (run.leaves_files) {
        write_xyzc(direction.restart_stem, grid.xc, grid.yc, grid.zc);
    }
}

RoughnessPass roughness_pass(Run& run, const Direction& direction) {
    return {run.settings, run.lines, direction.iwd, direction.tag, run.log, run.leaves_files};
}

void keep_roughness(const Run& run, const Direction& direction) {
    if (run.leaves_files) {
        write_z0(direction.restart_stem, direction.flow.z0);
    }
}

// The canopy file brings the roughness of its cells; where it holds none, 0.0002 m stands. A file
// that puts a column of roughness 0 on the ground is that direction's own fault, and no other's.
Prepared prepare_canopy(Run& run, Direction& direction) {
    constexpr float least_roughness = 0.0002F;
    const GridGeometry& grid = direction.grid;
    FlowState& flow = direction.flow;
    flow.z0.allocate(grid.ni, grid.nj, least_roughness);
    const std::string file = direction.restart_stem + std::string(canopy_file_name);
    read_direction_canopy(file, run, direction);
    if (const auto fault = fault_of_inner_roughness(flow.z0)) {
        run.log.warn("WD " + edit::F(direction.angle, 5, 1) + ": " + file + ", " + *fault +
                     "; this direction is skipped.");
        direction.diverged = true;
        return Prepared::unusable;
    }
    calc_sbz_roughness2(roughness_pass(run, direction), run.upwind, flow.z0);
    keep_roughness(run, direction);
    return Prepared::to_solve;
}

void prepare_roughness(Run& run, Direction& direction, const DirectionMaps& maps) {
    calc_roughness1(roughness_pass(run, direction), maps, direction.grid, run.upwind,
                    direction.flow.z0);
    keep_roughness(run, direction);
}

// True if the saved residuals meet the criteria of this run. A residual that is not a number does
// not.
bool already_done(const CaseSettings& settings, const Residuals& residuals) {
    return settings.CC_OUT_M >= residuals.m && settings.CC_OUT_U >= residuals.u &&
           settings.CC_OUT_V >= residuals.v && settings.CC_OUT_W >= residuals.w;
}

// What the iterations before the stop remembered; without it they begin like those of a start.
void recall_iterations(Run& run, Direction& direction) {
    if (run.settings.ACCEL == 0 && !(run.settings.STOP_SITES > 0.0F)) {
        return;
    }
    if (!read_iteration_memory(direction)) {
        direction.acceleration.begun = direction.outer_count;
        run.log.timed(" WD " + edit::F(direction.angle, 5, 1) + ": Nothing is known of how the " +
                      "iterations went before; they go on with the first working set.");
    }
}

// By the rule of STOP_SITES, and one at least as strict as today's.
bool has_settled(const CaseSettings& settings, const Direction& direction) {
    const float fraction = direction.settling.fraction;
    return fraction > 0.0F && fraction <= settings.STOP_SITES;
}

// Fields that are no finite numbers are not done, whatever their residuals: a direction may have
// diverged in cells that no residual tells of.
Prepared resume(Run& run, Direction& direction) {
    const bool user_domain = run.settings.TORVEX_MODE != 0;
    console("Resume torvex default calculations..");
    if (user_domain) {
        read_user_counts(run);
    }
    read_restart(run, direction);
    make_cell_geometry(run, direction);
    recall_iterations(run, direction);
    if ((already_done(run.settings, direction.tested) || has_settled(run.settings, direction)) &&
        !first_not_finite(direction.flow)) {
        direction.converged = true;
        write_sites(run, direction);
        set_status(direction, DirectionStatus::converged, run.directions);
        return Prepared::done;
    }
    tell_start(run, direction, "the result of iteration " + std::to_string(direction.outer_count));
    if (run.settings.nested()) {
        tell_kept_boundary(run, direction);
    }
    if (user_domain) {
        read_user_canopy(run, direction);
    } else if (run.settings.canopy_on()) {
        return prepare_canopy(run, direction);
    }
    return Prepared::to_solve;
}

Prepared prepare_from_maps(Run& run, Direction& direction) {
    console("Start torvex default calculations...");
    const DirectionMaps maps = mesh_from_maps(run, direction);
    const GridGeometry& grid = direction.grid;
    forget_saved_states(run, direction);
    if (run.leaves_files) {
        write_xyz(direction.restart_stem, grid.xn, grid.yn, grid.zn);
    }
    make_cell_geometry(run, direction);
    if (!run.settings.canopy_on()) {
        prepare_roughness(run, direction, maps);
    } else if (prepare_canopy(run, direction) == Prepared::unusable) {
        return Prepared::unusable;
    }
    // The upwind roughness of a canopy run stands in a file, of which a check has none of its own.
    const bool has_file = run.leaves_files || run.settings.nested();
    INIT(run.settings, grid, direction.angle, has_file ? direction.tag : "", run.log,
         direction.flow);
    finish_start(run, direction, origin_of_init(run.settings));
    if (run.settings.nested()) {
        carry_parent_flow(run, maps, direction);
    }
    return Prepared::to_solve;
}

// Whether the saved state of a direction was made from what the case says today. Where nobody can
// tell, it is taken as it stands. `finished`: there is a result, not only the start of one.
bool fits_the_case(Run& run, const Direction& direction, bool finished) {
    const std::string wd = "WD " + edit::F(direction.angle, 5, 1) + ": ";
    const auto saved = read_fingerprint(fingerprint_path(direction.restart_stem));
    std::string gone;
    const auto at_hand =
        saved ? fingerprint_of(run, direction, MapsAre::read_anew, gone) : std::nullopt;
    if (!at_hand) {
        run.log.timed(" " + wd + (saved ? gone + " cannot be read" : "No fingerprint") +
                      "; the saved state is taken as it stands.");
        return true;
    }
    const std::string changed = difference(*saved, *at_hand);
    if (changed.empty()) {
        return true;
    }
    if (finished) {
        run.log.warn(wd + changed + " changed since this direction was begun; it begins anew.");
    } else {
        run.log.timed(" " + wd + "The start fields of an earlier run are not taken, since " +
                      changed + " changed.");
    }
    return false;
}

}  // namespace

void begin_direction(const Run& run, int iwd, Direction& direction) {
    direction.iwd = iwd;
    direction.angle = run.settings.WIND_DIRECTION_ANGLE(iwd);
    direction.tag = run.wd_tag[static_cast<std::size_t>(iwd - 1)];
    direction.restart_stem = file_names::restart_stem(run.settings.run_prefix, direction.tag);
    direction.sites_stem = file_names::sites_stem(run.settings.run_prefix, direction.tag);
}

DirectionMaps mesh_from_maps(Run& run, Direction& direction) {
    DirectionMaps maps = load_maps(run.settings, direction.iwd, run.maps, run.log);
    MAKE_MESH(run.settings, run.lines, maps, direction.iwd, run.log, direction.grid);
    return maps;
}

Prepared prepare_direction(Run& run, Direction& direction) {
    if (run.settings.RESTART_FLAG == 1) {
        const bool saved = read_restart_info(restart_info_path(direction)).has_value();
        const bool started =
            std::filesystem::exists(direction.restart_stem + std::string(vpkeinp_name));
        direction.anew = (saved || started) && !fits_the_case(run, direction, saved);
        if (saved && !direction.anew) {
            return resume(run, direction);
        }
    }
    return prepare_anew(run, direction);
}

Prepared prepare_anew(Run& run, Direction& direction) {
    if (run.settings.TORVEX_MODE != 0) {
        console("Start user defined calculation..");
        READ_MESH_ETC(run, direction);
        return Prepared::to_solve;
    }
    return prepare_from_maps(run, direction);
}

}  // namespace torvex
