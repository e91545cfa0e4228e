#include "case/key_effects.hpp"

#include <algorithm>
#include <array>

namespace torvex {

namespace {

using S = CaseSettings;

// Switches, each with the words that the reference page and the warnings use.
struct Switch {
    std::string_view condition;
    bool (*acts)(const S& s);
};

constexpr Switch never{"", nullptr};
constexpr Switch given_angles{"WD_TYPE not 0 and terrain that is not \"flat\"", [](const S& s) {
                                  return s.WD_TYPE != 0 && s.TERRAIN_MODE != "flat";
                              }};
constexpr Switch flat{"TERRAIN_MODE = 'flat'", [](const S& s) { return s.TERRAIN_MODE == "flat"; }};
constexpr Switch not_flat{"terrain that is not \"flat\"",
                          [](const S& s) { return s.TERRAIN_MODE != "flat"; }};
constexpr Switch elevation_factor{"SPECIFY_ELEVATION_CORRECTION_FACTOR = T",
                                  [](const S& s) { return s.SPECIFY_ELEVATION_CORRECTION_FACTOR; }};
constexpr Switch own_monitor{"MONITOR_POSITION not 0",
                             [](const S& s) { return s.MONITOR_POSITION != 0; }};
constexpr Switch equivalent{"USE_EQUIVALENT_ROUGHNESS = T",
                            [](const S& s) { return s.USE_EQUIVALENT_ROUGHNESS; }};
constexpr Switch inflow_elevation{
    "SPECIFY_INFLOW_ELEVATION = T or BOUNDARY_HEIGHT_MODE not 0",
    [](const S& s) { return s.SPECIFY_INFLOW_ELEVATION || s.BOUNDARY_HEIGHT_MODE != 0; }};
constexpr Switch slope_limit{"BOUNDARY_HEIGHT_MODE = 1",
                             [](const S& s) { return s.BOUNDARY_HEIGHT_MODE == 1; }};
constexpr Switch alpha{"USE_DIRECTIONAL_ALPHA = T",
                       [](const S& s) { return s.USE_DIRECTIONAL_ALPHA; }};
constexpr Switch given_top{"USE_DEFAULT_MAX_Z = F",
                           [](const S& s) { return !s.USE_DEFAULT_MAX_Z; }};
constexpr Switch profile{"SPECIFY_INFLOW_PROFILE = T",
                         [](const S& s) { return s.SPECIFY_INFLOW_PROFILE; }};
constexpr Switch tunnel{"WIND_TUNNEL_MODE above 0", [](const S& s) { return s.wall_on_top(); }};
constexpr Switch epsilon{"TURBULENCE_MODEL 1, 3 or 4",
                         [](const S& s) { return s.TURBULENCE_MODEL != 2; }};
constexpr Switch mixing_length{"TURBULENCE_MODEL 2 or 4", [](const S& s) {
                                   return s.TURBULENCE_MODEL == 2 || s.TURBULENCE_MODEL == 4;
                               }};
constexpr Switch hybrid{"TURBULENCE_MODEL = 4", [](const S& s) { return s.TURBULENCE_MODEL == 4; }};
constexpr Switch boost{"BOOSTCAL = T", [](const S& s) { return s.BOOSTCAL; }};
constexpr Switch boost_epsilon{"BOOSTCAL = T and TURBULENCE_MODEL 1, 3 or 4",
                               [](const S& s) { return s.BOOSTCAL && s.TURBULENCE_MODEL != 2; }};
constexpr Switch not_boosted{"BOOSTCAL = F", [](const S& s) { return !s.BOOSTCAL; }};
constexpr Switch accelerated{"ACCEL = 1 and BOOSTCAL = F",
                             [](const S& s) { return s.ACCEL == 1 && !s.BOOSTCAL; }};
constexpr Switch canopy{"canopy_mode = 1", [](const S& s) { return s.canopy_on(); }};
constexpr Switch density_form{"canopy_mode = 1 and src_included_model = T", [](const S& s) {
                                  return s.canopy_on() && s.canopy.src_included_model;
                              }};
constexpr Switch circle{"modify_terrain = T", [](const S& s) { return s.canopy.modify_terrain; }};
constexpr Switch nested{"nest_mode not 0", [](const S& s) { return s.nested(); }};
constexpr Switch user_domain{"TORVEX_MODE not 0", [](const S& s) { return s.TORVEX_MODE != 0; }};
constexpr Switch user_profile{"TORVEX_MODE not 0 and inlet = 1",
                              [](const S& s) { return s.TORVEX_MODE != 0 && s.user.inlet == 1; }};
constexpr Switch frontal_area{"calc_fa = T", [](const S& s) { return s.shape.calc_fa; }};
constexpr Switch given_frontal_area{"calc_fa = T and fa_read_dirs = T", [](const S& s) {
                                        return s.shape.calc_fa && s.shape.fa_read_dirs;
                                    }};

constexpr KeyEffect row(std::string_view key, const Switch& by) {
    return {key, by.condition, by.acts};
}

constexpr std::array table{
    row("WIND_DIRECTION_ANGLE", given_angles),
    row("FLAT_ROUGHNESS", flat),
    row("ELEVATION_CORRECTION_FACTOR", elevation_factor),
    row("MONITOR_LON", own_monitor),
    row("MONITOR_LAT", own_monitor),
    row("MONITOR_HEIGHT", own_monitor),
    row("EQUIVALENT_ROUGHNESS", equivalent),
    row("INFLOW_ELEVATION", inflow_elevation),
    row("BUFFER_ZONE_SLOPE_GRADIENT", slope_limit),
    row("DIRECTIONAL_ALPHA_FILE_NAME", alpha),
    row("DIRECTIONAL_ALPHA_Z0_MIN", alpha),
    row("DIRECTIONAL_ALPHA_Z0_MAX", alpha),
    row("DIRECTIONAL_ALPHA_BS_EPS", alpha),
    row("DIRECTIONAL_ALPHA_BS_MAXIT", alpha),
    row("DIRECTIONAL_ALPHA_APPLICABLE_WDS", alpha),
    row("MAX_Z", given_top),
    row("INFLOW_PROFILE_FILE", profile),
    row("INFLOW_PROFILE_TABLE", profile),
    row("WIND_TUNNEL_Z0", tunnel),
    row("SOLVE_ENERGY_EQUATION", never),
    row("TM_MIX_PARAMETER", never),
    row("KE_CMU", epsilon),
    row("KE_CE1", epsilon),
    row("KE_CE2", epsilon),
    row("KE_SIGMA_K", epsilon),
    row("KE_SIGMA_E", epsilon),
    row("KL_CMU", mixing_length),
    row("KL_SIGMA_K", mixing_length),
    row("KL_ALPHA", mixing_length),
    row("RATIO_KL", hybrid),
    row("RATIO_OMEGA", never),
    row("UNSTEADY_SOLVER", never),
    row("T_DT", never),
    row("T_NUM", never),
    row("T_BEGIN", never),
    row("URFE", epsilon),
    row("CC_OUT_TKE", never),
    row("CC_OUT_TED", never),
    row("CC_IN_U", never),
    row("CC_IN_V", never),
    row("CC_IN_W", never),
    row("CC_IN_PP", never),
    row("CC_IN_TKE", never),
    row("CC_IN_TED", never),
    row("NSWPE", epsilon),
    row("SIP_ALPHA", never),
    row("RCM_L", never),
    row("RCM_N", never),
    row("URFU_MAX", boost),
    row("URFV_MAX", boost),
    row("URFW_MAX", boost),
    row("URFK_MAX", boost),
    row("URFE_MAX", boost_epsilon),
    row("URFVIS_MAX", never),
    row("URFP_MAX", boost),
    row("OUT_CC_RATIO", never),
    row("DOUBLE_CORRECTION", not_flat),
    row("ACCEL", not_boosted),
    row("ACCEL_LEVELS", accelerated),
    row("nest_site%label", nested),
    row("nest_site%lon", nested),
    row("nest_site%lat", nested),
    row("nest_site%n_x_div", nested),
    row("nest_site%n_y_div", nested),
    row("nest_site%c2xmax", nested),
    row("nest_site%c2ymax", nested),
    row("nest_bc_distr", nested),
    row("nest_bc_ofix", nested),
    row("start_cal_src", canopy),
    row("src_included_model", canopy),
    row("use_vegetation_layer", never),
    row("pm_tiny", never),
    row("cfp1", never),
    row("cfp2", never),
    row("magick", never),
    row("beta_p", canopy),
    row("beta_d", canopy),
    row("alphak1", density_form),
    row("alphak2", density_form),
    row("cpe1", canopy),
    row("cpe2", never),
    row("alphae1", canopy),
    row("alphae2", canopy),
    row("alphae3", canopy),
    row("alphae4", canopy),
    row("r1max", canopy),
    row("r2max", canopy),
    row("wt_floor_mode", never),
    row("wt_floor_z0", never),
    row("wt_floor_ttr", never),
    row("modify_circle_range", circle),
    row("use_z0_judge", never),
    row("use_ff_judge", never),
    row("output_log_shape_height", never),
    row("fa_ndir", frontal_area),
    row("fa_read_dirs", frontal_area),
    row("fa_dirs", given_frontal_area),
    row("mesh_n_file", user_domain),
    row("xyz_file", user_domain),
    row("roughness_file", user_domain),
    row("ccd_file", user_domain),
    row("inlet", user_domain),
    row("inflow_profile_file", user_profile),
    row("specify_turbulence", user_profile),
};

}  // namespace

std::span<const KeyEffect> key_effects() {
    return table;
}

const KeyEffect* effect_of(std::string_view key) {
    const auto* const found = std::ranges::find(table, key, &KeyEffect::key);
    return found == table.end() ? nullptr : found;
}

}  // namespace torvex
