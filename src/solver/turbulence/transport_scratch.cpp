// Room for the walk of the turbulence assembly.

#include "solver/turbulence/transport_scratch.hpp"

#include <omp.h>

#include <cstddef>

namespace torvex {

void fit(TransportScratch& scratch, const GridGeometry& g) {
    const auto threads = static_cast<std::size_t>(omp_get_max_threads());
    if (scratch.threads.size() < threads) {
        scratch.threads.resize(threads);
    }
    for (PlaneScratch& t : scratch.threads) {
        if (t.rows.ni() == g.ni && t.cross_bottom.nj() == g.nj) {
            continue;
        }
        t.level.allocate(g.nx, g.ny);
        t.node.allocate(g.nx, g.ny);
        t.cross_bottom.allocate(g.ni, g.nj);
        t.rows.allocate(g.ni, PlaneScratch::row_count);
    }
}

void fit_columns(TransportScratch& scratch, const GridGeometry& g) {
    if (scratch.column_sum.ni() != g.ni || scratch.column_sum.nj() != g.nj) {
        scratch.column_moment.allocate(g.ni, g.nj);
        scratch.column_sum.allocate(g.ni, g.nj);
    }
}

}  // namespace torvex
