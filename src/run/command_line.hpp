#pragma once

#include <string>
#include <vector>

namespace torvex {

// Case file named behind "/f", or "torvex.tin". An argument is taken without the blanks on its
// left, the name behind "/f" as it stands; "/f" as the last argument changes nothing. Stop 102: any
// other argument.
std::string case_file_argument(const std::vector<std::string>& arguments);

}  // namespace torvex
