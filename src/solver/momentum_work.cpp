#include "solver/momentum_work.hpp"

#include <omp.h>

#include <cstddef>

namespace torvex {

void fit(MomentumWork& work, const GridGeometry& g) {
    const auto threads = static_cast<std::size_t>(omp_get_max_threads());
    if (work.threads.size() < threads) {
        work.threads.resize(threads);
    }
    for (MomentumScratch& s : work.threads) {
        if (s.corner.ni() == g.ni && s.corner.nj() == g.ny) {
            continue;
        }
        s.corner.allocate(g.ni, g.ny, 3);
        s.level.allocate(g.ni, g.ny, 3);
        s.column.allocate(g.ni, 3);
        s.lower.allocate(g.ni, 2, 3);
        s.bottom.allocate(g.ni, g.ny, MomentumScratch::components);
        s.bottom_to_low.allocate(g.ni, g.ny);
        s.rows.allocate(g.ni, MomentumScratch::row_count);
    }
}

}  // namespace torvex
