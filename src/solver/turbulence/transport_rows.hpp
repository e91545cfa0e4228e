#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/row.hpp"

namespace torvex {

// The six products of the area vectors xi, eta, zeta of a row of cells.
struct ProductRows {
    Row<float> xi_xi, et_et, ze_ze, xi_et, xi_ze, et_ze;
};

// A row of faces between `low` and `high` cells: in the direction of i the high row is the low one
// shifted by a cell, in the other two it is a row of its own.
struct FaceSide {
    Row<const float> vis, vol, den;
    Row<const float> own;            // squared area vector across the face
    Row<const float> first, second;  // its products with the two other area vectors
};
struct TransportFaces {
    Row<const float> factor;  // weight of the high side
    FaceSide low, high;
    Row<const float> flux;  // volume flux [m3/s]
    // Node values beside the face, summed along one direction in the face and subtracted along the
    // other: half of (a - b) is the difference of phi along the first of the two directions, half
    // of (c + d) that along the second.
    Row<const float> a, b, c, d;
    Row<float> to_high;  // coefficient of the low cell towards the high one
    Row<float> to_low;   // and of the high cell towards the low one
    Row<float> cross;    // cross diffusion through the face
};

// Coefficients and cross diffusion of the faces first..last; over_sigma is 1/sigma.
void transport_faces(const TransportFaces& face, float over_sigma, int first, int last);

// All six products of row (j,k), and the three that the faces between planes need.
void metric_products(const GridGeometry& g, int j, int k, const ProductRows& out);
void zeta_products(const GridGeometry& g, int j, int k, const ProductRows& out);

// phi on the i faces 1..nx of row (j,k).
void to_i_faces(const GridGeometry& g, const Field3& phi, int j, int k, Row<float> out);

}  // namespace torvex
