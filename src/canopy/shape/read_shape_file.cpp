#include "canopy/shape/read_shape_file.hpp"

#include <cmath>

#include "base/edit.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

[[noreturn]] void fail(const std::string& text, const std::string& where, const std::string& fix) {
    console(text);
    stop(1, std::string(trimmed(text)), where, fix);
}

std::string key_of(const ShapeSet& set, const char* suffix) {
    return "key " + set.name + suffix + " of &shp_parameters";
}

// Columns of the attributes in the table.
struct Columns {
    int h, pd, rls, cf, z0, z0org, luid;
};

int column_of(const TableReader& table, const ShapeSet& set, const char* suffix,
              const std::string& name) {
    if (name.empty()) {
        return no_column;
    }
    const int column = table.column(name);
    if (column == no_column) {
        fail("ERROR: DB File Field Not Found. ", key_of(set, suffix) + ": " + excerpt(name),
             "the columns of the table are " + printable(table.column_names(), 400));
    }
    return column;
}

Columns columns_of(const TableReader& table, const ShapeSet& set) {
    return {column_of(table, set, "%dbf_h", set.dbf_h),
            column_of(table, set, "%dbf_pd", set.dbf_pd),
            column_of(table, set, "%dbf_rls", set.dbf_rls),
            column_of(table, set, "%dbf_cf", set.dbf_cf),
            column_of(table, set, "%dbf_z0", set.dbf_z0),
            column_of(table, set, "%dbf_z0org", set.dbf_z0org),
            column_of(table, set, "%dbf_luid", set.dbf_luid)};
}

std::string pair_of(double x, double y) {
    return edit::F(x, 18, 6) + "," + edit::F(y, 18, 6) + ")";
}

void tell_header(const ShapeFileInfo& info) {
    console("Shape File Header information");
    console("ShapeType ID: " + std::to_string(info.type));
    console("Total Number of Entities: " + std::to_string(info.count));
    console("BoundingBox MIN: (" + pair_of(info.box.min_x, info.box.min_y));
    console("            MAX: (" + pair_of(info.box.max_x, info.box.max_y));
}

ShapeBox scaled(const ShapeBox& box, double scale) {
    return {box.min_x * scale, box.min_y * scale, box.max_x * scale, box.max_y * scale};
}

TableNumber scaled(TableNumber number, double factor) {
    number.value *= factor;
    return number;
}

void take_height(const ShapeSet& set, const TableNumber& raw, ShapeEntity& entity) {
    const double height = raw.value * static_cast<double>(set.height_unit);
    const bool marked = raw.value == static_cast<double>(set.height_marker);
    const bool missing = raw.null || !std::isfinite(height) || !(height > 0) || marked;
    entity.height_state = HeightState::given;
    entity.height = height;
    if (missing && set.height_missing == 1) {
        entity.height = static_cast<double>(set.height_missing_value);
    } else if (missing) {
        entity.height_state = HeightState::missing;
        entity.height = 0;
    }
}

void modify_height(const ShapeSet& set, ShapeEntity& entity) {
    for (const ShapeSet::ModifiedHeight& modified : set.modified) {
        if (modified.entity == entity.number) {
            console("Modifying entity height. ID:" + edit::list(entity.number) + " Before:" +
                    edit::F(entity.height, 10, 2) + " After:" + edit::F(modified.height, 10, 2));
            entity.height_state = HeightState::given;
            entity.height = static_cast<double>(modified.height);
        }
    }
}

ShapeEntity make_entity(const ShapeSet& set, int number, ShapeObject&& object,
                        const TableReader& table, const Columns& columns) {
    const auto scale = static_cast<double>(set.scale);
    const auto uconv = static_cast<double>(set.uconv);
    ShapeEntity entity;
    entity.number = number;
    entity.box = scaled(object.box, scale);
    entity.part_start = std::move(object.part_start);
    entity.x = std::move(object.x);
    entity.y = std::move(object.y);
    for (std::size_t n = 0; n < entity.x.size(); ++n) {
        entity.x[n] *= scale;
        entity.y[n] *= scale;
    }
    entity.pd = table.number(number, columns.pd);
    entity.rls = scaled(table.number(number, columns.rls), uconv);
    entity.cf = table.number(number, columns.cf);
    entity.z0 = scaled(table.number(number, columns.z0), uconv);
    entity.z0org = scaled(table.number(number, columns.z0org), uconv);
    entity.luid = table.number(number, columns.luid);
    if (columns.h != no_column) {
        take_height(set, table.number(number, columns.h), entity);
    }
    modify_height(set, entity);
    return entity;
}

// The header of the file, its table, and that both fit each other.
ShapeFileInfo open_both(const ShapeSet& set, ShapeReader& shapes, TableReader& table) {
    if (shapes.open(set.filename) != 0) {
        fail("ERROR: Shape File Not Found. ", key_of(set, "%filename") + ": " + set.filename,
             "a shapefile is a .shp with its .shx and .dbf beside it");
    }
    if (table.open(set.filename) != 0) {
        fail("ERROR: DB File Not Found. ", key_of(set, "%filename") + ": " + set.filename,
             "the .dbf of a shapefile stands beside its .shp");
    }
    ShapeFileInfo info;
    shapes.info(info);
    if (!is_polygon_type(info.type)) {
        fail("Unknown shape type: " + shape_type_name(info.type) + " ", set.filename,
             "give polygons (also with Z or M)");
    }
    if (table.rows() != info.count) {
        stop(1,
             "shapefile damaged: " + std::to_string(info.count) + " shapes, but " +
                 std::to_string(table.rows()) + " rows in the table",
             set.filename, "write the shapefile anew with the tool it came from");
    }
    return info;
}

}  // namespace

ShapeLayer read_shape_file(const ShapeSet& set, const std::function<bool(ShapeEntity&)>& keep) {
    ShapeReader shapes;
    TableReader table;
    const ShapeFileInfo info = open_both(set, shapes, table);
    const Columns columns = columns_of(table, set);
    tell_header(info);

    ShapeLayer layer;
    layer.count = info.count;
    layer.box = scaled(info.box, static_cast<double>(set.scale));
    console("Reading Shape file.");
    for (int n = 0; n < info.count; ++n) {
        ShapeObject object;
        shapes.read(n, object);
        if (table.deleted(n)) {
            ++layer.deleted_rows;
        } else if (object.part_start.empty()) {
            ++layer.null_shapes;
        } else {
            ShapeEntity entity = make_entity(set, n, std::move(object), table, columns);
            if (!keep || keep(entity)) {
                layer.entities.push_back(std::move(entity));
            }
        }
    }
    console(".Done.");
    return layer;
}

}  // namespace torvex
