#include "case/namelist.hpp"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>
#include <vector>

#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"
#include "case/value_assignment.hpp"

namespace torvex {

namespace {

bool is_letter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool is_name_character(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool is_blank(char c) {
    return c == ' ' || c == '\t';
}

bool equal_without_case(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char x, char y) {
        return std::toupper(static_cast<unsigned char>(x)) ==
               std::toupper(static_cast<unsigned char>(y));
    });
}

// The name at the head of a text, blank if there is none.
std::string_view leading_name(std::string_view text) {
    std::size_t n = 0;
    while (n < text.size() && is_name_character(text[n])) {
        ++n;
    }
    return n > 0 && is_letter(text[0]) ? text.substr(0, n) : std::string_view{};
}

std::string_view rest_of(const TextCursor& cursor) {
    return {cursor.at, static_cast<std::size_t>(cursor.end - cursor.at)};
}

std::string_view rest_of_line(const TextCursor& cursor) {
    const std::string_view rest = rest_of(cursor);
    return trimmed(rest.substr(0, rest.find_first_of("\r\n")));
}

// What stands behind the ")" of a line; nothing if it has none.
std::string_view behind_parenthesis(std::string_view text) {
    const std::size_t close = text.find_first_of(")\n");
    return close == std::string_view::npos || text[close] == '\n' ? std::string_view{}
                                                                  : text.substr(close + 1);
}

// True where the next item begins: name [(...)] [%name [(...)]] =, all on one line.
bool at_item(const TextCursor& cursor) {
    // No step looks further than the item goes: this is asked for every value of a long line.
    std::string_view text = rest_of(cursor);
    const auto pass_name_and_index = [&text] {
        const std::string_view name = leading_name(text);
        text = left_adjusted(text.substr(name.size()));
        if (!name.empty() && !text.empty() && text.front() == '(') {
            text = left_adjusted(behind_parenthesis(text));
        }
        return !name.empty();
    };
    if (!pass_name_and_index()) {
        return false;
    }
    if (!text.empty() && text.front() == '%') {
        text = left_adjusted(text.substr(1));
        pass_name_and_index();
    }
    return !text.empty() && text.front() == '=';
}

bool at_group_end(const TextCursor& cursor) {
    return cursor.at == cursor.end || *cursor.at == '/' || *cursor.at == '&' || *cursor.at == '$';
}

class GroupReader {
 public:
    GroupReader(const CaseText& file, const NamelistGroup& group, KeyLines& lines)
        : file_(file), group_(group), lines_(lines) {}

    void read() {
        find_group();
        while (!at_end()) {
            read_item();
        }
    }

 private:
    // The name and place of what an item assigns.
    struct Item {
        std::string label;  // as it stands in the file, for messages
        KeyTarget target;
        std::size_t first = 0;  // first element that takes a value, from 0
        std::size_t length = 0;
        bool is_file = false;
    };

    [[noreturn]] void fail(const std::string& what, long line, const std::string& fix = {}) const {
        stop(1, "group &" + std::string(group_.name) + ": " + what, place(file_.name, line), fix);
    }

    void find_group() {
        TextCursor cursor{file_.text.data(), file_.text.data() + file_.text.size(), 1};
        NearestName nearest(group_.name);
        for (const std::string_view line : split_lines(file_.text)) {
            const std::string_view text = left_adjusted(line);
            if (!text.empty() && (text.front() == '&' || text.front() == '$')) {
                const std::string_view name = leading_name(text.substr(1));
                if (equal_without_case(name, group_.name)) {
                    cursor_ = {name.data() + name.size(), cursor.end, cursor.line};
                    opened_ = cursor.line;
                    return;
                }
                nearest.offer(name);
            }
            ++cursor.line;
        }
        stop(1, "group &" + std::string(group_.name) + " is missing" + nearest.hint(), file_.name,
             group_.if_missing);
    }

    // Passes blanks, line ends, comments and stray commas in front of the next item.
    void skip_to_item() {
        while (cursor_.at != cursor_.end) {
            const char c = *cursor_.at;
            if (c == '!') {
                cursor_.at = std::find(cursor_.at, cursor_.end, '\n');
            } else if (is_blank(c) || c == '\r' || c == '\n' || c == ',') {
                cursor_.line += c == '\n' ? 1 : 0;
                ++cursor_.at;
            } else {
                return;
            }
        }
    }

    bool at_end() {
        skip_to_item();
        if (cursor_.at == cursor_.end) {
            fail("opened here, is never closed by /", opened_);
        }
        if (*cursor_.at == '/') {
            return true;
        }
        if (*cursor_.at == '&' || *cursor_.at == '$') {
            const std::string_view word = leading_name(rest_of(cursor_).substr(1));
            if (equal_without_case(word, "END")) {
                return true;
            }
            fail("opened in line " + std::to_string(opened_) + ", is not closed by / before " +
                     excerpt(rest_of_line(cursor_)),
                 cursor_.line);
        }
        return false;
    }

    void skip_blanks() {
        while (cursor_.at != cursor_.end && is_blank(*cursor_.at)) {
            ++cursor_.at;
        }
    }

    bool take(char c) {
        skip_blanks();
        if (cursor_.at == cursor_.end || *cursor_.at != c) {
            return false;
        }
        ++cursor_.at;
        return true;
    }

    std::string_view take_name() {
        skip_blanks();
        const std::string_view name = leading_name(rest_of(cursor_));
        cursor_.at += name.size();
        return name;
    }

