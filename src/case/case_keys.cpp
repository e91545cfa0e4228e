#include "case/case_keys.hpp"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <type_traits>

#include "base/assertion.hpp"
#include "base/value_scanner.hpp"
#include "case/as_target.hpp"

namespace torvex {

namespace {

// The member of the settings, or of a record inside them, that a key fills.
template <auto... Path>
KeyTarget in(CaseSettings& settings) {
    return as_target((settings.*....*Path));
}
template <auto Member>
KeyTarget of(Site& site) {
    return as_target(site.*Member);
}

using S = CaseSettings;

constexpr std::array nml_run_keys{
    CaseKey{"RESTART_FLAG", in<&S::RESTART_FLAG>, "0", "",
            "1: resume directions from their saved state; any other non-zero value keeps the "
            "monitor logs but takes no saved state"},
    CaseKey{"ATLAS_FLAG", in<&S::ATLAS_FLAG>, "0", "",
            "1: atlas run, all files with the prefix \"atlas-\"; takes the upwind roughness that a "
            "normal run left in log-upwind_roughness-TAG"},
    CaseKey{"TORVEX_MODE", in<&S::TORVEX_MODE>, "0", "",
            "non-zero: mesh, roughness and inflow come from the user's own files"},
    CaseKey{"TERRAIN_MODE", in<&S::TERRAIN_MODE>, "normal", "",
            "\"flat\": flat reference run with one direction; \"flat2\": flat terrain with the "
            "given directions; anything else: terrain from the maps. Compared whole, with case",
            6},
    CaseKey{"DEBUG_MODE", in<&S::DEBUG_MODE>, "0", "",
            "above 0: full result write every that many outer iterations"},
    CaseKey{
        "MESO_DWS_MODE", in<&S::MESO_DWS_MODE>, "F", "",
        "take the upwind roughness from atlas-log-upwind_roughness-TAG, the log of an atlas run"},
};

constexpr std::array nml_casefile_keys{
    CaseKey{"PROJECT_NAME", in<&S::PROJECT_NAME>, "", "", "label, not used further", 20},
    CaseKey{"BASIC_H_FILE", in<&S::BASIC_H_FILE>, "", "", "basic elevation map", 256},
    CaseKey{"DETAILED_H_FILE", in<&S::DETAILED_H_FILE>, "", "",
            "detailed elevation map; blank: none", 256},
    CaseKey{"BASIC_Z0_FILE", in<&S::BASIC_Z0_FILE>, "", "", "basic roughness map", 256},
    CaseKey{"DETAILED_Z0_FILE", in<&S::DETAILED_Z0_FILE>, "", "",
            "detailed roughness map; blank: none", 256},
    CaseKey{"CENT_LON", in<&S::CENT_LON>, "", "deg, min, s", "longitude of the case centre"},
    CaseKey{"CENT_LAT", in<&S::CENT_LAT>, "", "deg, min, s", "latitude of the case centre"},
    CaseKey{"WE_LENGTH", in<&S::WE_LENGTH>, "", "m", "study area, west to east"},
    CaseKey{"NS_LENGTH", in<&S::NS_LENGTH>, "", "m", "study area, south to north"},
    CaseKey{"WD_TYPE", in<&S::WD_TYPE>, "", "",
            "0: N_WIND_DIRECTION equal sectors from 0 degrees; otherwise the angles of "
            "WIND_DIRECTION_ANGLE"},
    CaseKey{"N_WIND_DIRECTION", in<&S::N_WIND_DIRECTION>, "", "",
            "number of wind directions, 0 to 360"},
    CaseKey{"WIND_DIRECTION_ANGLE", in<&S::WIND_DIRECTION_ANGLE>, "", "deg",
            "wind directions, 0 to 360, clockwise from north, where the wind comes from"},
    CaseKey{"MIN_DXY", in<&S::MIN_DXY>, "", "m", "smallest horizontal cell"},
    CaseKey{"MAX_DXY", in<&S::MAX_DXY>, "", "m", "largest horizontal cell"},
    CaseKey{"MIN_DXY_RAD", in<&S::MIN_DXY_RAD>, "", "m",
            "radius round the centre that keeps MIN_DXY"},
    CaseKey{"MESH_HRATIO", in<&S::MESH_HRATIO>, "", "",
            "growth of the horizontal cells, at least 1"},
    CaseKey{"MIN_DZ", in<&S::MIN_DZ>, "", "m", "height of the first layer"},
    CaseKey{"MESH_VRATIO", in<&S::MESH_VRATIO>, "", "", "growth of the layers"},
    CaseKey{"FLAT_ROUGHNESS", in<&S::FLAT_ROUGHNESS>, "0.02", "m",
            "roughness length of a flat-terrain run"},
    CaseKey{"XYCONF", in<&S::XYCONF>, "", "",
            "file that gives the horizontal mesh lines directly; blank: none", 256},
    CaseKey{"SPECIFY_ELEVATION_CORRECTION_FACTOR", in<&S::SPECIFY_ELEVATION_CORRECTION_FACTOR>, "F",
            "", "multiply elevations by the factor of the direction"},
    CaseKey{"ELEVATION_CORRECTION_FACTOR", in<&S::ELEVATION_CORRECTION_FACTOR>, "1.0", "",
            "one factor per direction index"},
    CaseKey{"GS", in<&S::GS>, "0", "",
            "geodetic system of the coordinates: 0 default, 1 Tokyo, 2 JGD2000, 3 WGS84"},
};

constexpr std::array nml_monitor_keys{
    CaseKey{"MONITOR_POSITION", in<&S::MONITOR_POSITION>, "0", "",
            "0: the monitor point is the case centre at 30 m; otherwise the three keys below"},
    CaseKey{"MONITOR_LON", in<&S::MONITOR_LON>, "", "deg, min, s",
            "longitude of the monitor point"},
    CaseKey{"MONITOR_LAT", in<&S::MONITOR_LAT>, "", "deg, min, s", "latitude of the monitor point"},
    CaseKey{"MONITOR_HEIGHT", in<&S::MONITOR_HEIGHT>, "", "m",
            "monitor height above ground, at most CONSTANT_DZ_HEIGHT"},
    CaseKey{"MONITOR_STEP", in<&S::MONITOR_STEP>, "", "",
            "outer iterations between reports and convergence tests; must be given, at least 1"},
};

constexpr std::array nml_er_keys{
    CaseKey{"EQUIVALENT_ROUGHNESS", in<&S::EQUIVALENT_ROUGHNESS>, "0", "m",
            "upwind roughness by direction index"},
    CaseKey{"USE_EQUIVALENT_ROUGHNESS", in<&S::USE_EQUIVALENT_ROUGHNESS>, "F", "",
            "use EQUIVALENT_ROUGHNESS"},
    CaseKey{"INFLOW_ELEVATION", in<&S::INFLOW_ELEVATION>, "0", "m",
            "elevation of the inflow plane"},
    CaseKey{"SPECIFY_INFLOW_ELEVATION", in<&S::SPECIFY_INFLOW_ELEVATION>, "F", "",
            "use INFLOW_ELEVATION"},
    CaseKey{"BOUNDARY_HEIGHT_MODE", in<&S::BOUNDARY_HEIGHT_MODE>, "0", "",
            "how the height of the domain's edge is set: 0 keeps the ground volume of each buffer "
            "zone, 1 leads both ends to INFLOW_ELEVATION, others the downwind end only"},
    CaseKey{"BUFFER_ZONE_SLOPE_GRADIENT", in<&S::BUFFER_ZONE_SLOPE_GRADIENT>, "40", "%",
            "slope limit of the buffer zone in mode 1"},
    CaseKey{"USE_DIRECTIONAL_ALPHA", in<&S::USE_DIRECTIONAL_ALPHA>, "F", "",
            "upwind roughness from a table of shear exponents by direction"},
    CaseKey{"USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN",
            in<&S::USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN>, "F", "",
            "upwind roughness also in the additional domain"},
    CaseKey{"DIRECTIONAL_ALPHA_FILE_NAME", in<&S::DIRECTIONAL_ALPHA_FILE_NAME>, "", "",
            "the table of shear exponents", 256},
    CaseKey{"USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN",
            in<&S::USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN>, "F", "",
            "upwind roughness everywhere"},
    CaseKey{"DIRECTIONAL_ALPHA_Z0_MIN", in<&S::DIRECTIONAL_ALPHA_Z0_MIN>, "0.0001", "m",
            "lower bound of the search for the roughness"},
    CaseKey{"DIRECTIONAL_ALPHA_Z0_MAX", in<&S::DIRECTIONAL_ALPHA_Z0_MAX>, "1.0", "m",
            "upper bound of the search"},
    CaseKey{"DIRECTIONAL_ALPHA_BS_EPS", in<&S::DIRECTIONAL_ALPHA_BS_EPS>, "0.001", "",
            "tolerance on the exponent"},
    CaseKey{"DIRECTIONAL_ALPHA_BS_MAXIT", in<&S::DIRECTIONAL_ALPHA_BS_MAXIT>, "20", "",
            "most rounds of the search"},
    CaseKey{"DIRECTIONAL_ALPHA_APPLICABLE_WDS", in<&S::DIRECTIONAL_ALPHA_APPLICABLE_WDS>, "-1", "",
            "indices of the directions to which the table applies; a negative entry ends the list"},
};

constexpr std::array nml_boundary_treatment_keys{
    CaseKey{"SIDE_BR", in<&S::SIDE_BR>, "0.3", "",
            "side buffer width over the diameter of the study circle"},
    CaseKey{"UP_BR", in<&S::UP_BR>, "0.3", "", "upwind buffer width over the diameter"},
    CaseKey{"DOWN_BR", in<&S::DOWN_BR>, "0.3", "", "downwind buffer width over the diameter"},
    CaseKey{"ADD_R", in<&S::ADD_R>, "1.0", "", "additional upwind zone over the diameter"},
    CaseKey{"BZ_LIMIT", in<&S::BZ_LIMIT>, "2.0", "m", "least buffer width"},
    CaseKey{"ADD_LIMIT", in<&S::ADD_LIMIT>, "3.0", "m", "least additional zone"},
    CaseKey{"CONSTANT_DZ_HEIGHT", in<&S::CONSTANT_DZ_HEIGHT>, "100", "m",
            "height up to which the layers keep their spacing"},
    CaseKey{"MAX_Z", in<&S::MAX_Z>, "", "m",
            "top of the domain above the map datum, used with USE_DEFAULT_MAX_Z = F"},
    CaseKey{"USE_DEFAULT_MAX_Z", in<&S::USE_DEFAULT_MAX_Z>, "T", "",
            "top of the domain at 1000 m above the highest ground, at least 1500 m"},
    CaseKey{"USE_TFTB", in<&S::USE_TFTB>, "F", "", "the top boundary follows the terrain"},
    CaseKey{"SPECIFY_INFLOW_PROFILE", in<&S::SPECIFY_INFLOW_PROFILE>, "F", "",
            "inflow profile from INFLOW_PROFILE_FILE"},
    CaseKey{"INFLOW_PROFILE_FILE", in<&S::INFLOW_PROFILE_FILE>, "", "", "inflow profile", 256},
    CaseKey{"INFLOW_PROFILE_TABLE", in<&S::INFLOW_PROFILE_TABLE>, "T", "",
            "the profile is a table of height, speed and turbulence energy; F: a .tpd profile"},
    CaseKey{"WIND_TUNNEL_MODE", in<&S::WIND_TUNNEL_MODE>, "0", "",
            "0: open top and sides; 1: wall on top; 2 and more: walls on top and sides"},
    CaseKey{"WIND_TUNNEL_Z0", in<&S::WIND_TUNNEL_Z0>, "", "m", "roughness length of those walls"},
    CaseKey{"MIN_DZ_HEIGHT", in<&S::MIN_DZ_HEIGHT>, "0", "m",
            "height up to which layers stay at MIN_DZ"},
    CaseKey{"EQUILIBRIUM_INFLOW", in<&S::EQUILIBRIUM_INFLOW>, "F", "",
            "inflow and top of a surface layer in equilibrium with the ground at the inflow"},
};

constexpr std::array nml_navier_stokes_keys{
    CaseKey{"SOLVE_ENERGY_EQUATION", in<&S::SOLVE_ENERGY_EQUATION>, "F", "", "accepted, not used"},
    CaseKey{"VISCOS", in<&S::VISCOS>, "0.0015", "kg/(m s)", "molecular viscosity"},
    CaseKey{"DENSIT", in<&S::DENSIT>, "1.0", "kg/m3", "density"},
    CaseKey{"TURBULENCE_MODEL", in<&S::TURBULENCE_MODEL>, "1", "",
            "1 k-epsilon, 2 k-l, 3 Launder-Kato, 4 hybrid"},
    CaseKey{"TM_MIX_PARAMETER", in<&S::TM_MIX_PARAMETER>, "", "", "accepted, not used"},
    CaseKey{"KE_CMU", in<&S::KE_CMU>, "0.09", "", "C_mu of the k-epsilon family"},
    CaseKey{"KE_CE1", in<&S::KE_CE1>, "1.44", "", "C_e1"},
    CaseKey{"KE_CE2", in<&S::KE_CE2>, "1.92", "", "C_e2"},
    CaseKey{"KE_SIGMA_K", in<&S::KE_SIGMA_K>, "1.0", "", "Prandtl number of k"},
    CaseKey{"KE_SIGMA_E", in<&S::KE_SIGMA_E>, "1.3", "", "Prandtl number of epsilon"},
    CaseKey{"KL_CMU", in<&S::KL_CMU>, "0.094", "", "C_mu of the k-l model"},
    CaseKey{"KL_SIGMA_K", in<&S::KL_SIGMA_K>, "1.86", "", "Prandtl number of k in the k-l model"},
    CaseKey{"KL_ALPHA", in<&S::KL_ALPHA>, "0.1", "", "alpha of the k-l model"},
    CaseKey{"RATIO_KL", in<&S::RATIO_KL>, "0", "", "hybrid blending ratio"},
    CaseKey{"RATIO_OMEGA", in<&S::RATIO_OMEGA>, "", "", "logged as ratio_lk, not used further"},
    CaseKey{"WALL_DISSIPATION_AT_CENTRE", in<&S::WALL_DISSIPATION_AT_CENTRE>, "F", "",
            "wall cells hold the dissipation of their centre, not its mean over their height"},
};

constexpr std::array nml_numerical_solver_keys{
    CaseKey{"UNSTEADY_SOLVER", in<&S::UNSTEADY_SOLVER>, "F", "", "accepted, not used"},
    CaseKey{"MAXIT", in<&S::MAXIT>, "500", "",
            "outer iterations allowed in this run, beyond those of a resumed state"},
    CaseKey{"T_DT", in<&S::T_DT>, "", "", "accepted, not used"},
    CaseKey{"T_NUM", in<&S::T_NUM>, "", "", "accepted, not used"},
    CaseKey{"T_BEGIN", in<&S::T_BEGIN>, "", "", "accepted, not used"},
    CaseKey{"ETA", in<&S::ETA>, "0.5", "", "blending of the deferred convection scheme"},
    CaseKey{"RATIO", in<&S::RATIO>, "1.0", "",
            "weight of the deferred convection: 0 is pure upwind"},
    CaseKey{"URFU", in<&S::URFU>, "0.5", "", "under-relaxation of a velocity component"},
    CaseKey{"URFV", in<&S::URFV>, "0.5", "", "under-relaxation of a velocity component"},
    CaseKey{"URFW", in<&S::URFW>, "0.5", "", "under-relaxation of a velocity component"},
    CaseKey{"URFP", in<&S::URFP>, "0.2", "", "under-relaxation of the pressure"},
    CaseKey{"URFK", in<&S::URFK>, "0.5", "", "under-relaxation of k, epsilon"},
    CaseKey{"URFE", in<&S::URFE>, "0.5", "", "under-relaxation of k, epsilon"},
    CaseKey{"URFVIS", in<&S::URFVIS>, "0.5", "", "under-relaxation of the eddy viscosity"},
    CaseKey{"CC_OUT_U", in<&S::CC_OUT_U>, "0.001", "",
            "convergence criterion, scaled by the mesh count"},
    CaseKey{"CC_OUT_V", in<&S::CC_OUT_V>, "0.001", "",
            "convergence criterion, scaled by the mesh count"},
    CaseKey{"CC_OUT_W", in<&S::CC_OUT_W>, "0.001", "",
            "convergence criterion, scaled by the mesh count"},
    CaseKey{"CC_OUT_M", in<&S::CC_OUT_M>, "0.001", "",
            "convergence criterion, scaled by the mesh count"},
    CaseKey{"CC_OUT_TKE", in<&S::CC_OUT_TKE>, "0.001", "",
            "scaled as the others; plays no part in the test"},
    CaseKey{"CC_OUT_TED", in<&S::CC_OUT_TED>, "0.001", "",
            "scaled as the others; plays no part in the test"},
    CaseKey{"CC_IN_U", in<&S::CC_IN_U>, "0.1", "", "accepted, not used"},
    CaseKey{"CC_IN_V", in<&S::CC_IN_V>, "0.1", "", "accepted, not used"},
    CaseKey{"CC_IN_W", in<&S::CC_IN_W>, "0.1", "", "accepted, not used"},
    CaseKey{"CC_IN_PP", in<&S::CC_IN_PP>, "0.1", "", "accepted, not used"},
    CaseKey{"CC_IN_TKE", in<&S::CC_IN_TKE>, "0.1", "", "accepted, not used"},
    CaseKey{"CC_IN_TED", in<&S::CC_IN_TED>, "0.1", "", "accepted, not used"},
    CaseKey{"NSWPU", in<&S::NSWPU>, "10", "", "most inner sweeps of a momentum equation"},
    CaseKey{"NSWPV", in<&S::NSWPV>, "10", "", "most inner sweeps of a momentum equation"},
    CaseKey{"NSWPW", in<&S::NSWPW>, "10", "", "most inner sweeps of a momentum equation"},
    CaseKey{"NSWPP", in<&S::NSWPP>, "10", "", "most cycles of the pressure solver"},
    CaseKey{"NSWPK", in<&S::NSWPK>, "10", "", "most inner sweeps of k, epsilon"},
    CaseKey{"NSWPE", in<&S::NSWPE>, "10", "", "most inner sweeps of k, epsilon"},
    CaseKey{"SIP_ALPHA", in<&S::SIP_ALPHA>, "0.9", "", "accepted, not used"},
    CaseKey{"RCM_L", in<&S::RCM_L>, "4", "", "accepted; four corrections are always kept"},
    CaseKey{"RCM_N", in<&S::RCM_N>, "7", "", "accepted; seven inner sweeps are always made"},
    CaseKey{"URFU_MAX", in<&S::URFU_MAX>, "0.5", "", "ceiling of the relaxation boost"},
    CaseKey{"URFV_MAX", in<&S::URFV_MAX>, "0.5", "", "ceiling of the relaxation boost"},
    CaseKey{"URFW_MAX", in<&S::URFW_MAX>, "0.5", "", "ceiling of the relaxation boost"},
    CaseKey{"URFK_MAX", in<&S::URFK_MAX>, "0.5", "", "ceiling of the relaxation boost"},
    CaseKey{"URFE_MAX", in<&S::URFE_MAX>, "0.5", "", "ceiling of the relaxation boost"},
    CaseKey{"URFVIS_MAX", in<&S::URFVIS_MAX>, "0.5", "", "accepted, not used"},
    CaseKey{"URFP_MAX", in<&S::URFP_MAX>, "0.2", "", "ceiling of the relaxation boost"},
    CaseKey{"OUT_CC_RATIO", in<&S::OUT_CC_RATIO>, "1.0", "", "accepted, not used"},
    CaseKey{"OUT_CC_LIMIT", in<&S::OUT_CC_LIMIT>, "0.01", "",
            "cap of the scaled criteria; 0: none"},
    CaseKey{"BOOSTCAL", in<&S::BOOSTCAL>, "F", "",
            "relaxation factors start from their case values at each direction and double every 50 "
            "iterations"},
    CaseKey{"DOUBLE_CORRECTION", in<&S::DOUBLE_CORRECTION>, "F", "",
            "second pressure correction; off for flat terrain"},
    CaseKey{"ACCEL", in<&S::ACCEL>, "0", "",
            "1: accelerated iteration, to the same field in far fewer iterations"},
    CaseKey{"ACCEL_LEVELS", in<&S::ACCEL_LEVELS>, "0", "",
            "meshes of the accelerated iteration: 0 by size, 1 the fine one alone, 2 to 4"},
    CaseKey{"STOP_SITES", in<&S::STOP_SITES>, "0", "",
            "a direction has converged too where the speeds at its sites and monitor vary by less "
            "than this fraction; 0: off"},
    CaseKey{"PRESSURE_SOLVER", in<&S::PRESSURE_SOLVER>, "0", "",
            "solver of the pressure correction: 0 residual cutting, 1 multigrid"},
};

constexpr std::array nml_site_keys{
    CaseKey{"N_SITE", in<&S::N_SITE>, "", "", "number of sites, at most 1000"},
    CaseKey{"SITE", in<&S::SITE>, "", "", "site records: SITE(n)%LABEL, SITE(n)%LON, SITE(n)%LAT"},
};

constexpr std::array nest_points_keys{
    CaseKey{"nest_mode", in<&S::nest, &NestPoints::nest_mode>, "0", "",
            "non-zero: child of a finished parent case in the same directory"},
    CaseKey{"nest_site%label", in<&S::nest, &NestPoints::label>, "", "", "name of the child site",
            20},
    CaseKey{"nest_site%lon", in<&S::nest, &NestPoints::lon>, "", "deg, min, s",
            "centre of the child; CENT_LON replaces it"},
    CaseKey{"nest_site%lat", in<&S::nest, &NestPoints::lat>, "", "deg, min, s",
            "centre of the child; CENT_LAT replaces it"},
    CaseKey{"nest_site%n_x_div", in<&S::nest, &NestPoints::n_x_div>, "", "",
            "child cells in a parent cell along x"},
    CaseKey{"nest_site%n_y_div", in<&S::nest, &NestPoints::n_y_div>, "", "",
            "child cells in a parent cell along y"},
    CaseKey{"nest_site%c2xmax", in<&S::nest, &NestPoints::c2xmax>, "", "m",
            "half-width of the child area in x"},
    CaseKey{"nest_site%c2ymax", in<&S::nest, &NestPoints::c2ymax>, "", "m",
            "half-width of the child area in y"},
    CaseKey{"nest_bc_distr", in<&S::nest, &NestPoints::nest_bc_distr>, "1", "",
            "inflow: 0 the parent's velocity on every child face in a parent face, otherwise "
            "interpolated with the momentum of the parent face; may be left out"},
    CaseKey{"nest_bc_ofix", in<&S::nest, &NestPoints::nest_bc_ofix>, "T", "",
            "outflow of the child made equal to its inflow; may be left out"},
};

constexpr std::array canopy_parameters_keys{
    CaseKey{"canopy_mode", in<&S::canopy, &CanopyParameters::canopy_mode>, "0", "",
            "1: canopy file read, canopy terms act; 0: none"},
    CaseKey{"start_cal_src", in<&S::canopy, &CanopyParameters::start_cal_src>, "1", "",
            "outer iteration from which the k and epsilon sources act"},
    CaseKey{"src_included_model", in<&S::canopy, &CanopyParameters::src_included_model>, "F", "",
            "density-dependent dissipation factor of k"},
    CaseKey{"use_vegetation_layer", in<&S::canopy, &CanopyParameters::use_vegetation_layer>, "F",
            "", "accepted, not used"},
    CaseKey{"pm_tiny", in<&S::canopy, &CanopyParameters::pm_tiny>, "", "", "accepted, not used"},
    CaseKey{"cfp1", in<&S::canopy, &CanopyParameters::cfp1>, "", "", "accepted, not used"},
    CaseKey{"cfp2", in<&S::canopy, &CanopyParameters::cfp2>, "", "", "accepted, not used"},
    CaseKey{"magick", in<&S::canopy, &CanopyParameters::magick>, "", "", "accepted, not used"},
    CaseKey{"beta_p", in<&S::canopy, &CanopyParameters::beta_p>, "1.0", "",
            "production coefficient of k"},
    CaseKey{"beta_d", in<&S::canopy, &CanopyParameters::beta_d>, "5.1", "",
            "dissipation coefficient of k, and its ceiling"},
    CaseKey{"alphak1", in<&S::canopy, &CanopyParameters::alphak1>, "0", "",
            "constant of the density form"},
    CaseKey{"alphak2", in<&S::canopy, &CanopyParameters::alphak2>, "1", "",
            "constant of the density form"},
    CaseKey{"cpe1", in<&S::canopy, &CanopyParameters::cpe1>, "0.9", "",
            "constant of the epsilon production"},
    CaseKey{"cpe2", in<&S::canopy, &CanopyParameters::cpe2>, "", "", "accepted, not used"},
    CaseKey{"alphae1", in<&S::canopy, &CanopyParameters::alphae1>, "0", "",
            "constant of the epsilon dissipation factor"},
    CaseKey{"alphae2", in<&S::canopy, &CanopyParameters::alphae2>, "0.9", "",
            "constant of the epsilon dissipation factor"},
    CaseKey{"alphae3", in<&S::canopy, &CanopyParameters::alphae3>, "0", "",
            "constant of the epsilon dissipation factor"},
    CaseKey{"alphae4", in<&S::canopy, &CanopyParameters::alphae4>, "0.9", "",
            "constant of the epsilon dissipation factor"},
    CaseKey{"r1max", in<&S::canopy, &CanopyParameters::r1max>, "0", "",
            "lower density limit of the epsilon dissipation factor"},
    CaseKey{"r2max", in<&S::canopy, &CanopyParameters::r2max>, "0", "",
            "upper density limit of the epsilon dissipation factor"},
    CaseKey{"wt_floor_mode", in<&S::canopy, &CanopyParameters::wt_floor_mode>, "F", "",
            "accepted, not used"},
    CaseKey{"wt_floor_z0", in<&S::canopy, &CanopyParameters::wt_floor_z0>, "", "m",
            "accepted, not used"},
    CaseKey{"wt_floor_ttr", in<&S::canopy, &CanopyParameters::wt_floor_ttr>, "", "",
            "accepted, not used"},
    CaseKey{"modify_terrain", in<&S::canopy, &CanopyParameters::modify_terrain>, "F", "",
            "set the ground to zero outside a circle"},
    CaseKey{"modify_circle_range", in<&S::canopy, &CanopyParameters::modify_circle_range>, "", "m",
            "radius of that circle, above 0 where modify_terrain is on"},
    CaseKey{"use_z0_judge", in<&S::canopy, &CanopyParameters::use_z0_judge>, "F", "",
            "accepted, not used"},
    CaseKey{"use_ff_judge", in<&S::canopy, &CanopyParameters::use_ff_judge>, "F", "",
            "accepted, not used"},
    CaseKey{"output_log_shape_height", in<&S::canopy, &CanopyParameters::output_log_shape_height>,
            "0", "", "accepted, not used"},
};

constexpr std::array shp_parameters_keys{
    CaseKey{"shp_def_cs", in<&S::shape, &ShapeParameters::shp_def_cs>, "0", "",
            "coordinate system, as for %cs, of a shapefile that names none"},
    CaseKey{"shp_or_radius", in<&S::shape, &ShapeParameters::shp_or_radius>, "", "m",
            "only polygons whose box comes nearer to the case centre; 0: all"},
    CaseKey{"trdb2shp_fn", in<&S::shape, &ShapeParameters::trdb2shp_fn>, "", "",
            "shapefile of the map conversion", 256},
    CaseKey{"calc_fa", in<&S::shape, &ShapeParameters::calc_fa>, "F", "", "compute frontal areas"},
    CaseKey{"fa_ndir", in<&S::shape, &ShapeParameters::fa_ndir>, "", "",
            "number of directions for the frontal areas, read with calc_fa"},
    CaseKey{"fa_read_dirs", in<&S::shape, &ShapeParameters::fa_read_dirs>, "F", "",
            "read the directions rather than derive them, read with calc_fa"},
    CaseKey{"fa_dirs", in<&S::shape, &ShapeParameters::fa_dirs>, "", "deg",
            "directions, read with fa_read_dirs"},
    CaseKey{"exclude_donut_shape", in<&S::shape, &ShapeParameters::exclude_donut_shape>, "F", "",
            "pass over rings that are holes, so that a polygon counts as filled"},
};

constexpr std::array user_domain_keys{
    CaseKey{"mesh_n_file", in<&S::user, &UserDomain::mesh_n_file>, "", "",
            "text file of the mesh counts: ni, nj, nk on a line each", 256},
    CaseKey{
        "xyz_file", in<&S::user, &UserDomain::xyz_file>, "", "",
        "mesh nodes in the form of xyz.tuf; x southwards and y eastwards from the case centre (m), "
        "i along x, k upwards; the wind blows from the north",
        256},
    CaseKey{"roughness_file", in<&S::user, &UserDomain::roughness_file>, "", "",
            "roughness of the ground, in the form of z0.tuf", 256},
    CaseKey{"ccd_file", in<&S::user, &UserDomain::ccd_file>, "", "",
            "canopy parameters, in the form of ccd.tuf; its roughness replaces that of "
            "roughness_file; blank: none",
            256},
    CaseKey{"inlet", in<&S::user, &UserDomain::inlet>, "0", "",
            "inflow: 0 power law, 1 profile table, 2 equilibrium with the roughness"},
    CaseKey{"inflow_profile_file", in<&S::user, &UserDomain::inflow_profile_file>, "", "",
            "table of inlet 1: height above ground (m), speed (m/s) and sigma u (m/s) on a line "
            "each, lines that do not begin with a number are header",
            256},
    CaseKey{"specify_turbulence", in<&S::user, &UserDomain::specify_turbulence>, "F", "",
            "the table holds tke (m2/s2) and ted (m2/s3) in place of sigma u"},
};

constexpr std::array site_table{
    SiteField{"LABEL", of<&Site::LABEL>, "", "site name", 20},
    SiteField{"LON", of<&Site::LON>, "deg, min, s", "longitude"},
    SiteField{"LAT", of<&Site::LAT>, "deg, min, s", "latitude"},
};

constexpr std::array groups{
    CaseGroup{"NML_RUN", "- nml(run) was read.", nml_run_keys},
    CaseGroup{"NML_CASEFILE", "- nml(casefile) was read.", nml_casefile_keys},
    CaseGroup{"NML_MONITOR", "- nml(monitor) was read.", nml_monitor_keys},
    CaseGroup{"NML_ER", "- nml(er) was read.", nml_er_keys},
    CaseGroup{"NML_BOUNDARY_TREATMENT", "- nml(boundary_treatment) was read.",
              nml_boundary_treatment_keys},
    CaseGroup{"NML_NAVIER_STOKES", "- nml(navier_stokes) was read.", nml_navier_stokes_keys},
    CaseGroup{"NML_NUMERICAL_SOLVER", "- nml(numerical_solver) was read.",
              nml_numerical_solver_keys},
    CaseGroup{"NML_SITE", "", nml_site_keys},
};

constexpr std::array blocks{
    CaseGroup{"nest_points", "", nest_points_keys},
    CaseGroup{"canopy_parameters", "", canopy_parameters_keys},
    CaseGroup{"shp_parameters", "", shp_parameters_keys},
    CaseGroup{"user_domain", "", user_domain_keys},
};

std::string with_extent(const char* letter, std::size_t count) {
    return count == 1 ? letter : letter + ("[" + std::to_string(count) + "]");
}

template <class T>
T parsed_fallback(std::string_view text) {
    T value{};
    bool good = text.empty();
    if constexpr (std::is_same_v<T, std::int32_t>) {
        good = good || parse_integer(text, value);
    } else if constexpr (std::is_same_v<T, float>) {
        good = good || parse_real(text, value);
    } else {
        good = good || parse_logical(text, value);
    }
    require(good, "unreadable fallback in the table of keys");
    return value;
}

struct SetFallback {
    std::string_view text;

