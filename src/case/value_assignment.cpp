#include "case/value_assignment.hpp"

#include <algorithm>
#include <cmath>

namespace torvex {

namespace {

// Bound of lists whose length another key gives.
constexpr std::size_t longest_list = 1000;

struct Capacity {
    template <class T>
    std::size_t operator()(std::span<T> values) const {
        return values.size();
    }
    template <class T>
    std::size_t operator()(const T* /*value*/) const {
        return 1;
    }
    std::size_t operator()(const std::vector<float>* /*values*/) const { return longest_list; }
};

struct Assign {
    std::size_t n;
    const ValueToken& token;
    TextRule text;
    std::string& expected;

    bool operator()(std::span<std::int32_t> values) const {
        expected = "an integer";
        return is_word() && parse_integer(token.text, values[n]);
    }
    bool operator()(std::span<float> values) const { return real(values[n]); }
    bool operator()(std::vector<float>* values) const {
        if (values->size() <= n) {
            values->resize(n + 1);
        }
        return real((*values)[n]);
    }
    bool operator()(bool* value) const {
        expected = "a logical, T or F";
        return is_word() && parse_logical(token.text, *value);
    }
    bool operator()(std::string* value) const {
        expected = "a text in quotes, closed on the same line";
        if (token.kind != ValueToken::Kind::quoted) {
            return false;
        }
        const std::size_t end = token.text.find_last_not_of(' ') + 1;
        if (text.whole && end > text.length) {
            expected = "a name of at most " + std::to_string(text.length) + " characters";
            return false;
        }
        *value = token.text.substr(0, std::min(end, text.length));
        value->erase(value->find_last_not_of(' ') + 1);
        return true;
    }
    bool operator()(std::span<Site> /*sites*/) const {
        expected = "a member of a site record, as in SITE(1)%LABEL = 'x'";
        return false;
    }

 private:
    bool is_word() const { return token.kind == ValueToken::Kind::word; }
    bool real(float& value) const {
        expected = "a real number";
        float parsed = 0;
        if (!is_word() || !parse_real(token.text, parsed) || !std::isfinite(parsed)) {
            return false;
        }
        value = parsed;
        return true;
    }
};

}  // namespace

std::size_t capacity(const KeyTarget& target) {
    return std::visit(Capacity{}, target);
}

bool assign(const KeyTarget& target, std::size_t n, const ValueToken& token, TextRule text,
            AssignFault& fault) {
    if (n >= capacity(target)) {
        fault = {token.text, "at most " + std::to_string(capacity(target)) + " value(s)",
                 token.line};
        return false;
    }
    if (token.kind == ValueToken::Kind::null) {
        return true;
    }
    std::string expected;
    if (!std::visit(Assign{n, token, text, expected}, target)) {
        fault = {token.text, expected, token.line};
        return false;
    }
    return true;
}

}  // namespace torvex
