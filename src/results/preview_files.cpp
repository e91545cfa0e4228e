#include "results/preview_files.hpp"

#include <algorithm>
#include <string_view>

#include "base/edit.hpp"
#include "base/whole_file.hpp"
#include "results/contour_grid.hpp"

namespace torvex {

namespace {

using edit::E;
using edit::F;
using edit::I;

std::string triple_text(const Triple& angle) {
    return F(angle(1), 8, 2) + F(angle(2), 8, 2) + F(angle(3), 8, 2);
}

void append_case(const CaseSettings& settings, std::string& text) {
    const auto key = [&text](std::string_view name, const std::string& value) {
        text += "## ";
        text += name;
        text += " = " + value + '\n';
    };
    text += "##<<CASEFILE_INFO_BEGIN>>\n";
    key("cent_lat", triple_text(settings.CENT_LAT));
    key("cent_lon", triple_text(settings.CENT_LON));
    key("we_length", F(settings.WE_LENGTH, 11, 4));
    key("ns_length", F(settings.NS_LENGTH, 11, 4));
    key("min_dxy", F(settings.MIN_DXY, 10, 2));
    key("max_dxy", F(settings.MAX_DXY, 10, 2));
    key("min_dxy_rad", F(settings.MIN_DXY_RAD, 10, 2));
    key("mesh_hratio", F(settings.MESH_HRATIO, 10, 2));
    key("side_br", F(settings.SIDE_BR, 10, 2));
    key("down_br", F(settings.DOWN_BR, 10, 2));
    key("up_br", F(settings.UP_BR, 10, 2));
    key("add_r", F(settings.ADD_R, 10, 2));
    key("n_site", I(settings.N_SITE, 4));
    for (int n = 1; n <= settings.N_SITE; ++n) {
        const Site& site = settings.SITE[static_cast<std::size_t>(n - 1)];
        key("site(" + I(n, 4) + ")%lat", triple_text(site.LAT));
        key("site(" + I(n, 4) + ")%lon", triple_text(site.LON));
    }
    text += "##<<CASEFILE_INFO_END>>\n";
}

void append_zone(const GridGeometry& grid, const Field2& z0, std::string& text) {
    text += "variables=x, y, z, z0\n";
    text += "##<<TORVEX_ZONE_RECORD_BEGIN>>\n";
    text += "zone i=" + I(grid.ni, 4) + ", j=" + I(grid.nj, 4) + ", f=point\n";
    for (int j = 1; j <= grid.nj; ++j) {
        for (int i = 1; i <= grid.ni; ++i) {
            text += E(grid.xc(i, j, 1), 16, 8) + E(grid.yc(i, j, 1), 16, 8) +
                    E(grid.zc(i, j, 1), 16, 5) + E(z0(i, j), 16, 5) + '\n';
        }
    }
    text += "##<<TORVEX_ZONE_RECORD_END>>\n";
}

void append_lines(const Preview& preview, std::string& text) {
    text += "##<<TORVEX_LINE_DATA_BEGIN>>\n";
    text += "GEOMETRY T=LINE, CS=GRID\n";
    bool first = true;
    for (const auto& outline : preview.outlines) {
        if (!first) {
            text += "##<<NEW_LINE>>\n";
        }
        first = false;
        for (const MeshPosition& point : outline) {
            text += edit::list(point.x, point.y) + '\n';
        }
    }
    text += "##<<REFERENCE_CITE>>\n";
    text += edit::list(preview.monitor.x, preview.monitor.y) + '\n';
    text += "##<<TORVEX_LINE_DATA_END>>\n";
}

void append_mark(std::string_view fill, MeshPosition at, std::string& text) {
    text += "GEOMETRY T=CIRCLE, CS=GRID, C=BLUE, FC=";
    text += fill;
    text += ", x=" + E(at.x, 16, 8) + ", y=" + E(at.y, 16, 8) + '\n';
}

Field2 ground(const GridGeometry& grid) {
    Field2 z(grid.ni, grid.nj);
    for (int j = 1; j <= grid.nj; ++j) {
        for (int i = 1; i <= grid.ni; ++i) {
            z(i, j) = grid.zc(i, j, 1);
        }
    }
    return z;
}

}  // namespace

void write_preview_map(const std::string& path, const Preview& preview) {
    std::string text = "##<<TORVEX_BASIC preview map data>>\n";
    append_case(preview.settings, text);
    append_zone(preview.grid, preview.z0, text);
    append_lines(preview, text);
    append_mark("GREEN", preview.monitor, text);
    for (const MeshPosition& site : preview.sites) {
        append_mark("BLUE", site, text);
    }
    write_text_file_whole(path, text);
}

void write_preview_roughness(const std::string& path, const Field2& z0) {
    std::string text = "##<<TORVEX ROUGHNESS DATA FOR MAP>>\n";
    text += "i=" + I(z0.ni(), 4) + ", j=" + I(z0.nj(), 4) + ",\n";
    for (int j = 1; j <= z0.nj(); ++j) {
        for (int i = 1; i <= z0.ni(); ++i) {
            text += F(z0(i, j), 10, 5) + '\n';
        }
    }
    write_text_file_whole(path, text);
}

void write_preview_grids(const Preview& preview) {
    const GridGeometry& grid = preview.grid;
    float x_min = grid.xc(1, 1, 1);
    float x_max = x_min;
    for (int i = 1; i <= grid.ni; ++i) {
        x_min = std::min(x_min, grid.xc(i, 1, 1));
        x_max = std::max(x_max, grid.xc(i, 1, 1));
    }
    float y_min = grid.yc(1, 1, 1);
    float y_max = y_min;
    for (int j = 1; j <= grid.nj; ++j) {
        y_min = std::min(y_min, grid.yc(1, j, 1));
        y_max = std::max(y_max, grid.yc(1, j, 1));
    }
    const Field2 z = ground(grid);
    write_contour_grid("TERRAIN.GRD", {z, x_min, x_max, y_min, y_max, terrain_range});
    write_contour_grid("ROUGH.GRD", {preview.z0, x_min, x_max, y_min, y_max, roughness_range});
}

}  // namespace torvex
