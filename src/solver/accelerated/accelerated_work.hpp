#pragma once

#include <memory>

#include "base/field.hpp"
#include "mesh/grid_geometry.hpp"
#include "solver/accelerated/working_set.hpp"
#include "solver/line_sweeps.hpp"
#include "solver/multigrid.hpp"

namespace torvex {

struct CoarseLevel;

// What a coarse mesh adds to its equations so that the fine solution solves them too: to the right
// sides, and to the fluxes through the faces. What would take tke, ted or tkl away is kept as the
// quotient of that and the value in front of the cycle and acts in proportion to the value, which
// so stays positive. In cells whose ted is pinned it is the factor on the pin.
struct Tau {
    Field3 u, v, w;           // [N]
    Field3 tke, ted, tkl;     // above 0 [kg m2/s3], [kg m2/s4]; below [kg/s]; where pinned [-]
    Field3 flxU, flxV, flxW;  // [m3/s]
};

// What the accelerated iterations on one mesh work in, beside the linear system of the flow.
struct AcceleratedWork {
    WorkingSet set;
    Field3 su_u, su_v, su_w;  // right sides of momentum, scratch of the other equations
    Field3 rap;               // 1/(sum of the neighbours' coefficients - sp)        [s/kg]
    Multigrid pressure;
    LineWork lines;
    const Tau* tau = nullptr;              // on a coarse mesh, while a cycle runs
    std::unique_ptr<CoarseLevel> coarser;  // the next mesh; none: cycles end here

    AcceleratedWork();
    ~AcceleratedWork();
    AcceleratedWork(AcceleratedWork&&) noexcept;
    AcceleratedWork& operator=(AcceleratedWork&&) noexcept;
    AcceleratedWork(const AcceleratedWork&) = delete;
    AcceleratedWork& operator=(const AcceleratedWork&) = delete;
};

// Makes room for the arrays of a mesh; does nothing where they are.
void fit(AcceleratedWork& work, const GridGeometry& g);

}  // namespace torvex
