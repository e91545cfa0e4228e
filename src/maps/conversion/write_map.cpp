#include "maps/conversion/write_map.hpp"

#include <algorithm>
#include <cmath>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/whole_file.hpp"

namespace torvex {

namespace {

constexpr int values_a_line = 10;
constexpr float least_roughness = 0.00001F;  // the last digit of F9.5

// Degrees and minutes of an angle, both with its sign.
std::string degrees_and_minutes(double minutes) {
    const double degrees = std::trunc(minutes / 60.0);
    return std::string(trimmed(edit::F(degrees, 5, 0).substr(0, 4))) + ' ' +
           std::string(trimmed(edit::F(minutes - degrees * 60.0, 20, 9)));
}

std::string step(double minutes) {
    return std::string(trimmed(edit::F(minutes, 20, 12)));
}

std::string header(const DegreeRaster& map) {
    std::string text =
        "<TORVEX_MAP lon-lat>\n"
        "# made by torvex-prep maps\n";
    text += "n_lon = " + std::to_string(map.values.ni()) + '\n';
    text += "n_lat = " + std::to_string(map.values.nj()) + '\n';
    text += "d_lon = " + step(map.d_lon) + '\n';
    text += "d_lat = " + step(map.d_lat) + '\n';
    text += "base_longitude = " + degrees_and_minutes(map.base_lon) + '\n';
    text += "base_latitude = " + degrees_and_minutes(map.base_lat) + '\n';
    if (map.datum != 0) {
        text += "geodetic_system = '" + std::string(datum_name(map.datum)) + "'\n";
    }
    return text + "--DATA--\n";
}

std::string elevation_text(float h) {
    return edit::F(h, 8, 1);
}

std::string roughness_text(float z0) {
    return edit::F(std::max(z0, least_roughness), 9, 5);
}

// Every field begins with a blank, so that values stay apart.
void append(float value, Quantity quantity, const std::string& path, std::string& text) {
    const std::string field =
        quantity == Quantity::roughness ? roughness_text(value) : elevation_text(value);
    if (field.front() != ' ' || !std::isfinite(value)) {
        stop(1,
             (quantity == Quantity::roughness ? "a roughness of" : "an elevation of") +
                 edit::E(value, 15, 7) + " m does not go into a map",
             path, "correct the source of the map");
    }
    text += field;
}

}  // namespace

void write_map(const std::string& path, const DegreeRaster& map, Quantity quantity) {
    std::string text = header(map);
    for (int j = 1; j <= map.values.nj(); ++j) {
        for (int i = 1; i <= map.values.ni(); ++i) {
            append(map.values(i, j), quantity, path, text);
            if (i % values_a_line == 0 || i == map.values.ni()) {
                text += '\n';
            }
        }
    }
    write_text_file_whole(path, text);
}

}  // namespace torvex
