#include "prep/canopy_source.hpp"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>
#include <string>

#include "base/stop.hpp"
#include "canopy/clip_entities_to_cells.hpp"
#include "canopy/shape/read_shape_file.hpp"
#include "case/shape_set_keys.hpp"
#include "maps/coordinate_ids.hpp"
#include "maps/local_metric.hpp"
#include "roughness/canopy_conv_table.hpp"

namespace torvex {

namespace {

constexpr double leaf_area_density = 0.3;  // of a forest whose lengths are not told [1/m]

struct Defaults {
    double pd, cf, z0;
};
constexpr Defaults building_defaults{1.0, 1.0, 0.03};
constexpr Defaults forest_defaults{0.05, 0.4, 0.03};

// Points of a file in metres east and north of the case centre.
class Placing {
 public:
    Placing(const ShapeSet& set, const CaseSettings& settings)
        : set_(set),
          frame_(coordinate_frame(set.cs_given ? set.cs : settings.shape.shp_def_cs,
                                  set.cs_given ? "key " + set.name + "%cs" : "key shp_def_cs")),
          settings_(settings),
          per_minute_(metres_per_minute(settings.cent_lat_min, settings.GS)) {}

    void to_metres(ShapeEntity& entity) const {
        for (std::size_t n = 0; n < entity.x.size(); ++n) {
            to_metres(entity.number, entity.x[n], entity.y[n]);
        }
    }

 private:
    void to_metres(int entity, double& x, double& y) const {
        if (frame_.metres_from_centre()) {
            return;
        }
        if (frame_.geographic() && !(std::abs(x) <= 180 && std::abs(y) <= 90)) {
            stop(1, "a point is not at degrees of longitude and latitude",
                 set_.filename + ", entity " + std::to_string(entity),
                 "give the coordinate system of the file in " + set_.name +
                     "%cs or shp_def_cs; without it degrees are assumed");
        }
        const MinutesOfArc at = minutes_of_arc(frame_, x, y);
        x = (at.lon - settings_.cent_lon_min) * static_cast<double>(per_minute_.lon);
        y = (at.lat - settings_.cent_lat_min) * static_cast<double>(per_minute_.lat);
    }

    const ShapeSet& set_;
    CoordinateFrame frame_;
    const CaseSettings& settings_;
    MetresPerMinute per_minute_;
};

// From the case centre to the nearest point of the box round the points.
double distance_of_box(const ShapeEntity& entity) {
    const auto [x_low, x_high] = std::ranges::minmax(entity.x);
    const auto [y_low, y_high] = std::ranges::minmax(entity.y);
    return std::hypot(std::max({x_low, -x_high, 0.0}), std::max({y_low, -y_high, 0.0}));
}

// Makes attributes out of what table, land-use classes and defaults say.
class Attributes {
 public:
    Attributes(const ShapeSet& set, CanopyMethod method)
        : set_(set),
          method_(method),
          building_(set.name == building_set),
          defaults_(building_ ? building_defaults : forest_defaults) {
        if (!set.dbf_luid.empty() && std::filesystem::exists(canopy_conv_table_name)) {
            read_canopy_conv_table(classes_);
        }
        if (set.dbf_h.empty() && (building_ || classes_.rows.empty())) {
            stop(1, "no heights: key " + set.name + "%dbf_h is blank", set.filename,
                 building_ ? "name the column of the height"
                           : "name the column of the height, or that of the land-use id in " +
                                 set.name + "%dbf_luid beside a table cnpy_conv_table.tin");
        }
    }

    // False if the entity has no height.
    bool give(const ShapeEntity& shape, CanopyEntity& entity) {
        const CanopyClass* row = class_of(shape);
        CanopyAttributes& a = entity.attributes;
        a.number = shape.number;
        a.method = method_;
        a.luid = shape.luid.null ? -1 : whole(shape.luid.value);
        if (shape.height_state == HeightState::missing ||
            (shape.height_state == HeightState::unasked && row == nullptr)) {
            if (shape.height_state == HeightState::unasked) {
                unknown_codes_.insert(a.luid);
            }
            return false;
        }
        a.h = shape.height_state == HeightState::given ? static_cast<float>(shape.height)
                                                       : std::max(row->p(1), 0.0F);
        const double pd = chosen(set_.dbf_pd, shape.pd, row, 2, 0, defaults_.pd);
        const double length =
            building_ ? std::sqrt(entity.outline_area) : std::min(pd, 1.0) / leaf_area_density;
        a.pd = static_cast<float>(std::min(pd, 1.0));
        a.rls = static_cast<float>(chosen(set_.dbf_rls, shape.rls, row, 3, smallest, length));
        a.cf = static_cast<float>(chosen(set_.dbf_cf, shape.cf, row, 4, 0, defaults_.cf));
        a.z0 = static_cast<float>(chosen(set_.dbf_z0, shape.z0, row, 5, smallest, defaults_.z0));
        a.z0org = static_cast<float>(
            chosen(set_.dbf_z0org, shape.z0org, nullptr, 0, smallest, static_cast<double>(a.z0)));
        return true;
    }

