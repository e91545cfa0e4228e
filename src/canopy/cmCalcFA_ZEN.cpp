// cmCalcFA_ZEN: the front that the pieces of a column show in each layer.

#include <algorithm>
#include <cmath>
#include <vector>

#include "canopy/grid_parameters.hpp"
#include "canopy/piece_in_layer.hpp"
#include "canopy/shape/polygon.hpp"

namespace torvex {

namespace {

constexpr const char* error = "ERR in cmCalcFA_ZEN";
constexpr double radians_per_degree = 3.14159265358979323846 / 180.0;

struct Front {
    double a, b;  // from .. to across the wind [m]
    double f;     // height [m]
};

// Area below the upper envelope of the fronts.
double envelope_area(const std::vector<Front>& fronts, std::vector<double>& ends) {
    ends.clear();
    for (const Front& front : fronts) {
        ends.push_back(front.a);
        ends.push_back(front.b);
    }
    std::ranges::sort(ends);
    Polygon outline;
    polygon_append(outline, ends.front(), 0);
    for (std::size_t n = 1; n < ends.size(); ++n) {
        double top = 0;
        for (const Front& front : fronts) {
            if (front.a <= ends[n - 1] && front.b >= ends[n]) {
                top = std::max(top, front.f);
            }
        }
        polygon_append(outline, ends[n - 1], top);
        polygon_append(outline, ends[n], top);
    }
    polygon_append(outline, ends.back(), 0);
    return std::abs(polygon_area(outline));
}

}  // namespace

FrontalAreas cmCalcFA_ZEN(const ColumnLists& columns, const LayerLevels& levels,
                          const FrontalExtents& extents) {
    FrontalAreas areas;
    std::vector<Front> fronts;
    std::vector<double> ends;
    for (const std::vector<FrontalExtents::Extent>& extent : extents.of) {
        Field3& gp_frontal = areas.gp_frontal.emplace_back(columns.nx, columns.ny, levels.layers());
        for (int j = 2; j <= columns.ny; ++j) {
            for (int i = 2; i <= columns.nx; ++i) {
                const Ring<CanopyPiece>& list = columns.at(i, j);
                for (int k = 1; k <= levels.layers() && !list.empty(); ++k) {
                    const Layer layer = layer_of(levels, i, j, k);
                    fronts.clear();
                    for (std::size_t n = 0; n < list.size(); ++n) {
                        const CanopyPiece& piece = list[n];
                        const std::optional<double> f =
                            filled_height(static_cast<double>(piece.attributes.h), k, layer, error);
                        if (f) {
                            const auto [a, b] = extent[static_cast<std::size_t>(piece.entity)];
                            fronts.push_back({a, b, *f});
                        }
                    }
                    if (fronts.empty()) {
                        break;
                    }
                    gp_frontal(i, j, k) = static_cast<float>(envelope_area(fronts, ends));
                }
            }
        }
    }
    return areas;
}

FrontalExtents frontal_extents(const std::vector<CanopyEntity>& entities, float wind_direction,
                               const std::vector<float>& directions) {
    FrontalExtents extents;
    for (const float direction : directions) {
        const double turn = (static_cast<double>(direction) - static_cast<double>(wind_direction)) *
                            radians_per_degree;
        const double c = std::cos(turn);
        const double s = std::sin(turn);
        std::vector<FrontalExtents::Extent>& of = extents.of.emplace_back();
        for (const CanopyEntity& entity : entities) {
            FrontalExtents::Extent extent;
            for (std::size_t n = 0; n < entity.x.size(); ++n) {
                const double across = entity.y[n] * c + entity.x[n] * s;
                extent.a = n == 0 ? across : std::min(extent.a, across);
                extent.b = n == 0 ? across : std::max(extent.b, across);
            }
            of.push_back(extent);
        }
    }
    return extents;
}

std::size_t nearest_front(const std::vector<float>& directions, float wind_direction) {
    std::size_t nearest = 0;
    double least = 360;
    for (std::size_t n = 0; n < directions.size(); ++n) {
        const double apart = std::abs(std::remainder(
            static_cast<double>(directions[n]) - static_cast<double>(wind_direction), 180.0));
        if (apart < least) {
            least = apart;
            nearest = n;
        }
    }
    return nearest;
}

}  // namespace torvex
