#include "base/text_log.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "base/stop.hpp"

namespace torvex {

namespace {

std::string reason() {
    return std::generic_category().message(errno);
}

}  // namespace

TextLog::~TextLog() {
    close();
}

void TextLog::open(const std::string& path, Existing existing) {
    close();
    path_ = path;
    const int mode = existing == Existing::append ? O_APPEND : O_TRUNC;
    // Not through a link: it could lead to a file that the run was given. And without waiting: a
    // pipe of that name would otherwise hold the run until somebody reads.
    descriptor_ =
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW | mode, 0666);
    if (descriptor_ < 0 && errno == ELOOP) {
        stop(1, "the log cannot be opened: it is a link", path_, "remove the link");
    }
    if (descriptor_ < 0) {
        stop(1, "the log cannot be opened: " + reason(), path_,
             "the case directory must exist and be writable");
    }
    ::fcntl(descriptor_, F_SETFL, mode == O_APPEND ? O_APPEND : 0);
}

void TextLog::close() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

void TextLog::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor_, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            stop(1, "the log cannot be written: " + reason(), path_, "make room on the disk");
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void TextLog::line(std::string_view text) {
    std::string record(text);
    record += '\n';
    write(record);
}

}  // namespace torvex
