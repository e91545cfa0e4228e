#include "case/mutations.hpp"

#include <algorithm>
#include <array>
#include <string_view>

namespace torvex::test {

namespace {

// What a hand slips into a case file, and what a reader may stumble over.
constexpr std::array<std::string_view, 72> words{"'",
                                                 "\"",
                                                 "''",
                                                 "&",
                                                 "$",
                                                 "/",
                                                 "\n/\n",
                                                 "!",
                                                 ",",
                                                 ",,",
                                                 "=",
                                                 "= =",
                                                 "(",
                                                 ")",
                                                 "()",
                                                 "(0)",
                                                 "(1)",
                                                 "(361)",
                                                 "(99999)",
                                                 "(-1)",
                                                 "%",
                                                 "%LON",
                                                 "*",
                                                 "3*",
                                                 "3*0.5",
                                                 "0*1",
                                                 "400*1",
                                                 "2147483647*",
                                                 "2147483648*1",
                                                 "99999999999999999999*9",
                                                 "1e38",
                                                 "1e39",
                                                 "-1e-46",
                                                 "nan",
                                                 "inf",
                                                 "-inf",
                                                 "0",
                                                 "-1",
                                                 "2147483647",
                                                 "2147483648",
                                                 "1.5D2",
                                                 "1d",
                                                 ".true.",
                                                 "F",
                                                 ".",
                                                 "\r",
                                                 "\r\n",
                                                 "\n",
                                                 "\t",
                                                 "\x1b",
                                                 "\xff\xfe",
                                                 "&END",
                                                 "$END",
                                                 "&NML_RUN",
                                                 "&NML_SITE",
                                                 "&nest_points\n",
                                                 "&canopy_parameters\n",
                                                 "&shp_parameters\n",
                                                 "calc_fa = T\n",
                                                 "fa_ndir = 2147483647\n",
                                                 "fa_dirs = 2000*1\n",
                                                 "nest_mode = 1\n",
                                                 "SITE(1000)%LABEL = 'x'",
                                                 "SITE(1001)%LABEL",
                                                 "N_WIND_DIRECTION = 361",
                                                 "N_SITE = 1000",
                                                 "USE_DIRECTIONAL_ALPHA = T",
                                                 "TURBULENCE_MODEL = 9",
                                                 "MONITOR_LAT = 3e38, 3e38, 3e38",
                                                 "WD_TYPE = 1",
                                                 "GS = 3",
                                                 "WE_LENGTH = 1e-30"};

bool is_blank(char c) {
    return c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

struct Word {
    std::size_t start = 0;
    std::size_t size = 0;
};

// The word at or behind a place, of no size at the end of the text.
Word word_from(const std::string& text, std::size_t place) {
    while (place < text.size() && is_blank(text[place])) {
        ++place;
    }
    Word word{place, 0};
    while (place + word.size < text.size() && !is_blank(text[place + word.size])) {
        ++word.size;
    }
    return word;
}

}  // namespace

std::string Mutator::next() {
    if (below(50) == 0) {
        return random_bytes();
    }
    std::string text = any_text();
    for (std::size_t changes = 1 + below(1 + below(8)); changes > 0; --changes) {
        change(text);
    }
    return text;
}

std::string Mutator::piece_of(const std::string& text, std::size_t longest) {
    return text.substr(below(text.size() + 1), 1 + below(longest));
}

std::string Mutator::random_bytes() {
    std::string text(below(3000), ' ');
    for (char& c : text) {
        c = static_cast<char>(random_() & 0xFFU);
    }
    return text;
}

void Mutator::swap_words(std::string& text) {
    Word first = word_from(text, below(text.size() + 1));
    Word second = word_from(text, below(text.size() + 1));
    if (second.start < first.start) {
        std::swap(first, second);
    }
    if (first.start + first.size > second.start) {
        return;
    }
    const std::string left = text.substr(first.start, first.size);
    const std::string right = text.substr(second.start, second.size);
    text.replace(second.start, second.size, left);
    text.replace(first.start, first.size, right);
}

void Mutator::insert_word(std::string& text) {
    std::string word(words[below(words.size())]);
    if (below(2) == 0) {
        word = " " + word + " ";
    }
    const std::size_t place = below(text.size() + 1);
    if (below(3) == 0) {
        const Word old = word_from(text, place);
        text.replace(old.start, old.size, word);
    } else {
        text.insert(place, word);
    }
}

void Mutator::change(std::string& text) {
    const std::size_t place = below(text.size() + 1);
    switch (below(8)) {
        case 0:  // one byte anew
            if (place < text.size()) {
                text[place] = static_cast<char>(random_() & 0xFFU);
            }
            break;
        case 1:  // one bit flipped
            if (place < text.size()) {
                text[place] =
                    static_cast<char>(static_cast<unsigned char>(text[place]) ^ (1U << below(8)));
            }
            break;
        case 2:  // a piece left out
            text.erase(place, 1 + below(60));
            break;
        case 3:  // a piece doubled
            text.insert(place, piece_of(text, 200));
            break;
        case 4:  // the end of another text
            text = text.substr(0, place) + piece_of(any_text(), 4000);
            break;
        case 5:
            swap_words(text);
            break;
        default:
            insert_word(text);
            break;
    }
}

}  // namespace torvex::test
