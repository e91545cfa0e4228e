#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace torvex {

// The least memory limit of the control groups that this process is in, versions 1 and 2 [bytes];
// nothing where there is none. `root` stands before all paths, for tests.
std::optional<std::int64_t> group_memory_limit(const std::string& root = "");

// The largest resident memory that this process has had [bytes].
std::int64_t peak_memory();

// What a user may still write to the file system of the current directory [bytes]; nothing where
// it does not tell.
std::optional<std::int64_t> free_disk();

}  // namespace torvex
