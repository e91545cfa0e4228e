#pragma once

#include <cstdint>

namespace torvex {

// Files that an operator drops into the case directory while a run goes on.

// "#stop_message": the run ends after the iteration in hand. It is deleted at the start of a run.
bool stop_requested_by_file();
void delete_stop_message();

// "#OutputIntermediateCount": one integer, iterations between intermediate results; 0 switches them
// off. A file that is absent or unreadable, or a negative number, leaves the value alone.
void read_intermediate_interval(std::int32_t& interval);

}  // namespace torvex
