#include "base/record_framing.hpp"

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <utility>

namespace torvex {

static_assert(std::endian::native == std::endian::little,
              "records are little-endian and written from memory as they stand");

RecordFraming::RecordFraming(Sink sink, std::int64_t subrecord_limit)
    : sink_(std::move(sink)), limit_(subrecord_limit) {
    if (limit_ < 1 || limit_ > max_subrecord_bytes) {
        throw std::logic_error("subrecord limit out of range");
    }
}

void RecordFraming::put_length(std::int64_t length) {
    const auto stored = static_cast<std::int32_t>(length);
    sink_(std::as_bytes(std::span(&stored, 1)));
}

void RecordFraming::open_subrecord() {
    subrecord_ = std::min(record_left_, limit_);
    subrecord_left_ = subrecord_;
    const bool continued = record_left_ > subrecord_;
    put_length(continued ? -subrecord_ : subrecord_);
}

void RecordFraming::close_subrecord() {
    put_length(first_ ? subrecord_ : -subrecord_);
    first_ = false;
}

void RecordFraming::begin_record(std::int64_t bytes) {
    if (bytes < 0) {
        throw std::logic_error("a record cannot have a negative size");
    }
    record_left_ = bytes;
    first_ = true;
    open_subrecord();
}

void RecordFraming::append(std::span<const std::byte> bytes) {
    if (std::cmp_greater(bytes.size(), record_left_)) {
        throw std::logic_error("a record got more bytes than announced");
    }
    while (!bytes.empty()) {
        if (subrecord_left_ == 0) {
            close_subrecord();
            open_subrecord();
        }
        const auto fitting = std::min(bytes.size(), static_cast<std::size_t>(subrecord_left_));
        sink_(bytes.first(fitting));
        subrecord_left_ -= static_cast<std::int64_t>(fitting);
        record_left_ -= static_cast<std::int64_t>(fitting);
        bytes = bytes.subspan(fitting);
    }
}

void RecordFraming::end_record() {
    if (record_left_ != 0) {
        throw std::logic_error("a record got fewer bytes than announced");
    }
    close_subrecord();
}

}  // namespace torvex
