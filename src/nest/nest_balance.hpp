#pragma once

#include "nest/parent.hpp"
#include "solver/flow_state.hpp"

namespace torvex {

// What passes the boundary planes of the child [m3/s].
struct NestBalance {
    double inflow = 0;         // through i = 1
    double outflow = 0;        // through ni and, less what comes in there, the sides
    double outflow_plane = 0;  // area of ni across the wind [m2]

    double surplus() const { return inflow - outflow; }
};
// By the area vectors of the boundary faces and the velocities on them, in double precision.
NestBalance nest_balance(const GridGeometry& g, const FlowState& s);

// With nest_bc_ofix adds one speed to u on the outflow plane, so that as much flows out as in.
// Without it nothing is changed and the log warns. The log has the balance in either case.
void balance_boundaries(const NestPass& pass, FlowState& s);

}  // namespace torvex
