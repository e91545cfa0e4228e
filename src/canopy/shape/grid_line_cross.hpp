#pragma once

#include <vector>

#include "canopy/shape/polygon_clip.hpp"

namespace torvex {

// The lines of the mesh in plan.
struct GridLines {
    std::vector<double> x;  // ascending [m]
    std::vector<double> y;
};
// Takes copies of the lines; both lists rise.
void set_grid_lines(GridLines& lines, const std::vector<double>& x, const std::vector<double>& y);

// Where the straight line through two points of a grid line meets that through a segment.
struct GridLineCross {
    PlanPoint point;   // the crossing; the first point of the segment where there is none
    int i = 0, j = 0;  // last line at or below the point, from 1; 0 below the first
    int code = 4;      // of a crossing: 4. Without one: 0 the point lies on no line, 1 on a y line,
                       // 2 on an x line, 3 on both
};

// stops   210 both points of the grid line are equal, 211 those of the segment
// tells   "Error[212]: ZERO DIVISION." where both are parallel, and goes on
GridLineCross grid_line_cross(const GridLines& lines, PlanPoint line_a, PlanPoint line_b,
                              PlanPoint segment_a, PlanPoint segment_b);

}  // namespace torvex
