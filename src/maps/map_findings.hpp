#pragma once

#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/list_input.hpp"
#include "base/run_log.hpp"
#include "maps/map_header.hpp"

namespace torvex {

// What the reading of a map has found beside its values. Rows and columns count from 1, from the
// south-west point; lines are those of the file.
struct MapFindings {
    float smallest = std::numeric_limits<float>::infinity();  // [m]
    float largest = -std::numeric_limits<float>::infinity();  // [m]

    // Elevations that are none on this earth, such as the mark of a gap; roughness above 10 m.
    long odd_count = 0;
    int first_row = 0, first_column = 0;
    long first_line = 0;      // that holds the first of them
    long first_row_line = 0;  // in which its row begins
    float first_value = 0;

    // Rows that end in front of further values of their line.
    long long_rows = 0;
    int first_long_row = 0;
    long first_long_line = 0;

    long line_behind = 0;  // where numbers go on behind the last row; 0: nowhere
};

inline constexpr float lowest_elevation = -500.0F;   // the shores of the Dead Sea lie at -430 m
inline constexpr float highest_elevation = 9000.0F;  // the top of Mount Everest at 8849 m
inline constexpr float largest_roughness = 10.0F;    // where the average R(z0) has its pole [m]
inline constexpr float widest_spacing = 5000.0F;     // [m]
inline constexpr float closest_spacing = 0.1F;       // [m]

// Where a row of a map stands in its file.
struct RowInFile {
    int row = 0;
    long line = 0;          // in which it begins
    std::string_view text;  // of the file, from there on
};

// Adds a row that `input` has just read.
void add_row(std::span<const float> row, const RowInFile& at, const ListInput& input,
             bool roughness, MapFindings& findings);

// A map as its lines name it: what it is, its file, and the metres between its points.
struct MapLabel {
    std::string_view name;
    std::string_view path;
    float dX = 0, dY = 0;
    bool roughness = false;
};

// "basic terrain map h.map: longitude 139.00000 to 139.50000, latitude 35.00000 to 35.40000
// degrees, spacing 25.3 m by 30.8 m, values -3.2 to 812.4 m".
std::string map_summary(const MapLabel& label, const MapHeader& header,
                        const MapFindings& findings);

// What the user is to be warned of; empty for a good map. Roughness above 10 m is not among it.
std::vector<Warning> map_warnings(const MapLabel& label, const MapHeader& header,
                                  const MapFindings& findings);

}  // namespace torvex
