#include "canopy/shape/polygon.hpp"

namespace torvex {

void polygon_init(Polygon& polygon) {
    polygon.points.clear();
}

void polygon_append(Polygon& polygon, double x, double y) {
    polygon.points.push_back({x, y});
}

void polygon_free(Polygon& polygon) {
    polygon.points = {};
}

double polygon_area(const Polygon& polygon) {
    const std::vector<PolygonPoint>& p = polygon.points;
    if (p.size() < 2) {
        return 0;
    }
    const double x0 = p.front().x;
    const double y0 = p.front().y;
    double sum = 0;
    for (std::size_t n = 0; n < p.size(); ++n) {
        const PolygonPoint& here = p[n];
        const PolygonPoint& next = p[n + 1 < p.size() ? n + 1 : 0];
        sum += (next.x - x0) * (here.y - y0) - (here.x - x0) * (next.y - y0);
    }
    return 0.5 * sum;
}

Polygon polygon_of_ring(const std::vector<double>& x, const std::vector<double>& y,
                        std::size_t first, std::size_t end) {
    if (end > first + 1 && x[end - 1] == x[first] && y[end - 1] == y[first]) {
        --end;
    }
    Polygon ring;
    polygon_init(ring);
    ring.points.reserve(end - first);
    for (std::size_t n = first; n < end; ++n) {
        polygon_append(ring, x[n], y[n]);
    }
    return ring;
}

double ring_turn(const Polygon& ring) {
    const std::vector<PolygonPoint>& p = ring.points;
    double sum = 0;
    for (std::size_t n = 0; n < p.size(); ++n) {
        const PolygonPoint& here = p[n];
        const PolygonPoint& next = p[n + 1 < p.size() ? n + 1 : 0];
        const double y0 = p.front().y;  // drops out of the sum of a closed ring, but not its digits
        sum += ((next.y - y0) + (here.y - y0)) * (next.x - here.x);
    }
    return sum;
}

}  // namespace torvex
