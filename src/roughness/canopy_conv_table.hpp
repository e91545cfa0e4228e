#pragma once

#include <string>
#include <vector>

#include "base/fixed_array.hpp"
#include "roughness/conv_table.hpp"

namespace torvex {

// What a land-use class stands for as a canopy.
struct CanopyClass {
    std::string name;        // 20 characters
    FixedArray<float, 5> p;  // height [m], packing density [-], RLS [m], Cf [-], z0 [m]
    float code = -1;         // of the class as it stands in the land-use map
    bool valid = false;      // a row that was read
    int id = 0;              // as the file counts its rows
};

// The rows of a table of classes, in the order of its file.
struct CanopyConvTable {
    std::vector<CanopyClass> rows;  // none until the first read, then 15
};

inline constexpr const char* canopy_conv_table_name = "cnpy_conv_table.tin";

// Reads the table: a line of text, then one record for each class,
//
//   id name code height RLS packing_density Cf z0
//
// and at most 15 of them. Rows that the file does not give keep what they hold, blank at first.
// Returns the number of rows read.
//
// stops 1 with NAME " not found." or "Caught error during reading cnpy_conv_tab" on the console;
// the latter also for a 16th row
int read_canopy_conv_table(CanopyConvTable& table,
                           const std::string& name = canopy_conv_table_name);

// The first row read whose code this is; null where there is none.
const CanopyClass* class_of_code(const CanopyConvTable& table, float code);

}  // namespace torvex
