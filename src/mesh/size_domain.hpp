#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/load_maps.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// Domain sizing: how far the mesh reaches from the centre of the study area, and the node lines.
//
// The study area may stand at any angle to the wind, so all is measured from the radius max_rad of
// the circle round it; the lines then serve every wind direction. In x, downwind:
//
//   edge | buffer zone | additional zone | circle, centre at 0, circle | buffer zone | edge
//
// Only the upwind side has an additional zone. Cells grow outward by the spacing law of
// next_spacing.hpp; a zone ends at the first node on or beyond its limit. XYCONF, if given, brings
// the lines from a file instead. The top is MAX_Z = max(Hmax + 1000 m, 1500 m) unless given.
//
// reads   keys of NML_CASEFILE, NML_BOUNDARY_TREATMENT, NML_ER on sizes; the basic terrain map
// writes  console and run log; everything in MeshLines
// stops   156, 157 spacing keys; 152 levels; 111-113 map; 1 for values that no mesh can have
MeshLines size_domain(const CaseSettings& settings, MapState& maps, RunLog& log);

}  // namespace torvex
