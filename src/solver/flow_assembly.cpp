// Assembly of the three momentum equations in one walk. Terms and asymmetries are those of
// momentum_assembly for each component, but all from the same old u, v, w; corner values, metrics
// and the coupling of a face are formed once instead of three times.
//
// reads   vol, xix..zez, fx..fz; u, v, w, p, vis, den, flxU..flxW
// writes  the three sources and ae..ab in 2..nx, 2..ny, 2..nz
//
// All in single precision. No cell's arithmetic depends on the number of threads.

#include "solver/flow_assembly.hpp"

#include <array>
#include <cstddef>

#include "solver/momentum_walk.hpp"
#include "solver/momentum_work.hpp"
#include "solver/plane_walk.hpp"

namespace torvex {

void assemble_flow(const SolverContext& c, MomentumWork& work, Field3& su_u, Field3& su_v,
                   Field3& su_w) {
    fit(work, c.grid);
    const std::array<Field3*, 3> su{&su_u, &su_v, &su_w};
    walk_planes(c.grid, [&](std::size_t thread) {
        return MomentumWalk<float, Component::u, Component::v, Component::w>(
            c, work.threads[thread], su, nullptr);
    });
}

}  // namespace torvex
