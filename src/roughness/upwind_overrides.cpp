#include "roughness/upwind_overrides.hpp"

#include <cmath>
#include <string>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/upwind_roughness_log.hpp"

namespace torvex {

namespace {

constexpr const char* normal_run =
    "run the case with TERRAIN_MODE \"normal\" and ATLAS_FLAG = 0 in this directory first";
constexpr const char* parent_run = "run the parent case in this directory first";
constexpr const char* atlas_run = "run the case with ATLAS_FLAG = 1 in this directory first";

}  // namespace

void take_equivalent_roughness(const RoughnessPass& pass, float& z_up) {
    if (!pass.settings.USE_EQUIVALENT_ROUGHNESS || pass.preview()) {
        return;
    }
    const float value = pass.settings.EQUIVALENT_ROUGHNESS(pass.iwd);
    if (!(value > 0.0F && std::isfinite(value))) {
        const std::string key = "EQUIVALENT_ROUGHNESS(" + std::to_string(pass.iwd) + ")";
        stop(158, key + " is" + edit::E(value, 11, 4) + " m", "key EQUIVALENT_ROUGHNESS",
             "give a roughness length above 0 for every wind direction");
    }
    z_up = value;
    pass.tell("Equivalent roughness, " + edit::E(z_up, 11, 4) + " (m) is used.");
}

namespace {

float taken_over(const std::string& path, const std::string& fix) {
    const std::optional<float> z_up = read_upwind_roughness(path, fix);
    if (!z_up) {
        stop(186, "the upwind roughness of an earlier run cannot be read", path, fix);
    }
    return *z_up;
}

}  // namespace

void take_over_upwind_roughness(const RoughnessPass& pass, float& z_up) {
    const CaseSettings& settings = pass.settings;
    if (pass.preview()) {
        return;
    }
    const std::string name = upwind_roughness_name(pass.tag);
    const bool atlas = settings.ATLAS_FLAG == 1;
    std::string mode = "Atlas";
    if (settings.MESO_DWS_MODE) {
        if (atlas) {
            return;
        }
        z_up = taken_over("atlas-" + name, atlas_run);
    } else if (atlas) {
        z_up = taken_over(name, normal_run);
    } else if (settings.TERRAIN_MODE == "flat2") {
        z_up = taken_over(name, normal_run);
        mode = "Flat2";
    } else {
        return;
    }
    pass.tell(mode + " mode upwind roughness, " + edit::E(z_up, 11, 4) + " (m) is used.");
}

void take_parents_roughness(const RoughnessPass& pass, float& z_up) {
    z_up = taken_over(upwind_roughness_name(pass.tag), parent_run);
    pass.tell("The parent's upwind roughness, " + edit::E(z_up, 11, 4) + " (m) is used.");
}

}  // namespace torvex
