#pragma once

#include <omp.h>

#include <cstddef>

#include "mesh/grid_geometry.hpp"

namespace torvex {

// The cells 2..ny, 2..nz plane by plane, shared out among the threads in one piece each. A thread
// walks upwards through its own planes with the walk that walk_of(thread) makes, thread = 0..:
//
//   start_below(k)                      what plane k, the first, expects of the plane below it
//   start_plane(k)                      the south side of plane k
//   next_row(j, k, with_plane_above)    row (j,k), j rising; the last is false in the thread's last
//                                       plane, whose top belongs to another walk too
//
// No cell's arithmetic may depend on where the pieces end: what a plane shares with the one below
// is formed anew where a piece begins.
template <class WalkOf>
void walk_planes(const GridGeometry& g, const WalkOf& walk_of) {
    const int planes = g.nz - 1;
#pragma omp parallel
    {
        const int threads = omp_get_num_threads();
        const int thread = omp_get_thread_num();
        const int first = 2 + planes * thread / threads;
        const int last = 1 + planes * (thread + 1) / threads;
        if (first <= last) {
            auto walk = walk_of(static_cast<std::size_t>(thread));
            walk.start_below(first);
            for (int k = first; k <= last; ++k) {
                walk.start_plane(k);
                for (int j = 2; j <= g.ny; ++j) {
                    walk.next_row(j, k, k < last);
                }
            }
        }
    }
}

}  // namespace torvex
