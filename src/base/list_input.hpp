#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/value_scanner.hpp"

namespace torvex {

// Why a list-directed read failed.
struct ListFault {
    long line = 0;         // line of the offending text, from 1
    std::string text;      // what stands there, fit to print; empty at the end of the file
    std::string expected;  // what should have stood there

    // "cannot read "12.x", expected a real number", or the end of the file instead.
    std::string message() const;
};

// List-directed (free-form) input over a text held in memory. Each read takes its items from the
// current record on, over as many records as it needs, and leaves the cursor at the start of the
// next record; a slash ends the read and leaves the remaining items alone, as does a null value.
// The text must outlive the reader. Nothing is read behind a fault.
class ListInput {
 public:
    explicit ListInput(std::string_view text, long first_line = 1);

    // One read statement. False at a fault; items in front of it are already set.
    template <class... Items>
    bool read(Items&... items) {
        begin();
        const bool good = (item(items) && ...);
        return end(good);
    }

    // One read statement for a whole row of reals.
    bool read_row(float* values, std::size_t count);

    // True if the last row ended in front of further values of its record, which were passed over.
    bool row_left_values() const { return row_left_values_; }

    // The line in which the last row ended.
    long row_line() const { return row_line_; }

    // True if nothing but blanks and line ends comes in front of a number; passes them.
    bool number_follows();

    // The next record as it stands, without its line end; false at the end of the text.
    bool read_line(std::string_view& line);

    long line() const { return cursor_.line; }
    std::string_view rest() const {
        return {cursor_.at, static_cast<std::size_t>(cursor_.end - cursor_.at)};
    }
    bool at_end() const { return cursor_.at == cursor_.end; }
    const ListFault& fault() const { return fault_; }

 private:
    void begin();
    bool end(bool good);
    bool scan_row(float* values, std::size_t count);
    void end_record();
    bool item(float& value);
    bool item(double& value);
    bool item(std::int32_t& value);
    bool item(bool& value);
    bool item(std::string& value);

    template <class Parse>
    bool item_as(const char* expected, Parse parse);
    bool fail(const ValueToken& token, const char* expected);

    TextCursor cursor_;
    ValueScanner scanner_;
    bool ended_ = false;  // a slash has ended the current statement
    bool row_left_values_ = false;
    long row_line_ = 0;
    ListFault fault_;
};

}  // namespace torvex
