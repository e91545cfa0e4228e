#include <array>

#include "base/stop.hpp"

namespace torvex {

namespace {

constexpr std::array table{
    StopCode{0, "Error: parent calculation data missing.",
             "a nested run found no restart.info of its parent for this direction",
             "run the parent case in the same directory first"},
    StopCode{1, "tin file missing.", "the case file is absent, a directory or unreadable",
             "name an existing file behind /f, or put torvex.tin into the current directory"},
    StopCode{1, "another run is using this directory",
             "view-wind_direction.dat is locked by a run that is still going on",
             "wait for that run, or give this case a directory of its own"},
    StopCode{1, "[main] ERROR: Can't delete logs.", "a monitor file could not be closed",
             "look for a full disk or a lost network drive"},
    StopCode{1, "ERROR at reading nm shp_paramters misc.", "calc_fa is on and fa_ndir is below 1",
             "give fa_ndir, or switch calc_fa off"},
    StopCode{1, "Turbulence Model Error",
             "TURBULENCE_MODEL is none of 1 to 4 when a result is to be written",
             "choose 1 (k-epsilon), 2 (k-l), 3 (Launder-Kato) or 4 (hybrid)"},
    StopCode{
        1, "canopy file",
        "canopy_mode is 1 and the ccd.tuf of a direction cannot be opened; its name and \" not "
        "found.\" are told",
        "prepare the file under restart_stem, or set canopy_mode = 0"},
    StopCode{1, "Error: File Inconsistency.",
             "the id of ccd.tuf is not 104, its counts are not those of the mesh, or a record in "
             "front of the roughness is missing or damaged",
             "prepare the file anew on the mesh of the direction"},
    StopCode{1, "ERROR: NAN detacted in ccd.tuf file.",
             "a value of a cell in the canopy file is not a number",
             "prepare the file anew; the message names array and cell"},
    StopCode{1, "[dstrMomen] ERROR: Divide by Zero.",
             "a face on the inflow plane of a nested run has no area",
             "check MIN_DZ and the divisions of the block nest_points"},
    StopCode{1, "Error in HGF version", "an HGF header has a version other than 1.00",
             "convert the file"},
    StopCode{1, "Error in header of HGF file",
             "a line of an HGF header is none of %HGF, %COLS, %ROWS and %%", "mend the header"},
    StopCode{1, "Please initialize module.",
             "plane coordinates were asked for before a zone was chosen",
             "choose a zone, 1 to 19, first"},
    StopCode{1, "plane coordinates", "the zone is none of 1 to 19, or a point lies beyond a pole",
             "check the zone, and that x is north and y east in metres"},
    StopCode{1, "domain",
             "more than 20000 cells from the centre, more than 5000 levels, or a mesh beyond the "
             "memory of the machine",
             "use wider cells, a smaller study area or narrower buffer zones"},
    StopCode{1, "mesh-line file", "a line of the file named by XYCONF cannot be used",
             "the message names the line and what was expected there"},
    StopCode{
        1, "user domain",
        "mesh_n_file cannot be used, a cell of xyz_file is turned inside out or lies below the "
        "ground, a roughness is not above 0, or a number is not finite",
        "the message names the file and the line or the first bad cell"},
    StopCode{1, "*** inflow file error ***",
             "inlet is none of 0, 1 and 2, or the table of inflow_profile_file cannot be used",
             "the message names the line and what was expected there"},
    StopCode{1, "case file", "a group, key or value of the case file cannot be used",
             "the message names file, line and key, and what was expected there"},
    StopCode{1, "files", "a file of the run cannot be read or written",
             "the message names the file and the system's reason"},
    StopCode{2, "user stop", "#stop_message was found; the results of the direction are written",
             "no failure; set RESTART_FLAG = 1 to go on later"},
    StopCode{100, "nesting", "the case file cannot be opened again for its block nest_points",
             "leave the case file in its place while a run starts"},
    StopCode{102, "command line", "an argument is neither /f nor the file name behind it",
             "usage: torvex [/f CASE_FILE]"},
    StopCode{111, "basic terrain map", "the map cannot be opened, or is of kind x-y",
             "name an existing lon-lat map in BASIC_H_FILE"},
    StopCode{112, "basic terrain map",
             "a required key of the header is missing, a count is below 2 or a spacing not above 0",
             "complete the header: n_lon, n_lat, d_lon, d_lat, base_longitude, base_latitude"},
    StopCode{113, "basic terrain map",
             "the first line is unknown, a number cannot be read or is not finite, or the data end "
             "too early",
             "the message names the line and what stands there"},
    StopCode{121, "detailed terrain map", "the map cannot be opened, or is of kind x-y",
             "name an existing lon-lat map in DETAILED_H_FILE"},
    StopCode{122, "detailed terrain map",
             "a required key of the header is missing, a count is below 2 or a spacing not above 0",
             "complete the header: n_lon, n_lat, d_lon, d_lat, base_longitude, base_latitude"},
    StopCode{123, "detailed terrain map",
             "the first line is unknown, a number cannot be read or is not finite, or the data end "
             "too early",
             "the message names the line and what stands there"},
    StopCode{131, "basic roughness map", "the map cannot be opened, or is of kind x-y",
             "name an existing lon-lat map in BASIC_Z0_FILE"},
    StopCode{132, "basic roughness map",
             "a required key of the header is missing, a count is below 2 or a spacing not above 0",
             "complete the header: n_lon, n_lat, d_lon, d_lat, base_longitude, base_latitude"},
    StopCode{133, "basic roughness map",
             "the first line is unknown, a number cannot be read or is not finite, or the data end "
             "too early",
             "the message names the line and what stands there"},
    StopCode{134, "basic roughness map", "a roughness length is not above 0, or is no number",
             "every roughness length must be above 0 m"},
    StopCode{141, "detailed roughness map", "the map cannot be opened, or is of kind x-y",
             "name an existing lon-lat map in DETAILED_Z0_FILE"},
    StopCode{142, "detailed roughness map",
             "a required key of the header is missing, a count is below 2 or a spacing not above 0",
             "complete the header: n_lon, n_lat, d_lon, d_lat, base_longitude, base_latitude"},
    StopCode{143, "detailed roughness map",
             "the first line is unknown, a number cannot be read or is not finite, or the data end "
             "too early",
             "the message names the line and what stands there"},
    StopCode{144, "detailed roughness map", "a roughness length is not above 0, or is no number",
             "every roughness length must be above 0 m"},
    StopCode{151, "domain", "the domain reaches beyond the basic terrain or roughness map",
             "give a larger map, a smaller study area or narrower buffer zones"},
    StopCode{152, "mesh",
             "CONSTANT_DZ_HEIGHT lies above all levels, or ground and constant layers reach "
             "through the top",
             "raise MAX_Z, which counts from the map datum, or lower CONSTANT_DZ_HEIGHT"},
    StopCode{153, "side buffer zone", "its inner or outer part has no width",
             "widen the zone (SIDE_BR) or use finer cells"},
    StopCode{154, "upwind buffer zone", "its inner or outer part has no width",
             "widen the zone (UP_BR) or use finer cells"},
    StopCode{155, "downwind buffer zone", "its inner or outer part has no width",
             "widen the zone (DOWN_BR) or use finer cells"},
    StopCode{156, "domain", "MIN_DXY is greater than MAX_DXY", "MAX_DXY is the coarsest spacing"},
    StopCode{157, "domain", "MESH_HRATIO is below 1", "cells may only grow outward"},
    StopCode{158, "upwind roughness", "an EQUIVALENT_ROUGHNESS is not above 0",
             "give a roughness length above 0 for every wind direction"},
    StopCode{161, "monitor", "the monitor point lies outside the study area or the mesh",
             "move MONITOR_LON and MONITOR_LAT, or set MONITOR_POSITION = 0"},
    StopCode{162, "monitor", "MONITOR_HEIGHT is above CONSTANT_DZ_HEIGHT",
             "lower MONITOR_HEIGHT (30 m when MONITOR_POSITION is 0) or raise CONSTANT_DZ_HEIGHT"},
    StopCode{163, "monitor", "MONITOR_HEIGHT is not above 0", "give a height above ground"},
    StopCode{180, "nesting", "a half-width or a division of the child is not above 0",
             "give c2xmax and c2ymax in metres, and n_x_div and n_y_div of 1 or more"},
    StopCode{181, "nesting", "the centre of the child lies outside its parent",
             "a child has its centre inside its parent"},
    StopCode{182, "nesting", "the child reaches beyond the mesh of its parent",
             "give smaller half-widths, or run a larger parent"},
    StopCode{183, "nesting", "the parent's restart.info holds no iteration count",
             "run the parent case to its end again in this directory"},
    StopCode{184, "nesting",
             "the parent's result or mesh cannot be read, holds values that are no finite numbers, "
             "or belongs to other mesh lines or another ground than this case has",
             "run the parent case to its end; a child keeps its centre, maps, directions and "
             "horizontal mesh keys"},
    StopCode{185, "nesting", "a required key of the block nest_points is missing",
             "give all keys of the block; only nest_bc_distr and nest_bc_ofix may be left out"},
    StopCode{186, "upwind roughness",
             "the log-upwind_roughness file of an earlier run cannot be read",
             "run the case that writes it first, in the same directory"},
    StopCode{191, "case file", "ATLAS_FLAG is 1 with a TERRAIN_MODE that begins with \"flat\"",
             "an atlas run needs real terrain: change one of the two keys"},
    StopCode{210, "xyz.tuf", "the file of mesh nodes cannot be opened",
             "bring the file back, or start the direction afresh with RESTART_FLAG = 0; in a user "
             "domain mend xyz_file"},
    StopCode{211, "xyz.tuf", "the id cannot be read or is not 101", "give a file of mesh nodes"},
    StopCode{
        212, "xyz.tuf",
        "the extents differ from the mesh, an array cannot be read, or a node of a resume is no "
        "finite number; differing extents are printed first",
        "restore the mesh keys of the earlier run, or start afresh; in a user domain compare "
        "xyz_file with mesh_n_file"},
    StopCode{221, "z0.tuf",
             "the roughness file cannot be opened, or its id cannot be read or is not 102",
             "bring the file back, or start afresh; in a user domain mend roughness_file"},
    StopCode{
        222, "z0.tuf",
        "the extents differ from the mesh, the array cannot be read, or a roughness length of a "
        "resume is not above 0",
        "restore the mesh keys of the earlier run, or start afresh; in a user domain compare "
        "roughness_file with mesh_n_file"},
    StopCode{231, "result file",
             "the file cannot be opened, or its id cannot be read or is none of 112, 122, 132",
             "restart.info names the file: bring it back, or start afresh"},
    StopCode{
        232, "result file",
        "the extents differ from the mesh, a record cannot be read, or the iteration is negative",
        "restore the mesh keys of the earlier run, or start afresh"},
};

}  // namespace

std::span<const StopCode> stop_codes() {
    return table;
}

}  // namespace torvex
