#pragma once

#include <string>

#include "base/field.hpp"

namespace torvex {

// A roughness field in centimetres, ghosts included, to be looked at: the lines run from the left
// side of the wind to the right one (j from nj down to 1), the columns downwind.
void write_roughness_table(const std::string& path, const Field2& z0);

}  // namespace torvex
