#pragma once

#include <string>
#include <string_view>

namespace torvex {

// The last line of a terminal, kept below whatever scrolls past. Shows nothing, and costs nothing,
// where the descriptor is no terminal.
class StatusLine {
 public:
    explicit StatusLine(int descriptor);

    bool is_shown() const { return terminal_; }
    void show(std::string_view text);  // takes the place of what stood there; cut to the width
    void hide();                       // room for other lines
    void redraw();
    void clear();

 private:
    void write(std::string_view bytes);

    int descriptor_;
    bool terminal_;
    std::string text_;
};

// The status line of this process, on standard error.
StatusLine& status_line();

}  // namespace torvex
