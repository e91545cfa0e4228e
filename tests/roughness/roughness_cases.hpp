#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "maps/terrain_map.hpp"
#include "mesh/grid_geometry.hpp"
#include "roughness/roughness_pass.hpp"
#include "support/temporary_directory.hpp"

namespace torvex::test {

// The averaging variable in double precision throughout.
inline double R_of(double z0) {
    const double L = std::log(10.0 / z0);
    return 1.0 / (L * L);
}
inline double Z_of(double R) {
    return 10.0 / std::exp(1.0 / std::sqrt(R));
}

// Sum of R times area over cells, added up by a test.
struct StripSum {
    double R_area = 0.0;
    void add(double z0, double area) { R_area += R_of(z0) * area; }
    double mean(double area) const { return Z_of(R_area / area); }
};

inline Line1 line_of(const std::vector<float>& values) {
    Line1 line(static_cast<int>(values.size()));
    for (int i = 1; i <= line.size(); ++i) {
        line(i) = values[static_cast<std::size_t>(i - 1)];
    }
    return line;
}

// Eleven planes in x and nine in y, no two spacings alike, symmetric in y. Flat parts: cells 2 and
// 3 upwind, 10 and 11 downwind, 2 and 3 south, 8 and 9 north; the additional zone begins at cell 5.
inline MeshLines uneven_lines() {
    MeshLines lines;
    lines.x_line = line_of({-1000, -700, -450, -250, -120, -50, 0, 60, 150, 300, 520});
    lines.y_line = line_of({-600, -350, -180, -80, 0, 80, 180, 350, 600});
    lines.nx = 11;
    lines.ny = 9;
    lines.nz = 2;
    lines.ni = 12;
    lines.nj = 10;
    lines.nk = 3;
    lines.i_centre = 7;
    lines.j_centre = 5;
    lines.n_inner = 1;
    lines.n_add = 2;
    lines.n_up = 6;
    lines.n_down = 4;
    lines.n_side = 4;
    lines.n_blend_up = 4;
    lines.n_blend_down = 2;
    lines.n_blend_side = 2;
    return lines;
}

inline double dx(const MeshLines& lines, int i) {
    return static_cast<double>(lines.x_line(i)) - static_cast<double>(lines.x_line(i - 1));
}
inline double dy(const MeshLines& lines, int j) {
    return static_cast<double>(lines.y_line(j)) - static_cast<double>(lines.y_line(j - 1));
}

// Cell centres over the lines, the only part of the mesh that the roughness needs.
inline GridGeometry centres_over(const MeshLines& lines) {
    GridGeometry grid;
    grid.xc.allocate(lines.ni, lines.nj, 1);
    grid.yc.allocate(lines.ni, lines.nj, 1);
    for (int j = 2; j < lines.nj; ++j) {
        for (int i = 2; i < lines.ni; ++i) {
            grid.xc(i, j, 1) = 0.5F * (lines.x_line(i - 1) + lines.x_line(i));
            grid.yc(i, j, 1) = 0.5F * (lines.y_line(j - 1) + lines.y_line(j));
        }
    }
    return grid;
}

// A map of the values f(east, north) with its points at `spacing` from -half_width to half_width.
inline TerrainMap map_of(const std::function<double(double, double)>& f, float half_width,
                         float spacing) {
    const int n = 1 + static_cast<int>(std::lround(2.0F * half_width / spacing));
    auto values = std::make_shared<Field2>(n, n);
    for (int row = 1; row <= n; ++row) {
        for (int column = 1; column <= n; ++column) {
            const auto at = [&](int index) {
                return -static_cast<double>(half_width) +
                       static_cast<double>(spacing) * static_cast<double>(index - 1);
            };
            (*values)(column, row) = static_cast<float>(f(at(column), at(row)));
        }
    }
    TerrainMap map;
    map.values = std::move(values);
    map.columns = map.rows = n;
    map.dX = map.dY = spacing;
    map.X0 = map.Y0 = -half_width;
    return map;
}

inline TerrainMap uniform_map(float z0) {
    return map_of([z0](double, double) { return static_cast<double>(z0); }, 2000.0F, 100.0F);
}

// The lines of a log that was never opened, without their date stamps.
inline std::vector<std::string> told(const RunLog& log) {
    std::vector<std::string> lines;
    const std::string& text = log.kept();
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        const std::string line = text.substr(at, end - at);
        constexpr std::size_t stamp = 19;  // yyyy/mm/dd hh:mm:ss
        const bool stamped =
            line.size() >= stamp && line[4] == '/' && line[10] == ' ' && line[16] == ':';
        lines.push_back(stamped ? line.substr(stamp) : "no date stamp: " + line);
        at = end + 1;
    }
    return lines;
}

// One wind direction over uneven_lines(), at work in a directory of its own. The wind comes from
// 270 degrees, so that x is east and y north.
class RoughnessTest : public ::testing::Test {
 protected:
    RoughnessTest() : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(directory.path());
        settings.TERRAIN_MODE = "normal";
        settings.BASIC_Z0_FILE = "ground.map";
        settings.WIND_DIRECTION_ANGLE(1) = 270.0F;
        settings.WIND_DIRECTION_ANGLE(preview_direction) = 270.0F;
        settings.DIRECTIONAL_ALPHA_Z0_MIN = 1.0e-4F;
        settings.DIRECTIONAL_ALPHA_Z0_MAX = 1.0F;
        settings.DIRECTIONAL_ALPHA_BS_EPS = 1.0e-3F;
        settings.DIRECTIONAL_ALPHA_BS_MAXIT = 20;
        settings.DIRECTIONAL_ALPHA_APPLICABLE_WDS.fill(-1);
    }
    ~RoughnessTest() override { std::filesystem::current_path(before_); }

    RoughnessPass pass() { return {settings, lines, iwd, tag, log}; }
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(directory.path())) {
            names.push_back(entry.path().filename().string());
        }
        return names;
    }

    TemporaryDirectory directory;
    CaseSettings settings;
    MeshLines lines = uneven_lines();
    int iwd = 1;
    std::string tag = "270_0";
    RunLog log;

 private:
    std::filesystem::path before_;
};

}  // namespace torvex::test
