#include "maps/conversion/lay_over.hpp"

#include <algorithm>
#include <cstddef>

#include "canopy/canopy_roughness.hpp"

namespace torvex {

namespace {

Line1 lines_between(double first, double step, int count, double centre, float metres) {
    Line1 line(count + 1);
    for (int n = 1; n <= count + 1; ++n) {
        line(n) =
            static_cast<float>((first + (n - 1.5) * step - centre) * static_cast<double>(metres));
    }
    return line;
}

// The pieces on a sample: cell (i+1, j+1) of the lines.
const Ring<CanopyPiece>& on_sample(const ColumnLists& pieces, int i, int j) {
    return pieces.at(i + 1, j + 1);
}

}  // namespace

SampleLines sample_lines(const DegreeRaster& raster, double centre_lon, double centre_lat,
                         MetresPerMinute metres) {
    return {
        lines_between(raster.base_lon, raster.d_lon, raster.values.ni(), centre_lon, metres.lon),
        lines_between(raster.base_lat, raster.d_lat, raster.values.nj(), centre_lat, metres.lat)};
}

void lay_over(const ColumnLists& pieces, DegreeRaster& roughness) {
    Field2& values = roughness.values;
    Field2 ringed(values.ni() + 2, values.nj() + 2, 1.0F);
    for (int j = 1; j <= values.nj(); ++j) {
        for (int i = 1; i <= values.ni(); ++i) {
            ringed(i + 1, j + 1) = values(i, j);
        }
    }
    const ColumnLists* const sets[2] = {&pieces, nullptr};
    canopy_roughness(sets, ringed);
    for (int j = 1; j <= values.nj(); ++j) {
        for (int i = 1; i <= values.ni(); ++i) {
            values(i, j) = ringed(i + 1, j + 1);
        }
    }
}

Array2<std::int32_t> land_use_of(const ColumnLists& pieces, const DegreeRaster& raster) {
    Array2<std::int32_t> luid(raster.values.ni(), raster.values.nj());
    for (int j = 1; j <= luid.nj(); ++j) {
        for (int i = 1; i <= luid.ni(); ++i) {
            const Ring<CanopyPiece>& here = on_sample(pieces, i, j);
            if (!here.empty()) {
                luid(i, j) = here[here.size() - 1].attributes.luid;
            }
        }
    }
    return luid;
}

void raise_heights(const ColumnLists& pieces, Field2& height) {
    for (int j = 1; j <= height.nj(); ++j) {
        for (int i = 1; i <= height.ni(); ++i) {
            const Ring<CanopyPiece>& here = on_sample(pieces, i, j);
            for (std::size_t n = 0; n < here.size(); ++n) {
                height(i, j) = std::max(height(i, j), here[n].attributes.h);
            }
        }
    }
}

}  // namespace torvex
