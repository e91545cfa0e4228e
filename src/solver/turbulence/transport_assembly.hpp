#pragma once

#include <omp.h>

#include "solver/flow_state.hpp"
#include "solver/turbulence/transport_scratch.hpp"
#include "solver/turbulence/transport_walk.hpp"

namespace torvex {

// Neighbour coefficients of the transport of phi in all interior cells, and row by row the sources:
// source(j, k, cross) is told the balance of cross diffusion in the cells 2..nx of row (j,k). It
// must not write phi.
//
// The planes are shared out among the threads in one piece each; no cell's arithmetic depends on
// where the pieces end.
template <class Source>
void assemble_transport(const GridGeometry& g, FlowState& s, const Field3& phi, float sigma,
                        TransportScratch& scratch, Source source) {
    fit(scratch, g);
#pragma omp parallel
    {
        const int threads = omp_get_num_threads();
        const int thread = omp_get_thread_num();
        const int planes = g.nz - 1;
        const int first = 2 + planes * thread / threads;
        const int last = 1 + planes * (thread + 1) / threads;
        if (first <= last) {
            TransportWalk walk(g, s, phi, sigma, scratch.threads[static_cast<std::size_t>(thread)]);
            walk.start_below(first);
            for (int k = first; k <= last; ++k) {
                walk.start_plane(k);
                for (int j = 2; j <= g.ny; ++j) {
                    source(j, k, walk.next_row(j, k, k < last));
                }
            }
        }
    }
}

}  // namespace torvex
