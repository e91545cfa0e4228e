#pragma once

#include <string>

#include "base/field.hpp"

namespace torvex {

// A roughness field in centimetres, ghosts included, to be looked at: the lines run from the left
// side of the wind to the right one (j from nj down to 1), the columns downwind.
void write_roughness_table(const std::string& path, const Field2& z0);

// "log-upwind_roughness-TAG": the name without the prefix of a run.
std::string upwind_roughness_name(const std::string& tag);

// The upwind roughness of a direction [m], one free-form number, for later runs to take over.
void write_upwind_roughness(const std::string& path, float z_up);

// Stops with 186 where the file cannot be opened, `fix` saying which run makes it, and with 1 where
// it does not begin with a number above 0.
float read_upwind_roughness(const std::string& path, const std::string& fix);

}  // namespace torvex
