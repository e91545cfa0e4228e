#pragma once

#include "solver/multigrid_level.hpp"

namespace torvex {

// The inverse pivots of the lines of slab j; `shift` is added to 1 in the factor of the horizontal
// coefficients of the diagonal.
void line_pivots(MultigridLevel& level, int j, float shift, LineScratch& scratch);

// Solves the lines along k of slab j with (i + j) even (colour 0) or odd (colour 1), i = 1..ni, for
// z with their neighbours as they stand.
void solve_lines(MultigridLevel& level, int j, int colour, LineScratch& scratch);

// The same of colour 0 for z = 0 everywhere before; the lines of colour 1 become 0.
void solve_lines_from_zero(MultigridLevel& level, int j, LineScratch& scratch);

}  // namespace torvex
