#pragma once

#include <string>

#include "base/fixed_array.hpp"

namespace torvex {

inline constexpr int land_use_classes = 15;  // most classes that a land-use table holds

// The roughness length of each land-use class.
struct ConvTable {
    std::string file_name = "conv_table.tin";   // at most 256 characters count
    FixedArray<float, land_use_classes> Z00{};  // by class, 1 to 15 [m]; 0 where the file is silent
};

// Reads the group &CONV_TABLE, whose only key is Z00, from table.file_name. Classes that the group
// does not assign keep what they hold.
//
// stops 1 with NAME " not found." on the console; a bad group or value names file, line and key
void read_conv_table(ConvTable& table);

}  // namespace torvex
