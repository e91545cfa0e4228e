#pragma once

#include <string>
#include <vector>

namespace torvex {

// The entries of torvex-prep, each with the arguments behind its name. They return the exit status
// and stop as a run does; an argument that an entry does not know stops with 102.

// canopy [/f CASE] [--check-shapefile]: shapefiles into the canopy file of every direction.
int prep_canopy(std::vector<std::string> arguments);

// maps [trdb2tvm.tin]: a database or a shapefile into the maps of a case.
int prep_maps(std::vector<std::string> arguments);

// preview [/f CASE]: what the first direction of a case will see.
int prep_preview(std::vector<std::string> arguments);

// check [/f CASE] [--json]: what a run would meet and need, without its files. Returns 0 or stops
// with what would stop the run first.
int prep_check(std::vector<std::string> arguments);

// export [/f CASE] vtk|tecplot|shp [all]: the canopy files of a case, for viewers.
int prep_export(std::vector<std::string> arguments);

}  // namespace torvex
