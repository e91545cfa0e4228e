#include "maps/conversion/esri_grid.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "base/list_input.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"

namespace torvex {

namespace {

constexpr const char* form =
    "an ESRI ASCII grid begins with ncols, nrows, xllcorner, yllcorner and cellsize";
constexpr float unknown = std::numeric_limits<float>::quiet_NaN();

std::string lower_case(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

class Header {
 public:
    Header(const std::string& path, ListInput& input, std::string_view text) : path_(path) {
        // The header ends in front of the first line that begins with a number.
        for (const std::string_view line : split_lines(text)) {
            const std::string_view words = trimmed(line);
            if (words.empty() || std::isalpha(static_cast<unsigned char>(words.front())) == 0) {
                break;
            }
            take(words, input.line());
            std::string_view passed;
            input.read_line(passed);
        }
        line_ = input.line();
    }

    std::optional<double> find(std::string_view key) const {
        const auto found = values_.find(key);
        return found == values_.end() ? std::nullopt : std::optional(found->second);
    }
    double need(std::string_view key, std::string_view or_key = {}) const {
        std::optional<double> value = find(key);
        if (!value && !or_key.empty()) {
            value = find(or_key);
        }
        if (!value) {
            stop(1, "the grid has no " + std::string(key), place(path_, line_), form);
        }
        return *value;
    }
    // South-west sample along an axis, from the corner of its cell or its centre.
    double base(std::string_view corner, std::string_view centre, double step) const {
        const std::optional<double> at_centre = find(centre);
        return at_centre ? *at_centre : need(corner) + step / 2.0;
    }

 private:
    void take(std::string_view words, long line) {
        const std::size_t blank = std::min(words.find_first_of(" \t"), words.size());
        const std::string_view value = trimmed(words.substr(blank));
        ListInput input(value, line);
        double number = std::numeric_limits<double>::quiet_NaN();
        const std::string key = lower_case(words.substr(0, blank));
        const bool is_nodata = key == "nodata_value";
        if (!input.read(number) || (!is_nodata && !std::isfinite(number))) {
            stop(1, "cannot read " + excerpt(words) + ", expected a key and a number",
                 place(path_, line), form);
        }
        values_[key] = number;
    }

    const std::string& path_;
    std::map<std::string, double, std::less<>> values_;
    long line_ = 0;
};

// Limits that a count can have where a text of so many bytes holds the values.
int count_of(double value, std::string_view key, std::size_t bytes, const std::string& path) {
    if (!(value >= 2.0 && value <= static_cast<double>(bytes) && value == std::floor(value))) {
        stop(1, std::string(key) + " does not fit the grid", path,
             "it must be a whole number, 2 or more, and the values must be there");
    }
    return static_cast<int>(value);
}

float accepted(float value, float nodata, bool positive, int i, int row, const std::string& path) {
    const bool none = value == nodata || std::isnan(value);
    if (none) {
        return unknown;
    }
    if (!std::isfinite(value) || (positive && !(value > 0.0F))) {
        stop(1,
             "column " + std::to_string(i) + " of row " + std::to_string(row) +
                 " of the grid, from the north, is not " +
                 (positive ? "a roughness above 0" : "a finite number"),
             path, "mark it with NODATA_value, or correct it");
    }
    return value;
}

}  // namespace

DegreeRaster read_esri_grid(const std::string& path, bool positive) {
    const std::optional<std::string> text = read_text_file(path);
    if (!text) {
        stop(1, "the grid cannot be read", path, "name an existing ESRI ASCII grid");
    }
    ListInput input(*text);
    const Header header(path, input, *text);
    const int columns = count_of(header.need("ncols"), "ncols", text->size(), path);
    const int rows = count_of(header.need("nrows"), "nrows", text->size(), path);
    const auto count = static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows);
    if (count > text->size()) {
        stop(1, "ncols and nrows promise more values than the file can hold", path, form);
    }
    const double dx = header.need("cellsize", "dx");
    const double dy = header.need("cellsize", "dy");
    if (!(dx > 0.0 && dy > 0.0)) {
        stop(1, "cellsize is not above 0", path, form);
    }
    DegreeRaster raster;
    raster.d_lon = dx * 60.0;
    raster.d_lat = dy * 60.0;
    raster.base_lon = header.base("xllcorner", "xllcenter", dx) * 60.0;
    raster.base_lat = header.base("yllcorner", "yllcenter", dy) * 60.0;

    std::vector<float> southwards(count, unknown);
    if (!input.read_row(southwards.data(), count)) {
        stop(1, "the grid: " + input.fault().message(), place(path, input.fault().line),
             std::to_string(columns) + " by " + std::to_string(rows) + " numbers are expected");
    }
    const auto nodata = static_cast<float>(header.find("nodata_value").value_or(-9999.0));
    raster.values.allocate(columns, rows);
    for (int row = 1; row <= rows; ++row) {
        for (int i = 1; i <= columns; ++i) {
            const std::size_t at =
                static_cast<std::size_t>(row - 1) * static_cast<std::size_t>(columns) +
                static_cast<std::size_t>(i - 1);
            raster.values(i, rows + 1 - row) =
                accepted(southwards[at], nodata, positive, i, row, path);
        }
    }
    return raster;
}

}  // namespace torvex
