#pragma once

#include <string>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "case/case_file.hpp"
#include "case/case_keys.hpp"
#include "case/namelist.hpp"

namespace torvex::test {

// A case read from a text that stands for the file "case.tin".
struct ReadCase {
    explicit ReadCase(const std::string& text) : file{"case.tin", text} {
        read_case_file(file, settings, lines, log);
    }

    CaseText file;
    CaseSettings settings;
    KeyLines lines;
    RunLog log;  // never opened: its lines are in log.kept()
};

inline const CaseGroup& group_named(std::string_view name) {
    for (const CaseGroup& group : namelist_groups()) {
        if (group.name == name) {
            return group;
        }
    }
    throw std::logic_error("no such group");
}

// One group alone, over the defaults.
struct ReadGroup {
    ReadGroup(const std::string& name, const std::string& text) : file{"case.tin", text} {
        set_defaults(settings);
        read_namelist_group(file, group_named(name), settings, lines);
    }

    CaseText file;
    CaseSettings settings;
    KeyLines lines;
};

}  // namespace torvex::test
