#pragma once

#include <string>

#include "mesh/mesh_lines.hpp"

namespace torvex {

// Reads the node lines from a text file instead of computing them. One free-form value a line:
//
//   1, 2         ni, nj: one more than the number of x and y planes
//   3 4 5 6      x of the planes: end of the additional zone, upwind edge of the study circle,
//                centre, downwind edge of the circle
//   7            anything
//   8 9          y of the planes: centre, edge of the circle
//   10           anything
//   nx lines     x_line, rising
//   one line     anything
//   ny lines     y_line, rising
//
// A mark is found by exact equality with a line value. The zones follow from the planes 3, 5, 8 and
// 9; 4 and 6 must exist but are placed by the circle's radius. Fills everything of MeshLines that
// is horizontal; a blend index stays 0 where no plane lies far enough out, which MAKE_MESH reports.
// A bad file ends the run with status 1.
MeshLines read_mesh_line_file(const std::string& path);

}  // namespace torvex
