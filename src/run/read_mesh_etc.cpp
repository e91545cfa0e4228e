// READ_MESH_ETC: the domain that the block user_domain names.
//
//   mesh_n_file     ni, nj, nk                          exit 1
//   xyz_file        nodes [m], see below               210 open, 211 id, 212 extents or data
//   roughness_file  z0 in 1..ni, 1..nj                  221 open or id, 222 extents or data
//   ccd_file        canopy parameters, may be left out
//   inlet           0 INIT, 1 profile table, 2 equilibrium
//
// The wind blows from the north: x runs south and y east from the case centre, where sites are
// looked up later, i along x and k upwards.
//
// writes  nodes, cell centres, z0 and all start fields of the direction; xyz.tuf, xyzc.tuf, z0.tuf
//         and vpkeinp.tuf under the direction's stem, but never over a file that was read here
//
// Nothing is written before everything has been read and found good.

#include "run/read_mesh_etc.hpp"

#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

#include "base/stop.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/check_given_mesh.hpp"
#include "mesh/grid.hpp"
#include "mesh/mesh_count_file.hpp"
#include "results/restart_info.hpp"
#include "results/result_files.hpp"
#include "run/check_fields.hpp"
#include "run/direction_canopy.hpp"
#include "run/stored_start.hpp"
#include "solver/equilibrium_inflow.hpp"
#include "solver/init.hpp"
#include "solver/table_inflow.hpp"

namespace torvex {

namespace {

constexpr ReadCodes given_xyz_codes{
    .open = 210,
    .id = 211,
    .extents = 212,
    .fix =
        "xyz_file of the block &user_domain names mesh nodes in the form of xyz.tuf, one fewer "
        "along i, j and k than the counts in mesh_n_file"};
constexpr ReadCodes given_z0_codes{
    .open = 221,
    .id = 221,
    .extents = 222,
    .fix =
        "roughness_file of the block &user_domain names a field in the form of z0.tuf, with ni "
        "times nj values of mesh_n_file"};

void read_nodes(const std::string& file, const MeshLines& lines, GridGeometry& grid) {
    console("- Read calculation domain from : " + file);
    check_xyz(file, {.ni = lines.nx, .nj = lines.ny, .nk = lines.nz}, given_xyz_codes);
    allocate_nodes(grid, lines.nx, lines.ny, lines.nz);
    read_xyz(file, grid.xn, grid.yn, grid.zn, given_xyz_codes);
}

void read_roughness(const std::string& file, const GridGeometry& grid, Field2& z0) {
    console("- Read roughness from : " + file);
    z0.allocate(grid.ni, grid.nj);
    read_z0(file, z0, given_z0_codes);
    check_roughness(z0, file);
}

// Fills the start fields and tells what from.
std::string fill_start(Run& run, Direction& direction) {
    const CaseSettings& settings = run.settings;
    switch (settings.user.inlet) {
        case 0:
            console("- TORVEX default inflow is used.");
            INIT(settings, direction.grid, direction.angle, direction.tag, run.log, direction.flow);
            return origin_of_init(settings);
        case 1:
            console("- User specified inflow is used.");
            console("- Read inflow profile from : " + settings.user.inflow_profile_file);
            fill_table_inflow(settings, direction.grid, direction.flow);
            return "the inflow profile table";
        case 2:
            console("- TORVEX equilibrium inflow is used.");
            fill_equilibrium_inflow(settings, direction.grid, direction.flow);
            return "the equilibrium inflow";
        default:
            inflow_file_error("inlet is " + std::to_string(settings.user.inlet),
                              "block &user_domain, inlet");
    }
}

bool is_same_file(const std::string& one, const std::string& other) {
    std::error_code absent;
    return std::filesystem::equivalent(one, other, absent);
}

void write_domain(const UserDomain& user, const Direction& direction) {
    const std::string& stem = direction.restart_stem;
    const GridGeometry& grid = direction.grid;
    if (!is_same_file(user.xyz_file, stem + std::string(xyz_name))) {
        write_xyz(stem, grid.xn, grid.yn, grid.zn);
    }
    write_xyzc(stem, grid.xc, grid.yc, grid.zc);
    if (!is_same_file(user.roughness_file, stem + std::string(z0_name))) {
        write_z0(stem, direction.flow.z0);
    }
}

}  // namespace

void read_user_counts(Run& run) {
    const std::string& file = run.settings.user.mesh_n_file;
    console("- Read mesh number from : " + file);
    const MeshCounts n = read_mesh_counts(file);
    console("- Nunmber of CVs  i: " + std::to_string(n.ni));
    console("                  j: " + std::to_string(n.nj));
    console("                  k: " + std::to_string(n.nk));
    console("              total: " + std::to_string(std::int64_t{n.ni} * n.nj * n.nk));
    MeshLines& lines = run.lines;
    lines.ni = n.ni;
    lines.nj = n.nj;
    lines.nk = n.nk;
    lines.nx = n.ni - 1;
    lines.ny = n.nj - 1;
    lines.nz = n.nk - 1;
}

void read_user_canopy(Run& run, Direction& direction) {
    const std::string& file = run.settings.user.ccd_file;
    if (file.empty()) {
        const std::string skipped = "- Skipped reading canopy parameters file.";
        console(skipped);
        run.log.timed(" " + skipped);
        return;
    }
    console("- Read canopy_parameters from : " + file);
    read_direction_canopy(file, run, direction);
    FlowState& flow = direction.flow;
    check_roughness(flow.z0, file);
    if (!run.settings.canopy_on()) {
        // Only the roughness of the file counts then.
        for (Field3* field : {&flow.gp_d, &flow.gp_k, &flow.gp_e}) {
            field->release();
        }
    }
}

void READ_MESH_ETC(Run& run, Direction& direction) {
    const UserDomain& user = run.settings.user;
    GridGeometry& grid = direction.grid;
    console("  - Read user defined calculation domain settings.");
    read_user_counts(run);
    read_nodes(user.xyz_file, run.lines, grid);
    read_roughness(user.roughness_file, grid, direction.flow.z0);
    XYZ2XYZC(grid);
    GRID(grid);
    check_given_mesh(grid, user.xyz_file);
    read_user_canopy(run, direction);
    const std::string origin = fill_start(run, direction);
    forget_saved_states(run, direction);
    if (run.leaves_files) {
        write_domain(user, direction);
    }
    finish_start(run, direction, origin);
}

}  // namespace torvex
