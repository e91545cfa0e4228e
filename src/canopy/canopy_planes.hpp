#pragma once

#include "base/field.hpp"
#include "canopy/canopy_records.hpp"

namespace torvex {

// Canopy parameters in plan, ni*nj.
struct CanopyPlane {
    Field2 cf;   // drag coefficient [-]
    Field2 pd;   // packing density [-]
    Field2 rls;  // length measure [m]
};

// Layer k of the cells, 1..nk.
CanopyPlane CCD_EXTRACT_K(const CanopyRecords& records, int k);

// All layers as one: the densities summed, which may exceed 1, the drag coefficient their mean, and
// the length such that cf pd/rls is the sum over the layers. 0 where there is no canopy.
CanopyPlane CCD_SUM_K(const CanopyRecords& records);

}  // namespace torvex
