// The sequence of a run: case file, sizing, one direction after the other, exit status.

#include "run/run_torvex.hpp"

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <iostream>
#include <new>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "canopy/canopy_file.hpp"
#include "case/case_blocks.hpp"
#include "case/case_checks.hpp"
#include "case/case_directory.hpp"
#include "case/case_file.hpp"
#include "case/wind_directions.hpp"
#include "maps/load_maps.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/size_domain.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "roughness/calc_roughness1.hpp"
#include "roughness/calc_sbz_roughness2.hpp"
#include "run/check_fields.hpp"
#include "run/command_line.hpp"
#include "run/control_files.hpp"
#include "run/criteria.hpp"
#include "run/direction_canopy.hpp"
#include "run/mesh_log.hpp"
#include "run/monitor_logs.hpp"
#include "run/outcome.hpp"
#include "run/outer_iteration.hpp"
#include "run/read_mesh_etc.hpp"
#include "run/read_restart.hpp"
#include "run/result_writers.hpp"
#include "run/steps_to_come.hpp"
#include "run/stored_start.hpp"
#include "run/write_sites.hpp"
#include "solver/init.hpp"

namespace torvex {

namespace {

constexpr const char* version = "5.0176";
constexpr const char* log_file = "torvex.log";
const std::string directions_name = "view-wind_direction.dat";

CaseText find_case(const std::vector<std::string>& arguments) {
    const std::string case_file = full_path(case_file_argument(arguments));
    CaseText file = load_case_text(case_file);
    enter_directory_of(case_file);
    return file;
}

void read_settings(const CaseText& file, Run& run) {
    CaseSettings& settings = run.settings;
    KeyLines lines;
    read_case_file(file, settings, lines, run.log);
    expand_file_keys(settings);

    read_nest_points(file, settings, run.log);
    read_canopy_parameters(file, settings);
    read_shape_parameters(file, settings);
    read_user_domain(file, settings);
    check_limits(file, settings, lines);
    warn_of_mixed_signs(file, settings, lines, run.log);
    warn_of_unknown_keys(file, run.log);

    if (settings.nest.nest_mode != 0) {
        settings.nest.lon = settings.CENT_LON;
        settings.nest.lat = settings.CENT_LAT;
        settings.run_prefix = "nest-";
    }
}

// Opens the table of directions before anything else is touched: its lock says that no other run
// is at work in this directory. It is emptied rather than deleted, so that the lock lives on; this
// happens on a restart too.
void open_directions_table(Run& run) {
    using Existing = ViewTable::Existing;
    try {
        run.directions.open(run.settings.run_prefix + directions_name,
                            run.settings.RESTART_FLAG == 0 ? Existing::discard : Existing::keep);
    } catch (const Stop&) {
        run.log.discard();
        throw;
    }
    clear_view_log(run.directions);
}

std::string mesh_counts(const MeshLines& lines) {
    const auto total = static_cast<std::int64_t>(lines.ni) * lines.nj * lines.nk;
    return std::to_string(lines.ni) + " x " + std::to_string(lines.nj) + " x " +
           std::to_string(lines.nk) + " = " + std::to_string(total);
}

void size_run(Run& run) {
    CaseSettings& settings = run.settings;
    if (settings.TORVEX_MODE != 0) {
        force_one_direction(settings);
        return;
    }
    run.lines = size_domain(settings, run.maps, run.log);
    if (settings.nest.nest_mode != 0) {
        nest_fit_lines(run);
        nest_check_domain(run);
    }
    console("   - Total mesh number is: " + mesh_counts(run.lines));
    run.log.timed(" Mesh number is: " + mesh_counts(run.lines));
    const float S = scale_criteria(settings, run.lines.ni, run.lines.nj, run.lines.nk);
    report_criteria(settings, S, run.log);
}

void begin_direction(const Run& run, int iwd, Direction& direction) {
    direction.iwd = iwd;
    direction.angle = run.settings.WIND_DIRECTION_ANGLE(iwd);
    direction.tag = run.wd_tag[static_cast<std::size_t>(iwd - 1)];
    direction.restart_stem = run.settings.run_prefix + "restart-" + direction.tag + "-";
    direction.sites_stem = run.settings.run_prefix + "sites-" + direction.tag + "-";
}

void make_cell_geometry(Direction& direction) {
    GridGeometry& grid = direction.grid;
    XYZ2XYZC(grid);
    write_xyzc(direction.restart_stem, grid.xc, grid.yc, grid.zc);
}

RoughnessPass roughness_pass(Run& run, const Direction& direction) {
    return {run.settings, run.lines, direction.iwd, direction.tag, run.log};
}

// The canopy file brings the roughness of its cells; where it holds none, 0.0002 m stands.
void prepare_canopy(Run& run, Direction& direction) {
    constexpr float least_roughness = 0.0002F;
    const GridGeometry& grid = direction.grid;
    FlowState& flow = direction.flow;
    flow.z0.allocate(grid.ni, grid.nj, least_roughness);
    const std::string file = direction.restart_stem + std::string(canopy_file_name);
    read_direction_canopy(file, run, direction);
    check_inner_roughness(flow.z0, file);
    calc_sbz_roughness2(roughness_pass(run, direction), run.upwind, flow.z0);
    write_z0(direction.restart_stem, flow.z0);
}

void prepare_roughness(Run& run, Direction& direction, const DirectionMaps& maps) {
    calc_roughness1(roughness_pass(run, direction), maps, direction.grid, run.upwind,
                    direction.flow.z0);
    write_z0(direction.restart_stem, direction.flow.z0);
}

void start_fields(Run& run, Direction& direction) {
    INIT(run.settings, direction.grid, direction.angle, direction.tag, run.log, direction.flow);
    finish_start(run, direction);
}

// True if the saved residuals meet the criteria of this run. A residual that is not a number does
// not.
bool already_done(const CaseSettings& settings, const Residuals& residuals) {
    return settings.CC_OUT_M >= residuals.m && settings.CC_OUT_U >= residuals.u &&
           settings.CC_OUT_V >= residuals.v && settings.CC_OUT_W >= residuals.w;
}

enum class Prepared { to_solve, done };

Prepared resume(Run& run, Direction& direction) {
    const bool user_domain = run.settings.TORVEX_MODE != 0;
    console("Resume torvex default calculations..");
    if (user_domain) {
        read_user_counts(run);
    }
    read_restart(run, direction);
    make_cell_geometry(direction);
    if (already_done(run.settings, direction.tested)) {
        direction.converged = true;
        write_sites(run, direction);
        set_status(direction, DirectionStatus::converged, run.directions);
        return Prepared::done;
    }
    if (user_domain) {
        read_user_canopy(run, direction);
    } else if (run.settings.canopy.canopy_mode == 1) {
        prepare_canopy(run, direction);
    }
    return Prepared::to_solve;
}

void require_parent(const Direction& direction) {
    const std::string info = "restart-" + direction.tag + "-restart.info";
    if (!std::filesystem::exists(info)) {
        const std::string text = "Error: parent calculation data missing.";
        console(text);
        stop(0, text, info, "run the parent case in this directory first");
    }
}

void prepare_from_maps(Run& run, Direction& direction) {
    console("Start torvex default calculations...");
    const DirectionMaps maps = load_maps(run.settings, direction.iwd, run.maps, run.log);
    GridGeometry& grid = direction.grid;
    MAKE_MESH(run.settings, run.lines, maps, direction.iwd, run.log, grid);
    forget_restart_info(direction.restart_stem + "restart.info");
    write_xyz(direction.restart_stem, grid.xn, grid.yn, grid.zn);
    make_cell_geometry(direction);
    if (run.settings.canopy.canopy_mode != 1) {
        prepare_roughness(run, direction, maps);
    } else {
        prepare_canopy(run, direction);
    }
    start_fields(run, direction);
    if (run.settings.nest.nest_mode != 0) {
        require_parent(direction);
        nest_bc_set(run, direction);
    }
}

Prepared prepare(Run& run, Direction& direction) {
    const bool saved = read_restart_info(direction.restart_stem + "restart.info").has_value();
    if (saved && run.settings.RESTART_FLAG == 1) {
        return resume(run, direction);
    }
    if (run.settings.TORVEX_MODE != 0) {
        console("Start user defined calculation..");
        READ_MESH_ETC(run, direction);
    } else {
        prepare_from_maps(run, direction);
    }
    return Prepared::to_solve;
}

// One direction from its entry to its outcome.
bool run_direction(Run& run, int iwd, const Solve& solve) {
    Direction direction;
    begin_direction(run, iwd, direction);
    open_monitor_logs(run.settings, direction.tag, direction.logs);
    run.log.timed(" Input parameters were read.");
    enter_direction(direction, run.log, run.directions);

    if (prepare(run, direction) == Prepared::to_solve) {
        solve(run, direction);
        report_outcome(direction, run.log, run.directions);
        if (!direction.diverged) {
            write_final_result(run, direction);
        }
    }
    release_fields(run, direction);
    close_monitor_logs(direction.logs);
    return direction.stop_requested;
}

int run_case(const std::vector<std::string>& arguments, const Solve& solve, Run& run) {
    console(" * Initialization");
    const CaseText file = find_case(arguments);
    run.log.line("------------------------------------------");
    run.log.timed(" Torvex Basic Started");
    run.log.timed(std::string(" Torvex Version ") + version);
    read_settings(file, run);

    open_directions_table(run);
    run.log.open(log_file);
    run.log.timed(" Input parameters were read.");

    size_run(run);
    if (run.settings.TORVEX_MODE == 0) {
        set_angles(run.settings);
    }
    run.wd_tag = wd_tags(run.settings);
    if (run.settings.TORVEX_MODE == 0) {
        write_mesh_log(run.settings.run_prefix, run.lines);
    }
    delete_stop_message();

    bool stopped = false;
    for (int iwd = 1; iwd <= run.settings.N_WIND_DIRECTION && !stopped; ++iwd) {
        stopped = run_direction(run, iwd, solve);
    }
    run.log.timed(" Computation Finished. ");
    run.log.close();
    close_or_stop(run.directions);
    return stopped ? 2 : 0;
}

// True if some run is at work in the current directory, under whatever prefix.
bool directory_is_taken() {
    constexpr std::array prefixes{"", "atlas-", "flat-", "flat2-", "nest-"};
    return std::ranges::any_of(
        prefixes, [](const char* prefix) { return table_is_held(prefix + directions_name); });
}

// A case that cannot be read ends before the log is open; what was told until then belongs there,
// unless it is the log of another run. The run has already failed for a reason that is told, so a
// log that cannot be opened is let go.
void save_log(RunLog& log) {
    if (log.is_open() || log.kept().empty() || directory_is_taken()) {
        return;
    }
    try {
        log.open(log_file);
    } catch (const Stop&) {
        log.discard();
    }
}

}  // namespace

int run_torvex(const std::vector<std::string>& arguments) {
    return run_torvex(arguments,
                      [](Run& run, Direction& direction) { OUTER_ITERATION(run, direction); });
}

int run_torvex(const std::vector<std::string>& arguments, const Solve& solve) {
    Run run;
    try {
        return run_case(arguments, solve, run);
    } catch (const Stop& stopped) {
        std::cerr << stopped.what() << '\n';
        save_log(run.log);
        return stopped.code();
    } catch (const std::bad_alloc&) {
        std::cerr << "out of memory\n";
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
    }
    return 1;
}

}  // namespace torvex
