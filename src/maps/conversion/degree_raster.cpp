#include "maps/conversion/degree_raster.hpp"

#include <string>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"

namespace torvex {

namespace {

constexpr double most_samples = 2.5e7;

// The shortest decimal that a header can have meant by a real number, which holds seven digits.
double decimal_value(float value) {
    constexpr int most_digits = 9;  // as many tell every real from its neighbours
    constexpr int around_digits = 8;
    for (int digits = 1; digits <= most_digits; ++digits) {
        const std::string text = edit::E(value, digits + around_digits, digits);
        float again = 0.0F;
        double decimal = 0.0;
        if (parse_real(trimmed(text), again) && again == value &&
            parse_real(trimmed(text), decimal)) {
            return decimal;
        }
    }
    return static_cast<double>(value);
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
