#include "roughness/roughness_steps.hpp"

#include <string>

#include "base/edit.hpp"
#include "base/upwind_roughness_log.hpp"
#include "roughness/roughness_files.hpp"
#include "roughness/roughness_strips.hpp"
#include "roughness/upwind_overrides.hpp"

namespace torvex {

void smear_sides_and_tabulate(const RoughnessPass& pass, std::string_view table_stem, Field2& z0) {
    if (!pass.skip_sides()) {
        smear_sides(pass.lines, z0);
    }
    repeat_on_ghost_ring(z0);
    if (pass.writes()) {
        write_roughness_table(std::string(table_stem) + pass.tag + ".tdt", z0);
    }
}

float default_upwind_roughness(const RoughnessPass& pass, const Field2& z0) {
    const float z_up = upwind_mean(pass.lines, z0);
    if (!pass.preview()) {
        pass.tell("Default upwind z0 is " + edit::E(z_up, 11, 4) + " (m)");
    }
    return z_up;
}

void stamp_and_keep(const RoughnessPass& pass, float z_up, Field2& z0) {
    stamp_upwind(pass.settings, pass.lines, z_up, z0);
    smear_downwind(pass.lines, z0);
    repeat_on_ghost_ring(z0);
    if (pass.writes()) {
        write_upwind_roughness(pass.settings.run_prefix + upwind_roughness_name(pass.tag), z_up);
    }
}

void keep_nested_field(const RoughnessPass& pass, Field2& z0) {
    if (!pass.settings.USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN || pass.preview()) {
        return;
    }
    float z_up = 0.0F;
    take_parents_roughness(pass, z_up);
    z0.fill(z_up);
}

}  // namespace torvex
