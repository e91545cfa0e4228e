#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/fixed_array.hpp"

namespace torvex {

inline constexpr int max_directions = 360;     // wind directions of one case
inline constexpr int preview_direction = 361;  // direction index of a preview: no file, no log line
inline constexpr int max_sites = 1000;

// A named position for which profiles are written.
struct Site {
    std::string LABEL;  // name, at most 20 characters
    Triple LON;         // longitude: degrees, minutes, seconds
    Triple LAT;         // latitude: degrees, minutes, seconds
};

// Block nest_points: a child domain inside a finished parent case.
struct NestPoints {
    std::int32_t nest_mode = 0;  // non-zero: this run is a child
    std::string label;           // name of the child site
    Triple lon;                  // centre of the child: degrees, minutes, seconds
    Triple lat;
    std::int32_t n_x_div = 0;        // child cells in a parent cell along x
    std::int32_t n_y_div = 0;        // child cells in a parent cell along y
    float c2xmax = 0;                // half-width of the child area in x [m]
    float c2ymax = 0;                // half-width of the child area in y [m]
    std::int32_t nest_bc_distr = 1;  // 0: a parent face's velocity on all child faces in it
    bool nest_bc_ofix = true;        // outflow made equal to inflow
};

// Block canopy_parameters.
struct CanopyParameters {
    std::int32_t canopy_mode = 0;     // 1: canopy file read, canopy terms act
    std::int32_t start_cal_src = 1;   // outer iteration from which the tke and ted sources act
    bool src_included_model = false;  // density-dependent form of the tke dissipation factor
    bool use_vegetation_layer = false;
    float pm_tiny = 0;
    float cfp1 = 0;
    float cfp2 = 0;
    float magick = 0;
    float beta_p = 1.0F;  // production coefficient of tke [-]
    float beta_d = 5.1F;  // dissipation coefficient of tke and its ceiling [-]
    float alphak1 = 0;    // constants of the density form [-]
    float alphak2 = 1.0F;
    float cpe1 = 0.9F;  // constant of the ted production [-]
    float cpe2 = 0;
    float alphae1 = 0;  // constants of the ted dissipation factor [-]
    float alphae2 = 0.9F;
    float alphae3 = 0;
    float alphae4 = 0.9F;
    float r1max = 0;  // density limits of the ted dissipation factor [-]
    float r2max = 0;
    bool wt_floor_mode = false;
    float wt_floor_z0 = 0;
    float wt_floor_ttr = 0;
    bool modify_terrain = false;    // ground set to zero outside a circle
    float modify_circle_range = 0;  // radius of that circle [m]
    bool use_z0_judge = false;
    bool use_ff_judge = false;
    std::int32_t output_log_shape_height = 0;
};

// Block shp_parameters: settings of the preparation library.
struct ShapeParameters {
    std::int32_t shp_def_cs = 0;  // plane coordinate system assumed for a shapefile
    float shp_or_radius = 0;      // radius given with the shape input [m]
    std::string trdb2shp_fn;      // shapefile of the map conversion
    bool calc_fa = false;         // compute frontal areas
    std::int32_t fa_ndir = 0;     // number of frontal-area directions
    bool fa_read_dirs = false;    // directions are listed, not derived
    std::vector<float> fa_dirs;   // directions [deg]
    bool exclude_donut_shape = false;
};

// Block user_domain: the files of a domain given by the user, read where TORVEX_MODE is non-zero.
struct UserDomain {
    std::string mesh_n_file;          // text: the mesh counts ni, nj, nk
    std::string xyz_file;             // mesh nodes, in the form of xyz.tuf
    std::string roughness_file;       // roughness of the ground, in the form of z0.tuf
    std::string ccd_file;             // canopy parameters, in the form of ccd.tuf; blank: none
    std::int32_t inlet = 0;           // 0 power law, 1 profile table, 2 equilibrium
    std::string inflow_profile_file;  // the table of inlet 1
    bool specify_turbulence = false;  // the table holds tke and ted instead of sigma u
};

// Everything that the case file says, and what follows from it alone. Filled once, read-only for
// the rest of the run but for the scaled criteria CC_OUT_*.
// Character values are kept without trailing blanks; array bounds begin at 1. Defaults are those of
// the table of keys (case/case_keys), applied by set_defaults().
struct CaseSettings {
    // NML_RUN
    std::int32_t RESTART_FLAG = 0;  // 1: resume directions; other non-zero: keep the monitor logs
    std::int32_t ATLAS_FLAG = 0;    // 1: atlas run
    std::int32_t TORVEX_MODE = 0;   // non-zero: user-defined domain
    std::string TERRAIN_MODE;       // "normal", "flat", "flat2"
    std::int32_t DEBUG_MODE = 0;    // > 0: full result every that many outer iterations
    bool MESO_DWS_MODE = false;     // upwind roughness from the log of an atlas run

