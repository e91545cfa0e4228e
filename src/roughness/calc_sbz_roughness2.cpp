#include "roughness/calc_sbz_roughness2.hpp"

#include "base/assertion.hpp"
#include "roughness/roughness_steps.hpp"
#include "roughness/upwind_overrides.hpp"

namespace torvex {

namespace {

void clear_ghost_ring(Field2& z0) {
    for (int j = 1; j <= z0.nj(); ++j) {
        z0(1, j) = z0(z0.ni(), j) = 0.0F;
    }
    for (int i = 1; i <= z0.ni(); ++i) {
        z0(i, 1) = z0(i, z0.nj()) = 0.0F;
    }
}

}  // namespace

void calc_sbz_roughness2(const RoughnessPass& pass, UpwindRoughness& upwind, Field2& z0) {
    require(z0.ni() == pass.lines.ni && z0.nj() == pass.lines.nj, "roughness field of other size");
    clear_ghost_ring(z0);
    smear_sides_and_tabulate(pass, "calc_sbz_roughness2-", z0);
    if (pass.skip_sides()) {
        keep_nested_field(pass, z0);
        return;
    }

    upwind.z_up = default_upwind_roughness(pass, z0);
    take_equivalent_roughness(pass, upwind.z_up);
    take_over_upwind_roughness(pass, upwind.z_up);

    stamp_and_keep(pass, upwind.z_up, z0);
}

}  // namespace torvex
