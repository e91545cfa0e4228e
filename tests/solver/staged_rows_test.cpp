// The order in which rows pass through stages.

#include "solver/staged_rows.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

#include "solver/pressure_cases.hpp"

namespace torvex {
namespace {

// How many stages each row has behind it, and whether any call came too early, too late or twice.
class Passage {
 public:
    explicit Passage(int rows)
        : rows_(rows), done_(std::make_unique<std::atomic<int>[]>(std::size_t(rows) + 2)) {}

    void pass(int stage, int j) {
        if (behind(j) != stage) {
            ++mistakes_;
        }
        // A neighbour must not be two stages ahead either: this stage still reads what it was.
        for (const int beside : {j - 1, j + 1}) {
            if (is_row(beside) && (behind(beside) < stage || behind(beside) > stage + 1)) {
                ++mistakes_;
            }
        }
        done_[std::size_t(j)].store(stage + 1);
    }
    int mistakes() const { return mistakes_; }
    bool every_row_has(int stages) const {
        for (int j = 1; j <= rows_; ++j) {
            if (behind(j) != stages) {
                return false;
            }
        }
        return true;
    }

 private:
    bool is_row(int j) const { return j >= 1 && j <= rows_; }
    int behind(int j) const { return done_[std::size_t(j)].load(); }

    int rows_;
    std::unique_ptr<std::atomic<int>[]> done_;
    std::atomic<int> mistakes_{0};
};

template <int S>
void expect_order() {
    for (const int rows : {0, 1, 2, 3, 7, 9, 10, 11, 15, 16, 19, 20, 21, 23, 31, 40, 41, 60, 97}) {
        for (const int threads : {1, 2, 3, 5, 8}) {
            SCOPED_TRACE(std::to_string(rows) + " rows, " + std::to_string(threads) + " threads");
            Passage passage(rows);
            with_threads(threads, [&] {
                staged_rows(S, rows, true,
                            [&](int stage, int j, int /*thread*/) { passage.pass(stage, j); });
            });
            EXPECT_EQ(passage.mistakes(), 0);
            EXPECT_TRUE(passage.every_row_has(S));
        }
    }
}

TEST(StagedRows, NoStageComesBeforeWhatItNeeds) {
    expect_order<1>();
    expect_order<2>();
    expect_order<3>();
    expect_order<4>();
}

// What one row of a pair assigns, the other adds to.
TEST(StagedRows, PairsStayOnOneThreadAndRise) {
    for (int rows = 1; rows <= 40; ++rows) {
        for (const int threads : {1, 2, 3}) {
            std::unique_ptr<int[]> thread_of = std::make_unique<int[]>(std::size_t(rows) + 2);
            std::atomic<int> mistakes{0};
            with_threads(threads, [&] {
                staged_rows(3, rows, true, [&](int stage, int j, int thread) {
                    if (stage == 2) {
                        thread_of[std::size_t(j)] = thread + 1;
                        if (j % 2 == 0 && thread_of[std::size_t(j - 1)] != thread + 1) {
                            ++mistakes;
                        }
                    }
                });
            });
            EXPECT_EQ(mistakes, 0) << rows << " " << threads;
        }
    }
}

TEST(StagedRows, LongMeshesAreSharedOut) {
    for (const bool shared_out : {true, false}) {
        std::atomic<int> most{0};
        with_threads(4, [&] {
            staged_rows(3, 64, shared_out, [&](int, int, int thread) {
                int seen = most.load();
                while (seen < thread && !most.compare_exchange_weak(seen, thread)) {
                }
            });
        });
        EXPECT_EQ(most, shared_out ? 3 : 0);
    }
}

}  // namespace
}  // namespace torvex
