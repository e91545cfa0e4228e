#include "case/case_directory.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace torvex {

std::string full_path(const std::string& name) {
    if (name.empty()) {
        return name;
    }
    const std::filesystem::path path = std::filesystem::absolute(name);
    // Behind a link ".." is the directory above the link's target, which only the disk can tell.
    const bool climbs = std::ranges::find(path, "..") != path.end();
    std::error_code error;
    const std::filesystem::path resolved =
        climbs ? std::filesystem::weakly_canonical(path, error) : path.lexically_normal();
    return error ? path.string() : resolved.string();
}

bool enter_directory_of(const std::string& path) {
    std::error_code error;
    std::filesystem::current_path(std::filesystem::path(path).parent_path(), error);
    return !error;
}

void expand_file_keys(CaseSettings& settings) {
    for (std::string* name :
         {&settings.BASIC_H_FILE, &settings.DETAILED_H_FILE, &settings.BASIC_Z0_FILE,
          &settings.DETAILED_Z0_FILE, &settings.INFLOW_PROFILE_FILE}) {
        *name = full_path(*name);
    }
}

}  // namespace torvex
