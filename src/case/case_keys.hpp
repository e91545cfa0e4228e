#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "base/case_settings.hpp"

namespace torvex {

// Where the values of a key go: integers or reals (one, or a list with a lower bound of 1), a
// logical, a text, a list of reals without a fixed length, or the site records.
using KeyTarget = std::variant<std::span<std::int32_t>, std::span<float>, bool*, std::string*,
                               std::vector<float>*, std::span<Site>>;

// One key of the case file. This table is the only place that knows names, types, defaults and
// bounds: it drives the readers, the defaults and the reference page.
struct CaseKey {
    std::string_view name;
    KeyTarget (*target)(CaseSettings&);
    std::string_view fallback;  // value without an assignment; blank: 0, false or blank
    std::string_view unit;
    std::string_view meaning;
    std::size_t length = 0;  // characters kept of a text

    // Labels are cut to their length; the name of a file that is cut would name another file.
    bool names_a_file() const { return length == file_name_length; }
    static constexpr std::size_t file_name_length = 256;
};

// A field of the site records.
struct SiteField {
    std::string_view name;
    KeyTarget (*target)(Site&);
    std::string_view unit;
    std::string_view meaning;
    std::size_t length = 0;
};

// A namelist group or a keyed block.
struct CaseGroup {
    std::string_view name;
    std::string_view message;  // told in the log once the group is read; blank: none
    std::span<const CaseKey> keys;
};

// The eight namelist groups in their order of reading, all mandatory.
std::span<const CaseGroup> namelist_groups();

// The keyed blocks nest_points, canopy_parameters, shp_parameters and user_domain, each optional.
std::span<const CaseGroup> keyed_blocks();
// The block of that name, which there must be.
const CaseGroup& keyed_block(std::string_view name);

// The fields that a site may have, as in SITE(n)%LABEL.
std::span<const SiteField> site_fields();

// "I", "R", "L", "C 20", "R[361]": type and extent of a key.
std::string type_name(const KeyTarget& target, std::size_t length);

// Gives every key of the groups and blocks its fallback.
void set_defaults(CaseSettings& settings);

}  // namespace torvex
