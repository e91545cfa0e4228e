#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>

namespace torvex {

// How many planes each thread of a pipeline has finished. A thread that waits gives its core away
// after a while, so that a pipeline on a busy machine goes on.
class PlaneProgress {
 public:
    explicit PlaneProgress(int threads)
        : done_(std::make_unique<Counter[]>(static_cast<std::size_t>(threads))) {}

    void publish(int thread, int planes) {
        counter(thread).store(planes, std::memory_order_release);
    }
    void wait_for(int thread, int planes) const {
        constexpr int patience = 1000;
        for (int tries = 0; counter(thread).load(std::memory_order_acquire) < planes; ++tries) {
            if (tries >= patience) {
                std::this_thread::yield();
            }
        }
    }

 private:
    struct alignas(64) Counter {
        std::atomic<int> planes{0};
    };
    std::atomic<int>& counter(int thread) { return done_[static_cast<std::size_t>(thread)].planes; }
    const std::atomic<int>& counter(int thread) const {
        return done_[static_cast<std::size_t>(thread)].planes;
    }

    std::unique_ptr<Counter[]> done_;
};

}  // namespace torvex
