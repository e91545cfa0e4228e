#pragma once

#include <omp.h>

#include <algorithm>

namespace torvex {

// step(thread, stage, j) for all rows j of first..last and the stages 0..stages-1, in one pass
// through memory: stage s follows stage s-1 one row behind, so that a row stays in a near cache for
// all its stages.
//
// It is for half-sweeps in two colours, each of which writes its own colour alone: stage s of row j
// comes after stage s-1 of the rows j-1, j, j+1 and before stage s+1 of any of them. What a step
// finds is the same for any number of threads. thread = 0.. tells which scratch is free.
//
// Each thread has a band of rows, which loses a row a stage where it meets another band. What is
// missing between two bands is done by one thread when all bands are through.
template <class Step>
void row_wavefront(int first, int last, int stages, const Step& step) {
    const int rows = last - first + 1;
    if (rows < 1) {
        return;
    }
    // What is missing beside two neighbours of a band must not meet; a few rows more than that, for
    // it is done late.
    const int least_rows = 2 * stages + 2;
    const int most_threads = std::max(rows / least_rows, 1);
    // The whole team starts, although some may have no band: the runtime would end the others and
    // make them anew for the next loop.
#pragma omp parallel if (most_threads > 1)
    {
        const int threads = std::min(omp_get_num_threads(), most_threads);
        const int thread = omp_get_thread_num();
        const bool takes_part = thread < threads;
        const int begin = first + rows * thread / threads;
        const int end = first + rows * (thread + 1) / threads - 1;
        const int south_loss = thread > 0 ? 1 : 0;
        const int north_loss = thread + 1 < threads ? 1 : 0;
        for (int front = begin; takes_part && front < end + stages; ++front) {
            for (int stage = 0; stage < stages; ++stage) {
                const int j = front - stage;
                if (j >= begin + south_loss * stage && j <= end - north_loss * stage) {
                    step(thread, stage, j);
                }
            }
        }
#pragma omp barrier
        const bool has_seam = takes_part && thread > 0;
        for (int stage = 1; has_seam && stage < stages; ++stage) {
            for (int j = begin - stage; j < begin + stage; ++j) {
                step(thread, stage, j);
            }
        }
    }
}

}  // namespace torvex
