#include "run/file_mutations.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace torvex::test {

namespace {

// What may stand in place of a number.
constexpr std::array<std::string_view, 28> numbers{"nan",
                                                   "NaN",
                                                   "inf",
                                                   "-inf",
                                                   "1e38",
                                                   "-1e38",
                                                   "1e39",
                                                   "1e-46",
                                                   "0",
                                                   "-1",
                                                   "1",
                                                   "2147483647",
                                                   "2000000000",
                                                   "2147483648",
                                                   "-2147483648",
                                                   "99999999999",
                                                   "2147483647*",
                                                   "3*1",
                                                   "2147483647*1",
                                                   "****",
                                                   "/",
                                                   ",",
                                                   "'1'",
                                                   "T",
                                                   "1.5D2",
                                                   "1e",
                                                   "12.x",
                                                   ""};

std::int32_t bits_of(float value) {
    std::int32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// What may stand in place of a length, a count or a real of a record.
const std::array<std::int32_t, 20> hostile_words{0,
                                                 1,
                                                 -1,
                                                 2,
                                                 4,
                                                 -4,
                                                 12,
                                                 65536,
                                                 std::numeric_limits<std::int32_t>::max(),
                                                 std::numeric_limits<std::int32_t>::max() - 8,
                                                 std::numeric_limits<std::int32_t>::min(),
                                                 std::numeric_limits<std::int32_t>::min() + 1,
                                                 2000000000,
                                                 bits_of(std::numeric_limits<float>::quiet_NaN()),
                                                 bits_of(std::numeric_limits<float>::infinity()),
                                                 bits_of(-std::numeric_limits<float>::infinity()),
                                                 bits_of(3.0e38F),
                                                 bits_of(-1.0F),
                                                 bits_of(0.0F),
                                                 bits_of(1.0e-40F)};

struct Piece {
    std::size_t start = 0;
    std::size_t size = 0;
};

Piece line_at(const std::string& text, std::size_t place) {
    const std::size_t before = place == 0 ? std::string::npos : text.rfind('\n', place - 1);
    const std::size_t start = before == std::string::npos ? 0 : before + 1;
    const std::size_t end = text.find('\n', place);
    return {start, (end == std::string::npos ? text.size() : end + 1) - start};
}

Piece number_at(const std::string& text, std::size_t place) {
    constexpr std::string_view digits = "+-.0123456789eE";
    const std::size_t start = text.find_first_of(digits, place);
    if (start == std::string::npos) {
        return {text.size(), 0};
    }
    const std::size_t end = text.find_first_not_of(digits, start);
    return {start, (end == std::string::npos ? text.size() : end) - start};
}

void to_crlf(std::string& text) {
    std::string changed;
    for (const char c : text) {
        if (c == '\n') {
            changed += '\r';
        }
        changed += c;
    }
    text = changed;
}

}  // namespace

std::string FileMutator::text(const std::string& good) {
    std::string text = good;
    for (std::size_t changes = 1 + below(1 + below(3)); changes > 0; --changes) {
        change_text(text);
    }
    return text;
}

std::string FileMutator::records(const std::string& good) {
    const std::vector<Record> records = records_of(good);
    std::string bytes = good;
    for (std::size_t changes = 1 + below(1 + below(3)); changes > 0; --changes) {
        change_records(bytes, records);
    }
    return bytes;
}

// The changes that all files share; false if none was made.
bool FileMutator::change_bytes(std::string& bytes, std::size_t place) {
    if (place >= bytes.size()) {
        bytes.append(1 + below(20), static_cast<char>(random_() & 0xFFU));
        return true;
    }
    switch (below(8)) {
        case 0:  // cut off
            bytes.resize(place);
            return true;
        case 1:  // one bit flipped
            bytes[place] =
                static_cast<char>(static_cast<unsigned char>(bytes[place]) ^ (1U << below(8)));
            return true;
        case 2:  // one byte anew
            bytes[place] = static_cast<char>(random_() & 0xFFU);
            return true;
        case 3:  // a piece left out
            bytes.erase(place, 1 + below(60));
            return true;
        case 4:  // a piece doubled
            bytes.insert(place, bytes.substr(place, 1 + below(60)));
            return true;
        default:
            return false;
    }
}

void FileMutator::change_lines(std::string& text) {
    const Piece first = line_at(text, below(text.size() + 1));
    const Piece second = line_at(text, below(text.size() + 1));
    const std::string line = text.substr(first.start, first.size);
    switch (below(3)) {
        case 0:
            text.erase(first.start, first.size);
            break;
        case 1:
            text.insert(second.start, line);
            break;
        default:  // moved
            text.erase(first.start, first.size);
            text.insert(std::min(second.start, text.size()), line);
            break;
    }
}

void FileMutator::change_number(std::string& text) {
    const Piece old = number_at(text, below(text.size() + 1));
    text.replace(old.start, old.size, numbers[below(numbers.size())]);
}

void FileMutator::change_text(std::string& text) {
    constexpr std::size_t long_line = 100000;
    const std::size_t place = below(text.size() + 1);
    if (below(3) == 0 && change_bytes(text, place)) {
        return;
    }
    switch (below(12)) {
        case 0:
        case 1:
        case 2:
            change_lines(text);
            break;
        case 3:
            text.insert(place, 1 + below(3), '\0');
            break;
        case 4:
            to_crlf(text);
            break;
        case 5:  // a very long line of one character
            text.insert(place, long_line, " 9x,/'*\t"[below(8)]);
            break;
        case 6:
            text.insert(0, "\xEF\xBB\xBF");
            break;
        case 7:
            text.clear();
            break;
        default:
            change_number(text);
            break;
    }
}

// The records of a good file, as their lengths in front give them.
std::vector<FileMutator::Record> FileMutator::records_of(const std::string& good) {
    constexpr std::size_t lengths = 8;
    std::vector<Record> records;
    std::size_t at = 0;
    while (at + lengths <= good.size()) {
        std::int32_t front = 0;
        std::memcpy(&front, good.data() + at, sizeof front);
        records.push_back({at, static_cast<std::size_t>(std::abs(front)) + lengths});
        at += records.back().size;
    }
    return records;
}

// A length, count or real replaced, or moved by a little.
void FileMutator::change_word(std::string& bytes, std::size_t place) {
    std::int32_t word = 0;
    if (place + sizeof word > bytes.size()) {
        return;
    }
    std::memcpy(&word, bytes.data() + place, sizeof word);
    if (below(3) == 0) {
        const auto near = static_cast<std::int64_t>(word) + static_cast<std::int64_t>(below(9)) - 4;
        word = static_cast<std::int32_t>(near);
    } else if (below(6) == 0) {
        word = static_cast<std::int32_t>(-static_cast<std::int64_t>(word));
    } else {
        word = hostile_words[below(hostile_words.size())];
    }
    std::memcpy(bytes.data() + place, &word, sizeof word);
}

void FileMutator::change_records(std::string& bytes, const std::vector<Record>& records) {
    const Record record = records.at(below(records.size()));
    const Record other = records.at(below(records.size()));
    if (bytes.size() < std::max(record.start + record.size, other.start + other.size)) {
        change_bytes(bytes, below(bytes.size() + 1));
        return;
    }
    const std::string whole = bytes.substr(record.start, record.size);
    constexpr std::size_t header = 32;  // id and extents with their lengths
    switch (below(10)) {
        case 0:
            change_bytes(bytes, below(bytes.size() + 1));
            break;
        case 1:
            change_bytes(bytes, record.start + below(8));
            break;
        case 2:  // the length in front
            change_word(bytes, record.start);
            break;
        case 3:  // the length behind
            change_word(bytes, record.start + record.size - 4);
            break;
        case 4:  // both
            change_word(bytes, record.start);
            std::memcpy(bytes.data() + record.start + record.size - 4, bytes.data() + record.start,
                        4);
            break;
        case 5:
            change_word(bytes, below(header / 4) * 4);
            break;
        case 6:  // a number among the data
            change_word(bytes, record.start + 4 + below(record.size / 4) * 4);
            break;
        case 7:
            bytes.erase(record.start, record.size);
            break;
        case 8:
            bytes.insert(other.start, whole);
            break;
        default:  // in place of another
            bytes.replace(other.start, other.size, whole);
            break;
    }
}

}  // namespace torvex::test
