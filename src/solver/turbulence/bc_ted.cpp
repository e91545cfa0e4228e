// bc_ted: boundary steps of ted. A cell beside a wall is pinned to the dissipation of the log law
// averaged over the height 2 d of the cell:
//
//   ted = CMU^(3/4) tke^(3/2) L2/(KAPPA 2 d),   L2 = ln(2 d/z0w)
//
// An open top is left as assembled: the top plane keeps its value and acts on the cells below. This
// differs from tke on purpose.
//
// reads   tke, ted, z0, nodes, centres, area vectors beyond walls
// writes  ab, at, an, as beside walls and open sides; su, sp beside walls; ted on the ground, a
//         wall on top, the sides and the outflow
// ref     Launder and Spalding (1974)

#include <cmath>

#include "solver/constants.hpp"
#include "solver/turbulence/boundary_steps.hpp"
#include "solver/turbulence/turbulence_boundary.hpp"
#include "solver/turbulence/wall_law.hpp"

namespace torvex {

namespace {

class DissipationWall {
 public:
    explicit DissipationWall(const SolverContext& ctx)
        : ctx_(ctx), cmu34_(std::pow(ctx.settings.CMU, 0.75F)) {}

    template <Wall wall>
    void apply(int a, int b) const {
        FlowState& s = ctx_.flow;
        const WallLaw law = wall_law<wall>(ctx_, a, b);
        const int i = law.i;
        const int j = law.j;
        const int k = law.k;
        const WallCell& c = law.wall;
        const float tke = std::abs(s.tke(i, j, k));
        const float ted = cmu34_ / KAPPA * law.L2 / (2.0F * c.d) * (std::sqrt(tke) * tke);
        towards_wall<wall>(s.eq, law) = 0.0F;
        s.eq.su(i, j, k) = BIG * static_cast<double>(ted);
        s.eq.sp(i, j, k) = -BIG;
        s.ted(c.ig, c.jg, c.kg) = s.ted(i, j, k);
    }

 private:
    const SolverContext& ctx_;
    float cmu34_;
};

}  // namespace

void bc_ted(const SolverContext& ctx) {
    boundary_steps(ctx, ctx.flow.ted, OpenTop::as_assembled, DissipationWall(ctx));
}

}  // namespace torvex
