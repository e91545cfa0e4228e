#include "run/steps_to_come.hpp"

namespace torvex {

void nest_fit_lines(Run& /*run*/) {}
void nest_check_domain(Run& /*run*/) {}
void nest_bc_set(Run& /*run*/, Direction& /*direction*/) {}

void read_restart_fields(Run& /*run*/, Direction& /*direction*/) {}
void READ_MESH_ETC(Run& /*run*/, Direction& /*direction*/) {}

void calc_roughness1(Run& /*run*/, Direction& /*direction*/, const DirectionMaps& /*maps*/) {}
void calc_sbz_roughness2(Run& /*run*/, Direction& /*direction*/) {}
void read_canopy_file(Run& /*run*/, Direction& /*direction*/) {}

void INIT(Run& /*run*/, Direction& /*direction*/) {}

void write_final_result(Run& /*run*/, Direction& /*direction*/) {}
void write_sites(Run& /*run*/, Direction& /*direction*/) {}

}  // namespace torvex
