#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Fixed-width edit descriptors: the one place where numbers become text. A value that does not fit
// its field gives a field of stars. Reals are rounded in decimal from their exact 32- or 64-bit
// value (ties to even), and negative zero keeps its sign.
namespace torvex::edit {

// Iw and Iw.m: right-adjusted in w columns, zero-filled to at least m digits.
std::string I(std::int64_t value, int w, int m = 1);

// Fw.d: fixed point, d decimals. The zero before the point is left out if the field is one short.
std::string F(float value, int w, int d);
std::string F(double value, int w, int d);

// Ew.d: 0.d1d2..E+ee with d significant digits; a three-digit exponent takes the place of the E.
std::string E(float value, int w, int d);
std::string E(double value, int w, int d);

// Aw: cut or, padded on the left, right-adjusted to w columns.
std::string A(std::string_view text, int w);

// Lw: T or F, right-adjusted.
std::string L(bool value, int w);

// One list-directed (free-form) record: a blank, then the items, numbers in wide default fields
// and texts as they are. Widths are the usual ones of this notation, so that columns line up.
class ListLine {
 public:
    ListLine& operator<<(std::int32_t value);
    ListLine& operator<<(float value);
    ListLine& operator<<(double value);
    ListLine& operator<<(bool value);
    ListLine& operator<<(std::string_view text);
    ListLine& operator<<(const char* text) { return *this << std::string_view(text); }

    const std::string& text() const { return line_; }

 private:
    void separate(bool is_text);

    std::string line_;
    bool after_text_ = false;
};

// The record of these items.
template <class... Items>
std::string list(const Items&... items) {
    ListLine line;
    (line << ... << items);
    return line.text();
}

}  // namespace torvex::edit
