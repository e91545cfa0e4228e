#pragma once

#include <filesystem>

#include "support/temporary_directory.hpp"

namespace torvex::test {

// A temporary directory that is the current one while it lives.
class WorkingDirectory : public TemporaryDirectory {
 public:
    WorkingDirectory() { std::filesystem::current_path(path()); }
    ~WorkingDirectory() {
        std::error_code ignored;
        std::filesystem::current_path(before_, ignored);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

 private:
    std::filesystem::path before_ = std::filesystem::current_path();
};

}  // namespace torvex::test
