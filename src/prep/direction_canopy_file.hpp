#pragma once

#include <string>
#include <vector>

#include "base/field.hpp"
#include "canopy/canopy_records.hpp"
#include "canopy/grid_parameters.hpp"
#include "mesh/grid_geometry.hpp"
#include "prep/canopy_source.hpp"
#include "prep/prep_case.hpp"

namespace torvex {

// What a set brings to the mesh of a direction.
struct SetOnMesh {
    const CanopySource* source = nullptr;
    ColumnLists columns;
    GridParameters gp;
    int used = 0;           // polygons with a piece in the mesh
    double plan_area = 0;   // of the polygons inside the mesh [m2]
    double cover_area = 0;  // cover times area of the columns [m2]
};

// The canopy of a direction before it is written, and what its report tells of.
struct DirectionCanopy {
    std::vector<SetOnMesh> sets;  // those that are on
    CanopyRecords records;
    Field2 map_z0;  // roughness of the maps alone [m]
    GridGeometry grid;

    int used() const;
};

// Mesh, pieces, parameters and ground roughness of direction iwd; nothing is written.
DirectionCanopy make_direction_canopy(PrepCase& prep, const std::vector<CanopySource>& sources,
                                      int iwd);

// Tells console and log of the direction what became of the polygons, and warns where the canopy
// does not act as its author may think.
void report_direction_canopy(PrepCase& prep, const DirectionCanopy& canopy, int iwd);

}  // namespace torvex
