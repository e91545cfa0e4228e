#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "base/assertion.hpp"

namespace torvex {

// A contiguous array with the bounds 1..ni, 1..nj, 1..nk, i fastest, aligned for vector loads.
// Element access is free of checks in release and checked in debug, asan and audit builds.
template <class T>
class Array3 {
 public:
    Array3() = default;
    Array3(int ni, int nj, int nk, T value = T{}) { allocate(ni, nj, nk, value); }
    Array3(Array3&& other) noexcept { swap(other); }
    Array3& operator=(Array3&& other) noexcept {
        Array3 moved(std::move(other));
        swap(moved);
        return *this;
    }
    Array3(const Array3& other) { copy(other); }
    Array3& operator=(const Array3& other) {
        if (this != &other) {
            copy(other);
        }
        return *this;
    }
    ~Array3() = default;

    // New bounds, every element `value`; the old contents are gone.
    void allocate(int ni, int nj, int nk, T value = T{}) {
        require(ni >= 0 && nj >= 0 && nk >= 0, "negative extent");
        const std::size_t size =
            product(product(static_cast<std::size_t>(ni), static_cast<std::size_t>(nj)),
                    static_cast<std::size_t>(nk));
        if (size != size_) {
            data_.reset();
            data_.reset(
                static_cast<T*>(::operator new (size * sizeof(T), std::align_val_t{alignment})));
            size_ = size;
        }
        ni_ = ni;
        nj_ = nj;
        nk_ = nk;
        std::uninitialized_fill_n(data_.get(), size_, value);
    }

    void release() {
        data_.reset();
        size_ = 0;
        ni_ = nj_ = nk_ = 0;
    }

    void fill(T value) { std::fill_n(data_.get(), size_, value); }

    T& operator()(int i, int j, int k) { return data_.get()[offset(i, j, k)]; }
    const T& operator()(int i, int j, int k) const { return data_.get()[offset(i, j, k)]; }

    // All elements in storage order.
    T* data() { return data_.get(); }
    const T* data() const { return data_.get(); }
    std::size_t size() const { return size_; }

    int ni() const { return ni_; }
    int nj() const { return nj_; }
    int nk() const { return nk_; }

 private:
    static constexpr std::size_t alignment = 64;
    struct Free {
        void operator()(T* p) const { ::operator delete (p, std::align_val_t{alignment}); }
    };

    // Extents may come from a file: a size that no memory can hold must not wrap to a small one.
    static std::size_t product(std::size_t a, std::size_t b) {
        constexpr std::size_t most = static_cast<std::size_t>(-1) / sizeof(T);
        if (a != 0 && b > most / a) {
            throw std::bad_array_new_length();
        }
        return a * b;
    }
    std::size_t offset(int i, int j, int k) const {
        require(i >= 1 && i <= ni_ && j >= 1 && j <= nj_ && k >= 1 && k <= nk_,
                "index outside an array");
        return static_cast<std::size_t>(i - 1) +
               static_cast<std::size_t>(ni_) *
                   (static_cast<std::size_t>(j - 1) +
                    static_cast<std::size_t>(nj_) * static_cast<std::size_t>(k - 1));
    }
    void swap(Array3& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
        std::swap(ni_, other.ni_);
        std::swap(nj_, other.nj_);
        std::swap(nk_, other.nk_);
    }
    void copy(const Array3& other) {
        allocate(other.ni_, other.nj_, other.nk_);
        std::copy_n(other.data_.get(), size_, data_.get());
    }

    std::unique_ptr<T, Free> data_;
    std::size_t size_ = 0;
    int ni_ = 0;
    int nj_ = 0;
    int nk_ = 0;
};

// The same with the bounds 1..ni, 1..nj.
template <class T>
class Array2 {
 public:
    Array2() = default;
    Array2(int ni, int nj, T value = T{}) : values_(ni, nj, 1, value) {}

    void allocate(int ni, int nj, T value = T{}) { values_.allocate(ni, nj, 1, value); }
    void release() { values_.release(); }
    void fill(T value) { values_.fill(value); }

    T& operator()(int i, int j) { return values_(i, j, 1); }
    const T& operator()(int i, int j) const { return values_(i, j, 1); }

    T* data() { return values_.data(); }
    const T* data() const { return values_.data(); }
    std::size_t size() const { return values_.size(); }
    int ni() const { return values_.ni(); }
    int nj() const { return values_.nj(); }

 private:
    Array3<T> values_;
};

using Field3 = Array3<float>;
using Field2 = Array2<float>;

}  // namespace torvex