    // The 1 of name(1), or nothing without parentheses.
    std::optional<std::size_t> take_index(const std::string& label, std::size_t size) {
        if (!take('(')) {
            return std::nullopt;
        }
        const std::string_view rest = rest_of(cursor_);
        const std::size_t end = rest.find_first_of(")\n");
        const bool closed = end != std::string_view::npos && rest[end] == ')';
        const std::string_view word = trimmed(rest.substr(0, end));
        std::int32_t index = 0;
        if (!closed || !parse_integer(word, index)) {
            fail("key " + label + ": cannot read the index " + excerpt(word) +
                     ", expected one integer in parentheses",
                 cursor_.line);
        }
        if (index < 1 || static_cast<std::size_t>(index) > size) {
            fail("key " + label + ": index " + std::to_string(index) + " is outside 1.." +
                     std::to_string(size),
                 cursor_.line);
        }
        cursor_.at = std::find(cursor_.at, cursor_.end, ')') + 1;
        return static_cast<std::size_t>(index - 1);
    }

    const GroupKey& find_key(std::string_view name) const {
        NearestName nearest(name);
        for (const GroupKey& key : group_.keys) {
            if (equal_without_case(key.name, name)) {
                return key;
            }
            nearest.offer(key.name);
        }
        if (const std::string home = group_.home_of ? group_.home_of(name) : ""; !home.empty()) {
            fail("unknown key \"" + std::string(name) + "\"", cursor_.line, home);
        }
        fail("unknown key " + excerpt(name) + nearest.hint(), cursor_.line);
    }

    void read_site_member(Item& item, std::span<Site> sites) {
        const std::optional<std::size_t> n = take_index(item.label, sites.size());
        if (!n || !take('%')) {
            fail("key SITE: cannot read " + excerpt(rest_of_line(cursor_)) +
                     ", expected a member of one record, as in SITE(1)%LABEL",
                 cursor_.line);
        }
        const std::string_view name = take_name();
        NearestName nearest(name);
        lines_.reach("SITE", *n + 1);
        for (const SiteField& field : site_fields()) {
            if (equal_without_case(field.name, name)) {
                item.target = field.target(sites[*n]);
                item.length = field.length;
                item.label = "SITE(" + std::to_string(*n + 1) + ")%" + std::string(field.name);
                return;
            }
            nearest.offer(field.name);
        }
        fail("key SITE: unknown member " + excerpt(name) + nearest.hint(), cursor_.line,
             "the members are LABEL, LON and LAT");
    }

    Item read_name() {
        const std::string_view name = take_name();
        if (name.empty()) {
            fail("cannot read " + excerpt(rest_of_line(cursor_)) + ", expected a key or /",
                 cursor_.line);
        }
        const GroupKey& key = find_key(name);
        Item item{std::string(key.name), key.target, 0, key.length, key.is_file};
        if (const auto* sites = std::get_if<std::span<Site>>(&item.target)) {
            read_site_member(item, *sites);
        }
        item.first = take_index(item.label, capacity(item.target)).value_or(0);
        return item;
    }

    void read_item() {
        const Item item = read_name();
        if (!take('=')) {
            fail("key " + item.label + ": cannot read " + excerpt(rest_of_line(cursor_)) +
                     ", expected =",
                 cursor_.line);
        }
        lines_.set(item.label, cursor_.line);
        ValueScanner scanner(cursor_, {.comments = true});
        for (std::size_t n = item.first;; ++n) {
            if (!scanner.repeating()) {
                scanner.skip_separator();
                if (at_group_end(scanner.cursor()) || at_item(scanner.cursor())) {
                    break;
                }
            }
            const ValueToken& token = scanner.next();
            // A comma too many behind the last element is harmless, a repeat count is not.
            if (token.kind == ValueToken::Kind::null && n >= capacity(item.target) &&
                !scanner.repeating()) {
                continue;
            }
            AssignFault fault;
            if (!assign(item.target, n, token, {item.length, item.is_file}, fault)) {
                fail("key " + item.label + ": cannot read " + excerpt(fault.text) + ", expected " +
                         fault.expected,
                     fault.line);
            }
            if (token.kind != ValueToken::Kind::null) {
                lines_.reach(item.label, n + 1);
            }
        }
        cursor_ = scanner.cursor();
    }

    const CaseText& file_;
    const NamelistGroup& group_;
    KeyLines& lines_;
    TextCursor cursor_;
    long opened_ = 0;  // line of the group's name
};

}  // namespace

void read_namelist_group(const CaseText& file, const NamelistGroup& group, KeyLines& lines) {
    GroupReader(file, group, lines).read();
}

void read_namelist_group(const CaseText& file, const CaseGroup& group, CaseSettings& settings,
                         KeyLines& lines) {
    std::vector<GroupKey> keys;
    for (const CaseKey& key : group.keys) {
        keys.push_back({key.name, key.target(settings), key.length, key.names_a_file()});
    }
    const std::string if_missing = "all eight groups are mandatory; an empty one, &" +
                                   std::string(group.name) + " /, is enough";
    const auto home_of = [](std::string_view name) -> std::string {
        for (const CaseGroup& other : namelist_groups()) {
            for (const CaseKey& key : other.keys) {
                if (equal_without_case(key.name, name)) {
                    return "it is a key of &" + std::string(other.name);
                }
            }
        }
        return {};
    };
    read_namelist_group(file, {group.name, keys, if_missing, home_of}, lines);
}

}  // namespace torvex
