#pragma once

#include <string>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// What the roughness routines of one wind direction work with. The direction may be that of a
// preview, which gives the same field but neither reads nor writes a file or a log line.
struct RoughnessPass {
    const CaseSettings& settings;
    const MeshLines& lines;
    int iwd;                 // direction index
    const std::string& tag;  // its five characters
    RunLog& log;
    bool leaves_files = true;  // false for a check of the case

    bool preview() const { return iwd == preview_direction; }
    bool writes() const { return leaves_files && !preview(); }
    bool skip_sides() const { return settings.nested(); }

    // A timed line that names the direction.
    void tell(const std::string& text) const { log.timed(" WD " + tag + ": " + text); }
    void warn(const std::string& text) const { log.warn_line(" WD " + tag + ": " + text); }
};

// What is kept from one direction to the next.
struct UpwindRoughness {
    float z_up = 0;   // roughness length upwind of the mesh [m]
    float alpha = 0;  // shear exponent last found in the table [-]
};

}  // namespace torvex
