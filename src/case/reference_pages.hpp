#pragma once

#include <string>

namespace torvex {

// The reference pages of the documentation, in Markdown, written from the tables that the program
// itself works with.
std::string case_file_page();   // every group, block and key of the case file
std::string stop_codes_page();  // every way a run can end before its time

}  // namespace torvex
