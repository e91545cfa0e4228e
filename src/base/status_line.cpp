#include "base/status_line.hpp"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

namespace torvex {

namespace {

constexpr std::string_view erase_line = "\r\033[K";

std::size_t columns_of(int descriptor) {
    constexpr std::size_t usual = 80;
    winsize size{};
    const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : usual;
}

}  // namespace

StatusLine::StatusLine(int descriptor)
    : descriptor_(descriptor), terminal_(isatty(descriptor) == 1) {}

void StatusLine::show(std::string_view text) {
    if (!terminal_) {
        return;
    }
    // A line that reaches the last column would wrap and could not be erased as one.
    text_ = text.substr(0, columns_of(descriptor_) - 1);
    redraw();
}

void StatusLine::hide() {
    if (!text_.empty()) {
        write(erase_line);
    }
}

void StatusLine::redraw() {
    if (!text_.empty()) {
        write(std::string(erase_line) + text_);
    }
}

void StatusLine::clear() {
    hide();
    text_.clear();
}

// What a terminal does not take is lost: nothing depends on it.
void StatusLine::write(std::string_view bytes) {
    [[maybe_unused]] const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
}

StatusLine& status_line() {
    static StatusLine line(STDERR_FILENO);
    return line;
}

}  // namespace torvex
