#pragma once

#include "prep/direction_canopy_file.hpp"
#include "prep/prep_case.hpp"

namespace torvex {

// Writes the columns of the mesh of a direction as rectangles, in degrees, to be looked at in a
// GIS: restart_stem "roughness.shp" with the fields POLYGON, LandUse, LandUseID, RLS, Height,
// Z0org. Height and RLS are the greatest of the column's layers, Z0org the roughness of the maps.
void write_check_shapefile(const PrepCase& prep, const DirectionCanopy& canopy, int iwd);

}  // namespace torvex
