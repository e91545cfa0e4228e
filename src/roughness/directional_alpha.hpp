#pragma once

#include <optional>
#include <span>

#include "roughness/roughness_pass.hpp"

namespace torvex {

// The alpha of direction q [deg] between the entries of a table, linear in the direction. Nothing
// if q lies outside the table or the directions do not rise.
std::optional<float> interpolated_alpha(std::span<const float> direction,
                                        std::span<const float> alpha, float q);

// USE_DIRECTIONAL_ALPHA: where DIRECTIONAL_ALPHA_APPLICABLE_WDS lists this direction, z_up becomes
// the roughness length whose inflow has the shear exponent that the table gives for the direction.
// A direction outside the table keeps the exponent of the one before, with a warning.
//
// reads   alpha_direction, alpha_value and the keys DIRECTIONAL_ALPHA_*
// writes  upwind.z_up, upwind.alpha; log; alpha2z0_convergence-TAG.txt, a line for each round of
//         the search: its number, lo, hi, mid, alpha, target, |error|, eps, alpha(lo), alpha(hi)
void take_directional_alpha(const RoughnessPass& pass, UpwindRoughness& upwind);

}  // namespace torvex
