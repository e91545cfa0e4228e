#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace torvex::test {

// Damage to the files that a run reads: what a broken copy, a full disk, another program or a hand
// leaves behind. The same seed gives the same bytes.
class FileMutator {
 public:
    explicit FileMutator(std::uint32_t seed) : random_(seed) {}

    // A text with one to three changes: bytes, lines, numbers, line ends, length.
    std::string text(const std::string& good);

    // A file of records with one to three changes: bytes, lengths, the header, whole records.
    std::string records(const std::string& good);

 private:
    struct Record {
        std::size_t start = 0;
        std::size_t size = 0;  // both lengths included
    };

    std::size_t below(std::size_t bound) { return bound == 0 ? 0 : random_() % bound; }
    bool change_bytes(std::string& bytes, std::size_t place);
    void change_text(std::string& text);
    void change_lines(std::string& text);
    void change_number(std::string& text);
    void change_records(std::string& bytes, const std::vector<Record>& records);
    void change_word(std::string& bytes, std::size_t place);
    static std::vector<Record> records_of(const std::string& good);

    std::mt19937 random_;
};

}  // namespace torvex::test
