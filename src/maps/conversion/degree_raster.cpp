#include "maps/conversion/degree_raster.hpp"

#include <array>
#include <charconv>
#include <string>

#include "base/edit.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

constexpr double most_samples = 2.5e7;

double decimal_value(float value) {
    std::array<char, 32> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
    auto decimal = static_cast<double>(value);
    std::from_chars(text.data(), written.ptr, decimal);
    return decimal;
}

double minutes(const FixedArray<float, 2>& base) {
    return decimal_value(base(1)) * 60.0 + decimal_value(base(2));
}

}  // namespace

DegreeRaster raster_of(const MapHeader& header) {
    DegreeRaster raster;
    raster.base_lon = minutes(header.base_longitude);
    raster.base_lat = minutes(header.base_latitude);
    raster.d_lon = decimal_value(header.spacing(1));
    raster.d_lat = decimal_value(header.spacing(2));
    raster.datum = header.datum;
    return raster;
}

std::string_view datum_name(int datum) {
    constexpr std::array<std::string_view, 4> names{"", "TKY", "JGD", "WGS"};
    return datum >= 0 && datum < 4 ? names[static_cast<std::size_t>(datum)] : "";
}

void require_reasonable_size(double columns, double rows, std::string_view what) {
    if (!(columns * rows <= most_samples)) {
        stop(1,
             std::string(what) + " would have" + edit::F(columns, 14, 0) + " columns and" +
                 edit::F(rows, 14, 0) + " rows",
             "group &TRDB2TVM", "check WE_LENGTH, NS_LENGTH, MAX_DXY, D_LON, D_LAT and the ratios");
    }
}

}  // namespace torvex
