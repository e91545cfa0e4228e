#pragma once

#include <cstdint>
#include <vector>

#include "base/field.hpp"
#include "canopy/canopy_pieces.hpp"
#include "canopy/layer_levels.hpp"

namespace torvex {

// The canopy of one set of shapes on the mesh of a wind direction. Columns i = 2..nx, j = 2..ny,
// layers k = 1..nz-1 (see LayerLevels); 0 where there is none.
struct GridParameters {
    Field3 gp_density;  // packing density, averaged over the layer [-]        nx*ny*(nz-1)
    Field3 gp_length;   // length measure, averaged over what is filled [m]
    Field3 gp_cf;       // drag coefficient, averaged over what is filled [-]
    Field3 gp_height;   // greatest height of the entities that reach the layer [m]
    Field3 gp_fill;     // greatest height that is filled within the layer [m]

    // Of the column; of the attributes the last piece of its list decides.
    Field2 gp_cover;               // sum of the area fractions [-]            nx*ny
    Field2 gp_z0, gp_z0org;        // roughness length, and before any change [m]
    Array2<std::int32_t> gp_luid;  // land-use id
};

// Extent of every entity across a direction: the least and the greatest crosswind coordinate [m].
struct FrontalExtents {
    struct Extent {
        double a = 0;
        double b = 0;
    };
    std::vector<std::vector<Extent>> of;  // by direction, then by entity
};

// Frontal areas of the pieces of each layer.
struct FrontalAreas {
    std::vector<Field3> gp_frontal;  // by direction [m2]   nx*ny*(nz-1)
};

// Both fill the set from the column lists:
//
//   f   filled height of a piece in the layer
//   p'  = pd f/dz
//   gp_density = sum fraction p', at most 1
//   gp_length  = sum fraction rls p'/(h + eps), over gp_density, times gp_height
//   gp_cf      = sum fraction p' cf / sum fraction p'
//
// cmCalcGP_ZEN gives the length another meaning where there are frontal areas, those of one
// direction: gp_density S dz/(gp_frontal s). s, the area of the pieces over that of the polygons
// they are of, shares out among the columns the frontal area of a polygon, which gp_frontal holds
// whole, so that density/length sums up to it once.
//
// stops 1 with "ERR in cmCalcGP_LU", "ERR in cmCalcGP_ZEN" for a height that lies in no layer
GridParameters cmCalcGP_LU(const ColumnLists& columns, const LayerLevels& levels);
GridParameters cmCalcGP_ZEN(const ColumnLists& columns, const LayerLevels& levels,
                            const std::vector<CanopyEntity>& entities, const Array2<double>& S,
                            const Field3* gp_frontal = nullptr);

// The area that the pieces of a column show to the wind from each direction in a layer: that of the
// upper envelope of rectangles as wide as the entity and as high as it fills the layer, so that
// what stands behind another counts once. Stops 1 with "ERR in cmCalcFA_ZEN" as above.
FrontalAreas cmCalcFA_ZEN(const ColumnLists& columns, const LayerLevels& levels,
                          const FrontalExtents& extents);

// Extents across the wind from `directions`, for entities in the mesh frame of `wind_direction`,
// all in degrees.
FrontalExtents frontal_extents(const std::vector<CanopyEntity>& entities, float wind_direction,
                               const std::vector<float>& directions);

// The place, from 0, of the direction nearest to `wind_direction`; a front looks the same from
// behind, so 180 degrees do not count. The first of equals.
std::size_t nearest_front(const std::vector<float>& directions, float wind_direction);

// Areas of the columns between the node lines [m2]; 0 at i = 1 and j = 1.
Array2<double> column_areas(const Line1& x_line, const Line1& y_line);

}  // namespace torvex
