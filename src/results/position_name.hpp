#pragma once

#include <string>

#include "base/fixed_array.hpp"

namespace torvex {

// A position as 25 characters fit for a file name, such as T350502_5000-1394500_0000: letter of the
// datum, degrees, minutes and seconds of latitude, the same of longitude. Signs are dropped.
std::string position_name(const Triple& lat, const Triple& lon, int datum);

}  // namespace torvex
