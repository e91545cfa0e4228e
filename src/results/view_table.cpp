#include "results/view_table.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>

#include "base/edit.hpp"
#include "base/stop.hpp"
#include "base/text_file.hpp"
#include "base/value_scanner.hpp"

namespace torvex {

namespace {

constexpr int slot_length = 120;
using SlotBytes = std::array<char, slot_length>;

// Four hundred times the rows of a long run. What is larger is no table, and blanking or copying it
// would fill the disk.
constexpr off_t largest_table = off_t{4000000} * slot_length;

void require_table_size(off_t bytes, const std::string& path) {
    if (bytes > largest_table) {
        stop(1,
             "the monitor file has " + std::to_string(bytes) + " bytes, expected " +
                 std::to_string(largest_table) + " at most",
             path, "remove it: no run writes so many rows");
    }
}

struct Descriptor {
    explicit Descriptor(int opened) : number(opened) {}
    ~Descriptor() {
        if (number >= 0) {
            ::close(number);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number;
};

bool write_all(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t put = ::write(descriptor, bytes.data(), bytes.size());
        if (put < 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

off_t slot_offset(int n) {
    return static_cast<off_t>(n - 1) * slot_length;
}

[[noreturn]] void fail(const std::string& what, const std::string& path) {
    const bool link = errno == ELOOP;
    stop(1,
         "cannot " + what + " the monitor file: " + (link ? "it is a link" : std::strerror(errno)),
         path, link ? "remove the link: it could lead to a file that the run was given" : "");
}

}  // namespace

ViewTable::~ViewTable() {
    close();
}

void ViewTable::open(const std::string& path, Existing existing) {
    close();
    path_ = path;
    descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
    if (descriptor_ < 0) {
        fail("open", path_);
    }
    if (flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        stop(1, "another run is using this directory", path_,
             "wait for that run, or give this case a directory of its own");
    }
    if (existing == Existing::discard && ftruncate(descriptor_, 0) != 0) {
        fail("empty", path_);
    }
    if (slots() == 0) {
        write_count(1);
    }
}

bool ViewTable::close() {
    if (descriptor_ < 0) {
        return true;
    }
    const int status = ::close(descriptor_);
    descriptor_ = -1;
    return status == 0;
}

int ViewTable::slots() const {
    struct stat status {};
    if (fstat(descriptor_, &status) != 0) {
        fail("examine", path_);
    }
    require_table_size(status.st_size, path_);
    const off_t whole = status.st_size / slot_length;
    return static_cast<int>(std::min<off_t>(whole, std::numeric_limits<int>::max()));
}

std::string ViewTable::slot(int n) const {
    SlotBytes bytes{};
    const ssize_t got = pread(descriptor_, bytes.data(), bytes.size(), slot_offset(n));
    if (got < 0) {
        fail("read", path_);
    }
    std::string text(bytes.data(), static_cast<std::size_t>(got));
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

void ViewTable::write_slot(int n, std::string_view row) {
    SlotBytes bytes{};
    bytes.fill(' ');
    bytes.back() = '\n';
    std::copy_n(row.begin(), std::min(row.size(), bytes.size() - 1), bytes.begin());
    const ssize_t put = pwrite(descriptor_, bytes.data(), bytes.size(), slot_offset(n));
    if (put != slot_length) {
        fail("write", path_);
    }
}

void ViewTable::write_count(int n) {
    write_slot(1, edit::I(n, 8));
}

int ViewTable::count() const {
    std::int32_t n = 0;
    const int present = std::max(1, slots());
    if (!parse_integer(trimmed(slot(1)), n) || n < 1 || n > present) {
        return present;
    }
    return n;
}

void ViewTable::append(std::string_view row) {
    const int n = count() + 1;
    write_slot(n, row);
    write_count(n);
}

void ViewTable::write_last(std::string_view row) {
    write_slot(count(), row);
}

bool table_is_held(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool held = flock(descriptor, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    ::close(descriptor);
    return held;
}

void clear_view_log(ViewTable& table) {
    for (int n = 2; n <= table.slots(); ++n) {
        table.write_slot(n, "");
    }
    table.write_count(1);
}

// By hand, since the library's copy also wants to set the mode of the file that it overwrites,
// which only its owner may.
bool copy_view_log(const std::string& from, const std::string& to) {
    const auto refuse = [&](int error) {
        stop(1,
             "cannot copy the monitor file \"" + from +
                 "\": " + std::generic_category().message(error),
             to);
    };
    const Descriptor source(::open(from.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (source.number < 0 && errno == ENOENT) {
        return false;
    }
    struct stat status {};
    if (source.number < 0 || fstat(source.number, &status) != 0) {
        refuse(errno);
    }
    if (!S_ISREG(status.st_mode)) {
        refuse(EINVAL);
    }
    require_table_size(status.st_size, from);
    const Descriptor target(::open(
        to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (target.number < 0) {
        refuse(errno);
    }
    std::array<char, 65536> piece{};
    ssize_t got = 0;
    while ((got = ::read(source.number, piece.data(), piece.size())) > 0) {
        if (!write_all(target.number, {piece.data(), static_cast<std::size_t>(got)})) {
            refuse(errno);
        }
    }
    if (got < 0) {
        refuse(errno);
    }
    return true;
}

}  // namespace torvex