    void operator()(std::span<std::int32_t> values) const {
        std::ranges::fill(values, parsed_fallback<std::int32_t>(text));
    }
    void operator()(std::span<float> values) const {
        std::ranges::fill(values, parsed_fallback<float>(text));
    }
    void operator()(bool* value) const { *value = parsed_fallback<bool>(text); }
    void operator()(std::string* value) const { *value = text; }
    void operator()(std::vector<float>* values) const { values->clear(); }
    void operator()(std::span<Site> sites) const { std::ranges::fill(sites, Site{}); }
};

struct TypeName {
    std::size_t length;

    std::string operator()(std::span<std::int32_t> values) const {
        return with_extent("I", values.size());
    }
    std::string operator()(std::span<float> values) const {
        return with_extent("R", values.size());
    }
    std::string operator()(const bool* /*value*/) const { return "L"; }
    std::string operator()(const std::string* /*value*/) const {
        return "C " + std::to_string(length);
    }
    std::string operator()(const std::vector<float>* /*values*/) const { return "R[fa_ndir]"; }
    std::string operator()(std::span<Site> sites) const {
        return with_extent("record", sites.size());
    }
};

}  // namespace

std::span<const CaseGroup> namelist_groups() {
    return groups;
}

std::span<const CaseGroup> keyed_blocks() {
    return blocks;
}

const CaseGroup& keyed_block(std::string_view name) {
    const auto* const block = std::ranges::find(blocks, name, &CaseGroup::name);
    if (block == blocks.end()) {
        throw std::logic_error("no keyed block of this name");
    }
    return *block;
}

std::span<const SiteField> site_fields() {
    return site_table;
}

std::string type_name(const KeyTarget& target, std::size_t length) {
    return std::visit(TypeName{length}, target);
}

void set_defaults(CaseSettings& settings) {
    for (const auto& list : {namelist_groups(), keyed_blocks()}) {
        for (const CaseGroup& group : list) {
            for (const CaseKey& key : group.keys) {
                std::visit(SetFallback{key.fallback}, key.target(settings));
            }
        }
    }
}

}  // namespace torvex
