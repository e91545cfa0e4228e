#include "mesh/next_spacing.hpp"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/stop.hpp"
#include "mesh/integer_power.hpp"

namespace torvex {

namespace {

// Far beyond every walk, and small enough that two of them add up without overflow.
constexpr float count_limit = 1.0e9F;
constexpr int endless_stretch = 100000;

int bounded_count(float value) {
    return static_cast<int>(std::clamp(value, -count_limit, count_limit));
}

float width(const SpacingLaw& law, int m) {
    if (m <= law.n_fine) {
        return law.MIN_DXY;
    }
    if (m <= law.n_fine + law.n_stretch) {
        return integer_power(law.MESH_HRATIO, m - law.n_fine) * law.MIN_DXY;
    }
    return law.MAX_DXY;
}

}  // namespace

SpacingLaw spacing_law(const CaseSettings& settings) {
    SpacingLaw law;
    law.MIN_DXY = settings.MIN_DXY;
    law.MAX_DXY = settings.MAX_DXY;
    law.MESH_HRATIO = settings.MESH_HRATIO;
    law.n_fine = bounded_count(std::ceil(settings.MIN_DXY_RAD / settings.MIN_DXY));
    law.n_stretch = endless_stretch;
    if (settings.MESH_HRATIO != 1.0F) {
        law.n_stretch = bounded_count(
            std::log(settings.MAX_DXY / settings.MIN_DXY) / std::log(settings.MESH_HRATIO) - 1.0F);
    }
    return law;
}

void next_spacing(const SpacingLaw& law, SpacingWalk& walk) {
    if (walk.m >= most_cells_outward) {
        stop(1,
             "the domain needs more than " + std::to_string(most_cells_outward) +
                 " cells from its centre to an edge",
             "keys MIN_DXY, MAX_DXY, MESH_HRATIO",
             "use wider cells, a smaller study area or narrower buffer zones");
    }
    ++walk.m;
    walk.acc += width(law, walk.m);
}

}  // namespace torvex
