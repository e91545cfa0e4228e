#pragma once

#include <string_view>

#include "base/field.hpp"
#include "maps/map_header.hpp"

namespace torvex {

// Samples on the earth in even steps of longitude and latitude. A sample that is not known is NaN.
struct DegreeRaster {
    double base_lon = 0;  // south-west sample [minutes of arc]
    double base_lat = 0;
    double d_lon = 0;  // steps [minutes of arc]
    double d_lat = 0;
    int datum = 0;  // 0 not given, 1 Tokyo, 2 JGD2000, 3 WGS84
    Field2 values;  // (column, row) from the south-west sample

    double lon(int i) const { return base_lon + (i - 1) * d_lon; }
    double lat(int j) const { return base_lat + (j - 1) * d_lat; }
};

// The samples of a map without its values. The reals of the header are single; what is taken is the
// shortest decimal number that each stands for, so that 0.075 is 0.075.
DegreeRaster raster_of(const MapHeader& header);

// As a header says it; blank for 0.
std::string_view datum_name(int datum);

// Refuses rasters that no map of a case would want, before memory is asked for them. Stops with 1.
void require_reasonable_size(double columns, double rows, std::string_view what);

}  // namespace torvex
