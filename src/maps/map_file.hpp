#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "base/field.hpp"
#include "base/run_log.hpp"
#include "maps/map_bytes.hpp"
#include "maps/map_findings.hpp"
#include "maps/map_header.hpp"

namespace torvex {

// What a map stands for. Its stops are code + 1 (cannot be opened, or x-y), code + 2 (key missing
// or out of range), code + 3 (not readable), and for roughness code + 4 (value not positive).
struct MapRole {
    std::string_view name;
    std::string_view key;
    int code = 0;
    bool roughness = false;
};

inline constexpr MapRole basic_h_role{"basic terrain map", "BASIC_H_FILE", 110, false};
inline constexpr MapRole detailed_h_role{"detailed terrain map", "DETAILED_H_FILE", 120, false};
inline constexpr MapRole basic_z0_role{"basic roughness map", "BASIC_Z0_FILE", 130, true};
inline constexpr MapRole detailed_z0_role{"detailed roughness map", "DETAILED_Z0_FILE", 140, true};

// Header and values of one map file, as they stand in the file.
struct ParsedMap {
    FileIdentity file;
    MapHeader header;
    std::shared_ptr<const Field2> values;  // (column, row) from the south-west point
    MapFindings findings;
};

// Reads a map, or returns `last` if that is the same file, unchanged. A file that is parsed is
// warned of where its numbers may mean something else than its author thought. Stops as told at
// MapRole; a bad header is refused before the data are read.
std::shared_ptr<const ParsedMap> read_map_file(const std::string& path, const MapRole& role,
                                               const std::shared_ptr<const ParsedMap>& last,
                                               RunLog& log);

}  // namespace torvex
