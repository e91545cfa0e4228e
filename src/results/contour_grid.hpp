#pragma once

#include <string>
#include <string_view>

#include "base/field.hpp"

namespace torvex {

// A grid for contouring tools, in the text form that begins with "DSAA": the values row by row, the
// first row at the smallest y, each from the smallest x on. Readers take the spacing as even.
struct ContourGrid {
    const Field2& values;
    float x_min, x_max;  // of the points [m, or whatever the axes are]
    float y_min, y_max;
    std::string_view range;  // the line of the values' range, fixed for all grids of a kind
};

inline constexpr std::string_view terrain_range = "0.0 4000.0";
inline constexpr std::string_view roughness_range = "0.0 10.0";

// Writes the file as a whole; stops with 1 where it cannot be written.
void write_contour_grid(const std::string& path, const ContourGrid& grid);

}  // namespace torvex