    // NML_CASEFILE
    std::string PROJECT_NAME;
    std::string BASIC_H_FILE;  // maps: elevation and roughness, basic and detailed
    std::string DETAILED_H_FILE;
    std::string BASIC_Z0_FILE;
    std::string DETAILED_Z0_FILE;
    Triple CENT_LON;  // case centre: degrees, minutes, seconds
    Triple CENT_LAT;
    float WE_LENGTH = 0;       // study area west to east [m]
    float NS_LENGTH = 0;       // study area south to north [m]
    std::int32_t WD_TYPE = 0;  // 0: equal sectors, else WIND_DIRECTION_ANGLE as given
    std::int32_t N_WIND_DIRECTION = 0;
    FixedArray<float, 361> WIND_DIRECTION_ANGLE;  // where the wind comes from [deg]
    float MIN_DXY = 0;                            // finest horizontal spacing [m]
    float MAX_DXY = 0;                            // coarsest horizontal spacing [m]
    float MIN_DXY_RAD = 0;                        // radius that keeps MIN_DXY [m]
    float MESH_HRATIO = 0;                        // horizontal growth factor [-]
    float MIN_DZ = 0;                             // first layer [m]
    float MESH_VRATIO = 0;                        // vertical growth factor [-]
    float FLAT_ROUGHNESS = 0;                     // roughness length of a flat run [m]
    std::string XYCONF;                           // file of mesh lines
    bool SPECIFY_ELEVATION_CORRECTION_FACTOR = false;
    FixedArray<float, 361> ELEVATION_CORRECTION_FACTOR;  // factor on elevations by direction [-]
    std::int32_t GS = 0;  // geodetic system: 0 default, 1 Tokyo, 2 JGD2000, 3 WGS84

    // NML_MONITOR
    std::int32_t MONITOR_POSITION = 0;  // 0: centre at 30 m, else the keys below
    Triple MONITOR_LON;                 // degrees, minutes, seconds
    Triple MONITOR_LAT;
    float MONITOR_HEIGHT = 0;       // above ground [m]
    std::int32_t MONITOR_STEP = 0;  // outer iterations between reports and tests

    // NML_ER
    FixedArray<float, 360> EQUIVALENT_ROUGHNESS;  // by direction index [m]
    bool USE_EQUIVALENT_ROUGHNESS = false;
    float INFLOW_ELEVATION = 0;  // elevation of the inflow plane [m]
    bool SPECIFY_INFLOW_ELEVATION = false;
    std::int32_t BOUNDARY_HEIGHT_MODE = 0;
    float BUFFER_ZONE_SLOPE_GRADIENT = 0;  // slope limit of the buffer zone [%]
    bool USE_DIRECTIONAL_ALPHA = false;
    bool USE_CONSTANT_ROUGHNESS_IN_ADDITIONAL_DOMAIN = false;
    std::string DIRECTIONAL_ALPHA_FILE_NAME;
    bool USE_CONSTANT_ROUGHNESS_IN_ALL_THE_DOMAIN = false;
    float DIRECTIONAL_ALPHA_Z0_MIN = 0;  // bracket of the bisection [m]
    float DIRECTIONAL_ALPHA_Z0_MAX = 0;
    float DIRECTIONAL_ALPHA_BS_EPS = 0;  // tolerance on alpha [-]
    std::int32_t DIRECTIONAL_ALPHA_BS_MAXIT = 0;
    FixedArray<std::int32_t, 360> DIRECTIONAL_ALPHA_APPLICABLE_WDS;  // direction indices

    // NML_BOUNDARY_TREATMENT
    float SIDE_BR = 0;  // buffer widths and additional zone over the diameter [-]
    float UP_BR = 0;
    float DOWN_BR = 0;
    float ADD_R = 0;
    float BZ_LIMIT = 0;            // least buffer width [m]
    float ADD_LIMIT = 0;           // least additional zone [m]
    float CONSTANT_DZ_HEIGHT = 0;  // layers keep their spacing up to here [m]
    float MAX_Z = 0;               // domain top above the map datum [m]
    bool USE_DEFAULT_MAX_Z = true;
    bool USE_TFTB = false;  // terrain-following top boundary
    bool SPECIFY_INFLOW_PROFILE = false;
    std::string INFLOW_PROFILE_FILE;
    bool INFLOW_PROFILE_TABLE = true;
    std::int32_t WIND_TUNNEL_MODE = 0;  // 0 open, 1 wall on top, 2 walls on top and sides
    float WIND_TUNNEL_Z0 = 0;           // roughness length of those walls [m]
    float MIN_DZ_HEIGHT = 0;            // layers of MIN_DZ up to here [m]
    bool EQUILIBRIUM_INFLOW = false;    // inflow and top of an equilibrium surface layer

