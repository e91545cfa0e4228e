#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace torvex::test {

// A file in memory, for tests that rewrite one thousands of times and would wait for the disk.
class MemoryFile {
 public:
    MemoryFile() : descriptor_(memfd_create("torvex-test", MFD_CLOEXEC)) {
        if (descriptor_ < 0) {
            throw std::runtime_error("cannot make a file in memory");
        }
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    void set(std::string_view bytes) const {
        if (ftruncate(descriptor_, 0) != 0 || pwrite(descriptor_, bytes.data(), bytes.size(), 0) !=
                                                  static_cast<ssize_t>(bytes.size())) {
            throw std::runtime_error("cannot fill a file in memory");
        }
    }
    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
    int descriptor_;
};

}  // namespace torvex::test
