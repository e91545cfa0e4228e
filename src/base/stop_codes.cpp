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
    StopCode{1, "case file", "a group, key or value of the case file cannot be used",
             "the message names file, line and key, and what was expected there"},
    StopCode{1, "files", "a file of the run cannot be read or written",
             "the message names the file and the system's reason"},
    StopCode{2, "user stop", "#stop_message was found; the results of the direction are written",
             "no failure; set RESTART_FLAG = 1 to go on later"},
    StopCode{102, "command line", "an argument is neither /f nor the file name behind it",
             "usage: torvex [/f CASE_FILE]"},
    StopCode{161, "monitor", "the monitor point lies outside the study area or the mesh",
             "move MONITOR_LON and MONITOR_LAT, or set MONITOR_POSITION = 0"},
    StopCode{162, "monitor", "MONITOR_HEIGHT is above CONSTANT_DZ_HEIGHT",
             "lower MONITOR_HEIGHT (30 m when MONITOR_POSITION is 0) or raise CONSTANT_DZ_HEIGHT"},
    StopCode{163, "monitor", "MONITOR_HEIGHT is not above 0", "give a height above ground"},
    StopCode{185, "nesting", "a required key of the block nest_points is missing or unreadable",
             "give all keys of the block; only nest_bc_distr and nest_bc_ofix may be left out"},
    StopCode{191, "case file", "ATLAS_FLAG is 1 with a TERRAIN_MODE that begins with \"flat\"",
             "an atlas run needs real terrain: change one of the two keys"},
};

}  // namespace

std::span<const StopCode> stop_codes() {
    return table;
}

}  // namespace torvex
