#pragma once

#include <string>
#include <string_view>

#include "base/fixed_array.hpp"
#include "base/list_input.hpp"

namespace torvex {

// Header of a text map. Pairs are longitude first, x first.
struct MapHeader {
    int kind = 0;                         // 1 lon-lat, 2 x-y
    int columns = 0;                      // n_lon
    int rows = 0;                         // n_lat
    FixedArray<float, 2> spacing;         // d_lon, d_lat [minutes of arc]
    FixedArray<float, 2> offset;          // ox, oy [m], of an x-y map
    FixedArray<float, 2> base_longitude;  // south-west point: degrees, minutes
    FixedArray<float, 2> base_latitude;
    int datum = 0;  // 0 not given, 1 Tokyo, 2 JGD2000, 3 WGS84
    int error = 0;  // 0 good, 1 x-y, 2 key missing or out of range, 3 not readable

    std::string problem;  // where error is not 0: what is wrong, in words
    long line = 0;        // and the line it stands in
};

// The first and the last points of a map, in degrees; its numbers as they stand.
struct DegreeExtent {
    double west = 0, east = 0;
    double south = 0, north = 0;
};

// Of a header whose error is 0.
DegreeExtent degree_extent(const MapHeader& header);

// Reads the header and leaves `input` at the first data row. An x-y map is recognised and refused
// at once. Errors are told in the result, the caller knows the stop codes.
MapHeader read_map_header(ListInput& input);

}  // namespace torvex
