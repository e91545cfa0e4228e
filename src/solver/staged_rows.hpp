#pragma once

#include <omp.h>

#include <algorithm>

namespace torvex {

// The rows 1..rows of a mesh pass through stages 0..stages-1, stage(s, j, thread): stage s of row j
// needs stage s-1 of rows j-1, j, j+1 and nothing else that the call writes. Stage s follows s rows
// behind stage 0, so that a row is still in cache when its next stage comes.
//
// Threads own bands of rows. Within its band a thread does what depends on the band alone, a row
// less at each inner end for every stage; behind a barrier one thread finishes each seam. No row is
// touched by two threads between barriers, and no value depends on their number. Bands begin at odd
// rows, and every stage rises through a pair of rows 2m-1, 2m on one thread.
template <class Stage>
class StagedRows {
 public:
    StagedRows(int stages, int rows, const Stage& stage)
        : stages_(stages), rows_(rows), stage_(stage) {}

    void on_one_thread() const { band(1, rows_, 0, 0, 0); }

    // On as many threads as there are bands of a useful size; the others wait.
    void on_all_threads() const {
#pragma omp parallel
        {
            const int bands = std::clamp(rows_ / shortest_band(), 1, omp_get_num_threads());
            const int thread = omp_get_thread_num();
            if (thread < bands) {
                band(begin(thread, bands), begin(thread + 1, bands) - 1, thread > 0 ? 1 : 0,
                     thread + 1 < bands ? 1 : 0, thread);
            }
#pragma omp barrier
            if (thread + 1 < bands) {
                seam(begin(thread + 1, bands), thread);
            }
        }
    }

 private:
    // Two seams share no row.
    int shortest_band() const {
        return 2 * stages_ + 2;
    }

    int begin(int band, int bands) const {
        const int pairs = rows_ / 2;
        return band == bands ? rows_ + 1 : 1 + 2 * (pairs * band / bands);
    }
    // `at_first`, `at_last`: rows left out at the ends per stage.
    void band(int first, int last, int at_first, int at_last, int thread) const {
        for (int front = first; front <= last + stages_ - 1; ++front) {
            for (int s = 0; s < stages_; ++s) {
                const int j = front - s;
                if (j >= first + s * at_first && j <= last - s * at_last) {
                    stage_(s, j, thread);
                }
            }
        }
    }
    // What is left on both sides of the first row of a band.
    void seam(int first, int thread) const {
        for (int s = 1; s < stages_; ++s) {
            for (int j = first - s; j < first + s; ++j) {
                stage_(s, j, thread);
            }
        }
    }

    int stages_;
    int rows_;
    const Stage& stage_;
};

// Shared out among the threads, or on one.
template <class Stage>
void staged_rows(int stages, int rows, bool shared_out, const Stage& stage) {
    const StagedRows<Stage> walk(stages, rows, stage);
    if (shared_out && omp_get_max_threads() > 1) {
        walk.on_all_threads();
    } else {
        walk.on_one_thread();
    }
}

}  // namespace torvex
