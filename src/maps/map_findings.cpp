// What is odd about a map: gaps that are marked by a number, a grid of degrees taken for minutes, a
// header that does not fit its rows. All of it can be computed with, and gives results that look
// right.

#include "maps/map_findings.hpp"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/edit.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

struct Range {
    float low, high;
};

// Independent lanes, so that the loop becomes vector code; a plain minimum waits for each value.
Range range_of(std::span<const float> row) {
    constexpr std::size_t lanes = 16;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::array<float, lanes> low;
    std::array<float, lanes> high;
    low.fill(infinity);
    high.fill(-infinity);
    std::size_t n = 0;
    for (; n + lanes <= row.size(); n += lanes) {
        for (std::size_t l = 0; l < lanes; ++l) {
            const float value = row[n + l];
            low[l] = value < low[l] ? value : low[l];
            high[l] = value > high[l] ? value : high[l];
        }
    }
    Range range{*std::ranges::min_element(low), *std::ranges::max_element(high)};
    for (; n < row.size(); ++n) {
        range.low = std::min(range.low, row[n]);
        range.high = std::max(range.high, row[n]);
    }
    return range;
}

bool is_odd(float value, bool roughness) {
    return roughness ? value > largest_roughness
                     : value < lowest_elevation || value > highest_elevation;
}

// The line that holds a column of a row: the row is read again as far as there.
long line_of(const RowInFile& at, std::size_t column) {
    std::vector<float> values(column);
    ListInput again(at.text, at.line);
    again.read_row(values.data(), column);
    return again.row_line();
}

std::string metres(float value, int decimals) {
    return std::string(trimmed(edit::F(value, 48, decimals)));
}

std::string degrees(double value) {
    return std::string(trimmed(edit::F(value, 48, 5)));
}

std::string value_text(float value, bool roughness) {
    return metres(value, roughness ? 5 : 1);
}

// "1 value lies", "12 values lie".
std::string counted(long count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

Warning gap_warning(const MapLabel& label, const MapFindings& f) {
    const std::string path(label.path);
    return {counted(f.odd_count, "elevation", "elevations") + " of " + path +
                " below -500 m or above 9000 m, the first is " + metres(f.first_value, 1) +
                " m in row " + std::to_string(f.first_row) + ", column " +
                std::to_string(f.first_column) + " (line " + std::to_string(f.first_line) +
                "): a mark for missing data is no elevation, fill such gaps.",
            counted(f.odd_count, "impossible elevation", "impossible elevations") + " in " + path};
}

Warning spacing_warning(const MapLabel& label) {
    const std::string path(label.path);
    return {"the points of " + path + " lie " + metres(label.dX, 3) + " m by " +
                metres(label.dY, 3) +
                " m apart, expected 0.1 m to 5 km: d_lon and d_lat are minutes of arc.",
            "odd spacing of " + path};
}

// Whether a map can lie where its header says.
bool on_the_globe(const DegreeExtent& extent) {
    constexpr double turn = 360.0;
    constexpr double pole = 90.0;
    return extent.west >= -turn && extent.east <= turn && extent.south >= -pole &&
           extent.north <= pole;
}

Warning place_warning(const MapLabel& label, const DegreeExtent& extent) {
    const std::string path(label.path);
    return {path + " reaches from longitude " + degrees(extent.west) + " to " +
                degrees(extent.east) + " and from latitude " + degrees(extent.south) + " to " +
                degrees(extent.north) +
                " degrees: its base is in degrees and minutes, not metres, and d_lon and d_lat are "
                "minutes of arc.",
            "impossible place of " + path};
}

Warning count_warning(const MapLabel& label, const std::string& what) {
    const std::string path(label.path);
    return {what + ": n_lon and n_lat in the header of " + path + " do not fit its data.",
            "counts in " + path + " that do not fit its data"};
}

bool odd_spacing(float d) {
    return !(d >= closest_spacing && d <= widest_spacing);
}

}  // namespace

void add_row(std::span<const float> row, const RowInFile& at, const ListInput& input,
             bool roughness, MapFindings& findings) {
    const Range range = range_of(row);
    findings.smallest = std::min(findings.smallest, range.low);
    findings.largest = std::max(findings.largest, range.high);
    if (is_odd(range.low, roughness) || is_odd(range.high, roughness)) {
        const auto odd = [roughness](float value) { return is_odd(value, roughness); };
        if (findings.odd_count == 0) {
            const auto first = std::ranges::find_if(row, odd);
            const auto column = static_cast<std::size_t>(first - row.begin()) + 1;
            findings.first_row = at.row;
            findings.first_column = static_cast<int>(column);
            findings.first_row_line = at.line;
            findings.first_line = line_of(at, column);
            findings.first_value = *first;
        }
        findings.odd_count += std::ranges::count_if(row, odd);
    }
    if (input.row_left_values()) {
        if (findings.long_rows == 0) {
            findings.first_long_row = at.row;
            findings.first_long_line = input.row_line();
        }
        ++findings.long_rows;
    }
}

std::string map_summary(const MapLabel& label, const MapHeader& header,
                        const MapFindings& findings) {
    const DegreeExtent extent = degree_extent(header);
    return std::string(label.name) + " " + std::string(label.path) + ": longitude " +
           degrees(extent.west) + " to " + degrees(extent.east) + ", latitude " +
           degrees(extent.south) + " to " + degrees(extent.north) + " degrees, spacing " +
           metres(label.dX, 3) + " m by " + metres(label.dY, 3) + " m, values " +
           value_text(findings.smallest, label.roughness) + " to " +
           value_text(findings.largest, label.roughness) + " m";
}

std::vector<Warning> map_warnings(const MapLabel& label, const MapHeader& header,
                                  const MapFindings& f) {
    std::vector<Warning> warnings;
    if (!label.roughness && f.odd_count > 0) {
        warnings.push_back(gap_warning(label, f));
    }
    if (odd_spacing(label.dX) || odd_spacing(label.dY)) {
        warnings.push_back(spacing_warning(label));
    }
    if (const DegreeExtent extent = degree_extent(header); !on_the_globe(extent)) {
        warnings.push_back(place_warning(label, extent));
    }
    if (f.long_rows > 0) {
        warnings.push_back(count_warning(
            label, counted(f.long_rows, "row", "rows") + " of " + std::to_string(header.columns) +
                       " values leave further values unread on their line, the first is row " +
                       std::to_string(f.first_long_row) + " in line " +
                       std::to_string(f.first_long_line)));
    }
    if (f.line_behind > 0) {
        warnings.push_back(
            count_warning(label, "numbers go on behind row " + std::to_string(header.rows) +
                                     ", the last, from line " + std::to_string(f.line_behind) +
                                     " on and are not read"));
    }
    return warnings;
}

}  // namespace torvex
