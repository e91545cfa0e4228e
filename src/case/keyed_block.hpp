#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "case/case_keys.hpp"
#include "case/case_text.hpp"

namespace torvex {

// What came of looking for a key in a keyed block.
enum class KeyStatus : std::uint8_t {
    read = 0,       // found and read
    no_rewind = 1,  // the file could not be rewound
    no_block = 2,   // no such block in the file
    no_key = 3,     // the block ends without the key
    bad_value = 4   // found, but the value could not be read
};

// Typed readers of keyed blocks:
//
//   &name
//   key = value
//   /
//
// A block begins with a line whose first word begins with "&" and the name, and ends with a line
// that begins with "/". Names compare with case; of a key given twice the first counts. The value
// is free-form as in a namelist; a text may also stand without quotes and then ends at a blank,
// comma, "!" or line end. Every read begins at the start of the file. A destination without a
// value keeps what it holds.
KeyStatus read_integer_key(const CaseText& file, std::string_view block, std::string_view key,
                           std::int32_t& value);
KeyStatus read_real_array_key(const CaseText& file, std::string_view block, std::string_view key,
                              std::span<float> values);
KeyStatus read_real_key(const CaseText& file, std::string_view block, std::string_view key,
                        float& value);
KeyStatus read_text_key(const CaseText& file, std::string_view block, std::string_view key,
                        std::string& value, std::size_t length);
KeyStatus read_logical_key(const CaseText& file, std::string_view block, std::string_view key,
                           bool& value);

// The same for a key of the table, whatever its type. A value that cannot be read ends the run,
// naming file, line, block and key.
KeyStatus read_table_key(const CaseText& file, std::string_view block, const CaseKey& key,
                         CaseSettings& settings);

// The line in which a block has a key; nothing if it has none.
std::optional<long> line_of_key(const CaseText& file, std::string_view block, std::string_view key);

// A line of a block whose key the table does not know.
struct UnknownKey {
    std::string name;
    long line = 0;
};
// In the order of their lines; nothing where the file has no such block.
std::vector<UnknownKey> unknown_keys(const CaseText& file, const CaseGroup& block);

}  // namespace torvex
