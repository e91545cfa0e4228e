#include "run/read_restart.hpp"

#include <string>

#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/check_fields.hpp"

namespace torvex {

void read_restart(const Run& run, Direction& direction) {
    const std::string& stem = direction.restart_stem;
    const int model = run.settings.TURBULENCE_MODEL;
    GridGeometry& grid = direction.grid;
    FlowState& flow = direction.flow;
    const std::string xyz = stem + std::string(xyz_name);
    const std::string z0 = stem + std::string(z0_name);
    // Before memory is taken for counts that the file does not bear out.
    check_xyz(xyz, {.ni = run.lines.nx, .nj = run.lines.ny, .nk = run.lines.nz});
    allocate_nodes(grid, run.lines.nx, run.lines.ny, run.lines.nz);
    allocate_fields(flow, grid, model);
    flow.z0.allocate(grid.ni, grid.nj);

    read_xyz(xyz, grid.xn, grid.yn, grid.zn);
    check_nodes(grid, xyz, xyz_codes.extents);
    read_z0(z0, flow.z0);
    check_roughness(flow.z0, z0, z0_codes.extents);

    direction.outer_count = 0;
    direction.tested.k = 0.0F;
    direction.tested.e = 0.0F;
    if (const auto info = read_restart_info(restart_info_path(direction))) {
        direction.outer_count = info->outer_count;
        direction.tested.m = info->resid_m;
        direction.tested.u = info->resid_u;
        direction.tested.v = info->resid_v;
        direction.tested.w = info->resid_w;
    }
    // The count that the result file itself holds is the one that counts in the end.
    const StoredResult stored =
        read_vpkeout(newest_result_path(stem, direction.outer_count), model, flow);
    direction.outer_count = stored.outer_count;
    direction.max_resid_m = stored.max_resid_m;
}

}  // namespace torvex
