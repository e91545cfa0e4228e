#pragma once

#include "base/case_settings.hpp"

namespace torvex {

// Spacing law of the horizontal node lines. Cell m outward from the centre has the width
//
//   d(m) = MIN_DXY                              m <= n_fine
//   d(m) = MESH_HRATIO^(m - n_fine) * MIN_DXY   n_fine < m <= n_fine + n_stretch
//   d(m) = MAX_DXY                              beyond
//
// with n_fine = ceil(MIN_DXY_RAD / MIN_DXY) and n_stretch = ln(MAX_DXY / MIN_DXY) / ln(MESH_HRATIO)
// - 1, truncated. The last stretched cell stays below MAX_DXY on purpose, so the step to MAX_DXY
// may be a small jump. All in single precision.
struct SpacingLaw {
    float MIN_DXY = 0;      // finest spacing [m]
    float MAX_DXY = 0;      // coarsest spacing [m]
    float MESH_HRATIO = 1;  // growth factor [-]
    int n_fine = 0;         // cells of MIN_DXY
    int n_stretch = 0;      // growing cells; may be negative, then there are none
};

// A walk outward from the centre: the last cell and the coordinate of its outer node.
struct SpacingWalk {
    int m = 0;
    float acc = 0;  // d(1) + ... + d(m) [m]
};

inline constexpr int most_cells_outward = 20000;  // longest node line on one side of the centre

// The law of the mesh keys, whose values have been checked. MESH_HRATIO = 1 stretches without end.
SpacingLaw spacing_law(const CaseSettings& settings);

// One cell further. A walk beyond most_cells_outward ends the run with status 1.
void next_spacing(const SpacingLaw& law, SpacingWalk& walk);

}  // namespace torvex
