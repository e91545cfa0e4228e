#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/list_input.hpp"
#include "maps/map_header.hpp"

namespace torvex {

// By what a changed file is told from the one that was read.
struct FileIdentity {
    std::string path;
    dev_t device = 0;
    ino_t inode = 0;
    std::int64_t size = 0;
    std::int64_t modified_s = 0;
    std::int64_t modified_ns = 0;

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// The bytes of a map file, the header first: a file that is no map is known by its first lines,
// however large it is.
class MapBytes {
 public:
    // Opens the file; a problem is told by problem().
    explicit MapBytes(const std::string& path);
    ~MapBytes();
    MapBytes(const MapBytes&) = delete;
    MapBytes& operator=(const MapBytes&) = delete;

    const std::string& problem() const { return problem_; }  // blank if all went well
    const FileIdentity& identity() const { return identity_; }

    // Reads as much of the file as the header takes. A file that cannot be read gives error 3.
    MapHeader read_header();

    // Takes the whole file into memory; false if it cannot be read. One that shrinks meanwhile
    // ends early, one that grows is cut: the parser sees to the rest.
    bool read_all();

    // The data behind the header, after both.
    ListInput body() const;

 private:
    bool read_up_to(std::size_t wanted);
    std::string_view text() const;

    int descriptor_;
    std::string problem_;
    FileIdentity identity_;
    std::unique_ptr<char[]> data_;
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;        // bytes read
    bool complete_ = false;       // nothing more to read
    std::size_t header_end_ = 0;  // of text(), where the data begin
    long data_line_ = 1;
};

// The header of a map file and nothing of its data. A file that cannot be opened or read has error
// 1 or 3 and a problem in words, as a header of the same error has.
MapHeader read_map_header_of(const std::string& path);

}  // namespace torvex
