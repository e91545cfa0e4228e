#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "base/field.hpp"
#include "maps/local_metric.hpp"
#include "mesh/grid_geometry.hpp"

namespace torvex {

// What is seen of a case before it runs: the ground of the mesh, its roughness, the study area and
// the marked points, all in the frame of one wind direction, in metres from the case centre.
struct Preview {
    const CaseSettings& settings;
    const GridGeometry& grid;  // xc, yc, zc at k = 1: the ground under the cells, ghosts included
    const Field2& z0;          // ni*nj [m]
    std::vector<std::vector<MeshPosition>> outlines;  // closed: the first point once more
    MeshPosition monitor;
    std::vector<MeshPosition> sites;  // N_SITE of them
};

// Zone of points x, y, z, z0 between the marker lines of a viewer, behind the keys of the case and
// followed by outlines and marks.
void write_preview_map(const std::string& path, const Preview& preview);

// The roughness, one value a line in F10.5, i fastest.
void write_preview_roughness(const std::string& path, const Field2& z0);

// TERRAIN.GRD and ROUGH.GRD. Their limits are the extremes of x on the first row and of y on the
// first column.
void write_preview_grids(const Preview& preview);

}  // namespace torvex