    void refuse_unknown_codes() const {
        if (unknown_codes_.empty()) {
            return;
        }
        std::string codes;
        for (const int code : unknown_codes_) {
            codes += (codes.empty() ? "" : ", ") + std::to_string(code);
        }
        stop(1, "no heights for the land-use ids " + codes, set_.filename,
             "give them a row in cnpy_conv_table.tin, or a column of the height");
    }

 private:
    static constexpr double smallest = 1.0e-30;  // what must be above 0

    static int whole(double value) {
        return std::abs(value) < 2.0e9 ? static_cast<int>(value) : -1;
    }

    const CanopyClass* class_of(const ShapeEntity& shape) const {
        return shape.luid.null ? nullptr
                               : class_of_code(classes_, static_cast<float>(shape.luid.value));
    }

    static double chosen(const std::string& column, const TableNumber& number,
                         const CanopyClass* row, int property, double least, double last_resort) {
        double value = -1;
        if (!column.empty()) {
            value = number.null ? -1 : number.value;
        } else if (row != nullptr) {
            value = static_cast<double>(row->p(property));
        }
        return std::isfinite(value) && value >= least ? value : last_resort;
    }

    const ShapeSet& set_;
    CanopyMethod method_;
    bool building_;
    Defaults defaults_;
    CanopyConvTable classes_;
    std::set<int> unknown_codes_;
};

CanopyMethod method_of(const ShapeSet& set) {
    if (set.data_type != 0) {
        return set.data_type == 2 ? CanopyMethod::ZEN : CanopyMethod::LU;
    }
    return set.name == building_set ? CanopyMethod::ZEN : CanopyMethod::LU;
}

}  // namespace

CanopySource read_canopy_source(const ShapeSet& set, const CaseSettings& settings, double reach,
                                RunLog& log) {
    CanopySource source;
    source.set = set;
    source.method = method_of(set);
    const Placing placing(source.set, settings);
    Attributes attributes(source.set, source.method);
    const auto radius = static_cast<double>(settings.shape.shp_or_radius);

    const ShapeLayer layer = read_shape_file(set, [&](ShapeEntity& shape) {
        placing.to_metres(shape);
        const double distance = distance_of_box(shape);
        if (radius > 0 && !(distance < radius)) {
            ++source.beyond_radius;
            return false;
        }
        if (!(distance < reach)) {
            ++source.out_of_reach;
            return false;
        }
        CanopyEntity entity;
        entity.outline_area = outline_area(shape.part_start, shape.x, shape.y);
        if (!attributes.give(shape, entity)) {
            ++source.missing_heights;
            return false;
        }
        entity.part_start = std::move(shape.part_start);
        entity.x = std::move(shape.x);
        entity.y = std::move(shape.y);
        source.entities.push_back(std::move(entity));
        return false;  // the layer itself keeps nothing
    });
    attributes.refuse_unknown_codes();
    source.polygons = layer.count;
    source.null_shapes = layer.null_shapes;
    source.deleted_rows = layer.deleted_rows;
    log.timed(" " + set.filename + ": " + std::to_string(source.entities.size()) + " of " +
              std::to_string(layer.count) + " polygons in reach of the mesh.");
    return source;
}

std::vector<CanopyEntity> on_mesh(const CanopySource& source, const CentreRotation& rotation) {
    const auto s = static_cast<double>(rotation.s);
    const auto c = static_cast<double>(rotation.c);
    std::vector<CanopyEntity> entities = source.entities;
    for (CanopyEntity& entity : entities) {
        for (std::size_t n = 0; n < entity.x.size(); ++n) {
            const double east = entity.x[n];
            const double north = entity.y[n];
            entity.x[n] = c * east - s * north;
            entity.y[n] = s * east + c * north;
        }
    }
    return entities;
}

}  // namespace torvex
