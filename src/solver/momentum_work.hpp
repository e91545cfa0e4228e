#pragma once

#include <vector>

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"

namespace torvex {

// What one thread keeps while it assembles a momentum equation plane by plane. Rows and planes
// carry an unused place before i = 1, so that a row pointer takes the index of the cell or face.
struct MomentumScratch {
    static constexpr int components = 3;  // u, v, w; an equation alone takes the first rows

    // The rows of the walk. What the faces across an axis give takes six from its name on: the flux
    // of each component, then see coupling_row; those of north and south swap places from row to
    // row.
    enum RowName {
        east,
        north = east + components + 3,
        south = north + components + 3,
        top = south + components + 3,
        deferred = top + components + 3,  // deferred convection through the inner faces of a row
        nothing = deferred + components,  // and through boundary faces: never written, all 0
        log_viscosity,                    // viscosity of log faces
        row_count
    };

    Field3 corner;         // u, v, w at the nodes of the plane in hand            (nx+1, ny, 3)
    Field3 level;          // u, v, w at the edges along k through the cells above (nx+1, ny, 3)
    Field2 column;         // u, v, w between two columns of those cells, one row  (nx+1, 3)
    Field3 lower;          // corner rows j-1 and j of the plane below             (nx+1, 2, 3)
    Field3 bottom;         // explicit flux through the bottom faces               (nx+1, ny, 3)
    Field2 bottom_to_low;  // coefficient of the cell above towards the one below  (nx+1, ny)
    Field2 rows;           // (nx+1, row_count)
};

// Scratch of the momentum equations: made at the first use in a direction and kept.
struct MomentumWork {
    std::vector<MomentumScratch> threads;
};

// Makes room for the threads of the next parallel region; does nothing if the room is there.
void fit(MomentumWork& work, const GridGeometry& g);

}  // namespace torvex
