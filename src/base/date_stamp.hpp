#pragma once

#include <string>

namespace torvex {

// Local time as 19 characters, yyyy/mm/dd hh:mm:ss, at the head of timed log lines.
std::string date_stamp();

}  // namespace torvex
