#pragma once

#include <optional>
#include <string>

namespace torvex {

// "log-upwind_roughness-TAG", the upwind roughness of a direction [m] as one free-form number,
// which later runs take over. The name is without the prefix of a run.
std::string upwind_roughness_name(const std::string& tag);

// Writes z_up [m] so that reading gives its very bits back. Stops with 1 where the file cannot be
// written.
void write_upwind_roughness(const std::string& path, float z_up);

// Nothing where the file cannot be opened. Stops with 1 where it does not begin with a finite
// number above 0, `fix` saying how to come by a good one.
std::optional<float> read_upwind_roughness(const std::string& path, const std::string& fix);

}  // namespace torvex
