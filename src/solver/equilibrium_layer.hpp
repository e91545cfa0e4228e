#pragma once

#include "base/case_settings.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// The neutral surface layer over level ground of one roughness, in which the stress is the same at
// all heights, as the wall formulas mean it: the distance from the wall counts from the wall.
struct EquilibriumLayer {
    float z0 = 0;      // roughness length [m]
    float Zg = 0;      // height at which the speed is the reference speed [m]
    float u_star = 0;  // friction velocity [m/s]
};

// A roughness length of Zg or more ends the run with exit status 1.
EquilibriumLayer equilibrium_layer(float z0);

// At the height h above ground [m]. Below z0 the speed is 0 and the dissipation that at z0.
float speed_at(const EquilibriumLayer& layer, float h);           // [m/s]
float energy_of(const EquilibriumLayer& layer, float c_mu);       // [m2/s2], at all heights
float dissipation_at(const EquilibriumLayer& layer, float h);     // [m2/s3]
float shear_exponent_at(const EquilibriumLayer& layer, float h);  // h/u du/dh [-]

// Start fields u, tke and ted of all cells; the layer of row j is that of the column (1,j). s.z0 is
// filled before; the plane k = 1 of u stays.
void fill_equilibrium_layer(const CaseSettings& settings, const GridGeometry& g, FlowState& s);

// Stress of the layer on an open top: den u*^2 times the face's horizontal area [N], added to su of
// u in the cells below it. The layer of row j is that of the column (1,j).
template <class Number>
void add_top_stress(const GridGeometry& g, const FlowState& s, Array3<Number>& su);

}  // namespace torvex
