#pragma once

#include <filesystem>
#include <string>

namespace torvex::test {

// What is wrong with the files that outlive a run, blank if nothing is: each file of records must
// be whole, its reals finite, and each restart*.info must name a result that is there and has the
// count of the file; a restart.info must not be older than the mesh it stands beside.
std::string complaint_about_saved_files(const std::filesystem::path& directory);

// True if the ground of a file of mesh nodes is level at so many metres, but for the rounding of
// what is read off the maps.
bool lies_at(const std::string& xyz_file, float height);

// True if an unfinished file has been left under its temporary name.
bool has_temporary_file(const std::filesystem::path& directory);

}  // namespace torvex::test
