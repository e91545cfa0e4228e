#pragma once

#include <string>
#include <vector>

namespace torvex {

// The entries of torvex-prep, each with the arguments behind its name. They return the exit status
// and stop as a run does; an argument that an entry does not know stops with 102.

// canopy [/f CASE] [--check-shapefile]: shapefiles into the canopy file of every direction.
int prep_canopy(std::vector<std::string> arguments);

}  // namespace torvex
