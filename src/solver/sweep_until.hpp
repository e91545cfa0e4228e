#pragma once

#include "base/field.hpp"
#include "solver/linear_system.hpp"

namespace torvex {

struct SweepResult {
    int n = 1;     // the sweep that met the ratio; one more than allowed if none did
    float r1 = 0;  // residual sum behind the last sweep
    float a = 0;   // r1/r0
};

// Sweeps over phi, at most `sweeps` of them, until 0.1 > r1/r0; pinned cells are left out of r1.
// With r0 = 0 all sweeps are made, with none allowed r1 and a stay 0.
SweepResult sweep_until(const CellRange& cells, LinearSystem& eq, Field3& phi, float relax,
                        int sweeps, float r0);

}  // namespace torvex
