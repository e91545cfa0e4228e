#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "prep/run_prep.hpp"
#include "run/working_directory.hpp"

namespace torvex::test {

struct PrepRun {
    int status = -1;
    std::string out;
    std::string err;
};

// torvex-prep inside the process of the test; the current directory is kept.
inline PrepRun prep(const std::vector<std::string>& arguments) {
    const std::filesystem::path before = std::filesystem::current_path();
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    PrepRun result;
    result.status = run_prep(arguments);
    result.out = ::testing::internal::GetCapturedStdout();
    result.err = ::testing::internal::GetCapturedStderr();
    std::filesystem::current_path(before);
    return result;
}

}  // namespace torvex::test
