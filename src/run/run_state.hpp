#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "mesh/grid_geometry.hpp"
#include "mesh/mesh_lines.hpp"
#include "results/restart_info.hpp"
#include "results/view_table.hpp"

namespace torvex {

// What lives for the whole run.
struct Run {
    CaseSettings settings;
    RunLog log;                       // "torvex.log"
    ViewTable directions;             // view-wind_direction.dat; its lock guards the directory
    std::vector<std::string> wd_tag;  // tag of direction iwd is wd_tag[iwd - 1]
    MeshLines lines;
    MapState maps;
};

struct Residuals {
    float m = 0;
    float u = 0;
    float v = 0;
    float w = 0;
    float k = 0;
    float e = 0;
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
    int outer_count = 0;    // outer iterations done
    float max_resid_m = 0;  // kept in the result file
    Residuals tested{unknown_residual, unknown_residual, unknown_residual,
                     unknown_residual, unknown_residual, unknown_residual};  // last monitor step

    GridGeometry grid;
};

}  // namespace torvex
