#pragma once

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

// The pressure correction once more, plainly: one cell or face at a time, term by term, in double
// precision, for comparison with the routines of the solver.
namespace torvex::plain {

struct Vector {
    double x, y, z;
};

struct Cell {
    int i, j, k;
};

// The direction of a face: east, north or top face of its cell.
enum class Face { east, north, top };

Cell next(Cell c, Face face);      // the cell beyond the face
Cell previous(Cell c, Face face);  // the cell on the other side, whose face is the one before

// Twice the area vector, summed from the two triangles of the face.
Vector twice_area(const GridGeometry& g, Cell c, Face face);

// X interpolated to the face.
double at_face(const GridGeometry& g, const Field3& X, Cell c, Face face);

// Flux and coefficient of a face between two cells.
double interpolated_flux(const GridGeometry& g, const FlowState& s, Cell c, Face face);
double coefficient(const GridGeometry& g, const FlowState& s, Cell c, Face face);

// Flux of a boundary face with the velocity of cell `from`.
double boundary_flux(const GridGeometry& g, const FlowState& s, Cell c, Face face, Cell from);

// The three fluxes of a state.
struct Fluxes {
    const Field3& east;
    const Field3& north;
    const Field3& top;
};

// Mass that leaves cell c, and the sum of the absolute flows through its faces.
double imbalance(const GridGeometry& g, const Field3& den, const Fluxes& flux, Cell c);
double throughput(const GridGeometry& g, const Field3& den, const Fluxes& flux, Cell c);

// Residual of the pressure equation at cell c, from the face coefficients and the source su.
double residual(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c);

// What the first correction adds.
Vector velocity_change(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c);
double flux_change(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c, Face face);

// The extra flux of a face on a non-orthogonal mesh.
double extra_flux(const GridGeometry& g, const FlowState& s, const Field3& pp, Cell c, Face face);

}  // namespace torvex::plain
