#include "maps/conversion/land_use_overlay.hpp"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string_view>
#include <vector>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "canopy/clip_entities_to_cells.hpp"
#include "canopy/shape/polygon_clip.hpp"
#include "canopy/shape/read_shape_file.hpp"
#include "case/case_blocks.hpp"
#include "case/case_text.hpp"
#include "case/shape_set_keys.hpp"
#include "maps/conversion/land_use_roughness.hpp"
#include "maps/conversion/lay_over.hpp"
#include "maps/conversion/vectorize_roughness.hpp"
#include "maps/coordinate_ids.hpp"

namespace torvex {

namespace {

CaseText load_shape_keys(const std::string& case_name) {
    std::optional<std::string> text = read_text_file(case_name);
    if (!text) {
        stop(1, "SHP_MODE is on, but there is no case file with a block shp_parameters", case_name,
             "name the land-use shapefile in trdb2shp_fn there, or set SHP_MODE = 0");
    }
    return {case_name, std::move(*text)};
}

// The land-use file of a case; trdb2shp_fn names it before trdb2shp%filename does.
ShapeSet land_use_file(const CaseText& file, const ShapeParameters& parameters, RunLog& log) {
    ShapeSet set = read_shape_set(file, conversion_set, log);
    if (!trimmed(parameters.trdb2shp_fn).empty()) {
        set.filename = parameters.trdb2shp_fn;
    }
    if (trimmed(set.filename).empty()) {
        stop(1, "SHP_MODE is on, but no land-use shapefile is named", file.name,
             "give trdb2shp_fn in the block shp_parameters");
    }
    if (set.dbf_z0.empty() && set.dbf_luid.empty()) {
        stop(1, "the land-use shapefile has no column of roughness", file.name,
             "name it in trdb2shp%dbf_z0, or its land-use ids in trdb2shp%dbf_luid");
    }
    return set;
}

// The number of a set's coordinate system, and where it was given.
struct ChosenSystem {
    int id = 0;
    std::string where;
};

ChosenSystem coordinate_system(const ShapeSet& set, const ShapeParameters& parameters) {
    return set.cs_given ? ChosenSystem{set.cs, "key " + set.name + "%cs"}
                        : ChosenSystem{parameters.shp_def_cs, "key shp_def_cs"};
}

// Where the raster lies, and what the points of shapefiles are turned into.
struct Frame {
    SampleLines lines;
    double centre_lon = 0;  // [minutes of arc]
    double centre_lat = 0;
    MetresPerMinute metres;
};

Frame frame_of(const ConversionSettings& settings, const DegreeRaster& raster) {
    Frame frame;
    frame.centre_lon = minutes_of(settings.CENT_LON);
    frame.centre_lat = minutes_of(settings.CENT_LAT);
    frame.metres = metres_per_minute(frame.centre_lat, raster.datum);
    frame.lines = sample_lines(raster, frame.centre_lon, frame.centre_lat, frame.metres);
    return frame;
}

// Metres east and north of the centre.
class ToFrame {
 public:
    ToFrame(const ChosenSystem& system, const Frame& frame)
        : system_(coordinate_frame(system.id, system.where)), frame_(frame) {}

    PlanPoint operator()(double X, double Y) const {
        if (system_.metres_from_centre()) {
            return {X, Y};
        }
        const MinutesOfArc at = minutes_of_arc(system_, X, Y);
        return {(at.lon - frame_.centre_lon) * static_cast<double>(frame_.metres.lon),
                (at.lat - frame_.centre_lat) * static_cast<double>(frame_.metres.lat)};
    }

