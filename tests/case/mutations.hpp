#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace torvex::test {

// Damaged and distorted case files made from good ones; the same seed gives the same texts.
class Mutator {
 public:
    Mutator(std::vector<std::string> corpus, std::uint32_t seed)
        : corpus_(std::move(corpus)), random_(seed) {}

    // A text of the corpus with one to eight changes, or, now and then, bytes at random.
    std::string next();

 private:
    std::size_t below(std::size_t bound) { return bound == 0 ? 0 : random_() % bound; }
    const std::string& any_text() { return corpus_[below(corpus_.size())]; }
    std::string piece_of(const std::string& text, std::size_t longest);
    std::string random_bytes();
    void change(std::string& text);
    void swap_words(std::string& text);
    void insert_word(std::string& text);

    std::vector<std::string> corpus_;
    std::mt19937 random_;
};

}  // namespace torvex::test
