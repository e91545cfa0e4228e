// The program that was built for this processor, beside the one for any.

#include "run/processor_variant.hpp"

#include <string>
#include <system_error>

#include "base/run_log.hpp"
#include "base/text_file.hpp"

namespace torvex {

bool processor_has_variant_level() {
// clang knows the names of the levels since its version 17 only.
#if defined(__x86_64__) && !defined(__clang__)
    return __builtin_cpu_supports("x86-64-v3") != 0;
#else
    return false;
#endif
}

bool variant_wanted(std::string_view TORVEX_VARIANT) {
    const std::string_view choice = trimmed(TORVEX_VARIANT);
    if (choice == "baseline") {
        return false;
    }
    if (!choice.empty() && choice != variant_level) {
        console_error("TORVEX_VARIANT is neither baseline nor " + std::string(variant_level) +
                      "; it is ignored");
    }
    return true;
}

std::optional<std::filesystem::path> find_variant(const std::filesystem::path& program) {
    const std::filesystem::path folder = program.parent_path();
    const std::string name = program.filename().string() + "-" + std::string(variant_level);
    for (const auto& path : {folder / name, folder.parent_path() / "lib" / "torvex" / name}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(path, error)) {
            return path;
        }
    }
    return std::nullopt;
}

}  // namespace torvex
