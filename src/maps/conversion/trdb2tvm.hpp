#pragma once

#include "base/run_log.hpp"
#include "maps/conversion/conversion_settings.hpp"

namespace torvex {

// trdb2tvm: from a database of elevation and land use, a mosaic of maps or a land-use shapefile to
// the maps of a planned case, large enough for every wind direction. All maps are complete in
// memory before the first is written.
//
// reads   the database; with a shapefile the block shp_parameters of "torvex.tin"; where land use
// is
//         converted, "conv_table.tin" and "cnpy_conv_table.tin"
// writes  BASIC_H_FILE, BASIC_Z0_FILE, their pictures, "roughness_check_tvm.shp"; console and log
// stops   1 and those of map files, each naming the file
void trdb2tvm(const ConversionSettings& settings, RunLog& log);

}  // namespace torvex
