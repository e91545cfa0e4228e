#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "base/stop.hpp"
#include "maps/terrain_map.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex::test {

// A study area of 2 km by 2 km with the default zones, sized without any map.
inline CaseSettings flat_case() {
    CaseSettings s;
    s.TERRAIN_MODE = "flat";
    s.WE_LENGTH = 2000.0F;
    s.NS_LENGTH = 2000.0F;
    s.MIN_DXY = 50.0F;
    s.MAX_DXY = 200.0F;
    s.MIN_DXY_RAD = 500.0F;
    s.MESH_HRATIO = 1.1F;
    s.MIN_DZ = 5.0F;
    s.MESH_VRATIO = 1.15F;
    s.CONSTANT_DZ_HEIGHT = 100.0F;
    s.SIDE_BR = 0.3F;
    s.UP_BR = 0.3F;
    s.DOWN_BR = 0.3F;
    s.ADD_R = 1.0F;
    s.BZ_LIMIT = 2.0F;
    s.ADD_LIMIT = 3.0F;
    s.BUFFER_ZONE_SLOPE_GRADIENT = 40.0F;
    s.cent_lon_min = 139.0 * 60.0;
    s.cent_lat_min = 35.0 * 60.0;
    return s;
}

// A map of `columns` by `rows` points with a spacing d, its middle on the case centre.
inline TerrainMap centred_map(int columns, int rows, float d,
                              const std::function<double(double, double)>& height) {
    TerrainMap map;
    map.columns = columns;
    map.rows = rows;
    map.dX = d;
    map.dY = d;
    map.X0 = -0.5F * d * static_cast<float>(columns - 1);
    map.Y0 = -0.5F * d * static_cast<float>(rows - 1);
    auto values = std::make_shared<Field2>(columns, rows);
    for (int j = 1; j <= rows; ++j) {
        for (int i = 1; i <= columns; ++i) {
            const auto X = static_cast<double>(map.X0 + static_cast<float>(i - 1) * d);
            const auto Y = static_cast<double>(map.Y0 + static_cast<float>(j - 1) * d);
            (*values)(i, j) = static_cast<float>(height(X, Y));
        }
    }
    map.values = std::move(values);
    return map;
}

// Evenly spaced lines of cells of d metres: a circle of `inner` cells, zones of the given numbers
// of cells, blending half way through each buffer zone of `buffer` cells.
inline MeshLines even_lines(int inner, int add, int buffer, float d) {
    MeshLines lines;
    lines.n_inner = inner;
    lines.n_add = inner + add;
    lines.n_up = inner + add + buffer;
    lines.n_down = inner + buffer;
    lines.n_side = inner + buffer;
    lines.n_blend_up = inner + add + buffer / 2;
    lines.n_blend_down = inner + buffer / 2;
    lines.n_blend_side = inner + buffer / 2;
    lines.nx = lines.n_up + lines.n_down + 1;
    lines.ny = 2 * lines.n_side + 1;
    lines.i_centre = lines.n_up + 1;
    lines.j_centre = lines.n_side + 1;
    lines.x_line = Line1(lines.nx);
    lines.y_line = Line1(lines.ny);
    for (int i = 1; i <= lines.nx; ++i) {
        lines.x_line(i) = static_cast<float>(i - lines.i_centre) * d;
    }
    for (int j = 1; j <= lines.ny; ++j) {
        lines.y_line(j) = static_cast<float>(j - lines.j_centre) * d;
    }
    return lines;
}

// The stop that an action ends in; code -1 if it ends in none.
inline Stop stop_of(const std::function<void()>& action) {
    try {
        action();
    } catch (const Stop& s) {
        return s;
    }
    return {-1, "no stop", "", ""};
}

inline std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// Lines of the run log behind their date stamps.
inline std::vector<std::string> log_lines(const RunLog& log) {
    std::vector<std::string> lines = lines_of(log.kept());
    for (std::string& line : lines) {
        EXPECT_GE(line.size(), 19U);
        EXPECT_EQ(line.substr(4, 1) + line.substr(7, 1) + line.substr(10, 1) + line.substr(13, 1),
                  "// :");
        line.erase(0, 19);
    }
    return lines;
}

// Console lines of an action.
inline std::vector<std::string> console_of(const std::function<void()>& action) {
    testing::internal::CaptureStdout();
    action();
    return lines_of(testing::internal::GetCapturedStdout());
}

// Makes a directory the current one while it lives.
class CurrentDirectory {
 public:
    explicit CurrentDirectory(const std::filesystem::path& path)
        : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(path);
    }
    ~CurrentDirectory() { std::filesystem::current_path(before_); }
    CurrentDirectory(const CurrentDirectory&) = delete;
    CurrentDirectory& operator=(const CurrentDirectory&) = delete;

 private:
    std::filesystem::path before_;
};

}  // namespace torvex::test
