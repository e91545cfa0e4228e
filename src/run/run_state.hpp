#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "canopy/canopy_records.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/mesh_lines.hpp"
#include "nest/nest_lines.hpp"
#include "results/restart_info.hpp"
#include "results/view_table.hpp"
#include "roughness/roughness_pass.hpp"
#include "run/closing_line.hpp"
#include "run/monitor_logs.hpp"
#include "solver/accelerated/acceleration.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// What lives for the whole run. The case is settled when the directions begin: what prepares and
// solves them sees it through this reference.
struct Run {
    explicit Run(const CaseSettings& of_case) : settings(of_case) {}

    const CaseSettings& settings;
    RunLog log;                            // "torvex.log"
    ViewTable directions;                  // view-wind_direction.dat; its lock guards the directory
    std::vector<std::string> wd_tag;       // tag of direction iwd is wd_tag[iwd - 1]
    std::vector<DirectionRecord> records;  // how direction iwd ended is records[iwd - 1]
    MeshLines lines;
    ParentLines parent_lines;  // of a nested run
    MapState maps;
    std::map<std::string, std::string> map_hashes;  // of maps read to compare fingerprints
    std::int32_t intermediate_interval = 0;  // iterations between intermediate results, 0: none
    UpwindRoughness upwind;                  // of the direction before
    CanopyRecords canopy;                    // as the file of the direction in hand gave them
    bool states_forgotten = false;           // the saved states of an earlier run
    bool append_convergence_logs = false;    // a direction of this run has been resumed
    bool leaves_files = true;  // false for a check, which prepares directions and nothing else
};

// Normalised residuals of the equations, see the section on convergence in docs/theory.md.
struct Residuals {
    float m = 0;
    float u = 0;
    float v = 0;
    float w = 0;
    float k = 0;
    float e = 0;
};

// Speeds at the sites behind the last iterations, for the rule of STOP_SITES.
struct Settling {
    float fraction = 0;  // of the rule by which the direction has settled; 0: it has not
    std::vector<std::vector<float>> speeds;  // [m/s], one list an iteration
};

// What belongs to one wind direction.
struct Direction {
    int iwd = 0;
    float angle = 0;           // where the wind comes from [deg]
    std::string tag;           // five characters
    std::string restart_stem;  // head of the names of its binary files
    std::string sites_stem;    // head of the names of its site files

    bool converged = false;
    bool diverged = false;
    bool stop_requested = false;
    bool anew = false;      // its saved state belongs to another case and is not gone on with
    int outer_count = 0;    // outer iterations done
    float max_resid_m = 0;  // kept in the result file
    Residuals tested{unknown_residual, unknown_residual, unknown_residual,
                     unknown_residual, unknown_residual, unknown_residual};  // last monitor step

    AccelerationMemory acceleration;  // what accelerated iterations remember
    Settling settling;
    RestartInfoName restart_name;  // name that restart.info was written under last
    MonitorLogs logs;
    GridGeometry grid;
    FlowState flow;
};

// Frees all arrays of a direction: mesh, flow and canopy.
void release_fields(Run& run, Direction& direction);

// The plain restart.info of a direction.
std::string restart_info_path(const Direction& direction);

}  // namespace torvex
