#pragma once

#include <cstdint>

#include "base/field.hpp"
#include "roughness/canopy_conv_table.hpp"

namespace torvex {

// A land-use map: codes until they are replaced by the numbers of the rows of a table.
struct LandUseMap {
    Field2 values;          // (column, row)
    bool replaced = false;  // codes have become row numbers
};

// For each row r of the table that was read, one after the other: every value equal to the row's
// code becomes r. A value without a row stays; a value that has become r is replaced again where a
// later row has the code r. The second call for a map does nothing.
void replace_codes(const CanopyConvTable& table, LandUseMap& map);

// The same, and the map as integers, cut towards zero. Stops 1 for a value that no integer holds.
Array2<std::int32_t> replaced_codes(const CanopyConvTable& table, LandUseMap& map);

}  // namespace torvex