    // NML_NAVIER_STOKES
    bool SOLVE_ENERGY_EQUATION = false;
    float VISCOS = 0;                   // molecular viscosity [kg/(m s)]
    float DENSIT = 0;                   // density [kg/m3]
    std::int32_t TURBULENCE_MODEL = 0;  // 1 k-epsilon, 2 k-l, 3 Launder-Kato, 4 hybrid
    float TM_MIX_PARAMETER = 0;
    float KE_CMU = 0;  // constants of the k-epsilon family [-]
    float KE_CE1 = 0;
    float KE_CE2 = 0;
    float KE_SIGMA_K = 0;
    float KE_SIGMA_E = 0;
    float KL_CMU = 0;  // constants of the k-l model [-]
    float KL_SIGMA_K = 0;
    float KL_ALPHA = 0;
    float RATIO_KL = 0;  // hybrid blending ratio [-]
    float RATIO_OMEGA = 0;
    bool WALL_DISSIPATION_AT_CENTRE = false;  // wall cells hold the dissipation of their centre

    // NML_NUMERICAL_SOLVER
    bool UNSTEADY_SOLVER = false;
    std::int32_t MAXIT = 0;  // outer iterations allowed in this run
    float T_DT = 0;
    float T_NUM = 0;
    float T_BEGIN = 0;
    float ETA = 0;    // deferred convection: blending [-]
    float RATIO = 0;  // deferred convection: weight [-]
    float URFU = 0;   // under-relaxation [-]
    float URFV = 0;
    float URFW = 0;
    float URFP = 0;
    float URFK = 0;
    float URFE = 0;
    float URFVIS = 0;
    float CC_OUT_U = 0;  // outer convergence criteria [-], scaled by the mesh count
    float CC_OUT_V = 0;
    float CC_OUT_W = 0;
    float CC_OUT_M = 0;
    float CC_OUT_TKE = 0;
    float CC_OUT_TED = 0;
    float CC_IN_U = 0;
    float CC_IN_V = 0;
    float CC_IN_W = 0;
    float CC_IN_PP = 0;
    float CC_IN_TKE = 0;
    float CC_IN_TED = 0;
    std::int32_t NSWPU = 0;  // inner sweeps
    std::int32_t NSWPV = 0;
    std::int32_t NSWPW = 0;
    std::int32_t NSWPP = 0;
    std::int32_t NSWPK = 0;
    std::int32_t NSWPE = 0;
    float SIP_ALPHA = 0;
    std::int32_t RCM_L = 0;
    std::int32_t RCM_N = 0;
    float URFU_MAX = 0;  // ceilings of the relaxation boost [-]
    float URFV_MAX = 0;
    float URFW_MAX = 0;
    float URFK_MAX = 0;
    float URFE_MAX = 0;
    float URFVIS_MAX = 0;
    float URFP_MAX = 0;
    float OUT_CC_RATIO = 0;
    float OUT_CC_LIMIT = 0;            // cap of the scaled criteria; 0: none
    bool BOOSTCAL = false;             // relaxation factors double every 50 iterations
    bool DOUBLE_CORRECTION = false;    // second pressure correction
    std::int32_t ACCEL = 0;            // 1: accelerated iteration
    std::int32_t ACCEL_LEVELS = 0;     // meshes of it: 0 by size, 1 the fine one alone, 2 to 4
    float STOP_SITES = 0;              // settled where sites vary by less than this [-]; 0: off
    std::int32_t PRESSURE_SOLVER = 0;  // 0 residual cutting, 1 multigrid

    // NML_SITE
    std::int32_t N_SITE = 0;
    std::vector<Site> SITE = std::vector<Site>(max_sites);  // site n is SITE[n - 1]

    // Keyed blocks
    NestPoints nest;
    CanopyParameters canopy;
    ShapeParameters shape;
    UserDomain user;

    // What follows from the keys
    std::string run_prefix;  // "", "atlas-", "flat-", "flat2-" or "nest-"
    bool detailed_h_given = false;
    bool detailed_z0_given = false;
    double cent_lat_min = 0;  // case centre and monitor [minutes of arc]
    double cent_lon_min = 0;
    double monitor_lat_min = 0;
    double monitor_lon_min = 0;
    float CMU = 0;  // working constants of the turbulence model [-]
    float CE1 = 0;
    float CE2 = 0;
    float SIGK = 0;
    float SIGE = 0;
    std::vector<float> alpha_direction;  // directional alpha: n + 1 directions [deg]
    std::vector<float> alpha_value;      // and their shear exponents [-]

    // What the codes above mean.
    bool nested() const { return nest.nest_mode != 0; }        // a child in a parent's flow
    bool canopy_on() const { return canopy.canopy_mode > 0; }  // canopy file read, terms act
    // The inflow and the open top are those of an equilibrium layer. A profile of the user's own
    // and a parent win, and the length of the k-l model, which stops growing with height, keeps no
    // log law.
    bool equilibrium_inflow() const {
        return EQUILIBRIUM_INFLOW && !SPECIFY_INFLOW_PROFILE && !nested() &&
               TURBULENCE_MODEL != 2 && (TORVEX_MODE == 0 || user.inlet == 0);
    }
    bool wall_on_top() const { return WIND_TUNNEL_MODE > 0; }
    bool walls_on_sides() const { return WIND_TUNNEL_MODE > 1; }
};

}  // namespace torvex
