#pragma once

#include <string>
#include <string_view>

// The names of a run's files, each spelled here and nowhere else. `prefix` is run_prefix ("",
// "atlas-", "flat-", "flat2-", "nest-"), `tag` the five characters of a direction. A stem is the
// head of a name: no directory is involved.
namespace torvex::file_names {

inline constexpr std::string_view run_log = "torvex.log";
inline constexpr std::string_view mesh_log = "log-meshnumber";  // behind the prefix
inline constexpr std::string_view directions_table = "view-wind_direction.dat";  // alike
inline constexpr std::string_view label_list = "_latlon_label_list.txt";

// Before the tag of a direction.
inline constexpr std::string_view upwind_roughness_log = "log-upwind_roughness-";

// Heads of the names of a direction's binary files and of its site files.
inline std::string restart_stem(std::string_view prefix, std::string_view tag) {
    return std::string(prefix) + "restart-" + std::string(tag) + "-";
}
inline std::string sites_stem(std::string_view prefix, std::string_view tag) {
    return std::string(prefix) + "sites-" + std::string(tag) + "-";
}

// Behind the restart stem of a direction.
inline constexpr std::string_view restart_info = "restart.info";
inline constexpr std::string_view fingerprint = "fingerprint.info";
inline constexpr std::string_view iteration_memory = "iteration.info";
inline constexpr std::string_view convergence_log = "torvex.conv.log";

}  // namespace torvex::file_names
