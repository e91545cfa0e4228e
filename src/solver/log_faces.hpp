#pragma once

#include "base/case_settings.hpp"
#include "base/field.hpp"
#include "mesh/cell_nodes.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/row.hpp"

namespace torvex {

struct Walls;

// The faces between the first and the second cell from a wall, one per cell (a,b) beside the wall:
// (i,j) of the ground and the top, (i,k) of the sides.
struct LogFacesOfWall {
    // Lengths that make the fluxes of the law from the differences of the two cells [m]
    Field2 of_speed;        // h/ln(d2/d1)
    Field2 of_dissipation;  // h/(d2 - d1) d1 d2/df
    // weight of the cell on the high side in a value on the face, for a profile that is linear in
    // the logarithm of the distance [-]
    Field2 factor;
};

// The faces across which the log law of a wall goes on into the field, empty without
// WALL_DISSIPATION_AT_CENTRE. A wall whose second cells stand beside the wall opposite has none.
struct LogFaces {
    LogFacesOfWall ground, top;
    LogFacesOfWall south, north;
    float scale = 0;  // KAPPA c_mu^(1/4)
};

// Once a direction; `walls` holds the cells beside them.
LogFaces log_faces(const CaseSettings& settings, const GridGeometry& g, const Walls& walls);

// What goes through the faces: something that follows the logarithm of the distance, or the
// dissipation, which follows its inverse.
enum class LogFlux { of_speed, of_dissipation };

// Viscosity den KAPPA c_mu^(1/4) sqrt(tke) length of the faces 2..nx between the row of cells (j,k)
// and its neighbour on the high side of `axis`, j or k, written to `out` [kg/(m s)]; den and tke
// are those beside the wall. False, and nothing written, where those faces are none of these.
bool log_face_viscosity(const LogFaces& faces, const GridGeometry& g, const FlowState& s,
                        LogFlux flux, Axis axis, int j, int k, Row<float> out);

// The weights of the same faces where they are log faces, else `otherwise`.
Row<const float> log_face_factor(const LogFaces& faces, const GridGeometry& g, Axis axis, int j,
                                 int k, Row<const float> otherwise);

}  // namespace torvex
