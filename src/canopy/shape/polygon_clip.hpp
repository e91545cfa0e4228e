#pragma once

#include "canopy/shape/polygon.hpp"

namespace torvex {

// A point in plan [m].
struct PlanPoint {
    double x = 0;
    double y = 0;
};

// Sides of the rectangle, in the order in which a polygon is cut by them.
inline constexpr int low_x_side = 1;
inline constexpr int high_x_side = 2;
inline constexpr int low_y_side = 3;
inline constexpr int high_y_side = 4;

// What of `polygon` lies on the inner side of one side of a rectangle, the line x = at or y = at.
Polygon clip_at_side(const Polygon& polygon, int side, double at);

// Sutherland and Hodgman (1974): what of `polygon` lies in the rectangle from `low` to `high`, cut
// by one side after the other. Empty where it misses the rectangle. A concave polygon may come out
// with coincident sides along the rectangle; its area is right.
Polygon polygon_clip(const Polygon& polygon, PlanPoint low, PlanPoint high);

}  // namespace torvex
