#include "prep/check_shapefile.hpp"

#include <algorithm>

#include "base/stop.hpp"
#include "canopy/shape/shape_file.hpp"
#include "canopy/shape/shape_table.hpp"
#include "maps/local_metric.hpp"
#include "mesh/rotation.hpp"
#include "roughness/canopy_conv_table.hpp"

namespace torvex {

namespace {

// Any writer's failure has been told on the console.
void require(int status, const std::string& file) {
    if (status != 0) {
        stop(1, "cannot write the check shapefile", file, "look for a full disk");
    }
}

// What the last set with a piece in the column says of it.
struct Column {
    int luid = -1;
    float height = 0;
};

Column column_of(const DirectionCanopy& canopy, int i, int j) {
    Column column;
    for (const SetOnMesh& on : canopy.sets) {
        if (!on.columns.at(i, j).empty()) {
            column.luid = on.gp.gp_luid(i, j);
            column.height = std::max(column.height, on.gp.gp_height(i, j, 1));
        }
    }
    return column;
}

float greatest_length(const CanopyRecords& records, int i, int j) {
    float length = 0;
    for (int k = 1; k <= records.gp_length.nk(); ++k) {
        length = std::max(length, records.gp_length(i, j, k));
    }
    return length;
}

}  // namespace

void write_check_shapefile(const PrepCase& prep, const DirectionCanopy& canopy, int iwd) {
    const CaseSettings& settings = prep.settings;
    const MetresPerMinute per_minute = metres_per_minute(settings.cent_lat_min, settings.GS);
    const MeshRotation rotation = mesh_rotation(settings.WIND_DIRECTION_ANGLE(iwd));
    const std::string stem = prep.restart_stem(iwd) + "roughness";
    ShapeWriter shapes;
    TableWriter table;
    require(shapes.create(stem + ".shp"), stem + ".shp");
    require(table.create(stem + ".dbf"), stem + ".dbf");
    require(table.add_integer("POLYGON", 9) + table.add_text("LandUse", 20) +
                table.add_integer("LandUseID", 9) + table.add_double("RLS", 16, 6) +
                table.add_double("Height", 16, 6) + table.add_double("Z0org", 16, 6),
            stem + ".dbf");

    int row = 0;
    const MeshLines& lines = prep.lines;
    for (int j = 2; j <= lines.ny; ++j) {
        for (int i = 2; i <= lines.nx; ++i) {
            // Clockwise from the corner of the lowest x and y.
            const int corners[5][2] = {
                {i - 1, j - 1}, {i - 1, j}, {i, j}, {i, j - 1}, {i - 1, j - 1}};
            std::vector<double> x;
            std::vector<double> y;
            for (const auto& [a, b] : corners) {
                const MapPoint at = rotation.on_map(lines.x_line(a), lines.y_line(b));
                x.push_back((settings.cent_lon_min + static_cast<double>(at.X / per_minute.lon)) /
                            60);
                y.push_back((settings.cent_lat_min + static_cast<double>(at.Y / per_minute.lat)) /
                            60);
            }
            const Column column = column_of(canopy, i, j);
            require(shapes.write_ring(x, y), stem + ".shp");
            require(table.write(row, 0, row) +
                        table.write(row, 1, column.height > 0 ? "canopy" : "") +
                        table.write(row, 2, column.luid) +
                        table.write(row, 3,
                                    static_cast<double>(greatest_length(canopy.records, i, j))) +
                        table.write(row, 4, static_cast<double>(column.height)) +
                        table.write(row, 5, static_cast<double>(canopy.map_z0(i, j))),
                    stem + ".dbf");
            ++row;
        }
    }
}

}  // namespace torvex
