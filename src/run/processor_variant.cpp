// Which of the programs built for levels of the x86-64 instruction set fits this processor.

#include "run/processor_variant.hpp"

#include <algorithm>
#include <array>
#include <system_error>

#include "base/run_log.hpp"
#include "base/text_file.hpp"

namespace torvex {

namespace {

constexpr std::array<std::string_view, 2> all_levels{"x86-64-v4", "x86-64-v3"};

}  // namespace

std::vector<std::string_view> processor_levels() {
    std::vector<std::string_view> levels;
// clang knows the names of the levels since its version 17 only.
#if defined(__x86_64__) && !defined(__clang__)
    if (__builtin_cpu_supports("x86-64-v4") != 0) {
        levels.push_back(all_levels[0]);
    }
    if (__builtin_cpu_supports("x86-64-v3") != 0) {
        levels.push_back(all_levels[1]);
    }
#endif
    return levels;
}

std::vector<std::string_view> wanted_levels(std::string_view variant,
                                            std::vector<std::string_view> levels) {
    variant = trimmed(variant);
    if (variant.empty()) {
        return levels;
    }
    if (variant == "baseline") {
        return {};
    }
    if (std::ranges::find(all_levels, variant) == all_levels.end()) {
        console_error("TORVEX_VARIANT is none of baseline, x86-64-v3, x86-64-v4; it is ignored");
        return levels;
    }
    std::erase_if(levels, [variant](std::string_view level) { return level != variant; });
    return levels;
}

std::optional<std::filesystem::path> find_variant(const std::filesystem::path& program,
                                                  const std::vector<std::string_view>& levels) {
    const std::filesystem::path folder = program.parent_path();
    for (const std::string_view level : levels) {
        const std::string name = program.filename().string() + "-" + std::string(level);
        for (const auto& path : {folder / name, folder.parent_path() / "lib" / "torvex" / name}) {
            std::error_code error;
            if (std::filesystem::is_regular_file(path, error)) {
                return path;
            }
        }
    }
    return std::nullopt;
}

}  // namespace torvex
