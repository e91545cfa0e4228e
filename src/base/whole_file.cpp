#include "base/whole_file.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/stop.hpp"

namespace torvex {

namespace {

constexpr std::size_t buffer_bytes = 65536;

// The rename itself must reach the disk, so that of two files written one after the other the
// second never outlives a power failure without the first. Not all file systems can do this, and
// the file is whole without it, so a refusal is no failure.
void sync_directory_of(const std::string& path) {
    const std::filesystem::path parent = std::filesystem::path(path).parent_path();
    const int directory =
        ::open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (directory >= 0) {
        ::fsync(directory);
        ::close(directory);
    }
}

const char* way_out(int error) {
    switch (error) {
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return "make room on the disk; an earlier file of this name has been kept";
        default:
            return "the directory must exist and be writable";
    }
}

}  // namespace

WholeFile::WholeFile(const std::string& path) : path_(path), temporary_(path + ".tmp") {
    // What an interrupted run has left is not written into: it may be a link, or read-only.
    ::unlink(temporary_.c_str());
    descriptor_ = ::open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor_ < 0) {
        const int error = errno;
        if (error == EEXIST) {
            stop(1, "the file cannot be created: it exists and cannot be removed", temporary_,
                 "remove it by hand");
        }
        fail("created", error);
    }
    try {
        buffer_.reserve(buffer_bytes);
    } catch (...) {
        abandon();
        throw;
    }
}

WholeFile::~WholeFile() {
    abandon();
}

void WholeFile::abandon() {
    if (descriptor_ >= 0) {
        ::close(std::exchange(descriptor_, -1));
        ::unlink(temporary_.c_str());
    }
}

void WholeFile::fail(const char* step, int error) const {
    stop(1,
         std::string("the file cannot be ") + step + ": " + std::generic_category().message(error),
         path_, way_out(error));
}

void WholeFile::write(std::span<const std::byte> bytes) {
    if (buffer_.size() + bytes.size() > buffer_bytes) {
        flush();
    }
    if (bytes.size() > buffer_bytes) {
        write_through(bytes);
    } else {
        buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    }
}

void WholeFile::flush() {
    write_through(buffer_);
    buffer_.clear();
}

void WholeFile::write_through(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            fail("written", written < 0 ? errno : EIO);
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

void WholeFile::commit() {
    flush();
    if (::fsync(descriptor_) != 0) {
        fail("written", errno);
    }
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) {
        fail("put in its place", errno);
    }
    // The bytes are on the disk already, so that closing has nothing left to lose.
    ::close(std::exchange(descriptor_, -1));
    sync_directory_of(path_);
}

void write_text_file_whole(const std::string& path, std::string_view text) {
    WholeFile file(path);
    file.write(std::as_bytes(std::span(text)));
    file.commit();
}

}  // namespace torvex
