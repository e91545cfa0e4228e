#include "base/run_log.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <iostream>

#include "base/date_stamp.hpp"
#include "base/stop.hpp"

namespace torvex {

namespace {

void write_all(int descriptor, std::string_view text, const std::string& path) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            stop(1, std::string("cannot write the run log: ") + std::strerror(errno), path);
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

void console(std::string_view line) {
    std::cout << line << '\n' << std::flush;
}

RunLog::~RunLog() {
    close();
}

void RunLog::open(const std::string& path) {
    path_ = path;
    descriptor_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (descriptor_ < 0) {
        stop(1, std::string("cannot open the run log: ") + std::strerror(errno), path,
             "the case directory must be writable");
    }
    write_all(descriptor_, kept_, path_);
    kept_.clear();
}

void RunLog::close() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
        descriptor_ = -1;
    }
}

void RunLog::line(std::string_view text) {
    const std::string record = std::string(text) + '\n';
    if (is_open()) {
        write_all(descriptor_, record, path_);
    } else {
        kept_ += record;
    }
}

void RunLog::timed(std::string_view text) {
    line(date_stamp() + std::string(text));
}

}  // namespace torvex
