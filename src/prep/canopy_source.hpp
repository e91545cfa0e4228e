#pragma once

#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "base/shape_set.hpp"
#include "canopy/canopy_pieces.hpp"
#include "maps/centre_rotation.hpp"

namespace torvex {

// The polygons of a set, placed in metres east and north of the case centre and given all of their
// attributes; they serve every wind direction.
struct CanopySource {
    ShapeSet set;
    CanopyMethod method = CanopyMethod::LU;
    std::vector<CanopyEntity> entities;  // x east, y north [m]

    int polygons = 0;         // in the file
    int null_shapes = 0;      // left out: no polygon
    int deleted_rows = 0;     // left out: deleted in the table
    int missing_heights = 0;  // left out: no height
    int beyond_radius = 0;    // left out: farther than shp_or_radius
    int out_of_reach = 0;     // left out: outside the mesh of any direction

    bool on() const { return !set.filename.empty(); }
};

// Reads a set that is on. `reach` is the radius of the circle round every mesh [m]; what lies
// outside of it takes no memory.
//
// Attributes come from their columns; without a column from the row of cnpy_conv_table.tin that has
// the land-use code, where that file is there; else:
//
//                    sf_build                       others
//   packing density  1                              0.05
//   length RLS       root of the outline's area     packing density/0.3 (leaf area 0.3 1/m)
//   Cf               1                              0.4
//   z0, z0org        0.03, z0                       0.03, z0
//
// A value of a column that is NULL, not finite or below 0 (a length or roughness length: not above
// 0) takes the last resort too.
//
// stops   1 no height to be had, a land-use code without a row, coordinates that cannot be degrees;
//         what read_shape_file stops with
CanopySource read_canopy_source(const ShapeSet& set, const CaseSettings& settings, double reach,
                                RunLog& log);

// The entities in the mesh of a wind direction.
std::vector<CanopyEntity> on_mesh(const CanopySource& source, const CentreRotation& rotation);

}  // namespace torvex
