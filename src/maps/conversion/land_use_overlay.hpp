#pragma once

#include <cstdint>
#include <string>

#include "base/field.hpp"
#include "base/run_log.hpp"
#include "maps/conversion/conversion_settings.hpp"
#include "maps/conversion/degree_raster.hpp"

namespace torvex {

inline constexpr const char* roughness_check_name = "roughness_check_tvm.shp";

// What the check of a roughness map shows beside the map itself, one value a sample.
struct RoughnessCheck {
    int cs = 0;                        // coordinate system of the land-use file
    Field2 z0org;                      // roughness before the shapefile [m]
    Array2<std::int32_t> land_use_id;  // of the last polygon on the sample; 0: none
    Field2 height;                     // of the tallest building or tree on the sample [m]
};

// Lays the land-use shapefile of a case over a roughness map. On the rectangle round each sample,
//
//   z0 = Z((1 - c) R(raster) + sum f R(z0 of polygon)),  c = min(1, sum f)
//
// with f the share of the rectangle in each polygon; shares that sum above 1 are scaled. A polygon
// has the roughness of its column %dbf_z0, or of its land-use id through the tables.
//
// reads   block shp_parameters of the case file: trdb2shp_fn, shp_def_cs, the keys trdb2shp%...;
//         sf_build and sf_tree, whose heights the check shows
// writes  `roughness`; console: "Now Cliping Landuse Shapfile:" and the name
// stops   1, and those of shapefiles and tables
RoughnessCheck overlay_land_use(const ConversionSettings& settings, const std::string& case_name,
                                RunLog& log, DegreeRaster& roughness);

// The check as a shapefile in the current directory: a rectangle for each sample, with its
// roughness in RLS and that before the shapefile in Z0org.
void write_roughness_check(const DegreeRaster& roughness, const RoughnessCheck& check);

}  // namespace torvex
