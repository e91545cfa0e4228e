#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "base/record_file.hpp"

namespace torvex::test {

struct RecordCounts {
    std::int32_t ni = 0, nj = 0, nk = 0;
};

// The counts in record 2 of a file of the family.
inline RecordCounts counts_in(const std::string& file) {
    RecordReader reader;
    RecordCounts counts;
    std::int32_t id = 0;
    if (reader.open(file) && reader.read(id)) {
        reader.read(counts.ni, counts.nj, counts.nk);
    }
    return counts;
}

// A file with a lock on it, as a run holds one.
class LockedFile {
 public:
    explicit LockedFile(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)) {
        flock(descriptor_, LOCK_EX);
    }
    ~LockedFile() { ::close(descriptor_); }
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

 private:
    int descriptor_;
};

}  // namespace torvex::test
