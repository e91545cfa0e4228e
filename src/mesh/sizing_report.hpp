#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/load_maps.hpp"

namespace torvex {

// The widths that sizing works with, all in metres; `_hat` widths include what mode 1 of
// BOUNDARY_HEIGHT_MODE adds. Values that the mode has no use for stay 0.
struct DomainWidths {
    float max_rad = 0;      // radius of the study circle
    float l_diag = 0;       // reach of the first search for Hmax
    float add_length = 0;   // additional zone, upwind of the circle
    float grad = 0;         // permitted slope of the connection [-]
    float delta_u = 0;      // buffer zones: upwind,
    float delta_u_hat = 0;  // with the connection,
    float delta_d = 0;      // downwind,
    float delta_d_hat = 0;
    float delta_s = 0;     // and at the sides
    float reach_up = 0;    // connection reach: delta_hat - delta/2 in mode 1
    float reach_down = 0;  // the same downwind
    ElevationRange elevation;
};

// How far map must reach round the centre for a mesh of any direction [m]. The 3 in it stands for
// the circle and an additional zone of its diameter, whatever ADD_R says.
float need_length(const CaseSettings& settings, const DomainWidths& widths);

// What sizing tells on the console and on the run log.
void report_height_mode(const CaseSettings& settings, RunLog& log);
void report_widths(const CaseSettings& settings, const DomainWidths& widths, RunLog& log);
void report_domain_height(float MAX_Z, RunLog& log);

}  // namespace torvex
