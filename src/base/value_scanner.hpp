#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace torvex {

// A place in a text, counted in lines from 1.
struct TextCursor {
    const char* at = nullptr;
    const char* end = nullptr;
    long line = 1;
};

// How the free-form notation is bounded where it stands.
struct ScanRules {
    bool comments = false;        // "!" begins a comment up to the line end
    bool over_lines = true;       // a line end counts as a blank, else it ends the list
    bool slash_in_words = false;  // "/" is an ordinary character of an unquoted word
};

// One value of a list as it stands in the text.
struct ValueToken {
    enum class Kind {
        null,      // nothing between two commas, or a bare repeat count: the item keeps its value
        word,      // unquoted text
        quoted,    // text in quotes, already without them
        unclosed,  // a quote that does not end on its line, or goes on behind its end; as it stands
        end        // the slash, the end of the list or of the text; not consumed
    };
    Kind kind = Kind::end;
    std::string text;
    long line = 0;
};

// Splits free-form text into values: blanks and commas between them, two commas in a row for a
// value left alone, 3*0.5 for a repeated one, single or double quotes with a doubled quote inside.
class ValueScanner {
 public:
    ValueScanner(TextCursor start, ScanRules rules) : cursor_(start), rules_(rules) {}

    // Stands until the next call.
    const ValueToken& next();

    // True while copies of a repeated value are still to come.
    bool repeating() const { return repeats_left_ > 0; }

    // Passes up to `most` copies of the value that next() gave last; returns how many.
    std::size_t pass_copies(std::size_t most);

    // Passes blanks, comments and the one comma that belongs to the value before.
    void skip_separator();

    const TextCursor& cursor() const { return cursor_; }
    ValueToken::Kind last_kind() const { return token_.kind; }

 private:
    void skip_blanks();
    bool at_line_end() const;
    bool at_word_end(const char* p) const;
    const ValueToken& give(ValueToken::Kind kind);
    const ValueToken& give(ValueToken::Kind kind, const char* start);
    const ValueToken& scan_quoted();
    const ValueToken& scan_value();

    TextCursor cursor_;
    ScanRules rules_;
    bool value_open_ = false;  // the last value still owns the comma that may follow it
    std::int64_t repeats_left_ = 0;
    ValueToken token_;  // given last; a repeated one is given again as it stands
};

// One whole word as a number: all of the text must be used. Reals take integers, a D or E exponent
// and an exponent that is only a sign and digits; "inf" and "nan" are read as what they say. A
// magnitude too large for the type is refused, one too small becomes zero.
bool parse_real(std::string_view word, float& value);
bool parse_real(std::string_view word, double& value);
bool parse_integer(std::string_view word, std::int32_t& value);

// T or F behind an optional point, in either case, whatever follows.
bool parse_logical(std::string_view word, bool& value);

}  // namespace torvex
