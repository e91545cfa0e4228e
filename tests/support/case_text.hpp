#pragma once

#include <string>
#include <utility>
#include <vector>

namespace torvex::test {

// Text of case files. An item such as {"NML_RUN", "RESTART_FLAG = 1"} adds a line at the end of its
// group, where it overrides what stands above it.
using CaseItems = std::vector<std::pair<std::string, std::string>>;

// A case that the reader accepts, over 400 m by 400 m with 16 directions. `behind` follows the
// groups: keyed blocks.
std::string case_text(const CaseItems& items = {}, const std::string& behind = {});

// A case that runs quickly from start to end beside the maps "h.map" and "z0.map": a small mesh, no
// outer iterations.
std::string quick_case_text(const CaseItems& items = {}, const std::string& behind = {});

// Text of a map with one value everywhere round the centre of the cases above.
std::string level_map(const std::string& value);

// All eight groups, empty.
std::string empty_groups();

// A block nest_points of a child of the case above.
std::string nest_block();

// Number of the first line that holds a text, from 1; 0 if there is none.
long line_of(const std::string& text, const std::string& what);

// The text with every date stamp at the start of a line made "<date>".
std::string without_dates(const std::string& text);

std::vector<std::string> lines_of(const std::string& text);

}  // namespace torvex::test
