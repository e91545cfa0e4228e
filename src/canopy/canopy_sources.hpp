#pragma once

#include "canopy/canopy_cells.hpp"

namespace torvex {

// Drag of forests and buildings on the momentum equation in hand.
void canopy_momentum_source(const CanopyCells& c);

}  // namespace torvex
