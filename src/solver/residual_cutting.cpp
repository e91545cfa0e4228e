#include "solver/residual_cutting.hpp"

#include "solver/rcm.hpp"
#include "solver/residual_sum.hpp"
#include "solver/sweep_phi.hpp"

namespace torvex {

SolveRecord ResidualCutting::operator()(const CellRange& cells, LinearSystem& eq, Field3& pp,
                                        int cycles) {
    if (work_.rhs.ni() != pp.ni() || work_.rhs.nj() != pp.nj() || work_.rhs.nk() != pp.nk()) {
        work_.allocate(pp.ni(), pp.nj(), pp.nk());
    }
    sweep_phi(cells, eq, pp, 1.0F);
    const float r0 = residual_sum(cells, eq, pp, Pinned::count);
    return RCM(cells, pp, stored_corrections, cycles, r0, work_, eq);
}

}  // namespace torvex
