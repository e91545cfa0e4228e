#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <type_traits>

#include "base/field.hpp"
#include "base/record_framing.hpp"
#include "base/whole_file.hpp"

namespace torvex {

// What may stand in a record: 32-bit integers and reals, lists and whole arrays of them.
template <class T>
concept RecordNumber = std::same_as<T, std::int32_t> || std::same_as<T, float>;

// The numbers of an item in the order in which they stand in memory and in the file.
template <RecordNumber T>
std::span<T> numbers_of(T& value) {
    return {&value, 1};
}
template <RecordNumber T>
std::span<const T> numbers_of(const T& value) {
    return {&value, 1};
}
template <class T, std::size_t N>
requires RecordNumber<std::remove_const_t<T>> std::span<T> numbers_of(std::span<T, N> values) {
    return values;
}
template <RecordNumber T>
std::span<T> numbers_of(Array3<T>& array) {
    return {array.data(), array.size()};
}
template <RecordNumber T>
std::span<const T> numbers_of(const Array3<T>& array) {
    return {array.data(), array.size()};
}
template <RecordNumber T>
std::span<T> numbers_of(Array2<T>& array) {
    return {array.data(), array.size()};
}
template <RecordNumber T>
std::span<const T> numbers_of(const Array2<T>& array) {
    return {array.data(), array.size()};
}

// Writes a file of records as a whole: it has its name only after commit(), see WholeFile. Every
// failure to write is a stop.
class RecordWriter {
 public:
    explicit RecordWriter(const std::string& path,
                          std::int64_t subrecord_limit = max_subrecord_bytes);

    // One record of the items, packed in order.
    template <class... Items>
    void record(const Items&... items) {
        begin_record((std::int64_t{0} + ... + byte_count(items)));
        (append(std::as_bytes(numbers_of(items))), ...);
        end_record();
    }

    // The same in pieces, for what does not fit memory.
    void begin_record(std::int64_t bytes) { framing_.begin_record(bytes); }
    void append(std::span<const std::byte> bytes) { framing_.append(bytes); }
    void end_record() { framing_.end_record(); }

    void commit() { file_.commit(); }

 private:
    template <class Item>
    static std::int64_t byte_count(const Item& item) {
        return static_cast<std::int64_t>(numbers_of(item).size_bytes());
    }

    WholeFile file_;
    RecordFraming framing_;
};

// Reads a file of records from front to back. Nothing in the file is trusted: the framing of a
// record is checked in full before a byte of it is handed over, and no memory is taken on the word
// of the file. The first failure ends the reading; fault() then says what is wrong and where.
class RecordReader {
 public:
    RecordReader() = default;
    ~RecordReader();
    RecordReader(const RecordReader&) = delete;
    RecordReader& operator=(const RecordReader&) = delete;

    bool open(const std::string& path);

    // Data bytes of the next record; nothing if it is damaged or absent.
    std::optional<std::int64_t> next_size();

    // The next record into the items, which it must fill exactly.
    template <class... Items>
    bool read(Items&&... items) {
        const std::array<std::span<std::byte>, sizeof...(Items)> targets{
            std::as_writable_bytes(numbers_of(items))...};
        return read_into(targets);
    }

    bool skip();

    bool at_end() const { return at_ == size_; }
    // True if the reading failed because the file ends in front of a record or inside it.
    bool cut_off() const { return cut_off_; }
    const std::string& fault() const { return fault_; }

 private:
    struct Frame {
        std::int64_t bytes = 0;  // data bytes of the record
        std::int64_t end = 0;    // place of the next record in the file
    };

    std::optional<Frame> next_frame();
    bool read_into(std::span<const std::span<std::byte>> targets);
    bool read_at(std::int64_t at, std::span<std::byte> bytes);
    bool fail(const std::string& reason);
    bool fail_in_record(const std::string& reason);
    bool fail_at_end_of_file(const std::string& reason);

    int descriptor_ = -1;
    std::int64_t size_ = 0;  // of the file
    std::int64_t at_ = 0;    // start of the next record
    long record_ = 1;        // its number, for messages
    std::string fault_;
    bool cut_off_ = false;
};

}  // namespace torvex
