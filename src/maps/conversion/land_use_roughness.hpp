#pragma once

#include <span>
#include <string>
#include <vector>

#include "base/field.hpp"
#include "roughness/canopy_conv_table.hpp"
#include "roughness/conv_table.hpp"

namespace torvex {

inline constexpr int sea_class = 12;  // the row of a land-use table that stands for the sea

// The two land-use tables together: codes into classes, classes into roughness.
struct LandUseTables {
    CanopyConvTable classes;
    int rows = 0;  // read
    ConvTable roughness;

    float sea_code() const;  // of class 12; stops with 1 where the table has no such row
};

// Reads "cnpy_conv_table.tin" and "conv_table.tin" of the current directory, with the stops of
// their readers.
LandUseTables read_land_use_tables();

// The roughness length [m] of each code. Codes that no row has are found before codes are replaced,
// since a code may equal the number of a row. Stops with 1, listing them, for codes without a row
// and for rows in use whose Z00 is not above 0.
void codes_to_roughness(const LandUseTables& tables, const std::string& where, Field2& values);
std::vector<float> codes_to_roughness(const LandUseTables& tables, const std::string& where,
                                      std::span<const float> codes);

}  // namespace torvex
