#pragma once

#include <atomic>
#include <cstddef>
#include <memory>

namespace torvex {

// How many planes each thread of a pipeline has finished. A thread that waits tries a few times and
// then sleeps, so that on a busy machine its core goes to the thread that it waits for.
class PlaneProgress {
 public:
    explicit PlaneProgress(int threads)
        : done_(std::make_unique<Counter[]>(static_cast<std::size_t>(threads))) {}

    void publish(int thread, int planes) {
        counter(thread).store(planes, std::memory_order_release);
        counter(thread).notify_all();
    }
    void wait_for(int thread, int planes) const {
        constexpr int patience = 1000;
        const std::atomic<int>& done = counter(thread);
        int seen = done.load(std::memory_order_acquire);
        for (int tries = 0; seen < planes; ++tries) {
            if (tries >= patience) {
                done.wait(seen, std::memory_order_acquire);
            }
            seen = done.load(std::memory_order_acquire);
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
