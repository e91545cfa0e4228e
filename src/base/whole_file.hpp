#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace torvex {

// A file that appears under its name only when it is complete. It is written beside the final name
// with ".tmp" behind it; commit() brings it to the disk and renames it over the earlier file in one
// step. Without commit() the temporary file is removed and the earlier file stays as it was. Every
// failure is a stop that names the file and the system's reason.
class WholeFile {
 public:
    explicit WholeFile(const std::string& path);
    ~WholeFile();
    WholeFile(const WholeFile&) = delete;
    WholeFile& operator=(const WholeFile&) = delete;

    void write(std::span<const std::byte> bytes);
    void commit();

    const std::string& path() const { return path_; }

 private:
    void flush();
    void write_through(std::span<const std::byte> bytes);
    [[noreturn]] void fail(const char* step, int error) const;
    void abandon();

    std::string path_;
    std::string temporary_;
    std::vector<std::byte> buffer_;  // small pieces, gathered for one system call
    int descriptor_ = -1;
};

// A whole file of text (or of any bytes held as text).
void write_text_file_whole(const std::string& path, std::string_view text);

}  // namespace torvex
