#include "maps/map_bytes.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/text_file.hpp"

namespace torvex {

namespace {

MapHeader failed_header(int error, std::string problem) {
    MapHeader header;
    header.error = error;
    header.problem = std::move(problem);
    header.line = 1;
    return header;
}

}  // namespace

// Opened without waiting, so that a named pipe cannot hold the run.
MapBytes::MapBytes(const std::string& path)
    : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
    struct stat status {};
    if (descriptor_ < 0 || ::fstat(descriptor_, &status) != 0) {
        problem_ = std::strerror(errno);
    } else if (!S_ISREG(status.st_mode)) {
        problem_ = "it is not a regular file";
    } else {
        identity_ = {path,           status.st_dev,         status.st_ino,
                     status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
    }
}

MapBytes::~MapBytes() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

std::string_view MapBytes::text() const {
    return without_byte_order_mark({data_.get(), size_});
}

bool MapBytes::read_up_to(std::size_t wanted) {
    wanted = std::min(wanted, static_cast<std::size_t>(identity_.size));
    if (wanted > capacity_) {
        auto data = std::make_unique_for_overwrite<char[]>(wanted);
        std::copy_n(data_.get(), size_, data.get());
        data_ = std::move(data);
        capacity_ = wanted;
    }
    while (size_ < wanted && !complete_) {
        const ssize_t got = ::read(descriptor_, data_.get() + size_, wanted - size_);
        if (got < 0 && errno != EINTR) {
            problem_ = std::strerror(errno);
            return false;
        }
        complete_ = got == 0;
        size_ += static_cast<std::size_t>(std::max<ssize_t>(got, 0));
    }
    complete_ = complete_ || size_ == static_cast<std::size_t>(identity_.size);
    return true;
}

MapHeader MapBytes::read_header() {
    // Twice as much each time, so that all attempts together cost no more than two of the last.
    for (std::size_t wanted = 65536;; wanted *= 2) {
        if (!read_up_to(wanted)) {
            return failed_header(3, problem_);
        }
        std::string_view head = text();
        if (!complete_ && head.find('\n') != std::string_view::npos) {
            head = head.substr(0, head.rfind('\n') + 1);
        }
        ListInput input(head);
        MapHeader header = read_map_header(input);
        // A first line that is no tag so far is none, however long it is.
        const bool no_tag = header.kind != 1;
        const bool settled = complete_ || header.error == 0 || no_tag || !input.at_end();
        if (settled) {
            header_end_ = head.size() - input.rest().size();
            data_line_ = input.line();
            return header;
        }
    }
}

bool MapBytes::read_all() {
    return read_up_to(static_cast<std::size_t>(identity_.size));
}

ListInput MapBytes::body() const {
    return ListInput(text().substr(header_end_), data_line_);
}

MapHeader read_map_header_of(const std::string& path) {
    MapBytes bytes(path);
    if (!bytes.problem().empty()) {
        return failed_header(1, "cannot open it: " + bytes.problem());
    }
    return bytes.read_header();
}

}  // namespace torvex
