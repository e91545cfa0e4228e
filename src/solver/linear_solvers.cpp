#include "solver/linear_solvers.hpp"

#include "solver/multigrid.hpp"
#include "solver/residual_cutting.hpp"
#include "solver/sweep_phi.hpp"

namespace torvex {

LinearSolvers linear_solvers(const CaseSettings& settings) {
    if (settings.PRESSURE_SOLVER == 1) {
        return {.sweep = sweep_phi, .pressure = Multigrid{}};
    }
    return {.sweep = sweep_phi, .pressure = ResidualCutting{}};
}

}  // namespace torvex
