#include "base/record_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace torvex {

namespace {

constexpr std::int64_t length_bytes = 4;

std::string reason_of(int error) {
    return std::generic_category().message(error);
}

}  // namespace

RecordWriter::RecordWriter(const std::string& path, std::int64_t subrecord_limit)
    : file_(path),
      framing_([this](std::span<const std::byte> bytes) { file_.write(bytes); }, subrecord_limit) {}

RecordReader::~RecordReader() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

bool RecordReader::fail(const std::string& reason) {
    if (fault_.empty()) {
        fault_ = reason;
    }
    return false;
}

bool RecordReader::fail_in_record(const std::string& reason) {
    return fail("record " + std::to_string(record_) + " " + reason);
}

bool RecordReader::fail_at_end_of_file(const std::string& reason) {
    cut_off_ = cut_off_ || fault_.empty();
    return fail_in_record(reason);
}

bool RecordReader::open(const std::string& path) {
    // Without waiting: a pipe of that name would otherwise hold the run until somebody writes.
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) {
        return fail("the file cannot be opened: " + reason_of(errno));
    }
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) {
        return fail("the file cannot be opened: " + reason_of(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        return fail("the file cannot be opened: it is no regular file");
    }
    size_ = status.st_size;
    return true;
}

bool RecordReader::read_at(std::int64_t at, std::span<std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t got = ::pread(descriptor_, bytes.data(), bytes.size(), at);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got < 0) {
            return fail_in_record("cannot be read: " + reason_of(errno));
        }
        if (got == 0) {
            return fail_at_end_of_file("is cut off: the file became shorter while it was read");
        }
        bytes = bytes.subspan(static_cast<std::size_t>(got));
        at += got;
    }
    return true;
}

std::optional<RecordReader::Frame> RecordReader::next_frame() {
    if (!fault_.empty()) {
        return std::nullopt;
    }
    if (at_end()) {
        fail_at_end_of_file("is missing: the file ends in front of it");
        return std::nullopt;
    }
    Frame frame{.bytes = 0, .end = at_};
    bool continued = true;
    for (bool first = true; continued; first = false) {
        std::int32_t front = 0;
        if (size_ - frame.end < 2 * length_bytes) {
            fail_at_end_of_file("is cut off: the file ends at byte " + std::to_string(size_));
            return std::nullopt;
        }
        if (!read_at(frame.end, std::as_writable_bytes(numbers_of(front)))) {
            return std::nullopt;
        }
        continued = front < 0;
        const std::int64_t length = std::abs(std::int64_t{front});
        if (length > max_subrecord_bytes) {
            fail_in_record("has the impossible length " + std::to_string(front));
            return std::nullopt;
        }
        if (length > size_ - frame.end - 2 * length_bytes) {
            fail_at_end_of_file("has the length " + std::to_string(front) +
                                " and goes beyond the end of the file at byte " +
                                std::to_string(size_));
            return std::nullopt;
        }
        std::int32_t behind = 0;
        if (!read_at(frame.end + length_bytes + length,
                     std::as_writable_bytes(numbers_of(behind)))) {
            return std::nullopt;
        }
        const std::int64_t expected = first ? length : -length;
        if (behind != expected) {
            fail_in_record("is damaged: the length behind its data is " + std::to_string(behind) +
                           ", expected " + std::to_string(expected));
            return std::nullopt;
        }
        frame.bytes += length;
        frame.end += length + 2 * length_bytes;
    }
    return frame;
}

std::optional<std::int64_t> RecordReader::next_size() {
    const std::optional<Frame> frame = next_frame();
    return frame ? std::optional(frame->bytes) : std::nullopt;
}

bool RecordReader::skip() {
    const std::optional<Frame> frame = next_frame();
    if (!frame) {
        return false;
    }
    at_ = frame->end;
    ++record_;
    return true;
}

bool RecordReader::read_into(std::span<const std::span<std::byte>> targets) {
    const std::optional<Frame> frame = next_frame();
    if (!frame) {
        return false;
    }
    std::int64_t wanted = 0;
    for (const std::span<std::byte> target : targets) {
        wanted += static_cast<std::int64_t>(target.size());
    }
    if (frame->bytes != wanted) {
        return fail_in_record("has " + std::to_string(frame->bytes) + " bytes, expected " +
                              std::to_string(wanted));
    }

    std::int64_t at = at_;
    std::int64_t subrecord_left = 0;
    bool first = true;
    for (std::span<std::byte> target : targets) {
        while (!target.empty()) {
            if (subrecord_left == 0) {
                at += first ? 0 : length_bytes;  // past the length behind
                first = false;
                std::int32_t front = 0;
                if (!read_at(at, std::as_writable_bytes(numbers_of(front)))) {
                    return false;
                }
                at += length_bytes;
                subrecord_left = std::abs(std::int64_t{front});
                continue;
            }
            const auto part = std::min(target.size(), static_cast<std::size_t>(subrecord_left));
            if (!read_at(at, target.first(part))) {
                return false;
            }
            at += static_cast<std::int64_t>(part);
            subrecord_left -= static_cast<std::int64_t>(part);
            target = target.subspan(part);
        }
    }
    at_ = frame->end;
    ++record_;
    return true;
}

}  // namespace torvex
