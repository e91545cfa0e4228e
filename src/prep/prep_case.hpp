#pragma once

#include <string>
#include <vector>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "case/case_text.hpp"
#include "maps/load_maps.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

inline constexpr const char* prep_log_name = "torvex-prep.log";

// A case as the preparation programs see it: read as a run reads it, its domain sized, its
// directions known.
struct PrepCase {
    CaseText file;
    CaseSettings settings;
    MeshLines lines;
    MapState maps;
    RunLog log;
    std::vector<std::string> wd_tag;  // tag of direction iwd is wd_tag[iwd - 1]

    std::string restart_stem(int iwd) const {
        return settings.run_prefix + "restart-" + wd_tag[static_cast<std::size_t>(iwd - 1)] + "-";
    }
};

// The case file named by "/f NAME" in `arguments`, which are cleared of both, or "torvex.tin".
std::string take_case_file(std::vector<std::string>& arguments);

// Reads the case, makes its directory the current one, opens its log and sizes the domain; a nested
// case gets the lines of the child and its prefix. A user-defined domain has no lines to size and
// stops with 1, naming the entry that asked for it.
void open_prep_case(const std::string& case_file, const std::string& entry, PrepCase& prep);

}  // namespace torvex
