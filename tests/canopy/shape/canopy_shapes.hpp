#pragma once

#include <cmath>
#include <initializer_list>
#include <vector>

#include "base/line1.hpp"
#include "canopy/canopy_pieces.hpp"
#include "canopy/clip_entities_to_cells.hpp"

namespace torvex::test {

// Lines from `first`, `step` apart.
inline Line1 even_line(int count, float first, float step) {
    Line1 line(count);
    for (int n = 1; n <= count; ++n) {
        line(n) = first + static_cast<float>(n - 1) * step;
    }
    return line;
}

struct Corner {
    double x, y;
};

inline void add_ring(CanopyEntity& entity, std::initializer_list<Corner> corners) {
    entity.part_start.push_back(static_cast<int>(entity.x.size()));
    for (const Corner& corner : corners) {
        entity.x.push_back(corner.x);
        entity.y.push_back(corner.y);
    }
    entity.outline_area = outline_area(entity.part_start, entity.x, entity.y);
}

// Clockwise, as outer rings of a shapefile are; `hole` turns it.
inline void add_box(CanopyEntity& entity, double x, double y, double width, double length,
                    bool hole = false) {
    const double X = x + width;
    const double Y = y + length;
    if (hole) {
        add_ring(entity, {{x, y}, {X, y}, {X, Y}, {x, Y}, {x, y}});
    } else {
        add_ring(entity, {{x, y}, {x, Y}, {X, Y}, {X, y}, {x, y}});
    }
}

// A solid block whose length is the side of its square.
inline CanopyEntity block(double x, double y, double side, float height) {
    CanopyEntity entity;
    entity.attributes.h = height;
    entity.attributes.pd = 1;
    entity.attributes.rls = static_cast<float>(side);
    entity.attributes.cf = 1;
    entity.attributes.z0 = 0.03F;
    entity.attributes.method = CanopyMethod::ZEN;
    add_box(entity, x, y, side, side);
    return entity;
}

}  // namespace torvex::test
