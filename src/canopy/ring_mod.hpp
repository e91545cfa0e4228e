#pragma once

#include <cstddef>
#include <vector>

#include "base/run_log.hpp"
#include "base/stop.hpp"

namespace torvex {

// A ring of entries between a head and a tail. It is made for a number of entries and takes room
// for twice as many each time it is full, so that none is lost.
template <class T>
class Ring {
 public:
    Ring() = default;

    // stops 1 with "[ring_mod] Buffer size or allocation error." for a capacity below 1
    explicit Ring(int capacity) {
        if (capacity < 1) {
            constexpr const char* text = "[ring_mod] Buffer size or allocation error.";
            console(text);
            stop(1, text);
        }
        entries_.resize(static_cast<std::size_t>(capacity));
    }

    void push(const T& entry) {
        if (count_ == entries_.size()) {
            grow();
        }
        entries_[(head_ + count_) % entries_.size()] = entry;
        ++count_;
    }

    // Takes the entry at the head away.
    void pop() {
        head_ = (head_ + 1) % entries_.size();
        --count_;
    }

    void clear() {
        head_ = 0;
        count_ = 0;
    }

    bool empty() const { return count_ == 0; }
    std::size_t size() const { return count_; }

    // Entry n from the head, from 0.
    const T& operator[](std::size_t n) const { return entries_[(head_ + n) % entries_.size()]; }

 private:
    void grow() {
        std::vector<T> wider(entries_.empty() ? 1 : 2 * entries_.size());
        for (std::size_t n = 0; n < count_; ++n) {
            wider[n] = (*this)[n];
        }
        entries_ = std::move(wider);
        head_ = 0;
    }

    std::vector<T> entries_;
    std::size_t head_ = 0;
    std::size_t count_ = 0;
};

}  // namespace torvex
