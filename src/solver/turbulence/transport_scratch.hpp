#pragma once

#include <vector>

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"

namespace torvex {

// What one thread keeps while it walks upwards through its planes of cells: values that the plane
// above shares with the plane in hand, and rows that the next row shares.
struct PlaneScratch {
    // The rows of the walk. Those with a low and a high part swap places from row to row.
    enum RowName {
        phi_low,  // phi on the i faces
        phi_high,
        sum_low,  // sum and difference in k of the node values
        sum_high,
        difference_low,
        difference_high,
        node_sum,  // sum and difference in j of the node values on top
        node_difference,
        cross_east,  // cross diffusion through the faces
        cross_south,
        cross_north,
        cross_top,
        cross_balance,                     // and its balance in the cells
        products_low,                      // metric products of row j, six rows from here on
        products_high = products_low + 6,  // of row j + 1
        products_top = products_high + 6,  // of the plane above
        log_viscosity = products_top + 6,  // of log faces
        unused,                            // takes coefficients that another thread writes
        row_count
    };

    Field2 level;         // phi at the nodes' place within the plane of cells above   nx*ny
    Field2 node;          // phi at the nodes on top of the plane                      nx*ny
    Field2 cross_bottom;  // cross diffusion through the bottom faces of the next row  ni*nj
    Field2 rows;          // ni*row_count
};

// Scratch of the turbulence assembly, kept from one iteration to the next.
struct TransportScratch {
    std::vector<PlaneScratch> threads;
    Field2 column_moment, column_sum;  // sums over the columns of cells, CALCLM   ni*nj
};

// Room for the mesh and the threads in use; nothing happens where it is there.
void fit(TransportScratch& scratch, const GridGeometry& g);
void fit_columns(TransportScratch& scratch, const GridGeometry& g);

}  // namespace torvex
