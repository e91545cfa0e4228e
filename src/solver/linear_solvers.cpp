#include "solver/linear_solvers.hpp"

#include "solver/residual_cutting.hpp"
#include "solver/sweep_phi.hpp"

namespace torvex {

LinearSolvers linear_solvers() {
    return {.sweep = sweep_phi, .pressure = ResidualCutting{}};
}

}  // namespace torvex
