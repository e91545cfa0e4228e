// The order of the stages of several half-sweeps in one pass.

#include "solver/row_wavefront.hpp"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <string>
#include <vector>

namespace torvex {
namespace {

// Stages that each row has behind it; a row on either side that never takes part has all of them.
class Progress {
 public:
    Progress(int first, int last, int stages)
        : first_(first), last_(last), stages_(stages), done_(static_cast<std::size_t>(last + 2)) {}

    // Whether stage `stage` may work on row j now.
    bool in_order(int stage, int j) const {
        return done(j) == stage && fits(stage, j - 1) && fits(stage, j + 1);
    }
    void finish(int j) { ++done_[static_cast<std::size_t>(j)]; }
    bool complete() const {
        for (int j = first_; j <= last_; ++j) {
            if (done(j) != stages_) {
                return false;
            }
        }
        return true;
    }

 private:
    int done(int j) const { return done_[static_cast<std::size_t>(j)]; }
    bool fits(int stage, int j) const {
        return j < first_ || j > last_ || (done(j) >= stage && done(j) <= stage + 1);
    }
    int first_, last_, stages_;
    std::vector<std::atomic<int>> done_;
};

TEST(RowWavefront, KeepsTheStagesInOrder) {
    const int processors = omp_get_max_threads();
    for (const int threads : {1, 2, 3, 5, 8}) {
        omp_set_num_threads(threads);
        for (const int stages : {1, 2, 4, 6}) {
            for (int rows = 0; rows <= 90; rows += rows < 40 ? 3 : 10) {
                Progress progress(2, rows + 1, stages);
                std::atomic<int> out_of_order = 0;
                row_wavefront(2, rows + 1, stages, [&](int, int stage, int j) {
                    out_of_order += progress.in_order(stage, j) ? 0 : 1;
                    progress.finish(j);
                });
                const std::string where = std::to_string(threads) + " threads, " +
                                          std::to_string(stages) + " stages, " +
                                          std::to_string(rows) + " rows";
                EXPECT_EQ(out_of_order, 0) << where;
                EXPECT_TRUE(progress.complete()) << where;
            }
        }
    }
    omp_set_num_threads(processors);
}

TEST(RowWavefront, FollowsOneRowBehind) {
    const int processors = omp_get_max_threads();
    omp_set_num_threads(1);
    std::vector<std::string> order;
    row_wavefront(2, 4, 2, [&](int thread, int stage, int j) {
        order.push_back(std::to_string(thread) + std::to_string(stage) + std::to_string(j));
    });
    EXPECT_EQ(order, (std::vector<std::string>{"002", "003", "012", "004", "013", "014"}));
    omp_set_num_threads(processors);
}

TEST(RowWavefront, TakesNoMoreThreadsThanBandsFit) {
    const int processors = omp_get_max_threads();
    omp_set_num_threads(8);
    for (const int rows : {1, 9, 19, 20, 30, 200}) {
        std::atomic<int> most = 0;
        row_wavefront(1, rows, 4, [&](int thread, int, int) {
            int seen = most;
            while (seen < thread && !most.compare_exchange_weak(seen, thread)) {
            }
        });
        EXPECT_LT(most, std::max(rows / 10, 1)) << rows;
    }
    omp_set_num_threads(processors);
}

}  // namespace
}  // namespace torvex
