// The header of a text map:
//
//   <TORVEX_MAP lon-lat>
//   # a comment
//   n_lon = 527, n_lat = 385,
//   d_lon = 0.016666667, d_lat = 0.016666667
//   base_longitude = -113 -5.88333342
//   base_latitude = 43 20.79999994
//   geodetic_system = 'WGS'
//   --DATA--
//
// Items end at a comma or at the line's end. Unknown keys are passed over, a repeated key counts
// the last time, and six keys must be there.

#include "maps/map_header.hpp"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/text_file.hpp"

namespace torvex {

namespace {

constexpr std::array<std::string_view, 6> required{"n_lon", "n_lat",          "d_lon",
                                                   "d_lat", "base_longitude", "base_latitude"};

std::string_view without_trailing_blanks(std::string_view text) {
    const std::size_t last = text.find_last_not_of(" \t");
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

bool fail(MapHeader& header, int error, long line, std::string problem) {
    header.error = error;
    header.line = line;
    header.problem = std::move(problem);
    return false;
}

int datum_of(std::string_view value, int unchanged) {
    value = without_trailing_blanks(value.substr(0, 10));
    if (value.starts_with('\'')) {
        value.remove_prefix(1);
    }
    if (value.ends_with('\'')) {
        value.remove_suffix(1);
    }
    if (value.starts_with("TD") || value.starts_with("TKY")) {
        return 1;
    }
    if (value.starts_with("JGD")) {
        return 2;
    }
    return value.starts_with("WGS") ? 3 : unchanged;
}

// Sets the value that belongs to a key; false if its text cannot be read.
bool set_value(MapHeader& header, std::string_view key, std::string_view text) {
    ListInput value(text);
    if (key == "n_lon") {
        return value.read(header.columns);
    }
    if (key == "n_lat") {
        return value.read(header.rows);
    }
    if (key == "d_lon") {
        return value.read(header.spacing(1)) && std::isfinite(header.spacing(1));
    }
    if (key == "d_lat") {
        return value.read(header.spacing(2)) && std::isfinite(header.spacing(2));
    }
    FixedArray<float, 2>& base =
        key == "base_longitude" ? header.base_longitude : header.base_latitude;
    return value.read(base(1), base(2)) && std::isfinite(base(1)) && std::isfinite(base(2));
}

std::string_view expected_value(std::string_view key) {
    if (key.starts_with("n_")) {
        return "an integer";
    }
    return key.starts_with("d_") ? "a finite real number"
                                 : "degrees and minutes separated by blanks";
}

using Found = std::array<bool, required.size()>;

bool read_items(MapHeader& header, std::string_view line, long number, Found& found) {
    for (std::size_t equals = line.find('='); equals != std::string_view::npos;
         equals = line.find('=')) {
        // Text up to a comma in front of the "=" is an item without a value and says nothing.
        const std::size_t start = line.rfind(',', equals) + 1;
        const std::string_view key = trimmed(line.substr(start, equals - start));
        const std::size_t comma = std::min(line.find(',', equals), line.size());
        const std::string_view value = left_adjusted(line.substr(equals + 1, comma - equals - 1));
        const auto* const name = std::find(required.begin(), required.end(), key);
        if (name != required.end()) {
            if (!set_value(header, key, value)) {
                return fail(header, 3, number,
                            "cannot read " + std::string(key) + " = " + excerpt(value) +
                                ", expected " + std::string(expected_value(key)));
            }
            found[static_cast<std::size_t>(name - required.begin())] = true;
        } else if (key == "geodetic_system") {
            header.datum = datum_of(value, header.datum);
        }
        line.remove_prefix(std::min(comma + 1, line.size()));
    }
    return true;
}

bool check(MapHeader& header, const Found& found, long separator) {
    for (std::size_t n = 0; n < required.size(); ++n) {
        if (!found[n]) {
            return fail(header, 2, separator,
                        "the header ends without " + std::string(required[n]));
        }
    }
    if (header.columns < 2 || header.rows < 2) {
        return fail(header, 2, separator,
                    "the map has " + std::to_string(header.columns) + " columns (n_lon) and " +
                        std::to_string(header.rows) + " rows (n_lat), expected 2 or more of both");
    }
    if (!(header.spacing(1) > 0.0F) || !(header.spacing(2) > 0.0F)) {
        return fail(header, 2, separator, "d_lon and d_lat must be above 0");
    }
    return true;
}

}  // namespace

DegreeExtent degree_extent(const MapHeader& header) {
    constexpr double minutes = 60.0;  // of a degree
    const auto first = [](const FixedArray<float, 2>& base) {
        return static_cast<double>(base(1)) + static_cast<double>(base(2)) / minutes;
    };
    const auto length = [&header](int axis, int points) {
        return static_cast<double>(header.spacing(axis)) * (points - 1.0) / minutes;
    };
    const double west = first(header.base_longitude);
    const double south = first(header.base_latitude);
    return {west, west + length(1, header.columns), south, south + length(2, header.rows)};
}

MapHeader read_map_header(ListInput& input) {
    MapHeader header;
    std::string_view line;
    if (!input.read_line(line)) {
        fail(header, 3, 1, "the file is empty, expected a map header");
        return header;
    }
    const std::string_view tag = without_trailing_blanks(line);
    if (tag == "<TORVEX_MAP x-y>") {
        header.kind = 2;
        fail(header, 1, 1, "the map is of kind x-y, which is not accepted");
        return header;
    }
    if (tag != "<TORVEX_MAP lon-lat>") {
        fail(header, 3, 1,
             "the first line is " + excerpt(line) + ", expected \"<TORVEX_MAP lon-lat>\"");
        return header;
    }
    header.kind = 1;

    Found found{};
    for (;;) {
        const long number = input.line();
        if (!input.read_line(line)) {
            fail(header, 3, number, "the file ends before the line \"--DATA--\"");
            return header;
        }
        if (line.starts_with('#')) {
            continue;
        }
        if (without_trailing_blanks(line) == "--DATA--") {
            check(header, found, number);
            return header;
        }
        if (!read_items(header, line, number, found)) {
            return header;
        }
    }
}

}  // namespace torvex
