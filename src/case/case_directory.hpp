#pragma once

#include <string>

#include "base/case_settings.hpp"

namespace torvex {

// Full path of a name seen from the current directory; a blank name stays blank.
std::string full_path(const std::string& name);

// Makes the directory of a file, given by its full path, the current one. False if there is none.
bool enter_directory_of(const std::string& path);

// Full paths for the maps and the inflow profile, seen from the current directory.
void expand_file_keys(CaseSettings& settings);

}  // namespace torvex
