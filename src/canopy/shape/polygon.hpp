#pragma once

#include <cstddef>
#include <vector>

namespace torvex {

// A corner of a polygon in plan.
struct PolygonPoint {
    double x = 0;  // [m]
    double y = 0;
    int line = 0;  // side of the rectangle that it was cut on: 1 to 4, see polygon_clip; 0: none
    bool cut = false;  // made by cutting
};

// POLYGON: a ring of points from its head to its tail; the side from the tail back to the head
// closes it.
struct Polygon {
    std::vector<PolygonPoint> points;

    bool empty() const { return points.empty(); }
};

// The list operations: an empty ring, a point at its tail, and all points given back.
void polygon_init(Polygon& polygon);
void polygon_append(Polygon& polygon, double x, double y);
void polygon_free(Polygon& polygon);

// 0.5 sum (x_next y - x y_next) over all sides [m2]: positive for a ring that runs clockwise in x
// to the right, y up. Taken about the first point, so that a small polygon far from the origin
// keeps its digits. 0 for fewer than two points.
double polygon_area(const Polygon& polygon);

// The ring of points first .. end-1 of two lists; a last point that repeats the first is left out.
Polygon polygon_of_ring(const std::vector<double>& x, const std::vector<double>& y,
                        std::size_t first, std::size_t end);

// sum (y_next + y) (x_next - x) over the ring, closed [m2]: twice the area, positive clockwise.
double ring_turn(const Polygon& ring);

}  // namespace torvex
