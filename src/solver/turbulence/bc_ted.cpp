// bc_ted: boundary steps of ted. A cell beside a wall is pinned to the dissipation of the log law
// averaged over the height 2 d of the cell:
//
//   ted = CMU^(3/4) tke^(3/2) L2/(KAPPA 2 d),   L2 = ln(2 d/z0)
//
// or, with WALL_DISSIPATION_AT_CENTRE, to that at its centre, from which the eddy viscosity there
// follows as that of the log law:
//
//   ted = CMU^(3/4) tke^(3/2)/(KAPPA d)
//
// An open top is left as assembled: the top plane keeps its value and acts on the cells below. This
// differs from tke on purpose.
//
// reads   tke, ted, the wall cells
// writes  ab, at, an, as beside walls and open sides; su, sp of the target
//         beside walls; ted on the ground, a
//         wall on top, the sides and the outflow
// ref     Launder and Spalding (1974); Richards and Hoxey (1993) for the centre

#include <cmath>

#include "solver/constants.hpp"
#include "solver/turbulence/boundary_steps.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"

namespace torvex {

namespace {

class DissipationWall {
 public:
    DissipationWall(const SolverContext& ctx, Sources target)
        : ctx_(ctx), target_(target), cmu34_(std::pow(ctx.settings.CMU, 0.75F)) {}

    template <Wall wall>
    void apply(int a, int b) const {
        FlowState& s = ctx_.flow;
        const auto [i, j, k, ig, jg, kg] = wall_place<wall>(ctx_.grid, a, b);
        const WallCell& c = cell_at<wall>(ctx_.walls, a, b);
        const float tke = std::abs(s.tke(i, j, k));
        const float per_length = ctx_.settings.WALL_DISSIPATION_AT_CENTRE
                                     ? cmu34_ / KAPPA / c.d
                                     : cmu34_ / KAPPA * c.L2 / (2.0F * c.d);
        const float ted = per_length * (std::sqrt(tke) * tke);
        towards_wall<wall>(s.eq, i, j, k) = 0.0F;
        target_.su(i, j, k) = BIG * static_cast<double>(ted);
        target_.sp(i, j, k) = -BIG;
        s.ted(ig, jg, kg) = s.ted(i, j, k);
    }

 private:
    const SolverContext& ctx_;
    Sources target_;
    float cmu34_;
};

}  // namespace

void bc_ted(const SolverContext& ctx, Sources target) {
    boundary_steps(ctx, ctx.flow.ted, OpenTop::as_assembled, DissipationWall(ctx, target));
}

}  // namespace torvex
