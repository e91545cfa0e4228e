#include "run/run_fixture.hpp"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace torvex::test {

RunHere run_here(const std::vector<std::string>& arguments, const Solve& solve) {
    RunHere result;
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    const std::filesystem::path before = std::filesystem::current_path();
    result.status = run_torvex(arguments, solve);
    std::error_code ignored;
    std::filesystem::current_path(before, ignored);
    result.out = ::testing::internal::GetCapturedStdout();
    result.err = ::testing::internal::GetCapturedStderr();
    return result;
}

std::map<std::string, std::string> files_below(const std::filesystem::path& directory) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (entry.is_regular_file()) {
            std::ifstream in(entry.path(), std::ios::binary);
            files[entry.path().lexically_relative(directory).string()] = {
                std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
        }
    }
    return files;
}

std::string RunTest::slot(const std::string& name, int n) const {
    constexpr std::size_t length = 120;
    const std::string bytes = directory.read(name);
    const std::size_t start = static_cast<std::size_t>(n - 1) * length;
    if (bytes.size() < start + length) {
        return "no slot " + std::to_string(n);
    }
    std::string text = bytes.substr(start, length);
    text.erase(text.find_last_not_of(" \n") + 1);
    return text;
}

std::string LogShape::difference(const std::vector<std::string>& lines) const {
    auto from = lines.begin();
    for (std::size_t n = 0; n < parts_.size(); ++n) {
        const std::vector<std::string>& part = parts_[n];
        auto at = std::search(from, lines.end(), part.begin(), part.end());
        if (n + 1 == parts_.size() && n > 0 && part.size() <= lines.size()) {
            at = std::max(from, lines.end() - static_cast<std::ptrdiff_t>(part.size()));
        }
        const bool fits = lines.end() - at >= static_cast<std::ptrdiff_t>(part.size()) &&
                          std::equal(part.begin(), part.end(), at) && (n > 0 || at == from) &&
                          (n + 1 < parts_.size() || part.empty() ||
                           at + static_cast<std::ptrdiff_t>(part.size()) == lines.end());
        if (!fits) {
            std::string text = "not found where it should stand:\n";
            for (const std::string& line : part) {
                text += "  [" + line + "]\n";
            }
            text += "what stands there:\n";
            for (auto line = from; line != lines.end() && line - from < 12; ++line) {
                text += "  [" + *line + "]\n";
            }
            return text;
        }
        from = at + static_cast<std::ptrdiff_t>(part.size());
    }
    return {};
}

}  // namespace torvex::test
