#include "maps/conversion/map_picture.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "base/whole_file.hpp"
#include "maps/conversion/conversion_settings.hpp"
#include "results/contour_grid.hpp"

namespace torvex {

namespace {

using Colour = std::array<double, 3>;  // red, green, blue, 0 to 255

// From valley green over yellow and brown to white, legible without colours too.
constexpr std::array<Colour, 5> ramp{
    {{20, 90, 60}, {110, 160, 80}, {225, 210, 120}, {170, 110, 70}, {250, 250, 250}}};

Colour colour_of(double t) {
    const double at = std::clamp(t, 0.0, 1.0) * (ramp.size() - 1);
    const std::size_t n = std::min(static_cast<std::size_t>(at), ramp.size() - 2);
    const double w = at - static_cast<double>(n);
    Colour colour{};
    for (std::size_t c = 0; c < 3; ++c) {
        colour[c] = (1.0 - w) * ramp[n][c] + w * ramp[n + 1][c];
    }
    return colour;
}

// Where a value stands between the ends of the scale.
class Scale {
 public:
    Scale(const Field2& values, Quantity quantity) : roughness_(quantity == Quantity::roughness) {
        if (!roughness_) {
            const auto [low, high] =
                std::minmax_element(values.data(), values.data() + values.size());
            low_ = static_cast<double>(*low);
            span_ = std::max(static_cast<double>(*high) - low_, 1.0);  // a level map has one colour
        }
    }
    double operator()(float value) const {
        if (roughness_) {
            constexpr double decades = 5.0;
            return (std::log10(std::max(static_cast<double>(value), 1.0e-4)) + 4.0) / decades;
        }
        return (static_cast<double>(value) - low_) / span_;
    }

 private:
    bool roughness_;
    double low_ = 0;
    double span_ = 1;
};

void write_pixmap(const std::string& path, const DegreeRaster& map, Quantity quantity) {
    const Field2& values = map.values;
    const Scale scale(values, quantity);
    std::string bytes =
        "P6\n" + std::to_string(values.ni()) + ' ' + std::to_string(values.nj()) + "\n255\n";
    for (int j = values.nj(); j >= 1; --j) {
        for (int i = 1; i <= values.ni(); ++i) {
            for (const double c : colour_of(scale(values(i, j)))) {
                bytes += static_cast<char>(static_cast<unsigned char>(std::lround(c)));
            }
        }
    }
    write_text_file_whole(path, bytes);
}

}  // namespace

void write_map_picture(const std::string& path, int type, const DegreeRaster& map,
                       Quantity quantity) {
    if (type == picture::pixmap) {
        write_pixmap(path, map, quantity);
    } else if (type == picture::text_grid) {
        const auto degrees = [](double minutes) { return static_cast<float>(minutes / 60.0); };
        write_contour_grid(path,
                           {map.values, degrees(map.lon(1)), degrees(map.lon(map.values.ni())),
                            degrees(map.lat(1)), degrees(map.lat(map.values.nj())),
                            quantity == Quantity::roughness ? roughness_range : terrain_range});
    }
}

}  // namespace torvex
