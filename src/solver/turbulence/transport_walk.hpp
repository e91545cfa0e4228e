#pragma once

#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"
#include "solver/log_faces.hpp"
#include "solver/turbulence/transport_rows.hpp"
#include "solver/turbulence/transport_scratch.hpp"

namespace torvex {

// The walk of one thread upwards through its planes of cells. It visits each face once and hands on
// what neighbouring rows and planes share: node values, face terms, products of area vectors. Only
// the faces between the planes of two threads are done twice; each thread keeps the coefficients of
// its own cells.
//
// Coefficients of boundary faces stand also at the index beyond the boundary, where nobody reads
// them.
class TransportWalk {
 public:
    // phi is not written during the walk; sigma is its turbulent Prandtl number.
    TransportWalk(const GridGeometry& g, FlowState& s, const Field3& phi, float sigma,
                  PlaneScratch& scratch, const LogFaces* log_faces = nullptr,
                  LogFlux flux = LogFlux::of_speed);

    // The bottom of plane k, where the walk begins.
    void start_below(int k);
    // The south side of plane k.
    void start_plane(int k);
    // The remaining faces of row (j,k), j = 2..ny in rising order, which completes the coefficients
    // of its cells; ab of the plane above is written on request. Returns the balance of cross
    // diffusion of the cells 2..nx.
    Row<const float> next_row(int j, int k, bool with_plane_above);

 private:
    Row<float> named(int name);
    ProductRows products(int name);
    FaceSide side(int j, int k, Row<float> own, Row<float> first, Row<float> second) const;
    void take_log_law(Axis axis, int j, int k, TransportFaces& faces);
    void first_node_row(int k);
    void next_node_row(int j, int k);
    void north_faces(int j, int k);
    void east_faces(int j, int k);
    void top_faces(int j, int k, const ProductRows& low, Row<float> at, Row<float> ab,
                   Row<float> cross);

    const GridGeometry& g_;
    FlowState& s_;
    const Field3& phi_;
    float over_sigma_;
    const LogFaces* log_faces_;
    LogFlux flux_;
    PlaneScratch& scratch_;
    Row<float> phi_low_, phi_high_;
    Row<float> sum_low_, sum_high_;
    Row<float> difference_low_, difference_high_;
    Row<float> cross_south_, cross_north_;
    ProductRows products_low_, products_high_, products_top_;
};

}  // namespace torvex
