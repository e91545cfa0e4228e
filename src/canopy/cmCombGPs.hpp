#pragma once

#include "canopy/canopy_records.hpp"
#include "canopy/grid_parameters.hpp"

namespace torvex {

// What a canopy file says of a cell.
struct CanopyCell {
    float cf = 0;      // drag coefficient [-]
    float phi = 0;     // packing density [-]
    float length = 0;  // length measure [m]
};

// Two canopies in one cell. The drag 0.5 cf phi/length is the sum of both, as long as the densities
// sum to no more than 1:
//
//   phi    = min(1, phi1 + phi2)
//   cf     = (cf1 phi1 + cf2 phi2)/(phi1 + phi2)
//   length = cf phi/(cf1 phi1/length1 + cf2 phi2/length2)
//
// Without any drag the length is the mean weighted by phi; without any density all is 0.
CanopyCell combined(const CanopyCell& one, const CanopyCell& other);

// Adds the grid parameters of a set to what the records hold of others. Layer k of the set is cell
// k + 1 of the records, whose ghosts stay as they are.
void cmCombGPs(const GridParameters& gp, CanopyRecords& records);

}  // namespace torvex
