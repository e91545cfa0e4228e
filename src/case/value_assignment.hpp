#pragma once

#include <string>

#include "base/value_scanner.hpp"
#include "case/case_keys.hpp"

namespace torvex {

// How a list of values fitted its key.
struct AssignFault {
    std::string text;      // the offending text
    std::string expected;  // what should have stood there
    long line = 0;
};

// Number of values that a target can take; a list without a fixed length takes 1000.
std::size_t capacity(const KeyTarget& target);

// What becomes of a text: labels are cut to `length`, a `whole` one that is longer is refused.
struct TextRule {
    std::size_t length = 0;
    bool whole = false;
};

// Gives value n (from 0) of a target the text of a token; a null token leaves it alone. Texts lose
// trailing blanks. Infinities and NaN are no values of a case.
bool assign(const KeyTarget& target, std::size_t n, const ValueToken& token, TextRule text,
            AssignFault& fault);

}  // namespace torvex
