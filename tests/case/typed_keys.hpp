#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/case_settings.hpp"

namespace torvex::test {

// The keys of the namelist groups with their defaults, written down a second time and by hand, so
// that a slip in the program's own table shows. Site records stand apart.
struct RealKey {
    const char* group;
    const char* name;
    float CaseSettings::*member;
    float fallback;
};
struct IntegerKey {
    const char* group;
    const char* name;
    std::int32_t CaseSettings::*member;
    std::int32_t fallback;
};
struct LogicalKey {
    const char* group;
    const char* name;
    bool CaseSettings::*member;
    bool fallback;
};
struct TextKey {
    const char* group;
    const char* name;
    std::string CaseSettings::*member;
    const char* fallback;
    std::size_t length;
};
// A list of `size` elements, all with one default.
struct ListKey {
    const char* group;
    const char* name;
    int size;
    double fallback;
    double (*element)(const CaseSettings&, int);
};

const std::vector<RealKey>& real_keys();
const std::vector<IntegerKey>& integer_keys();
const std::vector<LogicalKey>& logical_keys();
const std::vector<TextKey>& text_keys();
const std::vector<ListKey>& list_keys();

}  // namespace torvex::test
