#include "roughness/calc_roughness1.hpp"

#include "roughness/directional_alpha.hpp"
#include "roughness/roughness_steps.hpp"
#include "roughness/sample_roughness.hpp"
#include "roughness/upwind_overrides.hpp"

namespace torvex {

void calc_roughness1(const RoughnessPass& pass, const DirectionMaps& maps, const GridGeometry& grid,
                     UpwindRoughness& upwind, Field2& z0) {
    z0.allocate(pass.lines.ni, pass.lines.nj);
    sample_roughness(pass, maps, grid, z0);
    smear_sides_and_tabulate(pass, "calc_roughness1-", z0);
    if (pass.skip_sides()) {
        keep_nested_field(pass, z0);
        return;
    }

    upwind.z_up = default_upwind_roughness(pass, z0);
    take_equivalent_roughness(pass, upwind.z_up);
    take_over_upwind_roughness(pass, upwind.z_up);
    take_directional_alpha(pass, upwind);

    stamp_and_keep(pass, upwind.z_up, z0);
}

}  // namespace torvex
