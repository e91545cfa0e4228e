#pragma once

#include "run/run_state.hpp"

// Steps of the sequence whose rooms are not written yet. Each is called where it belongs and does
// nothing, so that the walk over the directions is whole; it moves to its room when that is
// written.
namespace torvex {

// nest: the child's lines, and their check over all directions
void nest_fit_lines(Run& run);
void nest_check_domain(Run& run);
void nest_bc_set(Run& run, Direction& direction);  // the parent's flow on the boundaries

// run: the saved fields of a direction, and a domain from the user's files
void read_restart_fields(Run& run, Direction& direction);
void READ_MESH_ETC(Run& run, Direction& direction);

// roughness and canopy
void calc_roughness1(Run& run, Direction& direction, const DirectionMaps& maps);
void calc_sbz_roughness2(Run& run, Direction& direction);
void read_canopy_file(Run& run, Direction& direction);

// solver
void INIT(Run& run, Direction& direction);

// results
void write_final_result(Run& run, Direction& direction);
void write_sites(Run& run, Direction& direction);

}  // namespace torvex
