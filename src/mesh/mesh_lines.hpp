#pragma once

#include "base/line1.hpp"
#include "maps/load_maps.hpp"

namespace torvex {

// What domain sizing fixes once for the run: the node lines, their marks and the mesh counts. All
// wind directions share them. Counts n_* are cells outward from the centre.
struct MeshLines {
    Line1 x_line;  // node planes along the wind, centre at 0 [m]
    Line1 y_line;  // across the wind [m]
    Line1 z_line;  // levels above ground [m]

    int nx = 0, ny = 0, nz = 0;  // node planes
    int ni = 0, nj = 0, nk = 0;  // cells with both boundary layers: nx + 1, ...

    int i_centre = 0, j_centre = 0;  // planes through the centre
    float max_rad = 0;               // radius of the study circle [m]
    float need_length = 0;           // reach of the maps for any direction [m]; 0: not known

    int n_inner = 0;                       // to max_rad
    int n_add = 0;                         // upwind, to the end of the additional zone
    int n_up = 0, n_down = 0, n_side = 0;  // to the edges
    int n_blend_up = 0, n_blend_down = 0, n_blend_side = 0;  // to the start of the flat parts
    int n_connect_up = 0, n_connect_down = 0;  // to the end of the flat parts, where reached

    ElevationRange elevation;  // inside the circle through the mesh's corner
    float MAX_Z = 0;           // domain top above the map datum [m]
    float z_top = 0;           // top of z_line [m]: MAX_Z, or the mean height above ground
};

}  // namespace torvex
