#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace torvex {

// The most data bytes of a subrecord, so that its length and both length fields fit 31 bits.
inline constexpr std::int64_t max_subrecord_bytes = 2147483639;

// Sequential binary records, little-endian. A record is one or more subrecords
//
//   length (4 bytes)   data   length (4 bytes)
//
// each full but for the last. A negative length in front says that the record goes on in the next
// subrecord, a negative length behind that a subrecord precedes.
//
// RecordFraming puts the lengths around data that pass through it in pieces of any size, on their
// way to a sink of bytes; a record may be larger than memory.
class RecordFraming {
 public:
    using Sink = std::function<void(std::span<const std::byte>)>;

    explicit RecordFraming(Sink sink, std::int64_t subrecord_limit = max_subrecord_bytes);

    // The total must be known first, since it decides the sign of the first length. Handing over
    // more or fewer bytes than announced is a programming error and throws std::logic_error.
    void begin_record(std::int64_t bytes);
    void append(std::span<const std::byte> bytes);
    void end_record();

 private:
    void open_subrecord();
    void close_subrecord();
    void put_length(std::int64_t length);

    Sink sink_;
    std::int64_t limit_;
    std::int64_t record_left_ = 0;     // bytes of the record still to come
    std::int64_t subrecord_ = 0;       // length of the current subrecord
    std::int64_t subrecord_left_ = 0;  // bytes of it still to come
    bool first_ = true;                // no subrecord of this record precedes
};

}  // namespace torvex
