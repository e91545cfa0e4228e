#include "maps/conversion/mosaic.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <string_view>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "maps/conversion/esri_grid.hpp"
#include "maps/map_file.hpp"
#include "roughness/roughness_mean.hpp"

namespace torvex {

namespace {

DegreeRaster read_source(const std::string& path, Quantity quantity, RunLog& log) {
    const bool roughness = quantity == Quantity::roughness;
    if (path.ends_with(".asc")) {
        return read_esri_grid(path, roughness);
    }
    const MapRole role{roughness ? "roughness map of the mosaic" : "elevation map of the mosaic",
                       "the index of DB_DR", roughness ? 130 : 110, roughness};
    const auto map = read_map_file(path, role, nullptr, log);
    DegreeRaster raster = raster_of(map->header);
    raster.values = *map->values;
    return raster;
}

// Between which two points of an axis a sample lies, and the weight of the upper one.
struct Between {
    int lower = 0;  // from 1
    double w = 0;
};

// A sample that stands on a point but for rounding takes that point alone.
std::optional<Between> between(double at, double base, double step, int count) {
    constexpr double rounding = 1.0e-6;  // of a step
    double u = (at - base) / step;
    if (std::abs(u - std::round(u)) < rounding) {
        u = std::round(u);
    }
    if (!(u >= 0.0 && u <= count - 1.0)) {
        return std::nullopt;
    }
    const int lower = std::min(static_cast<int>(u), count - 2);
    return Between{lower + 1, u - lower};
}

class Blend {
 public:
    explicit Blend(Quantity quantity) : roughness_(quantity == Quantity::roughness) {}

    void add(float value, double weight) {
        if (weight > 0.0) {
            const double v =
                roughness_ && !std::isnan(value) ? R(value) : static_cast<double>(value);
            sum_ += v * weight;
        }
    }
    float value() const {
        if (std::isnan(sum_)) {
            return std::numeric_limits<float>::quiet_NaN();
        }
        return roughness_ ? Z(sum_) : static_cast<float>(sum_);
    }

 private:
    bool roughness_;
    double sum_ = 0.0;
};

// NaN where the map does not cover the place.
float value_at(const DegreeRaster& map, double lon, double lat, Quantity quantity) {
    const Field2& v = map.values;
    const std::optional<Between> x = between(lon, map.base_lon, map.d_lon, v.ni());
    const std::optional<Between> y = between(lat, map.base_lat, map.d_lat, v.nj());
    if (!x || !y) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    const int i = x->lower;
    const int j = y->lower;
    Blend blend(quantity);
    blend.add(v(i, j), (1.0 - x->w) * (1.0 - y->w));
    blend.add(v(i + 1, j), x->w * (1.0 - y->w));
    blend.add(v(i, j + 1), (1.0 - x->w) * y->w);
    blend.add(v(i + 1, j + 1), x->w * y->w);
    return blend.value();
}

// First sample at or below the lower limit, and how many reach the upper one.
struct Axis {
    double base = 0;
    double count = 0;
};

Axis axis_over(double low, double high, double origin, double step) {
    const double first = std::floor((low - origin) / step);
    const double last = std::ceil((high - origin) / step);
    return {.base = origin + first * step, .count = last - first + 1.0};
}

void require_cover(const DegreeRaster& map, Quantity quantity) {
    const auto total = static_cast<double>(map.values.size());
    const auto missing =
        static_cast<double>(std::count_if(map.values.data(), map.values.data() + map.values.size(),
                                          [](float value) { return std::isnan(value); }));
    if (missing == 0.0) {
        return;
    }
    const auto* first = std::find_if(map.values.data(), map.values.data() + map.values.size(),
                                     [](float value) { return std::isnan(value); });
    const std::int64_t at = first - map.values.data();
    const int i = static_cast<int>(at % map.values.ni()) + 1;
    const int j = static_cast<int>(at / map.values.ni()) + 1;
    stop(1,
         std::string(quantity == Quantity::roughness ? "roughness" : "elevation") +
             ": no map of the mosaic covers" + edit::F(map.lon(i) / 60.0, 11, 5) +
             " degrees east," + edit::F(map.lat(j) / 60.0, 10, 5) + " degrees north; in all" +
             edit::F(100.0 * missing / total, 7, 2) + " % of the area is not covered",
         "the index of DB_DR", "add maps, or make the study area or its buffers smaller");
}

}  // namespace

MosaicSources read_mosaic_sources(const std::string& directory, const std::string& index,
                                  Quantity quantity, RunLog& log) {
    const std::string path = (std::filesystem::path(directory) / index).string();
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        stop(1, "the index of the mosaic cannot be read", path,
             "list the maps in it, one on a line");
    }
    MosaicSources sources;
    std::string with_datum;
    for (const std::string_view line : split_lines(*text)) {
        const std::string_view name = trimmed(line);
        if (name.empty() || name.front() == '#') {
            continue;
        }
        const std::string file = (std::filesystem::path(directory) / name).string();
        DegreeRaster map = read_source(file, quantity, log);
        if (map.datum != 0 && sources.datum == 0) {
            sources.datum = map.datum;
            with_datum = file;
        } else if (map.datum != 0 && map.datum != sources.datum) {
            stop(1, "the geodetic_system of the map differs from that of " + with_datum, file,
                 "bring the maps of a mosaic to one datum");
        }
        sources.names.push_back(file);
        sources.maps.push_back(std::move(map));
    }
    if (sources.maps.empty()) {
        stop(1, "the index of the mosaic names no map", path, "list the maps in it, one on a line");
    }
    return sources;
}

DegreeRaster mosaic(const MosaicSources& sources, const AreaLimits& area, double d_lon,
                    double d_lat, Quantity quantity) {
    const DegreeRaster& first = sources.maps.front();
    DegreeRaster map;
    map.datum = sources.datum;
    map.d_lon = d_lon > 0.0 ? d_lon : first.d_lon;
    map.d_lat = d_lat > 0.0 ? d_lat : first.d_lat;
    const Axis x = axis_over(area.lon_min, area.lon_max, first.base_lon, map.d_lon);
    const Axis y = axis_over(area.lat_min, area.lat_max, first.base_lat, map.d_lat);
    require_reasonable_size(x.count, y.count, "the map of the mosaic");
    map.base_lon = x.base;
    map.base_lat = y.base;
    map.values.allocate(static_cast<int>(x.count), static_cast<int>(y.count));
    for (int j = 1; j <= map.values.nj(); ++j) {
        for (int i = 1; i <= map.values.ni(); ++i) {
            float value = std::numeric_limits<float>::quiet_NaN();
            for (const DegreeRaster& source : sources.maps) {
                value = value_at(source, map.lon(i), map.lat(j), quantity);
                if (!std::isnan(value)) {
                    break;
                }
            }
            map.values(i, j) = value;
        }
    }
    require_cover(map, quantity);
    return map;
}

}  // namespace torvex
