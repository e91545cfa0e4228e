#pragma once

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "mesh/mesh_lines.hpp"

namespace torvex {

// Diagnosis (DEBUG_MODE = 1): moves the node lines onto those recorded in the mesh log of an
// earlier run, so that two set-ups can be compared on nearly the same mesh. The segments between
// the edges, the marked planes and the centre
//
//   x: edge, x1 = i_centre - n_add, x2 = i_centre - n_inner, 0, x3 = i_centre + n_inner, edge
//   y: edge, y1 = j_centre - n_inner, 0, y2 = j_centre + n_inner, edge
//
// are scaled linearly, each about its inner end, so that their outer ends take the recorded
// positions. The log read is the one of this kind of run (with run_prefix) where it exists, else
// the plain "log-meshnumber"; without any, one line on the run log says so and nothing changes.
// The refitted lines are written to the file "tmp" in the layout that XYCONF reads.
void refit_lines(const CaseSettings& settings, RunLog& log, MeshLines& lines);

}  // namespace torvex
