#pragma once

#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace torvex::test {

// Closes the descriptor that this process has open on a file, behind its owner's back.
inline void close_descriptor_of(const std::string& path) {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        if (std::filesystem::read_symlink(entry.path(), gone) == path) {
            ::close(std::stoi(entry.path().filename().string()));
            return;
        }
    }
    throw std::runtime_error("no descriptor is open on " + path);
}

}  // namespace torvex::test
