#pragma once

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

// The flow of one wind direction. Cell-centred values on 1..ni, 1..nj, 1..nk: 2..nx is the
// interior, 1 and ni hold the value on the boundary face. u points along +i, downwind; w is
// vertical. All arrays are single precision but su and sp.
struct FlowState {
    Field3 u, v, w;           // velocity, mesh axes       [m/s]    ni*nj*nk  CALCU, CALCV, CALCW
    Field3 p;                 // pressure                  [Pa]     ni*nj*nk  CALCP
    Field3 pp;                // pressure correction       [Pa]     ni*nj*nk  CALCP
    Field3 tke;               // turbulence energy         [m2/s2]  ni*nj*nk  CALCKE
    Field3 ted;               // its dissipation           [m2/s3]  ni*nj*nk  CALCED
    Field3 vis;               // effective viscosity       [kg/(m s)]         CALCVIS
    Field3 den;               // density                   [kg/m3]  ni*nj*nk  clearing pass
    Field3 flxU, flxV, flxW;  // volume flux through the east, north, top face [m3/s]  CALCP

    Field3 lm;     // mixing length                        [m]      models 2 and 4 only
    Field3 tkl;    // turbulence energy of the k-l part    [m2/s2]  models 2 and 4 only
    Field3 viskl;  // viscosity of the k-l part            [kg/(m s)]  models 2 and 4 only

    Field3 gen;  // production of tke                    [m2/s3]  ni*nj*nk  CALCKE
    Field2 z0;   // roughness length of the ground          [m]      ni*nj  roughness routines

    Field3 gp_d, gp_k, gp_e;  // canopy: drag density [1/m], dissipation factors of tke and ted [-]

    LinearSystem eq;  // the equation in hand

    // metric component over ap of the u, v, w equations   [m3 s/kg]  ni*nj*nk  CALCU, CALCV, CALCW
    Field3 dUxi, dUet, dUze;
    Field3 dVxi, dVet, dVze;
    Field3 dWxi, dWet, dWze;
    Field3 coefXi, coefEt, coefZe;  // flux per unit of pp difference at east, north, top faces

    // Raw residual sums as the routines leave them, normalised in place by the outer iteration.
    float resid_m = 0, resid_u = 0, resid_v = 0, resid_w = 0;
    float resid_k = 0, resid_e = 0, resid_klm = 0;
    // Reference sums of the equations, refreshed at monitor steps only.
    float scale_u = 0, scale_v = 0, scale_w = 0;
    float scale_k = 0, scale_e = 0, scale_klm = 0;

    float flow_in = 0;       // normaliser of the mass residual [kg/s], renewed every iteration
    float outflow_mass = 0;  // mass inflow at the start, the target of the outflow condition [kg/s]
    float momentum_in = 0;   // normaliser of the other residuals [N]
    float canopy_source_factor = 0;  // 0 until the canopy sources of tke and ted act, then 1
};

// Makes room for everything on the cells of the mesh, all at 0; lm, tkl and viskl in the models 2
// and 4 only. z0 and the canopy's gp_* belong to the roughness and canopy routines, which run
// before, and stay as they are.
void allocate_fields(FlowState& s, const GridGeometry& g, int turbulence_model);

// Gives back all arrays, those of roughness and canopy included, and clears the scalars.
void release(FlowState& s);

}  // namespace torvex
