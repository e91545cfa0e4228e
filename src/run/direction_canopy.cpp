#include "run/direction_canopy.hpp"

#include "canopy/canopy_file.hpp"

namespace torvex {

void read_direction_canopy(const std::string& file, Run& run, Direction& direction) {
    const GridGeometry& grid = direction.grid;
    FlowState& flow = direction.flow;
    read_canopy_file(file, run.settings.canopy, run.canopy,
                     {.ni = grid.ni,
                      .nj = grid.nj,
                      .nk = grid.nk,
                      .gp_d = flow.gp_d,
                      .gp_k = flow.gp_k,
                      .gp_e = flow.gp_e,
                      .z0_out = &flow.z0});
    // The solve needs the factors only; the roughness stays for a later file that has none.
    for (Field3* field : {&run.canopy.gp_cf, &run.canopy.gp_density, &run.canopy.gp_length}) {
        field->release();
    }
}

}  // namespace torvex
