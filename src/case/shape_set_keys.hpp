#pragma once

#include <span>
#include <string_view>

#include "base/run_log.hpp"
#include "base/shape_set.hpp"
#include "case/case_keys.hpp"
#include "case/case_text.hpp"

namespace torvex {

// The names of the sets that the block shp_parameters may describe.
inline constexpr std::string_view building_set = "sf_build";
inline constexpr std::string_view tree_set = "sf_tree";
inline constexpr std::string_view conversion_set = "trdb2shp";

// A key of a set, written behind its name: sf_tree%filename.
struct ShapeSetKey {
    std::string_view suffix;
    KeyTarget (*target)(ShapeSet&);
    std::string_view fallback;
    std::string_view unit;
    std::string_view meaning;
    std::size_t length = 0;  // characters kept of a text
};
// The keys that each of the three sets may have.
std::span<const ShapeSetKey> shape_set_keys();

// True for a key of a set: one of the table, or %mod_1 and so on, behind one of the three names.
bool is_shape_set_key(std::string_view key);

// Reads the keys of a set. A key that is not there keeps its default, one whose value cannot be
// read stops 1 naming it. A set that is on is told in the log.
ShapeSet read_shape_set(const CaseText& file, std::string_view name, RunLog& log);

}  // namespace torvex
