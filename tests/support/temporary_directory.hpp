#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace torvex::test {

// A directory of a test's own, removed with everything in it when the test ends.
class TemporaryDirectory {
 public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string file(const std::string& name) const { return (path_ / name).string(); }
    bool has(const std::string& name) const { return std::filesystem::exists(path_ / name); }
    void write(const std::string& name, std::string_view text) const;
    std::string read(const std::string& name) const;

 private:
    std::filesystem::path path_;
};

}  // namespace torvex::test
