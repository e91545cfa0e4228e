#pragma once

#include <string>

namespace torvex {

// python/torvex/fields.py: the fields that are kept, with unit, long name and the ids of the files
// that hold them, in the order of their records.
std::string python_field_list();

}  // namespace torvex
