#pragma once

#include "base/case_settings.hpp"
#include "canopy/canopy_cells.hpp"

namespace torvex {

// Adds what canopy drag makes and breaks of tke, and of ted, to su and sp of the equation in hand.
// `factor` is canopy_source_factor: 0 until the sources act, then 1. Only for runs with a canopy.
void canopy_sources_tke(const CanopyCells& c, const CanopyParameters& parameters, float factor);
void canopy_sources_ted(const CanopyCells& c, const CanopyParameters& parameters, float factor);

}  // namespace torvex