 private:
    CoordinateFrame system_;
    const Frame& frame_;
};

CanopyEntity placed(const ShapeEntity& entity, const ToFrame& to_frame) {
    CanopyEntity polygon;
    polygon.part_start = entity.part_start;
    polygon.x.reserve(entity.x.size());
    polygon.y.reserve(entity.y.size());
    for (std::size_t n = 0; n < entity.x.size(); ++n) {
        const PlanPoint at = to_frame(entity.x[n], entity.y[n]);
        polygon.x.push_back(at.x);
        polygon.y.push_back(at.y);
    }
    polygon.attributes.number = entity.number;
    polygon.attributes.h = static_cast<float>(entity.height);
    // Ids are codes of a table; what is none of them is not shown as one.
    constexpr double largest_id = 1.0e9;
    if (!entity.luid.null && std::abs(entity.luid.value) <= largest_id) {
        polygon.attributes.luid = static_cast<int>(std::lround(entity.luid.value));
    }
    return polygon;
}

std::vector<CanopyEntity> placed(const ShapeLayer& layer, const ToFrame& to_frame) {
    std::vector<CanopyEntity> polygons;
    for (const ShapeEntity& entity : layer.entities) {
        polygons.push_back(placed(entity, to_frame));
    }
    return polygons;
}

// Without a height column every polygon stays.
bool is_flat(const ShapeEntity& entity) {
    return entity.height_state == HeightState::missing ||
           (entity.height_state == HeightState::given && !(entity.height > 0.0));
}

// The roughness of every polygon: its column, else its land-use id through the tables.
void set_roughness(const ShapeSet& set, const ShapeLayer& layer,
                   std::vector<CanopyEntity>& polygons) {
    std::vector<float> ids;
    std::vector<std::size_t> of_id;
    for (std::size_t n = 0; n < polygons.size(); ++n) {
        const ShapeEntity& entity = layer.entities[n];
        if (!entity.z0.null) {
            polygons[n].attributes.z0 = static_cast<float>(entity.z0.value);
        } else if (!entity.luid.null) {
            ids.push_back(static_cast<float>(entity.luid.value));
            of_id.push_back(n);
        }
    }
    if (!ids.empty()) {
        const std::vector<float> z0 = codes_to_roughness(read_land_use_tables(), set.filename, ids);
        for (std::size_t n = 0; n < z0.size(); ++n) {
            polygons[of_id[n]].attributes.z0 = z0[n];
        }
    }
    for (const CanopyEntity& polygon : polygons) {
        if (!(polygon.attributes.z0 > 0.0F && std::isfinite(polygon.attributes.z0))) {
            stop(
                1,
                "entity " + std::to_string(polygon.attributes.number) + " has no roughness above 0",
                set.filename, "correct its row in the table; entities count from 0");
        }
    }
}

// Plane coordinates taken for degrees would put every polygon out of sight.
ShapeLayer read_layer(const ShapeSet& set, const ChosenSystem& system) {
    ShapeLayer layer = read_shape_file(set);
    const ShapeBox& box = layer.box;
    const bool degrees =
        box.min_x >= -180.0 && box.max_x <= 180.0 && box.min_y >= -90.0 && box.max_y <= 90.0;
    if (system.id == 0 && layer.count > 0 && !degrees) {
        stop(1, "the coordinates of the shapefile are no degrees", set.filename,
             "give its coordinate system in SHP_CS, " + set.name + "%cs or shp_def_cs");
    }
    return layer;
}

// Buildings and trees take no part in the roughness of a map; the check shows how high they are.
void show_heights(const CaseText& file, const ShapeParameters& parameters, const Frame& frame,
                  RunLog& log, Field2& height) {
    for (const std::string_view name : {building_set, tree_set}) {
        const ShapeSet set = read_shape_set(file, name, log);
        if (trimmed(set.filename).empty()) {
            continue;
        }
        const ChosenSystem system = coordinate_system(set, parameters);
        const std::vector<CanopyEntity> polygons =
            placed(read_layer(set, system), ToFrame(system, frame));
        raise_heights(clip_entities_to_cells(polygons, frame.lines.x, frame.lines.y,
                                             parameters.exclude_donut_shape),
                      height);
    }
}

}  // namespace

RoughnessCheck overlay_land_use(const ConversionSettings& settings, const std::string& case_name,
                                RunLog& log, DegreeRaster& roughness) {
    const CaseText file = load_shape_keys(case_name);
    CaseSettings planned;
    read_shape_parameters(file, planned);
    const ShapeParameters& parameters = planned.shape;
    const ShapeSet set = land_use_file(file, parameters, log);
    const Frame frame = frame_of(settings, roughness);
    const ChosenSystem system = settings.SHP_CS_given ? ChosenSystem{settings.SHP_CS, "key SHP_CS"}
                                                      : coordinate_system(set, parameters);

    ShapeLayer layer = read_layer(set, system);
    std::erase_if(layer.entities, [&](const ShapeEntity& entity) {
        return settings.IGNORE_ZERO_HEIGHT && is_flat(entity);
    });
    std::vector<CanopyEntity> polygons = placed(layer, ToFrame(system, frame));
    set_roughness(set, layer, polygons);

    console("Now Cliping Landuse Shapfile:" + set.filename);
    const ColumnLists pieces = clip_entities_to_cells(polygons, frame.lines.x, frame.lines.y,
                                                      parameters.exclude_donut_shape);
    RoughnessCheck check;
    check.cs = system.id;
    check.z0org = roughness.values;
    check.land_use_id = land_use_of(pieces, roughness);
    check.height.allocate(roughness.values.ni(), roughness.values.nj());
    lay_over(pieces, roughness);
    raise_heights(pieces, check.height);
    if (settings.SHP_MODE == 2) {
        show_heights(file, parameters, frame, log, check.height);
    }
    return check;
}

void write_roughness_check(const DegreeRaster& roughness, const RoughnessCheck& check) {
    RoughnessColumns columns;
    const int ni = roughness.values.ni();
    const int nj = roughness.values.nj();
    columns.corner_lon.allocate(ni + 1, nj + 1);
    columns.corner_lat.allocate(ni + 1, nj + 1);
    for (int j = 1; j <= nj + 1; ++j) {
        for (int i = 1; i <= ni + 1; ++i) {
            columns.corner_lon(i, j) = roughness.base_lon + (i - 1.5) * roughness.d_lon;
            columns.corner_lat(i, j) = roughness.base_lat + (j - 1.5) * roughness.d_lat;
        }
    }
    columns.land_use_id = check.land_use_id;
    columns.height = check.height;
    columns.rls = roughness.values;
    columns.z0org = check.z0org;
    vectorizeRoughness3(roughness_check_name, check.cs, columns);
}

}  // namespace torvex
