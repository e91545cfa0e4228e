#include "canopy/shape/polygon_clip.hpp"

namespace torvex {

namespace {

// How far a point lies on the inner side, along the normal of the side.
struct Inside {
    int side;
    double at;

    double operator()(const PolygonPoint& p) const {
        switch (side) {
            case low_x_side:
                return p.x - at;
            case high_x_side:
                return at - p.x;
            case low_y_side:
                return p.y - at;
            default:
                return at - p.y;
        }
    }
};

// Where the side from a to b meets the line; both lie on different sides of it. Counted from the
// inner point, so that a side shared by two polygons is cut at one place in both of its directions.
PolygonPoint cut_point(const PolygonPoint& inner, double inside, const PolygonPoint& outer,
                       double outside, int side, double at) {
    const double t = inside / (inside - outside);
    PolygonPoint p{inner.x + t * (outer.x - inner.x), inner.y + t * (outer.y - inner.y), side,
                   true};
    (side == low_x_side || side == high_x_side ? p.x : p.y) = at;
    return p;
}

}  // namespace

Polygon clip_at_side(const Polygon& polygon, int side, double at) {
    const Inside distance{side, at};
    Polygon kept;
    if (polygon.empty()) {
        return kept;
    }
    kept.points.reserve(polygon.points.size() + 4);
    const PolygonPoint* before = &polygon.points.back();
    double d_before = distance(*before);
    for (const PolygonPoint& here : polygon.points) {
        const double d = distance(here);
        if (d_before >= 0 && d < 0) {
            if (d_before > 0) {
                kept.points.push_back(cut_point(*before, d_before, here, d, side, at));
            }
        } else if (d_before < 0 && d > 0) {
            kept.points.push_back(cut_point(here, d, *before, d_before, side, at));
        }
        if (d >= 0) {
            kept.points.push_back(here);
        }
        before = &here;
        d_before = d;
    }
    return kept;
}

Polygon polygon_clip(const Polygon& polygon, PlanPoint low, PlanPoint high) {
    Polygon piece = clip_at_side(polygon, low_x_side, low.x);
    piece = clip_at_side(piece, high_x_side, high.x);
    piece = clip_at_side(piece, low_y_side, low.y);
    return clip_at_side(piece, high_y_side, high.y);
}

}  // namespace torvex
