#pragma once

#include "base/field.hpp"
#include "canopy/canopy_records.hpp"

namespace torvex {

// The canopy of a direction seen from above: three values a column, ghost columns included.
struct CanopyPlane {
    Field2 cf;   // drag coefficient [-]                                            ni*nj
    Field2 pd;   // packing density [-] of a layer; of a sum: density times height [m]
    Field2 rls;  // length measure [m]
};

// CCD_EXTRACT_K: layer k of the records as it stands. Stops with 1 where the records have no such
// layer.
CanopyPlane CCD_EXTRACT_K(const CanopyRecords& records, int k);

// CCD_SUM_K: all layers of a column in one, with the same drag:
//
//   pd = sum(phi dz),  cf = sum(cf phi dz)/pd,  rls = cf pd / sum(cf phi dz / length)
//
// so that 0.5 cf pd / rls is the drag density integrated over the height. Where all cf are 0, rls
// is the mean length weighted by phi dz; a column without canopy has three zeros. `dz` are the
// thicknesses of the cells [m], of the extents of the records. Sums in double precision, upwards.
CanopyPlane CCD_SUM_K(const CanopyRecords& records, const Field3& dz);

}  // namespace torvex
