#include "results/write_preview.hpp"

#include <string>

#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "maps/local_metric.hpp"
#include "mesh/cell_geometry.hpp"
#include "mesh/make_mesh.hpp"
#include "mesh/rotation.hpp"
#include "results/bracket.hpp"
#include "results/preview_files.hpp"
#include "roughness/calc_roughness1.hpp"

namespace torvex {

namespace {

// The case with its first direction under the index of a preview.
CaseSettings preview_settings(const CaseSettings& settings) {
    CaseSettings preview = settings;
    preview.WIND_DIRECTION_ANGLE(preview_direction) = settings.WIND_DIRECTION_ANGLE(1);
    preview.ELEVATION_CORRECTION_FACTOR(preview_direction) =
        settings.ELEVATION_CORRECTION_FACTOR(1);
    return preview;
}

// The point of a line of the mesh that a coordinate falls on, or the coordinate itself beyond them.
float on_lines(float x, const Line1& line) {
    const LinePlace at = place_on(x, line);
    return at.inside() ? line(at.i) + at.w * (line(at.i + 1) - line(at.i)) : x;
}

// The study area, turned into the frame of the wind.
std::vector<MeshPosition> study_area(const CaseSettings& settings, const MeshLines& lines) {
    const MeshRotation turn = mesh_rotation(settings.WIND_DIRECTION_ANGLE(preview_direction));
    const float X = settings.WE_LENGTH / 2.0F;
    const float Y = settings.NS_LENGTH / 2.0F;
    std::vector<MeshPosition> outline;
    for (const MapPoint corner :
         {MapPoint{-X, -Y}, MapPoint{X, -Y}, MapPoint{X, Y}, MapPoint{-X, Y}, MapPoint{-X, -Y}}) {
        outline.push_back({.x = on_lines(turn.c * corner.X - turn.s * corner.Y, lines.x_line),
                           .y = on_lines(turn.s * corner.X + turn.c * corner.Y, lines.y_line)});
    }
    return outline;
}

MeshPosition position_of(double lon, double lat, const CaseSettings& settings) {
    return position_from_centre(lon, lat, settings.cent_lon_min, settings.cent_lat_min, settings.GS,
                                settings.WIND_DIRECTION_ANGLE(preview_direction));
}

}  // namespace

void write_preview(const CaseSettings& settings, const MeshLines& lines, MapState& maps) {
    if (settings.TORVEX_MODE != 0) {
        stop(1, "a user-defined domain has no preview", "key TORVEX_MODE",
             "only a mesh over maps can be shown; set TORVEX_MODE = 0");
    }
    if (settings.N_WIND_DIRECTION < 1) {
        stop(1, "the case has no wind direction to show", "key N_WIND_DIRECTION",
             "give one direction or more");
    }
    console("   - Writing preview map and mesh data");
    const CaseSettings preview = preview_settings(settings);
    RunLog untold;  // a preview leaves no line of a direction in any log
    const DirectionMaps placed = load_maps(preview, preview_direction, maps, untold);
    GridGeometry grid;
    MAKE_MESH(preview, lines, placed, preview_direction, untold, grid);
    XYZ2XYZC(grid);
    Field2 z0;
    UpwindRoughness upwind;
    const std::string no_tag;
    calc_roughness1({preview, lines, preview_direction, no_tag, untold}, placed, grid, upwind, z0);

    Preview seen{preview,
                 grid,
                 z0,
                 {study_area(preview, lines)},
                 position_of(preview.monitor_lon_min, preview.monitor_lat_min, preview),
                 {}};
    for (int n = 1; n <= preview.N_SITE; ++n) {
        const Site& site = preview.SITE[static_cast<std::size_t>(n - 1)];
        seen.sites.push_back(position_of(minutes_of(site.LON), minutes_of(site.LAT), preview));
    }
    write_preview_map(preview.run_prefix + "view-map.dat", seen);
    write_preview_roughness("view-map-roughness.dat", z0);
    write_preview_grids(seen);
}

}  // namespace torvex
