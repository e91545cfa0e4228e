#pragma once

#include <string>

#include "base/case_settings.hpp"
#include "base/run_log.hpp"
#include "maps/terrain_map.hpp"
#include "mesh/grid_geometry.hpp"
#include "nest/nest_lines.hpp"
#include "results/result_files.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// What the nesting of one wind direction works with.
struct NestPass {
    const CaseSettings& settings;
    const ParentLines& lines;   // the parent's, set aside by the fit
    const DirectionMaps& maps;  // of this direction
    float angle;                // where the wind comes from [deg]
    const GridGeometry& grid;   // the child's, with cell centres
    RunLog& log;

    // A timed line of the log that names the direction, and a warning that does.
    void tell(const std::string& text) const;
    void warn(const std::string& text, const std::string& reminder = {}) const;
};

// One wind direction of a finished parent, as its files give it: a record of its own.
struct Parent {
    std::string stem;     // head of the names of its files, without a prefix: "restart-022_5-"
    std::string file;     // the result that was read
    StoredResult result;  // its id and iteration

    GridGeometry grid;  // nodes, cell centres and the face weights fx

    // The start fields, ni*nj*nk each, and the length fields where the result and the child's model
    // are of the same kind; the others have no room. ted is there for every id: the k-l model,
    // which solves no equation for it, gives CMU^0.75 tke^1.5/lm.
    FlowState flow;
};

// Reads restart.info, the newest result and the mesh of a parent, and tests that they belong
// together and to this case. With a canopy the counts of the parent's canopy file are compared too;
// a file that does not fit costs a warning.
//
// Stops: 183 restart.info cannot be read; 184 result or mesh cannot be read, hold values that are
// no finite numbers, or are those of other lines or another ground than this case has.
Parent read_parent(const NestPass& pass, const std::string& stem);

}  // namespace torvex
