#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "base/case_settings.hpp"
#include "case/case_keys.hpp"
#include "case/case_text.hpp"

namespace torvex {

// A group as the reader needs it: its keys, and where their values go. The targets outlive the
// read.
struct GroupKey {
    std::string_view name;
    KeyTarget target;
    std::size_t length = 0;  // characters kept of a text
    bool is_file = false;    // a text that must not be cut
};
struct NamelistGroup {
    std::string_view name;
    std::span<const GroupKey> keys;
    std::string_view if_missing;  // the way out where the file has no such group
    // Where a key that this group does not have belongs, as "it is a key of &NML_ER"; may be empty.
    std::function<std::string(std::string_view key)> home_of = {};
};

// Reads one group in the namelist notation of Fortran 90 from wherever it stands in the file:
//
//   &NAME key = value, key(2) = 1, , 3*0.5  key = 'it''s'  ! comment
//   /
//
// Names compare without case; "$" serves as "&", and "&END" or "$END" as "/"; the last assignment
// of a key counts. Settings that the group does not assign are left alone. Any other text, an
// unknown key, an unreadable value or an absent group ends the run with exit status 1.
void read_namelist_group(const CaseText& file, const NamelistGroup& group, KeyLines& lines);

// The same for a group of the case file.
void read_namelist_group(const CaseText& file, const CaseGroup& group, CaseSettings& settings,
                         KeyLines& lines);

}  // namespace torvex
