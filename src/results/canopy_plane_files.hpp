#pragma once

#include <string>

#include "base/field.hpp"
#include "canopy/ccd_planes.hpp"

namespace torvex {

// A layer of canopy with the points that it stands on, all of one extent, for common viewers.
struct PlacedCanopyPlane {
    const Field2& x;  // [m]
    const Field2& y;  // [m]
    const Field2& z;  // [m]; a Tecplot file leaves it out
    const CanopyPlane& plane;
};

// A structured grid in the legacy text form of VTK, one point a column, with the scalars Cf, pd and
// rls. i runs fastest.
void write_canopy_vtk(const std::string& path, const PlacedCanopyPlane& canopy);

// A point zone in the text form of Tecplot: x, y, cf, pd, rls. The counts have three digits: beyond
// 999 columns they become stars.
void write_canopy_tecplot(const std::string& path, const PlacedCanopyPlane& canopy);

}  // namespace torvex
